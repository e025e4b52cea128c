// Reads one message, appointment, contact, task or note that is kept in a compound file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/CompoundFile.h"
#include "engine/readers/CompoundWriter.h"
#include "engine/readers/CompressedRtf.h"
#include "engine/readers/EventBuffer.h"
#include "engine/readers/Limits.h"
#include "engine/readers/MailBody.h"
#include "engine/readers/MailMime.h"
#include "engine/readers/MailText.h"
#include "engine/readers/MemberNames.h"
#include "engine/readers/MsgItem.h"
#include "engine/readers/MsgProperties.h"
#include "engine/readers/Reader.h"
#include "engine/readers/SignedContent.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>

namespace engine {
namespace {

enum : unsigned {
    kMessageClass = 0x001A,
    kSubject = 0x0037,
    kSubmitTime = 0x0039,
    kOnBehalfName = 0x0042,
    kOnBehalfAddress = 0x0065,
    kTransportHeaders = 0x007D,
    kRecipientKind = 0x0C15,
    kSenderName = 0x0C1A,
    kSenderAddress = 0x0C1F,
    kShownBcc = 0x0E02,
    kShownCc = 0x0E03,
    kShownTo = 0x0E04,
    kDeliveryTime = 0x0E06,
    kPlainBody = 0x1000,
    kRtfBody = 0x1009,
    kHtmlBody = 0x1013,
    kName = 0x3001,
    kAddress = 0x3003,
    kCreationTime = 0x3007,
    kAttachment = 0x3701,
    kAttachmentEnding = 0x3703,
    kAttachmentShortName = 0x3704,
    kAttachmentLongName = 0x3707,
    kMailAddress = 0x39FE,
    kInternetPage = 0x3FDE,
    kSenderMailAddress = 0x5D01,
    kOnBehalfMailAddress = 0x5D02,
};

// "Mon, 01 Jan 2024 09:00:00 +0000", as in the headers of a mail.
std::string MailDate(std::int64_t seconds) {
    static constexpr std::array kDays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr std::array kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::time_t time = seconds;
    std::tm parts{};
    if (seconds == 0 || ::gmtime_r(&time, &parts) == nullptr)
        return {};
    std::array<char, 48> rest;
    std::array<char, 16> day;
    const std::size_t length =
        std::strftime(rest.data(), rest.size(), " %Y %H:%M:%S +0000", &parts);
    const std::size_t dayLength = std::strftime(day.data(), day.size(), ", %d ", &parts);
    return std::string(kDays[static_cast<std::size_t>(parts.tm_wday)]) +
           std::string(day.data(), dayLength) + kMonths[static_cast<std::size_t>(parts.tm_mon)] +
           std::string(rest.data(), length);
}

// "Anna <anna@example.com>". Addresses inside an organisation's own system say nothing outside.
std::string Person(const std::string& name, std::initializer_list<std::string> addresses) {
    for (const std::string& address : addresses) {
        if (address.find('@') == std::string::npos || address.starts_with('/'))
            continue;
        if (name.empty())
            return address;
        return name.find(address) == std::string::npos ? name + " <" + address + ">" : name;
    }
    return name;
}

class MsgReading {
  public:
    MsgReading(const CompoundFile& file, DocumentSink& sink, MemberSink& members)
        : m_file(file), m_sink(sink), m_members(members), m_message(file, {}) {}

    void Run() {
        m_class = m_message.Text(kMessageClass);
        for (char& c : m_class)
            c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        ReadTransportHeaders();
        for (const unsigned id : {kSubmitTime, kDeliveryTime, kCreationTime})
            m_time = m_time != 0 ? m_time : m_message.Time(id);
        EmitHeaders();
        const MsgNames names(m_file);
        m_sink.Field("keywords", m_message.Text(names.IdOf("Keywords")));
        EmitMsgItem(m_message, names, m_class, m_sink);
        EmitBody();
        for (const CompoundFile::Entry& entry : m_file.List())
            if (entry.storage && entry.name.starts_with("__attach_version1.0_"))
                TakeAttachment(entry.name);
    }

