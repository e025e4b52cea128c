// Mail: which parts are text, which are attachments, and how broken messages come out.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/MailSniff.h"
#include "tests/engine/readers/MemberRecorder.h"
#include "tests/engine/readers/RecordingSink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace engine {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

struct Mail {
    RecordingSink sink;
    MemberRecorder attachments;
};

void ReadInto(const std::string& message, Mail& mail) {
    ReadMail({message, "mail.eml"}, mail.sink, mail.attachments);
    EXPECT_TRUE(mail.sink.Whole()) << mail.sink.text;
}

Mail Read(const std::string& message) {
    Mail mail;
    ReadInto(message, mail);
    return mail;
}

const std::string kHead = "From: Eva =?iso-8859-1?Q?L=F6we?= <eva@example.org>\r\n"
                          "To: anna@example.org,\r\n bert@example.org\r\n"
                          "Subject: =?utf-8?B?R3LDvMOfZQ==?= aus Rom\r\n"
                          "Date: Tue, 3 Mar 2020 10:00:00 +0100\r\n"
                          "MIME-Version: 1.0\r\n";

std::string Part(const std::string& headers, const std::string& body) {
    return "--X\r\n" + headers + "\r\n\r\n" + body + "\r\n";
}
std::string Multipart(const std::string& subtype, const std::string& parts) {
    return "Content-Type: multipart/" + subtype + "; boundary=X\r\n\r\n" + parts + "--X--\r\n";
}

TEST(MailReader, HeadersAreFieldsAndText) {
    const Mail mail = Read(kHead + "\r\nHello there.\r\nSecond line.\r\n\r\nNext.\r\n");
    EXPECT_EQ(mail.sink.fields.at("title"), "Grüße aus Rom");
    EXPECT_EQ(mail.sink.fields.at("author"), "Eva Löwe <eva@example.org>");
    EXPECT_EQ(mail.sink.text, "[p]From: Eva Löwe <eva@example.org>[/p]"
                              "[p]To: anna@example.org, bert@example.org[/p]"
                              "[p]Date: Tue, 3 Mar 2020 10:00:00 +0100[/p]"
                              "[p]Subject: Grüße aus Rom[/p]"
                              "[p]Hello there.[br]Second line.[/p][p]Next.[/p]");
}

TEST(MailReader, AlternativesGiveOneText) {
    const std::string longText(400, 'w');
    const std::string html = "<html><title>No title of mine</title><p>rich</p></html>";
    const Mail plain =
        Read(kHead + Multipart("alternative", Part("Content-Type: text/plain", longText) +
                                                  Part("Content-Type: text/html", html)));
    EXPECT_THAT(plain.sink.text, HasSubstr(longText));
    EXPECT_THAT(plain.sink.text, Not(HasSubstr("rich")));
    // A plain text that only says that there is more is not taken.
    const Mail rich =
        Read(kHead + Multipart("alternative", Part("Content-Type: text/plain", "See HTML.") +
                                                  Part("Content-Type: text/html", html)));
    EXPECT_THAT(rich.sink.text, HasSubstr("[p]rich[/p]"));
    EXPECT_THAT(rich.sink.text, Not(HasSubstr("See HTML")));
    EXPECT_EQ(rich.sink.fields.at("title"), "Grüße aus Rom");
    // What is attached inside the form that is not shown is kept.
    const std::string calendar = Part("Content-Type: text/calendar", "BEGIN:VCALENDAR");
    const Mail invitation = Read(
        kHead + Multipart("alternative", Part("Content-Type: text/plain", longText) + calendar));
    EXPECT_THAT(invitation.attachments.Paths(), ElementsAre("attachment-1.ics"));
}

TEST(MailReader, CharsetsDeclaredMissingAndWrong) {
    const auto text = [](const std::string& type, const std::string& body) {
        return Read(kHead + "Content-Type: " + type + "\r\n\r\n" + body).sink.Words();
    };
    EXPECT_THAT(text("text/plain; charset=iso-8859-2", "P\xF8\xEDli\xB9"), HasSubstr("Příliš"));
    EXPECT_THAT(text("text/plain", "gr\xFC\xDF"), HasSubstr("grüß"));
    EXPECT_THAT(text("text/plain; charset=nonsense-8", "gr\xC3\xBC\xC3\x9F"), HasSubstr("grüß"));
    EXPECT_THAT(text("text/plain; charset=us-ascii", "\x93quoted\x94"), HasSubstr("“quoted”"));
    EXPECT_THAT(text("text/plain; charset=utf-7", "gr+APwA3w-"), HasSubstr("grüß"));
    EXPECT_THAT(text("text/plain; charset=iso-2022-jp", "\x1B$B$^$_\x1B(B"), HasSubstr("まみ"));
    EXPECT_THAT(
        text("text/html; charset=koi8-r", "<meta charset=utf-8><p>\xF0\xD2\xC9\xD7\xC5\xD4</p>"),
        HasSubstr("Привет"));
    const Mail raw = Read("From: a@b.c\r\nSubject: gr\xFC\xDF\r\nDate: x\r\n\r\nText");
    EXPECT_EQ(raw.sink.fields.at("title"), "grüß");
}

