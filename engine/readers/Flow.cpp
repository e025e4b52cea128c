// Nesting, blanks and asides.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Flow.h"

#include "engine/readers/EventBuffer.h"
#include "engine/readers/Limits.h"

#include <algorithm>
#include <utility>

namespace engine {
namespace {

constexpr std::size_t kFlushAt = std::size_t{64} * 1024;
constexpr int kMostBreaks = 20; // in a row; more say nothing
constexpr std::size_t kNone = static_cast<std::size_t>(-1);
constexpr std::size_t kMostParents = 2; // that a block brings along: table and row, row and cell

bool HoldsTextOnly(Block block) {
    return block == Block::Paragraph || block == Block::Heading || block == Block::Preformatted;
}

bool IsTablePart(Block block) {
    return block == Block::Table || block == Block::Row || block == Block::Cell;
}

// Whether a Close of block may not look further out than around.
bool Bars(Block around, Block block) {
    if (block == Block::Row || block == Block::Cell)
        return around == Block::Table || around == Block::Note || around == Block::Page;
    if (block == Block::Table)
        return around == Block::Note || around == Block::Page;
    if (block == Block::Page || block == Block::Note)
        return false;
    return IsTablePart(around) || around == Block::Note || around == Block::Page;
}

constexpr std::array<bool, 256> kBlanks = [] {
    std::array<bool, 256> blanks{};
    for (const char c : {' ', '\n', '\t', '\r', '\f'})
        blanks[static_cast<unsigned char>(c)] = true;
    return blanks;
}();

bool IsBlank(char c) {
    return kBlanks[static_cast<unsigned char>(c)];
}

} // namespace

// What surrounds an aside, to go on with behind it.
struct Flow::Aside {
    std::unique_ptr<EventBuffer> buffer;
    DocumentSink* out;
    std::size_t base, shown;
    std::string text;
    std::vector<std::unique_ptr<EventBuffer>> pending;
    bool ready, lineBegun, blank;
    int breaks;
};

Flow::Flow(DocumentSink& sink) : m_sink(sink), m_out(&sink) {}
Flow::~Flow() = default;

bool Flow::OnlyText() const {
    return m_stack.size() > m_base && HoldsTextOnly(m_stack.back().block);
}

bool Flow::InPreformatted() const {
    return m_stack.size() > m_base && m_stack.back().block == Block::Preformatted;
}

bool Flow::IsOpen(Block block) const {
    return Find(block) != kNone;
}

std::size_t Flow::Find(Block block) const {
    for (std::size_t i = m_stack.size(); i-- > m_base;) {
        if (m_stack[i].block == block)
            return i;
        if (Bars(m_stack[i].block, block))
            return kNone;
    }
    return kNone;
}

void Flow::FlushText() {
    if (m_text.empty())
        return;
    m_out->Text(m_text);
    m_text.clear();
}

void Flow::ShowAll() {
    for (; m_shown < m_stack.size(); ++m_shown)
        m_out->Open(m_stack[m_shown].block, m_stack[m_shown].level);
}

void Flow::Push(Block block, int level) {
    m_stack.push_back({block, level});
    if (block == Block::Cell || block == Block::Page)
        ShowAll();
    m_ready = false;
    m_lineBegun = false;
    m_blank = false;
    m_breaks = 0;
}

void Flow::Pop() {
    FlushText();
    const Entry entry = m_stack.back();
    m_stack.pop_back();
    if (m_shown > m_stack.size()) {
        --m_shown;
        m_out->Close(entry.block);
    }
    m_ready = false;
    m_lineBegun = false;
    m_blank = false;
    m_breaks = 0;
    if (HoldsTextOnly(entry.block))
        ReplayAsides();
}

void Flow::CloseTo(std::size_t depth) {
    while (m_stack.size() > depth)
        Pop();
}

void Flow::EndParagraph() {
    if (OnlyText())
        Pop();
    else if (m_ready) { // text straight inside an item or a cell
        FlushText();
        m_blank = false;
        m_breaks = m_lineBegun ? 1 : m_breaks;
        m_lineBegun = false;
        m_ready = false;
    }
}

// Closes what may not stay open around block and opens what has to be there.
void Flow::OpenParents(Block block) {
    if (block == Block::Item || block == Block::Row || block == Block::Cell) {
        const Block parent = block == Block::Item  ? Block::List
                             : block == Block::Row ? Block::Table
                                                   : Block::Row;
        const std::size_t found = Find(parent);
        if (found != kNone) {
            CloseTo(found + 1);
            return;
        }
        OpenParents(parent);
        Push(parent, 0);
        return;
    }
    if (m_stack.size() <= m_base)
        return;
    const Block around = m_stack.back().block;
    if (around == Block::Table || around == Block::Row) {
        OpenParents(Block::Cell);
        Push(Block::Cell, 0);
    } else if (around == Block::List && block != Block::List) {
        Push(Block::Item, 0);
    }
}

void Flow::Open(Block block, int level) {
    EndParagraph();
    FlushText();
    if (m_stack.size() + kMostParents >= kMaxBlockDepth) {
        ++m_ignored[static_cast<std::size_t>(block)];
        return;
    }
    OpenParents(block);
    Push(block, level);
}

void Flow::Close(Block block) {
    if (std::uint32_t& ignored = m_ignored[static_cast<std::size_t>(block)]; ignored > 0) {
        --ignored;
        EndParagraph();
        return;
    }
    const std::size_t found = Find(block);
    if (found != kNone)
        CloseTo(found);
}

void Flow::ReadyForText() {
    if (m_stack.size() <= m_base || !HoldsTextOnly(m_stack.back().block)) {
        const bool inside = m_stack.size() > m_base;
        const Block around = inside ? m_stack.back().block : Block::Page;
        if (around == Block::List) {
            Push(Block::Item, 0);
        } else if (around == Block::Table || around == Block::Row) {
            OpenParents(Block::Cell);
            Push(Block::Cell, 0);
        } else if (around == Block::Page || around == Block::Quote || !inside) {
            Push(Block::Paragraph, 0);
        }
    }
    ShowAll();
    m_ready = true;
}

void Flow::Text(std::string_view utf8) {
    if (utf8.empty())
        return;
    if (!m_ready)
        ReadyForText();
    if (m_breaks > 0) {
        FlushText();
        for (; m_breaks > 0; --m_breaks)
            m_out->Break();
        m_blank = false;
    }
    if (m_blank) {
        m_text += ' ';
        m_blank = false;
    }
    m_lineBegun = true;
    if (m_text.size() + utf8.size() >= kFlushAt) {
        FlushText();
        if (utf8.size() >= kFlushAt) {
            m_out->Text(utf8);
            return;
        }
    }
    m_text.append(utf8);
}

void Flow::Collapse(std::string_view utf8) {
    const char* at = utf8.data();
    const char* const end = at + utf8.size();
    while (at != end) {
        if (IsBlank(*at)) {
            m_blank = m_lineBegun;
            do
                ++at;
            while (at != end && IsBlank(*at));
            continue;
        }
        const char* from = at;
        // A single blank within the text is taken along with the words around it.
        while (at != end && !(IsBlank(*at) && (*at != ' ' || at + 1 == end || IsBlank(at[1]))))
            ++at;
        Text({from, static_cast<std::size_t>(at - from)});
    }
}

void Flow::Blank() {
    m_blank = m_lineBegun;
}

void Flow::Break() {
    const bool inText = m_lineBegun || m_breaks > 0;
    if (!inText || m_breaks >= kMostBreaks)
        return;
    ++m_breaks;
    m_blank = false;
    m_lineBegun = false;
}

void Flow::EndLine() {
    if (m_lineBegun)
        Break();
}

void Flow::Field(std::string_view name, std::string_view value) {
    EndParagraph();
    FlushText();
    m_out->Field(name, value);
}

void Flow::Picture(std::string_view mime, std::string_view bytes,
                   std::string_view alternativeText) {
    Blank();
    FlushText(); // also where pictures are not wanted: what follows must not come before the text
    if (!bytes.empty())
        m_out->Picture(mime, bytes, alternativeText);
    Collapse(alternativeText);
    Blank();
}

void Flow::BeginAside() {
    if (m_asides.size() >= kMaxAsideDepth) {
        ++m_flatAsides;
        EndParagraph();
        return;
    }
    Aside aside{std::make_unique<EventBuffer>(m_sink.WantsPictures()),
                m_out,
                m_base,
                m_shown,
                std::move(m_text),
                std::move(m_pending),
                m_ready,
                m_lineBegun,
                m_blank,
                m_breaks};
    m_out = aside.buffer.get();
    m_base = m_shown = m_stack.size();
    m_text.clear();
    m_pending.clear();
    m_ready = m_lineBegun = m_blank = false;
    m_breaks = 0;
    m_asides.push_back(std::move(aside));
}

void Flow::EndAside() {
    if (m_flatAsides > 0) {
        --m_flatAsides;
        EndParagraph();
        return;
    }
    if (m_asides.empty())
        return;
    CloseTo(m_base);
    FlushText();
    ReplayAsides();
    Aside aside = std::move(m_asides.back());
    m_asides.pop_back();
    m_out = aside.out;
    m_base = aside.base;
    m_shown = aside.shown;
    m_text = std::move(aside.text);
    m_pending = std::move(aside.pending);
    m_ready = aside.ready;
    m_lineBegun = aside.lineBegun;
    m_blank = aside.blank;
    m_breaks = aside.breaks;
    if (!aside.buffer->Empty())
        m_pending.push_back(std::move(aside.buffer));
    if (!OnlyText()) {
        EndParagraph();
        ReplayAsides();
    }
}

void Flow::ReplayAsides() {
    if (m_pending.empty())
        return;
    ShowAll();
    const auto pending = std::exchange(m_pending, {});
    for (const auto& buffer : pending)
        buffer->Replay(*m_out);
}

void Flow::Finish() {
    while (!m_asides.empty())
        EndAside();
    CloseTo(0);
    FlushText();
    ReplayAsides();
}

} // namespace engine
