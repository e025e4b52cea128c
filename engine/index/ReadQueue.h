// Carries what the workers read to the one thread that writes the index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/DocumentStore.h"
#include "workers/Task.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

namespace engine {

// One document on its way. Members are guarded by the queue's mutex.
struct IncomingDocument {
    std::size_t item = 0; // number of the file that it belongs to
    DocumentHead head;
    std::deque<std::string> chunks; // packed TextChunk
    std::size_t bytes = 0;          // of chunks
    bool queued = false;
    bool ended = false;
    bool broken = false; // the worker is gone; what came is all there is
    DocumentEnd end;
};

// How the reading of a file ended, after its last document.
struct FinishedFile {
    std::size_t item = 0;
    workers::Ending ending = workers::Ending::Done;
    std::string message;
    std::int64_t size = 0, modified = -1; // as they were when the file was opened
};

// Bounded: readers wait while too much text is on its way. A document is handed over when it is
// whole, or when it has become too long to keep; so the writer never waits for a slow reader
// while other documents are there.
class ReadQueue {
  public:
    struct Event {
        std::shared_ptr<IncomingDocument> document; // or, when empty:
        FinishedFile file;
    };

    // Readers' side, any thread.
    void AddChunk(const std::shared_ptr<IncomingDocument>& document, std::string chunk);
    void EndDocument(const std::shared_ptr<IncomingDocument>& document, DocumentEnd end);
    // A document that its worker left behind unfinished.
    void BreakDocument(const std::shared_ptr<IncomingDocument>& document);
    void AddFinished(FinishedFile file);
    // Lets everybody go who waits; chunks are dropped from now on.
    void Close();

    // Writer's side. False: nothing came within a short while.
    bool Take(Event& event);
    // The next chunk of a document that was taken; waits for it. False at the end.
    bool TakeChunk(IncomingDocument& document, std::string& chunk);

  private:
    void Queue(const std::shared_ptr<IncomingDocument>& document);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Event> m_events;
    std::size_t m_bytes = 0;
    const IncomingDocument* m_current = nullptr; // being written
    bool m_closed = false;
};

} // namespace engine
