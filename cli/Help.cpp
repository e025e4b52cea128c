// Printing of help.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Help.h"

#include "cli/MessageIds.h"
#include "core/Messages.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr qsizetype kWidth = 79;

// Where the lines that continue a line begin: in lists below the second column.
qsizetype IndentOf(const QString& line) {
    qsizetype at = 0;
    while (at < line.size() && line[at] == u' ') {
        ++at;
    }
    qsizetype column = line.indexOf(u"  "_s, at);
    while (column >= 0 && column < line.size() && line[column] == u' ') {
        ++column;
    }
    return column > 0 ? column : at;
}

QString Wrapped(QString line) {
    const QString indent(IndentOf(line), u' ');
    QString lines;
    while (line.size() > kWidth) {
        const qsizetype blank = line.lastIndexOf(u' ', kWidth);
        if (blank <= indent.size()) {
            break; // one word that is longer than a line
        }
        lines += line.left(blank) + u'\n';
        line = indent + line.mid(blank + 1);
    }
    return lines + line;
}

QString Wrapped(const QStringList& lines) {
    QStringList wrapped;
    for (const QString& line : lines) {
        wrapped << Wrapped(line);
    }
    return wrapped.join(u'\n');
}

} // namespace

void PrintHelp(int help, Output& output) {
    const QString text =
        QStringList{GetMessage(help), GetMessage(kHelpEveryCommand), GetMessage(kHelpExitStatus)}
            .join(u"\n\n"_s);
    output.Line(Wrapped(text.split(u'\n')));
}

void PrintUsage(const UsageError& error, const char* command, int help, Output& output) {
    output.Complain(GetMessage(error.message, error.arguments));
    output.Note(Wrapped(GetMessage(help).section(u'\n', 0, 0)));
    const QString name = command ? u' ' + QString::fromLatin1(command) : QString();
    output.Note(GetMessage(kFullHelp, {u"velmora"_s + name + u" --help"_s}));
}

} // namespace velmora
