// Parsing of the command line.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Arguments.h"

#include "cli/Ending.h"
#include "cli/MessageIds.h"
#include "platform/Names.h"

#include <QStringDecoder>
#include <algorithm>
#include <array>

namespace velmora {

namespace {

constexpr std::array kGlobalOptions{
    OptionSpec{"--archive", 0, true},  OptionSpec{"--user-key", 0, true},
    OptionSpec{"--lang", 0, true},     OptionSpec{"--help", 'h', false},
    OptionSpec{"--version", 0, false},
};

// For messages: whatever the bytes are.
QString Shown(const QByteArray& word) {
    return platform::DecodeName(word);
}

const OptionSpec* FindOption(std::span<const OptionSpec> options, const QByteArray& name) {
    const auto found = std::find_if(options.begin(), options.end(), [&](const OptionSpec& option) {
        return name == option.name ||
               (option.letter != 0 && name == QByteArray("-") + option.letter);
    });
    return found == options.end() ? nullptr : &*found;
}

bool IsOption(const QByteArray& word) {
    return word.size() > 1 && word.startsWith('-');
}

} // namespace

std::span<const OptionSpec> GlobalOptions() {
    return kGlobalOptions;
}

Arguments Arguments::Parse(const QByteArrayList& words, std::span<const CommandSyntax> commands) {
    Arguments arguments;
    // The command first, as its options may stand before it too.
    qsizetype commandAt = -1;
    for (qsizetype at = 0; at < words.size() && commandAt < 0; ++at) {
        const OptionSpec* option =
            IsOption(words[at]) ? FindOption(kGlobalOptions, words[at]) : nullptr;
        if (!IsOption(words[at])) {
            commandAt = at;
        } else if (option && option->takesValue) {
            ++at;
        }
    }
    if (commandAt >= 0) {
        const auto found =
            std::find_if(commands.begin(), commands.end(),
                         [&](const CommandSyntax& each) { return words[commandAt] == each.name; });
        if (found == commands.end()) {
            throw UsageError{kUnknownCommand, {Shown(words[commandAt])}};
        }
        arguments.m_command = &*found;
    }
    bool onlyOperands = false;
    for (qsizetype at = 0; at < words.size(); ++at) {
        if (at == commandAt) {
            continue;
        }
        if (onlyOperands || !IsOption(words[at])) {
            arguments.m_operands << words[at];
        } else if (words[at] == "--") {
            onlyOperands = true;
        } else {
            arguments.TakeOption(words, at);
        }
    }
    if (!arguments.Has("--help") && !arguments.Has("--version")) {
        arguments.CheckOperands();
    }
    return arguments;
}

void Arguments::TakeOption(const QByteArrayList& words, qsizetype& at) {
    const QByteArray& word = words[at];
    const qsizetype equals = word.startsWith("--") ? word.indexOf('=') : -1;
    const QByteArray name = equals < 0 ? word : word.left(equals);
    const OptionSpec* option = FindOption(kGlobalOptions, name);
    if (!option && m_command) {
        option = FindOption(m_command->options, name);
    }
    if (!option) {
        throw UsageError{kUnknownOption, {Shown(name)}};
    }
    if (!option->takesValue && equals >= 0) {
        throw UsageError{kOptionTakesNoValue, {Shown(name)}};
    }
    QByteArray value;
    if (equals >= 0) {
        value = word.mid(equals + 1);
    } else if (option->takesValue) {
        if (++at == words.size()) {
            throw UsageError{kOptionNeedsValue, {Shown(name)}};
        }
        value = words[at];
    }
    if (option->takesValue && value.isEmpty()) {
        throw UsageError{kOptionNeedsValue, {Shown(name)}};
    }
    m_options.insert(option->name, value);
}

void Arguments::CheckOperands() const {
    if (!m_command) {
        throw UsageError{kCommandMissing, {}};
    }
    const auto names = m_command->operands;
    const auto count = static_cast<std::size_t>(m_operands.size());
    const std::size_t needed = names.size() - (m_command->moreOperands ? 1 : 0);
    if (count < needed) {
        throw UsageError{kArgumentMissing, {QString::fromLatin1(names[count])}};
    }
    if (count > names.size() && !m_command->moreOperands) {
        throw UsageError{kArgumentExtra, {Shown(m_operands[static_cast<qsizetype>(names.size())])}};
    }
}

std::optional<QByteArray> Arguments::Find(const QByteArrayList& words, const char* option) {
    const QByteArray joined = QByteArray(option) + '=';
    std::optional<QByteArray> value;
    for (qsizetype at = 0; at < words.size() && words[at] != "--"; ++at) {
        if (words[at] == option && at + 1 < words.size()) {
            value = words[++at];
        } else if (words[at].startsWith(joined)) {
            value = words[at].mid(joined.size());
        }
    }
    return value;
}

bool Arguments::Has(const char* option) const {
    return m_options.contains(option);
}

QByteArray Arguments::Value(const char* option) const {
    return m_options.value(option);
}

void Arguments::RefuseTogether(const char* option, const char* other) const {
    if (Has(option) && Has(other)) {
        throw UsageError{kNotTogether, {QString::fromLatin1(option), QString::fromLatin1(other)}};
    }
}

int Arguments::Number(const char* option, int least, int most, int otherwise) const {
    if (!Has(option)) {
        return otherwise;
    }
    bool good = false;
    const int number = Value(option).toInt(&good);
    if (!good || number < least || number > most) {
        throw UsageError{kNumberExpected,
                         {QString::fromLatin1(option), QString::number(least),
                          QString::number(most), Shown(Value(option))}};
    }
    return number;
}

QString TextOf(const QByteArray& argument) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(argument);
    if (decoder.hasError()) {
        throw UsageError{kNotUtf8, {Shown(argument)}};
    }
    return text;
}

} // namespace velmora
