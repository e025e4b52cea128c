// The texts that PNG and GIF pictures carry in a form of their own.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/MediaTags.h"
#include "engine/readers/NameCharset.h"
#include "engine/readers/PdfXmp.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <utility>

namespace engine {

namespace {

using namespace std::string_view_literals;

constexpr auto kPng = "\x89PNG\r\n\x1A\n"sv;

std::uint32_t BigNumber(std::string_view bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
}

// The unpacked text, as much of it as the cap allows and the damage leaves.
std::string Inflated(std::string_view packed) {
    std::string text;
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        return text;
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    std::array<char, 16384> piece;
    int result = Z_OK;
    while (result == Z_OK && text.size() < kMaxMediaTagBytes) {
        stream.next_out = reinterpret_cast<Bytef*>(piece.data());
        stream.avail_out = static_cast<uInt>(piece.size());
        result = inflate(&stream, Z_NO_FLUSH);
        text.append(piece.data(), piece.size() - stream.avail_out);
    }
    inflateEnd(&stream);
    return text;
}

// Takes the piece before the next zero byte off text.
std::string_view TakeTerminated(std::string_view& text) {
    const std::size_t end = text.find('\0');
    const std::string_view piece = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return piece;
}

void AddPngText(std::string_view keyword, std::string_view text, bool isUtf8, MediaTags& tags) {
    static constexpr std::array<std::pair<std::string_view, MediaTag>, 11> kKeywords{
        {{"Title", MediaTag::Title},
         {"Author", MediaTag::Author},
         {"Description", MediaTag::Subject},
         {"Copyright", MediaTag::Copyright},
         {"Comment", MediaTag::Comments},
         {"Disclaimer", MediaTag::Comments},
         {"Warning", MediaTag::Comments},
         {"Source", MediaTag::Camera},
         {"Creation Time", MediaTag::Date},
         {"Keywords", MediaTag::Keywords},
         {"parameters", MediaTag::Comments}}}; // what a picture was generated from
    for (const auto& [name, tag] : kKeywords)
        if (name == keyword)
            tags.Add(tag, isUtf8 ? std::string(text) : NameCharset().Decode(text));
}

void ReadPngChunk(std::string_view type, std::string_view data, MediaTags& tags) {
    const std::string_view keyword = TakeTerminated(data);
    if (type == "tEXt") {
        AddPngText(keyword, data, false, tags);
    } else if (type == "zTXt" && !data.empty() && data[0] == 0) {
        AddPngText(keyword, Inflated(data.substr(1)), false, tags);
    } else if (type == "iTXt" && data.size() > 2) {
        const bool packed = data[0] == 1;
        data.remove_prefix(2);
        TakeTerminated(data); // the language
        TakeTerminated(data); // the keyword in it
        AddPngText(keyword, packed ? Inflated(data) : std::string(data), true, tags);
    }
}

void ReadPng(std::string_view rest, MediaTags& tags) {
    constexpr std::size_t kFrame = 12; // length, type, checksum
    rest.remove_prefix(kPng.size());
    while (rest.size() >= kFrame) {
        const std::size_t size = BigNumber(rest);
        if (size > rest.size() - kFrame)
            return;
        ReadPngChunk(rest.substr(4, 4), rest.substr(8, size), tags);
        rest.remove_prefix(size + kFrame);
    }
}

// Takes a chain of blocks, each with its length before it, off rest; text gets what they hold.
void TakeGifBlocks(std::string_view& rest, std::string* text) {
    while (!rest.empty()) {
        const std::size_t size = static_cast<unsigned char>(rest[0]);
        rest.remove_prefix(1);
        if (size == 0)
            return;
        if (text != nullptr && text->size() < kMaxMediaTagBytes)
            text->append(rest.substr(0, size));
        rest.remove_prefix(std::min(size, rest.size()));
    }
}

std::size_t GifColours(char flags) {
    const unsigned bits = static_cast<unsigned char>(flags);
    return (bits & 0x80) == 0 ? 0 : std::size_t{3} << ((bits & 7) + 1);
}

// A packet that stands as it is, then bytes that lead a reader of blocks to its end.
void AddXmp(std::string_view packet, MediaTags& tags) {
    packet = packet.substr(0, kMaxMediaTagBytes);
    const XmpProperties xmp = ReadXmp(packet.substr(0, packet.find("<?xpacket end")));
    tags.Add(MediaTag::Title, xmp.title);
    tags.Add(MediaTag::Author, xmp.author);
    tags.Add(MediaTag::Subject, xmp.subject);
    tags.Add(MediaTag::Keywords, xmp.keywords);
}

void ReadGif(std::string_view bytes, MediaTags& tags) {
    constexpr std::size_t kHeader = 13, kImage = 10;
    if (bytes.size() < kHeader)
        return;
    std::string_view rest = bytes.substr(std::min(bytes.size(), kHeader + GifColours(bytes[10])));
    while (rest.size() >= 2) {
        if (rest[0] == '!') {
            std::string text;
            const bool isComment = rest[1] == '\xFE';
            rest.remove_prefix(2);
            if (rest.starts_with("\x0BXMP DataXMP"))
                AddXmp(rest.substr(12), tags);
            TakeGifBlocks(rest, isComment ? &text : nullptr);
            tags.Add(MediaTag::Comments, NameCharset().Decode(text));
        } else if (rest[0] == ',' && rest.size() > kImage) {
            rest.remove_prefix(std::min(rest.size(), kImage + GifColours(rest[9]) + 1));
            TakeGifBlocks(rest, nullptr);
        } else {
            return;
        }
    }
}

} // namespace

void ReadPictureTexts(std::string_view bytes, MediaTags& tags) {
    if (bytes.starts_with(kPng))
        ReadPng(bytes, tags);
    else if (bytes.starts_with("GIF8"))
        ReadGif(bytes, tags);
}

} // namespace engine
