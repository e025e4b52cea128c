// A sink that keeps what it is told, to pass it on later.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocumentSink.h"

#include <string>
#include <vector>

namespace engine {

class EventBuffer final : public DocumentSink {
  public:
    explicit EventBuffer(bool wantsPictures) : m_wantsPictures(wantsPictures) {}

    void Field(std::string_view name, std::string_view value) override {
        Add(What::Field, name, value);
    }
    void Text(std::string_view utf8) override { Add(What::Text, utf8); }
    void Open(Block block, int level) override {
        Add(What::Open);
        m_events.back().block = block;
        m_events.back().level = level;
    }
    void Close(Block block) override {
        Add(What::Close);
        m_events.back().block = block;
    }
    void Break() override { Add(What::Break); }
    [[nodiscard]] bool WantsPictures() const override { return m_wantsPictures; }
    void Picture(std::string_view mime, std::string_view bytes,
                 std::string_view alternativeText) override {
        Add(What::Picture, mime, bytes, alternativeText);
    }
    void Incomplete(std::string_view reason) override { Add(What::Incomplete, reason); }

    [[nodiscard]] bool Empty() const { return m_events.empty(); }
    void Replay(DocumentSink& sink) const;

  private:
    enum class What : std::uint8_t { Field, Text, Open, Close, Break, Picture, Incomplete };
    struct Event {
        What what;
        Block block = Block::Paragraph;
        int level = 0;
        std::size_t first = 0, second = 0, third = 0; // lengths of its strings in m_bytes
    };
    void Add(What what, std::string_view first = {}, std::string_view second = {},
             std::string_view third = {});

    bool m_wantsPictures;
    std::vector<Event> m_events;
    std::string m_bytes;
};

} // namespace engine
