// Marks at the beginning of files.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/MediaKind.h"

#include <array>

namespace engine {
namespace {

using namespace std::string_view_literals;

struct Mark {
    std::size_t offset;
    std::string_view bytes;
    const char* kind;
};

constexpr std::array kMarks{
    Mark{0, "\xFF\xD8\xFF"sv, "picture"},       // JPEG
    Mark{0, "\x89PNG\r\n\x1A\n"sv, "picture"},  //
    Mark{0, "GIF8"sv, "picture"},               //
    Mark{0, "BM"sv, "picture"},                 //
    Mark{0, "II*\0"sv, "picture"},              // TIFF
    Mark{0, "MM\0*"sv, "picture"},              //
    Mark{0, "II+\0"sv, "picture"},              // BigTIFF
    Mark{0, "MM\0+"sv, "picture"},              //
    Mark{8, "WEBP"sv, "picture"},               //
    Mark{0, "\0\0\1\0"sv, "picture"},           // ICO
    Mark{0, "8BPS"sv, "picture"},               //
    Mark{0, "\0\0\0\x0CjP  "sv, "picture"},     // JPEG 2000
    Mark{0, "AT&TFORM"sv, "picture"},           // DjVu
    Mark{4, "ftypheic"sv, "picture"},           //
    Mark{4, "ftypavif"sv, "picture"},           //
    Mark{0, "\xD7\xCD\xC6\x9A"sv, "picture"},   // WMF
    Mark{0, "gimp xcf"sv, "picture"},           //
    Mark{0, "ID3"sv, "sound"},                  //
    Mark{0, "OggS"sv, "sound"},                 //
    Mark{0, "fLaC"sv, "sound"},                 //
    Mark{8, "WAVE"sv, "sound"},                 //
    Mark{0, "MThd"sv, "sound"},                 //
    Mark{0, "\xFF\xFB"sv, "sound"},             // MP3
    Mark{4, "ftyp"sv, "film"},                  // MP4
    Mark{8, "AVI "sv, "film"},                  //
    Mark{0, "\x1A\x45\xDF\xA3"sv, "film"},      // Matroska
    Mark{0, "\0\0\1\xBA"sv, "film"},            // MPEG
    Mark{0, "\x7F\x45LF"sv, "program"},         //
    Mark{0, "MZ"sv, "program"},                 //
    Mark{0, "\xCA\xFE\xBA\xBE"sv, "program"},   //
    Mark{0, "\0asm"sv, "program"},              //
    Mark{0, "\0\1\0\0\0"sv, "font"},            //
    Mark{0, "OTTO"sv, "font"},                  //
    Mark{0, "wOFF"sv, "font"},                  //
    Mark{0, "wOF2"sv, "font"},                  //
    Mark{0, "SQLite format 3\0"sv, "database"}, //
};

} // namespace

const char* MediaKind(std::string_view bytes) {
    for (const Mark& mark : kMarks)
        if (bytes.size() > mark.offset &&
            bytes.substr(mark.offset, mark.bytes.size()) == mark.bytes)
            return mark.kind;
    return nullptr;
}

} // namespace engine
