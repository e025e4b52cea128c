// Archives that are made to harm: each is given up in bounded time, and what is missing is told.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/Walk.h"
#include "tests/engine/readers/ArchiveMaker.h"
#include "tests/engine/readers/MemberRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace engine {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// Counts members and keeps none.
class CountingMembers final : public MemberSink {
  public:
    std::uint64_t count = 0;
    std::uint64_t bytes = 0;
    int cut = 0;
    bool wanted = true;
    bool Wants(std::string_view) override { return wanted; }
    void Receive(const Member& member) override {
        ++count;
        bytes += member.bytes.size();
        cut += member.cut ? 1 : 0;
    }
};

struct Outcome {
    ReadState state = ReadState::Read;
    std::string why;
    CountingMembers members;
};

Outcome Read(const std::string& bytes, const char* name = "bomb", bool wanted = true) {
    Outcome outcome;
    outcome.members.wanted = wanted;
    try {
        ReadArchive({bytes, name}, outcome.members);
    } catch (const ReadError& error) {
        outcome.state = error.state;
        outcome.why = error.what();
    }
    return outcome;
}

TEST(ArchiveBomb, ARatioBeyondReasonEndsTheArchive) {
    const std::string zeros(kRatioFreeBytes + 8 * kMiB, '\0');
    const std::vector<PackedEntry> entries = {{"small", "text"}, {"bomb", zeros}, {"x", "y"}};
    const std::pair<const char*, std::string> bombs[] = {
        {"zip", PackZip(entries)},
        {"7z", PackArchive(ARCHIVE_FORMAT_7ZIP, ARCHIVE_FILTER_NONE, entries)},
        {"tar", PackTar(entries, ARCHIVE_FILTER_GZIP)}};
    for (const auto& [name, bytes] : bombs) {
        SCOPED_TRACE(name);
        const Outcome read = Read(bytes);
        EXPECT_EQ(read.state, ReadState::Partly);
        EXPECT_EQ(read.why, "unpacks to more than 1000 times its size");
        EXPECT_EQ(read.members.count, 2U);
        EXPECT_EQ(read.members.cut, 1);
        EXPECT_LE(read.members.bytes, kRatioFreeBytes + bytes.size() * kMaxUnpackRatio);
    }
    const Outcome file = Read(Compress(ARCHIVE_FILTER_BZIP2, zeros), "bomb.bz2");
    EXPECT_EQ(file.why, "unpacks to more than 1000 times its size");
    EXPECT_EQ(file.members.cut, 1);
    // Passing a bomb by must not unpack it either.
    const Outcome passed = Read(PackTar(entries, ARCHIVE_FILTER_GZIP), "bomb", false);
    EXPECT_EQ(passed.state, ReadState::Partly);
    EXPECT_EQ(passed.members.count, 0U);
}

// A header of tar; size is octal, more what else stands in it, by its place.
std::string TarHeader(const std::string& name, char type, const std::string& size,
                      const std::vector<std::pair<std::size_t, std::string>>& more = {}) {
    std::string header(512, '\0');
    const auto put = [&header](std::size_t at, const std::string& text) {
        header.replace(at, text.size(), text);
    };
    put(0, name);
    put(100, "0000644");
    put(124, size);
    put(148, "        ");
    header[156] = type;
    for (const auto& [at, text] : more)
        put(at, text);
    unsigned sum = 0;
    for (const char c : header)
        sum += static_cast<unsigned char>(c);
    char digits[8];
    std::snprintf(digits, sizeof digits, "%06o", sum & 0777777U);
    header.replace(148, 7, digits, 7);
    return header;
}

TEST(ArchiveBomb, HolesCountAsContent) {
    // Seven gigabytes of nothing, then 512 bytes.
    const std::string tar =
        TarHeader(
            "sparse", 'S', "00000001000",
            {{257, "ustar  "}, {386, "70000000000"}, {398, "00000001000"}, {483, "70000001000"}}) +
        std::string(512, 'x') + TarHeader("next", '0', "00000000000") + std::string(1024, '\0');
    const Outcome read = Read(tar);
    EXPECT_EQ(read.state, ReadState::Partly);
    EXPECT_EQ(read.why, "unpacks to more than 1000 times its size");
    EXPECT_EQ(read.members.cut, 1);
    EXPECT_LE(read.members.bytes, kRatioFreeBytes);
}

