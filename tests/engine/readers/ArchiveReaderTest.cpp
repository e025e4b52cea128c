// Archives: what is handed out, under which names, and what is said of the rest.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/MemberNames.h"
#include "tests/engine/readers/ArchiveMaker.h"
#include "tests/engine/readers/MemberRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>

namespace engine {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Reads an archive; why is what ReadError says, empty where there is none.
struct Outcome {
    MemberRecorder sink;
    std::string why;
    ReadState state = ReadState::Read;
};

void ReadInto(std::string_view bytes, Outcome& outcome, const char* name = "archive") {
    try {
        ReadArchive({bytes, name}, outcome.sink);
    } catch (const ReadError& error) {
        outcome.why = error.what();
        outcome.state = error.state;
    }
}

Outcome Read(std::string_view bytes, const char* name = "archive") {
    Outcome outcome;
    ReadInto(bytes, outcome, name);
    return outcome;
}
Outcome ReadFile(const std::string& name) {
    return Read(ReadTestFile("archives/" + name), name.c_str());
}

TEST(ArchiveReader, ReadsEveryCompressionOfTar) {
    for (const char* name : {"bla.tgz", "bla.tar.bz2", "bla.tar.xz", "bla.tar.lz4", "bla.tar.Z"}) {
        SCOPED_TRACE(name);
        const Outcome read = Read(ReadTestFile(std::string("archives/") + name));
        EXPECT_EQ(read.why, "");
        ASSERT_THAT(read.sink.Paths(), ElementsAre("test1.xml", "test2.xml"));
        EXPECT_EQ(read.sink.members[0].content.size(), 610U);
        EXPECT_THAT(read.sink.members[1].content, HasSubstr("<?xml"));
        EXPECT_EQ(read.sink.members[0].member.modified, 1'195'035'542);
    }
}

TEST(ArchiveReader, ReadsKindsOfZip) {
    EXPECT_EQ(Read(ReadTestFile("archives/bla-stored-dd.zip")).sink.members[0].content.size(),
              610U);
    EXPECT_THAT(Read(ReadTestFile("archives/bzip2-zip.zip")).sink.At("lots-of-as").content,
                HasSubstr("aaaaaaaa"));
    const std::string zip64 = PackZip({{"a.txt", "sixty-four"}}, "zip:zip64");
    EXPECT_EQ(Read(zip64).sink.At("a.txt").content, "sixty-four");
    // A program that unpacks itself stands before the archive.
    const std::string self = "MZ" + std::string(5000, '\x90') + PackZip({{"b", "two"}});
    EXPECT_EQ(Read(self).sink.At("b").content, "two");
}

TEST(ArchiveReader, ReadsEveryFormatThatTheLibraryWrites) {
    const std::vector<PackedEntry> entries = {
        {"dir", "", AE_IFDIR}, {"dir/a.txt", "one"}, {"b.txt", "two"}};
    const std::pair<int, const char*> formats[] = {{ARCHIVE_FORMAT_7ZIP, "7z"},
                                                   {ARCHIVE_FORMAT_ISO9660, "iso"},
                                                   {ARCHIVE_FORMAT_XAR, "xar"},
                                                   {ARCHIVE_FORMAT_CPIO_POSIX, "cpio"},
                                                   {ARCHIVE_FORMAT_CPIO_SVR4_NOCRC, "newc"}};
    for (const auto& [format, name] : formats) {
        SCOPED_TRACE(name);
        const std::string bytes = PackArchive(format, ARCHIVE_FILTER_NONE, entries);
        EXPECT_STREQ(KindName(DetectKind({bytes, "x"})), "archive");
        const Outcome read = Read(bytes);
        EXPECT_EQ(read.why, "");
        EXPECT_THAT(read.sink.Paths(), testing::UnorderedElementsAre("dir/a.txt", "b.txt"));
        EXPECT_EQ(read.sink.At("dir/a.txt").content, "one");
        EXPECT_EQ(read.sink.At("b.txt").member.modified, 1'600'000'000);
    }
    const std::string ar = PackArchive(ARCHIVE_FORMAT_AR_GNU, ARCHIVE_FILTER_NONE,
                                       {{"control.tar.xz", "c"}, {"data.tar.xz", "d"}});
    EXPECT_EQ(DetectKind({ar, "x.deb"}), Kind::Archive);
    EXPECT_EQ(Read(ar).sink.At("data.tar.xz").content, "d");
}

TEST(ArchiveReader, ReadsFormatsThatOnlyOthersWrite) {
    EXPECT_EQ(ReadFile("rar4.rar").sink.At("testdir/test.txt").content.size(), 20U);
    EXPECT_THAT(ReadFile("rar4-unicode.rar").sink.Paths(),
                testing::Contains("abcdefghijklmnopqrsテスト.txt"));
    EXPECT_EQ(ReadFile("rar5-compressed.rar").sink.members[0].content.size(), 1200U);
    EXPECT_EQ(ReadFile("rar5-solid.rar").sink.members.size(), 4U);
    EXPECT_THAT(ReadFile("gzip.rpm").sink.Paths(), testing::Not(IsEmpty()));
    for (const char* name : {"rar4.rar", "rar5-solid.rar", "gzip.rpm", "cp932.lzh", "cp932.cab"})
        EXPECT_EQ(DetectKind({ReadTestFile(std::string("archives/") + name), "x"}), Kind::Archive)
            << name;
}

TEST(ArchiveReader, ACompressedFileHasOneMember) {
    const std::pair<int, const char*> filters[] = {
        {ARCHIVE_FILTER_GZIP, "a.txt.gz"}, {ARCHIVE_FILTER_BZIP2, "a.txt.bz2"},
        {ARCHIVE_FILTER_XZ, "a.txt.xz"},   {ARCHIVE_FILTER_LZMA, "a.txt.lzma"},
        {ARCHIVE_FILTER_LZIP, "a.txt.lz"}, {ARCHIVE_FILTER_ZSTD, "a.txt.zst"},
        {ARCHIVE_FILTER_LZ4, "a.txt.LZ4"}, {ARCHIVE_FILTER_COMPRESS, "a.txt.Z"}};
    for (const auto& [filter, name] : filters) {
        SCOPED_TRACE(name);
        const std::string bytes = Compress(filter, "content of the file");
        EXPECT_STREQ(KindName(DetectKind({bytes, name})), "compressed");
        const Outcome read = Read(bytes, name);
        EXPECT_EQ(read.why, "");
        ASSERT_THAT(read.sink.Paths(), ElementsAre("a.txt"));
        EXPECT_EQ(read.sink.members[0].content, "content of the file");
    }
    const std::string zstd = Compress(ARCHIVE_FILTER_ZSTD, "behind a frame to skip");
    const std::string skipping = std::string("\x50\x2A\x4D\x18\3\0\0\0abc", 11) + zstd;
    EXPECT_EQ(Read(skipping, "x.svgz").sink.At("x.svg").content, "behind a frame to skip");
    // A gzip header may tell name and time; the name is somebody else's word.
    std::string gzip = Compress(ARCHIVE_FILTER_GZIP, "named");
    gzip[3] = '\x08';
    gzip.insert(10, std::string("../h\xF6ren.txt\0", 13));
    EXPECT_EQ(Read(gzip, "x.gz").sink.At("hören.txt").content, "named");
    // So may the file's own name, which need not be UTF-8 on the disk.
    const std::string odd = Compress(ARCHIVE_FILTER_XZ, "odd");
    EXPECT_EQ(Read(odd, "h\xF6ren.txt.xz").sink.At("hören.txt").content, "odd");
}

TEST(ArchiveReader, OnlyOneLayerIsTakenOff) {
    const std::string inner = Compress(ARCHIVE_FILTER_GZIP, "deep");
    EXPECT_EQ(Read(Compress(ARCHIVE_FILTER_GZIP, inner), "a.gz.gz").sink.At("a.gz").content, inner);
    const std::string tar = PackTar({{"a", "1"}}, ARCHIVE_FILTER_GZIP);
    EXPECT_EQ(DetectKind({tar, "x"}), Kind::Tar);
    EXPECT_EQ(DetectKind({Compress(ARCHIVE_FILTER_XZ, tar), "x"}), Kind::Compressed);
}

TEST(ArchiveReader, FillsTheHolesOfSparseFiles) {
    const Outcome read = Read(ReadTestFile("archives/posix10_sparse.tar"));
    ASSERT_EQ(read.sink.members.size(), 1U);
    const std::string& content = read.sink.members[0].content;
    EXPECT_EQ(content.size(), 1'053'184U);
    EXPECT_EQ(content.substr(0, 100), std::string(100, 'A'));
    EXPECT_EQ(content.substr(500'000, 100), std::string(100, '\0'));
    EXPECT_EQ(content.substr(content.size() - 100), std::string(100, 'I'));
}

TEST(ArchiveReader, NamesDoNotDependOnTheProcessLocale) {
    const std::string before = std::setlocale(LC_CTYPE, nullptr);
    std::setlocale(LC_CTYPE, "C");
    const Outcome zip = Read(ReadTestFile("archives/utf8-winzip-test.zip"));
    const Outcome links = Read(ReadTestFile("archives/COMPRESS-214_unix_symlinks.zip"));
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C");
    std::setlocale(LC_CTYPE, before.c_str());
    EXPECT_THAT(zip.sink.Paths(), ElementsAre("€_for_Dollar.txt", "Ölfässer.txt", "ascii.txt"));
    EXPECT_THAT(links.sink.Paths(),
                ElementsAre("COMPRESS-214_unix_symlinks/a/b/c/d/e/f/g",
                            "COMPRESS-214_unix_symlinks/花子/瑛子/増谷/\uF999"));
}

TEST(ArchiveReader, NamesOfOldPackersAreTheirCharset) {
    // 0x94 is "ö" on the IBM PC.
    std::string zip = PackZip({{"h@ren.txt", "x"}});
    for (std::size_t at = 0; (at = zip.find("h@ren", at)) != std::string::npos; ++at)
        zip[at + 1] = '\x94';
    EXPECT_THAT(Read(zip).sink.Paths(), ElementsAre("hören.txt"));
    errno = ENOMEM; // left behind by a memory cap that was met and borne
    EXPECT_THAT(Read(zip).sink.Paths(), ElementsAre("hören.txt"));
    EXPECT_THAT(ReadFile("cp866.zip").sink.Paths(), ElementsAre("ПРИВЕТ", "привет"));
    EXPECT_THAT(ReadFile("cp932.zip").sink.Paths(), testing::Contains("表だよ/漢字.txt"));
    EXPECT_THAT(ReadFile("cp932.cab").sink.Paths(), testing::Contains("表だよ/漢字.txt"));
    EXPECT_THAT(ReadFile("cp932.lzh").sink.Paths(), testing::Contains("漢字.txt"));
}

TEST(ArchiveReader, ManyEqualNamesStayApart) {
    std::vector<PackedEntry> entries(3000, {"same.txt", "x"});
    const Outcome read = Read(PackTar(entries));
    ASSERT_EQ(read.sink.members.size(), 3000U);
    EXPECT_EQ(read.sink.members[2999].member.path, "same (3000).txt");
}

TEST(ArchiveReader, PathsAreHarmlessAndApart) {
    const std::string tar = PackTar({{"/etc/passwd", "1"},
                                     {"../../up.txt", "2"},
                                     {"a/./b//c.txt", "3"},
                                     {"a/b/c.txt", "4"},
                                     {"dir/", "", AE_IFDIR},
                                     {"link", "/etc/passwd", AE_IFLNK},
                                     {"tab\there", "5"}});
    const Outcome read = Read(tar);
    EXPECT_THAT(read.sink.Paths(),
                ElementsAre("etc/passwd", "up.txt", "a/b/c.txt", "a/b/c (2).txt", "tab_here"));
    EXPECT_EQ(read.sink.At("a/b/c (2).txt").content, "4");
}

TEST(ArchiveReader, UnwantedMembersArePassedBy) {
    Outcome outcome;
    outcome.sink.unwanted = {"a", "c"};
    ReadInto(PackTar({{"a", "1"}, {"b", "2"}, {"c", "3"}}, ARCHIVE_FILTER_GZIP), outcome);
    EXPECT_THAT(outcome.sink.asked, ElementsAre("a", "b", "c"));
    EXPECT_THAT(outcome.sink.Paths(), ElementsAre("b"));
}

TEST(ArchiveReader, EncryptedMembersAreListed) {
    const Outcome read = Read(ReadTestFile("archives/password-encrypted.zip"));
    EXPECT_EQ(read.why, "");
    ASSERT_EQ(read.sink.members.size(), 10U);
    EXPECT_EQ(read.sink.members[0].member.path, "LICENSE.txt");
    EXPECT_EQ(read.sink.members[0].member.problem, "needs a password");
    EXPECT_EQ(read.sink.members[0].member.problemState, ReadState::Encrypted);
}

TEST(ArchiveReader, PasswordsAreTold) {
    for (const char* name :
         {"rar4-encrypted-header.rar", "encrypted-header.7z", "encrypted-header.zip"}) {
        const Outcome read = ReadFile(name);
        EXPECT_EQ(read.state, ReadState::Encrypted) << name;
        EXPECT_EQ(read.why, "needs a password") << name;
    }
    for (const char* name : {"rar4-encrypted.rar", "aes-256.zip"}) {
        const Outcome read = ReadFile(name);
        EXPECT_EQ(read.why, "") << name;
        ASSERT_THAT(read.sink.members, testing::Not(IsEmpty())) << name;
        EXPECT_EQ(read.sink.members[0].member.problem, "needs a password") << name;
    }
    // Members without a password are read all the same.
    const Outcome mixed = ReadFile("encrypted-partially.7z");
    std::size_t readable = 0;
    for (const MemberRecorder::Kept& kept : mixed.sink.members)
        readable += kept.content.empty() ? 0 : 1;
    EXPECT_GT(readable, 0U);
    EXPECT_LT(readable, mixed.sink.members.size());
}

TEST(ArchiveReader, UnknownMethodsAreListed) {
    const Outcome read = Read(ReadTestFile("archives/moby.zip"));
    ASSERT_EQ(read.sink.members.size(), 1U);
    EXPECT_THAT(read.sink.members[0].member.problem, HasSubstr("method"));
    EXPECT_EQ(read.sink.members[0].member.problemState, ReadState::Unknown);
}

TEST(ArchiveReader, WhatComesBeforeTheDamageIsKept) {
    const Outcome tar = Read(ReadTestFile("archives/COMPRESS-544_truncated_in_content-fail.tar"));
    ASSERT_THAT(tar.sink.Paths(), testing::SizeIs(2));
    EXPECT_EQ(tar.sink.members[0].member.problem, "");
    EXPECT_THAT(tar.sink.members[1].member.problem, HasSubstr("Truncated"));
    EXPECT_EQ(tar.sink.members[1].member.problemState, ReadState::Partly);
    EXPECT_FALSE(tar.sink.members[1].content.empty());
    EXPECT_EQ(tar.state, ReadState::Damaged);
    EXPECT_THAT(tar.why, HasSubstr("damaged after 3 entries"));
}

TEST(ArchiveReader, ADamagedZipMemberDoesNotHideTheNext) {
    const std::string noise = Noise(4000);
    std::string zip = PackZip({{"one", noise}, {"two", noise + "second"}, {"three", "third"}});
    const std::size_t second = zip.find("two");
    ASSERT_NE(second, std::string::npos);
    for (std::size_t i = 0; i < 400; ++i)
        zip[second + 200 + i] = '\xFF';
    const Outcome read = Read(zip);
    EXPECT_EQ(read.why, "");
    EXPECT_THAT(read.sink.asked, ElementsAre("one", "two", "three")); // each once
    EXPECT_EQ(read.sink.At("one").content, noise);
    EXPECT_NE(read.sink.At("two").member.problem, "");
    EXPECT_EQ(read.sink.At("three").content, "third");
    // Without its table of contents the archive is read from the front.
    const std::string headless = zip.substr(0, zip.find("PK\x01\x02"));
    EXPECT_EQ(Read(headless).sink.At("one").content, noise);
}

TEST(ArchiveReader, ReasonsAreOneLine) {
    // One stored member of five bytes that is said to have ten.
    const std::string_view zip("PK\3\4\x0A\0\0\0\0\0\0\0\0\0\0\0\0\0\5\0\0\0\x0A\0\0\0\1\0\0\0"
                               "a"
                               "hello",
                               36);
    const Outcome read = Read(zip);
    ASSERT_THAT(read.sink.members, testing::SizeIs(1));
    EXPECT_THAT(read.sink.members[0].member.problem, HasSubstr("wrong size"));
    EXPECT_THAT(read.sink.members[0].member.problem, testing::Not(HasSubstr("\n")));
}

TEST(ArchiveReader, SplitArchivesAreTold) {
    const std::string zip = PackZip({{"whole", "content"}, {"cut", "off"}});
    const Outcome first = Read("PK\x07\x08" + zip.substr(0, zip.find("PK\x01\x02") - 10));
    EXPECT_EQ(first.sink.At("whole").content, "content");
    EXPECT_EQ(first.state, ReadState::Partly);
    EXPECT_THAT(first.why, HasSubstr("split archive"));
    std::string last = zip.substr(zip.find("PK\x01\x02"));
    last[last.find("PK\x05\x06") + 4] = 2; // the third disk
    EXPECT_THAT(Read(last).why, HasSubstr("split archive"));
    const Outcome numbered = Read(zip.substr(0, zip.find("PK\x01\x02") - 10), "a.zip.001");
    EXPECT_EQ(numbered.sink.At("whole").content, "content");
    EXPECT_THAT(numbered.why, HasSubstr("split archive"));
    EXPECT_EQ(Read(zip, "whole.001").why, "");
    const std::string seven =
        PackArchive(ARCHIVE_FORMAT_7ZIP, ARCHIVE_FILTER_NONE, {{"a", Noise(2000)}});
    const Outcome half = Read(seven.substr(0, 1000), "a.7z.001");
    EXPECT_EQ(half.state, ReadState::Damaged);
    EXPECT_THAT(half.why, HasSubstr("split archive"));
    const Outcome volume = ReadFile("rar4-volume.part1.rar");
    EXPECT_EQ(volume.state, ReadState::Partly);
    EXPECT_THAT(volume.why, HasSubstr("split archive"));
    EXPECT_EQ(volume.sink.members[0].member.problemState, ReadState::Partly);
}

TEST(ArchiveReader, TextThatBeginsLikeAnArchiveStaysText) {
    for (const char* text : {"070707 is an odd number", "BZh4, a chord", "BM is not a picture here",
                             "MZ begins a program", "7z is a program", "ID3 and other tags",
                             "MAC addresses", "xar! said he", "LZIP is a format"})
        EXPECT_EQ(DetectKind({text, "x"}), Kind::PlainText) << text;
    // A library of compiled code is a program, a package of the same form is not.
    const std::string ar = PackArchive(ARCHIVE_FORMAT_AR_GNU, ARCHIVE_FILTER_NONE, {{"a", "x"}});
    EXPECT_EQ(DetectKind({"!<arch>\n/               0           0     0     0       4         `\n" +
                              ar.substr(8),
                          "x.a"}),
              Kind::Unknown);
    // Something stands before the archive.
    const std::string zip = PackZip({{"a.txt", "content"}});
    EXPECT_EQ(DetectKind({std::string(100, '\1') + zip, "x.zip"}), Kind::Zip);
    EXPECT_EQ(Read(std::string(100, '\1') + zip).sink.At("a.txt").content, "content");
}

TEST(ArchiveReader, WhatIsNoArchiveIsDamaged) {
    EXPECT_EQ(Read("").state, ReadState::Damaged);
    EXPECT_EQ(Read("PK\x03\x04 and then nothing of the kind").state, ReadState::Damaged);
    EXPECT_EQ(Read(std::string(3000, 'x')).state, ReadState::Damaged);
}

TEST(MemberNames, FileNamesLoseTheSendersPath) {
    const std::pair<const char*, const char*> cases[] = {
        {"report.pdf", "report.pdf"},
        {"C:\\Users\\eva\\report.pdf", "report.pdf"},
        {"../../etc/passwd", "passwd"},
        {"/etc/passwd", "passwd"},
        {"a/../../b", "b"},
        {"Invoice 3/2020.pdf", "Invoice 3_2020.pdf"},
        {" spaced \n.txt ", "spaced _.txt"},
        {"..", ""},
        {"", ""},
    };
    for (const auto& [given, clean] : cases)
        EXPECT_EQ(CleanFileName(given), clean) << given;
    const std::string longName = CleanFileName(std::string(400, 'x') + "ö");
    EXPECT_EQ(longName.size(), 255U);
}

TEST(MemberNames, EndlessPathsAreCutBetweenCharacters) {
    std::string path;
    for (int i = 0; i < 3000; ++i)
        path += "ö";
    const std::string cut = CleanMemberPath("x" + path);
    EXPECT_EQ(cut.size(), kMaxMemberPath - 1);
    EXPECT_EQ(CleanMemberPath("/.././"), "unnamed");
}

} // namespace
} // namespace engine
