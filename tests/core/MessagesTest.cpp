// The message table: languages, lookup, and the five blocks against each other.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Messages.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QSet>
#include <map>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

constexpr std::array kAll{Language::Italian, Language::English, Language::German, Language::Spanish,
                          Language::French};
constexpr int kFirstOwnId = 3000;

QList<int> SortedIds(Language language) {
    QList<int> ids = MessageBlock(language).keys();
    std::sort(ids.begin(), ids.end());
    return ids;
}

// Calls `check(language, english, text)` for every text of every language.
template <class Check> void AgainstEnglish(Check&& check) {
    const QHash<int, QString>& english = MessageBlock(Language::English);
    for (const Language language : kAll) {
        for (const int id : SortedIds(language)) {
            SCOPED_TRACE(testing::Message() << "language " << int(language) << ", id " << id);
            check(language, english.value(id), MessageBlock(language).value(id));
        }
    }
}

QString OuterBlanks(const QString& text) {
    static const QRegularExpression blanks(u"^( *).*?( *)$"_s,
                                           QRegularExpression::DotMatchesEverythingOption);
    const auto match = blanks.match(text);
    return match.captured(1) + u'|' + match.captured(2);
}

QStringList Places(const QString& text) {
    static const QRegularExpression place(u"%\\d"_s);
    QStringList places;
    for (auto matches = place.globalMatch(text); matches.hasNext();) {
        places << matches.next().captured();
    }
    places.sort();
    return places;
}

TEST(MessageBlocksTest, AllFiveHoldTheSameIds) {
    const QList<int> ids = SortedIds(Language::English);
    for (const Language language : kAll) {
        EXPECT_EQ(SortedIds(language), ids) << int(language);
    }
    const auto fixedEnd = std::lower_bound(ids.begin(), ids.end(), kFirstOwnId);
    EXPECT_EQ(fixedEnd - ids.begin(), 433);
    EXPECT_EQ(ids.first(), 1);
    EXPECT_EQ(*(fixedEnd - 1), 2003);
}

TEST(MessageBlocksTest, FormIsTheSameInEveryLanguage) {
    AgainstEnglish([](Language, const QString& english, const QString& text) {
        EXPECT_FALSE(text.trimmed().isEmpty());
        EXPECT_EQ(OuterBlanks(text), OuterBlanks(english));
        EXPECT_EQ(text.count(u'\n'), english.count(u'\n'));
        EXPECT_EQ(text.count(u'\t'), english.count(u'\t'));
        EXPECT_EQ(text.count(u'&'), english.count(u'&'));
        EXPECT_EQ(Places(text), Places(english));
        EXPECT_EQ(text.normalized(QString::NormalizationForm_C), text);
    });
}

TEST(MessageBlocksTest, NoSentenceIsLeftInEnglish) {
    AgainstEnglish([](Language language, const QString& english, const QString& text) {
        // Names and operators are alike; a sentence of four words never is.
        static const QRegularExpression word(u"\\b\\p{L}{2,}"_s,
                                             QRegularExpression::UseUnicodePropertiesOption);
        if (language != Language::English && english.count(word) >= 4) {
            EXPECT_NE(text, english);
        }
    });
}

TEST(MessagesTest, LocaleIdsPickTheLanguage) {
    const std::map<Language, QList<qint32>> listed{
        {Language::Italian, {1040, 2064}},
        {Language::German, {1031, 2055, 3079, 4103, 5127}},
        {Language::French, {1036, 2060, 3084, 4108, 5132, 6156}},
        {Language::Spanish,
         {1034,  2058,  3082,  4106,  5130,  6154,  7178,  8202,  9226,  10250, 11274,
          12298, 13322, 14346, 15370, 16394, 17418, 18442, 19466, 20490, 21514}}};
    std::map<qint32, Language> expected;
    for (const auto& [language, ids] : listed) {
        for (const qint32 id : ids) {
            expected[id] = language;
        }
    }
    for (qint32 id = -70000; id <= 140000; ++id) {
        const auto found = expected.find(id);
        ASSERT_EQ(LanguageOf(id), found == expected.end() ? Language::English : found->second)
            << id;
    }
    for (const Language language : kAll) {
        EXPECT_EQ(LanguageOf(LocaleIdOf(language)), language);
    }
}

TEST(MessagesTest, TextAndHelpFileFollowTheLanguage) {
    ScopedGlobals program;
    struct Case {
        qint32 locale;
        QString cancel;
        QString help;
    };
    for (const auto& [locale, cancel, help] : {Case{0, u"Cancel"_s, u"\\Velmora_en.chm"_s},
                                               Case{1041, u"Cancel"_s, u"\\Velmora_en.chm"_s},
                                               Case{1040, u"Annulla"_s, u"\\Velmora_it.chm"_s},
                                               Case{1031, u"Abbrechen"_s, u"\\Velmora_gr.chm"_s},
                                               Case{1034, u"Cancelar"_s, u"\\Velmora_es.chm"_s},
                                               Case{1036, u"Annuler"_s, u"\\Velmora_fr.chm"_s}}) {
        program->gLocaleId = locale;
        EXPECT_EQ(GetMessage(1001), cancel);
        SelectLanguageHelp();
        EXPECT_EQ(program->HelpFile, gProgramPath() + help);
    }
}

TEST(MessagesTest, EnglishTextsAreVerbatim) {
    const ScopedGlobals program;
    EXPECT_EQ(GetMessage(1039), u"Error at line "_s);
    EXPECT_EQ(GetMessage(1042), u"  Text search"_s);
    EXPECT_EQ(GetMessage(1027), u"Close\nsearch"_s);
    EXPECT_EQ(GetMessage(220), u"Page n°"_s);
    EXPECT_EQ(GetMessage(232), u"Performed search: '"_s);
}

TEST(MessagesTest, AnUnknownIdIsReported) {
    const ScopedGlobals program;
    ScriptedReporter reporter;
    EXPECT_EQ(GetMessage(131), QString());
    ASSERT_EQ(reporter.reports.size(), 1);
    EXPECT_TRUE(reporter.reports[0].contains(u"131"_s));
    EXPECT_TRUE(reporter.reports[0].endsWith(u"/GetMessage"_s));
}

TEST(MessagesTest, ArgumentsAreFilledInOnce) {
    const ScopedGlobals program;
    EXPECT_EQ(GetMessage(3003, {u"%2 100%"_s, u"dd"_s}),
              u"\"%2 100%\" is not a valid date of the form dd."_s);
    EXPECT_EQ(GetMessage(3003, {u"x"_s}), u"\"x\" is not a valid date of the form %2."_s);
}

TEST(ParseMessagesTest, ReadsLinesAndRefusesWhatIsNone) {
    const auto block = ParseMessages("# a comment\n1\t blank \n\n2\ta\\nb\\tc\\\\d\r\n30\t\n");
    EXPECT_EQ(block.value(1), u" blank "_s);
    EXPECT_EQ(block.value(2), u"a\nb\tc\\d"_s);
    EXPECT_EQ(block.value(30), QString());
    EXPECT_EQ(block.size(), 3);
    for (const char* bad : {"1\ta\n1\tb", "x\ta", "1 a", "0\ta", "40000\ta", "1\ta\\", "1\ta\\q"}) {
        EXPECT_THROW((void)ParseMessages(bad), std::runtime_error) << bad;
    }
}

} // namespace
} // namespace velmora