TEST(ArchiveBomb, AMemberIsCutAtItsLimit) {
    std::string large;
    const std::string noise = Noise(1 << 20);
    while (large.size() <= kMaxMemberBytes)
        large += noise;
    const std::string bytes = PackTar({{"large", large}, {"next", "x"}}, ARCHIVE_FILTER_ZSTD);
    const Outcome read = Read(bytes);
    EXPECT_EQ(read.why, "");
    EXPECT_EQ(read.members.cut, 1);
    EXPECT_EQ(read.members.bytes, kMaxMemberBytes + 1);
}

TEST(ArchiveBomb, AllMembersTogetherHaveALimit) {
    // A header that promises five gigabytes is enough: they are not looked for.
    std::string tar = TarHeader("huge", '0', "50000000000");
    tar += Noise(8 << 20);
    const Outcome read = Read(Compress(ARCHIVE_FILTER_ZSTD, tar), "huge.tar.zst", false);
    EXPECT_EQ(read.state, ReadState::Partly);
    EXPECT_EQ(read.why, "unpacks to more than 4 GB");
}

TEST(ArchiveBomb, EntriesAreCounted) {
    // The shortest member there is, a million times and once more, all of one name.
    const std::string entry = std::string("070707000001000001100644000000000000000001000000"
                                          "0000000000000000200000000000a") +
                              '\0';
    std::string cpio;
    for (std::uint64_t i = 0; i <= kMaxArchiveEntries; ++i)
        cpio += entry;
    const Outcome read = Read(cpio);
    EXPECT_EQ(read.state, ReadState::Partly);
    EXPECT_EQ(read.why, "has more than 1000000 entries");
    EXPECT_EQ(read.members.count, kMaxArchiveEntries);
}

