// Hashes, names, attributes, folders.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/CommonFunctions.h"
#include "core/ValidationFunctions.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class CommonFunctionsTest : public testing::Test {
  protected:
    CommonFunctionsTest() { ThePlace().Clear(); }

    ScopedGlobals program;
    ScriptedReporter reporter;
};

TEST_F(CommonFunctionsTest, HashNamesTheWholeContent) {
    const auto lay = [](const char* name, const QByteArray& bytes) {
        const QString path = ThePlace().Path("home", QLatin1StringView(name));
        WriteFile(path, bytes);
        return platform::ToLogical(path);
    };
    // BLAKE2b with a digest of 20 bytes, as its authors publish it.
    EXPECT_EQ(GetFileHash(lay("abc", "abc")), u"384264f676f39536840523f284921cdc68b6846b"_s);
    // Longer than one reading, different in the last byte alone.
    const QByteArray large(3 * 1024 * 1024 + 17, 'x');
    const QString hash = GetFileHash(lay("large", large));
    EXPECT_EQ(hash, GetFileHash(lay("copy", large)));
    EXPECT_EQ(hash, GetHash(large));
    EXPECT_NE(hash, GetFileHash(lay("other", large.chopped(1) + 'y')));
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(CommonFunctionsTest, NothingToHashIsReported) {
    WriteFile(ThePlace().Path("home", u"empty"_s), "");
    EXPECT_EQ(GetFileHash(ThePlace().Logical("home", u"empty"_s)), QString());
    EXPECT_EQ(GetFileHash(ThePlace().Logical("home", u"missing"_s)), QString());
    EXPECT_EQ(GetFileHash(u"Q:\\nowhere"_s), QString());
    EXPECT_EQ(GetFileHash(ThePlace().Logical("home")), QString()); // a folder
    ASSERT_EQ(reporter.reports.size(), 4);
    EXPECT_TRUE(reporter.reports[0].contains(ThePlace().Path("home", u"empty"_s)));
    EXPECT_TRUE(reporter.reports[1].contains(ThePlace().Path("home", u"missing"_s)));
    EXPECT_TRUE(reporter.reports[2].contains(u"Q:\\nowhere"_s));
}

TEST_F(CommonFunctionsTest, TemporaryNamesAreNewEmptyFiles) {
    EXPECT_TRUE(GetTmpPath().endsWith(u'\\'));
    const QString one = GetTmpFileName();
    const QString two = GetTmpFileName();
    EXPECT_NE(one, two);
    EXPECT_TRUE(platform::SamePath(platform::ParentFolder(one), GetTmpPath()));
    EXPECT_TRUE(platform::FileName(one).startsWith(u"vms"_s));
    EXPECT_EQ(BytesOf(platform::ToMachine(one)), "");
    EXPECT_TRUE(VerifyExistsFileName(one));
    EXPECT_FALSE(VerifyExistsFileName(GetTmpPath())); // a folder is no file
    EXPECT_FALSE(VerifyExistsFileName(u"Q:\\x"_s));
}

TEST_F(CommonFunctionsTest, FileNamesHoldLettersDigitsAndAFewSigns) {
    for (const QString& good : {u""_s, u"Report (2) [final], it's_1-a.tif"_s,
                                u"Übersicht été 書類"_s, u"हिन्दी"_s, u"\U00020000"_s}) {
        EXPECT_TRUE(VerifyFileName(good)) << qPrintable(good);
    }
    for (const QString& bad : {u"a/b"_s, u"a&b"_s, u"a\\b"_s, u"a:b"_s, u"a\"b"_s, u"tab\there"_s,
                               u"100%"_s, u"a+b"_s}) {
        EXPECT_FALSE(VerifyFileName(bad)) << qPrintable(bad);
    }
    EXPECT_TRUE(IsAlphabetic(8) && IsAlphabetic(13) && IsAlphabetic(U'ß'));
    EXPECT_FALSE(IsAlphabetic(U'7') || IsAlphabetic(U' ') || IsAlphabetic(10));
}

TEST_F(CommonFunctionsTest, AttributesAreReadByNameWithoutCase) {
    const QString line = u"<PAGE Number=\"3\" hash=\"ab''c\" Empty=\"\" Words=\"12\">"_s;
    EXPECT_EQ(ExtractAttribute(line, u"NUMBER"_s), u"3"_s);
    EXPECT_EQ(ExtractAttribute(line, u"Hash"_s), u"ab''c"_s);
    EXPECT_EQ(ExtractAttribute(line, u"empty"_s), QString());
    EXPECT_EQ(ExtractAttribute(line, u"Words"_s), u"12"_s);
    EXPECT_EQ(ExtractAttribute(u"ß Words=\"7\""_s, u"WORDS"_s), u"7"_s);
    // Not told apart: the text behind as many characters, up to the next quote.
    EXPECT_EQ(ExtractAttribute(u"abcdefgh\"ij"_s, u"xyz"_s), u"defgh"_s);
    EXPECT_EQ(ExtractAttribute(u"Words=\"7"_s, u"Words"_s), u"7"_s); // a line cut short
    EXPECT_EQ(ExtractAttribute(QString(), u"Words"_s), QString());
}

TEST_F(CommonFunctionsTest, BuildPathMakesFolderByFolder) {
    const QString base = ThePlace().Logical("home");
    BuildPath(base + u"\\one\\\\Two\\three\\"_s);
    EXPECT_TRUE(QDir(ThePlace().Path("home", u"one/Two/three"_s)).exists());
    BuildPath(base + u"\\ONE\\TWO\\four"_s); // the same folders in other letters
    EXPECT_TRUE(QDir(ThePlace().Path("home", u"one/Two/four"_s)).exists());
    BuildPathLan(base + u"\\lan"_s);
    EXPECT_FALSE(QDir(ThePlace().Path("home", u"lan"_s)).exists());
    BuildPathLan(u"\\\\server\\share"_s); // nothing behind the share: nothing to make
    EXPECT_TRUE(reporter.reports.isEmpty());

    BuildPath(u"\\\\server\\share\\x"_s);
    BuildPathLan(u"\\\\server\\share\\x"_s);
    WriteFile(ThePlace().Path("home", u"file"_s), "");
    BuildPath(base + u"\\file\\below"_s);
    ASSERT_EQ(reporter.reports.size(), 3);
    EXPECT_TRUE(reporter.reports[0].endsWith(u"/BuildPath"_s));
    EXPECT_TRUE(reporter.reports[1].endsWith(u"/BuildPathLan"_s));
    EXPECT_TRUE(reporter.reports[2].contains(u"file"_s));
}

TEST_F(CommonFunctionsTest, FoldersCollideAboveBelowOrAsTheSame) {
    const QStringList indexed = {u"\\HOME\\ANNA\\DOCS"_s, u"\\\\NAS\\TEAM\\"_s};
    struct Case {
        QString candidate;
        int answer;
        QString folder;
    };
    for (const auto& [candidate, answer, hit] : {
             Case{u"\\home\\anna\\docs"_s, 3, u"\\HOME\\ANNA\\DOCS"_s},
             Case{u"\\home\\anna\\docs\\"_s, 3, u"\\HOME\\ANNA\\DOCS"_s},
             Case{u"\\home\\anna\\Docs\\Bills"_s, 2, u"\\HOME\\ANNA\\DOCS"_s},
             Case{u"\\home\\anna"_s, 1, u"\\HOME\\ANNA\\DOCS"_s},
             Case{u"\\home\\anna\\docs2"_s, 0, QString()}, // only begins alike
             Case{u"\\home\\anna\\doc"_s, 0, QString()},
             Case{u"\\\\nas\\team\\x"_s, 2, u"\\\\NAS\\TEAM"_s},
             Case{u"\\mnt\\home\\anna\\docs"_s, 2, u"\\HOME\\ANNA\\DOCS"_s}, // not anchored
         }) {
        QString folder;
        EXPECT_EQ(IsParentOrChildFolder(candidate, indexed, folder), answer)
            << qPrintable(candidate);
        EXPECT_EQ(folder, hit) << qPrintable(candidate);
    }
}

TEST_F(CommonFunctionsTest, TheMachineIsAsked) {
    EXPECT_EQ(GetWinVersion(), 1);
    EXPECT_EQ(GetSpecialFolderPath(5), ThePlace().Logical("home", u"Documents"_s));
    EXPECT_EQ(GetSpecialFolderPath(99), QString());
    EXPECT_FALSE(GetWksName().isEmpty());
}

} // namespace
} // namespace velmora
