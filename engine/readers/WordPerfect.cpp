// Reads WordPerfect, Works, Write, Lotus, Quattro and their like.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/WordPerfect.h"

#include "engine/readers/Charset.h"
#include "engine/readers/CompoundFile.h"
#include "engine/readers/Reader.h"
#include "engine/readers/RevengeText.h"

#include <librevenge-stream/librevenge-stream.h>
#include <libwpd/libwpd.h>
#include <libwps/libwps.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

namespace engine {
namespace {

using namespace std::string_view_literals;
using librevenge::RVNGStringStream;

enum class Library : std::uint8_t { None, WordPerfect, Works };

RVNGStringStream StreamOf(std::string_view bytes) {
    return {reinterpret_cast<const unsigned char*>(bytes.data()),
            static_cast<unsigned>(bytes.size())};
}

template <std::size_t N>
bool HasEnding(const std::string& name, const std::array<std::string_view, N>& endings) {
    const std::size_t dot = name.rfind('.');
    std::string ending = dot == std::string::npos ? std::string() : name.substr(dot + 1);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return std::find(endings.begin(), endings.end(), ending) != endings.end();
}

bool IsPlainText(std::string_view bytes) {
    constexpr std::size_t kSample = std::size_t{64} * 1024;
    const std::string_view head = bytes.substr(0, kSample);
    constexpr std::size_t kLongestCharacter = 3; // may be cut off by the sample's end
    return ValidUtf8Length(head) + kLongestCharacter >= head.size() &&
           head.find_first_of("\0\1\2\3\4\5\6\7\x0E\x0F"sv) == std::string_view::npos;
}

// What files of the libraries begin with. Nothing else is asked about unless its name says so.
bool HasMarkOfWorks(std::string_view bytes) {
    constexpr std::array kMarks{
        "\x31\xBE\0\0\0\xAB"sv,   "\x32\xBE\0\0\0\xAB"sv, // Write, Word for DOS
        "\0\0\2\0\4\4"sv,         "\0\0\2\0\5\4"sv,       // Lotus 1 and 2
        "\0\0\2\0\6\4"sv,         "\0\0\x1A\0\0\x10\4\0"sv, "\0\0\x1A\0\2\x10\4\0"sv,
        "\0\0\x1A\0\3\x10\4\0"sv, "\0\0\x1A\0\5\x10\4\0"sv, "\xFF\0\2\0\4\4"sv, // Works sheets
        "\0\0\2\0\x20\x51"sv,     "\0\0\2\0\x21\x51"sv,                         // Quattro
        "\0\0\2\0\1\x10"sv,       "\0\0\2\0\2\x10"sv,       "\0\0\2\0\7\x10"sv,
    };
    return std::any_of(kMarks.begin(), kMarks.end(),
                       [&](std::string_view mark) { return bytes.starts_with(mark); });
}

Library LibraryFor(const Source& source) {
    constexpr std::size_t kLargest = std::size_t{64} << 20; // nobody typed more
    const std::string_view bytes = source.bytes;
    constexpr std::array kWordPerfect{"wpd"sv, "wp"sv,  "wp4"sv, "wp5"sv,
                                      "wp6"sv, "wp7"sv, "wpt"sv, "wpw"sv};
    constexpr std::array kWorks{"wps"sv, "wks"sv, "wdb"sv, "wk1"sv, "wk3"sv, "wk4"sv,
                                "wrk"sv, "wr1"sv, "wri"sv, "123"sv, "wq1"sv, "wq2"sv,
                                "wb1"sv, "wb2"sv, "wb3"sv, "qpw"sv};
    if (bytes.size() > kLargest)
        return Library::None;
    const bool compound = CompoundFile::Recognises(bytes);
    const bool named = HasEnding(source.name, kWordPerfect);
    if (bytes.starts_with("\xFFWPC") || ((named || compound) && !IsPlainText(bytes))) {
        RVNGStringStream stream = StreamOf(bytes);
        if (libwpd::WPDocument::isFileFormatSupported(&stream) != libwpd::WPD_CONFIDENCE_NONE)
            return Library::WordPerfect;
    }
    const bool works = HasEnding(source.name, kWorks);
    if (HasMarkOfWorks(bytes) || ((works || compound) && !IsPlainText(bytes))) {
        RVNGStringStream stream = StreamOf(bytes);
        libwps::WPSKind kind{};
        libwps::WPSCreator creator{};
        bool needsEncoding = false;
        if (libwps::WPSDocument::isFileFormatSupported(&stream, kind, creator, needsEncoding) !=
            libwps::WPS_CONFIDENCE_NONE)
            return Library::Works;
    }
    return Library::None;
}

void ReadByWpd(std::string_view bytes, RevengeText& text) {
    RVNGStringStream stream = StreamOf(bytes);
    switch (libwpd::WPDocument::parse(&stream, &text, nullptr)) {
    case libwpd::WPD_OK:
        return text.Finish();
    case libwpd::WPD_UNSUPPORTED_ENCRYPTION_ERROR:
    case libwpd::WPD_PASSWORD_MISSMATCH_ERROR:
        text.Finish();
        throw ReadError(ReadState::Encrypted, "needs a password");
    default:
        text.Finish(); // throws what the sink threw
        throw ReadError(ReadState::Damaged, "the document is damaged");
    }
}

void ReadByWps(std::string_view bytes, RevengeText& text) {
    RVNGStringStream stream = StreamOf(bytes);
    libwps::WPSKind kind{};
    libwps::WPSCreator creator{};
    bool needsEncoding = false;
    const auto confidence =
        libwps::WPSDocument::isFileFormatSupported(&stream, kind, creator, needsEncoding);
    if (confidence == libwps::WPS_CONFIDENCE_SUPPORTED_ENCRYPTION)
        throw ReadError(ReadState::Encrypted, "needs a password");
    // Files do not say their code page; the library takes that of western DOS or Windows.
    const libwps::WPSResult result =
        kind == libwps::WPS_TEXT
            ? libwps::WPSDocument::parse(&stream,
                                         static_cast<librevenge::RVNGTextInterface*>(&text))
            : libwps::WPSDocument::parse(&stream,
                                         static_cast<librevenge::RVNGSpreadsheetInterface*>(&text));
    text.Finish();
    if (result == libwps::WPS_ENCRYPTION_ERROR)
        throw ReadError(ReadState::Encrypted, "needs a password");
    if (result != libwps::WPS_OK)
        throw ReadError(ReadState::Damaged, "the document is damaged");
}

} // namespace

bool IsOldOfficeDocument(const Source& source) {
    return LibraryFor(source) != Library::None;
}

void ReadWordPerfect(const Source& source, DocumentSink& sink) {
    RevengeText text(sink);
    switch (LibraryFor(source)) {
    case Library::WordPerfect:
        return ReadByWpd(source.bytes, text);
    case Library::Works:
        return ReadByWps(source.bytes, text);
    case Library::None:
        break;
    }
    throw ReadError(ReadState::Unknown, "no reader for this kind of file");
}

} // namespace engine
