// The request language: precedence, odd spellings, and what a malformed request is told.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "EngineFixture.h"

#include "engine/WordList.h"

namespace engine_test {
namespace {

using Reason = engine::RequestError::Reason;

class RequestLanguage : public EngineFixture {};

TEST_F(RequestLanguage, BindsAsPromised) {
    Write(QStringLiteral("a"), "red");
    Write(QStringLiteral("b"), "red green");
    Write(QStringLiteral("c"), "blue");
    Write(QStringLiteral("d"), "green x x x x x x x x x x x x red and blue");
    Update();
    EXPECT_EQ(Names("blue or red and green"), "d b c"); // and before or
    EXPECT_EQ(Names("(blue or red) and green"), "d b");
    EXPECT_EQ(Names("red and green w/3 red"), "b"); // w/N before and
    EXPECT_EQ(Names("RED AND GREEN"), "b d");
    EXPECT_EQ(Names("\"red and blue\""), "d"); // operators are words in quotes
    EXPECT_EQ(Names("red not green"), "a");
    EXPECT_EQ(Names("not red"), "c");
    EXPECT_EQ(Names("red not w/5 green"), "a d");
    EXPECT_EQ(Names("red pre/2 green"), "b");
    EXPECT_EQ(Names("green pre/2 red"), "");
    EXPECT_EQ(Names("  "), "");
    EXPECT_EQ(Names("..."), "");
}

TEST_F(RequestLanguage, FoldsWordsOfEveryScript) {
    Write(QStringLiteral("latin"), "Ünïcödé ÉCOLE straße ﬁnal Ｆｕｌｌ１２ O'Neill Z\xCC\x8C");
    Write(QStringLiteral("greek"), "ΣΊΣΥΦΟΣ");
    Write(QStringLiteral("han"), "東京タワーに行く");
    Write(QStringLiteral("thai"), "ภาษาไทยง่าย");
    Write(QStringLiteral("hindi"), "हिन्दी");
    Write(QStringLiteral("korean"), "\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB\xE1\x84\x80\xE1\x85\xB3\xE1\x86\xAF");
    Update();
    for (const char* request : {"unicode", "ecole", "STRASSE", "final", "full12", "o'neill", "neill", "ž"})
        EXPECT_EQ(Names(request), "latin") << request;
    EXPECT_EQ(Names("σίσυφος"), "greek");
    EXPECT_EQ(Names("東京"), "han");
    EXPECT_EQ(Names("京"), "han");
    EXPECT_EQ(Names("京東"), "");
    EXPECT_EQ(Names("ไทย"), "thai");
    EXPECT_EQ(Names("हिन्दी"), "hindi");
    EXPECT_EQ(Names("हन्द"), ""); // vowel signs are no accents
    EXPECT_EQ(Names("한글"), "korean");
}

TEST_F(RequestLanguage, FindsRelatedWords) {
    Write(QStringLiteral("a"), "applied smithe car 007 colour");
    Write(QStringLiteral("b"), "apply smyth automobile 1999 color");
    Write(QStringLiteral("c"), "motor vehicle");
    Update();
    EXPECT_EQ(Names("applies~"), "a b");
    EXPECT_EQ(Names("#smith"), "a b");
    EXPECT_EQ(Names("col%or"), "a b");
    EXPECT_EQ(Names("5~~10"), "a");
    EXPECT_EQ(Names("app*"), "a b");
    engine::SearchJob job = Request(QStringLiteral("car&"));
    job.ThesaurusFile = platform::ToLogical(Write(
        QStringLiteral("../thesaurus.xml"),
        "<Thesaurus><Item><Name>car</Name><Synonyms>automobile \"motor vehicle\"</Synonyms></Item></Thesaurus>"));
    EXPECT_EQ(job.Execute().items.size(), 3U);
    job.Request = QStringLiteral("car");
    EXPECT_EQ(job.Execute().items.size(), 1U);
    job.Synonyms = true;
    EXPECT_EQ(job.Execute().items.size(), 3U);
    // The English word net knows by itself, inflected words too.
    job.UseWordNet = true;
    EXPECT_EQ(job.Execute().items.size(), 3U);
    job.Request = QStringLiteral("cars&");
    job.Synonyms = false;
    EXPECT_EQ(job.Execute().items.size(), 3U);
}

TEST_F(RequestLanguage, CutsEndingsOfFiveLanguages) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"english", "contracts", "contracted"}, {"italian", "contratti", "contratto"},
        {"german", "vertrages", "vertrag"},     {"spanish", "contratos", "contrato"},
        {"french", "contractuelles", "contractuel"}};
    for (const auto& [language, one, other] : cases)
        Write(QLatin1String(language), QByteArray(one) + " " + other);
    Update();
    for (const auto& [language, one, other] : cases) {
        engine::SearchJob job = Request(QLatin1String(one) + QLatin1Char('~'));
        job.StemLanguage = QLatin1String(language);
        const auto found = job.Execute().items;
        ASSERT_EQ(found.size(), 1U) << language;
        EXPECT_EQ(found.front().Hits.size(), 2U) << language;
    }
}

TEST_F(RequestLanguage, MalformedRequestsNameThePlace) {
    Write(QStringLiteral("a"), "text");
    Update();
    const std::tuple<const char*, Reason, std::size_t> cases[] = {
        {"and", Reason::OperandMissing, 1},
        {"text and", Reason::OperandMissing, 9},
        {"text and or text", Reason::OperandMissing, 10},
        {"(text", Reason::ParenthesisMissing, 1},
        {"text)", Reason::ParenthesisExtra, 5},
        {"()", Reason::OperandMissing, 2},
        {"text (text)", Reason::OperatorMissing, 6},
        {"è \"text", Reason::QuoteMissing, 3},
        {"text w/ text", Reason::NumberMissing, 6},
        {"text w/x text", Reason::NumberMissing, 6},
        {"text w/0 text", Reason::NumberMissing, 6},
        {"xfilter(size 5)", Reason::FilterMalformed, 1},
        {"xfilter(size \"5\")", Reason::FilterMalformed, 1},
        {"title contains", Reason::OperandMissing, 15},
        {"text w/5 (not text)", Reason::NotBesideNear, 10},
    };
    for (const auto& [request, reason, position] : cases) {
        const engine::SearchResults results = Search(request);
        ASSERT_EQ(results.fault, engine::IndexFault::Request) << request;
        EXPECT_EQ(results.requestFault, reason) << request;
        EXPECT_EQ(results.position, position) << request;
    }
    EXPECT_EQ(Request(QString(500, QLatin1Char('('))).Execute().requestFault, Reason::TooLong);
}

TEST_F(RequestLanguage, ListsWordsAroundAWord) {
    Write(QStringLiteral("a"), "ant bee cat dog eel fox gnu hen ibis jay");
    Write(QStringLiteral("b"), "cat Dog");
    Update();
    engine::WordListBuilder words;
    ASSERT_TRUE(words.OpenIndex(IndexPath(), {}));
    words.ListWords(QStringLiteral("DÖG"), 2);
    std::string listed;
    for (int i = 0; i < words.Count(); ++i)
        listed += words.Word(i).word.toStdString() + std::to_string(words.Word(i).documents) + " ";
    EXPECT_EQ(listed, "bee1 cat2 dog2 eel1 fox1 ");
    words.ListWords(QStringLiteral("zz"), 2);
    EXPECT_EQ(words.Count(), 2);
    EXPECT_FALSE(words.OpenIndex(IndexPath() + QStringLiteral("\\none"), {}));
}

} // namespace
} // namespace engine_test
