// Reads archives and compressed files, member by member.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/ArchiveFormat.h"
#include "engine/readers/ArchiveLocale.h"
#include "engine/readers/Charset.h"
#include "engine/readers/CompressedName.h"
#include "engine/readers/Limits.h"
#include "engine/readers/MemberNames.h"
#include "engine/readers/NameCharset.h"
#include "engine/readers/Reader.h"
#include "engine/readers/ZipFile.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace engine {

namespace {

std::string ErrorOf(archive* reader) {
    const char* const text = archive_error_string(reader);
    std::string_view words = text == nullptr ? "unknown error" : text;
    while (words.ends_with('\n')) // as some of the library's own do
        words.remove_suffix(1);
    return std::string(words);
}

// What the library's words mean for the one who wants to read: a password is missing, or a way of
// packing is not known to it. Everything else is damage.
ReadState StateOfError(std::string_view error) {
    const auto tells = [error](std::string_view words) {
        return error.find(words) != std::string_view::npos;
    };
    if (tells("ncrypt") || tells("assword") || tells("Crypto codec"))
        return ReadState::Encrypted;
    if (tells("nsupported") || tells("Unknown codec") || tells("unavailable") ||
        tells("not supported"))
        return ReadState::Unknown;
    return ReadState::Damaged;
}

// What an archive is to the library, found out once.
struct Shape {
    std::string_view bytes; // what the library is to open
    ArchiveFormat format = ArchiveFormat::None;
    Packing packing = Packing::None;
};

Shape ShapeOf(std::string_view bytes) {
    Shape shape{bytes, ArchiveFormat::None, PackingOf(bytes)};
    if (shape.packing != Packing::None) {
        shape.format = UnpacksToTar(bytes, shape.packing) ? ArchiveFormat::Tar : ArchiveFormat::Raw;
        return shape;
    }
    shape.format = bytes.starts_with("PK") ? ArchiveFormat::Zip : FormatOf(bytes);
    if (shape.format == ArchiveFormat::Rpm) {
        shape.bytes = RpmContent(bytes);
        shape.packing = PackingOf(shape.bytes);
        if (shape.bytes.empty())
            throw ReadError(ReadState::Damaged,
                            "cannot be opened as an archive: damaged package header");
    }
    return shape;
}

class ArchiveReader {
  public:
    ArchiveReader(const Source& source, MemberSink& members)
        : m_source(source), m_members(members), m_shape(ShapeOf(source.bytes)),
          m_isZip(m_shape.format == ArchiveFormat::Zip || m_shape.format == ArchiveFormat::None) {}

    void Read() {
        if (ListIsEncrypted(m_shape.format, m_shape.bytes))
            throw ReadError(ReadState::Encrypted, kPassword);
        if (m_isZip)
            LookAtZipDirectory();
        const bool split = IsPartOfSplit(m_shape.format, m_shape.bytes);
        m_way = split ? ZipWay::Stream : ZipWay::Directory;
        std::uint64_t repeated = 0; // bytes that were unpacked once already
        for (int restarts = 0;; ++restarts) {
            const End end = Pass();
            if (end == End::Whole)
                break;
            // A damaged member ends the library's pass; another one goes on behind it.
            const bool canGoOn = end == End::MemberDamaged && m_isZip;
            const bool canStream = m_entry == 0 && m_isZip && m_way == ZipWay::Directory;
            // From the front, passing by a member may unpack it.
            repeated += m_way == ZipWay::Stream ? m_unpacked : 0;
            if (canStream && end == End::HeaderDamaged)
                m_way = ZipWay::Stream;
            else if (!canGoOn || restarts >= kMaxArchiveRestarts ||
                     m_passedBy > kMaxArchiveEntries || repeated > kMaxArchiveBytes)
                FailAt(split || HasPartNumber(m_source.name));
            m_skip = m_entry;
        }
        if (split)
            throw ReadError(ReadState::Partly, kSplit);
    }

  private:
    static constexpr const char* kSplit = "is one part of a split archive";
    static constexpr const char* kPassword = "needs a password";
    enum class End { Whole, HeaderDamaged, MemberDamaged };

    // Finds out about the archive as a whole what the library does not tell before its members.
    void LookAtZipDirectory() {
        try {
            const ZipFile zip(m_shape.bytes);
            std::uint64_t packed = 0;
            for (const ZipMember& member : zip.Members()) {
                m_charset.Learn(member.name);
                packed += std::min<std::uint64_t>(member.packed, m_shape.bytes.size());
            }
            // Members that lie upon each other unpack the same bytes again and again.
            if (!zip.Truncated() && packed / kMaxZipOverlap > m_shape.bytes.size())
                throw ReadError(ReadState::Partly, "its members share the same bytes");
        } catch (const ReadError& error) {
            if (error.state == ReadState::Partly)
                throw; // other trouble with the directory is found while reading
        }
    }

