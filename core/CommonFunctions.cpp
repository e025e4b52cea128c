// The toolbox: hash, temporary names, attributes, folders, user and machine. Dates: Dates.cpp.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/CommonFunctions.h"

#include "core/Failure.h"
#include "core/MessageIds.h"
#include "core/Messages.h"
#include "core/ValidationFunctions.h"
#include "platform/Files.h"
#include "platform/Folders.h"
#include "platform/LogicalPath.h"
#include "platform/Temporary.h"
#include "platform/User.h"

#include <QCryptographicHash>
#include <cerrno>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr auto kDigest = QCryptographicHash::Blake2b_160;
constexpr qsizetype kChunk = 1 << 20;

QString Hex(const QByteArray& digest) {
    return QString::fromLatin1(digest.toHex());
}

// Reads the next piece of an open file; empty at its end.
QByteArrayView ReadChunk(const platform::FileDescriptor& file, QByteArray& buffer,
                         const QString& path) {
    for (;;) {
        const ssize_t got = read(file.Number(), buffer.data(), static_cast<size_t>(buffer.size()));
        if (got >= 0) {
            return {buffer.constData(), got};
        }
        if (errno != EINTR) {
            Check(platform::SystemError::Last(), path);
        }
    }
}

// Makes one folder of a longer path, unless it stands there.
void MakeFolder(const QString& path) {
    const QString machinePath = MachinePath(path);
    if (!platform::IsFolder(machinePath)) {
        Check(platform::CreateFolders(machinePath), path);
    }
}

bool PassesInFileName(char32_t character) {
    if (IsAlphabetic(character) || QChar::isMark(character) || QChar::isDigit(character)) {
        return true;
    }
    constexpr QStringView kOthers = u"-()',[]_. ";
    return character < 0x80 && kOthers.contains(static_cast<char16_t>(character));
}

} // namespace

QString GetFileHash(const QString& path) {
    return Guard("CommonFunctions", "GetFileHash", [&] {
        platform::SystemError error;
        const platform::FileDescriptor file = platform::OpenForReading(MachinePath(path), &error);
        Check(error, path);
        QCryptographicHash hash(kDigest);
        QByteArray buffer(kChunk, Qt::Uninitialized);
        bool empty = true;
        for (;;) {
            const QByteArrayView chunk = ReadChunk(file, buffer, path);
            if (chunk.isEmpty()) {
                break;
            }
            empty = false;
            hash.addData(chunk);
        }
        if (empty) {
            throw Error(kEmptyFile, GetMessage(kEmptyFile, {platform::DisplayPath(path)}));
        }
        return Hex(hash.result());
    });
}

QString GetHash(QByteArrayView bytes) {
    QCryptographicHash hash(kDigest);
    hash.addData(bytes);
    return Hex(hash.result());
}

QString GetTmpPath() {
    return platform::WithBackslash(platform::ToLogical(platform::TemporaryFolder()));
}

QString GetTmpFileName() {
    return Guard("CommonFunctions", "GetTmpFileName", [] {
        const platform::CreatedFile file = platform::CreateTemporaryFile();
        Check(file.error, GetTmpPath());
        return platform::ToLogical(file.path);
    });
}

bool VerifyExistsFileName(const QString& path) {
    return platform::IsFile(platform::ToMachine(path));
}

bool VerifyFileName(const QString& name) {
    const QList<uint> characters = name.toUcs4();
    return std::all_of(characters.cbegin(), characters.cend(),
                       [](uint character) { return PassesInFileName(character); });
}

QString ExtractAttribute(const QString& text, const QString& name) {
    // A missing name is found "before the first character": callers ask only for names that are
    // there, and a wrong answer was never told apart from a right one.
    const qsizetype start = text.indexOf(name, 0, Qt::CaseInsensitive);
    const qsizetype quote = (start < 0 ? -1 : start) + name.size() + 1;
    const qsizetype end = text.indexOf(u'"', quote + 1);
    return text.mid(quote, end < 0 ? -1 : end - quote).remove(u'"');
}

void BuildPath(const QString& path) {
    Guard("CommonFunctions", "BuildPath", [&] {
        if (path.startsWith(u"\\\\")) {
            throw Error(kNetworkPath, GetMessage(kNetworkPath, {path}));
        }
        const QStringList pieces = path.split(u'\\');
        QString folder = pieces.first() + u'\\';
        for (const QString& piece : pieces.mid(1)) {
            if (!piece.isEmpty()) {
                folder += piece + u'\\';
                MakeFolder(folder);
            }
        }
    });
}

void BuildPathLan(const QString& path) {
    Guard("CommonFunctions", "BuildPathLan", [&] {
        if (!path.startsWith(u"\\\\")) {
            return;
        }
        const QStringList pieces = path.split(u'\\');
        // "", "", server, share, folders: neither the server nor the share can be made.
        QString folder = u"\\\\"_s + pieces.value(2) + u'\\' + pieces.value(3) + u'\\';
        for (const QString& piece : pieces.mid(4)) {
            if (!piece.isEmpty()) {
                folder += piece + u'\\';
                MakeFolder(folder);
            }
        }
    });
}

int IsParentOrChildFolder(const QString& path, const QStringList& folders, QString& folder) {
    const auto comparable = [](const QString& each) {
        return platform::Capitals(platform::WithBackslash(each));
    };
    const QString candidate = comparable(path);
    for (const QString& each : folders) {
        const QString row = comparable(each);
        const int answer = candidate == row          ? 3
                           : candidate.contains(row) ? 2
                           : row.contains(candidate) ? 1
                                                     : 0;
        if (answer != 0) {
            folder = platform::WithoutBackslash(each);
            return answer;
        }
    }
    return 0;
}

int GetWinVersion() {
    return 1;
}

void GetCurrentLogon(QString& user, QString& domain) {
    const platform::Logon logon = platform::CurrentLogon();
    user = logon.user;
    domain = logon.domain;
}

QString GetWksName() {
    return platform::ComputerName();
}

QString GetSpecialFolderPath(int folderId) {
    const QString path = platform::SpecialFolder(folderId);
    return path.isEmpty() ? QString() : platform::WithoutBackslash(platform::ToLogical(path));
}

} // namespace velmora
