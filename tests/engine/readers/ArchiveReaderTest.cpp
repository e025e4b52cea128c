// Archives: what is handed out, under which names, and what is said of the rest.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/MemberNames.h"
#include "tests/engine/readers/MemberRecorder.h"

#include <archive.h>
#include <archive_entry.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>

namespace engine {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Entry {
    std::string path;
    std::string content;
    unsigned type = AE_IFREG;
};

enum class Format { Zip, Zip64, Tar, TarGz };

std::string Pack(Format format, const std::vector<Entry>& entries) {
    std::string out(4 << 20, '\0');
    std::size_t used = 0;
    archive* const a = archive_write_new();
    if (format == Format::Zip || format == Format::Zip64)
        archive_write_set_format_zip(a);
    else
        archive_write_set_format_pax_restricted(a);
    if (format == Format::Zip64)
        archive_write_zip_set_compression_store(a), archive_write_set_options(a, "zip:zip64");
    if (format == Format::TarGz)
        archive_write_add_filter_gzip(a);
    archive_write_open_memory(a, out.data(), out.size(), &used);
    for (const Entry& entry : entries) {
        archive_entry* const e = archive_entry_new();
        archive_entry_set_pathname(e, entry.path.c_str());
        archive_entry_set_filetype(e, entry.type);
        archive_entry_set_perm(e, 0644);
        archive_entry_set_mtime(e, 1'600'000'000, 0);
        if (entry.type == AE_IFLNK)
            archive_entry_set_symlink(e, entry.content.c_str());
        else
            archive_entry_set_size(e, static_cast<la_int64_t>(entry.content.size()));
        EXPECT_GE(archive_write_header(a, e), ARCHIVE_WARN) << archive_error_string(a);
        if (entry.type == AE_IFREG)
            archive_write_data(a, entry.content.data(), entry.content.size());
        archive_entry_free(e);
    }
    archive_write_close(a);
    archive_write_free(a);
    out.resize(used);
    return out;
}

// Reads an archive; why is what ReadError says, empty where there is none.
struct Outcome {
    MemberRecorder sink;
    std::string why;
    ReadState state = ReadState::Read;
};

void ReadInto(std::string_view bytes, Outcome& outcome) {
    try {
        ReadArchive({bytes, "archive"}, outcome.sink);
    } catch (const ReadError& error) {
        outcome.why = error.what();
        outcome.state = error.state;
    }
}

Outcome Read(std::string_view bytes) {
    Outcome outcome;
    ReadInto(bytes, outcome);
    return outcome;
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
    const std::string zip64 = Pack(Format::Zip64, {{"a.txt", "sixty-four"}});
    EXPECT_EQ(Read(zip64).sink.At("a.txt").content, "sixty-four");
    // A program that unpacks itself stands before the archive.
    const std::string self = "MZ" + std::string(5000, '\x90') + Pack(Format::Zip, {{"b", "two"}});
    EXPECT_EQ(Read(self).sink.At("b").content, "two");
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
    std::string zip = Pack(Format::Zip, {{"h@ren.txt", "x"}});
    for (std::size_t at = 0; (at = zip.find("h@ren", at)) != std::string::npos; ++at)
        zip[at + 1] = '\x94';
    EXPECT_THAT(Read(zip).sink.Paths(), ElementsAre("hören.txt"));
}

TEST(ArchiveReader, PathsAreHarmlessAndApart) {
    const std::string tar = Pack(Format::Tar, {{"/etc/passwd", "1"},
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
    ReadInto(Pack(Format::TarGz, {{"a", "1"}, {"b", "2"}, {"c", "3"}}), outcome);
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
    std::string noise;
    for (unsigned i = 0, x = 1; i < 4000; ++i, x = x * 1103515245 + 12345)
        noise += static_cast<char>('a' + (x >> 16) % 26);
    std::string zip =
        Pack(Format::Zip, {{"one", noise}, {"two", noise + "second"}, {"three", "third"}});
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

TEST(ArchiveReader, SplitArchivesAreTold) {
    const std::string zip = Pack(Format::Zip, {{"whole", "content"}, {"cut", "off"}});
    const Outcome first = Read("PK\x07\x08" + zip.substr(0, zip.find("PK\x01\x02") - 10));
    EXPECT_EQ(first.sink.At("whole").content, "content");
    EXPECT_EQ(first.state, ReadState::Partly);
    EXPECT_THAT(first.why, HasSubstr("split archive"));
    std::string last = zip.substr(zip.find("PK\x01\x02"));
    last[last.find("PK\x05\x06") + 4] = 2; // the third disk
    EXPECT_THAT(Read(last).why, HasSubstr("split archive"));
}

TEST(ArchiveReader, BombsAreStoppedAndTold) {
    const std::string zeros(kRatioFreeBytes + 40 * kMiB, '\0');
    const Outcome read = Read(Pack(Format::Zip, {{"small", "text"}, {"bomb", zeros}, {"x", "y"}}));
    EXPECT_THAT(read.sink.Paths(), ElementsAre("small", "bomb"));
    EXPECT_TRUE(read.sink.members[1].member.cut);
    EXPECT_LT(read.sink.members[1].content.size(), zeros.size());
    EXPECT_EQ(read.state, ReadState::Partly);
    EXPECT_THAT(read.why, HasSubstr("1000 times"));
    // Passing a bomb by must not unpack it either.
    Outcome passed;
    passed.sink.unwanted = {"bomb"};
    ReadInto(Pack(Format::TarGz, {{"bomb", zeros}, {"x", "y"}}), passed);
    EXPECT_EQ(passed.state, ReadState::Partly);
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
