// Turns what readers tell into text with numbered words: the one way from a document to its words,
// for the index and for the highlighted page alike.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocumentSink.h"
#include "engine/text/Tokenizer.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

// Gathers text up to the next block or a safe cut, splits it, numbers its words from 1 over the
// document and hands it on. What is handed on is well-formed UTF-8 without NULs.
class WordingSink : public DocumentSink {
  public:
    // The tokenizer outlives the sink.
    WordingSink(Tokenizer& tokenizer, WordRule rule);

    void Field(std::string_view name, std::string_view value) final;
    void Text(std::string_view utf8) final;
    void Open(Block block, int level) final;
    void Close(Block block) final;
    void Break() final;
    void Picture(std::string_view mime, std::string_view bytes,
                 std::string_view alternativeText) final;
    // Hands on what is still held back. Call at the end.
    void Finish();

    [[nodiscard]] std::uint64_t WordCount() const { return m_words; }

  protected:
    // A stretch of text. Stretches meet at word boundaries only; the first advancing word of
    // words has the number firstWord.
    virtual void OnText(std::string_view text, const std::vector<Word>& words,
                        std::uint64_t firstWord) = 0;
    virtual void OnOpen(Block block, int level) = 0;
    virtual void OnClose(Block block) = 0;
    virtual void OnBreak() = 0;
    virtual void OnPicture(std::string_view mime, std::string_view bytes,
                           std::string_view alternativeText) = 0;
    // Around the text of a property's value.
    virtual void OnFieldBegin(std::string_view name) = 0;
    virtual void OnFieldEnd(std::string_view name, std::string_view value) = 0;

  private:
    void Flush();
    void Deliver(std::string_view text);

    Tokenizer& m_tokenizer;
    WordRule m_rule;
    std::string m_pending;
    std::string m_clean;
    std::uint64_t m_words = 0;
};

// Replaces ill-formed sequences and NULs; returns text itself where there are none, else buffer.
std::string_view WellFormed(std::string_view text, std::string& buffer);

} // namespace engine
