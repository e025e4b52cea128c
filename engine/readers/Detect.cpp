// Tells what kind of document a file is.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Charset.h"
#include "engine/readers/HtmlScanner.h"
#include "engine/readers/HtmlText.h"
#include "engine/readers/MailSniff.h"
#include "engine/readers/MediaKind.h"
#include "engine/readers/Reader.h"
#include "engine/readers/ZipFile.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <memory>
#include <string>

namespace engine {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kHead = std::size_t{16} * 1024; // what the sniffing of text looks at

std::string EndingOf(std::string_view name) {
    const std::size_t slash = name.find_last_of("/\\");
    if (slash != std::string_view::npos)
        name.remove_prefix(slash + 1);
    const std::size_t dot = name.rfind('.');
    std::string ending(dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1));
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending;
}

template <std::size_t N>
bool IsOneOf(std::string_view ending, const std::array<std::string_view, N>& list) {
    return std::find(list.begin(), list.end(), ending) != list.end();
}

// ---- Zip packages

Kind OfficeKindByEnding(std::string_view ending) {
    if (ending.starts_with("xls") || ending.starts_with("xlt"))
        return Kind::Xlsx;
    if (ending.starts_with("ppt") || ending.starts_with("pot") || ending.starts_with("pps"))
        return Kind::Pptx;
    return Kind::Docx;
}

// By the list of content types, or, where that is damaged, by the usual names of main parts.
Kind OpenXmlKind(ZipFile& zip) {
    std::string types;
    constexpr std::size_t kLongestList = std::size_t{4} * 1024 * 1024;
    if (const ZipMember* list = zip.Find("[Content_Types].xml"))
        (void)zip.Unpack(*list, [&types](std::string_view piece) {
            if (types.size() < kLongestList)
                types += piece;
        });
    const auto has = [&types](std::string_view type) {
        return types.find(type) != std::string::npos;
    };
    if (has("wordprocessingml.document.main+xml") || has("wordprocessingml.template.main+xml") ||
        has("ms-word.document.macroEnabled.main+xml") ||
        has("ms-word.template.macroEnabledTemplate.main+xml"))
        return Kind::Docx;
    if (has("spreadsheetml.sheet.main+xml") || has("spreadsheetml.template.main+xml") ||
        has("ms-excel.sheet.macroEnabled.main+xml") ||
        has("ms-excel.template.macroEnabled.main+xml") ||
        has("ms-excel.addin.macroEnabled.main+xml"))
        return Kind::Xlsx;
    if (has("presentationml.presentation.main+xml") || has("presentationml.template.main+xml") ||
        has("presentationml.slideshow.main+xml") ||
        has("ms-powerpoint.presentation.macroEnabled") ||
        has("ms-powerpoint.slideshow.macroEnabled") || has("ms-powerpoint.template.macroEnabled"))
        return Kind::Pptx;
    if (zip.Find("word/document.xml") != nullptr)
        return Kind::Docx;
    if (zip.Find("xl/workbook.xml") != nullptr)
        return Kind::Xlsx;
    if (zip.Find("ppt/presentation.xml") != nullptr)
        return Kind::Pptx;
    return Kind::Zip;
}

Kind ZipKind(std::string_view bytes) {
    try {
        ZipFile zip(bytes);
        std::string type;
        constexpr std::size_t kLongestType = 200;
        if (const ZipMember* member = zip.Find("mimetype"))
            (void)zip.Unpack(*member, [&type](std::string_view piece) {
                if (type.size() < kLongestType)
                    type += piece.substr(0, kLongestType);
            });
        if (type.starts_with("application/epub+zip"))
            return Kind::Epub;
        const bool content =
            zip.Find("content.xml") != nullptr || zip.Find("encrypted-package") != nullptr;
        const bool open = type.starts_with("application/vnd.oasis.opendocument.") ||
                          type.starts_with("application/vnd.sun.xml.");
        if (content && (open || zip.Find("META-INF/manifest.xml") != nullptr))
            return Kind::OpenDocument;
        if (zip.Find("META-INF/container.xml") != nullptr && type.empty())
            return Kind::Epub;
        return OpenXmlKind(zip);
    } catch (const ReadError&) {
        return Kind::Zip; // an empty archive, or one whose reader says what is wrong
    }
}

// ---- Tar

