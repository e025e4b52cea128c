// Messages in compound files.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/engine/readers/OldOffice.h"

#include <gtest/gtest.h>

namespace engine {
namespace {

using namespace std::string_literals;

// ---- Makers

struct Property {
    unsigned id, type;
    std::uint64_t value;
};

// The stream of properties that need none of their own; header: 32 of a message in a file, 24 of
// one in another message, 8 of the others.
std::string Properties(std::size_t header, const std::vector<Property>& properties) {
    Binary stream;
    stream.To(header);
    for (const Property& each : properties)
        stream.U16(each.type)
            .U16(each.id)
            .U32(6)
            .U32(each.value & 0xFFFFFFFF)
            .U32(each.value >> 32);
    return stream.bytes;
}

std::string Text(unsigned id) {
    char name[32];
    std::snprintf(name, sizeof name, "__substg1.0_%04X001F", id);
    return name;
}

constexpr unsigned kNumber = 3, kTime = 0x40;
// 2024-02-29 12:00 UTC.
constexpr std::uint64_t kLeapDay = (std::uint64_t{1709208000} + 11644473600) * 10'000'000;

Streams Message(const std::u16string& messageClass, const std::u16string& body) {
    return {{"__properties_version1.0", Properties(32, {{0x0039, kTime, kLeapDay}})},
            {Text(0x001A), Wide(messageClass)},
            {Text(0x0037), Wide(u"Plan")},
            {Text(0x0042), Wide(u"Änne")},
            {Text(0x5D02), Wide(u"anne@example.com")},
            {Text(0x1000), Wide(body)}};
}

void AddRecipient(Streams& streams, int number, unsigned kind, const std::u16string& name,
                  const std::u16string& address) {
    const std::string folder = "__recip_version1.0_#0000000" + std::to_string(number) + "/";
    streams.emplace_back(folder + "__properties_version1.0",
                         Properties(8, {{0x0C15, kNumber, kind}}));
    streams.emplace_back(folder + Text(0x3001), Wide(name));
    streams.emplace_back(folder + Text(0x3003), Wide(address));
}

const char* const kHeaders = "[p]From: Änne <anne@example.com>[/p]";
const char* const kDateAndSubject =
    "[p]Date: Thu, 29 Feb 2024 12:00:00 +0000[/p][p]Subject: Plan[/p]";

// ---- Tests

TEST(MsgReader, HeadersAndPlainBody) {
    Streams streams = Message(u"IPM.Note", u"first\r\nline\r\n\r\n> quoted\0"s);
    AddRecipient(streams, 0, 1, u"Bob", u"bob@example.com");
    AddRecipient(streams, 1, 2, u"Cid", u"/O=ORG/CN=CID");
    AddRecipient(streams, 2, 1, u"dora@example.com", u"dora@example.com");
    AddRecipient(streams, 3, 3, u"Eve <eve@example.com>", u"eve@example.com");
    const OldReading reading = ReadOld(Kind::Msg, MakeCompound(streams));
    EXPECT_EQ(reading.sink.text,
              kHeaders +
                  "[p]To: Bob <bob@example.com>, dora@example.com[/p][p]Cc: Cid[/p]"
                  "[p]Bcc: Eve <eve@example.com>[/p]"s +
                  kDateAndSubject + "[p]first[br]line[/p][quote][p]quoted[/p][/quote]");
    EXPECT_EQ(reading.sink.fields.at("title"), "Plan");
    EXPECT_EQ(reading.sink.fields.at("author"), "Änne <anne@example.com>");
    EXPECT_EQ(DetectKind({MakeCompound(streams), "x"}), Kind::Msg);
}

TEST(MsgReader, TheBestBodyIsRead) {
    const auto body = [](Streams streams) {
        const std::string text = ReadOld(Kind::Msg, MakeCompound(streams)).sink.text;
        return text.substr(text.find("Subject: Plan[/p]") + 17);
    };
    Streams streams = Message(u"IPM.Note", u"short");
    EXPECT_EQ(body(streams), "[p]short[/p]");
    // Stored, not compressed; the header's sizes, the mark, a sum.
    const std::string rtf = "{\\rtf1\\ansi rich \\b body}";
    streams.emplace_back(
        "__substg1.0_10090102",
        Binary().U32(rtf.size() + 12).U32(rtf.size()).Raw("MELA").U32(0).Raw(rtf).bytes);
    EXPECT_EQ(body(streams), "[p]rich body[/p]");
    streams.emplace_back("__substg1.0_10130102", "<p>html <b>b\xF6"
                                                 "dy</b>");
    EXPECT_EQ(body(streams), "[p]html bödy[/p]");
    Streams longer = Message(u"IPM.Note", std::u16string(300, u'x'));
    longer.insert(longer.end(), streams.end() - 2, streams.end());
    EXPECT_EQ(body(longer), "[p]" + std::string(300, 'x') + "[/p]");
}

TEST(MsgReader, TextsOfACodePage) {
    const Streams streams{
        {"__properties_version1.0", Properties(32, {{0x3FFD, kNumber, 1251}})},
        {"__substg1.0_0037001E", "\xEC\xE8\xF0"},
        {"__substg1.0_1000001E", "\xF2\xE5\xEA\xF1\xF2\0"s},
        {"__recip_version1.0_#00000000/__properties_version1.0", Properties(8, {})},
        {"__recip_version1.0_#00000000/__substg1.0_3001001E", "\xC0\xED\xED\xE0"}};
    EXPECT_EQ(ReadOld(Kind::Msg, MakeCompound(streams)).sink.text,
              "[p]To: Анна[/p][p]Subject: мир[/p][p]текст[/p]");
}

TEST(MsgReader, AttachmentsAndMessagesWithin) {
    Streams streams = Message(u"IPM.Note", u"outer");
    const std::string first = "__attach_version1.0_#00000000/",
                      second = "__attach_version1.0_#00000001/";
    streams.emplace_back(first + Text(0x3707), Wide(u"..\\plan.txt"));
    streams.emplace_back(first + "__substg1.0_37010102", "content");
    const std::string inner = second + "__substg1.0_3701000D/";
    streams.emplace_back(inner + "__properties_version1.0",
                         Properties(24, {{0x0039, kTime, kLeapDay}}));
    streams.emplace_back(inner + Text(0x0037), Wide(u"In/ner"));
    streams.emplace_back(inner + Text(0x1000), Wide(u"inner body"));
    streams.emplace_back(inner + first + Text(0x3707), Wide(u"deep.bin"));
    streams.emplace_back(inner + first + "__substg1.0_37010102", std::string(10'000, 'd'));
    OldReading reading = ReadOld(Kind::Msg, MakeCompound(streams));
    EXPECT_EQ(reading.members.Paths(), (std::vector<std::string>{"plan.txt", "In_ner.msg"}));
    EXPECT_EQ(reading.members.members[0].content, "content");
    EXPECT_EQ(reading.members.members[0].member.modified, 1709208000);

    const std::string embedded = reading.members.members[1].content;
    ASSERT_EQ(DetectKind({embedded, "In_ner.msg"}), Kind::Msg);
    reading = ReadOld(Kind::Msg, embedded);
    EXPECT_EQ(
        reading.sink.text,
        "[p]Date: Thu, 29 Feb 2024 12:00:00 +0000[/p][p]Subject: In/ner[/p][p]inner body[/p]");
    EXPECT_EQ(reading.members.At("deep.bin").content, std::string(10'000, 'd'));
}

TEST(MsgReader, SignedMessages) {
    Streams streams = Message(u"IPM.Note.SMIME.MultipartSigned", u"");
    const std::string folder = "__attach_version1.0_#00000000/";
    streams.emplace_back(folder + Text(0x3707), Wide(u"smime.p7m"));
    streams.emplace_back(
        folder + "__substg1.0_37010102",
        "Content-Type: multipart/signed; boundary=b\r\n\r\n--b\r\nContent-Type: text/plain\r\n\r\n"
        "signed words\r\n--b\r\nContent-Type: application/pkcs7-signature; name=smime.p7s\r\n\r\n"
        "x\r\n--b--\r\n");
    OldReading reading = ReadOld(Kind::Msg, MakeCompound(streams));
    EXPECT_EQ(reading.sink.text, kHeaders + ""s + kDateAndSubject + "[p]signed words[/p]");
    EXPECT_TRUE(reading.members.members.empty());

    streams = Message(u"IPM.Note.SMIME", u"");
    streams.emplace_back(folder + "__substg1.0_37010102", "no envelope");
    reading = ReadOld(Kind::Msg, MakeCompound(streams));
    EXPECT_EQ(reading.sink.problems, std::vector<std::string>{"an encrypted part cannot be read"});
}

TEST(MsgReader, ContactsAppointmentsTasks) {
    // Names of properties: number, kind and set, place in the list; the sets; a text.
    const auto named = [](Streams streams) {
        streams.emplace_back("__nameid_version1.0/__substg1.0_00030102", Binary()
                                                                             .U32(0x8083)
                                                                             .U16(3 << 1)
                                                                             .U16(0)
                                                                             .U32(0x8208)
                                                                             .U16(4 << 1)
                                                                             .U16(1)
                                                                             .U32(0x820D)
                                                                             .U16(4 << 1)
                                                                             .U16(2)
                                                                             .U32(0)
                                                                             .U16(2 << 1 | 1)
                                                                             .U16(3)
                                                                             .bytes);
        streams.emplace_back("__nameid_version1.0/__substg1.0_00020102",
                             Binary().U32(0x00062004).To(16).U32(0x00062002).To(32).bytes);
        streams.emplace_back("__nameid_version1.0/__substg1.0_00040102",
                             Binary().U32(16).Raw(Wide(u"Keywords")).bytes);
        streams.emplace_back("__substg1.0_8003101F", std::string(8, '\0'));
        streams.emplace_back("__substg1.0_8003101F-00000000", Wide(u"red\0"s));
        streams.emplace_back("__substg1.0_8003101F-00000001", Wide(u"blue"));
        return streams;
    };
    const auto item = [](const OldReading& reading) {
        return reading.sink.text.substr(reading.sink.text.find("Subject: Plan[/p]") + 17);
    };
    Streams contact = named(Message(u"IPM.Contact", u"met in Rome"));
    contact.emplace_back(Text(0x3A16), Wide(u"Werft & Co"));
    contact.emplace_back(Text(0x3A1C), Wide(u"+39 06 1234"));
    contact.emplace_back(Text(0x3A15), Wide(u"Via Roma 1\r\nTorino"));
    contact.emplace_back(Text(0x8000), Wide(u"a@werft.example"));
    const OldReading reading = ReadOld(Kind::Msg, MakeCompound(contact));
    EXPECT_EQ(item(reading),
              "[p]Company: Werft & Co[/p][p]Mobile phone: +39 06 1234[/p]"
              "[p]Postal address: Via Roma 1[br]Torino[/p][p]E-mail: a@werft.example[/p]"
              "[p]met in Rome[/p]");
    EXPECT_EQ(reading.sink.fields.at("keywords"), "red, blue");

    Streams appointment = named(Message(u"IPM.Appointment", u""));
    appointment[0].second = Properties(32, {{0x8002, kTime, kLeapDay}, {0x0039, kTime, kLeapDay}});
    appointment.emplace_back(Text(0x8001), Wide(u"Raum 4"));
    EXPECT_EQ(item(ReadOld(Kind::Msg, MakeCompound(appointment))),
              "[p]Location: Raum 4[/p][p]Start: 2024-02-29 12:00 UTC[/p]");
}

TEST(MsgReader, RealMessages) {
    const auto text = [](const char* name) {
        return ReadOld(Kind::Msg, ReadTestFile("legacy/"s + name)).sink.text;
    };
    EXPECT_NE(text("RtfWithShortRussianString.msg")
                  .find("ввести \u00A0«Имя пользователя» (email) и \u00A0«Пароль» (password)."),
              std::string::npos);
    EXPECT_EQ(
        text("test_outlook_msg.msg"),
        "[p]From: M. C. Kurtuluş <muratcan.kurtulus@gmail.com>[/p]"
        "[p]To: test.recipient@example.com[/p][p]Date: Sun, 22 Dec 2024 11:23:00 +0300[/p]"
        "[p]Subject: Test Email Message[/p][p]This is the body of the test email message[/p]");
    EXPECT_NE(text("EmailWithSpecialCharsInSubject_2.msg")
                  .find("[p]Subject: Un sujet très bien défini[/p][p]Voilà[/p]"),
              std::string::npos);
}

TEST(MsgReader, DamagedMessages) {
    EXPECT_GT(ReadDamagedCopies(Kind::Msg, ReadTestFile("legacy/RtfWithShortRussianString.msg")),
              0);
    EXPECT_GT(ReadDamagedCopies(Kind::Msg, ReadTestFile("legacy/test_outlook_msg.msg")), 0);
    EXPECT_THROW(ReadOld(Kind::Msg, MakeCompound({{"Other", "x"}})), ReadError);
    // A body that says it is larger than it is, one that is no body, and a chain of nothing.
    for (const std::string& rtf :
         {Binary().U32(0xFFFFFFFF).U32(0xFFFFFFFF).Raw("LZFu").U32(0).Raw("\xFF\xFF\xFF").bytes,
          "short"s, std::string(3000, '\xFF')}) {
        Streams streams = Message(u"IPM.Note", u"plain");
        streams.emplace_back("__substg1.0_10090102", rtf);
        EXPECT_NE(ReadOld(Kind::Msg, MakeCompound(streams)).sink.text.find("[p]plain[/p]"),
                  std::string::npos);
    }
}

} // namespace
} // namespace engine