// One member that a thousand entries of the table of contents point to.
std::string OverlappingZip() {
    constexpr unsigned kTimes = 1000;
    const std::string zip = PackZip({{"member", Noise(100'000)}});
    const std::size_t directory = zip.find("PK\x01\x02");
    const std::size_t end = zip.find("PK\x05\x06");
    const std::string entry = zip.substr(directory, end - directory);
    std::string bomb = zip.substr(0, directory);
    for (unsigned i = 0; i < kTimes; ++i)
        bomb += entry;
    std::string record = zip.substr(end);
    const auto put = [&record](std::size_t at, std::size_t number, int width) {
        for (int i = 0; i < width; ++i)
            record[at + static_cast<std::size_t>(i)] = static_cast<char>(number >> (8 * i));
    };
    put(8, kTimes, 2);
    put(10, kTimes, 2);
    put(12, entry.size() * kTimes, 4);
    return bomb + record;
}

TEST(ArchiveBomb, MembersThatShareTheirBytesAreRefused) {
    const Outcome read = Read(OverlappingZip());
    EXPECT_EQ(read.state, ReadState::Partly);
    EXPECT_EQ(read.why, "its members share the same bytes");
    EXPECT_EQ(read.members.count, 0U);
}

TEST(ArchiveBomb, FoldersThatHoldThemselvesEnd) {
    std::string iso = PackArchive(ARCHIVE_FORMAT_ISO9660, ARCHIVE_FILTER_NONE,
                                  {{"loop", "", AE_IFDIR}, {"loop/a.txt", "inside"}},
                                  "iso9660:!joliet,iso9660:!rockridge");
    constexpr std::size_t kSector = 2048, kRootRecord = 16 * kSector + 156, kPlace = 8;
    const auto first = static_cast<unsigned char>(iso[kRootRecord + 2]);
    const std::size_t name = iso.find("LOOP", first * kSector);
    ASSERT_NE(name, std::string::npos);
    // The folder stands where the root stands: number in both byte orders, then the size.
    iso.replace(name - 33 + 2, kPlace, iso.substr(kRootRecord + 2, kPlace));
    const Outcome read = Read(iso);
    EXPECT_LT(read.members.count, 100U);
}

// What the walk finds: containers with their state, and how many documents in all.
class Finder final : public DocumentVisitor {
  public:
    std::vector<std::pair<std::string, std::string>> troubled; // name, reason
    std::uint64_t documents = 0;
    std::uint64_t bytes = 0;
    bool Wants(const std::string&) override { return true; }
    void Visit(const FoundDocument& document, MemberSink&) override {
        ++documents;
        bytes += document.container ? 0 : document.source.bytes.size();
        if (document.container && document.state != ReadState::Read)
            troubled.emplace_back(document.display, document.reason);
    }
};

TEST(ArchiveBomb, NestingEnds) {
    std::string bytes = "the innermost text";
    for (int i = 0; i < 12; ++i)
        bytes = Compress(ARCHIVE_FILTER_GZIP, bytes);
    Finder gz;
    WalkDocuments({bytes, "a.gz"}, gz);
    ASSERT_EQ(gz.troubled.size(), 1U);
    EXPECT_EQ(gz.troubled[0].second, "containers nested too deeply");
    EXPECT_EQ(gz.documents, static_cast<std::uint64_t>(kDeepestNesting) + 1);

    std::string zip = PackZip({{"text", "x"}});
    for (int i = 0; i < 12; ++i)
        zip = PackZip({{"inner.zip", zip}, {"beside.txt", "y"}});
    Finder zips;
    WalkDocuments({zip, "a.zip"}, zips);
    EXPECT_THAT(zips.troubled, ElementsAre(std::pair(std::string("inner.zip"),
                                                     std::string("containers nested too deeply"))));
}

TEST(ArchiveBomb, ArchivesFullOfArchivesShareOneLimit) {
    // Each of them is within its own limits.
    const std::string zeros(60 * kMiB, '\0');
    const std::string inner = PackTar({{"zeros", zeros}}, ARCHIVE_FILTER_ZSTD);
    const std::string outer = PackTar(std::vector<PackedEntry>(100, {"inner.tar.zst", inner}));
    Finder found;
    WalkDocuments({outer, "outer.tar"}, found);
    ASSERT_THAT(found.troubled, testing::Not(testing::IsEmpty()));
    EXPECT_EQ(found.troubled.back().first, "outer.tar");
    EXPECT_EQ(found.troubled.back().second, "unpacks to more than 4 GB");
    EXPECT_LE(found.bytes, kMaxArchiveBytes);
    EXPECT_LT(found.documents, 200U);
}

TEST(ArchiveBomb, CutAndBrokenArchivesEnd) {
    const std::vector<PackedEntry> entries = {{"a.txt", Noise(700)}, {"b/c.txt", "second"}};
    const std::string whole[] = {
        PackZip(entries),
        PackTar(entries, ARCHIVE_FILTER_GZIP),
        PackArchive(ARCHIVE_FORMAT_7ZIP, ARCHIVE_FILTER_NONE, entries),
        PackArchive(ARCHIVE_FORMAT_XAR, ARCHIVE_FILTER_NONE, entries),
        PackArchive(ARCHIVE_FORMAT_CPIO_SVR4_NOCRC, ARCHIVE_FILTER_NONE, entries),
        Compress(ARCHIVE_FILTER_XZ, Noise(500)),
        ReadTestFile("archives/rar4.rar"),
        ReadTestFile("archives/rar5-solid.rar"),
        ReadTestFile("archives/cp932.cab"),
        ReadTestFile("archives/cp932.lzh"),
        ReadTestFile("archives/gzip.rpm")};
    for (const std::string& bytes : whole) {
        const std::size_t step = bytes.size() / 60 + 1;
        for (std::size_t at = 0; at < bytes.size(); at += step) {
            Finder found;
            WalkDocuments({bytes.substr(0, at), "cut"}, found);
            EXPECT_GE(found.documents, 1U);
            std::string broken = bytes;
            broken[at] = static_cast<char>(broken[at] ^ (1 << at % 8));
            broken[bytes.size() - 1 - at] = '\xFF';
            WalkDocuments({broken, "broken"}, found);
            EXPECT_LT(found.bytes, 10 * kMiB);
        }
    }
}

} // namespace
} // namespace engine
