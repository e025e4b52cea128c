// Naive meanings of the request language; slow on purpose, so that nothing is shared with the
// engine but the definition.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "Oracle.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <functional>

namespace engine_test {
namespace {

using RequestPtr = std::unique_ptr<OracleRequest>;
using WordTest = std::function<bool(const std::string&)>;

std::size_t Pick(std::mt19937& random, std::size_t count) {
    return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
}

// Any of the words at each place in turn.
class PhraseRequest final : public OracleRequest {
  public:
    PhraseRequest(std::string text, std::vector<WordTest> tests)
        : m_text(std::move(text)), m_tests(std::move(tests)) {}
    std::string Text() const override { return m_text; }
    bool Matches(const OracleDocument& document, std::size_t from, std::size_t to,
                 Instances& instances) const override {
        for (std::size_t first = from; first + m_tests.size() - 1 <= to; ++first) {
            std::size_t i = 0;
            while (i < m_tests.size() && m_tests[i](document.words[first - 1 + i]))
                ++i;
            if (i == m_tests.size())
                instances.insert({first, first + i - 1});
        }
        return !instances.empty();
    }

  private:
    std::string m_text;
    std::vector<WordTest> m_tests;
};

bool WithinDistance(const Instance& a, const Instance& b, std::size_t distance) {
    if (a == b)
        return false;
    const Instance& earlier = a.first <= b.first ? a : b;
    const Instance& later = a.first <= b.first ? b : a;
    return later.first <= earlier.second + distance;
}

class PairRequest final : public OracleRequest {
  public:
    enum class Kind { And, Or, AndNot, Near, Before, NotNear };
    PairRequest(Kind kind, std::size_t distance, RequestPtr left, RequestPtr right)
        : m_kind(kind), m_distance(distance), m_left(std::move(left)), m_right(std::move(right)) {}

    std::string Text() const override {
        static const char* const kNames[] = {" and ", " or ", " and not ", " w/", " pre/", " not w/"};
        std::string op = kNames[static_cast<int>(m_kind)];
        if (m_kind >= Kind::Near)
            op += std::to_string(m_distance) + " ";
        return "(" + m_left->Text() + ")" + op + "(" + m_right->Text() + ")";
    }

    bool Matches(const OracleDocument& document, std::size_t from, std::size_t to,
                 Instances& instances) const override {
        Instances left;
        Instances right;
        const bool hasLeft = m_left->Matches(document, from, to, left);
        const bool hasRight = m_right->Matches(document, from, to, right);
        if (!hasLeft)
            left.clear();
        if (!hasRight)
            right.clear();
        switch (m_kind) {
        case Kind::And:
        case Kind::Or:
            if (m_kind == Kind::And ? !(hasLeft && hasRight) : !(hasLeft || hasRight))
                return false;
            instances = left;
            instances.insert(right.begin(), right.end());
            return true;
        case Kind::AndNot:
            if (!hasLeft || hasRight)
                return false;
            instances = left;
            return true;
        case Kind::Near:
        case Kind::Before:
            for (const Instance& a : left)
                for (const Instance& b : right)
                    if (m_kind == Kind::Near ? WithinDistance(a, b, m_distance)
                                             : a.second < b.first && b.first - a.second <= m_distance)
                        instances.insert({a, b});
            return !instances.empty();
        case Kind::NotNear:
            for (const Instance& a : left)
                if (std::none_of(right.begin(), right.end(), [&](const Instance& b) {
                        return WithinDistance(a, b, m_distance);
                    }))
                    instances.insert(a);
            return !instances.empty();
        }
        return false;
    }

  private:
    Kind m_kind;
    std::size_t m_distance;
    RequestPtr m_left, m_right;
};

class NotRequest final : public OracleRequest {
  public:
    explicit NotRequest(RequestPtr child) : m_child(std::move(child)) {}
    std::string Text() const override { return "not (" + m_child->Text() + ")"; }
    bool Matches(const OracleDocument& document, std::size_t from, std::size_t to,
                 Instances&) const override {
        Instances ignored;
        return !m_child->Matches(document, from, to, ignored);
    }

