// Tells mail from other text by its headers.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string_view>

namespace engine {

// Whether bytes (the beginning of a file, 4 kB or more) start with the headers of a message, or
// with the "From " line and the headers of the first message of a mailbox. A file whose name says
// that it is a mail (.eml) needs fewer of them.
[[nodiscard]] bool LooksLikeMail(std::string_view bytes, bool namedAsMail = false);

// Whether a line parts the messages of a mailbox: "From ", a sender, a date with its time. What a
// person writes at the beginning of a line does not look so.
[[nodiscard]] bool IsMailboxSeparator(std::string_view line);

// Whether bytes are a mailbox: messages one after the other, each with a "From " line. Files that
// were cut out of one begin so too, hence the second message must be there, unless the file's
// name says that it is a mailbox (.mbox); give it the whole file.
[[nodiscard]] bool LooksLikeMailbox(std::string_view bytes, bool namedAsMailbox = false);

// Whether bytes (the beginning of a file, 16 kB or more) are a web page that was saved as one file
// (MHTML): built like a mail, but nobody sent it. A file whose name says so (.mht) needs less.
[[nodiscard]] bool LooksLikeWebArchive(std::string_view bytes, bool namedAsWebArchive = false);

} // namespace engine
