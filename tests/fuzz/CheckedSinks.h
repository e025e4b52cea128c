// Sinks that hold the readers to what DocumentSink and MemberSink promise their receivers.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Reader.h"

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

namespace fuzz {

// Every Open has its Close, in order; text may be anything.
class CheckedSink final : public engine::DocumentSink {
  public:
    // Throws StopReading at the event of that number, counted from 1; 0: never.
    explicit CheckedSink(std::uint64_t stopAt = 0) : m_stopAt(stopAt) {}

    void Field(std::string_view name, std::string_view value) override;
    void Text(std::string_view utf8) override;
    void Open(engine::Block block, int level) override;
    void Close(engine::Block block) override;
    void Break() override;
    [[nodiscard]] bool WantsPictures() const override { return true; }
    void Picture(std::string_view mime, std::string_view bytes, std::string_view text) override;
    void Incomplete(std::string_view reason) override;
    // To be called when the reader came to its end.
    void RequireAllClosed() const;

  private:
    void Count();
    void Touch(std::string_view bytes);

    std::uint64_t m_stopAt;
    std::uint64_t m_events = 0;
    std::uint64_t m_sum = 0; // makes the sanitizer look at every byte that is handed over
    std::vector<engine::Block> m_open;
};

// Paths are safe and unlike each other; every Receive follows a Wants.
class CheckedMembers final : public engine::MemberSink {
  public:
    [[nodiscard]] bool Wants(std::string_view path) override;
    void Receive(const engine::Member& member) override;

  private:
    std::unordered_set<std::string> m_seen;
    std::string m_wanted;
    bool m_asked = false;
    std::uint64_t m_sum = 0;
};

// Runs a reader that may end with any of the exceptions that readers may end with. True: it came
// to its end.
template <class Read> bool MayFail(Read read);

// Ends the process unless path is relative, without parts such as "..", and can be shown.
void RequireSafePath(std::string_view path);
void RequireReason(std::string_view reason);

template <class Read> bool MayFail(Read read) {
    try {
        read();
        return true;
    } catch (const engine::ReadError& error) {
        RequireReason(error.what());
    } catch (const engine::StopReading&) {
        // The sink's own wish.
    } catch (const std::bad_alloc&) {
        // The worker's memory cap.
    }
    return false;
}

} // namespace fuzz
