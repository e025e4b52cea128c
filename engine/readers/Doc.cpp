// Reads DOC and DOT, and what came before them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/CodePage.h"
#include "engine/readers/CompoundFile.h"
#include "engine/readers/DocAsides.h"
#include "engine/readers/DocFlow.h"
#include "engine/readers/DocFormats.h"
#include "engine/readers/DocPieces.h"
#include "engine/readers/DocStyles.h"
#include "engine/readers/LittleEndian.h"
#include "engine/readers/OfficeArt.h"
#include "engine/readers/OleObjects.h"
#include "engine/readers/OleProperties.h"
#include "engine/readers/Reader.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace engine {
namespace {

// Characters that mean something else than themselves.
enum Mark : char32_t {
    kPicture = 0x01,
    kCellEnd = 0x07,
    kTab = 0x09,
    kLineEnd = 0x0B,
    kPageEnd = 0x0C,
    kParagraphEnd = 0x0D,
    kColumnEnd = 0x0E,
    kFieldBegin = 0x13,
    kFieldResult = 0x14,
    kFieldEnd = 0x15,
    kNoBreakHyphen = 0x1E,
    kSoftHyphen = 0x1F,
    kFirstPlain = 0x20,
};

// The streams that a document is spread over.
struct DocStreams {
    std::string_view document, tables, data;
};

class DocReading {
  public:
    DocReading(const DocHeader& header, const DocStreams& streams, DocumentSink& sink)
        : m_header(header), m_streams(streams), m_pieces(header, streams.tables),
          m_formats(header, streams.tables, streams.data),
          m_styles(header, streams.tables, m_formats), m_sink(sink), m_flow(sink),
          m_left(streams.document.size()) {
        ChoosePages();
    }

    void Run() {
        m_asides = ReadDocAsides(m_header, m_streams.tables);
        Margins(false);
        const std::uint64_t end = m_header.BeginOf(DocStory::Footnotes);
        ReadText(0, end, m_asides.data(), m_asides.data() + m_asides.size());
        for (const DocAside& aside : m_asides)
            if (aside.anchor == DocAside::kNowhere)
                ReadAside(aside);
        Margins(true);
        const std::uint64_t boxes = m_header.BeginOf(DocStory::HeaderTextBoxes);
        ReadText(boxes, m_header.TextLength(), nullptr, nullptr);
        m_flow.Finish();
        if (m_missing)
            m_sink.Incomplete("a part of the text is missing");
        else if (m_pieces.Damaged())
            m_sink.Incomplete("the table of the text is damaged");
    }

  private:
    void ChoosePages();
    void Margins(bool footers);
    void ReadAside(const DocAside& aside);
    // The characters from begin to end, and the asides that hang on them.
    void ReadText(std::uint64_t begin, std::uint64_t end, const DocAside* aside,
                  const DocAside* asidesEnd);
    void ReadPiece(const DocPiece& piece, std::uint32_t from, std::uint32_t to, DocFlow& out,
                   const DocAside*& aside, const DocAside* asidesEnd);
    void Take(char32_t character, const DocCharacterForm& form, DocFlow& out);
    void Field(char32_t mark);
    void EndParagraph(const DocPiece& piece, std::uint32_t at, bool cell, DocFlow& out);
    void Picture(std::int32_t at, DocFlow& out);
    [[nodiscard]] const DocCodePage& PageOf(const DocCharacterForm& form);

