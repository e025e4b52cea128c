// Tokens of the request language.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/RequestLexer.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace engine {
namespace {

using Kind = RequestToken::Kind;
using Reason = RequestError::Reason;

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

std::string Lower(std::string_view text) {
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

class Lexer {
  public:
    explicit Lexer(std::string_view request) : m_request(request) {}
    std::vector<RequestToken> Cut();

  private:
    std::size_t Position(std::size_t at) const {
        return 1 + static_cast<std::size_t>(
                       std::count_if(m_request.begin(), m_request.begin() + static_cast<std::ptrdiff_t>(at),
                                     [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
    }
    void Add(Kind kind, std::size_t begin, std::string text = {}, std::uint32_t distance = 0) {
        m_tokens.push_back({kind, std::move(text), distance, Position(begin)});
    }
    void TakeQuoted();
    void TakeWord();
    bool TakeNear(const std::string& lower, std::size_t begin);
    void TakeFilter(std::size_t begin);

    std::string_view m_request;
    std::size_t m_at = 0;
    std::vector<RequestToken> m_tokens;
};

std::vector<RequestToken> Lexer::Cut() {
    while (m_at < m_request.size()) {
        const char c = m_request[m_at];
        if (IsBlank(c))
            ++m_at;
        else if (c == '(' || c == ')')
            Add(c == '(' ? Kind::Open : Kind::Close, m_at++, std::string(1, c));
        else if (c == '"')
            TakeQuoted();
        else
            TakeWord();
    }
    Add(Kind::End, m_request.size());
    return std::move(m_tokens);
}

void Lexer::TakeQuoted() {
    const std::size_t begin = m_at;
    const std::size_t end = m_request.find('"', begin + 1);
    if (end == std::string_view::npos)
        throw RequestError(Reason::QuoteMissing, Position(begin), std::string(m_request.substr(begin)));
    Add(Kind::Quoted, begin, std::string(m_request.substr(begin + 1, end - begin - 1)));
    m_at = end + 1;
}

void Lexer::TakeWord() {
    const std::size_t begin = m_at;
    while (m_at < m_request.size() && !IsBlank(m_request[m_at]) && m_request[m_at] != '(' &&
           m_request[m_at] != ')' && m_request[m_at] != '"')
        ++m_at;
    std::string text(m_request.substr(begin, m_at - begin));
    const std::string lower = Lower(text);
    static constexpr std::pair<std::string_view, Kind> kNames[] = {
        {"and", Kind::And},           {"or", Kind::Or},
        {"not", Kind::Not},           {"contains", Kind::Contains},
        {"xfirstword", Kind::FirstWord}, {"xlastword", Kind::LastWord},
    };
    for (const auto& [name, kind] : kNames)
        if (lower == name)
            return Add(kind, begin, std::move(text));
    if (lower == "xfilter")
        return TakeFilter(begin);
    if (!TakeNear(lower, begin))
        Add(Kind::Words, begin, std::move(text));
}

bool Lexer::TakeNear(const std::string& lower, std::size_t begin) {
    const bool near = lower.rfind("w/", 0) == 0;
    if (!near && lower.rfind("pre/", 0) != 0)
        return false;
    const std::string_view number = std::string_view(lower).substr(near ? 2 : 4);
    std::uint32_t distance = 0;
    const auto [end, error] =
        std::from_chars(number.data(), number.data() + number.size(), distance);
    if (error != std::errc() || end != number.data() + number.size() || distance == 0)
        throw RequestError(Reason::NumberMissing, Position(begin), lower);
    Add(near ? Kind::Near : Kind::Before, begin, lower, distance);
    return true;
}

void Lexer::TakeFilter(std::size_t begin) {
    while (m_at < m_request.size() && IsBlank(m_request[m_at]))
        ++m_at;
    const auto fail = [&] {
        throw RequestError(Reason::FilterMalformed, Position(begin), "xfilter");
    };
    if (m_at >= m_request.size() || m_request[m_at] != '(')
        fail();
    const std::size_t open = m_request.find('"', m_at);
    const std::size_t close = open == std::string_view::npos ? open : m_request.find('"', open + 1);
    if (close == std::string_view::npos)
        fail();
    std::size_t end = close + 1;
    while (end < m_request.size() && IsBlank(m_request[end]))
        ++end;
    if (end >= m_request.size() || m_request[end] != ')')
        fail();
    Add(Kind::Filter, begin, std::string(m_request.substr(m_at + 1, end - m_at - 1)));
    m_at = end + 1;
}

} // namespace

std::vector<RequestToken> CutRequest(std::string_view request) { return Lexer(request).Cut(); }

} // namespace engine
