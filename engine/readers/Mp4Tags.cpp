// Tags of MP4 and QuickTime films and sound: boxes within boxes, each with its size and a name of
// four letters. Sizes lie in hostile files: a box never reaches out of the one around it, and both
// depth and number are bounded.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Charset.h"
#include "engine/readers/Limits.h"
#include "engine/readers/MediaBytes.h"
#include "engine/readers/MediaTags.h"
#include "engine/readers/NameCharset.h"
#include "engine/readers/PdfXmp.h"

#include <array>
#include <vector>

#include <id3v1genres.h>

namespace engine {

namespace {

using namespace std::string_view_literals;

struct Name {
    std::string_view name;
    MediaTag tag;
};

constexpr std::array kItems{
    Name{"\xA9nam", MediaTag::Title},
    Name{"tvsh", MediaTag::Title},
    Name{"tven", MediaTag::Subject},
    Name{"desc", MediaTag::Subject},
    Name{"ldes", MediaTag::Subject},
    Name{"sdes", MediaTag::Subject},
    Name{"\xA9"
         "des",
         MediaTag::Subject},
    Name{"\xA9grp", MediaTag::Subject},
    Name{"\xA9inf", MediaTag::Subject},
    Name{"\xA9"
         "ART",
         MediaTag::Author},
    Name{"aART", MediaTag::Author},
    Name{"\xA9"
         "aut",
         MediaTag::Author},
    Name{"\xA9"
         "dir",
         MediaTag::Author},
    Name{"\xA9prd", MediaTag::Author},
    Name{"\xA9prf", MediaTag::Author},
    Name{"\xA9wrt", MediaTag::Composer},
    Name{"\xA9"
         "alb",
         MediaTag::Album},
    Name{"\xA9gen", MediaTag::Genre},
    Name{"catg", MediaTag::Genre},
    Name{"keyw", MediaTag::Keywords},
    Name{"\xA9key", MediaTag::Keywords},
    Name{"\xA9"
         "cmt",
         MediaTag::Comments},
    Name{"cprt", MediaTag::Copyright},
    Name{"\xA9"
         "cpy",
         MediaTag::Copyright},
    Name{"\xA9"
         "day",
         MediaTag::Date},
    Name{"\xA9xyz", MediaTag::Position},
    Name{"\xA9lyr", MediaTag::Lyrics},
    Name{"\xA9mod", MediaTag::Camera},
};

// The older boxes of mobile phones.
constexpr std::array kPhoneItems{
    Name{"titl", MediaTag::Title},    Name{"dscp", MediaTag::Subject},
    Name{"auth", MediaTag::Author},   Name{"perf", MediaTag::Author},
    Name{"gnre", MediaTag::Genre},    Name{"albm", MediaTag::Album},
    Name{"kywd", MediaTag::Keywords}, Name{"cprt", MediaTag::Copyright},
};

// Behind "com.apple.quicktime." or the like: the last part decides.
constexpr std::array kKeyNames{
    Name{"title", MediaTag::Title},         Name{"displayname", MediaTag::Title},
    Name{"description", MediaTag::Subject}, Name{"information", MediaTag::Subject},
    Name{"artist", MediaTag::Author},       Name{"author", MediaTag::Author},
    Name{"director", MediaTag::Author},     Name{"producer", MediaTag::Author},
    Name{"album", MediaTag::Album},         Name{"composer", MediaTag::Composer},
    Name{"genre", MediaTag::Genre},         Name{"keywords", MediaTag::Keywords},
    Name{"comment", MediaTag::Comments},    Name{"copyright", MediaTag::Copyright},
    Name{"creationdate", MediaTag::Date},   Name{"ISO6709", MediaTag::Position},
    Name{"make", MediaTag::Camera},         Name{"model", MediaTag::Camera},
};

class Mp4Walk {
  public:
    explicit Mp4Walk(MediaTags& tags) : m_tags(tags) {}

    void File(std::string_view bytes) {
        ForEachBox(bytes, [this](std::string_view name, std::string_view content) {
            if (name == "moov")
                Movie(content);
            else if (name == "uuid")
                Xmp(content);
            else if (name == "meta")
                Meta(content);
        });
    }

  private:
    template <typename Take> void ForEachBox(std::string_view bytes, const Take& take) {
        constexpr std::size_t kShortHeader = 8, kLongHeader = 16;
        while (bytes.size() >= kShortHeader && ++m_boxes < kMaxMediaElements) {
            std::uint64_t size = BigEndianAt(bytes, 0, 4);
            std::size_t header = kShortHeader;
            if (size == 1) {
                size = BigEndianAt(bytes, kShortHeader, 8);
                header = kLongHeader;
            } else if (size == 0) {
                size = bytes.size(); // to the end
            }
            if (size < header || header > bytes.size())
                return;
            const std::string_view box = Piece(bytes, 0, size);
            take(box.substr(4, 4), box.substr(std::min(header, box.size())));
            bytes.remove_prefix(box.size());
        }
    }

    void Movie(std::string_view content) {
        ForEachBox(content, [this](std::string_view name, std::string_view inner) {
            if (name == "udta")
                UserData(inner);
            else if (name == "meta")
                Meta(inner);
        });
    }

