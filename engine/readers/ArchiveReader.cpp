// Reads zip archives and tars, plain or compressed, member by member.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/ArchiveLocale.h"
#include "engine/readers/Charset.h"
#include "engine/readers/Limits.h"
#include "engine/readers/MemberNames.h"
#include "engine/readers/Reader.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

namespace engine {

namespace {

struct FreeArchive {
    void operator()(archive* reader) const { archive_read_free(reader); }
};
using ArchiveOwner = std::unique_ptr<archive, FreeArchive>;

// How a zip archive is read: by its table of contents, or from the front where that is damaged.
enum class ZipWay { Directory, Stream };

ArchiveOwner OpenArchive(std::string_view bytes, ZipWay way) {
    ArchiveOwner reader(archive_read_new());
    if (reader == nullptr)
        throw std::bad_alloc();
    archive* const a = reader.get();
    archive_read_support_filter_gzip(a);
    archive_read_support_filter_bzip2(a);
    archive_read_support_filter_compress(a);
    archive_read_support_filter_lz4(a);
    archive_read_support_filter_lzma(a);
    archive_read_support_filter_xz(a);
    archive_read_support_filter_zstd(a);
    archive_read_support_format_tar(a);
    if (way == ZipWay::Directory)
        archive_read_support_format_zip_seekable(a);
    archive_read_support_format_zip_streamable(a);
    if (archive_read_open_memory(a, bytes.data(), bytes.size()) != ARCHIVE_OK)
        return nullptr;
    return reader;
}

std::string ErrorOf(archive* reader) {
    const char* const text = archive_error_string(reader);
    return text == nullptr ? "unknown error" : text;
}

// One of several files that only together are an archive. A last part has the table of contents
// of all, a first part a mark of its own.
bool IsPartOfSplitZip(std::string_view bytes) {
    constexpr std::size_t kEndRecord = 22;
    constexpr std::size_t kLongestComment = 65535;
    if (bytes.starts_with("PK\x07\x08"))
        return true;
    const std::size_t from = bytes.size() - std::min(bytes.size(), kEndRecord + kLongestComment);
    const std::size_t end = bytes.substr(from).rfind("PK\x05\x06");
    if (end == std::string_view::npos || bytes.size() - from - end < kEndRecord)
        return false;
    const std::string_view record = bytes.substr(from + end);
    const unsigned disk = static_cast<unsigned char>(record[4]) |
                          static_cast<unsigned>(static_cast<unsigned char>(record[5])) << 8;
    return disk != 0 && disk != 0xFFFF; // that value: the number stands in the zip64 record
}

std::string NameOf(archive_entry* entry, bool isZip) {
    std::string name;
    const char* const utf8 = archive_entry_pathname_utf8(entry);
    const char* const raw = archive_entry_pathname(entry);
    if (utf8 != nullptr && ValidUtf8Length(utf8) == std::string_view(utf8).size()) {
        name = utf8;
    } else if (raw != nullptr) {
        // Old packers on the IBM PC wrote its charset, those on Unix whatever they had.
        const Charset charset = isZip ? Charset{"ibm-437", 0, false} : DetectCharset(raw);
        name = DecodeText(raw, charset, std::numeric_limits<std::size_t>::max());
    }
    if (isZip)
        std::replace(name.begin(), name.end(), '\\', '/');
    return name;
}

class ArchiveReader {
  public:
    ArchiveReader(std::string_view bytes, MemberSink& members)
        : m_bytes(bytes), m_members(members) {}

