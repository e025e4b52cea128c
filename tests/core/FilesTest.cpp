// Walking folders, names to refuse, opening with the desktop.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Events.h"
#include "core/FileFunctions.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class FilesTest : public testing::Test {
  protected:
    FilesTest() { ThePlace().Clear(); }

    static void Lay(const QString& file) { WriteFile(ThePlace().Path("home", file), "x"); }

    // What is found under the home folder, without the part that all share.
    static QStringList Find(const QString& pattern) {
        FoundFiles().clear();
        const QString base = ThePlace().Logical("home");
        FindFilesAPI(base, pattern);
        QStringList names;
        for (const QString& file : FoundFiles()) {
            EXPECT_TRUE(file.startsWith(base + u'\\')) << qPrintable(file);
            names << file.mid(base.size() + 1);
        }
        return names;
    }

    ScopedGlobals program;
    ScriptedReporter reporter;
    ScriptedDialogue dialogue;
};

TEST_F(FilesTest, WalkFindsByPatternAtAnyDepth) {
    for (const char* file : {"b.tif", "A.TIF", "noext", "sub/c.Tif", "sub/deep/d.tiff",
                             "sub/odd\\name.tif", "x.tif/inside.txt"}) {
        Lay(QString::fromUtf8(file));
    }
    EXPECT_EQ(Find(u"*.tif"_s),
              QStringList({u"A.TIF"_s, u"b.tif"_s, u"sub\\c.Tif"_s, u"sub\\odd\uF05Cname.tif"_s}));
    EXPECT_EQ(Find(u"*.*"_s).size(), 7); // every file, a folder never
    EXPECT_TRUE(Find(u"*.*"_s).contains(u"noext"_s));
    EXPECT_EQ(Find(u"?.ti*"_s),
              QStringList({u"A.TIF"_s, u"b.tif"_s, u"sub\\c.Tif"_s, u"sub\\deep\\d.tiff"_s}));
    EXPECT_EQ(Find(u"nothing.*"_s), QStringList());
}

TEST_F(FilesTest, WalkAddsUpYieldsAndDoesNotRunInCircles) {
    Lay(u"one/a.txt"_s);
    Lay(u"two/a.txt"_s);
    QFile::link(ThePlace().Path("home"), ThePlace().Path("home", u"one/loop"_s));
    int yields = 0;
    const ScopedYield hook([&yields] { ++yields; });
    FoundFiles().clear();
    FindFilesAPI(ThePlace().Logical("home", u"one"_s), u"a.txt"_s);
    FindFilesAPI(ThePlace().Logical("home", u"two"_s) + u'\\', u"A.TXT"_s);
    EXPECT_EQ(FoundFiles().size(), 2);
    EXPECT_EQ(yields, 3); // two files, one link
    FindFilesAPI(u"\\nowhere"_s, u"*"_s);
    FindFilesAPI(u"Q:\\nowhere"_s, u"*"_s);
    EXPECT_EQ(FoundFiles().size(), 2);
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(FilesTest, AFailureInAYieldLeavesNothingTwice) {
    Lay(u"a.txt"_s);
    bool failed = false;
    const ScopedYield hook([&failed] {
        if (!failed) {
            failed = true;
            throw Error(1, u"handler"_s);
        }
    });
    reporter.Next([] { return true; });
    EXPECT_EQ(Find(u"*"_s), QStringList({u"a.txt"_s}));
    EXPECT_TRUE(reporter.reports[0].endsWith(u"FileFunctions/FindFilesAPI"_s));
}

TEST_F(FilesTest, PatternsMatchWholeNamesWithoutCase) {
    EXPECT_TRUE(MatchesPattern(u"abcabd"_s, u"*abd"_s)); // the star gives back
    EXPECT_TRUE(MatchesPattern(u"Übung.doc"_s, u"üb*.DOC"_s));
    EXPECT_TRUE(MatchesPattern(u"a"_s, u"a**"_s));
    EXPECT_TRUE(MatchesPattern(u"a[1].txt"_s, u"a[1].*"_s)); // brackets are plain
    EXPECT_FALSE(MatchesPattern(u"a.tiff"_s, u"*.tif"_s));
    EXPECT_FALSE(MatchesPattern(u"ab"_s, u"?"_s));
    EXPECT_FALSE(MatchesPattern(u""_s, u"?*"_s));
}

TEST_F(FilesTest, TrueMeansANameToRefuse) {
    for (const QChar bad : u"\\/:*?\u0016<>|"_s) {
        EXPECT_TRUE(IsValidFileName(u"a"_s + bad + u'b')) << int(bad.unicode());
    }
    EXPECT_FALSE(IsValidFileName(u"a\"b & c.txt"_s)); // the double quote passes
    EXPECT_FALSE(IsValidFileName(QString()));
    EXPECT_EQ(StripNulls(QString::fromLatin1("ab\0cd", 5)), u"ab"_s);
    EXPECT_EQ(StripNulls(u"ab"_s), u"ab"_s);
}

TEST_F(FilesTest, WhatCannotBeOpenedIsTold) {
    LaunchFile({ThePlace().Logical("home", u"gone.pdf"_s)});
    ASSERT_EQ(dialogue.told.size(), 1);
    EXPECT_TRUE(dialogue.told[0].startsWith(u"Error|"_s + ThePlace().Path("home", u"gone.pdf"_s)));
    LaunchFile(u"\\gone\\a;\\gone\\b"_s, u";"_s);
    EXPECT_EQ(dialogue.told.size(), 3);
    EXPECT_TRUE(reporter.reports.isEmpty());
}

} // namespace
} // namespace velmora
