// Opening the archive that the command line names.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Session.h"

#include "cli/Ending.h"
#include "cli/MessageIds.h"
#include "core/Globals.h"
#include "core/MessageIds.h"
#include "core/Messages.h"
#include "core/Starter.h"
#include "platform/Files.h"
#include "platform/Folders.h"
#include "platform/LogicalPath.h"
#include "platform/User.h"
#include "store/ModDb.h"

#include <QDir>
#include <cstdlib>
#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// The start of the windows' program, without windows: it finds the program folder, the user key
// and the default archive.
class CommandHost : public StarterHost {
  public:
    void ShowSplash() override {}
    // The list of archives is for choosing by hand; here --archive chooses.
    ArchiveChoice ShowArchiveSelection() override { return {}; }
    void ShowFrmMain() override { m_ready = true; }
    // A command runs beside the window and beside other commands.
    bool IsSecondCopy() override { return false; }
    qint32 GetUserDefaultLCID() override { return Program().gLocaleId; }

    [[nodiscard]] bool Ready() const { return m_ready; }

  private:
    bool m_ready = false;
};

class SilentReporter : public Reporter {
  public:
    bool Retry(const QString&) override { return false; }
};

void TakeDefaultArchive() {
    const QString folder = platform::ProgramFolder();
    if (const auto error = platform::ProgramFolderError(); !error.Ok()) {
        throw CommandError{kUnusable, folder + u": "_s + error.text};
    }
    CommandHost host;
    Starter::main(host, {});
    if (!host.Ready()) {
        throw CommandError{kUnusable, {}};
    }
}

void TakeArchive(const QByteArray& folder) {
    Program().gArchivePath = LogicalPathOf(folder);
    Program().gIsDefaultArchive = false;
    Program().gUserKey = u"SHARED"_s;
}

// The key names a folder of the archive.
QString UserKeyOf(const QByteArray& value) {
    const QString key = platform::Capitals(TextOf(value)).trimmed();
    const bool isFolderName = !key.isEmpty() && key != u"." && key != u".." &&
                              !key.contains(u'\\') && !key.contains(u'/') && !key.contains(u'>') &&
                              !key.contains(u'|');
    if (!isFolderName) {
        throw UsageError{kBadUserKey, {TextOf(value)}};
    }
    return key;
}

void OpenDatabase() {
    const QString database = platform::JoinPath(Program().gArchivePath, u"db.mdb"_s);
    const QString machinePath = platform::ToMachine(database);
    if (machinePath.isEmpty() || !platform::Exists(machinePath)) {
        throw CommandError{kUnusable,
                           GetMessage(kNoArchive, {platform::DisplayPath(Program().gArchivePath)})};
    }
    // Silent, since the failure that counts is thrown in the end. An archive that may only be read
    // cannot be brought up to date, and can be searched all the same.
    SilentReporter silent;
    const ScopedReporter quiet(silent);
    try {
        (void)OpenedConnection();
    } catch (const Error& error) {
        throw CommandError{kUnusable, error.Text()};
    }
}

QString CurrentFolder() {
    const std::unique_ptr<char, decltype(&std::free)> folder(::getcwd(nullptr, 0), &std::free);
    return folder ? platform::DecodeName(folder.get()) : u"/"_s;
}

// ".." goes up from where a link leads, as everywhere in the system: cutting the text would not.
QString WithoutDots(const QString& path) {
    if (path.contains(u"/../") || path.endsWith(u"/..")) {
        const std::unique_ptr<char, decltype(&std::free)> real(
            ::realpath(platform::EncodeName(path).constData(), nullptr), &std::free);
        if (real) {
            return platform::DecodeName(real.get());
        }
    }
    return QDir::cleanPath(path);
}

} // namespace

void ChooseLanguage(const QByteArrayList& words) {
    Program().gLocaleId = static_cast<qint32>(platform::UserLocaleId());
    const auto name = Arguments::Find(words, "--lang");
    if (!name) {
        return;
    }
    static const QHash<QByteArray, Language> kLanguages{{"it", Language::Italian},
                                                        {"en", Language::English},
                                                        {"de", Language::German},
                                                        {"es", Language::Spanish},
                                                        {"fr", Language::French}};
    const auto found = kLanguages.constFind(*name);
    if (found == kLanguages.cend()) {
        throw UsageError{kUnknownLanguage, {platform::DecodeName(*name)}};
    }
    Program().gLocaleId = LocaleIdOf(*found);
}

void OpenArchive(const Arguments& arguments) {
    const QString key =
        arguments.Has("--user-key") ? UserKeyOf(arguments.Value("--user-key")) : QString();
    if (arguments.Has("--archive")) {
        TakeArchive(arguments.Value("--archive"));
    } else {
        TakeDefaultArchive();
    }
    if (!key.isEmpty()) {
        Program().gUserKey = key;
    }
    OpenDatabase();
}

QString MachinePathOf(const QByteArray& argument) {
    if (argument.isEmpty()) {
        throw UsageError{kArgumentEmpty, {}};
    }
    const QString path = platform::DecodeName(argument);
    return WithoutDots(path.startsWith(u'/') ? path : CurrentFolder() + u'/' + path);
}

QString LogicalPathOf(const QByteArray& argument) {
    return platform::WithoutBackslash(platform::ToLogical(MachinePathOf(argument)));
}

bool CommandReporter::Retry(const QString& report) {
    m_failed = true;
    m_output.Complain(QString(report).remove(u'\r'));
    return false;
}

void CommandDialogue::Tell(const QString& text, const QString& title, Icon) {
    m_output.Complain(title.isEmpty() ? text : title + u": "_s + text);
}

Answer CommandDialogue::Ask(const QString& text, const QString& title, Icon icon) {
    const bool yes = m_yesTo.contains(title);
    const QString answer = GetMessage(yes ? kYes : kNo).remove(u'&');
    Tell(text + u" ["_s + answer + u']', title, icon);
    return yes ? Answer::Yes : Answer::No;
}

} // namespace velmora