    void Read() {
        const bool split = IsPartOfSplitZip(m_bytes);
        m_way = split ? ZipWay::Stream : ZipWay::Directory;
        for (int restarts = 0;; ++restarts) {
            const End end = Pass();
            if (end == End::Whole)
                break;
            // A damaged member ends the library's pass; another one goes on behind it.
            const bool canGoOn = end == End::MemberDamaged && m_isZip;
            const bool canStream = m_entry == 0 && m_way == ZipWay::Directory;
            if (canStream && end == End::HeaderDamaged)
                m_way = ZipWay::Stream;
            else if (!canGoOn || restarts >= kMaxArchiveRestarts)
                FailAt(split);
            m_skip = m_entry;
        }
        if (split)
            throw ReadError(ReadState::Partly, kSplit);
    }

  private:
    static constexpr const char* kSplit = "is one part of a split archive";
    enum class End { Whole, HeaderDamaged, MemberDamaged };

    [[noreturn]] void FailAt(bool split) const {
        if (split)
            throw ReadError(m_entry > 0 ? ReadState::Partly : ReadState::Damaged, kSplit);
        if (m_entry == 0)
            throw ReadError(ReadState::Damaged, "cannot be opened as an archive: " + m_error);
        throw ReadError(ReadState::Damaged, "damaged after " + std::to_string(m_entry) +
                                                (m_entry == 1 ? " entry: " : " entries: ") +
                                                m_error);
    }

    // Goes through the archive, passing by the first m_skip entries.
    End Pass() {
        const ArchiveOwner reader = OpenArchive(m_bytes, m_way);
        m_entry = 0;
        if (reader == nullptr) {
            m_error = "unknown format";
            return End::HeaderDamaged;
        }
        for (;;) {
            archive_entry* entry = nullptr;
            const int result = NextHeader(reader.get(), &entry);
            if (result == ARCHIVE_EOF)
                return End::Whole;
            if (result < ARCHIVE_WARN) {
                m_error = ErrorOf(reader.get());
                return End::HeaderDamaged;
            }
            if (++m_entry > kMaxArchiveEntries)
                throw ReadError(ReadState::Partly,
                                "has more than " + std::to_string(kMaxArchiveEntries) + " entries");
            m_isZip =
                (archive_format(reader.get()) & ARCHIVE_FORMAT_BASE_MASK) == ARCHIVE_FORMAT_ZIP;
            if (m_entry > m_skip && !TakeEntry(reader.get(), entry))
                return End::MemberDamaged;
        }
    }

    static int NextHeader(archive* reader, archive_entry** entry) {
        constexpr int kTries = 10;
        int result = ARCHIVE_RETRY;
        for (int i = 0; i < kTries && result == ARCHIVE_RETRY; ++i)
            result = archive_read_next_header(reader, entry);
        return result;
    }

    // False: the library cannot go on.
    bool TakeEntry(archive* reader, archive_entry* entry) {
        const auto type = archive_entry_filetype(entry);
        const std::string name = NameOf(entry, m_isZip);
        Member member;
        const bool isFile = (type == AE_IFREG || type == 0) &&
                            archive_entry_hardlink(entry) == nullptr && !name.ends_with('/');
        if (isFile)
            member.path = m_names.Add(CleanMemberPath(name));
        if (!isFile || !m_members.Wants(member.path)) {
            CountSkipped(reader, entry, 0);
            return true;
        }
        if (archive_entry_mtime_is_set(entry) != 0)
            member.modified = archive_entry_mtime(entry);
        bool canGoOn = true;
        if (archive_entry_is_data_encrypted(entry) != 0) {
            member.problem = "needs a password";
            member.problemState = ReadState::Encrypted;
        } else {
            canGoOn = Unpack(reader, member);
        }
        m_members.Receive(member);
        ShrinkBuffer();
        if (member.cut)
            CountSkipped(reader, entry, m_size);
        return canGoOn;
    }

