// The collation and LIKE: known pairs, and properties against ICU on sampled texts.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "sqlite/Unicode.h"
#include "sqlite/Statement.h"

#include <gtest/gtest.h>
#include <random>
#include <unicode/locid.h>
#include <unicode/unistr.h>

using namespace sqlite;

namespace {

std::string Utf8(UChar32 character) {
    std::string text;
    icu::UnicodeString(character).toUTF8String(text);
    return text;
}

// ICU's own full folding, with the one deliberate step beyond it.
std::string IcuFolded(const std::string& text) {
    auto unicode = icu::UnicodeString::fromUTF8(text);
    unicode.findAndReplace(icu::UnicodeString(UChar32(0x131)), icu::UnicodeString(u'i'));
    std::string folded;
    unicode.foldCase().toUTF8String(folded);
    return folded;
}

class Texts {
  public:
    // Letters that make trouble, plain ones, and some of any script.
    std::string Next() {
        static const std::u32string kLetters = U"aAbBiIsSkK ßẞſıİÈèσςΣΑΐΰŉǰﬁﬀᾳᾼǅǆ\u0307\u0345\u212A"
                                               U"日א𐐀𐐨_%!";
        std::string text;
        for (int i = Below(7); i > 0; --i) {
            text += Below(6) == 0 ? Utf8(Anything())
                                  : Utf8(static_cast<UChar32>(kLetters[static_cast<std::size_t>(
                                        Below(static_cast<int>(kLetters.size())))]));
        }
        return text;
    }
    int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }
    UChar32 Anything() {
        const UChar32 character = Below(0x1E000);
        return character == 0 || (character >= 0xD800 && character <= 0xDFFF) ? 0x41 : character;
    }

  private:
    std::mt19937 m_random{20240229}; // the same texts in every run
};

TEST(CompareCaseBlind, KnownPairs) {
    const auto same = [](const char* a, const char* b) { return EqualCaseBlind(a, b); };
    EXPECT_TRUE(same("\\HOME\\È", "\\home\\è"));
    EXPECT_TRUE(same("ΣΑΣ", "σας"));
    EXPECT_TRUE(same("straße", "STRASSE"));
    EXPECT_TRUE(same("STRAẞE", "strasse"));
    EXPECT_TRUE(same("ısı", "ISI"));
    EXPECT_TRUE(same("İ", "i\u0307"));
    EXPECT_TRUE(same("\u212A", "k"));
    EXPECT_TRUE(same("", ""));
    EXPECT_FALSE(same("İ", "i"));
    EXPECT_FALSE(same("e", "è"));
    EXPECT_FALSE(same("è", "e\u0300")) << "composed and decomposed differ";
    EXPECT_FALSE(same("a", "a ")) << "trailing blanks count";
    EXPECT_LT(CompareCaseBlind("a", "B"), 0);
    EXPECT_GT(CompareCaseBlind("ab", "A"), 0);
    EXPECT_NE(CompareCaseBlind(std::string_view("a\0b", 3), "a"), 0);
}

TEST(CompareCaseBlind, RubbishEqualsOnlyItself) {
    EXPECT_TRUE(EqualCaseBlind("a\xFFz", "A\xFFZ"));
    EXPECT_FALSE(EqualCaseBlind("\xFF", "\xFE"));
    EXPECT_FALSE(EqualCaseBlind("\xC3", "\xC3\xA8"));
    EXPECT_FALSE(EqualCaseBlind("\xFF", "\xEF\xBF\xBD")) << "not the replacement character";
    EXPECT_EQ(FoldCase("\xFF"
                       "A"),
              "\xFF"
              "a");
}

TEST(CompareCaseBlind, EveryCharacterFoldsAsInIcuAndEqualsItsCapitals) {
    for (UChar32 character = 1; character <= 0x10FFFF; ++character) {
        if (character >= 0xD800 && character <= 0xDFFF) {
            continue;
        }
        const std::string text = Utf8(character);
        ASSERT_EQ(FoldCase(text), IcuFolded(text)) << std::hex << character;
        std::string capitals;
        icu::UnicodeString(character).toUpper(icu::Locale::getRoot()).toUTF8String(capitals);
        ASSERT_TRUE(EqualCaseBlind(text, capitals)) << std::hex << character;
    }
}

TEST(CompareCaseBlind, IsAnOrderThatFollowsTheFolding) {
    Texts texts;
    for (int i = 0; i < 20000; ++i) {
        const std::string a = texts.Next();
        const std::string b = texts.Next();
        const std::string c = texts.Next();
        // The order of UTF-8 bytes is that of code points.
        const int expected = IcuFolded(a).compare(IcuFolded(b));
        const int order = CompareCaseBlind(a, b);
        ASSERT_EQ(order < 0, expected < 0) << a << " | " << b;
        ASSERT_EQ(order == 0, expected == 0) << a << " | " << b;
        ASSERT_EQ(order, -CompareCaseBlind(b, a));
        if (order <= 0 && CompareCaseBlind(b, c) <= 0) {
            ASSERT_LE(CompareCaseBlind(a, c), 0) << a << " | " << b << " | " << c;
        }
    }
}

