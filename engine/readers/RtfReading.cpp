// Groups and control words of RTF.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/RtfReading.h"

#include "engine/readers/Limits.h"

#include <algorithm>
#include <utility>

namespace engine {
namespace {

constexpr int kMacPage = 10000;

// The words of a header or footer, to tell whether the same one has been there before.
class WordsSink final : public DocumentSink {
  public:
    std::string words;
    void Field(std::string_view, std::string_view) override {}
    void Text(std::string_view utf8) override { words += utf8; }
    void Open(Block, int) override { words += '\n'; }
    void Close(Block) override {}
    void Break() override { words += '\n'; }
    void Incomplete(std::string_view) override {}
};

} // namespace

// ---- Groups

void RtfReading::OpenGroup() {
    m_fallback = 0;
    EndCharacter();
    if (m_groups.size() > kMaxRtfDepth) {
        ++m_tooDeep;
        m_wasTooDeep = true;
        return;
    }
    m_groups.push_back(Top());
    Top().job = {};
    if (Top().into == Into::StyleName)
        m_styles.Begin(0);
}

void RtfReading::CloseGroup() {
    m_fallback = 0;
    EndCharacter();
    if (m_tooDeep > 0) {
        --m_tooDeep;
        return;
    }
    if (m_groups.size() == 1)
        return;
    if (Top().job.word != RtfWord::Other)
        EndJob(Top().job);
    m_groups.pop_back();
    m_pageKnown = false;
}

void RtfReading::SkipGroup() {
    m_scanner.SkipGroup();
    CloseGroup();
}

void RtfReading::EndJob(const RtfMeaning& job) {
    switch (job.word) {
    case RtfWord::Field:
        CurrentFlow().Field(RtfFieldName(job.argument), TrimRtfValue(m_value));
        break;
    case RtfWord::PropertyName:
        m_propertyName = TrimRtfValue(m_value);
        std::transform(m_propertyName.begin(), m_propertyName.end(), m_propertyName.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
        break;
    case RtfWord::PropertyValue:
        if (!m_propertyName.empty())
            CurrentFlow().Field(m_propertyName, TrimRtfValue(m_value));
        break;
    case RtfWord::ListText:
        Blocks().SetListText(m_value, job.argument != 0);
        break;
    case RtfWord::ShapeName:
        m_shapeName = TrimRtfValue(m_value);
        break;
    case RtfWord::ShapeValue:
        ShapeValue();
        break;
    case RtfWord::Picture:
        --m_openPictures;
        PutPicture();
        break;
    case RtfWord::Header:
        EndHeader();
        break;
    case RtfWord::Note:
    case RtfWord::TextBox:
        Flush();
        Blocks().EndAll();
        CurrentFlow().Close(Block::Note);
        Blocks().EndAside();
        break;
    default:
        break;
    }
}

// Words that say what their group is for. Answers whether it was one.
bool RtfReading::GroupWord(RtfMeaning meaning) {
    if (meaning.word < RtfWord::Through)
        return false;
    Group& group = Top();
    // Neither the document as a whole nor a group that has another purpose.
    if (m_groups.size() <= 2 || m_tooDeep > 0 || group.job.word != RtfWord::Other)
        return true;
    group.job = meaning;
    switch (meaning.word) {
    case RtfWord::Skip:
        SkipGroup();
        break;
    case RtfWord::Look:
        group.into = Into::Nothing;
        break;
    case RtfWord::Fonts:
        group.into = Into::FontName;
        m_value.clear();
        break;
    case RtfWord::Styles:
        group.into = Into::StyleName;
        m_value.clear();
        break;
    case RtfWord::Field:
    case RtfWord::PropertyName:
    case RtfWord::PropertyValue:
    case RtfWord::ListText:
    case RtfWord::ShapeName:
    case RtfWord::ShapeValue:
        if (meaning.word == RtfWord::ListText && m_html)
            return SkipGroup(), true;
        group.into = Into::Value;
        m_value.clear();
        break;
    case RtfWord::ShapeProperty:
        group.into = Into::Nothing;
        m_shapeName.clear();
        break;
    case RtfWord::Picture:
        Flush();
        group.into = Into::Picture;
        m_picture.Begin(m_sink.WantsPictures());
        ++m_openPictures;
        break;
    case RtfWord::Header:
        BeginHeader();
        break;
    case RtfWord::Note:
    case RtfWord::TextBox:
        Flush();
        Blocks().BeginAside();
        if (meaning.word == RtfWord::Note)
            CurrentFlow().Open(Block::Note);
        group.into = Into::Body;
        group.form = {};
        break;
    case RtfWord::Alternatives:
        if (const std::size_t at = m_scanner.Rest().find_first_not_of(" \r\n");
            at != std::string_view::npos && m_scanner.Rest()[at] == '{') {
            while (m_scanner.Next() != RtfScanner::What::Open) {
            }
            m_scanner.SkipGroup();
        }
        break;
    case RtfWord::HtmlTag:
        if (!m_html)
            return SkipGroup(), true;
        group.into = Into::Body;
        group.htmlOff = false;
        break;
    default:
        break;
    }
    return true;
}

void RtfReading::BeginHeader() {
    if (m_header || m_html) {
        Top().job = {};
        return SkipGroup();
    }
    Flush();
    m_header = std::make_unique<Header>(m_sink.WantsPictures());
    Top().into = Into::Body;
    Top().form = {};
}

// Every section may repeat the headers of the one before.
void RtfReading::EndHeader() {
    Flush();
    m_header->blocks.EndAll();
    m_header->flow.Finish();
    std::unique_ptr<Header> header = std::move(m_header);
    WordsSink words;
    header->buffer.Replay(words);
    if (!m_headerTexts.insert(std::move(words.words)).second)
        return;
    if (!m_bodyBlocks.IsBetween()) {
        m_lateHeaders.push_back(std::move(header));
        return;
    }
    m_flow.Finish();
    header->buffer.Replay(m_sink);
}

// ---- Words

void RtfReading::Word() {
    const RtfMeaning meaning = RtfMeaningOf(m_scanner.Text());
    const int number = m_scanner.Number(1);
    if (std::exchange(m_starred, false) && meaning.word == RtfWord::Other && m_groups.size() > 2) {
        SkipGroup();
        return;
    }
    if (meaning.word == RtfWord::Other || GroupWord(meaning))
        return;
    if (meaning.word < RtfWord::PlainParagraph)
        TextWord(meaning, number);
    else
        PropertyWord(meaning, number);
}

void RtfReading::TextWord(RtfMeaning meaning, int number) {
    if (meaning.word == RtfWord::Unicode)
        return PutUnit(m_scanner.Number(0));
    if (meaning.word == RtfWord::FallbackLength) {
        Top().fallbackLength = std::clamp(number, 0, 16);
        return;
    }
    if (meaning.word == RtfWord::Character) {
        if (m_fallback > 0)
            --m_fallback;
        else
            PutCharacter(static_cast<char32_t>(meaning.argument));
        return;
    }
    m_fallback = 0;
    EndCharacter();
    if (Top().into == Into::Value)
        m_value += ' ';
    if (Top().into != Into::Body)
        return;
    if (m_html)
        return NewLine();
    const RtfForm& form = Top().form;
    switch (meaning.word) {
    case RtfWord::Line:
        NewLine();
        break;
    case RtfWord::Paragraph:
        EndParagraph();
        break;
    case RtfWord::Cell:
    case RtfWord::NestedCell:
        Flush();
        Blocks().EndCell(meaning.word == RtfWord::Cell ? 1 : std::max(form.tableLevel, 2));
        break;
    case RtfWord::Row:
    case RtfWord::NestedRow:
        Flush();
        Blocks().EndRow(meaning.word == RtfWord::Row ? 1 : std::max(form.tableLevel, 2));
        break;
    case RtfWord::AnnounceRow:
        if (form.tableLevel <= 1)
            Blocks().AnnounceRow();
        break;
    default:
        break;
    }
}

void RtfReading::PropertyWord(RtfMeaning meaning, int number) {
    Group& group = Top();
    RtfForm& form = group.form;
    const Into into = group.into;
    switch (meaning.word) {
    case RtfWord::PlainParagraph:
        form = {};
        break;
    case RtfWord::PlainCharacter:
        group.font = kNoFont;
        group.deleted = false;
        m_pageKnown = false;
        break;
    case RtfWord::Font:
        number = m_scanner.Number(0);
        if (into == Into::FontName)
            m_fonts.Begin(number);
        group.font = into == Into::FontName ? kNoFont : number;
        m_pageKnown = false;
        break;
    case RtfWord::Deleted:
        group.deleted = number != 0;
        break;
    case RtfWord::Style:
        form.style = m_scanner.Number(0);
        if (into == Into::StyleName)
            m_styles.Begin(form.style);
        break;
    case RtfWord::Outline:
        form.outline = m_scanner.Number(0);
        if (into == Into::StyleName)
            m_styles.SetOutline(form.outline);
        break;
    case RtfWord::BasedOn:
        if (into == Into::StyleName)
            m_styles.SetBase(m_scanner.Number(0));
        break;
    case RtfWord::InTable:
        form.inTable = number != 0;
        break;
    case RtfWord::TableLevel:
        form.tableLevel = number;
        break;
    case RtfWord::List:
        form.list = number;
        break;
    case RtfWord::ListLevel:
        form.listLevel = m_scanner.Number(0);
        break;
    case RtfWord::HtmlOff:
        group.htmlOff = m_html && number != 0;
        break;
    case RtfWord::CodePage:
        // Programs on a Macintosh that say "ANSI" mean the Western page, whatever they add.
        if (meaning.argument > 0)
            m_codePage = meaning.argument;
        else if (number > 1 && (number != kMacPage || m_codePage == kMacPage))
            m_codePage = number;
        m_pageKnown = false;
        break;
    case RtfWord::DefaultFont:
        m_defaultFont = m_scanner.Number(0);
        break;
    case RtfWord::FontCharset:
        if (into == Into::FontName)
            m_fonts.SetCharset(m_scanner.Number(0));
        break;
    case RtfWord::FontCodePage:
        if (into == Into::FontName)
            m_fonts.SetCodePage(m_scanner.Number(0));
        break;
    case RtfWord::FromHtml:
        m_html = m_html || (number != 0 && m_groups.size() == 2);
        break;
    case RtfWord::PictureType:
        m_picture.SetType(meaning.argument == 0 ? "image/png" : "image/jpeg");
        break;
    default:
        break;
    }
}

void RtfReading::Symbol(char c) {
    switch (c) {
    case '*':
        m_starred = true;
        return;
    case '\\':
    case '{':
    case '}':
        return Bytes({&c, 1}, false);
    case '\r':
    case '\n':
        return TextWord({RtfWord::Paragraph}, 1);
    case '\t':
        return TextWord({RtfWord::Character, '\t'}, 1);
    case '~':
        return TextWord({RtfWord::Character, 0xA0}, 1);
    case '-':
        return TextWord({RtfWord::Character, 0xAD}, 1);
    case '_':
        return TextWord({RtfWord::Character, 0x2011}, 1);
    default:
        return;
    }
}

} // namespace engine
