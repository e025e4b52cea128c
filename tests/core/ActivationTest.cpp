// The first activation: first-start question, first steps, unattended run, notice after an update.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Activation.h"
#include "core/Settings.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class FakeWindow : public ActivationHost {
  public:
    QStringList steps;
    bool cancelUpdate = false;

    void AddIndexedFolder(const QString& path, const QString& description,
                          const QString& iconId) override {
        steps << u"row "_s + path + u' ' + description + u' ' + iconId;
    }
    void ShowFrmGestFolders() override {
        steps << (CurrentDialogue().CurrentPointer() == Pointer::Hourglass ? u"folders busy"_s
                                                                           : u"folders"_s);
    }
    void InitializeTreeView() override { steps << u"tree"_s; }
    void ShowFrmQuickStart() override { steps << u"quick start"_s; }
    bool RunUnattendedUpdate(bool tickShutDown) override {
        steps << (tickShutDown ? u"update ticked"_s : u"update"_s);
        return cancelUpdate;
    }
    void ShutDownPC(bool force) override { steps << (force ? u"power off"_s : u"no"_s); }
    void UnloadFrmMain() override { steps << u"unload"_s; }
};

class ActivationTest : public testing::Test {
  protected:
    ActivationTest() { ThePlace().Clear(); }

    QStringList Activate(bool emptyTree = false) {
        window.steps.clear();
        ActivationState state{true, emptyTree};
        Program().yieldToEvents = [this] { window.steps << u"yield"_s; };
        RunFirstActivation(state, window);
        EXPECT_FALSE(state.FirstActivation);
        EXPECT_FALSE(state.EmptyTree);
        return window.steps;
    }

    ScopedGlobals program;
    ScriptedReporter reporter;
    ScriptedDialogue dialogue;
    FakeWindow window;
};

TEST_F(ActivationTest, OnlyItaliansAreAskedForTheDefaultFolder) {
    program->gLocaleId = 1031;
    EXPECT_EQ(Activate(true), QStringList({u"yield"_s, u"tree"_s}));
    EXPECT_TRUE(dialogue.told.isEmpty());

    program->gLocaleId = 2064;
    SaveSetting(u"FTMessages"_s, u"QS"_s, u"1"_s);
    dialogue.answers = {Answer::Yes};
    const QString folder = ThePlace().Logical("home", u"Documents/Velmora"_s);
    EXPECT_EQ(Activate(true),
              QStringList({u"yield"_s, u"row "_s + platform::Capitals(folder) + u" Velmora FLDCL"_s,
                           u"tree"_s}));
    EXPECT_TRUE(QDir(ThePlace().Path("home", u"Documents/Velmora"_s)).exists());
    ASSERT_EQ(dialogue.told.size(), 1);
    EXPECT_TRUE(dialogue.told[0].startsWith(
        u"Primo avvio|Si desidera creare automaticamente una cartella predefinita 'Velmora' in "
        "'Documenti' per consentire l'archiviazione dei dati?|"_s));

    program->gLocaleId = 1040;
    dialogue.answers = {Answer::No};
    EXPECT_EQ(Activate(true), QStringList({u"yield"_s, u"folders busy"_s, u"tree"_s}));
    EXPECT_EQ(dialogue.CurrentPointer(), Pointer::Default);
    EXPECT_EQ(Activate(false), QStringList());
}

TEST_F(ActivationTest, FirstStepsShowInItalianUntilTickedOff) {
    program->gLocaleId = 1040;
    EXPECT_EQ(Activate(), QStringList({u"quick start"_s}));
    SaveSetting(u"FTMessages"_s, u"QS"_s, u"2"_s); // only 1 counts
    EXPECT_EQ(Activate(), QStringList({u"quick start"_s}));
    SaveSetting(u"FTMessages"_s, u"QS"_s, u"1"_s);
    EXPECT_EQ(Activate(), QStringList());
    SaveSetting(u"FTMessages"_s, u"QS"_s, QString());
    program->gLocaleId = 0;
    EXPECT_EQ(Activate(), QStringList());
}

TEST_F(ActivationTest, UnattendedRunUpdatesAndEnds) {
    WriteFile(ThePlace().Path("program", u"need.rebuild"_s), "");
    program->gAutoIndexing = true;
    EXPECT_EQ(Activate(), QStringList({u"yield"_s, u"update"_s, u"unload"_s}));

    program->gShutdownAfterIndexing = true;
    EXPECT_EQ(Activate(),
              QStringList({u"yield"_s, u"update ticked"_s, u"power off"_s, u"unload"_s}));

    window.cancelUpdate = true;
    EXPECT_EQ(Activate(), QStringList({u"yield"_s, u"update ticked"_s, u"unload"_s}));

    // The notice waits for a run with somebody in front of it.
    EXPECT_TRUE(dialogue.told.isEmpty());
    EXPECT_TRUE(QFile::exists(ThePlace().Path("program", u"need.rebuild"_s)));
}

TEST_F(ActivationTest, UpdateNoticeIsToldOnce) {
    WriteFile(ThePlace().Path("program", u"need.rebuild"_s), "");
    Activate();
    ASSERT_EQ(dialogue.told.size(), 1);
    EXPECT_EQ(dialogue.told[0],
              u"Velmora - Information|Attention: It's strongly reccomanded to rebuild indexes "
              "after software update|"_s +
                  QString::number(static_cast<int>(Icon::Exclamation)));
    EXPECT_FALSE(QFile::exists(ThePlace().Path("program", u"need.rebuild"_s)));
    Activate();
    EXPECT_EQ(dialogue.told.size(), 1);
}

TEST_F(ActivationTest, LaterActivationsDoNothing) {
    ActivationState state{false, true};
    program->gAutoIndexing = true;
    RunFirstActivation(state, window);
    EXPECT_TRUE(window.steps.isEmpty());
    EXPECT_TRUE(state.EmptyTree);
}

TEST_F(ActivationTest, FailedDefaultFolderAddsNoRow) {
    WriteFile(ThePlace().Path("home", u"Documents"_s), "a file is in the way");
    AutoCreateVMFolder(
        [this](const QString&, const QString&, const QString&) { window.steps << u"row"_s; });
    EXPECT_TRUE(window.steps.isEmpty());
    ASSERT_EQ(reporter.reports.size(), 1);
    EXPECT_TRUE(reporter.reports[0].endsWith(u"Starter/AutoCreateVMFolder"_s));
}

} // namespace
} // namespace velmora
