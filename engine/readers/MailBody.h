// What all readers of messages put out alike: the headers, the body that is chosen.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocumentSink.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace engine {

// A plain body shorter than this may only say that there is a better form: where there is one, that
// is read instead.
inline constexpr std::size_t kShortPlainBody = 256;

// As people read them, UTF-8; empty where there is none.
struct MailHeaders {
    std::string from, to, cc, bcc, date, subject;
};
// A paragraph for each, "From: Anna <anna@example.com>"; subject and sender as fields too.
void EmitMailHeaders(const MailHeaders& headers, DocumentSink& sink);

// Passes a body's events on, but for its fields: the message has its own title.
class BodySink final : public DocumentSink {
  public:
    explicit BodySink(DocumentSink& sink) : m_sink(sink) {}
    void Field(std::string_view, std::string_view) override {}
    void Text(std::string_view utf8) override { m_sink.Text(utf8); }
    void Open(Block block, int level) override { m_sink.Open(block, level); }
    void Close(Block block) override { m_sink.Close(block); }
    void Break() override { m_sink.Break(); }
    [[nodiscard]] bool WantsPictures() const override { return m_sink.WantsPictures(); }
    void Picture(std::string_view mime, std::string_view bytes,
                 std::string_view alternativeText) override {
        m_sink.Picture(mime, bytes, alternativeText);
    }
    void Incomplete(std::string_view reason) override { m_sink.Incomplete(reason); }

  private:
    DocumentSink& m_sink;
};

// A plain body's bytes; label is the charset that the message gives it, may be empty or nonsense.
[[nodiscard]] std::string MailTextToUtf8(std::string_view bytes, std::string_view label);
// An HTML body; charset as above. One that cannot be read is told as Incomplete.
void EmitMailHtml(std::string_view bytes, std::string_view charset, DocumentSink& sink);

} // namespace engine