    void UserData(std::string_view content) {
        ForEachBox(content, [this](std::string_view name, std::string_view inner) {
            if (name == "meta")
                return Meta(inner);
            if (name == "XMP_")
                return XmpPacket(inner);
            if (name == "chpl")
                return Chapters(inner);
            if (name[0] == '\xA9')
                return QuickTimeTexts(name, inner);
            for (const Name& item : kPhoneItems)
                if (item.name == name && inner.size() > 6) // version, flags, language
                    AddText(item.tag, inner.substr(6));
        });
    }

    // Each text with its length and language before it.
    void QuickTimeTexts(std::string_view name, std::string_view content) {
        while (content.size() > 4) {
            const std::string_view text = Piece(content, 4, BigEndianAt(content, 0, 2));
            for (const Name& item : kItems)
                if (item.name == name)
                    AddText(item.tag, text);
            content.remove_prefix(4 + text.size());
        }
    }

    void Chapters(std::string_view content) {
        constexpr std::size_t kHeader = 9, kStart = 8; // the time at which a chapter begins
        content = Piece(content, kHeader, content.size());
        while (content.size() > kStart) {
            const std::string_view title =
                Piece(content, kStart + 1, BigEndianAt(content, kStart, 1));
            AddText(MediaTag::Chapter, title);
            content.remove_prefix(std::min(content.size(), kStart + 1 + title.size()));
        }
    }

    // A box with version and flags before its content in MP4, without them in QuickTime.
    void Meta(std::string_view content) {
        if (content.size() >= 8 && content.substr(4, 4) != "hdlr")
            content.remove_prefix(4);
        m_keys.clear();
        ForEachBox(content, [this](std::string_view name, std::string_view inner) {
            if (name == "keys")
                Keys(inner);
            else if (name == "ilst")
                Items(inner);
        });
    }

    void Keys(std::string_view content) {
        ForEachBox(Piece(content, 8, content.size()),
                   [this](std::string_view, std::string_view key) { m_keys.push_back(key); });
    }

    void Items(std::string_view content) {
        ForEachBox(content, [this](std::string_view name, std::string_view inner) {
            const std::uint64_t number = BigEndianAt(name, 0, 4);
            for (const Name& item : kItems)
                if (item.name == name)
                    Values(item.tag, inner);
            if (name == "trkn")
                Track(inner);
            else if (name == "gnre")
                GenreNumber(inner);
            if (number >= 1 && number <= m_keys.size()) {
                const std::string_view key = m_keys[static_cast<std::size_t>(number - 1)];
                for (const Name& item : kKeyNames)
                    if (item.name == key.substr(key.rfind('.') + 1))
                        Values(item.tag, inner);
            }
        });
    }

    void Values(MediaTag tag, std::string_view content) {
        constexpr std::uint64_t kUtf8 = 1, kUtf16 = 2;
        ForEachBox(content, [&](std::string_view name, std::string_view data) {
            if (name != "data" || data.size() < 8)
                return;
            const std::uint64_t type = BigEndianAt(data, 0, 4);
            data.remove_prefix(8);
            if (type == kUtf8 || type == 0)
                AddText(tag, data);
            else if (type == kUtf16)
                m_tags.Add(tag, DecodeText(data, {"UTF-16BE", 0, false}, kMaxMediaTagBytes));
        });
    }

    void Track(std::string_view content) {
        ForEachBox(content, [this](std::string_view name, std::string_view data) {
            if (name == "data" && BigEndianAt(data, 10, 2) > 0)
                m_tags.Add(MediaTag::Track, std::to_string(BigEndianAt(data, 10, 2)));
        });
    }

    // From the list of genres that the oldest tags of MP3 have, counted from 1.
    void GenreNumber(std::string_view content) {
        ForEachBox(content, [this](std::string_view name, std::string_view data) {
            const int number = static_cast<int>(BigEndianAt(data, 8, 2));
            if (name == "data" && number > 0)
                m_tags.Add(MediaTag::Genre, TagLib::ID3v1::genre(number - 1).to8Bit(true));
        });
    }

    void Xmp(std::string_view content) {
        constexpr auto kXmp = "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC"sv;
        if (content.starts_with(kXmp))
            XmpPacket(content.substr(kXmp.size()));
    }

    void XmpPacket(std::string_view packet) {
        if (packet.size() > kMaxMediaTagBytes)
            return;
        const XmpProperties xmp = ReadXmp(packet);
        m_tags.Add(MediaTag::Title, xmp.title);
        m_tags.Add(MediaTag::Author, xmp.author);
        m_tags.Add(MediaTag::Subject, xmp.subject);
        m_tags.Add(MediaTag::Keywords, xmp.keywords);
    }

    void AddText(MediaTag tag, std::string_view text) {
        text = text.substr(0, kMaxMediaTagBytes);
        if (text.starts_with("\xFE\xFF"))
            m_tags.Add(tag, DecodeText(text, {"UTF-16BE", 2, false}, kMaxMediaTagBytes));
        else
            m_tags.Add(tag, NameCharset().Decode(text.substr(0, text.find('\0'))));
    }

    MediaTags& m_tags;
    int m_boxes = 0;
    std::vector<std::string_view> m_keys; // names of the items that only have numbers
};

} // namespace

void ReadMp4Tags(std::string_view bytes, MediaTags& tags) {
    Mp4Walk(tags).File(bytes);
}

} // namespace engine
