// Owners of the mail library's objects, and what is asked of a part of a message.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/MailMime.h"

#include "engine/readers/Charset.h"
#include "engine/readers/MemberNames.h"

#include <limits>

namespace engine {

namespace {

struct FreeText {
    void operator()(char* text) const { g_free(text); }
};
using GText = std::unique_ptr<char, FreeText>;

std::string View(const char* text) {
    return text == nullptr ? std::string() : std::string(text);
}

std::string ToUtf8(std::string_view raw, std::string_view charset) {
    if (ValidUtf8Length(raw) == raw.size())
        return std::string(raw);
    return DecodeText(raw, DetectCharset(raw, charset), std::numeric_limits<std::size_t>::max());
}

// Folded lines become one line.
std::string Unfold(std::string_view raw) {
    std::string line;
    for (const char c : raw) {
        if (c == '\r' || c == '\n' || c == '\t')
            line += line.empty() || line.back() == ' ' ? "" : " ";
        else if (c != ' ' || (!line.empty() && line.back() != ' '))
            line += c;
    }
    while (!line.empty() && line.back() == ' ')
        line.pop_back();
    return line;
}

GMimeParserOptions* ParserOptions() {
    // Tried in this order on raw bytes in file names.
    static const char* charsets[] = {"utf-8", "windows-1252", nullptr};
    static GMimeParserOptions* const options = [] {
        GMimeParserOptions* made = g_mime_parser_options_new();
        g_mime_parser_options_set_fallback_charsets(made, charsets);
        return made;
    }();
    return options;
}

GOwner<GMimeParser> MakeParser(std::string_view bytes) {
    InitMime();
    const GOwner<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(bytes.data(), bytes.size()));
    GOwner<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    g_mime_parser_set_format(parser.get(), GMIME_FORMAT_MESSAGE);
    return parser;
}

std::string Small(const char* text) {
    std::string small = View(text);
    for (char& c : small)
        c = g_ascii_tolower(c);
    return small;
}

} // namespace

void InitMime() {
    static const bool ready = [] {
        g_mime_init();
        ParserOptions();
        return true;
    }();
    static_cast<void>(ready);
}

GOwner<GMimeMessage> ParseMessage(std::string_view bytes) {
    const GOwner<GMimeParser> parser = MakeParser(bytes);
    return GOwner<GMimeMessage>(g_mime_parser_construct_message(parser.get(), ParserOptions()));
}

GOwner<GMimeObject> ParsePart(std::string_view bytes) {
    const GOwner<GMimeParser> parser = MakeParser(bytes);
    return GOwner<GMimeObject>(g_mime_parser_construct_part(parser.get(), ParserOptions()));
}

std::string HeaderText(GMimeObject* object, const char* name, std::string_view charset) {
    std::string all;
    GMimeHeaderList* const headers = g_mime_object_get_header_list(object);
    const int count = g_mime_header_list_get_count(headers);
    for (int i = 0; i < count; ++i) {
        GMimeHeader* const header = g_mime_header_list_get_header_at(headers, i);
        if (g_ascii_strcasecmp(g_mime_header_get_name(header), name) != 0)
            continue;
        const char* const raw = g_mime_header_get_raw_value(header);
        if (raw == nullptr)
            continue;
        const std::string line = Unfold(ToUtf8(raw, charset));
        const GText decoded(g_mime_utils_header_decode_text(ParserOptions(), line.c_str()));
        const std::string text = ToUtf8(Unfold(View(decoded.get())), charset);
        if (text.empty())
            continue;
        all += all.empty() ? text : ", " + text;
    }
    return all;
}

std::int64_t MessageTime(GMimeMessage* message) {
    GDateTime* const date = g_mime_message_get_date(message);
    return date == nullptr ? 0 : g_date_time_to_unix(date);
}

MediaType TypeOf(GMimeObject* object) {
    GMimeContentType* const type = g_mime_object_get_content_type(object);
    // The library takes what it does not understand for binary data.
    const char* const header = g_mime_object_get_header(object, "Content-Type");
    if (type == nullptr ||
        (header != nullptr && std::string_view(header).find('/') == std::string_view::npos))
        return {"text", "plain"};
    return {Small(g_mime_content_type_get_media_type(type)),
            Small(g_mime_content_type_get_media_subtype(type))};
}

std::string TypeParameter(GMimeObject* object, const char* name) {
    return View(g_mime_object_get_content_type_parameter(object, name));
}

std::string FileNameOf(GMimeObject* object) {
    std::string name = View(g_mime_object_get_content_disposition_parameter(object, "filename"));
    if (name.empty())
        name = TypeParameter(object, "name");
    if (name.empty())
        return {};
    // Many senders put encoded words into parameters, where they do not belong.
    if (name.find("=?") != std::string::npos)
        name = View(GText(g_mime_utils_header_decode_text(ParserOptions(), name.c_str())).get());
    return CleanFileName(ToUtf8(Unfold(name), {}));
}

bool HasAttachmentDisposition(GMimeObject* object) {
    return Small(g_mime_object_get_disposition(object)) == "attachment";
}

PartContent::PartContent(GMimePart* part) : m_stream(g_mime_stream_mem_new()) {
    GMimeDataWrapper* const content = g_mime_part_get_content(part);
    if (content != nullptr)
        g_mime_data_wrapper_write_to_stream(content, m_stream.get());
}

PartContent::PartContent(GMimeMessage* message) : m_stream(g_mime_stream_mem_new()) {
    g_mime_object_write_to_stream(GMIME_OBJECT(message), nullptr, m_stream.get());
}

std::string_view PartContent::Bytes() const {
    const GByteArray* const array =
        g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(m_stream.get()));
    if (array == nullptr || array->len == 0)
        return {};
    return {reinterpret_cast<const char*>(array->data), array->len};
}

} // namespace engine
