// Settings files line by line, their bytes, the per-user settings, first-time hints.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Settings.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class SettingsTest : public testing::Test {
  protected:
    SettingsTest() { ThePlace().Clear(); }

    static void Save(const QString& key, const QString& value) {
        XMLSaveSettings(u"Velmora"_s, u"S.xml"_s, key, value);
    }
    static QString Read(const QString& key) {
        return XMLReadSettings(u"Velmora"_s, u"S.xml"_s, key);
    }
    static void Lay(const QByteArray& bytes) {
        WriteFile(ThePlace().Path("program", u"S.xml"_s), bytes);
    }
    static QByteArray Bytes() { return BytesOf(ThePlace().Path("program", u"S.xml"_s)); }

    ScopedGlobals program;
    ScriptedReporter reporter;
    ScriptedDialogue dialogue;
};

TEST_F(SettingsTest, FileIsMadeAndGrowsByOneLineAKey) {
    EXPECT_EQ(Read(u"ArchiveNumbers"_s), QString());
    Save(u"ArchiveNumbers"_s, u"1"_s);
    EXPECT_EQ(Bytes(), "<Velmora>\r\n\t<ARCHIVENUMBERS>1</ARCHIVENUMBERS>\r\n</Velmora>\r\n");
    Save(u"ArchivePath_1"_s, u"\\\\NAS\\Team"_s);
    Save(u"aRCHIVEnUMBERS"_s, u"2"_s);
    EXPECT_EQ(Bytes(), "<Velmora>\r\n\t<ARCHIVENUMBERS>2</ARCHIVENUMBERS>\r\n"
                       "\t<ARCHIVEPATH_1>\\\\NAS\\Team</ARCHIVEPATH_1>\r\n</Velmora>\r\n");
    EXPECT_EQ(Read(u"archivepath_1"_s), u"\\\\NAS\\Team"_s);
    EXPECT_EQ(XMLReadSettings(u"another root"_s, u"S.xml"_s, u"ArchiveNumbers"_s), u"2"_s);
}

TEST_F(SettingsTest, KeysAreWholeAndValuesLoseOuterBlanks) {
    Save(u"Path_1"_s, u" \t in side \t "_s);
    Save(u"Path_10"_s, u"ten"_s);
    EXPECT_EQ(Read(u"Path_1"_s), u"in side"_s);
    EXPECT_EQ(Read(u"Path_10"_s), u"ten"_s);
    EXPECT_EQ(Read(u"Path_"_s), QString());
    Save(u"C:\\My Archive-Enabled"_s, u"1"_s); // a path is a key as it stands
    EXPECT_EQ(Read(u"c:\\my archive-ENABLED"_s), u"1"_s);
}

