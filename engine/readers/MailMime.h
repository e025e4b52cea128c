// Owners of the mail library's objects, and what is asked of a part of a message.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <gmime/gmime.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace engine {

struct UnrefObject {
    void operator()(void* object) const { g_object_unref(object); }
};
template <typename T> using GOwner = std::unique_ptr<T, UnrefObject>;

// Makes the library ready; the first call counts, from any thread.
void InitMime();

// Parses one message. Null where there is nothing that could be one.
[[nodiscard]] GOwner<GMimeMessage> ParseMessage(std::string_view bytes);

// Parses a part with its headers, as it lies inside another one. Null as above.
[[nodiscard]] GOwner<GMimeObject> ParsePart(std::string_view bytes);

// A header as people read it, UTF-8 on one line; several of one name are joined by ", ". charset
// is a hint for raw bytes. Empty where there is none.
[[nodiscard]] std::string HeaderText(GMimeObject* object, const char* name,
                                     std::string_view charset = {});

// Seconds since 1970 of the Date header; 0 where it is missing or nonsense.
[[nodiscard]] std::int64_t MessageTime(GMimeMessage* message);

// "text" and "plain" of "Text/Plain", in small letters.
struct MediaType {
    std::string type;
    std::string subtype;
    [[nodiscard]] bool Is(std::string_view t, std::string_view s) const {
        return type == t && subtype == s;
    }
};
[[nodiscard]] MediaType TypeOf(GMimeObject* object);
// A parameter of the content type, "" where there is none.
[[nodiscard]] std::string TypeParameter(GMimeObject* object, const char* name);
// The file name that the part's sender gave it, harmless, "" where there is none.
[[nodiscard]] std::string FileNameOf(GMimeObject* object);
[[nodiscard]] bool HasAttachmentDisposition(GMimeObject* object);

// The bytes of a part, its transfer encoding undone; of a message, the message as it stands.
class PartContent {
  public:
    explicit PartContent(GMimePart* part);
    explicit PartContent(GMimeMessage* message);
    [[nodiscard]] std::string_view Bytes() const;

  private:
    GOwner<GMimeStream> m_stream;
};

} // namespace engine