    const DocHeader& m_header;
    const DocStreams m_streams;
    const DocPieces m_pieces;
    const DocFormats m_formats;
    const DocStyles m_styles;
    DocumentSink& m_sink;
    Flow m_flow;
    std::vector<DocAside> m_asides;
    std::vector<bool> m_fields; // whether each open field has come to its result
    int m_fieldCodes = 0;       // how many have not
    // Pieces of a hostile document may all stand for the same bytes.
    std::uint64_t m_left;
    bool m_missing = false;
    std::set<std::int32_t> m_pictures; // read already
    unsigned m_page = kWesternPage;
    std::vector<unsigned> m_fontPages; // by the font's number; 0: none in particular
    std::map<unsigned, DocCodePage> m_pages;
};

// Since 1997, single bytes are Western. Before, they are what the language or the font asks for.
void DocReading::ChoosePages() {
    if (m_header.age == DocAge::New)
        return;
    constexpr unsigned kMacRoman = 10000;
    m_page = m_header.macintosh ? kMacRoman : CodePageOfLanguage(m_header.language);
    if (m_header.age != DocAge::Middle)
        return;
    const DocHeader::Place place = m_header.PlaceOf(DocTable::Fonts);
    std::string_view fonts =
        Slice(m_streams.tables, std::uint64_t{place.at} + 2, place.size < 2 ? 0 : place.size - 2);
    while (fonts.size() > 5) {
        const unsigned charset = U8(fonts, 4);
        m_fontPages.push_back(charset == 0 ? 0 : CodePageOfFontCharset(charset));
        fonts = Slice(fonts, std::size_t{U8(fonts, 0)} + 1);
    }
}

const DocCodePage& DocReading::PageOf(const DocCharacterForm& form) {
    unsigned page = m_page;
    const auto font = static_cast<std::size_t>(form.font);
    if (form.font >= 0 && font < m_fontPages.size() && m_fontPages[font] != 0)
        page = m_fontPages[font];
    return m_pages.try_emplace(page, page).first->second;
}

// Sections repeat the headers of those before.
void DocReading::Margins(bool footers) {
    std::set<std::string> known;
    std::uint64_t left = m_streams.document.size(); // bytes compared, as for m_left
    for (const DocMargin& margin : ReadDocMargins(m_header, m_streams.tables)) {
        if (margin.footer != footers)
            continue;
        std::string content;
        for (std::size_t i = m_pieces.Find(margin.begin); i < m_pieces.All().size(); ++i) {
            const DocPiece& piece = m_pieces.All()[i];
            if (piece.begin >= margin.end)
                break;
            const std::uint64_t from = std::max<std::uint64_t>(piece.begin, margin.begin);
            const std::uint64_t to = std::min<std::uint64_t>(piece.end, margin.end);
            const std::uint64_t size = piece.wide ? 2 : 1;
            const std::string_view part =
                Slice(m_streams.document, piece.at + (from - piece.begin) * size,
                      std::min((to - from) * size, left));
            content += part;
            left -= part.size();
        }
        if (known.insert(std::move(content)).second)
            ReadText(margin.begin, margin.end, nullptr, nullptr);
    }
}

void DocReading::ReadAside(const DocAside& aside) {
    const auto fields = std::exchange(m_fields, {});
    const int codes = std::exchange(m_fieldCodes, 0);
    m_flow.BeginAside();
    if (aside.note)
        m_flow.Open(Block::Note);
    if (!aside.words.empty()) {
        m_flow.Open(Block::Paragraph);
        m_flow.Collapse(aside.words);
        m_flow.EndParagraph();
    }
    ReadText(aside.begin, aside.end, nullptr, nullptr);
    if (aside.note)
        m_flow.Close(Block::Note);
    m_flow.EndAside();
    m_fields = fields;
    m_fieldCodes = codes;
}

void DocReading::ReadText(std::uint64_t begin, std::uint64_t end, const DocAside* aside,
                          const DocAside* asidesEnd) {
    DocFlow out(m_flow, m_styles);
    m_fields.clear();
    m_fieldCodes = 0;
    const std::vector<DocPiece>& pieces = m_pieces.All();
    for (std::size_t i = m_pieces.Find(begin); i < pieces.size() && pieces[i].begin < end; ++i) {
        const DocPiece& piece = pieces[i];
        const auto from = static_cast<std::uint32_t>(std::max<std::uint64_t>(piece.begin, begin));
        const auto to = static_cast<std::uint32_t>(std::min<std::uint64_t>(piece.end, end));
        ReadPiece(piece, from, to, out, aside, asidesEnd);
    }
    m_missing = m_missing || (begin < end && (pieces.empty() || pieces.back().end < end));
    out.End();
}

void DocReading::ReadPiece(const DocPiece& piece, std::uint32_t from, std::uint32_t to,
                           DocFlow& out, const DocAside*& aside, const DocAside* asidesEnd) {
    const std::uint32_t size = piece.wide ? 2 : 1;
    DocCharacterForm change; // what the piece says of all its characters
    const auto apply = [&change](DocSprm what, std::string_view value) {
        change.Apply(what, value);
    };
    TakeShortSprm(piece.change, apply);
    ForEachSprm(m_pieces.ChangesOf(piece.change), m_header.age, apply);
    DocCharacterForm form;
    std::uint32_t formEnd = 0;
    char32_t lead = 0; // the first half of a character
    for (std::uint32_t i = from; i < to; ++i) {
        const std::uint64_t place = piece.at + std::uint64_t{i - piece.begin} * size;
        if (place + size > m_streams.document.size() || m_left < size) {
            m_missing = true;
            return;
        }
        m_left -= size;
        const auto at = static_cast<std::uint32_t>(place);
        if (at >= formEnd || i == from)
            form = m_formats.CharacterAt(at, formEnd);
        for (; aside != asidesEnd && aside->anchor <= i; ++aside)
            if (!form.deleted)
                out.Defer([this, aside] { ReadAside(*aside); });
        char32_t unit = piece.wide ? U16(m_streams.document, at) : U8(m_streams.document, at);
        if (unit == kParagraphEnd || unit == kCellEnd || unit == kPageEnd) {
            // A deleted mark joins paragraphs; cells stay apart.
            if (unit == kCellEnd || !(form.deleted || change.deleted))
                EndParagraph(piece, at, unit == kCellEnd, out);
            continue;
        }
        if (form.deleted || change.deleted)
            continue;
        if (piece.wide) {
            const bool low = unit >= 0xDC00 && unit < 0xE000;
            if (lead != 0 && low)
                unit = 0x10000 + ((lead - 0xD800) << 10) + (unit - 0xDC00);
            lead = unit >= 0xD800 && unit < 0xDC00 ? unit : 0;
        } else if (unit >= 0x80) {
            const DocCodePage& page = PageOf(form);
            const auto byte = static_cast<std::uint8_t>(unit);
            unit = lead != 0           ? page.Character(static_cast<std::uint8_t>(lead), byte)
                   : page.IsLead(byte) ? 0
                                       : page.Character(byte);
            lead = unit == 0 && lead == 0 ? byte : 0;
        } else if (lead != 0) {
            unit = PageOf(form).Character(static_cast<std::uint8_t>(lead),
                                          static_cast<std::uint8_t>(unit));
            lead = 0;
        }
        if (lead == 0)
            Take(unit, form, out);
    }
}

void DocReading::EndParagraph(const DocPiece& piece, std::uint32_t at, bool cell, DocFlow& out) {
    DocParagraphForm form = m_formats.ParagraphAt(at);
    TakeShortSprm(piece.change,
                  [&form](DocSprm what, std::string_view value) { form.Apply(what, value); });
    m_formats.Apply(m_pieces.ChangesOf(piece.change), form);
    // A field's code does not go on in the next paragraph; a damaged one must not hide it.
    m_fields.clear();
    m_fieldCodes = 0;
    out.EndParagraph(form, cell);
}

void DocReading::Field(char32_t mark) {
    if (mark == kFieldBegin) {
        m_fields.push_back(false);
        ++m_fieldCodes;
    } else if (!m_fields.empty()) {
        m_fieldCodes -= m_fields.back() ? 0 : 1;
        m_fields.back() = true;
        if (mark == kFieldEnd)
            m_fields.pop_back();
    }
}

void DocReading::Take(char32_t character, const DocCharacterForm& form, DocFlow& out) {
    if (character == kFieldBegin || character == kFieldResult || character == kFieldEnd)
        return Field(character);
    if (m_fieldCodes > 0)
        return;
    if (form.symbol != 0)
        character = form.symbol;
    switch (character) {
    case kPicture:
        return Picture(form.picture, out);
    case kLineEnd:
    case kColumnEnd:
        return out.Break();
    case kNoBreakHyphen:
        return out.Put(U'\u2011');
    case kSoftHyphen:
        return out.Put(U'\u00AD');
    default:
        break;
    }
    // Private characters are places in a symbol font; they mean nothing as text.
    const bool isPrivate = character >= 0xE000 && character < 0xF900;
    if (character == kTab || (character >= kFirstPlain && !isPrivate))
        out.Put(character);
}

// What describes the picture.
void DocReading::Picture(std::int32_t at, DocFlow& out) {
    if (at < 0 || !m_pictures.insert(at).second)
        return;
    constexpr std::uint16_t kNamedPicture = 0x66;
    std::string_view picture = Slice(m_streams.data, static_cast<std::uint32_t>(at));
    picture = picture.substr(0, U32(picture, 0));
    std::string_view drawing = Slice(picture, U16(picture, 4));
    if (U16(picture, 6) == kNamedPicture)
        drawing = Slice(drawing, std::size_t{U8(drawing, 0)} + 1);
    for (const OfficeShape& shape : ReadOfficeShapes(drawing)) {
        for (const std::string& words : {shape.wordArt, shape.description})
            if (!words.empty())
                out.Defer([this, words] { ReadAside({0, false, 0, 0, words}); });
    }
}

void ReadDocument(const DocStreams& streams, DocumentSink& sink) {
    const DocHeader header = ReadDocHeader(streams.document);
    if (header.encrypted)
        throw ReadError(ReadState::Encrypted, "needs a password");
    DocReading(header, streams, sink).Run();
}

} // namespace

void ReadDoc(const Source& source, DocumentSink& sink, MemberSink& attachments) {
    if (!CompoundFile::Recognises(source.bytes))
        return ReadDocument({source.bytes, source.bytes, {}}, sink);
    const CompoundFile file(source.bytes);
    if (file.IsProtected())
        throw ReadError(ReadState::Encrypted, "needs a password");
    const std::string document = file.Stream("WordDocument").value_or("");
    const DocHeader header = ReadDocHeader(document);
    if (header.encrypted)
        throw ReadError(ReadState::Encrypted, "needs a password");
    ReadOleProperties(file, sink);
    const std::string data = file.Stream("Data").value_or("");
    std::optional<std::string> tables;
    if (header.age == DocAge::New) {
        tables = file.Stream(header.firstTable ? "1Table" : "0Table");
        if (!tables) // the header names the wrong one
            tables = file.Stream(header.firstTable ? "0Table" : "1Table");
    } else {
        tables = document;
    }
    ReadDocument({document, tables.value_or(""), data}, sink);
    OleObjects objects(attachments, sink);
    for (const CompoundFile::Entry& entry : file.List("ObjectPool"))
        if (entry.storage)
            objects.Take(file, "ObjectPool/" + entry.name);
}

} // namespace engine
