// Reads FictionBook 2.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Flow.h"
#include "engine/readers/Limits.h"
#include "engine/readers/Reader.h"
#include "engine/readers/XmlSax.h"

#include <algorithm>
#include <array>
#include <string>

namespace engine {
namespace {

enum class Tag : std::uint8_t {
    Other,
    Skipped,
    TitleInfo,
    PublishInfo,
    Author,
    NamePart,
    BookTitle,
    Keywords,
    Annotation,
    Publisher,
    Sequence,
    Body,
    Section,
    Title,
    Subtitle,
    Paragraph,
    Verse,
    Stanza,
    Quote,
    Table,
    Row,
    Cell,
    Image,
};

struct Meaning {
    std::string_view name;
    Tag tag;
};

// Sorted by name.
constexpr std::array kMeanings{
    Meaning{"annotation", Tag::Annotation},
    Meaning{"author", Tag::Author},
    Meaning{"binary", Tag::Skipped},
    Meaning{"body", Tag::Body},
    Meaning{"book-title", Tag::BookTitle},
    Meaning{"cite", Tag::Quote},
    Meaning{"coverpage", Tag::Skipped},
    Meaning{"document-info", Tag::Skipped},
    Meaning{"epigraph", Tag::Quote},
    Meaning{"first-name", Tag::NamePart},
    Meaning{"image", Tag::Image},
    Meaning{"keywords", Tag::Keywords},
    Meaning{"last-name", Tag::NamePart},
    Meaning{"middle-name", Tag::NamePart},
    Meaning{"nickname", Tag::NamePart},
    Meaning{"p", Tag::Paragraph},
    Meaning{"publish-info", Tag::PublishInfo},
    Meaning{"publisher", Tag::Publisher},
    Meaning{"section", Tag::Section},
    Meaning{"sequence", Tag::Sequence},
    Meaning{"src-title-info", Tag::Skipped},
    Meaning{"stanza", Tag::Stanza},
    Meaning{"stylesheet", Tag::Skipped},
    Meaning{"subtitle", Tag::Subtitle},
    Meaning{"table", Tag::Table},
    Meaning{"td", Tag::Cell},
    Meaning{"text-author", Tag::Paragraph},
    Meaning{"th", Tag::Cell},
    Meaning{"title", Tag::Title},
    Meaning{"title-info", Tag::TitleInfo},
    Meaning{"tr", Tag::Row},
    Meaning{"v", Tag::Verse},
};
static_assert(std::is_sorted(kMeanings.begin(), kMeanings.end(),
                             [](const Meaning& a, const Meaning& b) { return a.name < b.name; }));

Tag MeaningOf(std::string_view name) {
    const auto* const found =
        std::lower_bound(kMeanings.begin(), kMeanings.end(), name,
                         [](const Meaning& a, std::string_view b) { return a.name < b; });
    return found != kMeanings.end() && found->name == name ? found->tag : Tag::Other;
}

// One line: runs of blanks become one.
std::string OneLine(std::string_view text) {
    std::string line;
    for (const char c : text) {
        if (c != ' ' && c != '\n' && c != '\t' && c != '\r')
            line += c;
        else if (!line.empty() && line.back() != ' ')
            line += ' ';
    }
    if (line.ends_with(' '))
        line.pop_back();
    return line;
}

class Book final : public XmlHandler {
  public:
    explicit Book(DocumentSink& sink) : m_sink(sink), m_flow(sink) {}
    [[nodiscard]] bool Start(const XmlElement& element) override;
    void End(std::string_view space, std::string_view name) override;
    void Text(std::string_view utf8) override;
    void Finish() { m_flow.Finish(); }
    [[nodiscard]] bool SawBody() const { return m_sawBody; }

  private:
    bool StartDescription(Tag tag, const XmlElement& element);
    void EndDescription(Tag tag);
    bool StartBody(Tag tag, const XmlElement& element);
    void EndBody(Tag tag);
    void OpenText(Block block, int level = 0);

