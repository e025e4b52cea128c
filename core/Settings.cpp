// Settings files line by line, and the per-user settings.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Settings.h"

#include "core/Dialogue.h"
#include "core/Failure.h"
#include "core/Globals.h"
#include "core/MessageIds.h"
#include "core/Messages.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "platform/Settings.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

const QString kLineEnd = u"\r\n"_s;

QString OpeningTag(const QString& name) {
    return u'<' + name + u'>';
}
QString ClosingTag(const QString& name) {
    return u"</"_s + name + u'>';
}

QString SettingLine(const QString& key, const QString& value) {
    return u'\t' + OpeningTag(key) + value + ClosingTag(key) + kLineEnd;
}

void RefuseLineBreaks(const QString& text) {
    if (text.contains(u'\n') || text.contains(u'\r')) {
        throw Error(kLineBreakInSetting, GetMessage(kLineBreakInSetting, {text}));
    }
}

QStringView WithoutOuterBlanks(QStringView text) {
    while (text.startsWith(u' ')) {
        text = text.mid(1);
    }
    while (text.endsWith(u' ')) {
        text.chop(1);
    }
    return text;
}

// The lines between the first and the last one of a file: its settings. The first is the root tag
// whatever it says, and so is the last.
QStringList SettingLines(const QByteArray& bytes) {
    QStringList lines = DecodeSettings(bytes).split(u'\n');
    if (lines.last().isEmpty()) {
        lines.removeLast(); // what stands behind the last line end is no line
    }
    for (QString& line : lines) {
        if (line.endsWith(u'\r')) {
            line.chop(1);
        }
    }
    return lines.mid(1, lines.size() - 2);
}

QString FilePath(const QString& fileName) {
    return MachinePath(platform::JoinPath(gProgramPath(), fileName));
}

// The settings of a file; none when there is no file.
QStringList ReadLines(const QString& fileName) {
    const QString path = FilePath(fileName);
    if (!platform::IsFile(path)) {
        return {};
    }
    const platform::FileContent content = platform::ReadFile(path);
    Check(content.error, platform::JoinPath(gProgramPath(), fileName));
    return content.bytes.isEmpty() ? QStringList() : SettingLines(content.bytes);
}

} // namespace

void XMLSaveSettings(const QString& rootName, const QString& fileName, const QString& key,
                     const QString& value) {
    Guard("CommonFunctions", "XMLSaveSettings", [&] {
        RefuseLineBreaks(key);
        RefuseLineBreaks(value);
        const QString name = platform::Capitals(key);
        QString text = OpeningTag(rootName) + kLineEnd;
        bool found = false;
        for (const QString& line : ReadLines(fileName)) {
            const bool isKey = line.contains(OpeningTag(name));
            text += isKey ? SettingLine(name, value) : line + kLineEnd;
            found = found || isKey;
        }
        if (!found) {
            text += SettingLine(name, value);
        }
        text += ClosingTag(rootName) + kLineEnd;
        Check(platform::ReplaceFile(FilePath(fileName), EncodeSettings(text)),
              platform::JoinPath(gProgramPath(), fileName));
    });
}

QString XMLReadSettings(const QString&, const QString& fileName, const QString& key) {
    return Guard("CommonFunctions", "XMLReadSettings", [&] {
        const QString name = platform::Capitals(key);
        QString answer;
        for (QString line : ReadLines(fileName)) {
            if (line.contains(OpeningTag(name))) {
                line.remove(OpeningTag(name)).remove(ClosingTag(name)).remove(u'\t');
                answer = WithoutOuterBlanks(line).toString();
            }
        }
        return answer;
    });
}

QString GetSetting(const QString& section, const QString& key) {
    return platform::GetSetting(section, key);
}

void SaveSetting(const QString& section, const QString& key, const QString& value) {
    Guard("CommonFunctions", "SaveSetting", [&] {
        const platform::SystemError error = platform::SaveSetting(section, key, value);
        if (!error.Ok()) {
            throw Error(error.code, section + u'/' + key + u": "_s + error.text);
        }
    });
}

qint64 NumericValue(QStringView text) {
    text = text.trimmed();
    qsizetype end = text.startsWith(u'-') || text.startsWith(u'+') ? 1 : 0;
    while (end < text.size() && text[end] >= u'0' && text[end] <= u'9') {
        ++end;
    }
    return text.left(end).toLongLong(); // 0 when there are no digits or too many
}

void ShowFTMessage(int pictureId, int textId, int titleId) {
    Guard("CommonFunctions", "ShowFTMessage", [&] {
        const QString section = u"FTMessages"_s;
        const QString key = QString::number(textId);
        if (NumericValue(GetSetting(section, key)) != 0) {
            return;
        }
        const Hourglass normal(Pointer::Default);
        if (CurrentDialogue().ShowHint(pictureId, GetMessage(textId), GetMessage(titleId))) {
            SaveSetting(section, key, u"1"_s);
        }
    });
}

} // namespace velmora
