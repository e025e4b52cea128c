// Grammar of the request language: w/N binds tightest, then and, then or.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/RequestLexer.h"
#include "engine/text/Tokenizer.h"
#include "platform/LogicalPath.h"

#include <algorithm>
#include <utility>

namespace engine {
namespace {

using Kind = RequestToken::Kind;
using Node = RequestNode;
using NodePtr = std::unique_ptr<RequestNode>;
using Reason = RequestError::Reason;

constexpr int kDeepest = 100;
constexpr std::size_t kMostTokens = 2000;

const char* Clause(Reason reason) {
    switch (reason) {
    case Reason::OperandMissing:
        return "a word is missing";
    case Reason::OperatorMissing:
        return "an operator is missing";
    case Reason::ParenthesisMissing:
        return "a parenthesis is not closed";
    case Reason::ParenthesisExtra:
        return "a parenthesis is closed that was not opened";
    case Reason::QuoteMissing:
        return "a quotation mark is not closed";
    case Reason::NumberMissing:
        return "a number of words is missing";
    case Reason::FilterMalformed:
        return "a file condition is malformed";
    case Reason::NotBesideNear:
        return "not cannot stand beside w/N";
    case Reason::TooLong:
        return "the request is too long";
    case Reason::TooManyWords:
        return "a pattern stands for too many words";
    }
    return "the request is malformed";
}

bool IsMark(char c) { return c == '*' || c == '?' || c == '%'; }

// Cuts a piece of a request into the words it stands for. Pattern marks are part of their words.
class WordCutter {
  public:
    WordCutter(Tokenizer& tokenizer, std::string_view text, std::size_t position)
        : m_tokenizer(tokenizer), m_text(text), m_position(position) {}
    std::vector<WordPattern> Cut();

  private:
    bool TakeRange();
    void TakeRun(std::string_view run, bool sound);
    void AddPattern(std::string_view run);
    void AddPlain(std::string_view run);

