// A command line taken apart: its command, options and operands.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QHash>
#include <QString>
#include <optional>
#include <span>

namespace velmora {

struct OptionSpec {
    const char* name; // "--limit"
    char letter;      // 'v' for "-v"; 0: none
    bool takesValue;
};

// What a command takes besides the options of all commands.
struct CommandSyntax {
    const char* name;
    std::span<const OptionSpec> options;
    std::span<const char* const> operands; // their names, for messages
    bool moreOperands = false;             // the last one may come any number of times, or never
};

// The options of all commands.
std::span<const OptionSpec> GlobalOptions();

// Arguments are bytes as the system gave them, since names of files may be any.
class Arguments {
  public:
    // words: without the program's name. Options may stand anywhere, as "--name value" or
    // "--name=value"; behind "--" nothing is an option. Throws UsageError.
    static Arguments Parse(const QByteArrayList& words, std::span<const CommandSyntax> commands);

    // The value of an option wherever it stands, without judging the rest: for what has to be
    // known before anything can be told. The last one counts.
    static std::optional<QByteArray> Find(const QByteArrayList& words, const char* option);

    // Null when only an option of all commands was given.
    [[nodiscard]] const CommandSyntax* Command() const { return m_command; }
    [[nodiscard]] bool Has(const char* option) const;
    // Empty when the option was not given.
    [[nodiscard]] QByteArray Value(const char* option) const;
    [[nodiscard]] const QByteArrayList& Operands() const { return m_operands; }

    // Throws UsageError when both were given.
    void RefuseTogether(const char* option, const char* other) const;
    // A whole number in the range, or the default. Throws UsageError.
    [[nodiscard]] int Number(const char* option, int least, int most, int otherwise) const;

  private:
    void TakeOption(const QByteArrayList& words, qsizetype& at);
    void CheckOperands() const;

    const CommandSyntax* m_command = nullptr;
    QHash<QByteArray, QByteArray> m_options;
    QByteArrayList m_operands;
};

// The text of an argument that is no path. Throws UsageError when it is not valid UTF-8.
QString TextOf(const QByteArray& argument);

} // namespace velmora
