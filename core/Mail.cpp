// Unsent messages for the person's mail program.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Mail.h"

#include "core/CommonFunctions.h"
#include "core/Failure.h"
#include "core/Messages.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "platform/Shell.h"

#include <QBuffer>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// A header line; a line break in a value would begin another header.
void WriteHeader(QIODevice& file, QString line) {
    line.replace(u"\r\n"_s, u" "_s).replace(u'\r', u' ').replace(u'\n', u' ');
    file.write((line + u"\r\n"_s).toUtf8());
}

void WriteAddress(QIODevice& file, const QString& header, const QString& address) {
    if (!address.isEmpty()) {
        WriteHeader(file, header + u": \""_s + address + u'"');
    }
}

} // namespace

QString SupportAddress() {
    return u"support@velmora.example"_s;
}

int GetDefaultMailClient() {
    return 0; // the one client that wants the other form is not made for this system
}

MailRecord EmailCreate(const QString& subject, const QString& body, const QString& toAddress) {
    MailRecord mail;
    mail.To = toAddress;
    mail.From = GetMessage(117);
    mail.Subject = subject;
    mail.Body = body;
    return mail;
}

bool EmailWrite(QIODevice& file, const MailRecord& mail) {
    WriteHeader(file, u"From: <"_s + mail.From + u'>');
    if (mail.To.isEmpty()) {
        return false;
    }
    WriteAddress(file, u"To"_s, mail.To);
    WriteAddress(file, u"CC"_s, mail.CC);
    WriteAddress(file, u"BCC"_s, mail.BCC);
    WriteHeader(file, u"Subject: "_s + mail.Subject);
    WriteHeader(file, u"X-Priority:"_s + mail.Priority);
    WriteHeader(file, u"X-Unsent: 1"_s);
    WriteHeader(file, {});
    file.write((mail.Body + u"\r\n"_s).toUtf8());
    file.close();
    return true;
}

void SendMail(const QString& subject, const QString& body, const QString& toAddress) {
    Guard("ErrManager", "SendMail", [&] {
        if (GetDefaultMailClient() == 1) {
            SendMailTO(subject, body, toAddress);
            return;
        }
        QByteArray text;
        QBuffer buffer(&text);
        buffer.open(QIODevice::WriteOnly);
        if (!EmailWrite(buffer, EmailCreate(subject, body, toAddress))) {
            return;
        }
        const QString path = GetTmpPath() + u"temp.eml"_s;
        Check(platform::ReplaceFile(MachinePath(path), text), path);
        (void)platform::OpenWithDesktop(MachinePath(path));
    });
}

QString MailToAddress(const QString& subject, const QString& body, const QString& toAddress) {
    return u"mailto:"_s + toAddress + u"&subject="_s + subject + u"&body="_s +
           QString(body).replace(u"\r\n"_s, u"%0D%0A"_s);
}

void SendMailTO(const QString& subject, const QString& body, const QString& toAddress) {
    Guard("ErrManager", "SendMailTO",
          [&] { (void)platform::OpenMailTo(MailToAddress(subject, body, toAddress)); });
}

} // namespace velmora
