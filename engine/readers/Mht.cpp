// Reads web pages that were saved as one file (MHTML).
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Base64.h"
#include "engine/readers/Charset.h"
#include "engine/readers/Flow.h"
#include "engine/readers/HtmlText.h"
#include "engine/readers/Limits.h"
#include "engine/readers/MailMime.h"
#include "engine/readers/Reader.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

namespace engine {
namespace {

// Takes the fields of the first page; the frames in it have titles of their own.
class PageFields final : public DocumentSink {
  public:
    explicit PageFields(DocumentSink& sink) : m_sink(sink) {}
    bool hasTitle = false;
    void Field(std::string_view name, std::string_view value) override {
        hasTitle = hasTitle || (name == "title" && !value.empty());
        m_sink.Field(name, value);
    }
    void Text(std::string_view) override {}
    void Open(Block, int) override {}
    void Close(Block) override {}
    void Break() override {}
    void Incomplete(std::string_view) override {}

  private:
    DocumentSink& m_sink;
};

std::string WithoutBrackets(std::string text) {
    if (text.starts_with('<'))
        text.erase(0, 1);
    if (text.ends_with('>'))
        text.pop_back();
    return text;
}

class WebArchive {
  public:
    explicit WebArchive(DocumentSink& sink) : m_sink(sink), m_flow(sink) {}
    void Read(GMimeMessage* message);

  private:
    void Collect(GMimeObject* object, int depth);
    void MoveRootToFront(GMimeObject* top);
    void ReadPage(GMimePart* part, DocumentSink* fields);
    bool Picture(const std::string& address, std::string& mime, std::string& bytes);

    DocumentSink& m_sink;
    Flow m_flow;
    std::vector<GMimePart*> m_pages; // HTML, in the order of the file
    std::vector<GMimePart*> m_plain; // text without tags
    std::unordered_map<std::string, GMimePart*> m_byAddress;
    int m_parts = 0;
    bool m_tooMany = false;
};

void WebArchive::Collect(GMimeObject* object, int depth) {
    if (depth > kMaxMailDepth || ++m_parts > kMaxMailParts) {
        m_tooMany = true;
        return;
    }
    if (GMIME_IS_MULTIPART(object)) {
        GMimeMultipart* const multipart = GMIME_MULTIPART(object);
        const int count = g_mime_multipart_get_count(multipart);
        for (int i = 0; i < count; ++i)
            Collect(g_mime_multipart_get_part(multipart, i), depth + 1);
        return;
    }
    if (!GMIME_IS_PART(object))
        return;
    GMimePart* const part = GMIME_PART(object);
    const MediaType type = TypeOf(object);
    if (type.Is("text", "html") || type.Is("application", "xhtml+xml"))
        m_pages.push_back(part);
    else if (type.Is("text", "plain"))
        m_plain.push_back(part);
    else if (type.type == "image") {
        m_byAddress.try_emplace(HeaderText(object, "Content-Location"), part);
        m_byAddress.try_emplace("cid:" + WithoutBrackets(HeaderText(object, "Content-ID")), part);
    }
}

// The page that the others belong to is the first one, unless the archive names it.
void WebArchive::MoveRootToFront(GMimeObject* top) {
    const std::string start = WithoutBrackets(TypeParameter(top, "start"));
    if (start.empty())
        return;
    const auto root = std::find_if(m_pages.begin(), m_pages.end(), [&](GMimePart* part) {
        return WithoutBrackets(HeaderText(GMIME_OBJECT(part), "Content-ID")) == start;
    });
    if (root != m_pages.end())
        std::rotate(m_pages.begin(), root, root + 1);
}

bool WebArchive::Picture(const std::string& address, std::string& mime, std::string& bytes) {
    const auto found = m_byAddress.find(address);
    if (found == m_byAddress.end())
        return false;
    const MediaType type = TypeOf(GMIME_OBJECT(found->second));
    mime = PictureType("x." + (type.subtype == "jpeg" ? "jpg" : type.subtype));
    const PartContent content(found->second);
    if (mime.empty() || content.Bytes().size() > kMaxPictureBytes)
        return false;
    bytes = content.Bytes();
    return true;
}

void WebArchive::ReadPage(GMimePart* part, DocumentSink* fields) {
    const PartContent content(part);
    const std::string_view bytes = content.Bytes();
    std::string label = TypeParameter(GMIME_OBJECT(part), "charset");
    if (CharsetOfLabel(label).empty())
        label = DeclaredHtmlCharset(bytes);
    if (bytes.size() > kMaxMemberBytes)
        m_sink.Incomplete("text beyond 256 MB");
    const Charset charset = DetectCharset(bytes, label);
    HtmlParts parts;
    parts.fields = fields;
    parts.wantsPictures = m_sink.WantsPictures();
    parts.picture = [this](const std::string& address, std::string& mime, std::string& picture) {
        return Picture(address, mime, picture);
    };
    ReadHtmlText(DecodeText(bytes, charset, kMaxMemberBytes), m_flow, parts);
    m_flow.EndParagraph();
}

void WebArchive::Read(GMimeMessage* message) {
    GMimeObject* const top = g_mime_message_get_mime_part(message);
    if (top != nullptr)
        Collect(top, 0);
    if (m_pages.empty())
        m_pages = m_plain;
    if (m_pages.empty())
        throw ReadError(ReadState::Damaged, "holds no web page");
    MoveRootToFront(top);
    PageFields fields(m_sink);
    for (GMimePart* page : m_pages)
        ReadPage(page, page == m_pages.front() ? &fields : nullptr);
    m_flow.Finish();
    if (!fields.hasTitle)
        m_sink.Field("title", HeaderText(GMIME_OBJECT(message), "Subject"));
    if (m_tooMany)
        m_sink.Incomplete("its parts are too many or nested too deeply");
}

} // namespace

void ReadMht(const Source& source, DocumentSink& sink) {
    const std::string_view bytes = source.bytes.substr(0, kMaxMailBytes);
    const GOwner<GMimeMessage> message = ParseMessage(bytes);
    if (message == nullptr)
        throw ReadError(ReadState::Damaged, "is no saved web page");
    WebArchive(sink).Read(message.get());
    if (bytes.size() < source.bytes.size())
        sink.Incomplete("larger than what is read of a web page");
}

} // namespace engine
