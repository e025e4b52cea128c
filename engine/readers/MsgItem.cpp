// Contacts, appointments, tasks.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/MsgItem.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <ctime>
#include <set>
#include <string>

namespace engine {
namespace {

struct Standard {
    unsigned id;
    const char* label;
    bool time = false;
};
struct Named {
    std::uint32_t set, number;
    const char* label;
    bool time = false;
};

constexpr std::uint32_t kAddresses = 0x00062004, kAppointments = 0x00062002, kTasks = 0x00062003;

constexpr std::array kOfContact{
    Standard{0x3001, "Name"},
    Standard{0x3A4F, "Nickname"},
    Standard{0x3A16, "Company"},
    Standard{0x3A18, "Department"},
    Standard{0x3A17, "Job title"},
    Standard{0x3A46, "Profession"},
    Standard{0x3A4E, "Manager"},
    Standard{0x3A30, "Assistant"},
    Standard{0x3A19, "Office"},
    Standard{0x3A08, "Business phone"},
    Standard{0x3A1B, "Business phone 2"},
    Standard{0x3A57, "Company phone"},
    Standard{0x3A09, "Home phone"},
    Standard{0x3A2F, "Home phone 2"},
    Standard{0x3A1C, "Mobile phone"},
    Standard{0x3A1A, "Primary phone"},
    Standard{0x3A1F, "Other phone"},
    Standard{0x3A1E, "Car phone"},
    Standard{0x3A2E, "Assistant's phone"},
    Standard{0x3A24, "Business fax"},
    Standard{0x3A25, "Home fax"},
    Standard{0x3A15, "Postal address"},
    Standard{0x3A51, "Web page"},
    Standard{0x3A50, "Personal web page"},
    Standard{0x3A48, "Spouse"},
    Standard{0x3A42, "Birthday", true},
    Standard{0x3A41, "Anniversary", true},
    Standard{0x3A43, "Hobbies"},
};
constexpr std::array kOfContactNamed{
    Named{kAddresses, 0x8083, "E-mail"},
    Named{kAddresses, 0x8093, "E-mail 2"},
    Named{kAddresses, 0x80A3, "E-mail 3"},
    Named{kAddresses, 0x801B, "Business address"},
    Named{kAddresses, 0x801A, "Home address"},
    Named{kAddresses, 0x801C, "Other address"},
    Named{kAddresses, 0x8062, "Instant messaging"},
    Named{kAddresses, 0x802B, "Web page"},
};
constexpr std::array kOfAppointment{
    Named{kAppointments, 0x8208, "Location"},  Named{kAppointments, 0x820D, "Start", true},
    Named{kAppointments, 0x820E, "End", true}, Named{kAppointments, 0x8232, "Recurrence"},
    Named{kAppointments, 0x8238, "Attendees"},
};
constexpr std::array kOfTask{
    Named{kTasks, 0x8104, "Start", true},
    Named{kTasks, 0x8105, "Due", true},
    Named{kTasks, 0x810F, "Completed", true},
    Named{kTasks, 0x811F, "Owner"},
};

// "2024-12-31 18:00 UTC"; days alone are kept as midnight.
std::string Shown(std::int64_t seconds) {
    if (seconds == 0)
        return {};
    const std::time_t time = seconds;
    std::tm parts{};
    if (::gmtime_r(&time, &parts) == nullptr)
        return {};
    const bool day = seconds % 86400 == 0;
    std::array<char, 40> buffer;
    const std::size_t length = std::strftime(buffer.data(), buffer.size(),
                                             day ? "%Y-%m-%d" : "%Y-%m-%d %H:%M UTC", &parts);
    return {buffer.data(), length};
}

class ItemText {
  public:
    ItemText(const MsgProperties& properties, const MsgNames& names, DocumentSink& sink)
        : m_properties(properties), m_names(names), m_sink(sink) {}

    template <typename List> void PutStandard(const List& list) {
        for (const Standard& each : list)
            Put(each.label, each.id, each.time);
    }
    template <typename List> void PutNamed(const List& list) {
        for (const Named& each : list)
            Put(each.label, m_names.IdOf(each.set, each.number), each.time);
    }
    void Put(const char* label, unsigned id, bool time) {
        const std::string text = time ? Shown(m_properties.Time(id)) : m_properties.Text(id);
        // An address is often kept twice, as a whole and as that of home or business.
        if (text.empty() || !m_seen.insert(text).second)
            return;
        m_sink.Open(Block::Paragraph);
        m_sink.Text(std::string(label) + ": ");
        for (std::size_t at = 0; at <= text.size();) {
            const std::size_t end = std::min(text.find('\n', at), text.size());
            std::string_view line = std::string_view(text).substr(at, end - at);
            if (line.ends_with('\r'))
                line.remove_suffix(1);
            if (at > 0)
                m_sink.Break();
            m_sink.Text(line);
            at = end + 1;
        }
        m_sink.Close(Block::Paragraph);
    }

  private:
    const MsgProperties& m_properties;
    const MsgNames& m_names;
    DocumentSink& m_sink;
    std::set<std::string> m_seen;
};

} // namespace

void EmitMsgItem(const MsgProperties& properties, const MsgNames& names,
                 std::string_view messageClass, DocumentSink& sink) {
    ItemText text(properties, names, sink);
    if (messageClass.starts_with("ipm.contact")) {
        text.PutStandard(kOfContact);
        text.PutNamed(kOfContactNamed);
    } else if (messageClass.starts_with("ipm.appointment") ||
               messageClass.starts_with("ipm.schedule")) {
        text.PutNamed(kOfAppointment);
    } else if (messageClass.starts_with("ipm.task")) {
        text.PutNamed(kOfTask);
    }
}

} // namespace engine
