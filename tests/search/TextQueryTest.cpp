// From the typed text to the documents found, over a real index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/TextQuery.h"
#include "tests/search/SearchFixture.h"

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

using TextQueryTest = SearchTest;

QString Parsed(const QString& text) {
    QString result;
    ParseRequest(text, result);
    return result;
}

TEST(ParseRequestTest, LowersTheCaseAndReplacesSixAccentedLetters) {
    EXPECT_EQ(Parsed(u"Città AND Perché"_s), u"citt? and perch?"_s);
    EXPECT_EQ(Parsed(u"ÀÈÉÌÒÙ àèéìòù"_s), u"?????? ??????"_s);
    EXPECT_EQ(Parsed(u"ÖL áÊç W/5"_s), u"öl áêç w/5"_s);
    EXPECT_EQ(Parsed(QString()), QString());
    // A place in the request is the same place in the box, whatever is typed.
    for (const QString& text : {u"İstanbul )"_s, u"\U00010400 )"_s, u"ẞ\U0001F600 )"_s}) {
        EXPECT_EQ(Parsed(text).size(), text.size());
    }
}

TEST_F(TextQueryTest, JobNamesIndexThesaurusAndCap) {
    const engine::SearchJob job = MakeSearchJob(u"a"_s, false);
    EXPECT_EQ(job.IndexPath,
              ThePlace().Logical("home", u"archive"_s) + u"\\indexes\\DOMAIN.ANNA\\"_s);
    EXPECT_EQ(job.ThesaurusFile, ThePlace().Logical("program") + u"\\lib\\thesaurus.xml"_s);
    EXPECT_EQ(job.AlphabetFile, ThePlace().Logical("program") + u"\\default.abc"_s);
    EXPECT_EQ(job.MaxFiles, 300);
    EXPECT_FALSE(job.Synonyms);
    EXPECT_FALSE(job.UseWordNet);

    program->gArchivePath += u'\\';
    EXPECT_EQ(MakeSearchJob(u"a"_s, false).IndexPath, job.IndexPath);
}

TEST_F(TextQueryTest, SynonymsComeFromTheThesaurusInItalianAndFromTheWordNetElsewhere) {
    struct Case {
        qint32 locale;
        bool wordNet;
        QString stems;
    };
    for (const auto& [locale, wordNet, stems] :
         {Case{1040, false, u"italian"_s}, Case{2064, false, u"italian"_s},
          Case{1036, true, u"french"_s}, Case{1031, true, u"german"_s},
          Case{1034, true, u"spanish"_s}, Case{0, true, u"english"_s}}) {
        program->gLocaleId = locale;
        const engine::SearchJob job = MakeSearchJob(u"a"_s, true);
        EXPECT_TRUE(job.Synonyms) << locale;
        EXPECT_EQ(job.UseWordNet, wordNet) << locale;
        EXPECT_EQ(job.StemLanguage, stems) << locale;
    }
}

TEST_F(TextQueryTest, OneFileConditionForEachMode) {
    const QString ocr = u"xfilter(name \""_s + OcrFolder() + u"*\")"_s;
    EXPECT_EQ(FileConditions(u"\\home\\anna"_s, false),
              QStringList({u"xfilter(name \"\\home\\anna\\*\")"_s, ocr}));
    EXPECT_EQ(FileConditions(u"\\home\\anna\\"_s, true), FileConditions(u"\\home\\anna"_s, false));
    // What would end the pattern early stands for itself all the same.
    EXPECT_EQ(FileConditions(u"\\a\"b"_s, true).first(), u"xfilter(name \"\\a?b\\*\")"_s);

    EXPECT_EQ(FileConditions({}, true), QStringList());
    EXPECT_EQ(FileConditions({}, false), QStringList()); // no configuration
    SetMailConfig(1, u"\\MAIL\\STORE"_s);
    EXPECT_EQ(FileConditions({}, false), QStringList(u"xfilter(excl \"\\MAIL\\STORE*\")"_s));
    SetMailConfig(0, u"\\MAIL\\STORE"_s);
    EXPECT_EQ(FileConditions({}, false),
              QStringList(u"xfilter(excl \""_s + ThePlace().Logical("program") +
                          u"\\OutlookMails\\*\")"_s));
    EXPECT_EQ(FileConditions({}, true), QStringList());
    program->gUserKey = u"OTHER"_s; // whose configuration it is not
    EXPECT_EQ(FileConditions({}, false), QStringList());
}

