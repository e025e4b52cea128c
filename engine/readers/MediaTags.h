// What a picture, a sound or a film says of itself, gathered before it goes into the sink.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocumentSink.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

enum class MediaTag : std::uint8_t {
    Title,
    Author, // artist, photographer, by-line
    Subject,
    Keywords,
    Comments,
    Album,
    Composer,
    Genre,
    Copyright,
    // From here on with its name before it, since a bare value would tell nothing.
    Date,
    Place,
    Position, // degrees, north and east positive
    Camera,
    Lens,
    Track,
    Rating,
    People,
    Chapter,
    Lyrics,
};

class MediaTags {
  public:
    // Text in UTF-8. Blanks at its ends fall away; what is empty, was there before, or only names
    // the program that wrote the file is passed over.
    void Add(MediaTag tag, std::string_view text);
    // Whether there is anything that a person would look for: a date alone is not.
    [[nodiscard]] bool TellSomething() const { return m_telling; }
    // The well-known ones as fields, the others as paragraphs.
    void Emit(DocumentSink& sink) const;

  private:
    struct Value {
        MediaTag tag;
        std::string text;
    };
    [[nodiscard]] std::string Joined(MediaTag tag) const;

    std::vector<Value> m_values;
    std::size_t m_bytes = 0;
    bool m_telling = false;
    bool m_cut = false;
};

// The sources, each reading what it knows of and leaving the rest. They throw nothing but
// std::bad_alloc; a damaged file gives what can be read of it.
void ReadPictureTags(std::string_view bytes, MediaTags& tags);  // Exif, IPTC, XMP
void ReadPictureTexts(std::string_view bytes, MediaTags& tags); // of PNG and GIF
void ReadSoundTags(std::string_view bytes, MediaTags& tags);
void ReadMp4Tags(std::string_view bytes, MediaTags& tags);
void ReadMatroskaTags(std::string_view bytes, MediaTags& tags);
void ReadRiffTags(std::string_view bytes, MediaTags& tags); // AVI, AIFF
void ReadAuTags(std::string_view bytes, MediaTags& tags);

// Once, before a process gives up opening files.
void PrepareMedia();

} // namespace engine