  private:
    RequestPtr m_child;
};

class TitleRequest final : public OracleRequest {
  public:
    explicit TitleRequest(RequestPtr child) : m_child(std::move(child)) {}
    std::string Text() const override { return "title contains (" + m_child->Text() + ")"; }
    bool Matches(const OracleDocument& document, std::size_t, std::size_t,
                 Instances& instances) const override {
        return document.titleWords > 0 &&
               m_child->Matches(document, 1, document.titleWords, instances);
    }

  private:
    RequestPtr m_child;
};

// The first or last word of the document.
class EdgeRequest final : public OracleRequest {
  public:
    explicit EdgeRequest(bool first) : m_first(first) {}
    std::string Text() const override { return m_first ? "xfirstword" : "xlastword"; }
    bool Matches(const OracleDocument& document, std::size_t from, std::size_t to,
                 Instances& instances) const override {
        const std::size_t word = m_first ? 1 : document.words.size();
        if (word >= from && word <= to)
            instances.insert({word, word});
        return !instances.empty();
    }

  private:
    bool m_first;
};

class NameRequest final : public OracleRequest {
  public:
    NameRequest(bool wanted, std::string ending) : m_wanted(wanted), m_ending(std::move(ending)) {}
    std::string Text() const override {
        return std::string("xfilter(") + (m_wanted ? "name" : "excl") + " \"*" + m_ending + "\")";
    }
    bool Matches(const OracleDocument& document, std::size_t, std::size_t,
                 Instances&) const override {
        return document.name.ends_with(m_ending) == m_wanted;
    }

  private:
    bool m_wanted;
    std::string m_ending;
};

std::size_t Distance(const std::u32string& a, const std::u32string& b) {
    std::vector<std::vector<std::size_t>> table(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i)
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0)
                table[i][j] = i + j;
            else
                table[i][j] = std::min({table[i - 1][j] + 1, table[i][j - 1] + 1,
                                        table[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0U : 1U)});
        }
    return table[a.size()][b.size()];
}

std::u32string Wide(const std::string& utf8) {
    const auto text = icu::UnicodeString::fromUTF8(utf8);
    std::u32string wide;
    for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1))
        wide += static_cast<char32_t>(text.char32At(i));
    return wide;
}

std::string Narrow(const std::u32string& wide) {
    icu::UnicodeString text;
    for (const char32_t c : wide)
        text.append(static_cast<UChar32>(c));
    std::string utf8;
    return text.toUTF8String(utf8);
}

bool Wild(const std::u32string& pattern, const std::u32string& text, std::size_t p = 0,
          std::size_t t = 0) {
    if (p == pattern.size())
        return t == text.size();
    if (pattern[p] == U'*')
        return Wild(pattern, text, p + 1, t) ||
               (t < text.size() && Wild(pattern, text, p, t + 1));
    return t < text.size() && (pattern[p] == U'?' || pattern[p] == text[t]) &&
           Wild(pattern, text, p + 1, t + 1);
}

bool IsOperator(const std::string& word) {
    return word == "and" || word == "or" || word == "not" || word == "contains" ||
           word == "xfirstword" || word == "xlastword" || word == "xfilter";
}

// One word of a request: its spelling and its test.
std::pair<std::string, WordTest> RandomWord(std::mt19937& random, const std::string& word) {
    const std::u32string wide = Wide(word);
    switch (Pick(random, 12)) {
    case 0: { // cut off
        const std::u32string start = wide.substr(0, 1 + Pick(random, wide.size()));
        return {Narrow(start) + "*", [start](const std::string& w) {
                    return Wide(w).compare(0, start.size(), start) == 0;
                }};
    }
    case 1: { // one letter open, and perhaps more
        std::u32string pattern = wide;
        pattern[Pick(random, pattern.size())] = U'?';
        if (Pick(random, 2) == 0)
            pattern[Pick(random, pattern.size())] = U'*';
        return {Narrow(pattern), [pattern](const std::string& w) { return Wild(pattern, Wide(w)); }};
    }
    case 2: { // spelled loosely
        const std::size_t fixed = Pick(random, wide.size());
        const std::size_t limit = 1 + Pick(random, 2);
        std::u32string spelled = wide;
        spelled.insert(fixed, std::u32string(limit, U'%'));
        return {Narrow(spelled), [wide, fixed, limit](const std::string& w) {
                    const std::u32string other = Wide(w);
                    return other.compare(0, fixed, wide, 0, fixed) == 0 &&
                           Distance(wide.substr(fixed), other.substr(std::min(fixed, other.size()))) <= limit;
                }};
    }
    case 3: { // numbers
        const std::size_t lower = Pick(random, 40);
        const std::size_t upper = lower + Pick(random, 60);
        return {std::to_string(lower) + "~~" + std::to_string(upper), [lower, upper](const std::string& w) {
                    if (w.size() > 9 || w.find_first_not_of("0123456789") != std::string::npos)
                        return false;
                    const auto value = static_cast<std::size_t>(std::stoul(w));
                    return value >= lower && value <= upper;
                }};
    }
    default:
        return {IsOperator(word) ? "\"" + word + "\"" : word,
                [word](const std::string& w) { return w == word; }};
    }
}

