// Reads DOCX, DOTX and their kin.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Charset.h"
#include "engine/readers/DocxStyles.h"
#include "engine/readers/Embedded.h"
#include "engine/readers/HtmlText.h"
#include "engine/readers/Limits.h"
#include "engine/readers/OpenXml.h"
#include "engine/readers/Reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>
#include <vector>

namespace engine {
namespace {

constexpr int kDeepestList = 9;

enum class Tag : std::uint8_t {
    Other,
    Skipped,
    Paragraph,
    ParagraphProperties,
    Style,
    Outline,
    ListLevel,
    Numbering,
    Text,
    Tabulator,
    Break,
    NoBreakHyphen,
    SoftHyphen,
    Symbol,
    Field,
    TextFrame,
    Denominator,
    Table,
    Row,
    Cell,
    TextBox,
    Note,
    Drawing,
    DrawingName,
    Picture,
    OldPicture,
    OldShape,
    WordArt,
    Chunk,
};

struct Meaning {
    std::string_view name;
    Tag tag;
};

// Sorted by name. Names alone decide: the few that other vocabularies share mean the same there.
constexpr std::array kMeanings{
    Meaning{"altChunk", Tag::Chunk},
    Meaning{"blip", Tag::Picture},
    Meaning{"br", Tag::Break},
    Meaning{"comment", Tag::Note},
    Meaning{"cr", Tag::Break},
    Meaning{"del", Tag::Skipped},
    Meaning{"den", Tag::Denominator},
    Meaning{"docPr", Tag::DrawingName},
    Meaning{"drawing", Tag::Drawing},
    Meaning{"endnote", Tag::Note},
    Meaning{"fldChar", Tag::Field},
    Meaning{"footnote", Tag::Note},
    Meaning{"framePr", Tag::TextFrame},
    Meaning{"ilvl", Tag::ListLevel},
    Meaning{"imagedata", Tag::OldPicture},
    Meaning{"moveFrom", Tag::Skipped},
    Meaning{"noBreakHyphen", Tag::NoBreakHyphen},
    Meaning{"numId", Tag::Numbering},
    Meaning{"outlineLvl", Tag::Outline},
    Meaning{"p", Tag::Paragraph},
    Meaning{"pPr", Tag::ParagraphProperties},
    Meaning{"pPrChange", Tag::Skipped},
    Meaning{"pStyle", Tag::Style},
    Meaning{"ptab", Tag::Tabulator},
    Meaning{"rPr", Tag::Skipped},
    Meaning{"rt", Tag::Skipped}, // the reading above a word
    Meaning{"sdtEndPr", Tag::Skipped},
    Meaning{"sdtPr", Tag::Skipped},
    Meaning{"sectPr", Tag::Skipped},
    Meaning{"shape", Tag::OldShape},
    Meaning{"softHyphen", Tag::SoftHyphen},
    Meaning{"sym", Tag::Symbol},
    Meaning{"t", Tag::Text},
    Meaning{"tab", Tag::Tabulator},
    Meaning{"tabs", Tag::Skipped},
    Meaning{"tbl", Tag::Table},
    Meaning{"tblGrid", Tag::Skipped},
    Meaning{"tblPr", Tag::Skipped},
    Meaning{"tc", Tag::Cell},
    Meaning{"tcPr", Tag::Skipped},
    Meaning{"textpath", Tag::WordArt},
    Meaning{"tr", Tag::Row},
    Meaning{"trPr", Tag::Skipped},
    Meaning{"txbxContent", Tag::TextBox},
};
static_assert(std::is_sorted(kMeanings.begin(), kMeanings.end(),
                             [](const Meaning& a, const Meaning& b) { return a.name < b.name; }));

Tag MeaningOf(std::string_view name) {
    const auto found =
        std::lower_bound(kMeanings.begin(), kMeanings.end(), name,
                         [](const Meaning& a, std::string_view b) { return a.name < b; });
    return found != kMeanings.end() && found->name == name ? found->tag : Tag::Other;
}

// One part that holds paragraphs: the body, a header, the notes.
class DocxText final : public XmlHandler {
  public:
    DocxText(OpenXmlPackage& package, const DocxStyles& styles, std::string_view part, Flow& flow)
        : m_package(package), m_styles(styles), m_relationships(package.RelationshipsOf(part)),
          m_flow(flow) {}

    bool Start(const XmlElement& element) override;
    void End(std::string_view space, std::string_view name) override;
    void Text(std::string_view utf8) override;
    // Closes lists that are still open.
    void EndPart() { EndLists(); }
    [[nodiscard]] const Relationships& References() const { return m_relationships; }

  private:
    struct Paragraph {
        ParagraphForm form;
        bool opened = false;
        bool initial = false; // a large first letter: the next paragraph is the rest of its word
    };
    struct Lists { // of the body, a cell or a text box
        int depth = 0;
        int numbering = -1;
    };

