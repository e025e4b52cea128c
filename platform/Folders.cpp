// Where the desktop, the documents and the program's own files lie.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Folders.h"

#include "platform/Files.h"
#include "platform/Names.h"
#include "platform/User.h"

#include <QDir>
#include <QStandardPaths>
#include <cerrno>
#include <mutex>
#include <unistd.h>

namespace platform {

namespace {

const QString kProgram = QStringLiteral("velmora");

QString Below(const QString& folder, const QString& name) {
    return folder + u'/' + name;
}

QString FolderOfExecutable() {
    return SingleCopy::OwnExecutable().section(u'/', 0, -2);
}

QString FolderFromEnvironment(const char* variable) {
    const QString folder = DecodeName(qgetenv(variable));
    return folder.isEmpty() ? QString() : QDir::cleanPath(QDir::current().absoluteFilePath(folder));
}

bool HoldsProgramFiles(const QString& folder) {
    return IsFile(Below(folder, QStringLiteral("db.mdb"))) ||
           IsFile(Below(folder, QStringLiteral("default.abc")));
}

/// A copy that lays the folder at the same moment has done the same work.
SystemError LayFile(const QString& from, const QString& to) {
    const SystemError error = Exists(to) ? SystemError() : CopyToNewFile(from, to);
    return error.code == EEXIST ? SystemError() : error;
}

/// A file or a folder with all that is below it; links to folders are left out.
SystemError Lay(const QString& from, const QString& to) {
    const auto status = StatusOf(from);
    if (!status) {
        return {};
    }
    if (status->kind == EntryKind::File) {
        return LayFile(from, to);
    }
    if (status->kind != EntryKind::Folder) {
        return {};
    }
    if (const SystemError error = CreateFolders(to); !error.Ok()) {
        return error;
    }
    const FolderListing listing = ListFolder(from);
    for (const FolderEntry& entry : listing.entries) {
        if (const SystemError error = Lay(Below(from, entry.name), Below(to, entry.name));
            !error.Ok()) {
            return error;
        }
    }
    return listing.error;
}

struct LaidFolder {
    QString path;
    SystemError error;
};

const LaidFolder& ProgramFolderOfThisProcess() {
    static const LaidFolder laid = [] {
        const ProgramPlaces places = PlacesOfThisProgram();
        const QString folder = ChooseProgramFolder(places);
        // A portable copy is complete: what an installation keeps
        // elsewhere may be of another version.
        const bool portable = places.homeOverride.isEmpty() && folder == places.executableFolder;
        return LaidFolder{folder,
                          LayProgramFolder(folder, portable ? QStringList() : places.shareFolders)};
    }();
    return laid;
}

} // namespace

QString SpecialFolder(int id) {
    switch (id) {
    case kDesktopFolder:
        return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    case kDocumentsFolder:
        return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    default:
        return {};
    }
}

ProgramPlaces PlacesOfThisProgram() {
    ProgramPlaces places;
    places.executableFolder = FolderOfExecutable();
    places.homeOverride = FolderFromEnvironment("VELMORA_HOME");
    places.userDataFolder =
        Below(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation), kProgram);
    places.shareFolders +=
        QDir::cleanPath(Below(places.executableFolder, QStringLiteral("../share/velmora")));
    for (const QString& folder :
         QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
        places.shareFolders += Below(folder, kProgram);
    }
    places.shareFolders.removeAll(places.userDataFolder);
    return places;
}

QString ChooseProgramFolder(const ProgramPlaces& places) {
    if (!places.homeOverride.isEmpty()) {
        return places.homeOverride;
    }
    const bool portable =
        IsWritableFolder(places.executableFolder) && HoldsProgramFiles(places.executableFolder);
    return portable ? places.executableFolder : places.userDataFolder;
}

SystemError LayProgramFolder(const QString& folder, const QStringList& shareFolders) {
    SystemError error = CreateFolders(folder, 0700);
    if (error.Ok()) {
        error = CreateFolders(Below(folder, QStringLiteral("indexes")));
    }
    for (const QString& share : shareFolders) {
        if (!error.Ok() || !IsFolder(share)) {
            continue;
        }
        for (const char* name : {"db.mdb", "default.abc", "lib", "graphics"}) {
            const QString item = QString::fromLatin1(name);
            error = error.Ok() ? Lay(Below(share, item), Below(folder, item)) : error;
        }
        break;
    }
    return error;
}

QString ProgramFolder() {
    return ProgramFolderOfThisProcess().path;
}

SystemError ProgramFolderError() {
    return ProgramFolderOfThisProcess().error;
}

QString WorkerProgram() {
    QStringList places{FolderFromEnvironment("VELMORA_WORKER")};
    if (places.first().isEmpty()) {
        places.clear();
        for (const char* place : {"", "../bin/", "../libexec/velmora/", "../lib/velmora/"}) {
            places +=
                QDir::cleanPath(Below(FolderOfExecutable(), QString::fromLatin1(place) +
                                                                QStringLiteral("velmora-worker")));
        }
    }
    for (const QString& place : places) {
        if (IsFile(place) && access(EncodeName(place).constData(), X_OK) == 0) {
            return place;
        }
    }
    return {};
}

} // namespace platform