    DocumentSink& m_sink;
    Flow m_flow;
    bool m_sawBody = false;
    int m_bodies = 0;     // within them
    bool m_notes = false; // the body holds notes
    int m_sections = 0;   // within them
    int m_titles = 0;     // within them
    int m_inInfo = 0;     // within the book's description
    std::string m_value, m_name;
};

bool Book::StartDescription(Tag tag, const XmlElement& element) {
    switch (tag) {
    case Tag::Skipped:
        return false;
    case Tag::TitleInfo:
    case Tag::PublishInfo:
        ++m_inInfo;
        break;
    case Tag::Author:
        m_name.clear();
        break;
    case Tag::Sequence:
        m_sink.Field("series", OneLine(element.Attribute("name")));
        break;
    case Tag::Paragraph: // of the annotation
    case Tag::Verse:
        m_value += ' ';
        return true;
    default:
        break;
    }
    if (tag != Tag::Other)
        m_value.clear();
    return true;
}

void Book::EndDescription(Tag tag) {
    const auto field = [this](const char* name) {
        if (m_inInfo > 0)
            m_sink.Field(name, OneLine(m_value));
    };
    switch (tag) {
    case Tag::TitleInfo:
    case Tag::PublishInfo:
        --m_inInfo;
        break;
    case Tag::NamePart:
        m_name += ' ' + m_value;
        break;
    case Tag::Author:
        m_value = m_name;
        field("author");
        break;
    case Tag::BookTitle:
        field("title");
        break;
    case Tag::Keywords:
        field("keywords");
        break;
    case Tag::Annotation:
        field("comments");
        break;
    case Tag::Publisher:
        field("publisher");
        break;
    default:
        break;
    }
}

// A title's paragraphs are lines of one heading.
void Book::OpenText(Block block, int level) {
    if (m_titles > 0)
        m_flow.EndLine();
    else
        m_flow.Open(block, level);
}

bool Book::StartBody(Tag tag, const XmlElement& element) {
    constexpr int kLowestHeading = 6;
    const int level = std::min(m_sections + 1, kLowestHeading);
    switch (tag) {
    case Tag::Skipped:
        return false;
    case Tag::Body:
        ++m_bodies;
        break;
    case Tag::Section:
        if (m_notes && m_sections == 0)
            m_flow.Open(Block::Note);
        ++m_sections;
        break;
    case Tag::Title:
        if (m_titles++ == 0)
            m_flow.Open(m_notes ? Block::Paragraph : Block::Heading, level);
        break;
    case Tag::Subtitle:
        OpenText(Block::Heading, std::min(level + 1, kLowestHeading));
        break;
    case Tag::Paragraph:
    case Tag::Stanza:
        OpenText(Block::Paragraph);
        break;
    case Tag::Verse:
        m_flow.EndLine();
        break;
    case Tag::Quote:
        m_flow.Open(Block::Quote);
        break;
    case Tag::Table:
        m_flow.Open(Block::Table);
        break;
    case Tag::Row:
        m_flow.Open(Block::Row);
        break;
    case Tag::Cell:
        m_flow.Open(Block::Cell);
        break;
    case Tag::Image:
        m_flow.Picture({}, {}, element.Attribute("alt"));
        break;
    default:
        break;
    }
    return true;
}

void Book::EndBody(Tag tag) {
    switch (tag) {
    case Tag::Body:
        m_flow.EndParagraph();
        --m_bodies;
        m_notes = false;
        break;
    case Tag::Section:
        --m_sections;
        m_flow.EndParagraph();
        if (m_notes && m_sections == 0)
            m_flow.Close(Block::Note);
        break;
    case Tag::Title:
        if (--m_titles == 0)
            m_flow.EndParagraph();
        break;
    case Tag::Subtitle:
    case Tag::Paragraph:
    case Tag::Stanza:
        if (m_titles == 0)
            m_flow.EndParagraph();
        break;
    case Tag::Verse:
        m_flow.EndLine();
        break;
    case Tag::Quote:
        m_flow.Close(Block::Quote);
        break;
    case Tag::Table:
        m_flow.Close(Block::Table);
        break;
    case Tag::Row:
        m_flow.Close(Block::Row);
        break;
    case Tag::Cell:
        m_flow.Close(Block::Cell);
        break;
    default:
        break;
    }
}

bool Book::Start(const XmlElement& element) {
    const Tag tag = MeaningOf(element.name);
    if (tag == Tag::Body && m_bodies == 0) {
        const std::string name = element.Attribute("name");
        m_sawBody = true;
        m_notes = name == "notes" || name == "comments" || name == "footnotes";
    }
    return tag == Tag::Body || m_bodies > 0 ? StartBody(tag, element)
                                            : StartDescription(tag, element);
}

void Book::End(std::string_view /*space*/, std::string_view name) {
    const Tag tag = MeaningOf(name);
    if (m_bodies > 0)
        EndBody(tag);
    else
        EndDescription(tag);
}

void Book::Text(std::string_view utf8) {
    if (m_bodies > 0)
        m_flow.Collapse(utf8);
    else
        m_value += utf8;
}

} // namespace

void ReadFb2(const Source& source, DocumentSink& sink) {
    Book book(sink);
    const std::string problem = ReadXmlInto(source.bytes, book);
    book.Finish();
    if (!book.SawBody())
        throw ReadError(ReadState::Damaged,
                        problem.empty() ? "holds no book" : "holds no book: " + problem);
    if (!problem.empty())
        sink.Incomplete(problem);
}

} // namespace engine
