// Headers and bodies of messages.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/MailBody.h"

#include "engine/readers/Charset.h"
#include "engine/readers/Reader.h"

#include <glib.h>

#include <array>
#include <limits>
#include <utility>

namespace engine {

void EmitMailHeaders(const MailHeaders& headers, DocumentSink& sink) {
    sink.Field("title", headers.subject);
    sink.Field("author", headers.from);
    const std::array<std::pair<const char*, const std::string*>, 6> lines{
        {{"From", &headers.from},
         {"To", &headers.to},
         {"Cc", &headers.cc},
         {"Bcc", &headers.bcc},
         {"Date", &headers.date},
         {"Subject", &headers.subject}}};
    for (const auto& [name, text] : lines) {
        if (text->empty())
            continue;
        sink.Open(Block::Paragraph);
        sink.Text(std::string(name) + ": " + *text);
        sink.Close(Block::Paragraph);
    }
}

std::string MailTextToUtf8(std::string_view bytes, std::string_view label) {
    Charset charset = DetectCharset(bytes, label);
    // Charsets that look like plain ASCII have to be believed.
    if (g_ascii_strncasecmp(std::string(label).c_str(), "utf-7", 6) == 0)
        charset = {"UTF-7", 0, false};
    return DecodeText(bytes, charset, std::numeric_limits<std::size_t>::max());
}

void EmitMailHtml(std::string_view bytes, std::string_view charset, DocumentSink& sink) {
    // The charset of the part counts more than what the page says of itself: a mark at the
    // beginning tells so.
    std::string html;
    if (!charset.empty())
        html = "\xEF\xBB\xBF" + MailTextToUtf8(bytes, charset);
    BodySink body(sink);
    try {
        ReadHtml({charset.empty() ? bytes : html, "body.html"}, body);
    } catch (const ReadError& error) {
        sink.Incomplete(std::string("its HTML body cannot be read: ") + error.what());
    }
}

} // namespace engine
