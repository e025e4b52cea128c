// Records one document as chunks of terms and compressed text, for the index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Frames.h"
#include "engine/text/TermSet.h"
#include "engine/text/WordingSink.h"

#include <functional>
#include <memory>
#include <string>

struct ZSTD_CCtx_s;

namespace engine {

// A document's text beyond this is not indexed, and the document is listed as read in part.
inline constexpr std::uint64_t kLongestText = std::uint64_t{128} << 20;

class TextRecorder final : public WordingSink {
  public:
    using ChunkOut = std::function<void(const TextChunk&)>;
    TextRecorder(Tokenizer& tokenizer, WordRule rule, ChunkOut out);
    ~TextRecorder() override;

    void Incomplete(std::string_view reason) override;
    // Hands on the last chunk and tells what was recorded. state and reason are the reader's
    // verdict; parts that were missing make Read into Partly.
    [[nodiscard]] DocumentEnd End(ReadState state, std::string_view reason);

  protected:
    void OnText(std::string_view text, const std::vector<Word>& words,
                std::uint64_t firstWord) override;
    void OnOpen(Block block, int level) override;
    void OnClose(Block block) override;
    void OnBreak() override;
    void OnPicture(std::string_view, std::string_view, std::string_view) override {}
    void OnFieldBegin(std::string_view name) override;
    void OnFieldEnd(std::string_view name, std::string_view value) override;

  private:
    void Separate(char separator);
    void SendChunk();

    struct FreeContext {
        void operator()(ZSTD_CCtx_s* context) const;
    };
    ChunkOut m_out;
    std::unique_ptr<ZSTD_CCtx_s, FreeContext> m_zstd;
    std::string m_text, m_terms, m_packed;
    std::uint64_t m_chunkWords = 0;
    std::uint64_t m_recorded = 0; // words handed on or in m_terms
    std::uint64_t m_textTotal = 0;
    TermSet m_vocabulary;
    std::size_t m_vocabularySent = 0; // bytes of its joined terms
    std::vector<FieldRange> m_fields;
    std::uint64_t m_fieldFirst = 0;
    std::string m_reason;
};

} // namespace engine
