// Names of the kinds, and the way from a kind to its reader.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Reader.h"

namespace engine {

const char* KindName(Kind kind) {
    switch (kind) {
    case Kind::Unknown:
        break;
    case Kind::PlainText:
        return "text";
    case Kind::Html:
        return "html";
    case Kind::Xml:
        return "xml";
    case Kind::Pdf:
        return "pdf";
    case Kind::Docx:
        return "docx";
    case Kind::Xlsx:
        return "xlsx";
    case Kind::Pptx:
        return "pptx";
    case Kind::OpenDocument:
        return "opendocument";
    case Kind::Epub:
        return "epub";
    case Kind::Mail:
        return "mail";
    case Kind::Zip:
        return "zip";
    case Kind::Tar:
        return "tar";
    }
    return "unknown";
}

void ReadDocument(Kind kind, const Source& source, DocumentSink& sink, MemberSink& attachments) {
    switch (kind) {
    case Kind::PlainText:
        return ReadPlainText(source, sink);
    case Kind::Html:
        return ReadHtml(source, sink);
    case Kind::Xml:
        return ReadXml(source, sink);
    case Kind::Pdf:
        return ReadPdf(source, sink);
    case Kind::Docx:
        return ReadDocx(source, sink);
    case Kind::Xlsx:
        return ReadXlsx(source, sink);
    case Kind::Pptx:
        return ReadPptx(source, sink);
    case Kind::OpenDocument:
        return ReadOpenDocument(source, sink);
    case Kind::Epub:
        return ReadEpub(source, sink);
    case Kind::Mail:
        return ReadMail(source, sink, attachments);
    case Kind::Zip:
    case Kind::Tar:
    case Kind::Unknown:
        break;
    }
    throw ReadError(ReadState::Unknown, "no reader for this kind of file");
}

} // namespace engine