    [[noreturn]] void FailAt(bool split) const {
        if (split)
            throw ReadError(m_entry > 0 ? ReadState::Partly : ReadState::Damaged, kSplit);
        const ReadState state = StateOfError(m_error);
        if (state == ReadState::Encrypted)
            throw ReadError(state, kPassword);
        if (m_entry == 0)
            throw ReadError(state, "cannot be opened as an archive: " + m_error);
        if (state == ReadState::Unknown)
            throw ReadError(ReadState::Partly, "cannot be unpacked: " + m_error);
        throw ReadError(ReadState::Damaged, "damaged after " + std::to_string(m_entry) +
                                                (m_entry == 1 ? " entry: " : " entries: ") +
                                                m_error);
    }

    // Goes through the archive, passing by the first m_skip entries.
    End Pass() {
        const ArchiveOwner reader =
            OpenArchive(m_shape.bytes, m_shape.format, m_shape.packing, m_way);
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
                if (entry != nullptr && archive_entry_is_metadata_encrypted(entry) != 0)
                    throw ReadError(ReadState::Encrypted, kPassword);
                return End::HeaderDamaged;
            }
            if (++m_entry > kMaxArchiveEntries)
                throw ReadError(ReadState::Partly,
                                "has more than " + std::to_string(kMaxArchiveEntries) + " entries");
            if (m_shape.format == ArchiveFormat::None)
                m_isZip = IsZip(reader.get());
            if (m_entry <= m_skip)
                ++m_passedBy;
            else if (!TakeEntry(reader.get(), entry))
                return End::MemberDamaged;
        }
    }

    static bool IsZip(archive* reader) {
        return (archive_format(reader) & ARCHIVE_FORMAT_BASE_MASK) == ARCHIVE_FORMAT_ZIP;
    }

    static int NextHeader(archive* reader, archive_entry** entry) {
        constexpr int kTries = 10;
        int result = ARCHIVE_RETRY;
        for (int i = 0; i < kTries && result == ARCHIVE_RETRY; ++i)
            result = archive_read_next_header(reader, entry);
        return result;
    }

    std::string NameOf(archive_entry* entry, Member& member) {
        if (m_shape.format == ArchiveFormat::Raw) {
            const CompressedName content = NameOfContent(m_source, m_shape.packing);
            member.modified = content.modified;
            return content.name;
        }
        const char* const utf8 = archive_entry_pathname_utf8(entry);
        const char* const raw = archive_entry_pathname(entry);
        std::string name;
        if (utf8 != nullptr && ValidUtf8Length(utf8) == std::string_view(utf8).size()) {
            name = utf8;
        } else if (raw != nullptr) {
            if (!m_isZip) // of a zip archive all names are known beforehand
                m_charset.Learn(raw);
            name = m_charset.Decode(raw);
        }
        const bool isOfPc = m_isZip || m_shape.format == ArchiveFormat::Cab ||
                            m_shape.format == ArchiveFormat::Lha ||
                            m_shape.format == ArchiveFormat::Rar;
        if (isOfPc)
            std::replace(name.begin(), name.end(), '\\', '/');
        return name;
    }

    // False: the library cannot go on.
    bool TakeEntry(archive* reader, archive_entry* entry) {
        // A name that cannot be converted makes the library end the process if this still tells of
        // memory that was refused, long ago and without harm.
        errno = 0;
        const auto type = archive_entry_filetype(entry);
        Member member;
        const std::string name = NameOf(entry, member);
        const bool isFile = (type == AE_IFREG || type == 0) &&
                            archive_entry_hardlink(entry) == nullptr && !name.ends_with('/');
        if (isFile)
            member.path = m_names.Add(CleanMemberPath(name));
        if (!isFile || !m_members.Wants(member.path)) {
            CountSkipped(entry, 0);
            return true;
        }
        if (member.modified == 0 && archive_entry_mtime_is_set(entry) != 0)
            member.modified = archive_entry_mtime(entry);
        bool canGoOn = true;
        if (archive_entry_is_data_encrypted(entry) != 0) {
            member.problem = kPassword;
            member.problemState = ReadState::Encrypted;
        } else {
            canGoOn = Unpack(reader, member);
        }
        m_members.Receive(member);
        ShrinkBuffer();
        if (member.cut)
            CountSkipped(entry, m_size);
        return canGoOn;
    }

    // Whether members are packed together, so that passing by one unpacks it all the same.
    [[nodiscard]] bool IsPackedAsOne() const {
        return m_shape.packing != Packing::None || m_shape.format == ArchiveFormat::SevenZip ||
               m_shape.format == ArchiveFormat::Rar || m_shape.format == ArchiveFormat::Rar5 ||
               m_shape.format == ArchiveFormat::Cab;
    }

    // Takes what is passed by, a member or what stands behind its first taken bytes, into account.
    // Throws when a cap is reached.
    void CountSkipped(archive_entry* entry, std::uint64_t taken) {
        const auto size =
            static_cast<std::uint64_t>(std::max<la_int64_t>(archive_entry_size(entry), 0));
        if (IsPackedAsOne() && archive_entry_sparse_count(entry) == 0 && size > taken) {
            m_unpacked += size - taken;
            if (m_unpacked > UnpackLimit())
                TellCap();
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
        member.bytes = std::string_view(m_buffer.get(), m_size);
        if (result == ARCHIVE_OK || result == ARCHIVE_EOF)
            return true;
        m_error = ErrorOf(reader);
        member.problem = (m_size == 0 ? "cannot be unpacked: " : "damaged: ") + m_error;
        member.problemState = m_size > 0 ? ReadState::Partly : StateOfError(m_error);
        if (member.problemState == ReadState::Encrypted)
            member.problem = kPassword;
        return result != ARCHIVE_FATAL;
    }

    // Bytes that all members together may have.
    [[nodiscard]] std::uint64_t UnpackLimit() const {
        return std::min<std::uint64_t>(
            kMaxArchiveBytes,
            std::max<std::uint64_t>(kRatioFreeBytes, m_shape.bytes.size() * kMaxUnpackRatio));
    }

    // Adds to the member in m_buffer, zeros where data is null, as far as the caps allow.
    void Append(const char* data, std::uint64_t size, Member& member) {
        if (member.cut)
            return;
        const std::uint64_t left = UnpackLimit() - std::min(UnpackLimit(), m_unpacked);
        const std::uint64_t room = std::min(kMaxMemberBytes - m_size, left);
        member.cut = size > room;
        if (size > left)
            TellCap();
        size = std::min(size, room);
        if (size == 0)
            return;
        MakeRoom(m_size + size);
        if (data != nullptr)
            std::memcpy(m_buffer.get() + m_size, data, size);
        else
            std::memset(m_buffer.get() + m_size, 0, size);
        m_size += size;
        m_unpacked += size;
    }

    void TellCap() {
        if (UnpackLimit() == kMaxArchiveBytes)
            m_capReached =
                "unpacks to more than " + std::to_string(kMaxArchiveBytes / kGiB) + " GB";
        else
            m_capReached =
                "unpacks to more than " + std::to_string(kMaxUnpackRatio) + " times its size";
    }

    // Grows the buffer where it stands if that can be: members are large.
    void MakeRoom(std::size_t size) {
        if (size <= m_room)
            return;
        m_room = std::max(size, m_room * 2);
        char* const larger = static_cast<char*>(std::realloc(m_buffer.get(), m_room));
        if (larger == nullptr)
            throw std::bad_alloc(); // the buffer there is stays the owner's
        static_cast<void>(m_buffer.release());
        m_buffer.reset(larger);
    }

    void ShrinkBuffer() {
        constexpr std::size_t kKept = 32 * kMiB;
        if (m_room > kKept) {
            m_buffer.reset();
            m_room = 0;
        }
    }

    struct FreeBytes {
        void operator()(char* bytes) const { std::free(bytes); }
    };

    const Source& m_source;
    MemberSink& m_members;
    Shape m_shape;
    bool m_isZip;
    ZipWay m_way = ZipWay::Directory;
    UniqueNames m_names;
    NameCharset m_charset;
    std::uint64_t m_entry = 0;    // entries met in this pass
    std::uint64_t m_skip = 0;     // entries done in passes before
    std::uint64_t m_passedBy = 0; // such entries, in all passes
    std::uint64_t m_unpacked = 0;
    std::string m_error;
    std::string m_capReached;
    std::unique_ptr<char, FreeBytes> m_buffer; // the member that is being unpacked
    std::size_t m_room = 0;                    // bytes of m_buffer
    std::size_t m_size = 0;                    // its bytes in m_buffer
};

} // namespace

void ReadArchive(const Source& source, MemberSink& members) {
    const ScopedUtf8Locale locale;
    ArchiveReader(source, members).Read();
}

} // namespace engine