// Whether bytes begin with a header of tar: 512 bytes with a checksum over themselves.
bool IsTarHeader(std::string_view bytes) {
    constexpr std::size_t kHeaderSize = 512, kSumAt = 148, kSumSize = 8;
    if (bytes.size() < kHeaderSize || bytes[0] == '\0')
        return false;
    unsigned stated = 0;
    bool digits = false;
    for (const char c : bytes.substr(kSumAt, kSumSize)) {
        if (c >= '0' && c <= '7') {
            stated = stated * 8 + static_cast<unsigned>(c - '0');
            digits = true;
        } else if (digits || c != ' ') {
            break;
        }
    }
    unsigned sum = 0;
    int signedSum = 0; // some old programs added signed characters
    for (std::size_t i = 0; i < kHeaderSize; ++i) {
        const char c = i >= kSumAt && i < kSumAt + kSumSize ? ' ' : bytes[i];
        sum += static_cast<unsigned char>(c);
        signedSum += static_cast<signed char>(c);
    }
    return digits && (stated == sum || stated == static_cast<unsigned>(signedSum));
}

struct FreeArchive {
    void operator()(archive* reader) const { archive_read_free(reader); }
};

bool IsCompressed(std::string_view bytes) {
    constexpr std::array kMarks{"\x1F\x8B"sv,         "BZh"sv,     "\xFD\x37zXZ\0"sv,
                                "\x28\xB5\x2F\xFD"sv, "LZIP"sv,    "\x1F\x9D"sv,
                                "\x04\x22\x4D\x18"sv, "\x5D\0\0"sv};
    return std::any_of(kMarks.begin(), kMarks.end(),
                       [&](std::string_view mark) { return bytes.starts_with(mark); });
}

bool UnpacksToTar(std::string_view bytes) {
    const std::unique_ptr<archive, FreeArchive> reader(archive_read_new());
    if (!reader)
        throw std::bad_alloc();
    archive_read_support_filter_gzip(reader.get());
    archive_read_support_filter_bzip2(reader.get());
    archive_read_support_filter_xz(reader.get());
    archive_read_support_filter_lzma(reader.get());
    archive_read_support_filter_lzip(reader.get());
    archive_read_support_filter_lz4(reader.get());
    archive_read_support_filter_zstd(reader.get());
    archive_read_support_filter_compress(reader.get());
    archive_read_support_format_raw(reader.get());
    archive_entry* entry = nullptr;
    if (archive_read_open_memory(reader.get(), bytes.data(), bytes.size()) != ARCHIVE_OK ||
        archive_read_next_header(reader.get(), &entry) != ARCHIVE_OK)
        return false;
    std::array<char, 512> head;
    const la_ssize_t size = archive_read_data(reader.get(), head.data(), head.size());
    return size == static_cast<la_ssize_t>(head.size()) && IsTarHeader({head.data(), head.size()});
}

// ---- PDF

// The mark may stand behind some foreign bytes; a text that only speaks of it has no PDF's end.
bool IsPdf(std::string_view bytes) {
    constexpr std::size_t kFarthest = 1024, kTail = 2048;
    const std::size_t at = bytes.substr(0, kFarthest).find("%PDF-");
    if (at == 0 || at == std::string_view::npos)
        return at == 0;
    const std::string_view tail = bytes.substr(bytes.size() - std::min(bytes.size(), kTail));
    return tail.find("startxref") != std::string_view::npos ||
           tail.find("%%EOF") != std::string_view::npos;
}

// ---- Text

// The first bytes as ASCII text, whatever width their characters have.
std::string HeadOf(std::string_view bytes) {
    Charset charset = DetectCharset(bytes.substr(0, kHead));
    charset.wellFormed = false; // the cut may stand within a character
    std::string head = DecodeText(bytes, charset, kHead);
    const std::size_t begin = head.find_first_not_of(" \t\r\n\f\v\0"sv);
    return begin == std::string::npos ? std::string() : head.substr(begin);
}

// The name of the first element, after declarations and comments; small letters, no prefix.
std::string RootOf(std::string_view head) {
    HtmlScanner scanner(head);
    auto what = scanner.Next();
    // Blanks may stand between declaration and root, other text not.
    while (what == HtmlScanner::What::Text &&
           scanner.Text().find_first_not_of(" \t\r\n") == std::string_view::npos)
        what = scanner.Next();
    if (what != HtmlScanner::What::StartTag)
        return {};
    const std::string_view name = scanner.Name();
    return std::string(name.substr(name.rfind(':') + 1));
}

bool StartsWithNoCase(std::string_view text, std::string_view lower) {
    return text.size() >= lower.size() &&
           std::equal(lower.begin(), lower.end(), text.begin(), [](char a, char b) {
               return a == static_cast<char>(std::tolower(static_cast<unsigned char>(b)));
           });
}

