// The order of the start, the switches, the archive, the viewer's plug-in.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Starter.h"
#include "core/Events.h"
#include "core/Messages.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <gtest/gtest.h>

#include <clocale>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class FakeHost : public StarterHost {
  public:
    QStringList steps;
    bool secondCopy = false;
    qint32 locale = 1033;
    int winVersion = 1;
    QString user = u"Anna Weiß"_s;
    QString domain = u"Büro"_s;
    ArchiveChoice choice;
    QString viewer;
    int viewerVersion = -1;
    QStringList viewerFolders;
    std::function<void()> atSplash = [] {};

    bool IsSecondCopy() override {
        steps << u"copy"_s;
        return secondCopy;
    }
    void ShowSplash() override {
        steps << u"splash"_s;
        atSplash();
    }
    ArchiveChoice ShowArchiveSelection() override {
        steps << u"archives"_s;
        return choice;
    }
    void ShowFrmMain() override { steps << u"main"_s; }
    qint32 GetUserDefaultLCID() override {
        steps << u"locale"_s;
        return locale;
    }
    int GetWinVersion() override { return winVersion; }
    void GetCurrentLogon(QString& userOut, QString& domainOut) override {
        steps << u"logon"_s;
        userOut = user;
        domainOut = domain;
    }
    void GetCurrentLogon16(QString& userOut, QString& domainOut) override {
        steps << u"logon16"_s;
        userOut = user;
        domainOut = domain;
    }
    QString GetWksName() override { return u"desk-7"_s; }
    void RegisterComponent(const QString& file) override {
        steps << u"register "_s + platform::FileName(file);
    }
    QString PdfViewer() override {
        steps << u"viewer"_s;
        return viewer;
    }
    int MajorVersion(const QString&) override { return viewerVersion; }
    QStringList ViewerFolders() override { return viewerFolders; }
};

class StarterTest : public testing::Test {
  protected:
    StarterTest() {
        ThePlace().Clear();
        Program().yieldToEvents = [this] { host.steps << u"yield"_s; };
    }

    void Start(const QString& commandLine) { Starter::main(host, commandLine); }

    ScopedGlobals program;
    ScriptedReporter reporter;
    FakeHost host;
};

