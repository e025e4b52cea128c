// The start of the process, step by step.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Starter.h"

#include "core/Events.h"
#include "core/Failure.h"
#include "core/Globals.h"
#include "core/Messages.h"
#include "platform/Files.h"
#include "platform/Folders.h"
#include "platform/LogicalPath.h"

using namespace Qt::StringLiterals;

namespace velmora::Starter {

namespace {

constexpr QStringView kSharedKey = u"SHARED";

// The command line in capitals. Its switches are found as plain texts, wherever they stand: a
// path that holds "/FR" switches the language too, and "/AUTOINDEXING" holds "/AUTOINDEX".
struct Switches {
    QString capitals;
    bool Has(QStringView name) const { return capitals.contains(name); }
};

// The program folder is laid at its first use. What went wrong then is told here, where a retry
// can mend it.
void EnsureProgramFolder() {
    const QString folder = platform::ProgramFolder();
    if (!platform::ProgramFolderError().Ok()) {
        Check(platform::LayProgramFolder(folder, platform::PlacesOfThisProgram().shareFolders),
              platform::ToLogical(folder));
    }
}

void ChooseLanguage(StarterHost& host, const Switches& switches) {
    qint32& locale = Program().gLocaleId;
    locale = host.GetUserDefaultLCID();
    // In this order, so that the last one wins and English beats all.
    if (switches.Has(u"/FR")) {
        locale = LocaleIdOf(Language::French);
    }
    if (switches.Has(u"/SP")) {
        locale = LocaleIdOf(Language::Spanish);
    }
    if (switches.Has(u"/DE")) {
        locale = LocaleIdOf(Language::German);
    }
    if (switches.Has(u"/EN")) {
        locale = LocaleIdOf(Language::English);
    }
}

void WorkOutUser(StarterHost& host) {
    QString user;
    QString domain;
    if (host.GetWinVersion() == -1) {
        host.GetCurrentLogon16(user, domain);
        if (user.trimmed().isEmpty()) {
            user = u"WIN9X"_s;
        }
    } else {
        host.GetCurrentLogon(user, domain);
    }
    if (domain.trimmed().isEmpty()) {
        domain = host.GetWksName();
    }
    Program().gUserKey = platform::Capitals(domain) + u'.' + platform::Capitals(user);
}

void BringPluginInStep(StarterHost& host) {
    const quint16 version = GetAcrobatMajorVersion(host);
    Program().gAcrobatMajorVersion = static_cast<qint16>(version);
    // The unknown version, 65535, is -1 here: a machine without a known viewer installs too.
    if (Program().gAcrobatMajorVersion < 7) {
        InstallAcrobatPlugin(host);
    } else {
        UninstallAcrobatPlugin(host);
    }
}

void TakeDefaultArchive() {
    Program().gArchivePath = gProgramPath();
    Program().gIsDefaultArchive = true;
}

void TakeArchive(const QString& path) {
    if (path.isEmpty()) {
        TakeDefaultArchive();
        return;
    }
    Program().gArchivePath = path;
    Program().gIsDefaultArchive = false;
    Program().gUserKey = kSharedKey.toString();
}

// Every piece between slashes that names the switch sets the archive; the last one stays.
void TakeArchivesOf(const QStringList& pieces) {
    const QString name = u"/ARCHIVE"_s;
    for (const QString& piece : pieces) {
        QString text = platform::Capitals(u'/' + piece);
        if (text.contains(name)) {
            TakeArchive(text.remove(name).trimmed());
        }
    }
}

// False when the person cancelled the selection.
bool ChooseArchive(StarterHost& host, const Switches& switches, const QStringList& pieces) {
    if (switches.Has(u"/ARCHIVE")) {
        TakeArchivesOf(pieces);
        return true;
    }
    if (!platform::IsFile(platform::ToMachine(gProgramPath() + u"\\SharedArchives.xml"_s))) {
        TakeDefaultArchive();
        return true;
    }
    const ArchiveChoice choice = host.ShowArchiveSelection();
    if (!choice.cancelled) {
        TakeArchive(choice.path);
    }
    return !choice.cancelled;
}

void ReadUnattendedFlags(const Switches& switches) {
    if (switches.Has(u"/AUTOINDEXING")) {
        Program().gAutoIndexing = true;
    }
    if (switches.Has(u"/SHUTDOWN")) {
        Program().gShutdownAfterIndexing = true;
    }
}

// One step of the start; false when it failed and the person gave it up, which ends the start.
template <class Step> bool Run(Step&& step, int line = __builtin_LINE()) {
    return Attempt("Starter", "main", std::forward<Step>(step), line);
}

} // namespace

QString CommandLine(const QStringList& arguments) {
    return arguments.mid(1).join(u' ');
}

void main(StarterHost& host, const QString& commandLine) {
    const Switches switches{platform::Capitals(commandLine)};

    // A scheduled run alone may overlap a running copy. Asked of the machine in any case, so that
    // this copy counts as running.
    bool secondCopy = false;
    if (!Run([&] { secondCopy = host.IsSecondCopy(); }) ||
        (secondCopy && !switches.Has(u"/AUTOINDEX"))) {
        return;
    }
    if (!Run([&] { host.ShowSplash(); }) || !Run([] {
            YieldToEvents();
            YieldToEvents();
        })) {
        return;
    }
    if (switches.Has(u"/REPAIR")) {
        RepairInstallation(host);
    }
    bool archiveChosen = false;
    const bool ready =
        Run([&] { ChooseLanguage(host, switches); }) && Run([] { EnsureProgramFolder(); }) &&
        Run([] { SelectLanguageHelp(); }) && Run([&] { WorkOutUser(host); }) &&
        Run([&] { BringPluginInStep(host); }) &&
        Run([&] { archiveChosen = ChooseArchive(host, switches, commandLine.split(u'/')); });
    if (!ready || !archiveChosen) {
        return;
    }
    ReadUnattendedFlags(switches);
    (void)Run([&] { host.ShowFrmMain(); });
}

} // namespace velmora::Starter
