// Handing a message to the person's mail program, unsent.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>

class QIODevice;

namespace velmora {

struct MailRecord {
    QString To;
    QString CC;
    QString BCC;
    QString From;
    QString Subject;
    QString Body;
    QString Priority;
};

// Where error reports go.
QString SupportAddress();

// 1 when the default mail client wants a mailto address with "&" in the first place, else 0.
int GetDefaultMailClient();

// Opens an unsent message in the default mail client. A client that cannot be started is not told.
void SendMail(const QString& subject, const QString& body, const QString& toAddress);

// Makes a message record of those three, From and the rest as error reports have them.
MailRecord EmailCreate(const QString& subject, const QString& body, const QString& toAddress);
// Writes the record as the text of an unsent message; false (and nothing written behind the
// sender) when To is empty.
bool EmailWrite(QIODevice& file, const MailRecord& mail);

// The address that SendMailTO opens. Its first separator is "&", deliberately; subject and body
// are not escaped but for line breaks.
QString MailToAddress(const QString& subject, const QString& body, const QString& toAddress);
void SendMailTO(const QString& subject, const QString& body, const QString& toAddress);

} // namespace velmora
