// Mailboxes: where one message ends and the next begins, what they are called.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/MailSniff.h"
#include "tests/engine/readers/MemberRecorder.h"

#include <gtest/gtest.h>

namespace engine {
namespace {

const std::string kSeparator = "From ann@example.com Tue Jan 07 11:42:09 1997\n";

std::string Message(const std::string& subject, const std::string& body) {
    return "From: Ann <ann@example.com>\nTo: bob@example.com\nDate: Sat, 24 Mar 2007 23:00:00 "
           "+0200\nSubject: " +
           subject + "\n\n" + body;
}

MemberRecorder ReadMailbox(const std::string& bytes) {
    MemberRecorder members;
    ReadMbox({bytes, "Inbox"}, members);
    return members;
}

TEST(MboxReader, MessagesAndTheirNames) {
    const std::string first = Message("=?utf-8?q?M=C3=BCller?=", "One\nFrom here on\n");
    const std::string second = "Received: x\n\nno subject\n";
    const MemberRecorder members =
        ReadMailbox(kSeparator + first + "\n" + kSeparator + second + "\n" +
                    "From - Sat Mar 24 23:00:00 2007\n" + Message("Last", "End"));
    ASSERT_EQ(members.Paths(), (std::vector<std::string>{"0.eml", "1.eml", "2.eml"}));
    EXPECT_EQ(members.members[0].member.displayName, "Müller");
    EXPECT_EQ(members.members[0].member.modified, 1174770000);
    EXPECT_EQ(members.members[0].content, first);
    EXPECT_EQ(members.members[1].member.displayName, "(1)");
    EXPECT_EQ(members.members[1].member.modified, 852637329) << "the separator's date";
    EXPECT_EQ(members.members[1].content, second);
    EXPECT_EQ(members.members[2].content, Message("Last", "End"));
}

TEST(MboxReader, WhatIsNoSeparator) {
    const std::string body = "From the beginning\n\nFrom now on at 10:00 in Jan 2024x\n\nFrom x\n"
                             "From a@b Tue Jan 07 11:42:09 1997 was the line\nend\n";
    const MemberRecorder members =
        ReadMailbox(kSeparator + Message("A", body) + "\n" + kSeparator + Message("B", "b\n"));
    ASSERT_EQ(members.members.size(), 2U);
    EXPECT_EQ(members.members[0].content, Message("A", body));
    // Some programs leave out the empty line: headers must follow then.
    EXPECT_EQ(ReadMailbox(kSeparator + Message("A", "1\n") + kSeparator + Message("B", "2\n"))
                  .members.size(),
              2U);
    EXPECT_EQ(ReadMailbox("From ann\n" + Message("A", "1\n\nFrom bob\nno header\n") +
                          "\nFrom ann\n" + Message("B", "2\n"))
                  .members.size(),
              2U)
        << "without dates";
}

TEST(MboxReader, LineEndsMarksAndDeletedOnes) {
    std::string bytes = kSeparator + "X-Mozilla-Status: 0009\n" + Message("Deleted", "gone\n") +
                        "\n" + kSeparator + "X-Mozilla-Status: 0001\n" +
                        Message("Kept", ">From me\n>>From you\n>From\n> >From it\n") + "\n";
    MemberRecorder members = ReadMailbox(bytes);
    EXPECT_EQ(members.asked, (std::vector<std::string>{"0.eml", "1.eml"}));
    ASSERT_EQ(members.Paths(), (std::vector<std::string>{"1.eml"})) << "names do not move up";
    EXPECT_TRUE(
        members.members[0].content.ends_with("\n\nFrom me\n>From you\n>From\n> >From it\n"));
    std::string windows;
    for (const char c : bytes)
        windows += c == '\n' ? "\r\n" : std::string(1, c);
    members = ReadMailbox(windows);
    ASSERT_EQ(members.members.size(), 1U);
    EXPECT_EQ(members.members[0].member.displayName, "Kept");
    EXPECT_TRUE(members.members[0].content.ends_with("> >From it\r\n"));
}

// A store of gigabytes is mapped: its messages are not to be copied.
TEST(MboxReader, MessagesAreViews) {
    const std::string bytes = kSeparator + Message("A", "1\n") + "\n" + kSeparator;
    class Views final : public MemberSink {
      public:
        std::vector<const char*> begins;
        bool Wants(std::string_view) override { return true; }
        void Receive(const Member& member) override { begins.push_back(member.bytes.data()); }
    } views;
    ReadMbox({bytes, {}}, views);
    ASSERT_EQ(views.begins.size(), 2U);
    EXPECT_EQ(views.begins[0], bytes.data() + kSeparator.size());
}

TEST(MboxReader, Detection) {
    const std::string one = kSeparator + Message("A", "1\n");
    EXPECT_EQ(DetectKind({one + "\n" + one, "Inbox"}), Kind::Mbox);
    EXPECT_EQ(DetectKind({one + "\n" + one, "x.patch"}), Kind::PlainText);
    EXPECT_EQ(DetectKind({one, "x"}), Kind::Mail) << "cut out of a mailbox";
    EXPECT_EQ(DetectKind({one, "x.mbox"}), Kind::Mbox);
    EXPECT_EQ(DetectKind({"From x to y\n\nFrom a to b\n", "x.mbox"}), Kind::PlainText);
    EXPECT_FALSE(IsMailboxSeparator("From Monday on at 10:00 we meet"));
    EXPECT_TRUE(IsMailboxSeparator("From ???@??? Tue Jan 07 11:42:09 1997"));
}

} // namespace
} // namespace engine
