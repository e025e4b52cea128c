// Keeping and passing on.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/EventBuffer.h"

namespace engine {

void EventBuffer::Add(What what, std::string_view first, std::string_view second,
                      std::string_view third) {
    Event event;
    event.what = what;
    event.first = first.size();
    event.second = second.size();
    event.third = third.size();
    m_events.push_back(event);
    m_bytes.append(first).append(second).append(third);
}

void EventBuffer::Replay(DocumentSink& sink) const {
    std::string_view bytes = m_bytes;
    const auto take = [&bytes](std::size_t length) {
        const std::string_view taken = bytes.substr(0, length);
        bytes.remove_prefix(length);
        return taken;
    };
    for (const Event& event : m_events) {
        const std::string_view first = take(event.first);
        const std::string_view second = take(event.second);
        const std::string_view third = take(event.third);
        switch (event.what) {
        case What::Field:
            sink.Field(first, second);
            break;
        case What::Text:
            sink.Text(first);
            break;
        case What::Open:
            sink.Open(event.block, event.level);
            break;
        case What::Close:
            sink.Close(event.block);
            break;
        case What::Break:
            sink.Break();
            break;
        case What::Picture:
            sink.Picture(first, second, third);
            break;
        case What::Incomplete:
            sink.Incomplete(first);
            break;
        }
    }
}

} // namespace engine
