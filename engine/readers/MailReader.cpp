// Reads one message: its headers, its bodies, its attachments.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/MailBody.h"
#include "engine/readers/MailMime.h"
#include "engine/readers/MailText.h"
#include "engine/readers/MemberNames.h"
#include "engine/readers/Reader.h"
#include "engine/readers/SignedContent.h"

#include <algorithm>
#include <array>
#include <optional>

namespace engine {

namespace {

// A name for an attachment that has none.
std::string EndingFor(const MediaType& type) {
    struct Known {
        std::string_view type, subtype, ending;
    };
    static constexpr std::array<Known, 14> kKnown = {{
        {"application", "msword", ".doc"},
        {"application", "pdf", ".pdf"},
        {"application", "rtf", ".rtf"},
        {"application", "zip", ".zip"},
        {"image", "gif", ".gif"},
        {"image", "jpeg", ".jpg"},
        {"image", "png", ".png"},
        {"image", "tiff", ".tif"},
        {"text", "calendar", ".ics"},
        {"text", "csv", ".csv"},
        {"text", "html", ".html"},
        {"text", "plain", ".txt"},
        {"text", "rtf", ".rtf"},
        {"text", "vcard", ".vcf"},
    }};
    for (const Known& known : kKnown) {
        if (type.Is(known.type, known.subtype))
            return std::string(known.ending);
    }
    return {};
}

bool IsSignature(const MediaType& type) {
    return type.type == "application" &&
           (type.subtype == "pgp-signature" || type.subtype == "pkcs7-signature" ||
            type.subtype == "x-pkcs7-signature");
}

bool IsEncryptedPart(const MediaType& type) {
    return type.Is("multipart", "encrypted") || type.Is("application", "pgp-encrypted");
}

// Signed or encrypted as a whole; which of both only the content tells.
bool IsEnvelope(const MediaType& type) {
    return type.Is("application", "pkcs7-mime") || type.Is("application", "x-pkcs7-mime");
}

// Text that a mail program shows in the message itself.
bool IsBodyText(const MediaType& type) {
    if (type.type == "message")
        return type.subtype == "delivery-status" || type.subtype == "disposition-notification" ||
               type.subtype == "feedback-report" || type.subtype == "rfc822-headers";
    return type.type == "text" && type.subtype != "calendar" && type.subtype != "rtf" &&
           type.subtype != "vcard" && type.subtype != "x-vcard" && type.subtype != "csv";
}

class MailReader {
  public:
    MailReader(DocumentSink& sink, MemberSink& members) : m_sink(sink), m_members(members) {}

    void Read(GMimeMessage* message) {
        m_time = MessageTime(message);
        EmitHeaders(message);
        GMimeObject* const root = g_mime_message_get_mime_part(message);
        if (root != nullptr)
            Take(root, Bodies::Shown, false, 0);
    }

  private:
    static constexpr const char* kEncrypted = "an encrypted part cannot be read";
    enum class Bodies { Shown, Skipped };

    void EmitHeaders(GMimeMessage* message) {
        GMimeObject* const object = GMIME_OBJECT(message);
        GMimeObject* const root = g_mime_message_get_mime_part(message);
        const std::string charset = root == nullptr ? "" : TypeParameter(root, "charset");
        const auto text = [&](const char* name) { return HeaderText(object, name, charset); };
        EmitMailHeaders(
            {text("From"), text("To"), text("Cc"), text("Bcc"), text("Date"), text("Subject")},
            m_sink);
    }

    // inRelated: the part belongs to an HTML body.
    void Take(GMimeObject* object, Bodies bodies, bool inRelated, int depth) {
        if (depth > kMaxMailDepth || ++m_parts > kMaxMailParts) {
            Once(m_toldParts, "its parts are too many or nested too deeply");
            return;
        }
        const MediaType type = TypeOf(object);
        if (IsEncryptedPart(type))
            Once(m_toldEncrypted, kEncrypted);
        else if (IsEnvelope(type) && GMIME_IS_PART(object))
            TakeEnvelope(GMIME_PART(object), bodies, depth);
        else if (GMIME_IS_MULTIPART(object))
            TakeMultipart(GMIME_MULTIPART(object), type, bodies, depth);
        else if (GMIME_IS_MESSAGE_PART(object))
            TakeMessage(GMIME_MESSAGE_PART(object));
        else if (GMIME_IS_PART(object))
            TakePart(GMIME_PART(object), type, bodies, inRelated);
    }

    void TakeMultipart(GMimeMultipart* multipart, const MediaType& type, Bodies bodies, int depth) {
        const int count = g_mime_multipart_get_count(multipart);
        if (count == 0 && bodies == Bodies::Shown) {
            // The boundary is missing or wrong: all that there is stands before the first part.
            const char* const rest = g_mime_multipart_get_prologue(multipart);
            if (rest != nullptr)
                EmitPlain(rest, {}, {});
        }
        const int chosen = type.subtype == "alternative" ? ChooseAlternative(multipart) : -1;
        for (int i = 0; i < count; ++i) {
            const bool shown = bodies == Bodies::Shown && (chosen < 0 || i == chosen);
            Take(g_mime_multipart_get_part(multipart, i), shown ? Bodies::Shown : Bodies::Skipped,
                 type.subtype == "related", depth + 1);
        }
    }

