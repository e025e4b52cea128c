// From one found document to one row: what it is, what it is called, where it lies.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/ResultRow.h"

#include "core/CommonFunctions.h"
#include "core/Messages.h"
#include "platform/Folders.h"
#include "platform/LogicalPath.h"
#include "search/DocumentName.h"
#include "search/TextQuery.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr QStringView kMailBody = u"[MAILBODY]";
constexpr int kMailAttachment = 12;
constexpr int kDesktop = 85;
constexpr int kDocument = 92;
constexpr int kZipFile = 107;
constexpr int kMails = 223;

QString LastPart(const QString& machinePath) {
    return machinePath.mid(machinePath.lastIndexOf(u'/') + 1);
}

// What an item is, by the shape of its names.
struct Traits {
    bool storeMessage = false;
    bool mail = false;
    bool attachment = false;
    bool zip = false;
    bool ocr = false;

    [[nodiscard]] TypeFilter Type() const {
        if (attachment) {
            return TypeFilter::ATC;
        }
        if (mail || storeMessage) {
            return TypeFilter::EML;
        }
        return zip ? TypeFilter::ZIP : ocr ? TypeFilter::IMG : TypeFilter::OTH;
    }
};

class RowMaker {
  public:
    RowMaker(const engine::SearchItem& item, const ResultScope& scope)
        : m_item(item), m_rawName(platform::Capitals(item.FileName)), m_scope(scope) {}

    std::optional<ResultRow> Make(TypeFilter filter);

  private:
    bool FindDocument();
    void Recognise();
    [[nodiscard]] QString DisplayName() const;
    [[nodiscard]] QString WithoutMailBody() const;
    [[nodiscard]] QString Subject() const;
    [[nodiscard]] QString PathText() const;
    [[nodiscard]] QString AttachmentText() const;
    [[nodiscard]] RowKind Kind() const;

    const engine::SearchItem& m_item;
    QString m_rawName;
    const ResultScope& m_scope;
    QString m_documentName; // of the document that a person knows
    DocumentName m_name;    // the same as spelled on the disk
    Traits m_traits;
};

// False: there is no document to show.
bool RowMaker::FindDocument() {
    if (!m_rawName.contains(m_scope.ocrTexts)) {
        m_documentName = m_rawName;
        m_name = DocumentName::OfSpelling(m_rawName, m_item.Spelling);
        if (m_item.Spelling.isEmpty() && !m_name.file.isEmpty()) {
            m_name.file = platform::DisplayPath(m_name.file);
        }
        return !m_documentName.isEmpty();
    }
    m_traits.ocr = true;
    m_documentName = platform::Capitals(m_scope.ocr.GetFileNameByOcrFile(m_rawName));
    if (m_documentName.isEmpty() || !IsInScope(m_documentName, m_scope.folder) ||
        !VerifyExistsFileName(m_documentName)) {
        return false;
    }
    m_name.file = platform::DisplayPath(m_documentName);
    return true;
}

void RowMaker::Recognise() {
    m_traits.mail = m_item.DisplayName.startsWith(kMailBody);
    const QString mark = m_name.MailMark();
    m_traits.storeMessage = !mark.isNull();
    m_traits.attachment = m_traits.storeMessage && VerifyIfIsAttach(mark);
    m_traits.zip = !m_name.Archive().isEmpty();
    if (!m_traits.storeMessage && !m_traits.mail && m_documentName.contains(m_scope.mailCopies)) {
        m_traits.attachment = m_traits.mail = true;
    }
}

QString RowMaker::WithoutMailBody() const {
    QString name = m_item.DisplayName;
    return name.startsWith(kMailBody) ? name.mid(kMailBody.size()) : name;
}

// Of the mail that an attachment belongs to; the mail's file has to do where it is not told.
QString RowMaker::Subject() const {
    if (!m_traits.storeMessage) {
        return WithoutMailBody();
    }
    const qsizetype brace = m_item.DisplayName.indexOf(u'{');
    const QString subject = m_item.DisplayName.left(brace).trimmed();
    return brace > 0 && !subject.isEmpty() ? subject : LastPart(m_name.NameOfMail());
}

