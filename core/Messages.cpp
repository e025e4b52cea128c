// The five blocks of the message table and the language that picks one.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Messages.h"

#include "core/Failure.h"
#include "core/Globals.h"
#include "core/MessageIds.h"
#include "resources/MessageFiles.h"

#include <array>
#include <stdexcept>

namespace velmora {

namespace {

struct LanguageFacts {
    Language language;
    const char* file;     // name of the message file
    const char* helpFile; // the German one carries "gr": so it is named in every installation
    qint32 localeId;      // what a switch for this language sets
};

constexpr std::array<LanguageFacts, 5> kLanguages{{
    {Language::Italian, "it", "\\Velmora_it.chm", 1040},
    {Language::English, "en", "\\Velmora_en.chm", 0},
    {Language::German, "de", "\\Velmora_gr.chm", 1031},
    {Language::Spanish, "es", "\\Velmora_es.chm", 1034},
    {Language::French, "fr", "\\Velmora_fr.chm", 1036},
}};

const LanguageFacts& FactsOf(Language language) {
    return kLanguages[static_cast<size_t>(language)];
}

[[noreturn]] void Refuse(int line, const char* why) {
    throw std::runtime_error("message file, line " + std::to_string(line) + ": " + why);
}

QString Unescape(QStringView text, int line) {
    QString plain;
    plain.reserve(text.size());
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] != u'\\') {
            plain += text[at];
            continue;
        }
        ++at;
        const QChar escaped = at < text.size() ? text[at] : QChar();
        if (escaped == u'n') {
            plain += u'\n';
        } else if (escaped == u't') {
            plain += u'\t';
        } else if (escaped == u'\\') {
            plain += u'\\';
        } else {
            Refuse(line, "a back-slash needs n, t or another behind it");
        }
    }
    return plain;
}

void ParseLine(QStringView line, int number, QHash<int, QString>& block) {
    const qsizetype tab = line.indexOf(u'\t');
    bool isNumber = false;
    const int id = tab > 0 ? line.left(tab).toInt(&isNumber) : 0;
    if (!isNumber || id < 1 || id > 32767) {
        Refuse(number, "a number from 1 to 32767 and a tab are missing");
    }
    if (block.contains(id)) {
        Refuse(number, "this number stands there twice");
    }
    block.insert(id, Unescape(line.mid(tab + 1), number));
}

} // namespace

Language LanguageOf(qint32 localeId) {
    // The low ten bits of a locale id name the language, the rest the country. Only the countries
    // that the program's texts were made for count; any other id is English.
    const qint32 country = localeId >> 10;
    const auto upTo = [country](qint32 last) { return country >= 1 && country <= last; };
    switch (localeId & 0x3FF) {
    case 0x10:
        return upTo(2) ? Language::Italian : Language::English;
    case 0x07:
        return upTo(5) ? Language::German : Language::English;
    case 0x0A:
        return upTo(21) ? Language::Spanish : Language::English;
    case 0x0C:
        return upTo(6) ? Language::French : Language::English;
    default:
        return Language::English;
    }
}

Language CurrentLanguage() {
    return LanguageOf(Program().gLocaleId);
}

qint32 LocaleIdOf(Language language) {
    return FactsOf(language).localeId;
}

QHash<int, QString> ParseMessages(const QByteArray& file) {
    const QString text = QString::fromUtf8(file);
    QHash<int, QString> block;
    int number = 0;
    for (QStringView line : QStringView(text).split(u'\n')) {
        ++number;
        if (line.endsWith(u'\r')) {
            line.chop(1);
        }
        if (!line.isEmpty() && !line.startsWith(u'#')) {
            ParseLine(line, number, block);
        }
    }
    return block;
}

const QHash<int, QString>& MessageBlock(Language language) {
    static std::array<QHash<int, QString>, kLanguages.size()> blocks;
    QHash<int, QString>& block = blocks[static_cast<size_t>(language)];
    if (block.isEmpty()) {
        const std::string_view file = resources::MessageFile(FactsOf(language).file);
        block = ParseMessages(QByteArray(file.data(), static_cast<qsizetype>(file.size())));
    }
    return block;
}

QString GetMessage(int id) {
    const QHash<int, QString>& block = MessageBlock(CurrentLanguage());
    const auto found = block.constFind(id);
    if (found != block.cend()) {
        return *found;
    }
    return Guard("Messages", "GetMessage", [&]() -> QString {
        throw Error(kMissingMessage, GetMessage(kMissingMessage, {QString::number(id)}));
    });
}

QString GetMessage(int id, const QStringList& arguments) {
    const QString text = GetMessage(id);
    // In one pass: replacing one place after the other would take a "%2" inside an argument for
    // a place.
    QString filled;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const int place = at + 1 < text.size() ? text[at + 1].digitValue() : -1;
        if (text[at] == u'%' && place >= 1 && place <= arguments.size()) {
            filled += arguments[place - 1];
            ++at;
        } else {
            filled += text[at];
        }
    }
    return filled;
}

void SelectLanguageHelp() {
    Program().HelpFile = gProgramPath() + QLatin1StringView(FactsOf(CurrentLanguage()).helpFile);
}

} // namespace velmora