    Tokenizer& m_tokenizer;
    std::string_view m_text;
    std::size_t m_position;
    std::vector<WordPattern> m_words;
};

bool AllDigits(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool WordCutter::TakeRange() {
    const auto mark = m_text.find("~~");
    if (mark == std::string_view::npos || !AllDigits(m_text.substr(0, mark)) ||
        !AllDigits(m_text.substr(mark + 2)))
        return false;
    WordPattern range;
    range.kind = WordPattern::Kind::Range;
    range.text = m_text.substr(0, mark);
    range.upper = m_text.substr(mark + 2);
    range.position = m_position;
    m_words.push_back(std::move(range));
    return true;
}

std::vector<WordPattern> WordCutter::Cut() {
    // Blanks part only what stood in quotes; elsewhere there are none.
    while (!m_text.empty()) {
        const auto blank = m_text.find_first_of(" \t\r\n\f\v");
        const std::string_view rest =
            blank == std::string_view::npos ? std::string_view() : m_text.substr(blank + 1);
        m_text = m_text.substr(0, blank);
        if (!m_text.empty() && !TakeRange()) {
            const bool sound = m_text.front() == '#';
            TakeRun(sound ? m_text.substr(1) : m_text, sound);
        }
        m_text = rest;
    }
    return std::move(m_words);
}

// A run without blanks: separators part it, a closing ~ or & is a flag of its last word.
void WordCutter::TakeRun(std::string_view run, bool sound) {
    WordPattern::Kind kind = sound ? WordPattern::Kind::Sound : WordPattern::Kind::Exact;
    while (!run.empty() && (run.back() == '~' || run.back() == '&')) {
        kind = run.back() == '~' ? WordPattern::Kind::Stem : WordPattern::Kind::Synonyms;
        run.remove_suffix(1);
    }
    const std::size_t before = m_words.size();
    std::size_t at = 0;
    std::size_t begin = 0;
    bool marked = false;
    const auto finish = [&](std::size_t end) {
        const std::string_view part = run.substr(begin, end - begin);
        if (marked)
            AddPattern(part);
        else
            AddPlain(part);
        marked = false;
    };
    while (at < run.size()) {
        if (IsMark(run[at])) {
            marked = true;
            ++at;
            continue;
        }
        std::size_t next = at;
        if (m_tokenizer.Characters().At(NextCodePoint(run, next)).role == CharRole::Separator) {
            finish(at);
            begin = next;
        }
        at = next;
    }
    finish(run.size());
    if (kind != WordPattern::Kind::Exact && m_words.size() > before &&
        m_words.back().kind == WordPattern::Kind::Exact)
        m_words.back().kind = kind;
}

void WordCutter::AddPlain(std::string_view run) {
    for (const Word& word : m_tokenizer.Split(run)) {
        WordPattern pattern;
        pattern.text = word.term;
        pattern.position = m_position;
        m_words.push_back(std::move(pattern));
    }
}

void WordCutter::AddPattern(std::string_view run) {
    WordPattern pattern;
    pattern.position = m_position;
    std::string piece;
    bool letters = false;
    const auto addPiece = [&] {
        const std::string folded = m_tokenizer.Fold(piece);
        letters = letters || !folded.empty();
        pattern.text += folded;
        piece.clear();
    };
    for (const char c : run) {
        if (!IsMark(c)) {
            piece += c;
            continue;
        }
        addPiece();
        if (c != '%') {
            pattern.text += c;
            pattern.kind = WordPattern::Kind::Wildcard;
        } else if (pattern.differences++ == 0) {
            pattern.fixedLetters = static_cast<std::size_t>(
                std::count_if(pattern.text.begin(), pattern.text.end(), [](char byte) {
                    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
                }));
        }
    }
    addPiece();
    if (pattern.kind == WordPattern::Kind::Wildcard)
        pattern.differences = 0; // a word is either spelled loosely or cut off, not both
    else
        pattern.kind = WordPattern::Kind::Fuzzy;
    if (!letters && pattern.kind == WordPattern::Kind::Fuzzy)
        return; // a lone % asks for nothing
    m_words.push_back(std::move(pattern));
}

class Parser {
  public:
    Parser(std::string_view request, Tokenizer& tokenizer)
        : m_tokenizer(tokenizer), m_tokens(CutRequest(request)) {
        if (m_tokens.size() > kMostTokens)
            throw RequestError(Reason::TooLong, 1, {});
    }
    NodePtr Parse();
    NodePtr ParseConditions();

  private:
    const RequestToken& Now() const { return m_tokens[m_at]; }
    const RequestToken& Next() const { return m_tokens[std::min(m_at + 1, m_tokens.size() - 1)]; }
    [[noreturn]] void Fail(Reason reason, const RequestToken& token) const {
        throw RequestError(reason, token.position, token.text);
    }
    NodePtr Or();
    NodePtr And();
    NodePtr Near();
    NodePtr Operand();
    NodePtr Phrase();
    NodePtr Contains();
    NodePtr Filter(const RequestToken& token) const;
    NodePtr Primary();
    static NodePtr Join(Node::Kind kind, NodePtr left, NodePtr right, std::uint32_t distance = 0);
    bool IsContains() const { return Now().kind == Kind::Words && Next().kind == Kind::Contains; }

    Tokenizer& m_tokenizer;
    std::vector<RequestToken> m_tokens;
    std::size_t m_at = 0;
    int m_depth = 0;
};

NodePtr Parser::Join(Node::Kind kind, NodePtr left, NodePtr right, std::uint32_t distance) {
    auto node = std::make_unique<Node>();
    node->kind = kind;
    node->left = std::move(left);
    node->right = std::move(right);
    node->distance = distance;
    return node;
}

NodePtr Parser::Parse() {
    if (Now().kind == Kind::End)
        return nullptr;
    NodePtr node = Or();
    if (Now().kind == Kind::Close)
        Fail(Reason::ParenthesisExtra, Now());
    if (Now().kind != Kind::End)
        Fail(Reason::OperatorMissing, Now());
    return node;
}

NodePtr Parser::ParseConditions() {
    NodePtr all;
    for (; Now().kind != Kind::End; ++m_at) {
        if (Now().kind != Kind::Filter)
            Fail(Reason::FilterMalformed, Now());
        NodePtr one = Filter(Now());
        all = all ? Join(Node::Kind::And, std::move(all), std::move(one)) : std::move(one);
    }
    return all;
}

NodePtr Parser::Or() {
    if (++m_depth > kDeepest)
        Fail(Reason::TooLong, Now());
    NodePtr node = And();
    while (Now().kind == Kind::Or) {
        ++m_at;
        node = Join(Node::Kind::Or, std::move(node), And());
    }
    --m_depth;
    return node;
}

NodePtr Parser::And() {
    NodePtr node = Near();
    for (;;) {
        if (Now().kind == Kind::And) {
            ++m_at;
            const bool without = Now().kind == Kind::Not;
            m_at += without ? 1 : 0;
            node = Join(without ? Node::Kind::AndNot : Node::Kind::And, std::move(node), Near());
        } else if (Now().kind == Kind::Not) {
            // "a not b" says the same as "a and not b".
            ++m_at;
            node = Join(Node::Kind::AndNot, std::move(node), Near());
        } else {
            return node;
        }
    }
}

NodePtr Parser::Near() {
    NodePtr node = Operand();
    for (;;) {
        const bool without = Now().kind == Kind::Not && Next().kind == Kind::Near;
        if (without)
            ++m_at;
        if (Now().kind != Kind::Near && Now().kind != Kind::Before)
            return node;
        const RequestToken token = Now();
        ++m_at;
        const RequestToken right = Now();
        NodePtr other = Operand();
        if (node->kind == Node::Kind::Not)
            Fail(Reason::NotBesideNear, token);
        if (other->kind == Node::Kind::Not)
            Fail(Reason::NotBesideNear, right);
        const auto kind = without                      ? Node::Kind::NotNear
                          : token.kind == Kind::Before ? Node::Kind::Before
                                                       : Node::Kind::Near;
        node = Join(kind, std::move(node), std::move(other), token.distance);
    }
}

NodePtr Parser::Operand() {
    if (Now().kind != Kind::Not)
        return Primary();
    ++m_at;
    if (++m_depth > kDeepest)
        Fail(Reason::TooLong, Now());
    NodePtr child = Operand();
    --m_depth;
    return Join(Node::Kind::Not, std::move(child), nullptr);
}

NodePtr Parser::Primary() {
    const RequestToken& token = Now();
    switch (token.kind) {
    case Kind::Open: {
        ++m_at;
        NodePtr node = Or();
        if (Now().kind != Kind::Close)
            Fail(Now().kind == Kind::End ? Reason::ParenthesisMissing : Reason::OperatorMissing,
                 Now().kind == Kind::End ? token : Now());
        ++m_at;
        return node;
    }
    case Kind::FirstWord:
    case Kind::LastWord:
        ++m_at;
        return Join(token.kind == Kind::FirstWord ? Node::Kind::FirstWord : Node::Kind::LastWord,
                    nullptr, nullptr);
    case Kind::Filter:
        ++m_at;
        return Filter(token);
    case Kind::Words:
    case Kind::Quoted:
        return IsContains() ? Contains() : Phrase();
    default:
        Fail(Reason::OperandMissing, token);
    }
}

NodePtr Parser::Contains() {
    auto node = std::make_unique<Node>();
    node->kind = Node::Kind::Contains;
    for (const char c : Now().text)
        node->name += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    m_at += 2;
    if (Now().kind == Kind::End)
        Fail(Reason::OperandMissing, Now());
    node->left = Primary();
    return node;
}

NodePtr Parser::Phrase() {
    auto node = std::make_unique<Node>();
    const RequestToken first = Now();
    while ((Now().kind == Kind::Words && !IsContains()) || Now().kind == Kind::Quoted) {
        const RequestToken& token = Now();
        // Operators and marks are plain words in quotes; patterns still work there.
        for (WordPattern& word : WordCutter(m_tokenizer, token.text, token.position).Cut())
            node->words.push_back(std::move(word));
        ++m_at;
    }
    if (node->words.empty() && Now().kind == Kind::End && m_at == 1)
        return node; // nothing but signs: finds nothing
    if (node->words.empty())
        Fail(Reason::OperandMissing, first);
    return node;
}

NodePtr Parser::Filter(const RequestToken& token) const {
    const auto quote = token.text.find('"');
    std::string what;
    for (const char c : token.text.substr(0, quote))
        if (c != ' ' && c != '\t')
            what += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    if (what != "name" && what != "excl")
        Fail(Reason::FilterMalformed, token);
    auto node = std::make_unique<Node>();
    node->kind = what == "name" ? Node::Kind::NameIs : Node::Kind::NameIsNot;
    const std::string pattern = token.text.substr(quote + 1, token.text.rfind('"') - quote - 1);
    node->name = platform::Capitals(QString::fromStdString(pattern)).toStdString();
    return node;
}

} // namespace

RequestError::RequestError(Reason why, std::size_t where, std::string piece)
    : std::runtime_error(Clause(why)), reason(why), position(where), token(std::move(piece)) {}

std::unique_ptr<RequestNode> ParseRequestText(std::string_view request, Tokenizer& tokenizer) {
    return Parser(request, tokenizer).Parse();
}

std::unique_ptr<RequestNode> ParseFileConditions(std::string_view conditions, Tokenizer& tokenizer) {
    return Parser(conditions, tokenizer).ParseConditions();
}

} // namespace engine