RequestPtr RandomPhrase(std::mt19937& random, const std::vector<OracleDocument>& documents) {
    const OracleDocument& document = documents[Pick(random, documents.size())];
    const std::size_t length = Pick(random, 3) == 0 ? 2 + Pick(random, 3) : 1;
    const std::size_t first = Pick(random, document.words.size());
    std::string text;
    std::vector<WordTest> tests;
    for (std::size_t i = first; i < std::min(first + length, document.words.size()); ++i) {
        auto [spelling, test] = RandomWord(random, document.words[i]);
        text += (text.empty() ? "" : " ") + spelling;
        tests.push_back(std::move(test));
    }
    return std::make_unique<PhraseRequest>(text, std::move(tests));
}

} // namespace

RequestPtr RandomRequest(std::mt19937& random, const std::vector<OracleDocument>& documents, int depth) {
    const std::size_t kind = depth == 0 ? 0 : Pick(random, 16);
    const auto child = [&] { return RandomRequest(random, documents, depth - 1); };
    switch (kind) {
    case 10:
        return std::make_unique<NotRequest>(child());
    case 11:
        return std::make_unique<TitleRequest>(child());
    case 12:
        return std::make_unique<EdgeRequest>(Pick(random, 2) == 0);
    case 13:
        return std::make_unique<NameRequest>(Pick(random, 2) == 0, std::to_string(Pick(random, 10)) + ".HTML");
    default:
        break;
    }
    if (kind < 4 || kind > 13)
        return RandomPhrase(random, documents);
    const auto pair = static_cast<PairRequest::Kind>(kind - 4);
    // What has no instances is refused beside w/N.
    const auto operand = [&] {
        RequestPtr one = child();
        while (pair >= PairRequest::Kind::Near && dynamic_cast<NotRequest*>(one.get()) != nullptr)
            one = child();
        return one;
    };
    RequestPtr left = operand();
    RequestPtr right = operand();
    return std::make_unique<PairRequest>(pair, 1 + Pick(random, 12), std::move(left), std::move(right));
}

std::vector<std::string> OracleWords(const std::string& utf8) {
    UErrorCode error = U_ZERO_ERROR;
    const icu::Normalizer2* fold = icu::Normalizer2::getNFKCCasefoldInstance(error);
    const icu::Normalizer2* decompose = icu::Normalizer2::getNFDInstance(error);
    const auto text = icu::UnicodeString::fromUTF8(utf8);
    std::vector<std::string> words;
    icu::UnicodeString word;
    const auto finish = [&] {
        if (word.isEmpty())
            return;
        const auto parts = decompose->normalize(fold->normalize(word, error), error);
        icu::UnicodeString bare;
        for (int32_t i = 0; i < parts.length(); i = parts.moveIndex32(i, 1))
            if (u_charType(parts.char32At(i)) != U_NON_SPACING_MARK)
                bare.append(parts.char32At(i));
        std::string one;
        words.push_back(bare.toUTF8String(one));
        word.remove();
    };
    for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
        const UChar32 c = text.char32At(i);
        if (u_isalpha(c) || u_isdigit(c) || u_charType(c) == U_NON_SPACING_MARK)
            word.append(c);
        else
            finish();
    }
    finish();
    return words;
}

} // namespace engine_test
