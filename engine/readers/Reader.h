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
    Rtf,
    Doc,         // word processing in a compound file, and what came before it
    Xls,         // spreadsheets in a compound file, and the streams that came before it
    Xlsb,        // spreadsheets of binary records in a zip package
    Ppt,
    Msg,         // one message in a compound file
    Mbox,        // container: many messages one after the other
    Mht,         // a web page saved with all that belongs to it
    Chm,         // compiled help
    Fb2,
    Xps,
    WordPerfect, // and other old word processors that the same libraries read
    Media,       // pictures, sound and films: what they say of themselves
    Archive,     // container: 7z, rar, iso, cab, cpio and their like
    Compressed,  // container: one compressed file, not a tar
};

[[nodiscard]] constexpr bool IsContainer(Kind kind) {
    return kind == Kind::Zip || kind == Kind::Tar || kind == Kind::Mbox || kind == Kind::Archive ||
           kind == Kind::Compressed;
}
// Whether a document of this kind may hold others: what is attached to it or embedded in it.
[[nodiscard]] constexpr bool MayHoldOthers(Kind kind) {
    switch (kind) {
    case Kind::Unknown:
    case Kind::PlainText:
    case Kind::Html:
    case Kind::Xml:
    case Kind::Epub:
    case Kind::Mht:
    case Kind::Chm:
    case Kind::Fb2:
    case Kind::Xps:
    case Kind::WordPerfect:
    case Kind::Media:
        return false;
    default:
        return true;
    }
}
// Short name for people and for the "kind" column, such as "pdf"; never empty.
[[nodiscard]] const char* KindName(Kind kind);

// Recognises a document by its first bytes, by what its archive holds, and by its name's ending
// where the content leaves a choice. Extensions that lie are not believed.
[[nodiscard]] Kind DetectKind(const Source& source);

// Version of all readers together: a document that failed is tried again when it has risen.
inline constexpr int kReadersVersion = 2;

// Each reads one document into the sink. They throw ReadError, StopReading (passed on) or
// std::bad_alloc, leave no file open and use no network. Hostile input costs at most the
// worker process they run in.
void ReadPlainText(const Source& source, DocumentSink& sink);
void ReadHtml(const Source& source, DocumentSink& sink);
void ReadXml(const Source& source, DocumentSink& sink);
// Embedded files go to attachments.
void ReadPdf(const Source& source, DocumentSink& sink, MemberSink& attachments);
// What is embedded goes to attachments, here and in the other office formats.
void ReadDocx(const Source& source, DocumentSink& sink, MemberSink& attachments);
void ReadXlsx(const Source& source, DocumentSink& sink, MemberSink& attachments);
void ReadPptx(const Source& source, DocumentSink& sink, MemberSink& attachments);
void ReadOpenDocument(const Source& source, DocumentSink& sink, MemberSink& attachments);
void ReadEpub(const Source& source, DocumentSink& sink);
void ReadRtf(const Source& source, DocumentSink& sink);
void ReadDoc(const Source& source, DocumentSink& sink, MemberSink& attachments);
void ReadXls(const Source& source, DocumentSink& sink, MemberSink& attachments);
void ReadXlsb(const Source& source, DocumentSink& sink, MemberSink& attachments);
void ReadPpt(const Source& source, DocumentSink& sink, MemberSink& attachments);
void ReadMht(const Source& source, DocumentSink& sink);
void ReadChm(const Source& source, DocumentSink& sink);
void ReadFb2(const Source& source, DocumentSink& sink);
void ReadXps(const Source& source, DocumentSink& sink);
void ReadWordPerfect(const Source& source, DocumentSink& sink);
// Title, author, place, camera and what else the file says of itself; no picture is decoded.
void ReadMedia(const Source& source, DocumentSink& sink);
// The message's headers and bodies; its attachments go to members.
void ReadMail(const Source& source, DocumentSink& sink, MemberSink& attachments);
void ReadMsg(const Source& source, DocumentSink& sink, MemberSink& attachments);
// Every message to members, named by its number from 0 with ".eml"; displayName is its subject.
void ReadMbox(const Source& source, MemberSink& members);
// Zip, tar, the other archives, compressed files: every regular file to members, in the order of the archive, each
// under a path of its own that is safe to show and to join. Members that need a password or are
// damaged come with their problem. Where the archive itself ends early, ReadError follows the last
// member: Damaged (the place), or Partly (a cap was reached, it is one part of a split archive).
void ReadArchive(const Source& source, MemberSink& members);

// Picks the reader by kind (not for containers; what is attached goes to attachments).
void ReadDocument(Kind kind, const Source& source, DocumentSink& sink, MemberSink& attachments);

} // namespace engine
