// Text in, chunks out.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/TextRecorder.h"

#include "engine/readers/Reader.h"

#include <zstd.h>

#include <algorithm>
#include <new>
#include <utility>

namespace engine {
namespace {

constexpr int kCompression = 5;
constexpr std::size_t kLongestFieldValue = 4096; // of what is kept beside the text

} // namespace

void TextRecorder::FreeContext::operator()(ZSTD_CCtx_s* context) const {
    ZSTD_freeCCtx(context);
}

TextRecorder::TextRecorder(Tokenizer& tokenizer, WordRule rule, ChunkOut out)
    : WordingSink(tokenizer, rule), m_out(std::move(out)), m_zstd(ZSTD_createCCtx()) {
    if (!m_zstd)
        throw std::bad_alloc();
    ZSTD_CCtx_setParameter(m_zstd.get(), ZSTD_c_compressionLevel, kCompression);
    ZSTD_CCtx_setParameter(m_zstd.get(), ZSTD_c_contentSizeFlag, 1);
}

TextRecorder::~TextRecorder() = default;

void TextRecorder::OnText(std::string_view text, const std::vector<Word>& words,
                          std::uint64_t firstWord) {
    m_text.append(text);
    m_textTotal += text.size();
    std::uint64_t last = firstWord - 1;
    for (const Word& word : words) {
        if (word.advances)
            ++last;
        else
            m_terms += '\x01';
        m_terms.append(word.term);
        m_terms += '\n';
        m_vocabulary.Insert(word.term);
    }
    m_chunkWords += last - m_recorded;
    m_recorded = last;
    if (m_text.size() >= kChunkText)
        SendChunk();
    if (m_textTotal > kLongestText) {
        Incomplete("text beyond 128 MB");
        throw StopReading();
    }
}

void TextRecorder::SendChunk() {
    if (m_text.empty())
        return;
    m_packed.resize(ZSTD_compressBound(m_text.size()));
    const std::size_t size = ZSTD_compress2(m_zstd.get(), m_packed.data(), m_packed.size(),
                                            m_text.data(), m_text.size());
    if (ZSTD_isError(size) != 0)
        throw std::bad_alloc();
    TextChunk chunk;
    chunk.plainLength = m_text.size();
    chunk.wordCount = m_chunkWords;
    chunk.terms = m_terms;
    chunk.text = std::string_view(m_packed).substr(0, size);
    chunk.vocabulary = std::string_view(m_vocabulary.Joined()).substr(m_vocabularySent);
    m_out(chunk);
    m_vocabularySent = m_vocabulary.Joined().size();
    m_text.clear();
    m_terms.clear();
    m_chunkWords = 0;
}

void TextRecorder::Separate(char separator) {
    if (!m_text.empty() && m_text.back() != '\n')
        m_text += separator;
}

void TextRecorder::OnOpen(Block block, int /*level*/) {
    if (block != Block::Cell)
        Separate('\n');
}

void TextRecorder::OnClose(Block block) {
    Separate(block == Block::Cell ? '\t' : '\n');
}

void TextRecorder::OnBreak() {
    Separate('\n');
}

void TextRecorder::OnFieldBegin(std::string_view /*name*/) {
    Separate('\n');
    m_fieldFirst = m_recorded + 1;
}

void TextRecorder::OnFieldEnd(std::string_view name, std::string_view value) {
    Separate('\n');
    std::string buffer;
    value = WellFormed(value, buffer);
    std::size_t length = std::min(value.size(), kLongestFieldValue);
    while (length < value.size() && length > 0 &&
           (static_cast<unsigned char>(value[length]) & 0xC0) == 0x80)
        --length;
    m_fields.push_back(
        {std::string(name), std::string(value.substr(0, length)), m_fieldFirst, m_recorded});
}

void TextRecorder::Incomplete(std::string_view reason) {
    // It may name a part of the document as the document names it.
    std::string buffer;
    std::string line(WellFormed(reason, buffer));
    std::replace_if(
        line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    if (m_reason.find(line) != std::string::npos)
        return;
    if (!m_reason.empty())
        m_reason += "; ";
    m_reason += line;
}

DocumentEnd TextRecorder::End(ReadState state, std::string_view reason) {
    try {
        Finish();
    } catch (const StopReading&) {
        // The cap is noted; what came before it stays.
    }
    SendChunk();
    if (!reason.empty())
        Incomplete(reason);
    if (state == ReadState::Read && !m_reason.empty())
        state = ReadState::Partly;
    DocumentEnd end;
    end.state = state;
    end.reason = m_reason;
    end.words = m_recorded;
    end.fields = std::move(m_fields);
    return end;
}

} // namespace engine
