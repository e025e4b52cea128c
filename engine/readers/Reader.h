// The readers: one for each family of documents, chosen by content first, then by name.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocumentSink.h"
#include "engine/readers/Source.h"

#include <stdexcept>
#include <string>

namespace engine {

// A document cannot be read at all. What was put into the sink before stays.
class ReadError : public std::runtime_error {
  public:
    ReadError(ReadState why, const std::string& reason) : std::runtime_error(reason), state(why) {}
    ReadState state; // Encrypted, Damaged or Unknown; of an archive Partly too
};

// Thrown by sinks to end a read early; no reader catches it.
struct StopReading {};

enum class Kind : std::uint8_t {
    Unknown,
    PlainText,
    Html,
    Xml,
    Pdf,
    Docx,
    Xlsx,
    Pptx,
    OpenDocument, // ODT, ODS, ODP and their templates, flat XML too
    Epub,
    Mail,     // one message, EML
    Zip,      // containers: their members are documents of their own
    Tar,      // tar, plain or compressed
};

[[nodiscard]] constexpr bool IsContainer(Kind kind) { return kind == Kind::Zip || kind == Kind::Tar; }
// Short name for people and for the "kind" column, such as "pdf"; never empty.
[[nodiscard]] const char* KindName(Kind kind);

// Recognises a document by its first bytes, by what its archive holds, and by its name's ending
// where the content leaves a choice. Extensions that lie are not believed.
[[nodiscard]] Kind DetectKind(const Source& source);

// Version of all readers together: a document that failed is tried again when it has risen.
inline constexpr int kReadersVersion = 1;

// Each reads one document into the sink. They throw ReadError, StopReading (passed on) or
// std::bad_alloc, leave no file open and use no network. Hostile input costs at most the
// worker process they run in.
void ReadPlainText(const Source& source, DocumentSink& sink);
void ReadHtml(const Source& source, DocumentSink& sink);
void ReadXml(const Source& source, DocumentSink& sink);
void ReadPdf(const Source& source, DocumentSink& sink);
void ReadDocx(const Source& source, DocumentSink& sink);
void ReadXlsx(const Source& source, DocumentSink& sink);
void ReadPptx(const Source& source, DocumentSink& sink);
void ReadOpenDocument(const Source& source, DocumentSink& sink);
void ReadEpub(const Source& source, DocumentSink& sink);
// The message's headers and bodies; its attachments go to members.
void ReadMail(const Source& source, DocumentSink& sink, MemberSink& attachments);
// Zip, tar and compressed tar: every regular file to members, in the order of the archive, each
// under a path of its own that is safe to show and to join. Members that need a password or are
// damaged come with their problem. Where the archive itself ends early, ReadError follows the last
// member: Damaged (the place), or Partly (a cap was reached, it is one part of a split archive).
void ReadArchive(const Source& source, MemberSink& members);

// Picks the reader by kind (not for containers; a mail's attachments go to attachments).
void ReadDocument(Kind kind, const Source& source, DocumentSink& sink, MemberSink& attachments);

} // namespace engine
