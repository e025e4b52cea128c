// Tells mail from other text by its headers.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/MailSniff.h"

#include <algorithm>
#include <array>
#include <string>

namespace engine {

namespace {

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

bool EqualsBlind(std::string_view a, std::string_view lower) {
    return a.size() == lower.size() && std::equal(a.begin(), a.end(), lower.begin(),
                                                  [](char x, char y) { return Lower(x) == y; });
}

// Headers that only mail has weigh 2, those that a memo or a program's output may have too weigh 1.
struct Known {
    std::string_view name;
    int weight;
};
constexpr std::array<Known, 23> kKnown = {{
    {"received", 2},
    {"return-path", 2},
    {"message-id", 2},
    {"delivered-to", 2},
    {"mime-version", 2},
    {"x-mailer", 2},
    {"in-reply-to", 2},
    {"references", 2},
    {"list-id", 2},
    {"dkim-signature", 2},
    {"envelope-to", 2},
    {"x-spam-status", 2},
    {"x-original-to", 2},
    {"content-transfer-encoding", 2},
    {"from", 1},
    {"to", 1},
    {"cc", 1},
    {"bcc", 1},
    {"subject", 1},
    {"date", 1},
    {"reply-to", 1},
    {"sender", 1},
    {"content-type", 1},
}};

// What has been met of them; each counts once.
struct Met {
    std::array<bool, kKnown.size()> names{};
    int weight = 0;
    bool mailOnly = false; // something that a memo has not, or a sender
    void Header(std::string_view name, std::string_view value) {
        for (std::size_t i = 0; i < kKnown.size(); ++i) {
            if (names[i] || !EqualsBlind(name, kKnown[i].name))
                continue;
            names[i] = true;
            weight += kKnown[i].weight;
            mailOnly = mailOnly || kKnown[i].weight > 1 || kKnown[i].name == "from";
            if (kKnown[i].name == "content-type" &&
                value.find("multipart/") != std::string_view::npos)
                weight += 2;
        }
    }
};

// The line that bytes begin with, without its end; bytes goes on behind it.
std::string_view TakeLine(std::string_view& bytes) {
    const std::size_t end = bytes.find('\n');
    std::string_view line = bytes.substr(0, end);
    bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

bool IsHeaderName(std::string_view name) {
    return !name.empty() && name.size() <= 76 &&
           std::all_of(name.begin(), name.end(), [](char c) { return c > ' ' && c < 0x7F; });
}

// Whether bytes begin with a block of headers, up to an empty line or the end of what is there.
bool AreHeaders(std::string_view bytes, bool namedAsMail) {
    constexpr int kMaxLines = 300;
    constexpr int kMaxBroken = 2; // lines that are no headers, which mail programs pass over
    constexpr int kEnough = 3;
    Met met;
    int broken = 0;
    for (int i = 0; i < kMaxLines && !bytes.empty(); ++i) {
        const std::string_view line = TakeLine(bytes);
        if (line.empty())
            break;
        const bool folded = line.front() == ' ' || line.front() == '\t';
        if (folded && i > 0)
            continue;
        const std::size_t colon = line.find(':');
        std::string_view name = line.substr(0, colon);
        while (name.ends_with(' ') || name.ends_with('\t'))
            name.remove_suffix(1);
        if (folded || colon == std::string_view::npos || !IsHeaderName(name)) {
            if (i == 0 || ++broken > kMaxBroken)
                break;
            continue;
        }
        met.Header(name, line.substr(colon + 1));
    }
    return namedAsMail ? met.weight > 0 : met.mailOnly && met.weight >= kEnough;
}

std::string_view SkipMark(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    while (bytes.starts_with('\n') || bytes.starts_with('\r'))
        bytes.remove_prefix(1);
    return bytes;
}

} // namespace

bool LooksLikeMail(std::string_view bytes, bool namedAsMail) {
    bytes = SkipMark(bytes);
    if (bytes.starts_with("From ") || bytes.starts_with(">From "))
        TakeLine(bytes);
    return AreHeaders(bytes, namedAsMail);
}

bool IsMailboxSeparator(std::string_view line) {
    constexpr std::size_t kLongest = 1000;
    constexpr std::string_view kMonths = "janfebmaraprmayjunjulaugsepoctnovdec";
    if (!line.starts_with("From ") || line.size() > kLongest)
        return false;
    bool month = false, time = false, year = false;
    line.remove_prefix(5);
    for (bool sender = true; !line.empty(); sender = false) {
        const std::size_t end = std::min(line.find(' '), line.size());
        std::string word(line.substr(0, end));
        line.remove_prefix(std::min(end + 1, line.size()));
        std::transform(word.begin(), word.end(), word.begin(), Lower);
        const auto isDigit = [&word](std::size_t i) {
            return i < word.size() && word[i] >= '0' && word[i] <= '9';
        };
        if (sender)
            continue;
        const std::size_t known = word.size() == 3 ? kMonths.find(word) : std::string_view::npos;
        month = month || (known != std::string_view::npos && known % 3 == 0);
        time = time || ((word.size() == 5 || word.size() == 8) && isDigit(0) && isDigit(1) &&
                        word[2] == ':' && isDigit(3) && isDigit(4));
        year = year || (word.size() == 4 && (word.starts_with("19") || word.starts_with("20")) &&
                        isDigit(2) && isDigit(3));
    }
    return month && time && year;
}

bool LooksLikeMailbox(std::string_view bytes, bool namedAsMailbox) {
    bytes = SkipMark(bytes);
    if (!bytes.starts_with("From "))
        return false;
    const bool separated = IsMailboxSeparator(TakeLine(bytes));
    if (namedAsMailbox && separated)
        return true;
    if (!AreHeaders(bytes, false))
        return false;
    // Among the lines of a very long message one may look like a beginning by chance.
    constexpr int kMostTries = 1000;
    std::size_t at = 0;
    for (int i = 0; i < kMostTries; ++i, ++at) {
        at = bytes.find("\nFrom ", at);
        if (at == std::string_view::npos)
            return false;
        std::string_view rest = bytes.substr(at + 1);
        const std::string_view line = TakeLine(rest);
        if (separated ? IsMailboxSeparator(line) : AreHeaders(rest, false))
            return true;
    }
    return false;
}

bool LooksLikeWebArchive(std::string_view bytes, bool namedAsWebArchive) {
    constexpr std::size_t kHead = std::size_t{16} * 1024;
    constexpr int kMaxLines = 100;
    constexpr std::array<std::string_view, 5> kMailOnly = {"to", "cc", "received", "return-path",
                                                           "delivered-to"};
    bytes = SkipMark(bytes.substr(0, kHead));
    bool mime = false, page = false, saved = namedAsWebArchive;
    std::string name, value;
    const auto header = [&] { // answers whether it makes a mail of it
        const auto has = [&value](std::string_view what) {
            return value.find(what) != std::string::npos;
        };
        const bool from = name == "from";
        mime = mime || name == "mime-version";
        page = page || (name == "content-type" && (has("multipart/related") || has("text/html") ||
                                                   has("multipart/alternative")));
        saved = saved || name == "content-location" || name == "snapshot-content-location" ||
                (from && has("saved by"));
        return (from && !has("saved by")) ||
               std::find(kMailOnly.begin(), kMailOnly.end(), name) != kMailOnly.end();
    };
    for (int i = 0; i < kMaxLines && !bytes.empty(); ++i) {
        const std::string_view line = TakeLine(bytes);
        const bool folded = line.starts_with(' ') || line.starts_with('\t');
        if (!folded && header())
            return false;
        if (line.empty())
            break;
        const std::size_t colon = line.find(':');
        if (folded) {
            value += line;
        } else if (colon != std::string_view::npos && IsHeaderName(line.substr(0, colon))) {
            name = line.substr(0, colon);
            value = line.substr(colon + 1);
        } else {
            return false;
        }
        std::transform(name.begin(), name.end(), name.begin(), Lower);
        std::transform(value.begin(), value.end(), value.begin(), Lower);
    }
    // Word processors tell the address only of the parts.
    return mime && page && (saved || bytes.find("\nContent-Location:") != std::string_view::npos);
}

} // namespace engine
