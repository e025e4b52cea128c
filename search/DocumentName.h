// The names that the engine gives to documents, taken apart: a file, and the members inside it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>
#include <vector>

namespace velmora {

// One step into a container: ">0|dir\name" of an archive, ">{0:0}|name" of a mail.
struct MemberStep {
    QString mark; // "0", "{0:0}"
    QString name; // as a person sees it: its folders parted by "/", no stand-ins
    // The step leads into a mail or a mail store, not into an archive.
    bool IntoMail = false;
};

struct DocumentName {
    QString file; // in the form it was given
    std::vector<MemberStep> members;

    // A name in capitals: \DOCS\A.ZIP>0|B.EML>{0:0}|C.TXT. Characters that would part names stand
    // as stand-ins in it, so that every ">" leads into a member.
    static DocumentName OfFileName(const QString& fileName);
    // The same with the spelling of the disk, whose file name may hold a ">" of its own. Without a
    // spelling that fits it is OfFileName.
    static DocumentName OfSpelling(const QString& fileName, const QString& spelling);

    // The mark of the step into a mail that lies innermost; empty when there is none.
    [[nodiscard]] QString MailMark() const;
    // The file or member that holds the innermost member as an attachment of a mail.
    [[nodiscard]] QString NameOfMail() const;
    // The archive that is nearest to the outside, inside the innermost mail if there is one; its
    // name is a path only when it is the file itself. Empty: the document lies in no archive.
    [[nodiscard]] QString Archive() const;

  private:
    // Position in members of the innermost step into a mail; -1: none.
    [[nodiscard]] int MailStep() const;
};

// Whether the name of a message's member is one of an attachment: walking from its end, a ":" is
// met before a "{".
bool VerifyIfIsAttach(const QString& name);

} // namespace velmora
