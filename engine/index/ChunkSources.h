// Where the chunks of a document that is written come from.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/DocumentStore.h"
#include "engine/index/ReadQueue.h"
#include "engine/readers/TextRecorder.h"

#include <string>
#include <utility>

namespace engine {

// The chunks of a document as they come out of the queue.
class QueuedChunks final : public ChunkSource {
  public:
    QueuedChunks(ReadQueue& queue, IncomingDocument& document)
        : m_queue(queue), m_document(document) {}
    bool Next(TextChunk& chunk) override {
        if (!m_queue.TakeChunk(m_document, m_bytes))
            return false;
        chunk = UnpackChunk(m_bytes);
        m_words += chunk.wordCount;
        return true;
    }
    const DocumentEnd& End() override {
        if (m_document.broken) {
            m_document.end.state = ReadState::Failed;
            m_document.end.reason = "the reader gave up in the middle";
            m_document.end.words = m_words;
        }
        return m_document.end;
    }

  private:
    ReadQueue& m_queue;
    IncomingDocument& m_document;
    std::string m_bytes;
    std::uint64_t m_words = 0;
};

// A document of which only the name is known.
class NameChunk final : public ChunkSource {
  public:
    NameChunk(const Alphabet& alphabet, const std::string& name, ReadState state,
              const std::string& reason) {
        Tokenizer tokenizer(alphabet);
        TextRecorder recorder(tokenizer, WordRule::Letters, [this](const TextChunk& chunk) {
            m_bytes = Pack(chunk);
        });
        recorder.Text(name);
        m_end = recorder.End(state, reason);
    }
    bool Next(TextChunk& chunk) override {
        if (m_bytes.empty() || std::exchange(m_given, true))
            return false;
        chunk = UnpackChunk(m_bytes);
        return true;
    }
    const DocumentEnd& End() override { return m_end; }

  private:
    std::string m_bytes;
    bool m_given = false;
    DocumentEnd m_end;
};

// A row without text, to be replaced.
class NoChunks final : public ChunkSource {
  public:
    bool Next(TextChunk&) override { return false; }
    const DocumentEnd& End() override { return m_end; }

  private:
    DocumentEnd m_end;
};

} // namespace engine
