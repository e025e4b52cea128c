// Scanning of tags, comments and attributes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/HtmlScanner.h"

#include "engine/readers/HtmlEntities.h"

#include <algorithm>

namespace engine {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool IsBlank(char c) {
    return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f';
}
char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
}

bool EqualsNoCase(std::string_view text, std::string_view lower) {
    return text.size() == lower.size() && std::equal(text.begin(), text.end(), lower.begin(),
                                                     [](char a, char b) { return Lower(a) == b; });
}

// The end of a name that begins at at.
std::size_t NameEnd(std::string_view html, std::size_t at) {
    while (at < html.size() && !IsBlank(html[at]) && html[at] != '>' && html[at] != '/')
        ++at;
    return at;
}

} // namespace

HtmlScanner::What HtmlScanner::Next() {
    while (m_at < m_html.size()) {
        if (m_html[m_at] == '<' && m_at + 1 < m_html.size() && ReadMarkup()) {
            if (m_what == What::End) // passed over
                continue;
            return m_what;
        }
        // A "<" that begins no markup is text.
        const std::size_t from = m_at;
        m_at = std::min(m_html.find('<', m_at + 1), m_html.size());
        m_text = m_html.substr(from, m_at - from);
        return m_what = What::Text;
    }
    return m_what = What::End;
}

// Reads what begins with "<". false: it is text after all. m_what is End for what says nothing.
bool HtmlScanner::ReadMarkup() {
    const char next = m_html[m_at + 1];
    m_what = What::End;
    if (IsLetter(next)) {
        ReadName(m_at + 1);
        m_what = What::StartTag;
    } else if (next == '/') {
        if (m_at + 2 >= m_html.size())
            return false;
        if (!IsLetter(m_html[m_at + 2])) {
            SkipDeclaration();
            return true;
        }
        ReadName(m_at + 2);
        m_what = What::EndTag;
    } else if (next == '!') {
        constexpr std::string_view kData = "<![CDATA[";
        if (m_html.substr(m_at, 4) == "<!--") {
            SkipComment();
        } else if (m_html.substr(m_at, kData.size()) == kData) {
            const std::size_t from = m_at + kData.size();
            const std::size_t end = m_html.find("]]>", from);
            m_text = m_html.substr(from, end == kNone ? kNone : end - from);
            m_at = end == kNone ? m_html.size() : end + 3;
            m_what = What::Text;
        } else {
            SkipDeclaration();
        }
        return true;
    } else if (next == '?') {
        SkipDeclaration();
        return true;
    } else {
        return false;
    }
    const std::size_t end = TagEnd(m_at + 1);
    const std::string_view tag = m_html.substr(m_at, end - m_at);
    m_selfClosed = tag.ends_with('/');
    const std::size_t nameBegin = m_what == What::EndTag ? 2 : 1;
    m_attributes = tag.substr(std::min(tag.size(), NameEnd(tag, nameBegin)));
    if (end == m_html.size()) // the document ends within a tag
        m_what = What::End;
    m_at = std::min(end + 1, m_html.size());
    return true;
}

void HtmlScanner::ReadName(std::size_t at) {
    const std::size_t end = NameEnd(m_html, at);
    m_nameLength = std::min(end - at, m_name.size());
    std::transform(m_html.begin() + static_cast<std::ptrdiff_t>(at),
                   m_html.begin() + static_cast<std::ptrdiff_t>(at + m_nameLength), m_name.begin(),
                   Lower);
}

// The place of the ">" that ends a tag. Quotes hide it only where a value begins with one.
std::size_t HtmlScanner::TagEnd(std::size_t at) const {
    while (at < m_html.size() && m_html[at] != '>') {
        if (m_html[at++] != '=')
            continue;
        while (at < m_html.size() && IsBlank(m_html[at]))
            ++at;
        if (at < m_html.size() && (m_html[at] == '"' || m_html[at] == '\'')) {
            const std::size_t close = m_html.find(m_html[at], at + 1);
            at = close == kNone ? at + 1 : close + 1; // never closed: it is no quote
        }
    }
    return at;
}

void HtmlScanner::SkipComment() {
    const std::size_t end = m_noCommentEnd ? kNone : m_html.find("-->", m_at + 2);
    if (end != kNone) {
        m_at = end + 3;
        return;
    }
    m_noCommentEnd = true;
    SkipDeclaration();
}

void HtmlScanner::SkipDeclaration() {
    const std::size_t end = m_html.find('>', m_at);
    m_at = end == kNone ? m_html.size() : end + 1;
}

std::string_view HtmlScanner::RawText(bool toEnd) {
    const std::string_view name = Name();
    std::size_t close = m_noRawEnd && !toEnd ? kNone : m_html.find("</", m_at);
    for (; close != kNone; close = m_html.find("</", close + 2)) {
        const std::string_view after = m_html.substr(close + 2, name.size() + 1);
        const bool ends = after.size() <= name.size() || IsBlank(after.back()) ||
                          after.back() == '>' || after.back() == '/';
        if (ends && EqualsNoCase(after.substr(0, name.size()), name))
            break;
    }
    if (close == kNone) {
        if (!toEnd) {
            m_noRawEnd = true;
            return {};
        }
        close = m_html.size();
    }
    const std::string_view raw = m_html.substr(m_at, close - m_at);
    m_at = close;
    if (m_at < m_html.size())
        m_at = std::min(TagEnd(m_at) + 1, m_html.size());
    return raw;
}

std::string HtmlScanner::Attribute(std::string_view name) const {
    std::string_view rest = m_attributes;
    while (!rest.empty()) {
        while (!rest.empty() && (IsBlank(rest.front()) || rest.front() == '/'))
            rest.remove_prefix(1);
        std::size_t end = 0;
        while (end < rest.size() && rest[end] != '=' && !IsBlank(rest[end]) && rest[end] != '/')
            ++end;
        end = std::max<std::size_t>(end, rest.empty() ? 0 : 1);
        const std::string_view found = rest.substr(0, end);
        rest.remove_prefix(end);
        std::size_t sign = 0;
        while (sign < rest.size() && IsBlank(rest[sign]))
            ++sign;
        if (sign >= rest.size() || rest[sign] != '=')
            continue;
        rest.remove_prefix(sign + 1);
        while (!rest.empty() && IsBlank(rest.front()))
            rest.remove_prefix(1);
        std::string_view value;
        const bool quoted = !rest.empty() && (rest.front() == '"' || rest.front() == '\'') &&
                            rest.find(rest.front(), 1) != kNone;
        if (quoted) {
            value = rest.substr(1, rest.find(rest.front(), 1) - 1);
            rest.remove_prefix(value.size() + 2);
        } else {
            std::size_t length = 0;
            while (length < rest.size() && !IsBlank(rest[length]))
                ++length;
            value = rest.substr(0, length);
            rest.remove_prefix(length);
        }
        if (EqualsNoCase(found, name))
            return DecodeReferences(value);
    }
    return {};
}

} // namespace engine