TEST(MailReader, FlowedLinesJoinAndQuotesNest) {
    const Mail mail = Read(kHead + "Content-Type: text/plain; format=flowed; delsp=yes\r\n\r\n"
                                   "A long li \r\nne goes on.\r\n"
                                   ">> deep\r\n> less \r\n> deep\r\n"
                                   "mine\r\n-- \r\nsignature\r\n");
    EXPECT_THAT(mail.sink.text, HasSubstr("[p]A long line goes on.[/p]"
                                          "[quote][quote][p]deep[/p][/quote][p]lessdeep[/p][/quote]"
                                          "[p]mine[br]-- [br]signature[/p]"));
    const Mail fixed = Read(kHead + "\r\nOne \r\ntwo\r\n> > quoted\r\n");
    EXPECT_THAT(fixed.sink.text, HasSubstr("[p]One [br]two[/p][quote][quote][p]quoted[/p]"));
}

TEST(MailReader, AttachmentsAreMembers) {
    const std::string pdf = "Content-Type: application/pdf; name=\"a.pdf\"\r\n"
                            "Content-Transfer-Encoding: base64";
    Mail mail;
    mail.attachments.unwanted = {"not this.txt"};
    ReadInto(kHead +
                 Multipart("mixed",
                           Part("Content-Type: text/plain", "See the files.") +
                               Part(pdf, "JVBERi0=") + Part(pdf, "JVBERi0yLjA=") +
                               Part("Content-Type: text/plain\r\nContent-Disposition: attachment;"
                                    " filename*=utf-8''..%2Fl%C3%B6we.txt",
                                    "lion") +
                               Part("Content-Type: text/plain; name=\"not this.txt\"", "unwanted") +
                               Part("Content-Type: image/jpeg", "nameless") +
                               Part("Content-Type: application/pgp-signature; name=s.asc", "s")),
             mail);
    EXPECT_THAT(mail.attachments.asked,
                ElementsAre("a.pdf", "a (2).pdf", "löwe.txt", "not this.txt", "attachment-1.jpg"));
    EXPECT_THAT(mail.attachments.Paths(),
                ElementsAre("a.pdf", "a (2).pdf", "löwe.txt", "attachment-1.jpg"));
    EXPECT_EQ(mail.attachments.At("a.pdf").content, "%PDF-");
    EXPECT_EQ(mail.attachments.At("a (2).pdf").content, "%PDF-2.0");
    EXPECT_EQ(mail.attachments.At("a (2).pdf").member.displayName, "a.pdf");
    EXPECT_EQ(mail.attachments.At("löwe.txt").member.modified, 1'583'226'000);
    EXPECT_THAT(mail.sink.text, Not(HasSubstr("lion")));
}

TEST(MailReader, MessagesInsideAreAttachments) {
    const std::string inner = "From: inner@example.org\r\nSubject: In/side\r\n\r\nInner text\r\n";
    const Mail mail =
        Read(kHead + Multipart("mixed", Part("Content-Type: text/plain", "Outer") +
                                            Part("Content-Type: message/rfc822", inner)));
    ASSERT_THAT(mail.attachments.Paths(), ElementsAre("In_side.eml"));
    EXPECT_THAT(mail.sink.text, Not(HasSubstr("Inner")));
    const Mail nested = Read(mail.attachments.members[0].content);
    EXPECT_EQ(nested.sink.fields.at("title"), "In/side");
    EXPECT_THAT(nested.sink.text, HasSubstr("[p]Inner text[/p]"));
}

TEST(MailReader, EncryptedPartsAreTold) {
    const Mail smime = Read(kHead + "Content-Type: application/pkcs7-mime; name=smime.p7m;"
                                    " smime-type=enveloped-data\r\n\r\nMIIB");
    EXPECT_THAT(smime.sink.problems, ElementsAre("an encrypted part cannot be read"));
    EXPECT_THAT(smime.attachments.members, IsEmpty());
    const Mail pgp = Read(
        kHead + Multipart("mixed", Part("Content-Type: text/plain", "Readable.") +
                                       "--X\r\nContent-Type: multipart/encrypted; boundary=Y\r\n"
                                       "\r\n--Y\r\n\r\nVersion: 1\r\n--Y--\r\n"));
    EXPECT_THAT(pgp.sink.text, HasSubstr("Readable."));
    EXPECT_THAT(pgp.sink.problems, ElementsAre("an encrypted part cannot be read"));
    const Mail inlined = Read(kHead + "\r\nBefore\r\n-----BEGIN PGP MESSAGE-----\r\nhQEMA5\r\n"
                                      "-----END PGP MESSAGE-----\r\nAfter\r\n");
    EXPECT_THAT(inlined.sink.text, HasSubstr("[p]Before[br]After[/p]"));
    EXPECT_EQ(inlined.sink.problems.size(), 1U);
}

// A value in DER: tag, length, content.
std::string Der(char tag, const std::string& content) {
    const auto size = static_cast<unsigned>(content.size());
    std::string length(1, static_cast<char>(size));
    if (size > 127)
        length = {'\x82', static_cast<char>(size >> 8), static_cast<char>(size & 0xFF)};
    return tag + length + content;
}

// A signed envelope around content that nobody has signed.
std::string Envelope(const std::string& content) {
    const std::string signedData = Der(6, "\x2A\x86\x48\x86\xF7\x0D\x01\x07\x02");
    const std::string data = Der(6, "\x2A\x86\x48\x86\xF7\x0D\x01\x07\x01");
    const std::string inner = Der(0x30, data + Der('\xA0', Der(4, content)));
    const std::string body = Der(2, "\x01") + Der(0x31, "") + inner + Der(0x31, "");
    return Der(0x30, signedData + Der('\xA0', Der(0x30, body)));
}

TEST(MailReader, SignedEnvelopesAreOpened) {
    const std::string inner = Multipart("mixed", Part("Content-Type: text/plain", "Signed text") +
                                                     Part("Content-Type: text/plain\r\n"
                                                          "Content-Disposition: attachment;"
                                                          " filename=in.txt",
                                                          "attached"));
    const Mail mail = Read(kHead +
                           "Content-Type: application/pkcs7-mime; smime-type=signed-data\r\n"
                           "Content-Transfer-Encoding: binary\r\n\r\n" +
                           Envelope(inner));
    EXPECT_THAT(mail.sink.text, HasSubstr("[p]Signed text[/p]"));
    EXPECT_THAT(mail.attachments.Paths(), ElementsAre("in.txt"));
    EXPECT_THAT(mail.sink.problems, IsEmpty());
}

TEST(MailReader, BrokenMessagesGiveWhatTheyHave) {
    EXPECT_THAT(Read("From x@y Thu Jan  1 00:00:00 1970\n" + kHead + "\nBody").sink.text,
                HasSubstr("[p]Body[/p]"));
    EXPECT_THAT(Read(kHead + "Content-Type: multipart/mixed\r\n\r\nNo boundary at all").sink.text,
                HasSubstr("No boundary at all"));
    EXPECT_THAT(Read(kHead + "Content-Type: multipart/mixed; boundary=X\r\n\r\n--X\r\n\r\nNever"
                             " closed")
                    .sink.text,
                HasSubstr("Never closed"));
    EXPECT_THAT(Read(kHead + "Content-Type: ;;;\r\n\r\nNo type").sink.text, HasSubstr("No type"));
    EXPECT_THAT(Read(kHead + "Content-Transfer-Encoding: base64\r\n\r\nSGVsbG8=!!\r\n").sink.text,
                HasSubstr("Hello"));
    EXPECT_THROW(Read(""), ReadError);
}

TEST(MailReader, DeepAndManyPartsEnd) {
    std::string deep = kHead;
    for (int i = 0; i < 3 * kMaxMailDepth; ++i) {
        const std::string boundary = "b" + std::to_string(i);
        deep += "Content-Type: multipart/mixed; boundary=" + boundary + "\r\n\r\n--" + boundary +
                "\r\n";
    }
    EXPECT_THAT(Read(deep + "\r\nbottom").sink.problems.size(), 1U);
    std::string parts;
    for (int i = 0; i < kMaxMailParts + 10; ++i)
        parts += "--X\r\n\r\n\r\n";
    EXPECT_THAT(Read(kHead + Multipart("mixed", parts)).sink.problems.size(), 1U);
}

TEST(MailSniff, KnowsMailFromOtherText) {
    EXPECT_TRUE(LooksLikeMail(kHead));
    EXPECT_TRUE(LooksLikeMail("Received: from a by b\n\tfor c\nMessage-ID: <1@a>\n\nText"));
    EXPECT_TRUE(LooksLikeMail("From a@b Thu Jan 1 00:00:00 1970\nReturn-Path: <a@b>\nTo: c\n"));
    EXPECT_TRUE(LooksLikeMail("Return-path: <a@b>\nthis is no header\nDate: today\nTo: b\n\n"));
    EXPECT_TRUE(LooksLikeMail("Content-Type: text/plain\n\nText", true));
    for (const char* other :
         {"", "Dear Eva,\n\nFrom: here on\nTo: there\n", "Package: velmora\nVersion: 1\n",
          "HTTP/1.1 200 OK\nDate: today\nContent-Type: text/html\n", "Subject: a note\nDate: x\n\n",
          "key: value\nother: value\n", " From: a\nTo: b\nSubject: c\n", "{\"From\": \"a\"}",
          "From here on we walked\nto the sea\n"})
        EXPECT_FALSE(LooksLikeMail(other)) << other;
    const std::string envelope = "From a@b Thu Jan  1 00:00:00 1970\n";
    EXPECT_FALSE(LooksLikeMailbox(envelope + kHead + "\r\nFrom now on\r\n"));
    EXPECT_TRUE(LooksLikeMailbox(envelope + kHead + "\r\nText\r\n\r\n" + envelope + kHead));
}

} // namespace
} // namespace engine
