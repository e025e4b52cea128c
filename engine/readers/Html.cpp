// What the tags of HTML mean for its text.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/HtmlText.h"

#include "engine/readers/Base64.h"
#include "engine/readers/Charset.h"
#include "engine/readers/HtmlEntities.h"
#include "engine/readers/HtmlScanner.h"
#include "engine/readers/Limits.h"
#include "engine/readers/Reader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace engine {
namespace {

enum class Tag : std::uint8_t {
    Other,
    Paragraph, // <p>
    Box,       // stands on lines of its own, as <div>
    Heading,
    Bullets,
    Numbers,
    Item,
    Table,
    Row,
    Cell,
    Preformatted,
    Quote,
    Break,
    Word, // parts words, as <option>
    Image,
    Meta,
    Title,
    TextArea,
    Hidden,        // what it holds is not shown; without an end tag it holds the rest
    HiddenIfWhole, // the same; without an end tag it holds nothing
};

struct Meaning {
    std::string_view name;
    Tag tag;
};

// Sorted by name.
constexpr std::array kMeanings{
    Meaning{"address", Tag::Box},
    Meaning{"annotation", Tag::HiddenIfWhole},
    Meaning{"area", Tag::Image},
    Meaning{"article", Tag::Box},
    Meaning{"aside", Tag::Box},
    Meaning{"blockquote", Tag::Quote},
    Meaning{"body", Tag::Box},
    Meaning{"br", Tag::Break},
    Meaning{"button", Tag::Word},
    Meaning{"caption", Tag::Box},
    Meaning{"center", Tag::Box},
    Meaning{"dd", Tag::Box},
    Meaning{"details", Tag::Box},
    Meaning{"dialog", Tag::Box},
    Meaning{"dir", Tag::Bullets},
    Meaning{"div", Tag::Box},
    Meaning{"dl", Tag::Box},
    Meaning{"dt", Tag::Box},
    Meaning{"fieldset", Tag::Box},
    Meaning{"figcaption", Tag::Box},
    Meaning{"figure", Tag::Box},
    Meaning{"footer", Tag::Box},
    Meaning{"form", Tag::Box},
    Meaning{"h1", Tag::Heading},
    Meaning{"h2", Tag::Heading},
    Meaning{"h3", Tag::Heading},
    Meaning{"h4", Tag::Heading},
    Meaning{"h5", Tag::Heading},
    Meaning{"h6", Tag::Heading},
    Meaning{"head", Tag::Box},
    Meaning{"header", Tag::Box},
    Meaning{"hgroup", Tag::Box},
    Meaning{"hr", Tag::Box},
    Meaning{"html", Tag::Box},
    Meaning{"iframe", Tag::HiddenIfWhole},
    Meaning{"img", Tag::Image},
    Meaning{"legend", Tag::Box},
    Meaning{"li", Tag::Item},
    Meaning{"listing", Tag::Preformatted},
    Meaning{"main", Tag::Box},
    Meaning{"menu", Tag::Bullets},
    Meaning{"meta", Tag::Meta},
    Meaning{"nav", Tag::Box},
    Meaning{"noembed", Tag::HiddenIfWhole},
    Meaning{"noscript", Tag::HiddenIfWhole},
    Meaning{"ol", Tag::Numbers},
    Meaning{"optgroup", Tag::Word},
    Meaning{"option", Tag::Word},
    Meaning{"p", Tag::Paragraph},
    Meaning{"pre", Tag::Preformatted},
    Meaning{"rp", Tag::HiddenIfWhole},
    Meaning{"rt", Tag::Word},
    Meaning{"script", Tag::Hidden},
    Meaning{"search", Tag::Box},
    Meaning{"section", Tag::Box},
    Meaning{"select", Tag::Word},
    Meaning{"style", Tag::Hidden},
    Meaning{"summary", Tag::Box},
    Meaning{"table", Tag::Table},
    Meaning{"td", Tag::Cell},
    Meaning{"template", Tag::HiddenIfWhole},
    Meaning{"textarea", Tag::TextArea},
    Meaning{"th", Tag::Cell},
    Meaning{"title", Tag::Title},
    Meaning{"tr", Tag::Row},
    Meaning{"ul", Tag::Bullets},
    Meaning{"xmp", Tag::Preformatted},
};
static_assert(std::is_sorted(kMeanings.begin(), kMeanings.end(),
                             [](const Meaning& a, const Meaning& b) { return a.name < b.name; }));

Tag MeaningOf(std::string_view name) {
    const auto found =
        std::lower_bound(kMeanings.begin(), kMeanings.end(), name,
                         [](const Meaning& a, std::string_view b) { return a.name < b; });
    return found != kMeanings.end() && found->name == name ? found->tag : Tag::Other;
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// One line: runs of blanks become one.
std::string OneLine(std::string_view text) {
    std::string line;
    for (const char c : text) {
        const bool blank = c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f';
        if (!blank)
            line += c;
        else if (!line.empty() && line.back() != ' ')
            line += ' ';
    }
    if (!line.empty() && line.back() == ' ')
        line.pop_back();
    return line;
}

class HtmlReading {
  public:
    HtmlReading(std::string_view html, Flow& flow, const HtmlParts& parts)
        : m_scanner(html), m_flow(flow), m_parts(parts) {}

    void Run() {
        while (true) {
            switch (m_scanner.Next()) {
            case HtmlScanner::What::End:
                return;
            case HtmlScanner::What::Text:
                Text(m_scanner.Text());
                break;
            case HtmlScanner::What::StartTag:
                Start(MeaningOf(m_scanner.Name()));
                break;
            case HtmlScanner::What::EndTag:
                End(MeaningOf(m_scanner.Name()));
                break;
            }
        }
    }

  private:
    void Text(std::string_view text);
    void Put(std::string_view text);
    void Start(Tag tag);
    void End(Tag tag);
    void Edge();
    void OpenPreformatted();
    void Image();
    void Meta();
    void Title();
    void Field(std::string_view name, const std::string& value);

    HtmlScanner m_scanner;
    Flow& m_flow;
    const HtmlParts& m_parts;
    std::string m_decoded;
    bool m_titleSeen = false;
    bool m_afterPre = false; // a line end straight after <pre> is not shown
};

void HtmlReading::Put(std::string_view text) {
    if (!m_flow.InPreformatted())
        return m_flow.Collapse(text);
    if (std::exchange(m_afterPre, false)) {
        if (text.starts_with("\r\n"))
            text.remove_prefix(2);
        else if (text.starts_with('\n'))
            text.remove_prefix(1);
    }
    m_flow.Text(text);
}

void HtmlReading::Text(std::string_view text) {
    while (true) {
        const std::size_t mark = text.find('&');
        if (mark == std::string_view::npos)
            return Put(text);
        if (mark > 0)
            Put(text.substr(0, mark));
        text.remove_prefix(mark);
        m_decoded.clear();
        const std::size_t length = DecodeReference(text, m_decoded);
        Put(length == 0 ? std::string_view("&") : m_decoded);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
}

// The edge of a box. Inside preformatted text, boxes are the lines of a listing.
void HtmlReading::Edge() {
    if (m_flow.InPreformatted())
        m_flow.EndLine();
    else
        m_flow.EndParagraph();
}

void HtmlReading::OpenPreformatted() {
    m_flow.Open(Block::Preformatted);
    m_afterPre = true;
}

void HtmlReading::Start(Tag tag) {
    switch (tag) {
    case Tag::Other:
        break;
    case Tag::Paragraph:
        if (m_flow.InPreformatted())
            m_flow.EndLine();
        else
            m_flow.Open(Block::Paragraph);
        break;
    case Tag::Box:
        Edge();
        break;
    case Tag::Heading:
        m_flow.Open(Block::Heading, m_scanner.Name()[1] - '0');
        break;
    case Tag::Bullets:
    case Tag::Numbers:
        m_flow.Open(Block::List, tag == Tag::Numbers ? 1 : 0);
        break;
    case Tag::Item:
        m_flow.Open(Block::Item);
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
    case Tag::Preformatted:
        OpenPreformatted();
        break;
    case Tag::Quote:
        m_flow.Open(Block::Quote);
        break;
    case Tag::Break:
        m_flow.Break();
        break;
    case Tag::Word:
        m_flow.Blank();
        break;
    case Tag::Image:
        Image();
        break;
    case Tag::Meta:
        Meta();
        break;
    case Tag::Title:
        Title();
        break;
    case Tag::TextArea:
        Edge();
        if (!m_scanner.SelfClosed())
            Text(m_scanner.RawText(false));
        Edge();
        break;
    case Tag::Hidden:
    case Tag::HiddenIfWhole:
        if (!m_scanner.SelfClosed())
            m_scanner.RawText(tag == Tag::Hidden);
        break;
    }
}

void HtmlReading::End(Tag tag) {
    switch (tag) {
    case Tag::Box:
        Edge();
        break;
    case Tag::Paragraph:
        m_flow.Close(Block::Paragraph);
        break;
    case Tag::Heading:
        m_flow.Close(Block::Heading);
        break;
    case Tag::Bullets:
    case Tag::Numbers:
        m_flow.Close(Block::List);
        break;
    case Tag::Item:
        m_flow.Close(Block::Item);
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
    case Tag::Preformatted:
        m_flow.Close(Block::Preformatted);
        break;
    case Tag::Quote:
        m_flow.Close(Block::Quote);
        break;
    case Tag::Break: // browsers take "</br>" for a line break
        m_flow.Break();
        break;
    case Tag::Word:
        m_flow.Blank();
        break;
    default:
        break;
    }
}

void HtmlReading::Title() {
    if (m_titleSeen || m_scanner.SelfClosed())
        return;
    m_titleSeen = true;
    Field("title", OneLine(DecodeReferences(m_scanner.RawText(false))));
}

void HtmlReading::Field(std::string_view name, const std::string& value) {
    if (m_parts.fields == nullptr || value.empty())
        return;
    // In the midst of a text the words before it come first, whether pictures are wanted or not.
    m_flow.EndParagraph();
    m_parts.fields->Field(name, value);
}

void HtmlReading::Meta() {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 10> kFields{{
        {"author", "author"},
        {"dc.creator", "author"},
        {"dcterms.creator", "author"},
        {"description", "description"},
        {"dc.description", "description"},
        {"keywords", "keywords"},
        {"dc.subject", "subject"},
        {"dcterms.subject", "subject"},
        {"subject", "subject"},
        {"dc.title", "title"},
    }};
    const std::string name = Lower(m_scanner.Attribute("name"));
    const auto* const found = std::find_if(kFields.begin(), kFields.end(),
                                           [&](const auto& field) { return field.first == name; });
    if (found == kFields.end())
        return;
    Field(found->second, OneLine(m_scanner.Attribute("content")));
}

void HtmlReading::Image() {
    const std::string text = m_scanner.Attribute("alt");
    std::string mime, bytes;
    if (m_parts.wantsPictures) {
        const std::string address = m_scanner.Attribute("src");
        const bool got = address.starts_with("data:")
                             ? DecodeDataAddress(address, mime, bytes)
                             : m_parts.picture && m_parts.picture(address, mime, bytes);
        if (!got)
            bytes.clear();
    }
    m_flow.Picture(mime, bytes, text);
}

} // namespace

void ReadHtmlText(std::string_view utf8, Flow& flow, const HtmlParts& parts) {
    HtmlReading(utf8, flow, parts).Run();
}

std::string DeclaredHtmlCharset(std::string_view bytes) {
    constexpr std::size_t kHead = 8192;
    const std::string_view head = bytes.substr(0, kHead);
    const auto valueAfter = [](const std::string& text, std::string_view key) {
        const std::size_t at = Lower(text).find(key);
        if (at == std::string::npos)
            return std::string();
        std::size_t from = at + key.size();
        while (from < text.size() &&
               (text[from] == ' ' || text[from] == '"' || text[from] == '\'' || text[from] == '='))
            ++from;
        return text.substr(from, text.find_first_of("\"' ;?>", from) - from);
    };
    if (head.starts_with("<?xml")) {
        const std::string prolog(head.substr(0, head.find('>')));
        if (std::string name = valueAfter(prolog, "encoding"); !name.empty())
            return name;
    }
    HtmlScanner scanner(head);
    for (auto what = scanner.Next(); what != HtmlScanner::What::End; what = scanner.Next()) {
        if (what != HtmlScanner::What::StartTag)
            continue;
        if (scanner.Name() == "body")
            break;
        if (scanner.Name() == "script" || scanner.Name() == "style")
            scanner.RawText(true);
        if (scanner.Name() != "meta")
            continue;
        std::string name = scanner.Attribute("charset");
        if (name.empty() && Lower(scanner.Attribute("http-equiv")) == "content-type")
            name = valueAfter(scanner.Attribute("content"), "charset");
        if (!name.empty())
            return name;
    }
    return {};
}

void ReadHtml(const Source& source, DocumentSink& sink) {
    const Charset charset = DetectCharset(source.bytes, DeclaredHtmlCharset(source.bytes));
    Flow flow(sink);
    HtmlParts parts;
    parts.fields = &sink;
    parts.wantsPictures = sink.WantsPictures();
    if (charset.wellFormed) {
        ReadHtmlText(source.bytes.substr(charset.bomBytes), flow, parts);
    } else {
        if (source.bytes.size() > kMaxMemberBytes)
            sink.Incomplete("text beyond 256 MB");
        ReadHtmlText(DecodeText(source.bytes, charset, kMaxMemberBytes), flow, parts);
    }
    flow.Finish();
}

} // namespace engine
