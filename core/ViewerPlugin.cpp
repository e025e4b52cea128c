// Keeps the viewer's plug-in in step with the viewer, and registers components again.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/CommonFunctions.h"
#include "core/Failure.h"
#include "core/FileFunctions.h"
#include "core/Globals.h"
#include "core/Starter.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"

using namespace Qt::StringLiterals;

namespace velmora::Starter {

namespace {

const QString kPlugIn = u"dtsacro.api"_s;
constexpr quint16 kUnknownVersion = 65535;

// The folders that take the plug-in, closing in "\plug_ins\", as far as viewers are installed.
QStringList PlugInFolders(StarterHost& host) {
    QStringList folders;
    for (const QString& registered : host.ViewerFolders()) {
        const QString folder = registered.section(u';', 0, 0);
        if (!folder.isEmpty()) {
            folders.append(platform::WithoutBackslash(folder) + u"\\plug_ins\\"_s);
        }
    }
    return folders;
}

QStringList LibraryFiles(const QString& pattern) {
    const QString folder = gProgramPath() + u"\\lib\\"_s;
    QStringList files;
    for (const platform::FolderEntry& entry :
         platform::ListFolder(platform::ToMachine(folder)).entries) {
        if (entry.kind == platform::EntryKind::File && MatchesPattern(entry.name, pattern)) {
            files.append(folder + entry.name);
        }
    }
    files.sort(Qt::CaseInsensitive);
    return files;
}

} // namespace

void RepairInstallation(StarterHost& host) {
    Guard("Starter", "RepairInstallation", [&] {
        for (const char16_t* pattern : {u"*.dll", u"*.ocx"}) {
            for (const QString& file : LibraryFiles(QString::fromUtf16(pattern))) {
                host.RegisterComponent(file);
            }
        }
    });
}

quint16 GetAcrobatMajorVersion(StarterHost& host) {
    return Guard("Starter", "GetAcrobatMajorVersion", [&]() -> quint16 {
        const QString program = host.PdfViewer();
        const QString name = platform::Capitals(platform::FileName(program));
        if (name != u"ACRORD32.EXE" && name != u"ACROBAT.EXE") {
            return kUnknownVersion;
        }
        const int version = host.MajorVersion(program);
        return version < 0 ? kUnknownVersion : static_cast<quint16>(version);
    });
}

void UninstallAcrobatPlugin(StarterHost& host) {
    Guard("Starter", "UninstallAcrobatPlugin", [&] {
        for (const QString& folder : PlugInFolders(host)) {
            const QString plugIn = folder + kPlugIn;
            if (VerifyExistsFileName(plugIn)) {
                Check(platform::RemoveFile(platform::ToMachine(plugIn)), plugIn);
            }
        }
    });
}

void InstallAcrobatPlugin(StarterHost& host) {
    Guard("Starter", "InstallAcrobatPlugin", [&] {
        for (const QString& folder : PlugInFolders(host)) {
            const QString plugIn = folder + kPlugIn;
            if (VerifyExistsFileName(plugIn)) {
                continue;
            }
            BuildPath(folder);
            const QString source = gProgramPath() + u"\\lib\\"_s + kPlugIn;
            Check(platform::CopyToNewFile(MachinePath(source), MachinePath(plugIn)), plugIn);
        }
    });
}

} // namespace velmora::Starter