TEST_F(StarterTest, NormalStartRunsInOrder) {
    Start({});
    EXPECT_EQ(host.steps, QStringList({u"copy"_s, u"splash"_s, u"yield"_s, u"yield"_s, u"locale"_s,
                                       u"logon"_s, u"viewer"_s, u"main"_s}));
    EXPECT_EQ(program->gLocaleId, 1033);
    EXPECT_EQ(program->gUserKey, u"BÜRO.ANNA WEISS"_s);
    EXPECT_EQ(program->gArchivePath, ThePlace().Logical("program"));
    EXPECT_TRUE(program->gIsDefaultArchive);
    EXPECT_FALSE(program->gAutoIndexing);
    EXPECT_FALSE(program->gShutdownAfterIndexing);
    EXPECT_EQ(program->gAcrobatMajorVersion, -1);
    EXPECT_EQ(program->HelpFile, ThePlace().Logical("program") + u"\\Velmora_en.chm"_s);
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(StarterTest, SecondCopyStartsForTheScheduledRunAlone) {
    struct Case {
        QString line;
        bool starts;
    };
    for (const auto& [line, starts] :
         {Case{u""_s, false}, Case{u"/ARCHIVE \\X"_s, false}, Case{u"autoindex"_s, false},
          Case{u"/autoindex"_s, true}, Case{u"/AutoIndexing"_s, true}}) {
        host.steps.clear();
        host.secondCopy = true;
        Start(line);
        EXPECT_EQ(host.steps.contains(u"main"_s), starts) << qPrintable(line);
        EXPECT_EQ(host.steps.contains(u"splash"_s), starts) << qPrintable(line);
    }
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(StarterTest, LanguageSwitchesOverwriteEachOtherInTheirOwnOrder) {
    struct Case {
        QString line;
        qint32 locale;
    };
    for (const auto& [line, locale] :
         {Case{u""_s, 1040}, Case{u"/fr"_s, 1036}, Case{u"/DE /FR"_s, 1031},
          Case{u"/sp /fr"_s, 1034}, Case{u"/EN /DE /SP /FR"_s, 0}, Case{u"FR"_s, 1040},
          // Nothing ties a switch to a word: this path holds one.
          Case{u"/archive C:/DEPOT"_s, 1031}, Case{u"/frozen"_s, 1036}}) {
        host.locale = 1040;
        Start(line);
        EXPECT_EQ(program->gLocaleId, locale) << qPrintable(line);
    }
}

TEST_F(StarterTest, RepairComesBeforeTheLanguageAndTheStartGoesOn) {
    for (const char* name : {"b.ocx", "a.DLL", "c.dll", "d.txt"}) {
        WriteFile(ThePlace().Path("program", u"lib/"_s + QLatin1StringView(name)), "x");
    }
    Start(u"/REPAIR /EN"_s);
    EXPECT_EQ(host.steps.mid(4),
              QStringList({u"register a.DLL"_s, u"register c.dll"_s, u"register b.ocx"_s,
                           u"locale"_s, u"logon"_s, u"viewer"_s, u"main"_s}));
    EXPECT_EQ(program->gLocaleId, 0);
    EXPECT_EQ(CurrentLanguage(), Language::English);
}

TEST_F(StarterTest, UserKeyFallsBackOnlyWhereItShould) {
    host.domain = u"  "_s;
    Start({});
    EXPECT_EQ(program->gUserKey, u"DESK-7.ANNA WEISS"_s);

    host.domain = u"buero"_s;
    host.user.clear(); // a failed logon has no substitute here
    Start({});
    EXPECT_EQ(program->gUserKey, u"BUERO."_s);

    host.winVersion = -1;
    host.user = u" "_s;
    Start({});
    EXPECT_EQ(program->gUserKey, u"BUERO.WIN9X"_s);
    EXPECT_TRUE(host.steps.contains(u"logon16"_s));
}

TEST_F(StarterTest, ArchiveSwitchTakesTheRestOfItsPiece) {
    const QString program0 = ThePlace().Logical("program");
    WriteFile(ThePlace().Path("program", u"SharedArchives.xml"_s), "<Velmora>\r\n</Velmora>\r\n");
    struct Case {
        QString line;
        QString path; // empty: the default archive
        QString key;
    };
    const QString own = u"BÜRO.ANNA WEISS"_s;
    const QString shared = u"SHARED"_s;
    for (const auto& [line, path, key] : {
             Case{u"/ARCHIVE"_s, {}, own},
             Case{u"/archive   "_s, {}, own},
             Case{u"/archive \\srv\\docs"_s, u"\\SRV\\DOCS"_s, shared},
             Case{u"/ARCHIVE \\SRV\\DOCS"_s, u"\\SRV\\DOCS"_s, shared},
             Case{u"/autoindexing /archive \\\\nas\\a b /shutdown"_s, u"\\\\NAS\\A B"_s, shared},
             Case{u"/autoindexing /archive /shutdown"_s, {}, own},
             Case{u"/archive \\one /archive \\two"_s, u"\\TWO"_s, shared},
             Case{u"/archive \\a/b"_s, u"\\A"_s, shared}, // cut at the slash
             // An empty piece takes the folder back, and leaves the key as it was.
             Case{u"/archive \\one /archive"_s, {}, shared},
         }) {
        host.steps.clear();
        Start(line);
        EXPECT_EQ(program->gArchivePath, path.isEmpty() ? program0 : path) << qPrintable(line);
        EXPECT_EQ(program->gIsDefaultArchive, path.isEmpty()) << qPrintable(line);
        EXPECT_EQ(program->gUserKey, key) << qPrintable(line);
        EXPECT_FALSE(host.steps.contains(u"archives"_s)) << qPrintable(line);
    }
}

TEST_F(StarterTest, SelectionIsAskedWhenThereAreSharedArchives) {
    WriteFile(ThePlace().Path("program", u"SharedArchives.xml"_s), "<Velmora>\r\n</Velmora>\r\n");

    host.choice = {false, u"\\\\nas\\Team"_s};
    Start({});
    EXPECT_EQ(program->gArchivePath, u"\\\\nas\\Team"_s); // as chosen, not in capitals
    EXPECT_EQ(program->gUserKey, u"SHARED"_s);
    EXPECT_FALSE(program->gIsDefaultArchive);

    host.choice = {false, {}};
    Start({});
    EXPECT_EQ(program->gArchivePath, ThePlace().Logical("program"));
    EXPECT_EQ(program->gUserKey, u"BÜRO.ANNA WEISS"_s);
    EXPECT_TRUE(program->gIsDefaultArchive);

    host.steps.clear();
    host.choice = {true, u"\\\\nas\\Team"_s};
    Start(u"/shutdown"_s);
    EXPECT_EQ(host.steps.last(), u"archives"_s);
    EXPECT_FALSE(program->gShutdownAfterIndexing);
}

TEST_F(StarterTest, UnattendedFlagsAreReadFromTheWholeLine) {
    Start(u"/autoindex"_s);
    EXPECT_FALSE(program->gAutoIndexing);
    Start(u"/autoindexing /archive \\x /shutdown"_s);
    EXPECT_TRUE(program->gAutoIndexing);
    EXPECT_TRUE(program->gShutdownAfterIndexing);
}

TEST_F(StarterTest, OlderViewersGetThePlugInAndNewerOnesLoseIt) {
    WriteFile(ThePlace().Path("program", u"lib/dtsacro.api"_s), "plug-in");
    const QString first = ThePlace().Path("home", u"reader/plug_ins/dtsacro.api"_s);
    const QString second = ThePlace().Path("home", u"full/plug_ins/dtsacro.api"_s);
    QDir().mkpath(ThePlace().Path("home", u"reader"_s));
    WriteFile(second, "older");
    host.viewerFolders = {ThePlace().Logical("home", u"reader"_s) + u";\\elsewhere"_s, QString(),
                          ThePlace().Logical("home", u"full"_s)};

    host.viewer = u"\\opt\\reader\\AcroRd32.exe"_s;
    host.viewerVersion = 6;
    Start({});
    EXPECT_EQ(program->gAcrobatMajorVersion, 6);
    EXPECT_EQ(BytesOf(first), "plug-in");
    EXPECT_EQ(BytesOf(second), "older"); // what is there stays

    host.viewer = u"\\opt\\full\\acrobat.EXE"_s;
    host.viewerVersion = 7;
    Start({});
    EXPECT_EQ(program->gAcrobatMajorVersion, 7);
    EXPECT_FALSE(QFile::exists(first));
    EXPECT_FALSE(QFile::exists(second));

    host.viewer = u"\\usr\\bin\\okular"_s;
    host.viewerVersion = 22;
    EXPECT_EQ(Starter::GetAcrobatMajorVersion(host), 65535);
    Start({});
    EXPECT_EQ(program->gAcrobatMajorVersion, -1);
    EXPECT_EQ(BytesOf(first), "plug-in"); // unknown counts as below 7
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(StarterTest, AFailingStepIsRepeatedOrEndsTheStart) {
    int failures = 1;
    host.atSplash = [&failures] {
        if (failures-- > 0) {
            throw std::runtime_error("no screen");
        }
    };
    reporter.Next([] { return true; });
    Start({});
    ASSERT_EQ(reporter.reports.size(), 1);
    EXPECT_TRUE(reporter.reports[0].contains(u"no screen"_s));
    EXPECT_TRUE(reporter.reports[0].endsWith(u"Starter/main"_s));
    EXPECT_EQ(host.steps.count(u"splash"_s), 2);
    EXPECT_EQ(host.steps.last(), u"main"_s);

    host.steps.clear();
    failures = 1;
    Start({});
    EXPECT_EQ(host.steps, QStringList({u"copy"_s, u"splash"_s}));
}

TEST_F(StarterTest, TheMachineItselfAnswersWhereNobodyElseDoes) {
    struct Plain : StarterHost {
        void ShowSplash() override {}
        ArchiveChoice ShowArchiveSelection() override { return {}; }
        void ShowFrmMain() override {}
    } plain;
    EXPECT_FALSE(plain.IsSecondCopy());
    EXPECT_FALSE(plain.IsSecondCopy()); // asking twice is no second copy
    Plain other;
    EXPECT_TRUE(other.IsSecondCopy());

    Starter::main(plain, u"/archive"_s);
    EXPECT_TRUE(reporter.reports.isEmpty());
    EXPECT_GT(program->gUserKey.size(), 2);
    EXPECT_EQ(program->gUserKey, platform::Capitals(program->gUserKey));
}

TEST(CommandLineTest, JoinsArgumentsBehindTheProgramsName) {
    EXPECT_EQ(Starter::CommandLine({u"/usr/bin/velmora"_s, u"/ARCHIVE"_s, u"\\A B"_s}),
              u"/ARCHIVE \\A B"_s);
    EXPECT_EQ(Starter::CommandLine({u"velmora"_s}), QString());
}

TEST(PrepareLocaleTest, NumbersAreReadWithAFullStop) {
    std::setlocale(LC_NUMERIC, "");
    PrepareLocale();
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
}

} // namespace
} // namespace velmora
