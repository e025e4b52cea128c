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

// In the order of trying.
constexpr std::array kMarks{
    Mark{0, "\xFF\xD8\xFF"sv, "picture"},          // JPEG
    Mark{0, "\x89PNG\r\n\x1A\n"sv, "picture"},     //
    Mark{0, "GIF8"sv, "picture"},                  //
    Mark{0, "BM"sv, "picture"},                    //
    Mark{0, "II*\0"sv, "picture"},                 // TIFF and what cameras make of it
    Mark{0, "MM\0*"sv, "picture"},                 //
    Mark{0, "II+\0"sv, "picture"},                 // BigTIFF
    Mark{0, "MM\0+"sv, "picture"},                 //
    Mark{0, "IIU\0"sv, "picture"},                 // RW2
    Mark{0, "IIRO"sv, "picture"},                  // ORF
    Mark{0, "IIRS"sv, "picture"},                  //
    Mark{0, "MMOR"sv, "picture"},                  //
    Mark{0, "FUJIFILMCCD-RAW"sv, "picture"},       // RAF
    Mark{6, "HEAPCCDR"sv, "picture"},              // CRW
    Mark{0, "\0MRM"sv, "picture"},                 // MRW
    Mark{8, "WEBP"sv, "picture"},                  //
    Mark{0, "\0\0\1\0"sv, "picture"},              // ICO
    Mark{0, "8BPS"sv, "picture"},                  // PSD
    Mark{0, "\0\0\0\x0CjP  "sv, "picture"},        // JPEG 2000
    Mark{0, "\0\0\0\x0CJXL "sv, "picture"},        // JPEG XL
    Mark{0, "\xFF\x0A"sv, "picture"},              //
    Mark{0, "AT&TFORM"sv, "picture"},              // DjVu
    Mark{4, "ftypheic"sv, "picture"},              // HEIF
    Mark{4, "ftypheix"sv, "picture"},              //
    Mark{4, "ftypmif1"sv, "picture"},              //
    Mark{4, "ftypmsf1"sv, "picture"},              //
    Mark{4, "ftypavif"sv, "picture"},              //
    Mark{4, "ftypcrx "sv, "picture"},              // CR3
    Mark{0, "\xD7\xCD\xC6\x9A"sv, "picture"},      // WMF
    Mark{0, "gimp xcf"sv, "picture"},              //
    Mark{0, "ID3"sv, "sound"},                     //
    Mark{0, "OggS"sv, "sound"},                    //
    Mark{0, "fLaC"sv, "sound"},                    //
    Mark{8, "WAVE"sv, "sound"},                    //
    Mark{8, "AIFF"sv, "sound"},                    //
    Mark{8, "AIFC"sv, "sound"},                    //
    Mark{0, ".snd\0\0"sv, "sound"},                // AU
    Mark{0, "MThd"sv, "sound"},                    //
    Mark{0, "MAC "sv, "sound"},                    // Monkey's Audio
    Mark{0, "MP+"sv, "sound"},                     // Musepack
    Mark{0, "MPCK"sv, "sound"},                    //
    Mark{0, "wvpk"sv, "sound"},                    // WavPack
    Mark{0, "TTA1"sv, "sound"},                    //
    Mark{0, "\xFF\xFB"sv, "sound"},                // MP3
    Mark{0, "\xFF\xFA"sv, "sound"},                //
    Mark{0, "\xFF\xF3"sv, "sound"},                //
    Mark{0, "\xFF\xF2"sv, "sound"},                //
    Mark{0, "\xFF\xE3"sv, "sound"},                //
    Mark{0, "\xFF\xE2"sv, "sound"},                //
    Mark{0, "\xFF\xFD"sv, "sound"},                // MP2
    Mark{0, "\xFF\xFC"sv, "sound"},                //
    Mark{0, "\xFF\xF1"sv, "sound"},                // AAC
    Mark{0, "\xFF\xF9"sv, "sound"},                //
    Mark{4, "ftypM4A"sv, "sound"},                 //
    Mark{4, "ftypM4B"sv, "sound"},                 //
    Mark{4, "ftyp"sv, "film"},                     // MP4
    Mark{4, "moov\0"sv, "film"},                   // QuickTime without that
    Mark{4, "mdat"sv, "film"},                     //
    Mark{4, "wide\0"sv, "film"},                   //
    Mark{8, "AVI "sv, "film"},                     //
    Mark{0, "\x1A\x45\xDF\xA3"sv, "film"},         // Matroska
    Mark{0, "\x30\x26\xB2\x75\x8E\x66"sv, "film"}, // ASF: WMV and WMA
    Mark{0, "FLV\1"sv, "film"},                    //
    Mark{0, "\0\0\1\xBA"sv, "film"},               // MPEG
    Mark{0, "\x7F\x45LF"sv, "program"},            //
    Mark{0, "MZ"sv, "program"},                    //
    Mark{0, "\xCA\xFE\xBA\xBE"sv, "program"},      //
    Mark{0, "\0asm"sv, "program"},                 //
    Mark{0, "!<arch>\n/"sv, "program"},            // a library of them
    Mark{0, "!<arch>\n__.SYMDEF"sv, "program"},    //
    Mark{0, "!<thin>\n"sv, "program"},             //
    Mark{0, "\0\1\0\0\0"sv, "font"},               //
    Mark{0, "OTTO"sv, "font"},                     //
    Mark{0, "wOFF"sv, "font"},                     //
    Mark{0, "wOF2"sv, "font"},                     //
    Mark{0, "SQLite format 3\0"sv, "database"},    //
};

// Marks that a text may begin with, too: a control character must follow.
bool IsWordOnly(std::string_view mark) {
    return mark == "BM" || mark == "MZ" || mark == "MP+" || mark == "MAC " || mark == "ID3";
}

bool HasControlCharacter(std::string_view bytes) {
    for (const char c : bytes)
        if (static_cast<unsigned char>(c) < '\t' || c == '\x0E')
            return true;
    return false;
}

} // namespace

const char* MediaKind(std::string_view bytes) {
    constexpr std::size_t kHeader = 64;
    for (const Mark& mark : kMarks)
        if (bytes.size() > mark.offset &&
            bytes.substr(mark.offset, mark.bytes.size()) == mark.bytes &&
            (!IsWordOnly(mark.bytes) || HasControlCharacter(bytes.substr(0, kHeader))))
            return mark.kind;
    return nullptr;
}

bool IsTagged(std::string_view kind) {
    return kind == "picture" || kind == "sound" || kind == "film";
}

} // namespace engine
