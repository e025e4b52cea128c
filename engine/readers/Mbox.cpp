// Reads mailbox files: every message as it stands in the file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/MailMime.h"
#include "engine/readers/MailSniff.h"
#include "engine/readers/Reader.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace engine {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

// The library's search is several times as fast as find; mailboxes have gigabytes.
std::size_t Search(std::string_view text, std::string_view what, std::size_t from) {
    if (from >= text.size())
        return kNone;
    const void* const found =
        ::memmem(text.data() + from, text.size() - from, what.data(), what.size());
    return found == nullptr
               ? kNone
               : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

std::string_view LineAt(std::string_view text, std::size_t at) {
    constexpr std::size_t kLongest = 2000; // no line that matters here is longer
    std::string_view line = text.substr(at, kLongest);
    line = line.substr(0, line.find('\n'));
    return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

std::size_t BehindLine(std::string_view text, std::size_t at) {
    const std::size_t end = text.find('\n', at);
    return end == kNone ? text.size() : end + 1;
}

// Whether the line before at is empty.
bool FollowsEmptyLine(std::string_view text, std::size_t at) {
    const std::string_view before = text.substr(0, at);
    return before.ends_with("\n\n") || before.ends_with("\n\r\n");
}

// Where the next separator begins behind from, or the end of text. An empty line belongs before it
// and a date into it; where a program has left out one of them (dated tells how the first one
// looks), the headers of the next message have to tell.
std::size_t NextSeparator(std::string_view text, std::size_t from, bool dated) {
    constexpr std::size_t kEnoughHeaders = 4096;
    while ((from = Search(text, "\nFrom ", from)) != kNone) {
        ++from;
        const bool apart = FollowsEmptyLine(text, from);
        const bool proper = dated && IsMailboxSeparator(LineAt(text, from));
        if ((apart && proper) ||
            ((dated ? proper : apart) && LooksLikeMail(text.substr(from, kEnoughHeaders))))
            return from;
    }
    return text.size();
}

// What stands between two separators, without the empty line that belongs to the second one.
std::string_view WithoutLastLine(std::string_view message) {
    if (message.ends_with("\r\n\r\n") || message == "\r\n")
        message.remove_suffix(2);
    else if (message.ends_with("\n\n") || message == "\n")
        message.remove_suffix(1);
    return message;
}

// The next line that was given a ">" because it would have been taken for a separator: where that
// mark stands.
std::size_t NextMark(std::string_view message, std::size_t from) {
    while ((from = Search(message, ">From ", from)) != kNone) {
        std::size_t line = from;
        while (line > 0 && message[line - 1] == '>')
            --line;
        if (line == 0 || message[line - 1] == '\n')
            return from;
        ++from;
    }
    return kNone;
}

// The message without those marks; storage keeps it where there were any.
std::string_view Unmarked(std::string_view message, std::string& storage) {
    std::size_t mark = NextMark(message, 0);
    if (mark == kNone || message.size() > kMaxMemberBytes)
        return message;
    storage.clear();
    std::size_t from = 0;
    for (; mark != kNone; mark = NextMark(message, from)) {
        storage += message.substr(from, mark - from);
        from = mark + 1;
    }
    storage += message.substr(from);
    return storage;
}

// The headers of a message, with the empty line behind them.
std::string_view HeadersOf(std::string_view message) {
    constexpr std::size_t kLongest = std::size_t{256} * 1024;
    message = message.substr(0, kLongest);
    for (std::size_t at = 0; at < message.size(); at = BehindLine(message, at))
        if (LineAt(message, at).empty())
            return message.substr(0, BehindLine(message, at));
    return message;
}

// Mail programs of one family leave a deleted message in place and mark it.
bool IsDeleted(std::string_view headers) {
    constexpr std::string_view kName = "X-Mozilla-Status:";
    constexpr unsigned kExpunged = 0x0008;
    for (std::size_t at = 0; at < headers.size(); at = BehindLine(headers, at)) {
        std::string_view line = LineAt(headers, at);
        if (!line.starts_with(kName))
            continue;
        line.remove_prefix(std::min(line.find_first_not_of(' ', kName.size()), line.size()));
        unsigned flags = 0;
        std::from_chars(line.data(), line.data() + line.size(), flags, 16);
        return (flags & kExpunged) != 0;
    }
    return false;
}

// Seconds since 1970 of the date in a separator; 0 where it is nonsense.
std::int64_t SeparatorTime(std::string_view separator) {
    const std::size_t sender = separator.find(' ');
    const std::size_t date = separator.find(' ', sender + 1);
    if (date == kNone)
        return 0;
    GDateTime* const time =
        g_mime_utils_header_decode_date(std::string(separator.substr(date + 1)).c_str());
    if (time == nullptr)
        return 0;
    const std::int64_t seconds = g_date_time_to_unix(time);
    g_date_time_unref(time);
    return seconds;
}

void Describe(std::string_view headers, std::string_view separator, Member& member) {
    if (const GOwner<GMimeMessage> message = ParseMessage(headers)) {
        member.displayName = HeaderText(GMIME_OBJECT(message.get()), "Subject");
        member.modified = MessageTime(message.get());
    }
    if (member.modified == 0)
        member.modified = SeparatorTime(separator);
}

} // namespace

void ReadMbox(const Source& source, MemberSink& members) {
    InitMime();
    const std::string_view bytes = source.bytes;
    std::size_t at = bytes.starts_with("From ") ? 0 : Search(bytes, "\nFrom ", 0);
    if (at == kNone)
        throw ReadError(ReadState::Damaged, "is no mailbox");
    at += bytes[at] == '\n' ? 1 : 0;
    const bool dated = IsMailboxSeparator(LineAt(bytes, at));
    std::string storage;
    // Deleted messages count too: the others keep their names when one is deleted.
    for (std::uint64_t number = 0; at < bytes.size(); ++number) {
        if (number == kMaxArchiveEntries)
            throw ReadError(ReadState::Partly,
                            "more than " + std::to_string(kMaxArchiveEntries) + " messages");
        const std::string_view separator = LineAt(bytes, at);
        const std::size_t begin = BehindLine(bytes, at);
        at = NextSeparator(bytes, begin, dated);
        const std::string_view message = WithoutLastLine(bytes.substr(begin, at - begin));
        Member member;
        member.path = std::to_string(number) + ".eml";
        if (!members.Wants(member.path))
            continue;
        const std::string_view headers = HeadersOf(message);
        if (IsDeleted(headers))
            continue;
        Describe(headers, separator, member);
        if (member.displayName.empty())
            member.displayName = "(" + std::to_string(number) + ")";
        member.bytes = Unmarked(message, storage);
        members.Receive(member);
    }
}

} // namespace engine