TEST(LikeCaseBlind, KnownPatterns) {
    const struct {
        const char* pattern;
        const char* text;
        bool expected;
        const char* why;
    } cases[] = {
        {"ö%", "ÖL", true, "beyond ASCII"},
        {"%straße%", "die STRASSE hinab", true, "one letter against two"},
        {"%s%", "ß", true, "half of a letter that folds to two"},
        {"_", "ß", true, "one character of the text, however it folds"},
        {"__", "ß", false, "not two"},
        {"_s", "ß", false, "a character is taken whole"},
        {"_b", "\U00010400b", true, "four bytes are one character"},
        {"", "", true, "nothing is nothing"},
        {"", "a", false, "and not something"},
        {"%", "", true, "any run, the empty one too"},
        {"%a%b", "xaxbxab", true, "needs another try"},
        {"%ab", "aab", true, "overlapping start"},
        {"a%b%c", "abcb", false, "the end does not fit"},
        {"a!%", "a%", true, "escaped"},
        {"a!%", "ab", false, "escaped"},
        {"!ß", "SS", true, "an escaped letter folds too"},
        {"a!", "a!", false, "an escape at the end matches nothing"},
        {"\xFF%", "\xFFx", true, "a byte that is no character"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(LikeCaseBlind(c.pattern, c.text, U'!'), c.expected)
            << c.text << " LIKE " << c.pattern << ": " << c.why;
    }
}

TEST(LikeCaseBlind, AgreesWithTheCollationAndWithSearch) {
    Texts texts;
    for (int i = 0; i < 20000; ++i) {
        const std::string text = texts.Next();
        const std::string other = texts.Next();
        const std::string literal = EscapeLike(other);
        const std::string folded = IcuFolded(text);
        const std::string sought = IcuFolded(other);
        ASSERT_TRUE(LikeCaseBlind(EscapeLike(text), text, U'!')) << text;
        ASSERT_EQ(LikeCaseBlind(literal, text, U'!'), EqualCaseBlind(other, text));
        ASSERT_EQ(LikeCaseBlind(literal + "%", text, U'!'), folded.starts_with(sought))
            << text << " | " << other;
        ASSERT_EQ(LikeCaseBlind("%" + literal, text, U'!'), folded.ends_with(sought))
            << text << " | " << other;
        ASSERT_EQ(LikeCaseBlind("%" + literal + "%", text, U'!'),
                  folded.find(sought) != std::string::npos)
            << text << " | " << other;
    }
}

TEST(LikeCaseBlind, ManyStarsAreNoTrap) {
    // A matcher that tries every star anew would not come back from this one.
    std::string pattern;
    for (int i = 0; i < 200; ++i) {
        pattern += "%a";
    }
    EXPECT_FALSE(LikeCaseBlind(pattern + "b", std::string(5000, 'a')));
}

TEST(RegisterUnicode, ServesIndexesAndBothFormsOfLike) {
    Database database(":memory:", {OpenMode::Create});
    RegisterUnicode(database);
    database.Exec("CREATE TABLE t(name TEXT COLLATE UNICODE_NOCASE);"
                  "CREATE UNIQUE INDEX u ON t(name);"
                  "INSERT INTO t VALUES('\\DOCS\\È.TIF'),('100%'),(NULL)");
    EXPECT_EQ(QueryInt64(database, "SELECT count(*) FROM t WHERE name = '\\docs\\è.tif'"), 1);
    EXPECT_THROW(database.Exec("INSERT INTO t VALUES('\\docs\\è.TIF')"), Error);
    EXPECT_EQ(QueryInt64(database, "SELECT count(*) FROM t WHERE name LIKE '%è%'"), 1);
    EXPECT_EQ(QueryInt64(database, "SELECT count(*) FROM t WHERE name LIKE '%!%' ESCAPE '!'"), 1);
    EXPECT_EQ(QueryInt64(database, "SELECT NULL LIKE 'a'"), std::nullopt);
    EXPECT_EQ(QueryInt64(database, "SELECT 12 LIKE '1_'"), 1);
    EXPECT_THROW(database.Exec("SELECT 'a' LIKE 'a' ESCAPE ''"), Error);
    EXPECT_THROW(database.Exec("SELECT 'a' LIKE 'a' ESCAPE 'xy'"), Error);
    EXPECT_EQ(QueryInt64(database, "SELECT 'a%' LIKE 'aè%' ESCAPE 'è'"), 1);
}

} // namespace
