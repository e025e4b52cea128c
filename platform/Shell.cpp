// Handing files over to the desktop.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Shell.h"

#include "platform/Files.h"
#include "platform/Names.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <algorithm>
#include <cerrno>

namespace platform {

namespace {

SystemError WithSubject(const QString& subject, int code) {
    SystemError error = SystemError::Of(code);
    error.text = subject + QLatin1String(": ") + error.text;
    return error;
}

SystemError StartOpener(const QString& address) {
    const QString name = QStringLiteral("xdg-open");
    const QString opener = QStandardPaths::findExecutable(name);
    if (opener.isEmpty()) {
        return WithSubject(name, ENOENT);
    }
    QProcess process;
    process.setProgram(opener);
    process.setArguments({address});
    // Its chatter has no place in the output of a command line.
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    return process.startDetached() ? SystemError() : WithSubject(opener, ENOEXEC);
}

QString Absolute(const QString& path) {
    return path.startsWith(u'/') ? path : QDir::currentPath() + u'/' + path;
}

/// As an address the name is plain ASCII: whatever bytes it
/// holds arrive, and a leading "-" is no option.
QString FileAddress(const QString& path) {
    return QStringLiteral("file://") + QString::fromLatin1(EncodeName(path).toPercentEncoding("/"));
}

bool IsAddressOf(const QString& address, const char* scheme) {
    return address.startsWith(QLatin1String(scheme), Qt::CaseInsensitive) &&
           std::all_of(address.begin(), address.end(),
                       [](QChar c) { return c.isPrint() && !c.isSpace(); });
}

} // namespace

SystemError OpenWithDesktop(const QString& path) {
    const QString whole = Absolute(path);
    SystemError error;
    if (!StatusOf(whole, &error)) {
        return error;
    }
    return StartOpener(FileAddress(whole));
}

SystemError OpenContainingFolder(const QString& path) {
    const QString folder = Absolute(path).section(u'/', 0, -2);
    return OpenWithDesktop(folder.isEmpty() ? QStringLiteral("/") : folder);
}

SystemError OpenMailTo(const QString& address) {
    return IsAddressOf(address, "mailto:") ? StartOpener(address) : SystemError::Of(EINVAL);
}

SystemError OpenWebPage(const QString& address) {
    const bool isPage = IsAddressOf(address, "https://") || IsAddressOf(address, "http://");
    return isPage ? StartOpener(address) : SystemError::Of(EINVAL);
}

} // namespace platform
