// The texts in AVI films, AIFF and AU sound.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/MediaBytes.h"
#include "engine/readers/MediaTags.h"
#include "engine/readers/NameCharset.h"

#include <algorithm>
#include <array>
#include <string>

namespace engine {

namespace {

struct Name {
    std::string_view name;
    MediaTag tag;
};

constexpr std::array kNames{
    Name{"INAM", MediaTag::Title},
    Name{"ISBJ", MediaTag::Subject},
    Name{"IART", MediaTag::Author},
    Name{"ISTR", MediaTag::Author},
    Name{"IENG", MediaTag::Author},
    Name{"IKEY", MediaTag::Keywords},
    Name{"ICMT", MediaTag::Comments},
    Name{"IPRD", MediaTag::Album},
    Name{"IGNR", MediaTag::Genre},
    Name{"ICOP", MediaTag::Copyright},
    Name{"ICRD", MediaTag::Date},
    Name{"IMUS", MediaTag::Composer},
    Name{"IARL", MediaTag::Place},
    Name{"strn", MediaTag::Subject},
    // The last four are of AIFF.
    Name{"NAME", MediaTag::Title},
    Name{"AUTH", MediaTag::Author},
    Name{"(c) ", MediaTag::Copyright},
    Name{"ANNO", MediaTag::Comments},
};

enum class ByteOrder { Little, Big };

std::uint64_t NumberAt(std::string_view bytes, std::size_t at, ByteOrder order) {
    const auto number = static_cast<std::uint32_t>(BigEndianAt(bytes, at, 4));
    return order == ByteOrder::Big ? number : __builtin_bswap32(number);
}

std::string TextOf(std::string_view bytes) {
    bytes = bytes.substr(0, kMaxMediaTagBytes);
    return NameCharset().Decode(bytes.substr(0, bytes.find('\0')));
}

// Chunks with a name and a size; lists have the name of what they list before it. The list of
// pictures and sounds is passed by.
void WalkChunks(std::string_view bytes, ByteOrder order, int depth, int& chunks, MediaTags& tags) {
    constexpr std::size_t kHeader = 8, kListName = 4;
    constexpr int kMaxDepth = 8;
    while (bytes.size() >= kHeader && depth < kMaxDepth && ++chunks < kMaxMediaElements) {
        const std::string_view name = bytes.substr(0, 4);
        const std::string_view content = Piece(bytes, kHeader, NumberAt(bytes, 4, order));
        if ((name == "RIFF" || name == "LIST" || name == "FORM") && content.size() >= kListName &&
            !content.starts_with("movi"))
            WalkChunks(content.substr(kListName), order, depth + 1, chunks, tags);
        for (const Name& known : kNames)
            if (known.name == name)
                tags.Add(known.tag, TextOf(content));
        const std::size_t size = kHeader + content.size() + content.size() % 2;
        bytes.remove_prefix(std::min(bytes.size(), size));
    }
}

} // namespace

void ReadRiffTags(std::string_view bytes, MediaTags& tags) {
    int chunks = 0;
    WalkChunks(bytes, bytes.starts_with("FORM") ? ByteOrder::Big : ByteOrder::Little, 0, chunks,
               tags);
}

void ReadAuTags(std::string_view bytes, MediaTags& tags) {
    constexpr std::uint64_t kHeader = 24; // then a text of any length, then the sound
    const std::uint64_t sound = BigEndianAt(bytes, 4, 4);
    if (sound > kHeader)
        tags.Add(MediaTag::Comments, TextOf(Piece(bytes, kHeader, sound - kHeader)));
}

} // namespace engine
