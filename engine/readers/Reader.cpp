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
    case Kind::Rtf:
        return "rtf";
    case Kind::Doc:
        return "doc";
    case Kind::Xls:
        return "xls";
    case Kind::Xlsb:
        return "xlsb";
    case Kind::Ppt:
        return "ppt";
    case Kind::Msg:
        return "msg";
    case Kind::Mbox:
        return "mbox";
    case Kind::Mht:
        return "mht";
    case Kind::Chm:
        return "chm";
    case Kind::Fb2:
        return "fb2";
    case Kind::Xps:
        return "xps";
    case Kind::WordPerfect:
        return "wordperfect";
    case Kind::Media:
        return "media";
    case Kind::Archive:
        return "archive";
    case Kind::Compressed:
        return "compressed";
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
        return ReadPdf(source, sink, attachments);
    case Kind::Docx:
        return ReadDocx(source, sink, attachments);
    case Kind::Xlsx:
        return ReadXlsx(source, sink, attachments);
    case Kind::Pptx:
        return ReadPptx(source, sink, attachments);
    case Kind::OpenDocument:
        return ReadOpenDocument(source, sink, attachments);
    case Kind::Epub:
        return ReadEpub(source, sink);
    case Kind::Mail:
        return ReadMail(source, sink, attachments);
    case Kind::Rtf:
        return ReadRtf(source, sink);
    case Kind::Doc:
        return ReadDoc(source, sink, attachments);
    case Kind::Xls:
        return ReadXls(source, sink, attachments);
    case Kind::Xlsb:
        return ReadXlsb(source, sink, attachments);
    case Kind::Ppt:
        return ReadPpt(source, sink, attachments);
    case Kind::Msg:
        return ReadMsg(source, sink, attachments);
    case Kind::Mht:
        return ReadMht(source, sink);
    case Kind::Chm:
        return ReadChm(source, sink);
    case Kind::Fb2:
        return ReadFb2(source, sink);
    case Kind::Xps:
        return ReadXps(source, sink);
    case Kind::WordPerfect:
        return ReadWordPerfect(source, sink);
    case Kind::Media:
        return ReadMedia(source, sink);
    case Kind::Zip:
    case Kind::Tar:
    case Kind::Mbox:
    case Kind::Archive:
    case Kind::Compressed:
    case Kind::Unknown:
        break;
    }
    throw ReadError(ReadState::Unknown, "no reader for this kind of file");
}

} // namespace engine