  private:
    // As the mail came over the net; only messages that did have them.
    void ReadTransportHeaders() {
        const std::string text = m_message.Text(kTransportHeaders);
        const GOwner<GMimeMessage> message =
            text.empty() ? nullptr : ParseMessage(text + "\r\n\r\n");
        if (message == nullptr)
            return;
        GMimeObject* const object = GMIME_OBJECT(message.get());
        m_transport.from = HeaderText(object, "From");
        m_transport.to = HeaderText(object, "To");
        m_transport.cc = HeaderText(object, "Cc");
        m_transport.date = HeaderText(object, "Date");
        m_time = MessageTime(message.get());
    }

    void EmitHeaders() {
        MailHeaders headers;
        headers.subject = m_message.Text(kSubject);
        headers.from = Person(m_message.Text(kOnBehalfName), {m_message.Text(kOnBehalfMailAddress),
                                                              m_message.Text(kOnBehalfAddress)});
        if (headers.from.find('@') == std::string::npos && !m_transport.from.empty())
            headers.from = m_transport.from;
        if (headers.from.empty())
            headers.from = Person(m_message.Text(kSenderName), {m_message.Text(kSenderMailAddress),
                                                                m_message.Text(kSenderAddress)});
        ReadRecipients(headers);
        const auto fill = [](std::string& value, const std::string& from) {
            if (value.empty())
                value = from;
        };
        fill(headers.to, m_transport.to);
        fill(headers.cc, m_transport.cc);
        fill(headers.to, m_message.Text(kShownTo));
        fill(headers.cc, m_message.Text(kShownCc));
        fill(headers.bcc, m_message.Text(kShownBcc));
        headers.date = m_transport.date.empty() ? MailDate(m_time) : m_transport.date;
        EmitMailHeaders(headers, m_sink);
    }

    void ReadRecipients(MailHeaders& headers) {
        enum : std::uint32_t { kTo = 1, kCc = 2, kBcc = 3, kKind = 0xF };
        for (const CompoundFile::Entry& entry : m_file.List()) {
            if (!entry.storage || !entry.name.starts_with("__recip_version1.0_"))
                continue;
            const MsgProperties recipient(m_file, entry.name, m_message.CodePage());
            const std::string person = Person(
                recipient.Text(kName), {recipient.Text(kMailAddress), recipient.Text(kAddress)});
            const std::uint32_t kind = recipient.Number(kRecipientKind).value_or(kTo) & kKind;
            if (person.empty() || kind == 0 || kind > kBcc)
                continue;
            std::string& list = kind == kTo ? headers.to : kind == kCc ? headers.cc : headers.bcc;
            list += (list.empty() ? "" : ", ") + person;
        }
    }

    // The same choice as among the alternatives of a mail.
    void EmitBody() {
        const std::string plain = m_message.Text(kPlainBody);
        if (plain.size() >= kShortPlainBody)
            return EmitPlain(plain);
        if (const std::optional<std::string> html = m_message.Binary(kHtmlBody);
            html.has_value() && !html->empty()) {
            const std::uint32_t page = m_message.Number(kInternetPage).value_or(0);
            return EmitMailHtml(*html, page == 0 ? std::string() : CharsetOfCodePage(page), m_sink);
        }
        if (const std::string html = m_message.Text(kHtmlBody); !html.empty())
            return EmitMailHtml(html, "UTF-8", m_sink);
        if (!EmitRtf())
            EmitPlain(plain);
    }

    // false: there is no text in it.
    bool EmitRtf() {
        const std::string rtf = UnpackRtf(m_message.Binary(kRtfBody).value_or(""));
        if (rtf.empty())
            return false;
        BodySink body(m_sink);
        EventBuffer text(m_sink.WantsPictures());
        try {
            ReadRtf({rtf, "body.rtf"}, text);
        } catch (const ReadError& error) {
            m_sink.Incomplete(std::string("its rich text cannot be read: ") + error.what());
        }
        text.Replay(body);
        return !text.Empty();
    }

