// Renders a document as HTML with its hits marked, word numbers and all.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/text/WordingSink.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

struct HtmlMarks {
    std::string beforeHit; // "%%ThisHit%%" in them becomes the hit's number from 1
    std::string afterHit;
    std::string footer;
    std::string note; // shown at the top, plain text; empty: none
};

// Everything of the document is escaped; no script, no address of another place survives. Tags
// are balanced whatever the reader does.
class HtmlWriter final : public WordingSink {
  public:
    using Out = std::function<void(std::string_view html)>;
    // hits: word numbers, ascending. out gets the page piece by piece.
    HtmlWriter(Tokenizer& tokenizer, WordRule rule, std::vector<std::uint32_t> hits, HtmlMarks marks,
               Out out);

    void Begin(std::string_view title);
    void Incomplete(std::string_view reason) override;
    [[nodiscard]] bool WantsPictures() const override { return true; }
    void End();

  protected:
    void OnText(std::string_view text, const std::vector<Word>& words,
                std::uint64_t firstWord) override;
    void OnOpen(Block block, int level) override;
    void OnClose(Block block) override;
    void OnBreak() override;
    void OnPicture(std::string_view mime, std::string_view bytes,
                   std::string_view alternativeText) override;
    void OnFieldBegin(std::string_view name) override;
    void OnFieldEnd(std::string_view name, std::string_view value) override;

  private:
    struct OpenBlock {
        Block block;
        std::string tag; // as it is closed
    };
    void Put(std::string_view html);
    void PutEscaped(std::string_view text);
    void PutMark(const std::string& mark);
    void CloseTop();
    [[nodiscard]] bool InTableWithoutCell() const;
    void SendIfLong();

    std::vector<std::uint32_t> m_hits;
    std::size_t m_nextHit = 0;
    HtmlMarks m_marks;
    Out m_out;
    std::string m_html;
    std::vector<OpenBlock> m_open;
    std::size_t m_pictureBytes = 0;
};

} // namespace engine
