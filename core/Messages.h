// Every text of the program by message id, in the language of gLocaleId; date masks of the system.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

namespace velmora {

enum class Language { Italian, English, German, Spanish, French };

// The language that a Windows locale id picks; every id that is not listed, 0 too, is English.
Language LanguageOf(qint32 localeId);
// The language of this run, by gLocaleId.
Language CurrentLanguage();
// A locale id that picks that language (1040, 0, 1031, 1034, 1036).
qint32 LocaleIdOf(Language language);

// The text of a base id in the language of this run. A line break in it is "\n". An id that the
// table lacks is a failure: it is reported, and the answer is empty.
QString GetMessage(int id);
// GetMessage with %1, %2 … replaced.
QString GetMessage(int id, const QStringList& arguments);

// The whole block of a language, for checks.
const QHash<int, QString>& MessageBlock(Language language);
// Reads one message file: lines `id TAB text` with \n, \t and \\ in the text; "#" opens a comment
// line. Throws std::runtime_error with the line number when a line is not like that or an id comes
// twice: such a file is a mistake of ours, found by the tests.
QHash<int, QString> ParseMessages(const QByteArray& file);

// Sets the program's help file to the one of the language, in the program folder. Once, at start.
void SelectLanguageHelp();

// One item of the system's own locale (not of gLocaleId): 29 date separator, 33 date order
// (0 month first, 1 day first, 2 year first). Empty for every other id.
QString API_GetLocaleData(int id);
// Field mask of a date in the system's order, "#" for a digit: "##/##/####".
QString GetDateMask();
// The same as a format picture: "mm/dd/yyyy", "dd.mm.yyyy", "yyyy-mm-dd".
QString GetDateFormat();

} // namespace velmora
