// The two settings stores: tag-per-line files in the program folder and the per-user settings.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace velmora {

// Sets one key in a settings file of the program folder, made when it is missing:
//   XMLSaveSettings("Velmora", "SharedArchives.xml", "ArchiveNumbers", "2")
// The key counts without case and is written in capitals; the value holds no line break.
void XMLSaveSettings(const QString& rootName, const QString& fileName, const QString& key,
                     const QString& value);

// The value of a key without outer blanks and tabs; empty when the file or the key is missing.
// The root name is not looked at.
QString XMLReadSettings(const QString& rootName, const QString& fileName, const QString& key);

// Per-user settings of the program by section ("FTMessages", "Archives", "Scanner") and key. A
// value that is not there reads as empty.
QString GetSetting(const QString& section, const QString& key);
void SaveSetting(const QString& section, const QString& key, const QString& value);

// The whole number that a text begins with, 0 when it begins with none: "12 files" is 12.
qint64 NumericValue(QStringView text);

// Shows a first-time hint unless the person has ticked it off; keeps the tick.
void ShowFTMessage(int pictureId, int textId, int titleId);

// The text form of a settings file, for both functions above and their tests. Bytes that are
// neither UTF-8 nor plain are windows-1252.
QString DecodeSettings(const QByteArray& bytes);
QByteArray EncodeSettings(const QString& text);

} // namespace velmora