    // Plain text, unless it is empty or only says that there is a better form.
    static int ChooseAlternative(GMimeMultipart* multipart) {
        int plain = -1;
        int rich = -1;
        const int count = g_mime_multipart_get_count(multipart);
        for (int i = 0; i < count; ++i) {
            GMimeObject* const part = g_mime_multipart_get_part(multipart, i);
            const MediaType type = TypeOf(part);
            if (plain < 0 && type.Is("text", "plain") && GMIME_IS_PART(part))
                plain = i;
            else if (type.Is("text", "html") || type.type == "multipart")
                rich = i;
        }
        if (plain < 0 || rich < 0)
            return std::max({plain, rich, 0});
        const PartContent content(GMIME_PART(g_mime_multipart_get_part(multipart, plain)));
        return content.Bytes().size() < kShortPlainBody ? rich : plain;
    }

    void TakePart(GMimePart* part, const MediaType& type, Bodies bodies, bool inRelated) {
        GMimeObject* const object = GMIME_OBJECT(part);
        if (IsSignature(type))
            return;
        const std::string name = FileNameOf(object);
        // A body may have a name, given by careless programs; what follows it with one is a file.
        const bool isBody =
            IsBodyText(type) && !HasAttachmentDisposition(object) && (name.empty() || !m_sawBody);
        if (isBody) {
            if (bodies == Bodies::Shown)
                EmitBody(part, type);
        } else if (!name.empty() || !inRelated || type.type != "image") {
            // A picture of an HTML body without a name is decoration.
            Deliver(name.empty() ? "attachment-" + std::to_string(++m_unnamed) + EndingFor(type)
                                 : name,
                    [part] { return PartContent(part); });
        }
    }

    void TakeEnvelope(GMimePart* part, Bodies bodies, int depth) {
        const std::optional<std::string> content = UnwrapSigned(PartContent(part).Bytes());
        if (!content.has_value()) {
            Once(m_toldEncrypted, kEncrypted);
            return;
        }
        const GOwner<GMimeObject> inner = ParsePart(*content);
        if (inner != nullptr)
            Take(inner.get(), bodies, false, depth + 1);
    }

    void TakeMessage(GMimeMessagePart* part) {
        GMimeMessage* const message = g_mime_message_part_get_message(part);
        if (message == nullptr)
            return;
        std::string name = FileNameOf(GMIME_OBJECT(part));
        if (name.empty()) {
            name = CleanFileName(HeaderText(GMIME_OBJECT(message), "Subject"));
            name = (name.empty() ? "message" : name) + ".eml";
        }
        Deliver(name, [message] { return PartContent(message); });
    }

    template <typename Open> void Deliver(const std::string& name, Open open) {
        Member member;
        member.path = m_names.Add(name);
        if (!m_members.Wants(member.path))
            return;
        const PartContent content = open();
        member.displayName = name;
        member.modified = m_time;
        member.bytes = content.Bytes();
        m_members.Receive(member);
    }

    void EmitBody(GMimePart* part, const MediaType& type) {
        m_sawBody = true;
        const PartContent content(part);
        std::string charset = TypeParameter(GMIME_OBJECT(part), "charset");
        if (type.Is("text", "html")) {
            EmitMailHtml(content.Bytes(), charset, m_sink);
            return;
        }
        MailTextRules rules;
        rules.flowed = Parameter(part, "format") == "flowed";
        rules.deletesBlanks = Parameter(part, "delsp") == "yes";
        EmitPlain(content.Bytes(), charset, rules);
    }

    static std::string Parameter(GMimePart* part, const char* name) {
        std::string value = TypeParameter(GMIME_OBJECT(part), name);
        for (char& c : value)
            c = g_ascii_tolower(c);
        return value;
    }

    void EmitPlain(std::string_view bytes, std::string_view charset, const MailTextRules& rules) {
        if (EmitMailText(MailTextToUtf8(bytes, charset), rules, m_sink))
            Once(m_toldEncrypted, kEncrypted);
    }

    void Once(bool& told, std::string_view reason) {
        if (!told)
            m_sink.Incomplete(reason);
        told = true;
    }

    DocumentSink& m_sink;
    MemberSink& m_members;
    UniqueNames m_names;
    std::int64_t m_time = 0;
    int m_parts = 0;
    int m_unnamed = 0;
    bool m_sawBody = false;
    bool m_toldParts = false;
    bool m_toldEncrypted = false;
};

// What stands before the headers in files that were cut out of a mailbox.
std::string_view SkipEnvelope(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    while (bytes.starts_with('\n') || bytes.starts_with('\r'))
        bytes.remove_prefix(1);
    if (bytes.starts_with("From ") || bytes.starts_with(">From ")) {
        const std::size_t end = bytes.find('\n');
        bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    }
    return bytes;
}

} // namespace

void ReadMail(const Source& source, DocumentSink& sink, MemberSink& attachments) {
    std::string_view bytes = SkipEnvelope(source.bytes);
    const bool cut = bytes.size() > kMaxMailBytes;
    if (cut)
        bytes = bytes.substr(0, kMaxMailBytes);
    if (bytes.empty())
        throw ReadError(ReadState::Damaged, "is empty");
    const GOwner<GMimeMessage> message = ParseMessage(bytes);
    if (message == nullptr)
        throw ReadError(ReadState::Damaged, "is no mail message");
    MailReader(sink, attachments).Read(message.get());
    if (cut)
        sink.Incomplete("larger than what is read of a message");
}

} // namespace engine
