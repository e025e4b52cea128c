// Folding, comparison and pattern match, code point by code point, with a short way for ASCII.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "sqlite/Unicode.h"

#include <array>
#include <sqlite3.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf8.h>

namespace sqlite {

namespace {

constexpr char32_t kBeyondUnicode = 0x110000;
constexpr char32_t kDotlessI = 0x131;

// What one character folds to: one to three code points.
struct Folding {
    std::array<char32_t, 3> units{};
    unsigned count = 1;
};

// Whether the character may fold to several; all others go the fast way.
bool MayExpand(char32_t c) {
    return (c >= 0x1E96 && c <= 0x1FFC) || (c >= 0xFB00 && c <= 0xFB17) || c == 0xDF ||
           c == 0x130 || c == 0x149 || c == 0x1F0 || c == 0x390 || c == 0x3B0 || c == 0x587;
}

Folding Fold(char32_t character) {
    if (character < 0x80) {
        const bool capital = character >= U'A' && character <= U'Z';
        return {{capital ? character - U'A' + U'a' : character}};
    }
    if (character == kDotlessI) {
        return {{U'i'}}; // its capital is I, and stored paths are capitals
    }
    if (character >= kBeyondUnicode) {
        return {{character}};
    }
    if (!MayExpand(character)) {
        const auto code = static_cast<UChar32>(character);
        return {{static_cast<char32_t>(u_foldCase(code, U_FOLD_CASE_DEFAULT))}};
    }
    const auto source = static_cast<UChar>(character); // all of these lie in the first plane
    std::array<UChar, 3> folded{};
    UErrorCode status = U_ZERO_ERROR;
    const int count = u_strFoldCase(folded.data(), 3, &source, 1, U_FOLD_CASE_DEFAULT, &status);
    Folding folding{{folded[0], folded[1], folded[2]}, static_cast<unsigned>(count)};
    return folding;
}

// Reads the characters of a UTF-8 text one after the other. A byte that belongs to none counts as
// a character of its own beyond Unicode, so that different rubbish stays different.
class Reader {
  public:
    explicit Reader(std::string_view text) : m_text(text) {}

    bool AtEnd() const { return m_position >= m_text.size(); }
    std::size_t Position() const { return m_position; }
    void Seek(std::size_t position) { m_position = position; }

    char32_t Next() {
        const auto lead = static_cast<unsigned char>(m_text[m_position]);
        if (lead < 0x80) {
            ++m_position;
            return lead;
        }
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(m_text.data());
        std::size_t position = m_position;
        UChar32 character = 0;
        U8_NEXT(bytes, position, m_text.size(), character);
        if (character < 0) {
            ++m_position;
            return kBeyondUnicode + lead;
        }
        m_position = position;
        return static_cast<char32_t>(character);
    }

  private:
    std::string_view m_text;
    std::size_t m_position = 0;
};

// Reads folded code points; a mark may stand between those of one character.
class FoldedReader {
  public:
    struct Mark {
        std::size_t start = 0; // of the character
        unsigned used = 0;     // code points of it that are read
    };

    explicit FoldedReader(std::string_view text) : m_reader(text) {}

    bool InCharacter() const { return m_used < m_folding.count; }
    bool AtEnd() const { return !InCharacter() && m_reader.AtEnd(); }

    char32_t Next() {
        if (!InCharacter()) {
            Load();
        }
        return m_folding.units[m_used++];
    }
    char32_t NextUnfolded() {
        Load();
        m_used = m_folding.count;
        return m_character;
    }
    // Back to before the folding of the character that NextUnfolded gave.
    void Unread() { m_used = 0; }
    // Past the character, or past what is left of it.
    void SkipCharacter() {
        if (!InCharacter()) {
            Load();
        }
        m_used = m_folding.count;
    }

    Mark Here() const { return InCharacter() ? Mark{m_start, m_used} : Mark{m_reader.Position()}; }
    void Return(const Mark& mark) {
        m_reader.Seek(mark.start);
        m_used = m_folding.count;
        if (mark.used > 0) {
            Load();
            m_used = mark.used;
        }
    }

  private:
    void Load() {
        m_start = m_reader.Position();
        m_character = m_reader.Next();
        m_folding = Fold(m_character);
        m_used = 0;
    }

