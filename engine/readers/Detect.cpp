// Tells what kind of document a file is.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/BiffRecords.h"
#include "engine/readers/ArchiveFormat.h"
#include "engine/readers/Charset.h"
#include "engine/readers/CompoundFile.h"
#include "engine/readers/HtmlScanner.h"
#include "engine/readers/HtmlText.h"
#include "engine/readers/MailSniff.h"
#include "engine/readers/MediaKind.h"
#include "engine/readers/Reader.h"
#include "engine/readers/WordPerfect.h"
#include "engine/readers/ZipFile.h"

#include <algorithm>
#include <array>
#include <cctype>
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

// Parts of such packages may be cut into pieces, the list of content types too.
bool IsXps(const ZipFile& zip) {
    return std::any_of(zip.Members().begin(), zip.Members().end(), [](const ZipMember& member) {
        const std::string_view name = member.name;
        return name.ends_with(".fdseq") || name.ends_with(".fdseq/[0].piece");
    });
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
    if (has("ms-excel.sheet.binary.macroEnabled.main"))
        return Kind::Xlsb;
    if (has("presentationml.presentation.main+xml") || has("presentationml.template.main+xml") ||
        has("presentationml.slideshow.main+xml") ||
        has("ms-powerpoint.presentation.macroEnabled") ||
        has("ms-powerpoint.slideshow.macroEnabled") || has("ms-powerpoint.template.macroEnabled"))
        return Kind::Pptx;
    if (has("fixeddocumentsequence+xml") || IsXps(zip))
        return Kind::Xps;
    if (zip.Find("word/document.xml") != nullptr)
        return Kind::Docx;
    if (zip.Find("xl/workbook.xml") != nullptr)
        return Kind::Xlsx;
    if (zip.Find("xl/workbook.bin") != nullptr)
        return Kind::Xlsb;
    if (zip.Find("ppt/presentation.xml") != nullptr)
        return Kind::Pptx;
    return Kind::Zip;
}

bool HasZipEnd(std::string_view bytes) {
    constexpr std::size_t kEndRecord = 22, kLongestComment = 65535;
    return bytes.substr(bytes.size() - std::min(bytes.size(), kEndRecord + kLongestComment))
               .find("PK\5\6"sv) != std::string_view::npos;
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

// ---- Compound files

// By the stream that a program keeps its document in. Of a damaged file the name decides.
Kind CompoundKind(const Source& source) {
    const std::string ending = EndingOf(source.name);
    try {
        const CompoundFile file(source.bytes);
        if (file.IsProtected()) // its reader tells that a password is needed
            return OfficeKindByEnding(ending);
        if (file.Has("WordDocument"))
            return Kind::Doc;
        if (file.Has("Workbook") || file.Has("Book"))
            return Kind::Xls;
        if (file.Has("PowerPoint Document") || file.Has("PP40"))
            return Kind::Ppt;
        if (file.Has("__properties_version1.0"))
            return Kind::Msg;
        for (const CompoundFile::Entry& entry : file.List())
            if (entry.name.starts_with("__substg1.0_"))
                return Kind::Msg;
    } catch (const ReadError&) {
        if (ending == "doc" || ending == "dot")
            return Kind::Doc;
        if (ending == "xls" || ending == "xlt" || ending == "xla")
            return Kind::Xls;
        if (ending == "ppt" || ending == "pot" || ending == "pps")
            return Kind::Ppt;
        return ending == "msg" ? Kind::Msg : Kind::Unknown;
    }
    return IsOldOfficeDocument(source) ? Kind::WordPerfect : Kind::Unknown;
}

// Word processing as it was before compound files came up, by its mark and version.
bool IsBareDoc(std::string_view bytes) {
    const bool middle = bytes.size() > 3 && bytes[2] >= 0x65 && bytes[2] <= 0x69 && bytes[3] == 0;
    return bytes.starts_with("\xDB\xA5\x2D\x00"sv) || (middle && bytes.starts_with("\xDC\xA5"sv));
}

// ---- Archives

// Zip packages are told before. Unknown: neither an archive nor compressed.
Kind ArchiveKind(std::string_view bytes) {
    if (const Packing packing = PackingOf(bytes); packing != Packing::None)
        return UnpacksToTar(bytes, packing) ? Kind::Tar : Kind::Compressed;
    const ArchiveFormat format = FormatOf(bytes);
    if (format == ArchiveFormat::None || IsCodeLibrary(bytes))
        return Kind::Unknown;
    return format == ArchiveFormat::Tar ? Kind::Tar : Kind::Archive;
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

// Pictures inside may stand as bytes, so that it does not always look like text.
bool IsRtf(std::string_view bytes) {
    const std::size_t begin = bytes.substr(0, kHead).find_first_not_of("\xEF\xBB\xBF \t\r\n");
    return begin != std::string_view::npos && bytes.substr(begin).starts_with("{\\rtf");
}

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

constexpr std::array kWebArchiveEndings{"mht"sv, "mhtml"sv};
constexpr std::array kMailboxEndings{"mbox"sv, "mbx"sv};
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
    if (root == "fictionbook")
        return Kind::Fb2;
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
    if (const Kind markup = MarkupKind(head, ending); markup != Kind::Unknown)
        return markup;
    if (LooksLikeWebArchive(source.bytes, IsOneOf(ending, kWebArchiveEndings)))
        return Kind::Mht;
    const bool quotesMail = IsOneOf(ending, kTextEndings) && ending != "txt" && ending != "text";
    // A mail may have a mailbox attached.
    if (!quotesMail && ending != "eml" &&
        LooksLikeMailbox(source.bytes, IsOneOf(ending, kMailboxEndings)))
        return Kind::Mbox;
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
    if (IsRtf(bytes))
        return Kind::Rtf;
    if (bytes.starts_with("ITSF"sv))
        return Kind::Chm;
    if (CompoundFile::Recognises(bytes))
        return CompoundKind(source);
    if (IsBareDoc(bytes))
        return Kind::Doc;
    if (BiffVersion(bytes) != 0)
        return Kind::Xls;
    if (IsOldOfficeDocument(source))
        return Kind::WordPerfect;
    if (const Kind archive = ArchiveKind(bytes); archive != Kind::Unknown)
        return archive;
    if (const char* kind = MediaKind(bytes); kind != nullptr)
        return IsTagged(kind) ? Kind::Media : Kind::Unknown;
    if (!LooksLikeText(bytes)) // what stands before a zip archive may be anything
        return EndingOf(source.name) == "zip" && HasZipEnd(bytes) ? ZipKind(bytes) : Kind::Unknown;
    return TextKind(source);
}

} // namespace engine