TEST_F(SettingsTest, FirstAndLastLineAreTheRootWhateverTheySay) {
    Lay("<Velmora>\r\n</Velmora>\r\n"); // the two root lines alone
    Save(u"A"_s, u"1"_s);
    EXPECT_EQ(Bytes(), "<Velmora>\r\n\t<A>1</A>\r\n</Velmora>\r\n");

    Lay("<A>first</A>\n<A>mid</A>\n<A>last</A>"); // Unix line ends, no closing one
    EXPECT_EQ(Read(u"A"_s), u"mid"_s);
    Lay("<R>\r\n<A>1</A>\r\n<B>x</B>\r\n<A>2</A>\r\n</R>\r\n");
    EXPECT_EQ(Read(u"A"_s), u"2"_s); // the last one wins
    Save(u"A"_s, u"3"_s);            // and both are replaced, in the asked root
    EXPECT_EQ(Bytes(), "<Velmora>\r\n\t<A>3</A>\r\n<B>x</B>\r\n\t<A>3</A>\r\n</Velmora>\r\n");

    for (const char* odd : {"", "<R>", "\r\n"}) {
        Lay(odd);
        EXPECT_EQ(Read(u"A"_s), QString());
        Save(u"A"_s, u"1"_s);
        EXPECT_EQ(Bytes(), "<Velmora>\r\n\t<A>1</A>\r\n</Velmora>\r\n");
    }
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(SettingsTest, RefusedValuesLeaveTheFileAlone) {
    Save(u"A"_s, u"1"_s);
    const QByteArray before = Bytes();
    Save(u"A"_s, u"one\ntwo"_s);
    Save(u"A\r"_s, u"1"_s);
    EXPECT_EQ(Bytes(), before);
    EXPECT_EQ(reporter.reports.size(), 2);
    EXPECT_TRUE(reporter.reports[0].endsWith(u"CommonFunctions/XMLSaveSettings"_s));
}

TEST_F(SettingsTest, UnwritablePlaceIsReportedWithItsNameAndCanBeRetried) {
    const QString path = ThePlace().Path("program", u"S.xml"_s);
    QDir().mkpath(path); // a folder stands in the way
    reporter.Next([&] { return QDir().rmdir(path); });
    Save(u"A"_s, u"1"_s);
    ASSERT_EQ(reporter.reports.size(), 1);
    EXPECT_TRUE(reporter.reports[0].contains(path));
    EXPECT_EQ(Read(u"A"_s), u"1"_s);
}

TEST_F(SettingsTest, TextSurvivesInTheCodePageOrBeyondIt) {
    struct Case {
        QString text;
        QByteArray bytes;
    };
    for (const auto& [text, bytes] : {
             Case{u"Büro €"_s, "B\xFCro \x80"},
             Case{u"é"_s, "\xE9"},
             Case{u"\u0081\u009D"_s, "\x81\x9D"},
             Case{u"Łódź"_s, "\xC5\x81\xC3\xB3\x64\xC5\xBA"}, // not in the code page: UTF-8
             Case{u"Ã©"_s, "\xC3\x83\xC2\xA9"}, // would read as UTF-8 in the code page
             Case{u"書類"_s, "\xE6\x9B\xB8\xE9\xA1\x9E"},
         }) {
        EXPECT_EQ(EncodeSettings(text), bytes) << qPrintable(text);
        EXPECT_EQ(DecodeSettings(bytes), text) << qPrintable(text);
    }
    Save(u"Büro-Enabled"_s, u"ß €"_s);
    EXPECT_TRUE(Bytes().contains("<B\xDCRO-ENABLED>\xDF \x80</B\xDCRO-ENABLED>"));
    EXPECT_EQ(Read(u"BÜRO-enabled"_s), u"ß €"_s);
    Save(u"Other"_s, u"Łódź"_s);
    EXPECT_EQ(Read(u"BÜRO-enabled"_s), u"ß €"_s);
    EXPECT_EQ(Read(u"Other"_s), u"Łódź"_s);
}

TEST_F(SettingsTest, MissingNumbersAreZero) {
    struct Case {
        QString text;
        qint64 number;
    };
    for (const auto& [text, number] :
         {Case{u""_s, 0}, Case{u" 12 files"_s, 12}, Case{u"-1"_s, -1}, Case{u"x1"_s, 0},
          Case{u"-"_s, 0}, Case{u"3.7"_s, 3}, Case{u"99999999999999999999"_s, 0}}) {
        EXPECT_EQ(NumericValue(text), number) << qPrintable(text);
    }
    EXPECT_EQ(GetSetting(u"Archives"_s, u"LastSelected"_s), QString());
    SaveSetting(u"Archives"_s, u"LastSelected"_s, u"2"_s);
    EXPECT_EQ(NumericValue(GetSetting(u"Archives"_s, u"LastSelected"_s)), 2);
}

TEST_F(SettingsTest, HintsShowUntilTickedEachForItself) {
    dialogue.SetPointer(Pointer::Hourglass);
    ShowFTMessage(106, 2000, 2001);
    EXPECT_EQ(dialogue.pointerAtHint, Pointer::Default);
    EXPECT_EQ(dialogue.CurrentPointer(), Pointer::Hourglass);
    dialogue.tickHint = true;
    ShowFTMessage(106, 2000, 2001);
    ShowFTMessage(106, 2000, 2001); // no more
    ShowFTMessage(107, 2002, 2003);
    EXPECT_EQ(dialogue.hintPictures, std::deque<int>({106, 106, 107}));
    EXPECT_TRUE(dialogue.told[0].startsWith(u"Hits navigation|To navigate in the hits"_s));
    EXPECT_EQ(GetSetting(u"FTMessages"_s, u"2002"_s), u"1"_s);
}

} // namespace
} // namespace velmora