    Reader m_reader;
    std::size_t m_start = 0;
    char32_t m_character = 0;
    Folding m_folding;
    unsigned m_used = 1;
};

// One piece of a pattern, read from where the reader stands.
struct Piece {
    enum class Kind { Any, One, Plain, Broken } kind;
    char32_t folded = 0;
};

Piece NextPiece(FoldedReader& pattern, char32_t escape) {
    if (pattern.InCharacter()) {
        return {Piece::Kind::Plain, pattern.Next()};
    }
    const char32_t character = pattern.NextUnfolded();
    if (escape != 0 && character == escape) {
        if (pattern.AtEnd()) {
            return {Piece::Kind::Broken}; // nothing left to make plain: matches nothing
        }
        return {Piece::Kind::Plain, pattern.Next()};
    }
    if (character == U'%') {
        return {Piece::Kind::Any};
    }
    if (character == U'_') {
        return {Piece::Kind::One};
    }
    pattern.Unread();
    return {Piece::Kind::Plain, pattern.Next()};
}

int Collate(void* /*unused*/, int sizeA, const void* a, int sizeB, const void* b) {
    return CompareCaseBlind({static_cast<const char*>(a), static_cast<std::size_t>(sizeA)},
                            {static_cast<const char*>(b), static_cast<std::size_t>(sizeB)});
}

std::string_view TextOf(sqlite3_value* value) {
    const auto* text = sqlite3_value_text(value);
    const int size = sqlite3_value_bytes(value);
    return text == nullptr ? std::string_view()
                           : std::string_view(reinterpret_cast<const char*>(text),
                                              static_cast<std::size_t>(size));
}

// like(pattern, text) and like(pattern, text, escape), as SQLite calls them for "text LIKE
// pattern".
void Like(sqlite3_context* context, int count, sqlite3_value** values) {
    for (int i = 0; i < count; ++i) {
        if (sqlite3_value_type(values[i]) == SQLITE_NULL) {
            return; // the answer is NULL
        }
    }
    const std::string_view pattern = TextOf(values[0]);
    const int limit =
        sqlite3_limit(sqlite3_context_db_handle(context), SQLITE_LIMIT_LIKE_PATTERN_LENGTH, -1);
    if (pattern.size() > static_cast<std::size_t>(limit)) {
        sqlite3_result_error(context, "the pattern of LIKE is too long", -1);
        return;
    }
    char32_t escape = 0;
    if (count == 3) {
        Reader reader(TextOf(values[2]));
        escape = reader.AtEnd() ? 0 : reader.Next();
        if (escape == 0 || !reader.AtEnd()) {
            sqlite3_result_error(context, "ESCAPE must be a single character", -1);
            return;
        }
    }
    sqlite3_result_int(context, LikeCaseBlind(pattern, TextOf(values[1]), escape) ? 1 : 0);
}

void Check(Database& database, int code) {
    if (code != SQLITE_OK) {
        throw Error::Last(database.Handle(), code);
    }
}

} // namespace

int CompareCaseBlind(std::string_view a, std::string_view b) {
    FoldedReader readerA(a);
    FoldedReader readerB(b);
    while (!readerA.AtEnd() && !readerB.AtEnd()) {
        const char32_t nextA = readerA.Next();
        const char32_t nextB = readerB.Next();
        if (nextA != nextB) {
            return nextA < nextB ? -1 : 1;
        }
    }
    return static_cast<int>(readerB.AtEnd()) - static_cast<int>(readerA.AtEnd());
}

bool LikeCaseBlind(std::string_view pattern, std::string_view text, char32_t escape) {
    FoldedReader patternReader(pattern);
    FoldedReader textReader(text);
    // Only the last "%" ever needs another try: with one code point more under it.
    bool hasAny = false;
    FoldedReader::Mark behindAny;
    FoldedReader::Mark retryText;
    for (;;) {
        bool fits = false;
        if (patternReader.AtEnd()) {
            if (textReader.AtEnd()) {
                return true;
            }
        } else {
            const Piece piece = NextPiece(patternReader, escape);
            if (piece.kind == Piece::Kind::Broken) {
                return false;
            }
            if (piece.kind == Piece::Kind::Any) {
                if (patternReader.AtEnd()) {
                    return true;
                }
                hasAny = true;
                behindAny = patternReader.Here();
                retryText = textReader.Here();
                continue;
            }
            if (textReader.AtEnd()) {
                return false; // a later start would leave even less
            }
            if (piece.kind == Piece::Kind::One) {
                textReader.SkipCharacter();
                fits = true;
            } else {
                fits = piece.folded == textReader.Next();
            }
        }
        if (!fits) {
            if (!hasAny) {
                return false;
            }
            textReader.Return(retryText);
            textReader.Next();
            retryText = textReader.Here();
            patternReader.Return(behindAny);
        }
    }
}

std::string FoldCase(std::string_view text) {
    std::string folded;
    folded.reserve(text.size());
    FoldedReader reader(text);
    while (!reader.AtEnd()) {
        const char32_t unit = reader.Next();
        if (unit < 0x80) {
            folded += static_cast<char>(unit);
        } else if (unit >= kBeyondUnicode) {
            folded += static_cast<char>(unit - kBeyondUnicode);
        } else {
            std::array<std::uint8_t, U8_MAX_LENGTH> bytes{};
            std::size_t size = 0;
            U8_APPEND_UNSAFE(bytes.data(), size, unit);
            folded.append(reinterpret_cast<const char*>(bytes.data()), size);
        }
    }
    return folded;
}

std::string EscapeLike(std::string_view text) {
    std::string pattern;
    pattern.reserve(text.size());
    for (const char c : text) {
        if (c == '%' || c == '_' || c == '!') {
            pattern += '!';
        }
        pattern += c;
    }
    return pattern;
}

void RegisterUnicode(Database& database) {
    constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    sqlite3* handle = database.Handle();
    Check(database, sqlite3_create_collation_v2(handle, kUnicodeNoCase, SQLITE_UTF8, nullptr,
                                                Collate, nullptr));
    for (const int arguments : {2, 3}) {
        Check(database, sqlite3_create_function_v2(handle, "like", arguments, kFlags, nullptr, Like,
                                                   nullptr, nullptr, nullptr));
    }
}

} // namespace sqlite
