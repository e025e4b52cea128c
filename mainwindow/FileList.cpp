// Writes and reads lists of file addresses.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/FileList.h"

#include "platform/LogicalPath.h"

#include <QMimeData>
#include <QSysInfo>
#include <QUrl>
#include <optional>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr auto kUriList = "text/uri-list"_L1;
constexpr auto kGnome = "x-special/gnome-copied-files"_L1;
constexpr auto kKdeCut = "application/x-kde-cutselection"_L1;

// QUrl would take the bytes of a name for UTF-8 and change those that are not.
QByteArray Address(const QString& machinePath) {
    return "file://" + platform::EncodeName(machinePath).toPercentEncoding("/");
}

bool IsThisComputer(const QByteArray& host) {
    return host.isEmpty() || host.compare("localhost", Qt::CaseInsensitive) == 0 ||
           host.compare(QSysInfo::machineHostName().toUtf8(), Qt::CaseInsensitive) == 0;
}

// The logical path of an address; nothing when it leads elsewhere.
std::optional<QString> LocalPath(const QByteArray& address) {
    if (!address.toLower().startsWith("file:")) {
        return std::nullopt;
    }
    QByteArray path = address.mid(5);
    if (path.startsWith("//")) {
        const qsizetype slash = path.indexOf('/', 2);
        if (slash < 0 || !IsThisComputer(path.mid(2, slash - 2))) {
            return std::nullopt;
        }
        path = path.mid(slash);
    }
    const QByteArray bytes = QByteArray::fromPercentEncoding(path);
    if (!bytes.startsWith('/') || bytes.contains('\0')) {
        return std::nullopt;
    }
    return platform::WithoutBackslash(platform::ToLogical(platform::DecodeName(bytes)));
}

QList<QByteArray> Lines(const QByteArray& text) {
    QList<QByteArray> lines;
    for (QByteArray line : text.split('\n')) {
        // Some programs close the list with a zero character.
        while (line.endsWith('\r') || line.endsWith('\0')) {
            line.chop(1);
        }
        if (!line.isEmpty() && !line.startsWith('#')) {
            lines << line;
        }
    }
    return lines;
}

} // namespace

std::unique_ptr<QMimeData> ToMimeData(const FileList& list) {
    QByteArray uris;
    QByteArray gnome = list.move ? "cut" : "copy";
    QStringList shown;
    for (const QString& path : list.paths) {
        const QString machine = platform::ToMachineAsSpelled(path);
        if (machine.isEmpty()) {
            continue;
        }
        uris += Address(machine) + "\r\n";
        gnome += '\n' + Address(machine);
        shown << machine;
    }
    auto data = std::make_unique<QMimeData>();
    data->setData(kUriList, uris);
    data->setData(kGnome, gnome);
    data->setData(kKdeCut, list.move ? "1" : "0");
    data->setText(shown.join(u'\n'));
    return data;
}

bool HasFileList(const QMimeData& data) {
    return data.hasFormat(kUriList) || data.hasFormat(kGnome);
}

FileList FromMimeData(const QMimeData& data, QStringList* foreign) {
    FileList list;
    QList<QByteArray> addresses;
    if (data.hasFormat(kGnome)) {
        addresses = Lines(data.data(kGnome));
        list.move = !addresses.isEmpty() && addresses.front() == "cut";
        if (list.move || (!addresses.isEmpty() && addresses.front() == "copy")) {
            addresses.removeFirst();
        }
    }
    if (addresses.isEmpty()) {
        addresses = Lines(data.data(kUriList));
    }
    list.move = list.move || data.data(kKdeCut).startsWith('1');
    for (const QByteArray& address : addresses) {
        const std::optional<QString> path = LocalPath(address);
        if (path && !list.paths.contains(*path)) {
            list.paths << *path;
        } else if (!path && foreign) {
            *foreign << QUrl(QString::fromUtf8(address)).toDisplayString();
        }
    }
    return list;
}

} // namespace velmora