    void EmitPlain(std::string_view text) {
        if (EmitMailText(text, {}, m_sink))
            m_sink.Incomplete("an encrypted part cannot be read");
    }

    void TakeAttachment(const std::string& storage) {
        const MsgProperties attachment(m_file, storage, m_message.CodePage());
        if (m_class.starts_with("ipm.note.smime") && TakeSigned(attachment))
            return;
        const std::string inner = attachment.Storage(kAttachment);
        const std::string path = m_names.Add(NameOf(attachment, inner));
        if (!m_members.Wants(path))
            return;
        Member member;
        member.path = path;
        member.displayName = path;
        member.modified = m_time;
        std::string bytes;
        if (inner.empty()) {
            bytes = attachment.Binary(kAttachment).value_or("");
        } else {
            CompoundWriter writer;
            CopyObject(inner, writer);
            member.cut = writer.Cut();
            bytes = writer.Finish();
        }
        member.bytes = bytes;
        m_members.Receive(member);
    }

    // An embedded message, or an object of another program, as a file of its own.
    void CopyObject(const std::string& storage, CompoundWriter& writer) {
        constexpr const char* kProperties = "__properties_version1.0";
        constexpr const char* kNames = "__nameid_version1.0";
        constexpr std::size_t kEmbeddedHeader = 24, kHeader = 32;
        if (std::optional<std::string> properties = m_file.Stream(storage + "/" + kProperties)) {
            // A message of its own begins with a longer header, and knows its own names.
            properties->insert(std::min(kEmbeddedHeader, properties->size()),
                               kHeader - kEmbeddedHeader, '\0');
            writer.Add(kProperties, std::move(*properties));
            writer.Copy(m_file, kNames, kNames);
        }
        writer.Copy(m_file, storage);
    }

    // A signed message keeps its text and its attachments in one attachment.
    bool TakeSigned(const MsgProperties& attachment) {
        std::string content = attachment.Binary(kAttachment).value_or("");
        if (content.empty())
            return false;
        if (m_class != "ipm.note.smime.multipartsigned") {
            const std::optional<std::string> unwrapped = UnwrapSigned(content);
            if (!unwrapped.has_value()) {
                m_sink.Incomplete("an encrypted part cannot be read");
                return true;
            }
            content = *unwrapped;
        }
        try {
            ReadMail({content, "smime.eml"}, m_sink, m_members);
        } catch (const ReadError& error) {
            m_sink.Incomplete(std::string("its signed part cannot be read: ") + error.what());
        }
        return true;
    }

    std::string NameOf(const MsgProperties& attachment, const std::string& inner) {
        std::string name;
        for (const unsigned id : {kAttachmentLongName, kAttachmentShortName, kName})
            if (name.empty())
                name = CleanFileName(attachment.Text(id));
        const bool message = !inner.empty() && m_file.Has(inner + "/__properties_version1.0");
        if (message && name.empty())
            name = CleanFileName(MsgProperties(m_file, inner, m_message.CodePage()).Text(kSubject));
        if (name.empty())
            name = message ? "message"
                           : "attachment-" + std::to_string(++m_unnamed) +
                                 CleanFileName(attachment.Text(kAttachmentEnding));
        return message && !name.ends_with(".msg") ? name + ".msg" : name;
    }

    const CompoundFile& m_file;
    DocumentSink& m_sink;
    MemberSink& m_members;
    MsgProperties m_message;
    MailHeaders m_transport;
    UniqueNames m_names;
    std::string m_class;
    std::int64_t m_time = 0;
    int m_unnamed = 0;
};

} // namespace

void ReadMsg(const Source& source, DocumentSink& sink, MemberSink& attachments) {
    const CompoundFile file(source.bytes);
    if (!file.Has("__properties_version1.0"))
        throw ReadError(ReadState::Damaged, "the message's properties are missing");
    MsgReading(file, sink, attachments).Run();
}

} // namespace engine
