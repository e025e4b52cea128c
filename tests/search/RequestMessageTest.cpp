// What a person reads about a request that cannot be understood.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/RequestMessage.h"
#include "core/Messages.h"
#include "search/MessageIds.h"
#include "search/OperatorsMenu.h"
#include "tests/search/SearchFixture.h"

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

using RequestMessageTest = SearchTest;

TEST_F(RequestMessageTest, NamesThePlaceOfEveryMistake) {
    Write(u"a.txt"_s, "one");
    Index();
    struct Case {
        QString request;
        int message;
        int character;
        QString token;
    };
    QString deep(u'(');
    const Case cases[] = {
        {u"one and"_s, kWordMissingAtEnd, 8, {}},
        {u"one and or two"_s, kWordMissing, 9, u"or"_s},
        {u"()"_s, kWordMissing, 2, u")"_s},
        {u"(one) two"_s, kOperatorMissing, 7, u"two"_s},
        {u"one and (two or three"_s, kParenthesisOpen, 9, u"("_s},
        {u"one) two"_s, kParenthesisExtra, 4, u")"_s},
        {u"one \"two"_s, kQuoteOpen, 5, u"\"two"_s},
        {u"one w/x two"_s, kNumberMissing, 5, u"w/x"_s},
        {u"one and xfilter(size 3)"_s, kFilterMalformed, 9, u"xfilter"_s},
        {u"not one w/5 two"_s, kNotBesideNear, 9, u"w/5"_s},
        {deep.repeated(200) + u"one"_s, kRequestTooLong, 100, u"("_s},
        // In characters, though the smiley counts double in the box.
        {u"\U0001F600 one)"_s, kParenthesisExtra, 6, u")"_s},
    };
    for (const auto& [request, message, character, token] : cases) {
        const engine::SearchResults results = Search(request);
        ASSERT_EQ(results.fault, engine::IndexFault::Request) << request.toStdString();
        const QString text = RequestMessage(results);
        EXPECT_EQ(text, GetMessage(message, {QString::number(results.position), token}))
            << request.toStdString();
        if (message != kRequestTooLong) { // how deep is too deep is the engine's matter
            EXPECT_EQ(results.position, static_cast<std::size_t>(character));
        }
        EXPECT_TRUE(text.contains(QString::number(results.position)));
        const int caret = CaretPosition(request, results.position);
        EXPECT_TRUE(QStringView(request).mid(caret).startsWith(token)) << request.toStdString();
    }
}

TEST_F(RequestMessageTest, EveryLanguageNamesPlaceAndPiece) {
    engine::SearchResults results;
    results.fault = engine::IndexFault::Request;
    results.position = 4711;
    results.token = u"PIECE"_s;
    for (const qint32 locale : {0, 1040, 1031, 1034, 1036}) {
        program->gLocaleId = locale;
        for (int reason = 0; reason <= static_cast<int>(engine::RequestError::Reason::TooManyWords);
             ++reason) {
            results.requestFault = static_cast<engine::RequestError::Reason>(reason);
            const QString text = RequestMessage(results);
            EXPECT_TRUE(text.contains(u"4711"_s)) << text.toStdString();
            EXPECT_FALSE(text.contains(u'%')) << text.toStdString();
        }
    }
}

TEST_F(RequestMessageTest, OtherFaultsAreWordedToo) {
    const engine::SearchResults results = Search(u"one"_s);
    ASSERT_EQ(results.fault, engine::IndexFault::Missing);
    EXPECT_FALSE(RequestMessage(results).isEmpty());
}

TEST(OperatorsMenuTest, AppendsTheOperatorToTheTrimmedText) {
    const QStringList appended = {u" and "_s,  u" or "_s,      u" w/5 "_s,    u" w/10 "_s,
                                  u" w/15 "_s, u" and not "_s, u" not w/5 "_s};
    ASSERT_EQ(appended.size(), kOperatorCount);
    for (int index = 0; index < kOperatorCount; ++index) {
        EXPECT_EQ(mnuOperators_Click(index, u"  red car "_s), u"red car"_s + appended[index]);
        EXPECT_EQ(mnuOperators_Click(index, {}), appended[index]);
        // What the menu shows begins with what is typed.
        EXPECT_TRUE(OperatorCaption(index).startsWith(appended[index].trimmed()));
    }
    EXPECT_EQ(mnuOperators_Click(1, u" and "_s), u"and or "_s);
}

} // namespace
} // namespace velmora