QString RowMaker::DisplayName() const {
    const bool isMessage = (m_traits.mail || m_traits.storeMessage) && !m_traits.attachment;
    if (m_name.members.empty()) {
        return isMessage ? WithoutMailBody() : LastPart(m_name.file);
    }
    const QString member = m_name.members.back().name;
    if (member.isEmpty() || (isMessage && !m_traits.zip)) {
        return WithoutMailBody();
    }
    return member;
}

QString RowMaker::AttachmentText() const {
    QString place = Subject();
    if (const QString archive = LastPart(m_name.Archive()); !archive.isEmpty()) {
        place = GetMessage(kZipFile) + u' ' + archive +
                (m_traits.storeMessage && !place.isEmpty() ? u" - "_s + place : QString());
    }
    return GetMessage(kMailAttachment) + u" ("_s + place + u')';
}

QString RowMaker::PathText() const {
    if (m_traits.attachment) {
        return AttachmentText();
    }
    if (m_traits.mail || m_traits.storeMessage) {
        return GetMessage(kMails);
    }
    if (m_traits.zip) {
        return ReadablePath(m_name.Archive(), m_scope);
    }
    const qsizetype slash = m_name.file.lastIndexOf(u'/');
    return ReadablePath(m_name.file.left(slash == 0 ? 1 : slash), m_scope);
}

RowKind RowMaker::Kind() const {
    if (m_traits.mail) {
        return RowKind::Mail;
    }
    if (m_traits.storeMessage) {
        return RowKind::StoreMessage;
    }
    return m_traits.zip ? RowKind::ZipMember : RowKind::File;
}

std::optional<ResultRow> RowMaker::Make(TypeFilter filter) {
    if (!FindDocument()) {
        return std::nullopt;
    }
    Recognise();
    if (filter != TypeFilter::ALL && filter != m_traits.Type()) {
        return std::nullopt;
    }
    ResultRow row;
    row.DATE = m_item.Date;
    row.DATETOSORT = m_item.Date.isValid() ? m_item.Date.toString(u"yyyyMMdd") : QString();
    row.FILEDESCR = DisplayName();
    row.HITCOUNT = static_cast<int>(m_item.Hits.size());
    row.kind = Kind();
    row.PATH = PathText();
    row.HITS = m_item.HitsString();
    row.FILENAME = m_documentName;
    row.OCRFILENAME = m_rawName;
    row.Spelling = m_item.Spelling;
    row.Id = m_item.Id;
    row.File = m_name.file;
    row.IsMember = !m_name.members.empty();
    row.IsMailMessage = m_traits.Type() == TypeFilter::EML;
    return row;
}

// Puts a name for a folder at the beginning of a path.
bool Replace(QString& path, const QString& folder, int messageId) {
    if (folder.size() < 2 || !path.startsWith(folder, Qt::CaseInsensitive) ||
        (path.size() > folder.size() && path[folder.size()] != u'/')) {
        return false;
    }
    path = GetMessage(messageId) + path.mid(folder.size());
    return true;
}

} // namespace

ResultScope::ResultScope(const QString& searched, const OcrDocuments& documentsWithText)
    : folder(searched), ocrTexts(platform::Capitals(OcrFolder())),
      mailCopies(platform::Capitals(MailCopyFolder())),
      desktop(platform::SpecialFolder(platform::kDesktopFolder)),
      documents(platform::SpecialFolder(platform::kDocumentsFolder)), ocr(documentsWithText) {}

std::optional<ResultRow> MakeRow(const engine::SearchItem& item, TypeFilter filter,
                                 const ResultScope& scope) {
    return RowMaker(item, scope).Make(filter);
}

QString ReadablePath(const QString& machinePath, const ResultScope& scope) {
    QString path = machinePath;
    if (!Replace(path, scope.desktop, kDesktop)) {
        Replace(path, scope.documents, kDocument);
    }
    return path;
}

} // namespace velmora
