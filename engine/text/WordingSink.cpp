// Gathers, cuts and numbers.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/text/WordingSink.h"

#include <algorithm>
#include <cstring>

namespace engine {
namespace {

constexpr std::size_t kSlice = std::size_t{64} << 10;
constexpr std::size_t kLongestPending = std::size_t{1} << 20;

bool PlainAscii(std::string_view text) {
    std::size_t i = 0;
    std::uint64_t bits = 0;
    bool nul = false;
    for (; i + 8 <= text.size(); i += 8) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, text.data() + i, 8);
        bits |= eight;
        nul |= ((eight - 0x0101010101010101U) & ~eight & 0x8080808080808080U) != 0;
    }
    for (; i < text.size(); ++i) {
        bits |= static_cast<unsigned char>(text[i]);
        nul |= text[i] == '\0';
    }
    return (bits & 0x8080808080808080U) == 0 && !nul;
}

} // namespace

std::string_view WellFormed(std::string_view text, std::string& buffer) {
    if (PlainAscii(text))
        return text;
    bool good = true;
    for (std::size_t at = 0; at < text.size() && good;) {
        if (static_cast<signed char>(text[at]) > 0) {
            ++at;
            continue;
        }
        const std::size_t before = at;
        const char32_t c = NextCodePoint(text, at);
        good = c != 0 && (c != 0xFFFD || at - before == 3);
    }
    if (good)
        return text;
    buffer.clear();
    for (std::size_t at = 0; at < text.size();) {
        const char32_t c = NextCodePoint(text, at);
        AppendUtf8(buffer, c == 0 ? U' ' : c);
    }
    return buffer;
}

WordingSink::WordingSink(Tokenizer& tokenizer, WordRule rule)
    : m_tokenizer(tokenizer), m_rule(rule) {}

void WordingSink::Deliver(std::string_view text) {
    if (text.empty())
        return;
    text = WellFormed(text, m_clean);
    const std::vector<Word>& words = m_tokenizer.Split(text, m_rule);
    const std::uint64_t first = m_words + 1;
    m_words += static_cast<std::uint64_t>(
        std::count_if(words.begin(), words.end(), [](const Word& word) { return word.advances; }));
    OnText(text, words, first);
}

void WordingSink::Flush() {
    // Deliver may throw (a cap); what it was given must not come again.
    std::string pending;
    pending.swap(m_pending);
    Deliver(pending);
    pending.clear();
    pending.swap(m_pending);
}

void WordingSink::Text(std::string_view utf8) {
    // Long texts are cut where they stand, without a copy.
    while (m_pending.empty() && utf8.size() >= 2 * kSlice) {
        const std::size_t cut = m_tokenizer.LastCut(utf8.substr(0, kSlice), m_rule);
        if (cut == 0)
            break;
        Deliver(utf8.substr(0, cut));
        utf8.remove_prefix(cut);
    }
    while (!utf8.empty()) {
        const std::size_t take = std::min(utf8.size(), kSlice);
        m_pending.append(utf8.substr(0, take));
        utf8.remove_prefix(take);
        if (m_pending.size() < 2 * kSlice)
            continue;
        if (const std::size_t cut = m_tokenizer.LastCut(m_pending, m_rule); cut != 0) {
            const std::string rest = m_pending.substr(cut);
            m_pending.resize(cut);
            Flush();
            m_pending = rest;
        } else if (m_pending.size() > kLongestPending) {
            // No word of a language is that long: it is cut, and the cut is a break in the
            // text, so that the stored text gives the same words again.
            while (!m_pending.empty() && (static_cast<unsigned char>(m_pending.back()) & 0xC0) == 0x80)
                m_pending.pop_back();
            Flush();
            OnBreak();
        }
    }
}

void WordingSink::Open(Block block, int level) {
    Flush();
    OnOpen(block, level);
}

void WordingSink::Close(Block block) {
    Flush();
    OnClose(block);
}

void WordingSink::Break() {
    Flush();
    OnBreak();
}

void WordingSink::Picture(std::string_view mime, std::string_view bytes,
                          std::string_view alternativeText) {
    Flush();
    OnPicture(mime, bytes, alternativeText);
}

void WordingSink::Field(std::string_view name, std::string_view value) {
    if (value.find_first_not_of(" \t\r\n") == std::string_view::npos)
        return;
    Flush();
    OnFieldBegin(name);
    Text(value);
    Flush();
    OnFieldEnd(name, value);
}

void WordingSink::Finish() { Flush(); }

} // namespace engine
