// The protocol's frames, however the socket cuts them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "workers/Protocol.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <vector>

using namespace workers;

namespace {

void AppendPiece(std::string& stream, std::uint8_t type, const std::string& payload) {
    AppendHeader(stream, {FrameKind::Piece, type, kGreeting, payload});
    stream += payload;
}

// Feeds the stream in chunks of at most chunk bytes and gives the payloads found.
std::vector<std::string> Read(FrameReader& reader, std::string_view stream, std::size_t chunk) {
    std::vector<std::string> found;
    Frame frame;
    for (;;) {
        const auto cut = reader.Next(frame);
        if (cut == FrameReader::Cut::Frame) {
            found.emplace_back(frame.payload);
            continue;
        }
        if (cut == FrameReader::Cut::Broken)
            found.emplace_back("broken");
        if (cut == FrameReader::Cut::Broken || stream.empty())
            return found;
        const auto space = reader.Space();
        EXPECT_FALSE(space.empty());
        const std::size_t count = std::min({chunk, space.size(), stream.size()});
        std::memcpy(space.data(), stream.data(), count);
        reader.Added(count);
        stream.remove_prefix(count);
    }
}

} // namespace

TEST(FrameReaderTest, FindsFramesInAnyChunks) {
    // Around the sizes at which the buffer is moved, grown and given back.
    const std::vector<std::size_t> sizes = {0,       1,       7,       40'000, 262'144,   3,
                                            300'000, 262'136, 262'137, 0,      9'000'000, 12};
    std::string stream;
    std::vector<std::string> expected;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        expected.emplace_back(sizes[i], static_cast<char>('a' + i));
        AppendPiece(stream, 1, expected.back());
    }
    for (const std::size_t chunk : {std::size_t{61}, std::size_t{8'191}, std::size_t{1} << 30}) {
        FrameReader reader;
        for (int answer = 0; answer < 2; ++answer) {
            EXPECT_TRUE(Read(reader, stream, chunk) == expected) << chunk;
            EXPECT_TRUE(reader.Empty());
            reader.GiveBack();
            EXPECT_LT(reader.Space().size(), std::size_t{1} << 20);
        }
    }
}

TEST(FrameReaderTest, TrustsNoHeader) {
    const auto announce = [](std::uint32_t length) {
        std::string header;
        AppendPiece(header, 0, {});
        std::memcpy(header.data(), &length, sizeof length);
        return header;
    };
    const std::string tooLong = announce(kLargestFrame + 1);
    std::string badKind;
    AppendPiece(badKind, 0, {});
    badKind[4] = 77;
    for (const std::string& stream : {tooLong, badKind, std::string("GET / HTTP/1.0\r\n")}) {
        FrameReader reader;
        EXPECT_EQ(Read(reader, stream, 5), std::vector<std::string>{"broken"});
    }
    FrameReader reader;
    EXPECT_TRUE(Read(reader, announce(kLargestFrame), 100).empty());
    EXPECT_LT(reader.Space().size(), std::size_t{1} << 20) << "memory for bytes that never came";
}

TEST(MessagesTest, CutShortAreNotAccepted) {
    const std::string hello = Encode(Hello{1, -3, {{"name", "value"}, {"empty", ""}}});
    Hello decoded;
    ASSERT_TRUE(Decode(hello, decoded));
    EXPECT_EQ(decoded.niceness, -3);
    EXPECT_EQ(decoded.settings,
              (std::map<std::string, std::string>{{"name", "value"}, {"empty", ""}}));
    for (std::size_t missing = 1; missing <= 20; ++missing) { // all within the last setting
        Hello cut;
        EXPECT_FALSE(Decode(std::string_view(hello).substr(0, hello.size() - missing), cut));
    }
    Job job;
    EXPECT_FALSE(Decode(Frame{FrameKind::Job, 0, 1, "\xff\xff\xff\xff\xff\xff\xff\xff role"}, job));
    End end;
    EXPECT_FALSE(Decode("\x01", end));
    EXPECT_FALSE(Decode(std::string_view("\x09\x00", 2), end));
    EXPECT_THROW(static_cast<void>(EncodeFrame({1, "r", std::string(kLargestFrame, 'x')})),
                 std::length_error);
}