    void OpenParagraph();
    void OpenItem(const ParagraphForm& form);
    void EndLists();
    void OpenContainer(Block block);
    void CloseContainer(Block block);
    void Field(const std::string& type);
    void Symbol(const std::string& code);
    void Put(std::string_view text);
    void PutPicture(const std::string& id);
    void EndDrawing();
    void Chunk(const std::string& part);
    // The code of a field is not shown, also not what stands in place of a field within it.
    [[nodiscard]] bool Shown() const { return m_fieldCodes == 0; }

    OpenXmlPackage& m_package;
    const DocxStyles& m_styles;
    Relationships m_relationships;
    Flow& m_flow;
    AlternateContent m_alternate;
    std::vector<Paragraph> m_paragraphs; // a text box stands inside a paragraph
    ParagraphForm m_noForm;              // takes what stands outside of paragraphs
    std::vector<Lists> m_lists{1};
    std::vector<bool> m_fields; // whether each open field has come to its result
    int m_fieldCodes = 0;       // how many have not
    std::string m_alternativeText;
    bool m_afterInitial = false; // the paragraph before was a large first letter
    int m_inText = 0;
};

void DocxText::OpenParagraph() {
    if (m_paragraphs.empty() || m_paragraphs.back().opened)
        return;
    m_paragraphs.back().opened = true;
    if (std::exchange(m_afterInitial, false))
        return;
    const ParagraphForm form = m_styles.Resolve(m_paragraphs.back().form);
    constexpr int kBodyText = 9;
    constexpr int kLowestHeading = 6;
    if (form.outline >= 0 && form.outline < kBodyText) {
        EndLists();
        m_flow.Open(Block::Heading, std::min(form.outline + 1, kLowestHeading));
    } else if (form.numbering > 0) {
        OpenItem(form);
        m_flow.Open(Block::Paragraph);
    } else {
        EndLists();
        m_flow.Open(Block::Paragraph);
    }
}

void DocxText::OpenItem(const ParagraphForm& form) {
    const int level = std::clamp(form.listLevel, 0, kDeepestList - 1);
    Lists& lists = m_lists.back();
    if (lists.numbering != form.numbering)
        EndLists();
    for (; lists.depth > level + 1; --lists.depth)
        m_flow.Close(Block::List);
    while (lists.depth < level + 1) {
        m_flow.Open(Block::List, m_styles.IsNumbered(form.numbering, lists.depth) ? 1 : 0);
        ++lists.depth;
    }
    lists.numbering = form.numbering;
    m_flow.Open(Block::Item);
}

void DocxText::EndLists() {
    for (Lists& lists = m_lists.back(); lists.depth > 0; --lists.depth)
        m_flow.Close(Block::List);
}

void DocxText::OpenContainer(Block block) {
    m_flow.Open(block);
    m_lists.emplace_back();
}

void DocxText::CloseContainer(Block block) {
    EndLists();
    if (m_lists.size() > 1)
        m_lists.pop_back();
    m_flow.Close(block);
}

void DocxText::Field(const std::string& type) {
    if (type == "begin") {
        m_fields.push_back(false);
        ++m_fieldCodes;
    } else if (!m_fields.empty() && (type == "separate" || type == "end")) {
        m_fieldCodes -= m_fields.back() ? 0 : 1;
        m_fields.back() = true;
        if (type == "end")
            m_fields.pop_back();
    }
}

void DocxText::Symbol(const std::string& code) {
    unsigned value = 0;
    std::from_chars(code.data(), code.data() + code.size(), value, 16);
    // Private characters are places in a symbol font; they mean nothing as text.
    if (value < 0x20 || (value >= 0xE000 && value < 0xF900))
        return;
    std::string text;
    AppendUtf8(text, value);
    Put(text);
}

void DocxText::Put(std::string_view text) {
    if (!Shown())
        return;
    OpenParagraph();
    m_flow.Text(text);
}

void DocxText::PutPicture(const std::string& id) {
    OpenParagraph();
    m_package.PutPicture(m_relationships.TargetOf(id), m_alternativeText, m_flow);
    m_alternativeText.clear();
}

void DocxText::EndDrawing() {
    if (!m_alternativeText.empty())
        PutPicture({});
}

// A document of another kind that the program puts in when it opens this one.
void DocxText::Chunk(const std::string& part) {
    const bool html = part.ends_with("htm") || part.ends_with("html");
    const std::string bytes = m_package.Load(part, kMaxMemberBytes);
    if (bytes.empty() || (!html && !part.ends_with(".txt"))) {
        m_package.Sink().Incomplete("the document inside it, " + part + ", is not read");
        return;
    }
    EndLists();
    const Charset charset = DetectCharset(bytes, html ? DeclaredHtmlCharset(bytes) : "");
    const std::string text = DecodeText(bytes, charset, kMaxMemberBytes);
    if (html) {
        ReadHtmlText(text, m_flow, {});
        return;
    }
    m_flow.Open(Block::Preformatted);
    m_flow.Text(text);
    m_flow.Close(Block::Preformatted);
}

bool DocxText::Start(const XmlElement& element) {
    if (!m_alternate.Start(element.name))
        return false;
    const auto number = [&] { return ToNumber(element.Attribute("val"), -1); };
    ParagraphForm& form = m_paragraphs.empty() ? m_noForm : m_paragraphs.back().form;
    switch (MeaningOf(element.name)) {
    case Tag::Other:
    case Tag::Drawing:
    case Tag::ParagraphProperties:
        break;
    case Tag::Skipped:
        return false;
    case Tag::Paragraph:
        m_paragraphs.emplace_back();
        break;
    case Tag::Style:
        form.style = element.Attribute("val");
        break;
    case Tag::Outline:
        form.outline = number();
        break;
    case Tag::ListLevel:
        form.listLevel = number();
        break;
    case Tag::Numbering:
        form.numbering = number();
        break;
    case Tag::Text:
        ++m_inText;
        break;
    case Tag::Tabulator:
        Put("\t");
        break;
    case Tag::Break:
        if (Shown())
            m_flow.Break();
        break;
    case Tag::NoBreakHyphen:
        Put("\xE2\x80\x91");
        break;
    case Tag::SoftHyphen:
        Put("\xC2\xAD");
        break;
    case Tag::Symbol:
        Symbol(element.Attribute("char"));
        break;
    case Tag::TextFrame:
        if (const std::string cap = element.Attribute("dropCap"); !m_paragraphs.empty())
            m_paragraphs.back().initial = cap == "drop" || cap == "margin";
        break;
    case Tag::Field:
        Field(element.Attribute("fldCharType"));
        break;
    case Tag::Denominator: // of a formula: no part of the number above it
        m_flow.Blank();
        break;
    case Tag::Table:
        EndLists();
        m_flow.Open(Block::Table);
        break;
    case Tag::Row:
        m_flow.Open(Block::Row);
        break;
    case Tag::Cell:
        OpenContainer(Block::Cell);
        break;
    case Tag::TextBox:
        OpenParagraph();
        m_flow.BeginAside();
        m_lists.emplace_back();
        break;
    case Tag::Note: {
        const std::string type = element.Attribute("type");
        if (!type.empty() && type != "normal") // the line between text and notes
            return false;
        OpenContainer(Block::Note);
        break;
    }
    case Tag::DrawingName:
        m_alternativeText = element.Attribute("descr");
        break;
    case Tag::OldShape:
        m_alternativeText = element.Attribute("alt");
        break;
    case Tag::Picture:
        PutPicture(element.Attribute("embed"));
        break;
    case Tag::OldPicture:
        PutPicture(element.Attribute("/relationships", "id"));
        break;
    case Tag::WordArt:
        m_flow.BeginAside();
        m_flow.Collapse(element.Attribute("string"));
        m_flow.EndAside();
        break;
    case Tag::Chunk:
        Chunk(m_relationships.TargetOf(element.Attribute("/relationships", "id")));
        break;
    }
    return true;
}

void DocxText::End(std::string_view /*space*/, std::string_view name) {
    m_alternate.End(name);
    switch (MeaningOf(name)) {
    case Tag::ParagraphProperties:
        OpenParagraph();
        break;
    case Tag::Paragraph:
        OpenParagraph();
        m_afterInitial = m_paragraphs.back().initial;
        if (!m_afterInitial)
            m_flow.EndParagraph();
        m_paragraphs.pop_back();
        // A field's code does not go on in the next paragraph; a damaged one must not hide it.
        m_fields.clear();
        m_fieldCodes = 0;
        break;
    case Tag::Text:
        --m_inText;
        break;
    case Tag::Table:
        m_flow.Close(Block::Table);
        break;
    case Tag::Row:
        m_flow.Close(Block::Row);
        break;
    case Tag::Cell:
        CloseContainer(Block::Cell);
        break;
    case Tag::TextBox:
        EndLists();
        m_lists.pop_back();
        m_flow.EndAside();
        break;
    case Tag::Note:
        CloseContainer(Block::Note);
        break;
    case Tag::Drawing:
    case Tag::OldShape:
        EndDrawing();
        break;
    default:
        break;
    }
}

void DocxText::Text(std::string_view utf8) {
    if (m_inText > 0)
        Put(utf8);
}

} // namespace

void ReadDocx(const Source& source, DocumentSink& sink, MemberSink& attachments) {
    OpenXmlPackage package(source, sink);
    const std::string body = package.MainPart("word/document.xml");
    package.ReadProperties();
    const Relationships references = package.RelationshipsOf(body);
    DocxStyles styles;
    styles.Read(package, references);
    Flow flow(sink);
    const auto read = [&](const std::string& part) {
        DocxText text(package, styles, part, flow);
        package.Parse(part, text);
        text.EndPart();
        flow.EndParagraph();
        ReadDrawings(package, text.References(), flow);
    };
    const auto readAll = [&](std::string_view type) {
        for (const Relationship& reference : references.all)
            if (reference.type == type)
                read(reference.target);
    };
    readAll("header");
    read(body);
    for (const char* type : {"footnotes", "endnotes", "footer", "comments"})
        readAll(type);
    flow.Finish();
    DeliverEmbedded(package, attachments);
}

} // namespace engine
