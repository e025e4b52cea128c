// The table of contents is read here, so that any member can be reached at once and so that
// damaged archives give what they still hold; unpacking is libarchive's.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/ZipFile.h"

#include "engine/readers/CompoundFile.h"
#include "engine/readers/Limits.h"
#include "engine/readers/Reader.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

namespace engine {
namespace {

using namespace std::string_view_literals;

constexpr auto kLocalMark = "PK\3\4"sv;
constexpr auto kCentralMark = "PK\1\2"sv;
constexpr auto kEndMark = "PK\5\6"sv;
constexpr auto kEnd64Mark = "PK\6\6"sv;
constexpr auto kEnd64LocatorMark = "PK\6\7"sv;
constexpr std::size_t kLocalSize = 30;
constexpr std::size_t kCentralSize = 46;
constexpr std::size_t kEndSize = 22;
constexpr std::size_t kEnd64Size = 56;
constexpr std::size_t kEnd64LocatorSize = 20;

// Little-endian number of width bytes; the caller has checked that they are there.
std::uint64_t Number(std::string_view bytes, std::size_t at, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = width; i-- > 0;)
        value = (value << 8) | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

std::string FoldName(std::string_view name) {
    while (!name.empty() && (name.front() == '/' || name.front() == '\\'))
        name.remove_prefix(1);
    std::string folded(name);
    for (char& c : folded) {
        if (c == '\\')
            c = '/';
        else if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return folded;
}

struct Directory {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::uint64_t shift = 0; // bytes that stand before the archive
};

// Finds the table of contents from its end record, which ends the file.
bool FindDirectory(std::string_view bytes, Directory& directory) {
    constexpr std::size_t kLongestComment = 65535;
    const std::size_t from =
        bytes.size() > kEndSize + kLongestComment ? bytes.size() - kEndSize - kLongestComment : 0;
    std::size_t end = bytes.rfind(kEndMark);
    for (; end != std::string_view::npos && end >= from; end = bytes.rfind(kEndMark, end - 1)) {
        if (end + kEndSize <= bytes.size()) {
            directory.size = Number(bytes, end + 12, 4);
            directory.offset = Number(bytes, end + 16, 4);
            std::uint64_t behind = end;
            const bool is64 = end >= kEnd64LocatorSize &&
                              bytes.substr(end - kEnd64LocatorSize, 4) == kEnd64LocatorMark;
            if (is64) {
                const std::uint64_t record = Number(bytes, end - kEnd64LocatorSize + 8, 8);
                if (record < bytes.size() && bytes.size() - record >= kEnd64Size &&
                    bytes.substr(record, 4) == kEnd64Mark) {
                    directory.size = Number(bytes, record + 40, 8);
                    directory.offset = Number(bytes, record + 48, 8);
                    behind = record;
                }
            }
            if (directory.size <= behind && directory.offset <= behind - directory.size) {
                directory.shift = behind - directory.size - directory.offset;
                return true;
            }
        }
        if (end == 0)
            break;
    }
    return false;
}

// Replaces sizes and offset that do not fit into 32 bits by those of the zip64 field.
void ReadZip64(std::string_view extra, bool unpackedIs64, ZipMember& member) {
    while (extra.size() >= 4) {
        const std::uint64_t tag = Number(extra, 0, 2);
        const std::uint64_t size = Number(extra, 2, 2);
        extra.remove_prefix(4);
        std::string_view field = extra.substr(0, size);
        extra.remove_prefix(field.size());
        if (tag != 1)
            continue;
        const auto take = [&field](std::uint64_t& value) {
            if (field.size() < 8)
                return;
            value = Number(field, 0, 8);
            field.remove_prefix(8);
        };
        std::uint64_t unpacked = 0;
        if (unpackedIs64)
            take(unpacked);
        if (member.packed == 0xFFFFFFFF)
            take(member.packed);
        if (member.offset == 0xFFFFFFFF)
            take(member.offset);
        return;
    }
}

struct FreeArchive {
    void operator()(archive* reader) const { archive_read_free(reader); }
};

} // namespace

ZipFile::ZipFile(std::string_view bytes) : m_bytes(bytes) {
    if (!ReadDirectory()) {
        m_members.clear();
        m_byName.clear();
        m_truncated = true;
        ScanLocalHeaders();
    }
    if (!m_members.empty())
        return;
    if (IsEncryptedOffice(bytes))
        throw ReadError(ReadState::Encrypted, "needs a password");
    throw ReadError(ReadState::Damaged, "no zip archive or a damaged one");
}

void ZipFile::Add(ZipMember member) {
    m_byName.emplace(FoldName(member.name), m_members.size());
    m_members.push_back(std::move(member));
}

bool ZipFile::ReadDirectory() {
    Directory directory;
    if (!FindDirectory(m_bytes, directory))
        return false;
    std::string_view rest = m_bytes.substr(directory.offset + directory.shift, directory.size);
    while (rest.size() >= kCentralSize && rest.substr(0, 4) == kCentralMark &&
           m_members.size() < kMaxArchiveEntries) {
        const std::uint64_t nameSize = Number(rest, 28, 2);
        const std::uint64_t extraSize = Number(rest, 30, 2);
        const std::uint64_t commentSize = Number(rest, 32, 2);
        if (rest.size() - kCentralSize < nameSize + extraSize)
            return false;
        ZipMember member;
        member.name = rest.substr(kCentralSize, nameSize);
        member.encrypted = (Number(rest, 8, 2) & 1) != 0;
        member.packed = Number(rest, 20, 4);
        member.offset = Number(rest, 42, 4);
        ReadZip64(rest.substr(kCentralSize + nameSize, extraSize),
                  Number(rest, 24, 4) == 0xFFFFFFFF, member);
        member.offset += directory.shift;
        if (member.offset >= m_bytes.size() || m_bytes.substr(member.offset, 4) != kLocalMark)
            return false;
        Add(std::move(member));
        rest.remove_prefix(
            std::min<std::size_t>(rest.size(), kCentralSize + nameSize + extraSize + commentSize));
    }
    return rest.empty();
}

void ZipFile::ScanLocalHeaders() {
    std::size_t at = m_bytes.find(kLocalMark);
    while (at != std::string_view::npos && m_bytes.size() - at >= kLocalSize &&
           m_members.size() < kMaxArchiveEntries) {
        const std::uint64_t flags = Number(m_bytes, at + 6, 2);
        const std::uint64_t nameSize = Number(m_bytes, at + 26, 2);
        const std::uint64_t headerSize = kLocalSize + nameSize + Number(m_bytes, at + 28, 2);
        if (m_bytes.size() - at < headerSize)
            return;
        ZipMember member;
        member.name = m_bytes.substr(at + kLocalSize, nameSize);
        member.offset = at;
        member.encrypted = (flags & 1) != 0;
        member.packed = Number(m_bytes, at + 18, 4);
        const bool sizeFollows = (flags & 8) != 0 || member.packed == 0xFFFFFFFF;
        std::uint64_t next = at + headerSize + (sizeFollows ? 0 : member.packed);
        if (sizeFollows || next > m_bytes.size())
            next = at + headerSize;
        const bool named = !member.name.empty() && member.name.size() <= kMaxMemberPath &&
                           member.name.find('\0') == std::string::npos;
        if (named)
            Add(std::move(member));
        at = m_bytes.find(kLocalMark, named ? next : at + 1);
    }
}

const ZipMember* ZipFile::Find(std::string_view name) const {
    const auto found = m_byName.find(FoldName(name));
    return found == m_byName.end() ? nullptr : &m_members[found->second];
}

std::string ZipFile::Unpack(const ZipMember& member, const Take& take) {
    if (member.encrypted)
        return "is encrypted";
    const std::unique_ptr<archive, FreeArchive> reader(archive_read_new());
    if (!reader)
        throw std::bad_alloc();
    // Reading on from the member's own header, as from a stream, costs the same wherever it is.
    archive_read_support_format_zip_streamable(reader.get());
    const std::string_view stream = m_bytes.substr(member.offset);
    archive_entry* entry = nullptr;
    if (archive_read_open_memory(reader.get(), stream.data(), stream.size()) != ARCHIVE_OK)
        return "is damaged";
    const int header = archive_read_next_header(reader.get(), &entry);
    if (header != ARCHIVE_OK && header != ARCHIVE_WARN) // a warning is about the name's charset
        return "is damaged";
    if (archive_entry_is_encrypted(entry) != 0)
        return "is encrypted";
    std::uint64_t unpacked = 0;
    while (true) {
        const void* piece = nullptr;
        std::size_t size = 0;
        la_int64_t offset = 0;
        const int result = archive_read_data_block(reader.get(), &piece, &size, &offset);
        if (result == ARCHIVE_EOF)
            return {};
        if (result != ARCHIVE_OK && result != ARCHIVE_WARN)
            return "is damaged";
        unpacked += size;
        m_unpacked += size;
        const auto consumed = static_cast<std::uint64_t>(archive_filter_bytes(reader.get(), 0));
        const bool bomb = unpacked > kRatioFreeBytes &&
                          unpacked / kMaxUnpackRatio > std::max<std::uint64_t>(consumed, 1);
        if (unpacked > kMaxMemberBytes || m_unpacked > kMaxPackageBytes || bomb)
            return "is larger than what is unpacked";
        if (size > 0)
            take({static_cast<const char*>(piece), size});
        if (result == ARCHIVE_WARN) // the checksum is wrong
            return "is damaged";
    }
}

bool IsEncryptedOffice(std::string_view bytes) {
    if (!CompoundFile::Recognises(bytes))
        return false;
    try {
        return CompoundFile(bytes).IsProtected();
    } catch (const ReadError&) {
        return false; // too damaged to tell
    }
}

} // namespace engine
