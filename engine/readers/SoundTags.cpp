// Tags of sound files, by TagLib.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/MediaTags.h"
#include "engine/readers/NameCharset.h"

#include <algorithm>
#include <array>
#include <new>

#include <fileref.h>
#include <id3v1tag.h>
#include <id3v2tag.h>
#include <infotag.h>
#include <tiostream.h>
#include <tpropertymap.h>

namespace engine {

namespace {

// The file where it is: the library's own stream would copy it.
class SpanStream final : public TagLib::IOStream {
  public:
    explicit SpanStream(std::string_view bytes) : m_bytes(bytes) {}
    // Without a name the library looks at the content.
    [[nodiscard]] TagLib::FileName name() const override { return ""; }
    TagLib::ByteVector readBlock(unsigned long length) override {
        const std::string_view block = m_bytes.substr(m_at, length);
        m_at += block.size();
        return {block.data(), static_cast<unsigned>(block.size())};
    }
    void writeBlock(const TagLib::ByteVector& /*data*/) override {}
    void insert(const TagLib::ByteVector& /*data*/, unsigned long /*start*/,
                unsigned long /*replace*/) override {}
    void removeBlock(unsigned long /*start*/, unsigned long /*length*/) override {}
    [[nodiscard]] bool readOnly() const override { return true; }
    [[nodiscard]] bool isOpen() const override { return true; }
    void seek(long offset, Position from) override {
        const long size = length();
        const long base = from == Beginning ? 0 : from == Current ? tell() : size;
        // A sum beyond the range of numbers comes from a hostile offset.
        long place = 0;
        if (__builtin_add_overflow(base, offset, &place))
            place = offset < 0 ? 0 : size;
        m_at = static_cast<std::size_t>(std::clamp(place, 0L, size));
    }
    [[nodiscard]] long tell() const override { return static_cast<long>(m_at); }
    long length() override { return static_cast<long>(m_bytes.size()); }
    void truncate(long /*length*/) override {}

  private:
    std::string_view m_bytes;
    std::size_t m_at = 0;
};

std::string DecodeLatin1(const TagLib::ByteVector& bytes) {
    std::string_view text(bytes.data(), bytes.size());
    return NameCharset().Decode(text.substr(0, text.find('\0')));
}

// Tags that claim to be Latin-1 hold whatever charset their writer had.
class Id3v2Text final : public TagLib::ID3v2::Latin1StringHandler {
    [[nodiscard]] TagLib::String parse(const TagLib::ByteVector& data) const override {
        return {DecodeLatin1(data), TagLib::String::UTF8};
    }
};
class Id3v1Text final : public TagLib::ID3v1::StringHandler {
    [[nodiscard]] TagLib::String parse(const TagLib::ByteVector& data) const override {
        return {DecodeLatin1(data), TagLib::String::UTF8};
    }
};
class RiffText final : public TagLib::RIFF::Info::StringHandler {
    [[nodiscard]] TagLib::String parse(const TagLib::ByteVector& data) const override {
        return {DecodeLatin1(data), TagLib::String::UTF8};
    }
};

void UseOwnCharsets() {
    static const Id3v2Text id3v2;
    static const Id3v1Text id3v1;
    static const RiffText riff;
    static const bool set = [] {
        TagLib::ID3v2::Tag::setLatin1StringHandler(&id3v2);
        TagLib::ID3v1::Tag::setStringHandler(&id3v1);
        TagLib::RIFF::Info::Tag::setStringHandler(&riff);
        return true;
    }();
    static_cast<void>(set);
}

struct Property {
    std::string_view name; // what stands behind a ":" in a file's name of it does not count
    MediaTag tag;
};

constexpr std::array kProperties{
    Property{"TITLE", MediaTag::Title},
    Property{"SUBTITLE", MediaTag::Subject},
    Property{"CONTENTGROUP", MediaTag::Subject},
    Property{"WORK", MediaTag::Subject},
    Property{"DESCRIPTION", MediaTag::Subject},
    Property{"PODCASTDESC", MediaTag::Subject},
    Property{"SUMMARY", MediaTag::Subject},
    Property{"ARTIST", MediaTag::Author},
    Property{"ALBUMARTIST", MediaTag::Author},
    Property{"PERFORMER", MediaTag::Author},
    Property{"CONDUCTOR", MediaTag::Author},
    Property{"REMIXER", MediaTag::Author},
    Property{"ALBUM", MediaTag::Album},
    Property{"COMPOSER", MediaTag::Composer},
    Property{"LYRICIST", MediaTag::Composer},
    Property{"GENRE", MediaTag::Genre},
    Property{"MOOD", MediaTag::Genre},
    Property{"KEYWORDS", MediaTag::Keywords},
    Property{"COMMENT", MediaTag::Comments},
    Property{"COPYRIGHT", MediaTag::Copyright},
    Property{"LABEL", MediaTag::Copyright},
    Property{"DATE", MediaTag::Date},
    Property{"TRACKNUMBER", MediaTag::Track},
    Property{"LYRICS", MediaTag::Lyrics},
    Property{"UNSYNCEDLYRICS", MediaTag::Lyrics},
};

// What players leave in comments for each other: numbers about loudness and the like.
bool IsForMachines(std::string_view name) {
    return name.find("ITUN") != std::string_view::npos || name.find("SONGS-DB") == 8 ||
           name.find("REPLAYGAIN") != std::string_view::npos;
}

void AddProperties(const TagLib::PropertyMap& properties, MediaTags& tags) {
    for (const Property& property : kProperties) {
        for (const auto& [key, values] : properties) {
            const std::string name = key.to8Bit(true);
            if (name.substr(0, name.find(':')) != property.name || IsForMachines(name))
                continue;
            for (const TagLib::String& value : values)
                tags.Add(property.tag, value.to8Bit(true));
        }
    }
}

} // namespace

void ReadSoundTags(std::string_view bytes, MediaTags& tags) {
    UseOwnCharsets();
    try {
        SpanStream stream(bytes);
        const TagLib::FileRef file(&stream, false);
        if (!file.isNull() && file.file() != nullptr)
            AddProperties(file.file()->properties(), tags);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        // It is indexed by its name.
    }
}

} // namespace engine
