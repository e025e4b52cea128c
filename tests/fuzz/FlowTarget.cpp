// Flow makes a proper tree of any calls, and loses no text.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Flow.h"
#include "tests/fuzz/CheckedSinks.h"
#include "tests/fuzz/Script.h"
#include "tests/fuzz/Target.h"

namespace fuzz {
namespace {

using engine::Block;

// Also keeps to what Flow's own contract says of its tree.
class TreeSink final : public engine::DocumentSink {
  public:
    void Field(std::string_view, std::string_view) override {}
    void Text(std::string_view utf8) override {
        Require(!m_open.empty(), "text outside of any block");
        for (const char c : utf8)
            m_letters += c == 'x' ? 1 : 0;
    }
    void Open(Block block, int level) override {
        m_checked.Open(block, level);
        const bool top = m_open.empty();
        Require(top || (m_open.back() != Block::Paragraph && m_open.back() != Block::Heading &&
                        m_open.back() != Block::Preformatted),
                "a block within a paragraph");
        Require(block != Block::Item || (!top && m_open.back() == Block::List),
                "an item without a list");
        Require(block != Block::Row || (!top && m_open.back() == Block::Table),
                "a row without a table");
        Require(block != Block::Cell || (!top && m_open.back() == Block::Row),
                "a cell without a row");
        m_open.push_back(block);
    }
    void Close(Block block) override {
        m_checked.Close(block);
        m_open.pop_back();
    }
    void Break() override {}
    void Incomplete(std::string_view reason) override { m_checked.Incomplete(reason); }
    void RequireWhole(std::size_t letters) const {
        m_checked.RequireAllClosed();
        Require(m_letters == letters, "text is lost or came twice");
    }

  private:
    CheckedSink m_checked;
    std::vector<Block> m_open;
    std::size_t m_letters = 0;
};

} // namespace

void FuzzFlow(const Target&, std::string_view input) {
    TreeSink sink;
    std::size_t letters = 0;
    engine::Flow flow(sink);
    for (Script script(input); !script.AtEnd();) {
        const std::uint8_t byte = script.Byte();
        const auto block = static_cast<Block>(byte / 16 % 11);
        switch (byte % 16) {
        case 0:
        case 1:
        case 2:
            flow.Open(block, static_cast<int>(script.Byte() % 7));
            break;
        case 3:
        case 4:
            flow.Close(block);
            break;
        case 5:
        case 6:
            flow.Text("x");
            ++letters;
            break;
        case 7:
            flow.Collapse("x x \n x");
            letters += 3;
            break;
        case 8:
            flow.Text(" \t\n");
            break;
        case 9:
            flow.Blank();
            break;
        case 10:
            flow.Break();
            break;
        case 11:
            flow.EndLine();
            break;
        case 12:
            flow.EndParagraph();
            break;
        case 13:
            flow.BeginAside();
            break;
        case 14:
            flow.EndAside();
            break;
        default:
            flow.Picture("image/png", "png", byte & 0x80 ? "x" : "");
            letters += byte & 0x80 ? 1 : 0;
        }
    }
    flow.Finish();
    sink.RequireWhole(letters);
}

} // namespace fuzz
