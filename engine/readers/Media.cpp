// Reads what pictures, sound and films say of themselves.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/MediaKind.h"
#include "engine/readers/MediaTags.h"
#include "engine/readers/Reader.h"

namespace engine {

namespace {

using namespace std::string_view_literals;

bool HasAt(std::string_view bytes, std::size_t at, std::string_view mark) {
    return bytes.size() >= at + mark.size() && bytes.substr(at, mark.size()) == mark;
}

void ReadPicture(std::string_view bytes, MediaTags& tags) {
    ReadPictureTags(bytes, tags);
    ReadPictureTexts(bytes, tags);
}

void ReadSoundOrFilm(std::string_view bytes, MediaTags& tags) {
    if (HasAt(bytes, 0, "\x1A\x45\xDF\xA3"))
        ReadMatroskaTags(bytes, tags);
    else if (HasAt(bytes, 8, "AVI "))
        ReadRiffTags(bytes, tags);
    else if (HasAt(bytes, 0, ".snd"))
        ReadAuTags(bytes, tags);
    else if (HasAt(bytes, 4, "ftyp") || HasAt(bytes, 4, "moov") || HasAt(bytes, 4, "mdat") ||
             HasAt(bytes, 4, "wide"))
        ReadMp4Tags(bytes, tags);
    else
        ReadSoundTags(bytes, tags);
    if (HasAt(bytes, 8, "AIF")) // texts beside the tags that the library knows
        ReadRiffTags(bytes, tags);
}

} // namespace

void ReadMedia(const Source& source, DocumentSink& sink) {
    const char* const kind = MediaKind(source.bytes);
    MediaTags tags;
    if (kind != nullptr && kind == "picture"sv)
        ReadPicture(source.bytes, tags);
    else
        ReadSoundOrFilm(source.bytes, tags);
    if (!tags.TellSomething())
        throw ReadError(ReadState::NameOnly, kind != nullptr ? kind : "unknown kind of file");
    tags.Emit(sink);
    // Such files are looked for by their name as well, as those that tell nothing are.
    sink.Open(Block::Paragraph);
    sink.Text(source.name.substr(source.name.find_last_of('/') + 1));
    sink.Close(Block::Paragraph);
}

} // namespace engine
