// Where readers put what they read, in reading order.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace engine {

// Parts of a page of text. Each one separates words; they nest, and every Open has its Close.
enum class Block : std::uint8_t {
    Paragraph,
    Heading, // level 1 to 6
    List,    // level 0 bullets, 1 numbers
    Item,
    Table,
    Row,
    Cell,
    Preformatted, // line breaks and blanks count
    Quote,
    Page, // page, slide or sheet; level is its number from 1, or 0 where unknown
    Note, // foot note, end note, comment, speaker notes
};

// How far a document could be read.
enum class ReadState : std::uint8_t {
    Read,
    Partly,    // something is missing: a cap was reached, a part is damaged
    Encrypted, // needs a password
    Damaged,   // not what it says it is, or broken
    Unknown,   // no reader for this kind; indexed by name
    NameOnly,  // a picture, a sound, a program: nothing to read; indexed by name
    Failed,    // reader crashed, hung or reached its memory cap
};

// Receives one document. Text is UTF-8; ill-formed sequences are replaced by the sink.
// Calls may throw StopReading (a cap was reached); readers let it pass.
class DocumentSink {
  public:
    virtual ~DocumentSink() = default;

    // A property: name is one of "title", "author", "subject", "keywords", "comments" or a
    // document's own, in small letters. Empty values are ignored.
    virtual void Field(std::string_view name, std::string_view value) = 0;
    // Running text inside the innermost block; pieces join without a gap.
    virtual void Text(std::string_view utf8) = 0;
    virtual void Open(Block block, int level = 0) = 0;
    virtual void Close(Block block) = 0;
    // A line break inside a block.
    virtual void Break() = 0;
    // Whether Picture is worth calling: only when a page is rendered. What describes the picture
    // comes as Text too, so that words count the same whether pictures are wanted or not.
    [[nodiscard]] virtual bool WantsPictures() const { return false; }
    virtual void Picture(std::string_view /*mime*/, std::string_view /*bytes*/,
                         std::string_view /*alternativeText*/) {}
    // The document could only be read in part; reason is a short English clause without a
    // full stop, such as "3 of 10 pages are damaged". May be called several times.
    virtual void Incomplete(std::string_view reason) = 0;
};

// A member of a container, as its reader meets it.
struct Member {
    std::string path;          // path inside the container, with "/" as it stands there
    std::string displayName;   // what a person sees; empty: the last part of path
    std::int64_t modified = 0; // seconds since 1970; 0 unknown
    std::string_view bytes;    // unpacked content
    bool cut = false;          // a cap ended the unpacking early
    // Why it could not be unpacked, else empty. bytes is then empty too; with Partly it holds what
    // came before the damage.
    std::string problem;
    ReadState problemState = ReadState::Damaged;
};

// Receives the members of one container. Nested containers are opened by the receiver.
class MemberSink {
  public:
    virtual ~MemberSink() = default;
    // Asked before a member is unpacked: false skips it (another one is wanted).
    [[nodiscard]] virtual bool Wants(std::string_view path) = 0;
    virtual void Receive(const Member& member) = 0;
};

} // namespace engine
