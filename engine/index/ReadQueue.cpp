// The queue between readers and writer.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/ReadQueue.h"

#include <chrono>
#include <utility>

namespace engine {
namespace {

constexpr std::size_t kMostBytes = std::size_t{32} << 20;
constexpr std::size_t kLongDocument = std::size_t{4} << 20;
constexpr auto kShortWhile = std::chrono::milliseconds(50);

} // namespace

void ReadQueue::Queue(const std::shared_ptr<IncomingDocument>& document) {
    if (!std::exchange(document->queued, true))
        m_events.push_back({document, {}});
}

void ReadQueue::AddChunk(const std::shared_ptr<IncomingDocument>& document, std::string chunk) {
    std::unique_lock lock(m_mutex);
    // The document that the writer waits for must get through, whatever else is queued.
    m_changed.wait(lock, [&] {
        return m_closed || m_bytes < kMostBytes ||
               (m_current == document.get() && document->bytes < kLongDocument);
    });
    if (m_closed)
        return;
    m_bytes += chunk.size();
    document->bytes += chunk.size();
    document->chunks.push_back(std::move(chunk));
    if (document->bytes >= kLongDocument || m_bytes >= kMostBytes)
        Queue(document);
    m_changed.notify_all();
}

void ReadQueue::EndDocument(const std::shared_ptr<IncomingDocument>& document, DocumentEnd end) {
    const std::lock_guard lock(m_mutex);
    document->end = std::move(end);
    document->ended = true;
    Queue(document);
    m_changed.notify_all();
}

void ReadQueue::BreakDocument(const std::shared_ptr<IncomingDocument>& document) {
    const std::lock_guard lock(m_mutex);
    document->ended = document->broken = true;
    m_changed.notify_all();
}

void ReadQueue::AddFinished(FinishedFile file) {
    const std::lock_guard lock(m_mutex);
    m_events.push_back({nullptr, std::move(file)});
    m_changed.notify_all();
}

void ReadQueue::Close() {
    const std::lock_guard lock(m_mutex);
    m_closed = true;
    m_changed.notify_all();
}

bool ReadQueue::Take(Event& event) {
    std::unique_lock lock(m_mutex);
    m_current = nullptr;
    if (!m_changed.wait_for(lock, kShortWhile, [&] { return !m_events.empty(); }))
        return false;
    event = std::move(m_events.front());
    m_events.pop_front();
    m_current = event.document.get();
    m_changed.notify_all();
    return true;
}

bool ReadQueue::TakeChunk(IncomingDocument& document, std::string& chunk) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_closed || !document.chunks.empty() || document.ended; });
    if (document.chunks.empty())
        return false;
    chunk = std::move(document.chunks.front());
    document.chunks.pop_front();
    document.bytes -= chunk.size();
    m_bytes -= chunk.size();
    m_changed.notify_all();
    return true;
}

} // namespace engine