    // Passing by a member of a compressed tar, or by what stands behind the first taken bytes of
    // it, unpacks it all the same. Throws when a cap is reached.
    void CountSkipped(archive* reader, archive_entry* entry, std::uint64_t taken) {
        const auto size =
            static_cast<std::uint64_t>(std::max<la_int64_t>(archive_entry_size(entry), 0));
        const bool unpacks =
            archive_filter_count(reader) > 1 && archive_entry_sparse_count(entry) == 0;
        if (unpacks && size > taken) {
            m_unpacked += size - taken;
            LookAtCaps();
        }
        if (!m_capReached.empty())
            throw ReadError(ReadState::Partly, m_capReached);
    }

    // Fills the member with what can be had of it. False: the library cannot go on.
    bool Unpack(archive* reader, Member& member) {
        m_size = 0;
        int result = ARCHIVE_OK;
        while (!member.cut) {
            const void* piece = nullptr;
            std::size_t size = 0;
            la_int64_t offset = 0;
            result = archive_read_data_block(reader, &piece, &size, &offset);
            if (result == ARCHIVE_RETRY)
                continue;
            // A warning tells of a wrong checksum; the data has come.
            if (result != ARCHIVE_OK && result != ARCHIVE_WARN)
                break;
            if (offset > static_cast<la_int64_t>(m_size)) // a hole in a sparse file
                Append(nullptr, static_cast<std::uint64_t>(offset) - m_size, member);
            Append(static_cast<const char*>(piece), size, member);
            if (result == ARCHIVE_WARN)
                break;
        }
        member.bytes = std::string_view(m_buffer.data(), m_size);
        if (result == ARCHIVE_OK || result == ARCHIVE_EOF)
            return true;
        m_error = ErrorOf(reader);
        member.problem = (m_size == 0 ? "cannot be unpacked: " : "damaged: ") + m_error;
        if (m_size > 0)
            member.problemState = ReadState::Partly;
        else if (m_error.starts_with("Unsupported"))
            member.problemState = ReadState::Unknown;
        return result != ARCHIVE_FATAL;
    }

    // Adds to the member in m_buffer, zeros where data is null, as far as the caps allow.
    void Append(const char* data, std::uint64_t size, Member& member) {
        const std::uint64_t room = kMaxMemberBytes - m_size;
        if (member.cut)
            return;
        member.cut = size > room;
        size = std::min(size, room);
        if (m_buffer.size() < m_size + size)
            m_buffer.resize(std::max<std::size_t>(m_size + size, m_buffer.size() * 2));
        if (data != nullptr)
            std::memcpy(m_buffer.data() + m_size, data, size);
        else
            std::memset(m_buffer.data() + m_size, 0, size);
        m_size += size;
        m_unpacked += size;
        LookAtCaps();
        member.cut = member.cut || !m_capReached.empty();
    }

    void LookAtCaps() {
        if (m_unpacked > kMaxArchiveBytes)
            m_capReached =
                "unpacks to more than " + std::to_string(kMaxArchiveBytes / kGiB) + " GB";
        else if (m_unpacked > kRatioFreeBytes && m_unpacked / kMaxUnpackRatio > m_bytes.size())
            m_capReached =
                "unpacks to more than " + std::to_string(kMaxUnpackRatio) + " times its size";
    }

    void ShrinkBuffer() {
        constexpr std::size_t kKept = 32 * kMiB;
        if (m_buffer.size() > kKept)
            std::string().swap(m_buffer);
    }

    std::string_view m_bytes;
    MemberSink& m_members;
    UniqueNames m_names;
    ZipWay m_way = ZipWay::Directory;
    bool m_isZip = false;
    std::uint64_t m_entry = 0; // entries met in this pass
    std::uint64_t m_skip = 0;  // entries done in passes before
    std::uint64_t m_unpacked = 0;
    std::string m_error;
    std::string m_capReached;
    std::string m_buffer;   // the member that is being unpacked, grown as needed
    std::size_t m_size = 0; // its bytes in m_buffer
};

} // namespace

void ReadArchive(const Source& source, MemberSink& members) {
    const ScopedUtf8Locale locale;
    ArchiveReader(source.bytes, members).Read();
}

} // namespace engine
