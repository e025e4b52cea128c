// Tags of Matroska and WebM films: elements within elements, each with its number and its size.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/MediaBytes.h"
#include "engine/readers/MediaTags.h"
#include "engine/readers/NameCharset.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

namespace engine {

namespace {

// Numbers of the elements, with the marks of their length as they stand in the file.
enum Element : std::uint64_t {
    kSegment = 0x18538067,
    kInfo = 0x1549A966,
    kTitle = 0x7BA9,
    kTracks = 0x1654AE6B,
    kTrackEntry = 0xAE,
    kTrackName = 0x536E,
    kChapters = 0x1043A770,
    kEdition = 0x45B9,
    kChapter = 0xB6,
    kChapterDisplay = 0x80,
    kChapterText = 0x85,
    kTags = 0x1254C367,
    kTag = 0x7373,
    kSimpleTag = 0x67C8,
    kTagName = 0x45A3,
    kTagText = 0x4487,
};

struct Name {
    std::string_view name;
    MediaTag tag;
};

constexpr std::array kNames{
    Name{"TITLE", MediaTag::Title},
    Name{"SUBTITLE", MediaTag::Subject},
    Name{"DESCRIPTION", MediaTag::Subject},
    Name{"SYNOPSIS", MediaTag::Subject},
    Name{"SUMMARY", MediaTag::Subject},
    Name{"SUBJECT", MediaTag::Subject},
    Name{"ARTIST", MediaTag::Author},
    Name{"DIRECTOR", MediaTag::Author},
    Name{"ACTOR", MediaTag::Author},
    Name{"WRITTEN_BY", MediaTag::Author},
    Name{"PRODUCER", MediaTag::Author},
    Name{"AUTHOR", MediaTag::Author},
    Name{"LEAD_PERFORMER", MediaTag::Author},
    Name{"COMPOSER", MediaTag::Composer},
    Name{"ALBUM", MediaTag::Album},
    Name{"GENRE", MediaTag::Genre},
    Name{"KEYWORDS", MediaTag::Keywords},
    Name{"COMMENT", MediaTag::Comments},
    Name{"COPYRIGHT", MediaTag::Copyright},
    Name{"DATE_RELEASED", MediaTag::Date},
    Name{"DATE_RECORDED", MediaTag::Date},
    Name{"DATE", MediaTag::Date},
    Name{"RECORDING_LOCATION", MediaTag::Place},
    Name{"LYRICS", MediaTag::Lyrics},
};

class MatroskaWalk {
  public:
    explicit MatroskaWalk(MediaTags& tags) : m_tags(tags) {}

    void Walk(std::string_view bytes, int depth) {
        constexpr int kMaxDepth = 16;
        std::uint64_t id = 0;
        std::string_view content;
        std::string tagName;
        while (depth < kMaxDepth && ++m_elements < kMaxMediaElements && Next(bytes, id, content)) {
            switch (id) {
            case kSegment:
            case kInfo:
            case kTracks:
            case kTrackEntry:
            case kChapters:
            case kEdition:
            case kChapter:
            case kChapterDisplay:
            case kTags:
            case kTag:
            case kSimpleTag:
                Walk(content, depth + 1);
                break;
            case kTitle:
                Add(MediaTag::Title, content);
                break;
            case kTrackName:
                Add(MediaTag::Subject, content);
                break;
            case kChapterText:
                Add(MediaTag::Chapter, content);
                break;
            case kTagName:
                tagName = content.substr(0, content.find('\0'));
                break;
            case kTagText:
                AddTag(tagName, content);
                break;
            default: // the film itself and what helps to play it
                break;
            }
        }
    }

  private:
    // A number whose first byte tells its length by its leading zero bits; 0 length: none.
    static std::size_t ReadNumber(std::string_view bytes, bool keepMark, std::uint64_t& value) {
        if (bytes.empty() || bytes[0] == '\0')
            return 0;
        const auto first = static_cast<unsigned char>(bytes[0]);
        std::size_t length = 1;
        while ((first & (0x80U >> (length - 1))) == 0)
            ++length;
        if (length > bytes.size())
            return 0;
        value = BigEndianAt(bytes, 0, length);
        if (!keepMark)
            value &= (std::uint64_t{1} << (7 * length)) - 1;
        return length;
    }

    // Takes the next element off bytes.
    static bool Next(std::string_view& bytes, std::uint64_t& id, std::string_view& content) {
        const std::size_t idLength = ReadNumber(bytes, true, id);
        std::uint64_t size = 0;
        const std::size_t sizeLength =
            idLength == 0 ? 0 : ReadNumber(bytes.substr(idLength), false, size);
        if (sizeLength == 0)
            return false;
        bytes.remove_prefix(idLength + sizeLength);
        // All ones: written while it was not known. What is inside is then met next.
        const bool isUnknown = size == (std::uint64_t{1} << (7 * sizeLength)) - 1;
        content = isUnknown ? std::string_view() : Piece(bytes, 0, size);
        bytes.remove_prefix(content.size());
        return true;
    }

    void AddTag(std::string name, std::string_view text) {
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        for (const Name& known : kNames)
            if (known.name == name)
                Add(known.tag, text);
    }

    void Add(MediaTag tag, std::string_view text) {
        text = text.substr(0, kMaxMediaTagBytes);
        m_tags.Add(tag, NameCharset().Decode(text.substr(0, text.find('\0'))));
    }

    MediaTags& m_tags;
    int m_elements = 0;
};

} // namespace

void ReadMatroskaTags(std::string_view bytes, MediaTags& tags) {
    MatroskaWalk(tags).Walk(bytes, 0);
}

} // namespace engine
