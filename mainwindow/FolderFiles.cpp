// Reads the content of a folder; sizes and dates as texts and as sort keys.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/FolderFiles.h"

#include "core/Messages.h"
#include "mainwindow/FileOrder.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"

#include <QDateTime>
#include <QLocale>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr unsigned kAnyExecute = 0111;

QDateTime LocalTime(qint64 modifiedNs) {
    return QDateTime::fromMSecsSinceEpoch(modifiedNs / 1'000'000);
}

} // namespace

FileRow RowOf(const QString& name, const platform::FileStatus& status) {
    const bool isProgram = !status.IsFolder() && (status.mode & kAnyExecute) != 0;
    return {name, status.IsFolder(), status.size, status.modifiedNs, isProgram};
}

bool IsShown(const QString& name, const platform::FileStatus& status) {
    return !name.startsWith(u'.') &&
           (status.IsFolder() || status.kind == platform::EntryKind::File);
}

FolderContent ReadRows(const QString& folder,
                       const std::function<bool(const std::vector<FileRow>&)>& goOn) {
    FolderContent content;
    content.exists = !folder.isEmpty() && platform::IsFolder(folder);
    if (!content.exists) {
        return content;
    }
    content.error = platform::VisitFolder(folder, [&](const platform::FolderEntry& entry) {
        if (IsShown(entry.name, entry)) {
            content.rows.push_back(RowOf(entry.name, entry));
        }
        return goOn(content.rows);
    });
    return content;
}

FolderContent ReadFolder(const QString& folder) {
    FolderContent content =
        ReadRows(platform::ToMachine(folder), [](const std::vector<FileRow>&) { return true; });
    SortRows(content.rows, FileColumn::Name, false);
    return content;
}

QString SizeText(qint64 bytes) {
    if (bytes < 0) {
        return {};
    }
    if (bytes < 1000) {
        return QString::number(bytes) + u" b"_s;
    }
    const bool kilo = bytes <= 1'000'000;
    const double value = static_cast<double>(bytes) / (kilo ? 1024.0 : 1024.0 * 1024.0);
    QLocale locale = ProgramLocale();
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    QString number = locale.toString(value, 'f', 2);
    // Two places at most, not at least.
    while (number.endsWith(u'0')) {
        number.chop(1);
    }
    if (!number.back().isDigit()) {
        number.chop(1);
    }
    return number + (kilo ? u" Kb"_s : u" Mb"_s);
}

QString SizeKey(qint64 bytes) {
    return bytes < 0 ? QString() : u"%1"_s.arg(bytes, 20, 10, QChar(u'0'));
}

QString DateText(qint64 modifiedNs) {
    if (modifiedNs == 0) {
        return {};
    }
    const QDateTime time = LocalTime(modifiedNs);
    const QString picture = GetDateFormat().replace(u'm', u'M');
    return time.date().toString(picture) + u' ' +
           QLocale::system().toString(time.time(), QLocale::ShortFormat);
}

QString DateKey(qint64 modifiedNs) {
    return modifiedNs == 0 ? QString() : LocalTime(modifiedNs).toString(u"yyyyMMddHHmmss");
}

QString PathOf(const QString& folder, const QString& name) {
    return platform::JoinPath(folder, platform::ToLogical(u'/' + name).mid(1));
}

} // namespace velmora