TEST_F(TextQueryTest, FolderSearchFindsTheFolderAndItsRecognisedTexts) {
    Write(u"Letters/one.txt"_s, "walnut table");
    Write(u"Letters/deep/er/two.txt"_s, "walnut walnut");
    Write(u"Letters2/three.txt"_s, "walnut");
    Index();
    const qint64 inside = AddOcrRow(LogicalDocs(u"Letters"_s), u"deed.tif"_s);
    LayOcrText(inside, "walnut chair");
    LayOcrText(AddOcrRow(LogicalDocs(u"Letters2"_s), u"will.tif"_s), "walnut walnut walnut");
    LayOcrText(9999, "walnut without a row");
    Index(OcrTexts());

    EXPECT_EQ(Found(u"walnut"_s), "iftext.ocr iftext.ocr iftext.ocr one.txt three.txt two.txt");
    EXPECT_EQ(Found(u"walnut"_s, LogicalDocs(u"Letters"_s)), "iftext.ocr one.txt two.txt");
    // Paths compare without case.
    EXPECT_EQ(Found(u"walnut"_s, platform::Capitals(LogicalDocs(u"Letters"_s)) + u'\\'),
              "iftext.ocr one.txt two.txt");
    EXPECT_EQ(Found(u"walnut"_s, LogicalDocs(u"none"_s)), "");
    EXPECT_EQ(Found(u"walnut"_s, LogicalDocs(u"Letters/deed.tif"_s)), "iftext.ocr");
    // Scopes that hold each other give nothing twice.
    EXPECT_EQ(Found(u"walnut and not without"_s, ThePlace().Logical("home")),
              "iftext.ocr iftext.ocr one.txt three.txt two.txt");

    // As one list: most hits first, and only what was looked for is counted.
    const engine::SearchResults results = Search(u"walnut"_s, LogicalDocs(u"Letters"_s));
    EXPECT_EQ(results.found, 3U);
    EXPECT_EQ(results.items.front().DisplayName, u"two.txt"_s);
    EXPECT_EQ(results.items.front().Hits.size(), 2U);
}

TEST_F(TextQueryTest, RecognisedTextsOfOtherFoldersTakeNoPlaces) {
    for (int number = 0; number < 10; ++number) {
        Write(u"few/%1.txt"_s.arg(number), "walnut");
    }
    for (int number = 0; number < 299; ++number) {
        Write(u"many/%1.txt"_s.arg(number), "walnut");
    }
    Index();
    for (int id = 1; id <= 301; ++id) {
        LayOcrText(AddOcrRow(LogicalDocs(u"many"_s), u"%1.tif"_s.arg(id)), "walnut walnut");
    }
    Index(OcrTexts());
    EXPECT_EQ(Search(u"walnut"_s, LogicalDocs(u"few"_s)).items.size(), 10U);
    const engine::SearchResults many = Search(u"walnut"_s, LogicalDocs(u"many"_s));
    EXPECT_EQ(many.items.size(), 300U); // the cap holds over both parts
    EXPECT_EQ(many.found, 600U);
    EXPECT_EQ(many.items.back().DisplayName, u"iftext.ocr"_s); // and the better ones stay
}

TEST_F(TextQueryTest, MailStoreIsLeftOutUnlessWanted) {
    Write(u"store/mail.txt"_s, "walnut");
    Write(u"other.txt"_s, "walnut");
    Index();
    WriteFile(ThePlace().Path("program", u"OutlookMails/DOMAIN.ANNA/1/copy.txt"_s), "walnut");
    Index(ThePlace().Path("program", u"OutlookMails"_s));
    EXPECT_EQ(Found(u"walnut"_s, {}, false), "copy.txt mail.txt other.txt");
    SetMailConfig(1, platform::Capitals(LogicalDocs(u"store"_s)));
    EXPECT_EQ(Found(u"walnut"_s, {}, false), "copy.txt other.txt");
    EXPECT_EQ(Found(u"walnut"_s, {}, true), "copy.txt mail.txt other.txt");
    // In a folder the configuration does not count.
    EXPECT_EQ(Found(u"walnut"_s, LogicalDocs(u"store"_s), false), "mail.txt");
    SetMailConfig(0, {});
    EXPECT_EQ(Found(u"walnut"_s, {}, false), "mail.txt other.txt");
}

TEST_F(TextQueryTest, AccentsAndSynonymsReachTheIndex) {
    WriteFile(ThePlace().Path("program", u"lib/thesaurus.xml"_s),
              "<Thesaurus><Item><Name>casa</Name><Synonyms>villa</Synonyms></Item></Thesaurus>");
    Write(u"accent.txt"_s, "La città è bella");
    Write(u"villa.txt"_s, "una villa");
    Index();
    EXPECT_EQ(Found(u"CITTÀ"_s), "accent.txt");
    program->gLocaleId = 1040;
    EXPECT_EQ(Found(u"casa"_s, {}, true, true), "villa.txt");
    EXPECT_EQ(Found(u"casa"_s, {}, true, false), "");
    program->gLocaleId = 1036;
    EXPECT_EQ(Found(u"casa"_s, {}, true, true), "");
}

TEST_F(TextQueryTest, NothingToFindAndNothingToSearchAreTwoThings) {
    EXPECT_EQ(Search(u"walnut"_s).fault, engine::IndexFault::Missing);
    Write(u"a.txt"_s, "walnut");
    Index();
    EXPECT_EQ(Found({}), "");
    EXPECT_EQ(Found(u"oak"_s), "");
    EXPECT_EQ(Search(u"walnut and"_s).fault, engine::IndexFault::Request);
    EXPECT_EQ(Search(u"walnut and"_s, LogicalDocs()).fault, engine::IndexFault::Request);
    QString request = u"WALNUT"_s;
    engine::SearchResults results;
    ExecuteSearch(request, {}, true, false, results);
    EXPECT_EQ(request, u"walnut"_s);
    EXPECT_EQ(results.items.size(), 1U);
}

} // namespace
} // namespace velmora
