// Unsent messages: the text of the file and the address.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Mail.h"
#include "core/CommonFunctions.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <gtest/gtest.h>

#include <QBuffer>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

QByteArray Written(const MailRecord& mail, bool expected) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_EQ(EmailWrite(buffer, mail), expected);
    EXPECT_EQ(buffer.isOpen(), !expected);
    return bytes;
}

TEST(MailTest, MessageHasItsLinesInOrder) {
    const ScopedGlobals program;
    EXPECT_EQ(
        Written(EmailCreate(u"Subject"_s, u"first\r\nzweite Größe"_s, u"a@b.example"_s), true),
        "From: <Velmora - Automatic error notification>\r\n"
        "To: \"a@b.example\"\r\n"
        "Subject: Subject\r\n"
        "X-Priority:\r\n"
        "X-Unsent: 1\r\n"
        "\r\n"
        "first\r\nzweite Gr\xC3\xB6\xC3\x9F\x65\r\n");
    MailRecord mail{u"t"_s, u"c"_s, u"b"_s, u"f"_s, u"one\r\nBcc: evil"_s, u"text"_s, u"1"_s};
    EXPECT_EQ(Written(mail, true), "From: <f>\r\nTo: \"t\"\r\nCC: \"c\"\r\nBCC: \"b\"\r\n"
                                   "Subject: one Bcc: evil\r\nX-Priority:1\r\nX-Unsent: 1\r\n\r\n"
                                   "text\r\n");
    mail.To.clear();
    EXPECT_EQ(Written(mail, false), "From: <f>\r\n");
}

TEST(MailTest, AddressBeginsWithAnAmpersand) {
    EXPECT_EQ(MailToAddress(u"A b"_s, u"one\r\ntwo & three"_s, u"x@y.example"_s),
              u"mailto:x@y.example&subject=A b&body=one%0D%0Atwo & three"_s);
}

TEST(MailTest, MessageIsLaidEvenWhenNoClientOpensIt) {
    const ScopedGlobals program;
    ScriptedReporter reporter;
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", ThePlace().Path("bin").toUtf8()); // no opener there
    SendMail(u"S"_s, u"body"_s, SupportAddress());
    qputenv("PATH", path);
    EXPECT_TRUE(
        BytesOf(platform::ToMachine(GetTmpPath() + u"temp.eml"_s)).contains("Subject: S\r\n"));
    EXPECT_TRUE(reporter.reports.isEmpty());
}

} // namespace
} // namespace velmora