constexpr std::array kHtmlEndings{"html"sv, "htm"sv, "xhtml"sv, "xht"sv, "shtml"sv, "shtm"sv};
// Formats of text that may contain tags and mean them as text.
constexpr std::array kTextEndings{
    "txt"sv,   "text"sv, "md"sv,  "markdown"sv, "rst"sv,  "log"sv,  "csv"sv, "tsv"sv,
    "c"sv,     "h"sv,    "cc"sv,  "cpp"sv,      "hpp"sv,  "py"sv,   "js"sv,  "ts"sv,
    "css"sv,   "java"sv, "go"sv,  "rs"sv,       "php"sv,  "jsp"sv,  "asp"sv, "pl"sv,
    "rb"sv,    "sh"sv,   "vue"sv, "tex"sv,      "json"sv, "yaml"sv, "yml"sv, "diff"sv,
    "patch"sv, "adoc"sv, "org"sv, "srt"sv,      "vtt"sv};

// What begins with a tag: HTML, XML, or text that quotes them. Unknown: it is neither.
Kind MarkupKind(std::string_view head, std::string_view ending) {
    if (!head.starts_with('<'))
        return Kind::Unknown;
    const std::string root = RootOf(head);
    const bool declared = head.starts_with("<?xml");
    if (root == "html" || StartsWithNoCase(head, "<!doctype html"))
        return Kind::Html;
    if (head.starts_with("<?php") || head.starts_with("<%"))
        return Kind::Unknown;
    if (root == "document" || root == "document-conten") {
        if (head.find("urn:oasis:names:tc:opendocument:xmlns:office") != std::string_view::npos)
            return Kind::OpenDocument;
    }
    if (declared)
        return Kind::Xml;
    if (IsOneOf(ending, kHtmlEndings))
        return Kind::Html;
    if (root.empty() || IsOneOf(ending, kTextEndings))
        return Kind::Unknown;
    constexpr std::array kHtmlRoots{
        "head"sv, "body"sv, "title"sv, "meta"sv, "script"sv, "style"sv,   "div"sv, "table"sv,
        "p"sv,    "h1"sv,   "h2"sv,    "h3"sv,   "center"sv, "font"sv,    "br"sv,  "a"sv,
        "b"sv,    "ul"sv,   "ol"sv,    "span"sv, "img"sv,    "frameset"sv};
    if (IsOneOf(root, kHtmlRoots))
        return Kind::Html;
    const bool namespaced = head.substr(0, head.find('>')).find("xmlns") != std::string_view::npos;
    if (namespaced || StartsWithNoCase(head, "<!doctype ") || ending == "xml" || ending == "svg" ||
        ending == "xsl" || ending == "xsd" || ending == "rdf" || ending == "rss" || ending == "fb2")
        return Kind::Xml;
    return Kind::Unknown;
}

Kind TextKind(const Source& source) {
    const std::string ending = EndingOf(source.name);
    const std::string head = HeadOf(source.bytes);
    if (head.starts_with("{\\rtf"))
        return Kind::Unknown;
    if (const Kind markup = MarkupKind(head, ending); markup != Kind::Unknown)
        return markup;
    // A mailbox is read as text: as one mail it would be its first message only.
    if (LooksLikeMailbox(source.bytes))
        return Kind::PlainText;
    const bool quotesMail = IsOneOf(ending, kTextEndings) && ending != "txt" && ending != "text";
    if (!quotesMail && LooksLikeMail(source.bytes, ending == "eml"))
        return Kind::Mail;
    return IsOneOf(ending, kHtmlEndings) ? Kind::Html : Kind::PlainText;
}

} // namespace

Kind DetectKind(const Source& source) {
    const std::string_view bytes = source.bytes;
    if (bytes.empty())
        return Kind::PlainText;
    if (bytes.starts_with("PK\3\4"sv) || bytes.starts_with("PK\5\6"sv) ||
        bytes.starts_with("PK\7\10PK\3\4"sv) || bytes.starts_with("PK00PK\3\4"sv))
        return ZipKind(bytes);
    if (IsPdf(bytes))
        return Kind::Pdf;
    if (IsEncryptedOffice(bytes)) // its reader tells that a password is needed
        return OfficeKindByEnding(EndingOf(source.name));
    if (IsTarHeader(bytes) || (IsCompressed(bytes) && UnpacksToTar(bytes)))
        return Kind::Tar;
    if (IsCompressed(bytes) || MediaKind(bytes) != nullptr || !LooksLikeText(bytes))
        return Kind::Unknown;
    return TextKind(source);
}

} // namespace engine
