// What the sinks look at.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/fuzz/CheckedSinks.h"

#include "engine/readers/Charset.h"
#include "engine/readers/Limits.h"
#include "tests/fuzz/Target.h"

#include <algorithm>

namespace fuzz {

using engine::Block;

namespace {

std::uint64_t Sum(std::string_view bytes) {
    std::uint64_t sum = 0;
    for (const char c : bytes)
        sum += static_cast<unsigned char>(c);
    return sum;
}

} // namespace

void CheckedSink::Count() {
    if (++m_events == m_stopAt)
        throw engine::StopReading();
}

void CheckedSink::Touch(std::string_view bytes) {
    m_sum += Sum(bytes);
}

void CheckedSink::Field(std::string_view name, std::string_view value) {
    Touch(name);
    Touch(value);
    Count();
}

void CheckedSink::Text(std::string_view utf8) {
    Touch(utf8);
    Count();
}

void CheckedSink::Open(Block block, int level) {
    Require(block <= Block::Note, "no such block");
    Require(level >= 0, "a level below 0");
    Require(block != Block::Heading || level <= 6, "a heading below the sixth");
    m_open.push_back(block);
    Count();
}

void CheckedSink::Close(Block block) {
    Require(!m_open.empty(), "a close without an open");
    Require(m_open.back() == block, "a close of another block than the innermost");
    m_open.pop_back();
    Count();
}

void CheckedSink::Break() {
    Count();
}

void CheckedSink::Picture(std::string_view mime, std::string_view bytes, std::string_view text) {
    Touch(mime);
    Touch(bytes);
    Touch(text);
    Count();
}

void CheckedSink::Incomplete(std::string_view reason) {
    RequireReason(reason);
    Count();
}

void CheckedSink::RequireAllClosed() const {
    Require(m_open.empty(), "blocks are open at the end");
}

bool CheckedMembers::Wants(std::string_view path) {
    RequireSafePath(path);
    m_wanted = path;
    m_asked = true;
    Require(m_seen.insert(m_wanted).second, "two members of one path", path);
    // Some are passed over, by a rule that the fuzzer can learn.
    return path.find("skip") == std::string_view::npos;
}

void CheckedMembers::Receive(const engine::Member& member) {
    Require(m_asked, "a member that was not asked for");
    m_asked = false;
    Require(member.path == m_wanted, "another member than was asked for", member.path);
    if (!member.problem.empty()) {
        RequireReason(member.problem);
        Require(member.bytes.empty() || member.problemState == engine::ReadState::Partly,
                "content of a member that could not be read", member.problem);
    }
    m_sum += Sum(member.bytes) + Sum(member.displayName);
}

void RequireSafePath(std::string_view path) {
    Require(!path.empty(), "an empty path");
    Require(path.size() <= engine::kMaxMemberPath + 32, "a path too long", path);
    Require(engine::ValidUtf8Length(path) == path.size(), "a path that is no UTF-8", path);
    Require(std::none_of(path.begin(), path.end(),
                         [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }),
            "a path with control characters", path);
    for (std::size_t at = 0; at <= path.size();) {
        const std::size_t end = std::min(path.find('/', at), path.size());
        const std::string_view part = path.substr(at, end - at);
        Require(!part.empty() && part != "." && part != "..", "a path with a hostile part", path);
        at = end + 1;
    }
}

void RequireReason(std::string_view reason) {
    Require(!reason.empty(), "no reason is given");
}

} // namespace fuzz
