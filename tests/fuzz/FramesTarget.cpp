// What a worker answers is not trusted: the program takes any bytes from its socket.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/StoredText.h"
#include "engine/readers/Frames.h"
#include "tests/fuzz/Target.h"
#include "workers/Protocol.h"

#include <algorithm>
#include <cstring>

namespace fuzz {
namespace {

// What is unpacked packs to bytes that say the same.
template <class Unpack> void Again(std::string_view payload, Unpack unpack) {
    try {
        const std::string packed = engine::Pack(unpack(payload));
        Require(engine::Pack(unpack(packed)) == packed, "packing changes what is packed");
    } catch (const std::runtime_error& error) {
        Require(error.what()[0] != '\0', "an error without words");
    }
}

void TakePiece(const workers::Frame& frame) {
    switch (static_cast<engine::Frame>(frame.type)) {
    case engine::Frame::Begin:
        return Again(frame.payload, engine::UnpackHead);
    case engine::Frame::End:
        return Again(frame.payload, engine::UnpackEnd);
    case engine::Frame::Chunk:
        Again(frame.payload, engine::UnpackChunk);
        try {
            const engine::TextChunk chunk = engine::UnpackChunk(frame.payload);
            const std::string text = engine::Decompress(chunk.text, chunk.plainLength);
            Require(text.size() == chunk.plainLength, "a text of another length");
        } catch (const std::runtime_error& error) {
            Require(error.what()[0] != '\0', "an error without words");
        }
        return;
    case engine::Frame::Html:
        return;
    }
}

void TakeFrame(const workers::Frame& frame) {
    workers::Job job;
    workers::Hello hello;
    workers::End end;
    if (workers::Decode(frame, job))
        Require(job.role.size() + job.request.size() <= frame.payload.size(),
                "a job out of nothing");
    if (workers::Decode(frame.payload, hello)) {
        workers::Hello again;
        Require(workers::Decode(workers::Encode(hello), again) && again.settings == hello.settings,
                "settings change on the way");
    }
    if (workers::Decode(frame.payload, end))
        Require(end.message.size() <= frame.payload.size(), "a message out of nothing");
    if (frame.kind == workers::FrameKind::Piece)
        TakePiece(frame);
}

} // namespace

void FuzzFrames(const Target&, std::string_view input) {
    if (input.empty())
        return;
    const std::size_t step =
        1 + static_cast<unsigned char>(input.front()); // bytes that come at once
    input.remove_prefix(1);
    workers::FrameReader reader;
    for (;;) {
        workers::Frame frame;
        const auto cut = reader.Next(frame);
        if (cut == workers::FrameReader::Cut::Broken)
            return;
        if (cut == workers::FrameReader::Cut::Frame) {
            TakeFrame(frame);
            continue;
        }
        reader.GiveBack();
        if (input.empty())
            return;
        const std::span<char> space = reader.Space();
        Require(!space.empty(), "no room for the next bytes");
        const std::size_t take = std::min({step, input.size(), space.size()});
        std::memcpy(space.data(), input.data(), take);
        reader.Added(take);
        input.remove_prefix(take);
    }
}

} // namespace fuzz
