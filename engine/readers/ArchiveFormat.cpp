// Marks of archives and compressed files, and how the library is told to open them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/ArchiveFormat.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <array>
#include <new>

namespace engine {

namespace {

using namespace std::string_view_literals;

unsigned Byte(std::string_view bytes, std::size_t at) {
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

std::uint64_t LittleNumber(std::string_view bytes, std::size_t at, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = width; i-- > 0;)
        value = value << 8 | Byte(bytes, at + i);
    return value;
}

std::uint64_t BigNumber(std::string_view bytes, std::size_t at, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i)
        value = value << 8 | Byte(bytes, at + i);
    return value;
}

bool IsBzip2(std::string_view bytes) {
    const std::string_view block = bytes.substr(std::min<std::size_t>(bytes.size(), 4), 6);
    return bytes.starts_with("BZh") && Byte(bytes, 3) >= '1' && Byte(bytes, 3) <= '9' &&
           (block == "\x31\x41\x59\x26\x53\x59"sv || block == "\x17\x72\x45\x38\x50\x90"sv);
}

// The format has no mark: a properties byte, the size of the dictionary, the size of the content.
bool IsLzma(std::string_view bytes) {
    constexpr std::size_t kHeader = 13;
    constexpr unsigned kUsualProperties = 0x5D, kMostProperties = 224;
    constexpr std::uint64_t kUnknownSize = ~std::uint64_t{0}, kLargest = std::uint64_t{1} << 38;
    if (bytes.size() <= kHeader || Byte(bytes, 0) > kMostProperties || Byte(bytes, kHeader) != 0)
        return false;
    const std::uint64_t dictionary = LittleNumber(bytes, 1, 4);
    const std::uint64_t size = LittleNumber(bytes, 5, 8);
    const bool round =
        dictionary >= 4096 && ((dictionary & (dictionary - 1)) == 0 || dictionary % 3 == 0);
    return round &&
           (size == kUnknownSize || (Byte(bytes, 0) == kUsualProperties && size < kLargest));
}

// Whether bytes begin with a header of tar: 512 bytes with a checksum over themselves.
bool IsTarHeader(std::string_view bytes) {
    constexpr std::size_t kHeaderSize = 512, kSumAt = 148, kSumSize = 8;
    if (bytes.size() < kHeaderSize || bytes[0] == '\0')
        return false;
    unsigned stated = 0;
    bool digits = false;
    for (const char c : bytes.substr(kSumAt, kSumSize)) {
        if (c >= '0' && c <= '7') {
            stated = stated * 8 + static_cast<unsigned>(c - '0');
            digits = true;
        } else if (digits || c != ' ') {
            break;
        }
    }
    unsigned sum = 0;
    int signedSum = 0; // some old programs added signed characters
    for (std::size_t i = 0; i < kHeaderSize; ++i) {
        const char c = i >= kSumAt && i < kSumAt + kSumSize ? ' ' : bytes[i];
        sum += static_cast<unsigned char>(c);
        signedSum += static_cast<signed char>(c);
    }
    return digits && (stated == sum || stated == static_cast<unsigned>(signedSum));
}

// Both zstd and lz4 may begin with frames that hold no content.
std::string_view BehindSkippableFrames(std::string_view bytes) {
    constexpr std::size_t kHeader = 8;
    constexpr int kMostFrames = 16;
    std::string_view rest = bytes;
    for (int i = 0; i < kMostFrames && rest.size() > kHeader; ++i) {
        if (rest.substr(1, 3) != "\x2A\x4D\x18"sv || (Byte(rest, 0) & 0xF0) != 0x50)
            return rest;
        const std::uint64_t size = kHeader + LittleNumber(rest, 4, 4);
        if (size >= rest.size())
            break;
        rest.remove_prefix(static_cast<std::size_t>(size));
    }
    return bytes;
}

bool IsDigits(std::string_view bytes, unsigned base) {
    return std::all_of(bytes.begin(), bytes.end(), [base](char c) {
        return (c >= '0' && c <= (base == 8 ? '7' : '9')) ||
               (base == 16 && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')));
    });
}

bool IsCpio(std::string_view bytes) {
    constexpr std::size_t kOldAscii = 76, kNewAscii = 110, kBinary = 26;
    if (bytes.starts_with("070707"))
        return bytes.size() >= kOldAscii && IsDigits(bytes.substr(0, kOldAscii), 8);
    if (bytes.starts_with("070701") || bytes.starts_with("070702"))
        return bytes.size() >= kNewAscii && IsDigits(bytes.substr(0, kNewAscii), 16);
    if (bytes.size() < kBinary)
        return false;
    const bool little = bytes.starts_with("\xC7\x71"sv);
    if (!little && !bytes.starts_with("\x71\xC7"sv))
        return false;
    // The name stands behind the header and ends in a zero byte.
    const std::size_t name = little ? LittleNumber(bytes, 20, 2) : BigNumber(bytes, 20, 2);
    return name > 0 && name < 4096 && kBinary + name <= bytes.size() &&
           bytes[kBinary + name - 1] == '\0';
}

bool IsLha(std::string_view bytes) {
    const std::string_view method = bytes.size() > 21 ? bytes.substr(2, 5) : std::string_view();
    return method.size() == 5 && method[0] == '-' && method[4] == '-' &&
           (method.substr(1, 2) == "lh" || method.substr(1, 2) == "lz" ||
            method.substr(1, 2) == "pm") &&
           Byte(bytes, 20) <= 3;
}

bool IsIso(std::string_view bytes) {
    constexpr std::size_t kFirstVolume = 32769, kVolume = 2048;
    constexpr int kVolumesToLookAt = 4;
    for (int i = 0; i < kVolumesToLookAt; ++i) {
        const std::size_t at = kFirstVolume + static_cast<std::size_t>(i) * kVolume;
        if (at >= bytes.size())
            return false;
        if (bytes.substr(at).starts_with("CD001"))
            return true;
        if (!bytes.substr(at).starts_with("BEA01") && !bytes.substr(at).starts_with("NSR0"))
            return false;
    }
    return false;
}

int FilterCode(Packing packing) {
    switch (packing) {
    case Packing::Gzip:
        return ARCHIVE_FILTER_GZIP;
    case Packing::Bzip2:
        return ARCHIVE_FILTER_BZIP2;
    case Packing::Xz:
        return ARCHIVE_FILTER_XZ;
    case Packing::Lzma:
        return ARCHIVE_FILTER_LZMA;
    case Packing::Zstd:
        return ARCHIVE_FILTER_ZSTD;
    case Packing::Lz4:
        return ARCHIVE_FILTER_LZ4;
    case Packing::Compress:
        return ARCHIVE_FILTER_COMPRESS;
    case Packing::Lzip:
        return ARCHIVE_FILTER_LZIP;
    case Packing::None:
        break;
    }
    return ARCHIVE_FILTER_NONE;
}

void SupportFormat(archive* reader, ArchiveFormat format, ZipWay way) {
    switch (format) {
    case ArchiveFormat::None:
    case ArchiveFormat::Zip:
        if (way == ZipWay::Directory)
            archive_read_support_format_zip_seekable(reader);
        archive_read_support_format_zip_streamable(reader);
        if (format == ArchiveFormat::None)
            archive_read_support_format_tar(reader);
        break;
    case ArchiveFormat::Tar:
        archive_read_support_format_tar(reader);
        break;
    case ArchiveFormat::SevenZip:
        archive_read_support_format_7zip(reader);
        break;
    case ArchiveFormat::Rar:
        archive_read_support_format_rar(reader);
        break;
    case ArchiveFormat::Rar5:
        archive_read_support_format_rar5(reader);
        break;
    case ArchiveFormat::Iso:
        archive_read_support_format_iso9660(reader);
        break;
    case ArchiveFormat::Cab:
        archive_read_support_format_cab(reader);
        break;
    case ArchiveFormat::Cpio:
    case ArchiveFormat::Rpm:
        archive_read_support_format_cpio(reader);
        break;
    case ArchiveFormat::Lha:
        archive_read_support_format_lha(reader);
        break;
    case ArchiveFormat::Xar:
        archive_read_support_format_xar(reader);
        break;
    case ArchiveFormat::Ar:
        archive_read_support_format_ar(reader);
        break;
    case ArchiveFormat::Raw:
        archive_read_support_format_raw(reader);
        break;
    }
}

bool IsPartOfSplitZip(std::string_view bytes) {
    constexpr std::size_t kEndRecord = 22;
    constexpr std::size_t kLongestComment = 65535;
    // A first part has a mark of its own, a last part the table of contents of all.
    if (bytes.starts_with("PK\x07\x08"))
        return true;
    const std::size_t from = bytes.size() - std::min(bytes.size(), kEndRecord + kLongestComment);
    const std::size_t end = bytes.substr(from).rfind("PK\x05\x06");
    if (end == std::string_view::npos || bytes.size() - from - end < kEndRecord)
        return false;
    const std::uint64_t disk = LittleNumber(bytes, from + end + 4, 2);
    return disk != 0 && disk != 0xFFFF; // that value: the number stands in the zip64 record
}

// The variable-length numbers at the beginning of an archive of the fifth RAR format.
struct Rar5Start {
    std::uint64_t type = 0;  // 1: main header, 4: all that follows is encrypted
    std::uint64_t flags = 0; // of the archive
};

Rar5Start ReadRar5Start(std::string_view bytes) {
    std::size_t at = 12; // behind the mark and a checksum
    const auto next = [&] {
        std::uint64_t value = 0;
        for (unsigned shift = 0; shift < 63; shift += 7) {
            const unsigned byte = Byte(bytes, at++);
            value |= std::uint64_t{byte & 0x7F} << shift;
            if ((byte & 0x80) == 0)
                break;
        }
        return value;
    };
    Rar5Start start;
    next(); // the header's size
    start.type = next();
    if ((next() & 1) != 0)
        next(); // the size of the extra area
    start.flags = next();
    return start;
}

constexpr std::size_t kRarFlagsAt = 10; // of the main header, behind the mark

} // namespace

Packing PackingOf(std::string_view bytes) {
    bytes = BehindSkippableFrames(bytes);
    if (bytes.starts_with("\x1F\x8B\x08"sv) && (Byte(bytes, 3) & 0xE0) == 0)
        return Packing::Gzip;
    if (IsBzip2(bytes))
        return Packing::Bzip2;
    if (bytes.starts_with("\xFD\x37zXZ\0"sv))
        return Packing::Xz;
    if (bytes.starts_with("\x28\xB5\x2F\xFD"sv))
        return Packing::Zstd;
    if (bytes.starts_with("\x04\x22\x4D\x18"sv) || bytes.starts_with("\x02\x21\x4C\x18"sv))
        return Packing::Lz4;
    if (bytes.starts_with("\x1F\x9D"sv) && (Byte(bytes, 2) & 0x60) == 0)
        return Packing::Compress;
    if (bytes.starts_with("LZIP\x01"sv) || bytes.starts_with("LZIP\0"sv))
        return Packing::Lzip;
    return IsLzma(bytes) ? Packing::Lzma : Packing::None;
}

ArchiveFormat FormatOf(std::string_view bytes) {
    if (bytes.starts_with("7z\xBC\xAF\x27\x1C"sv))
        return ArchiveFormat::SevenZip;
    if (bytes.starts_with("Rar!\x1A\x07\0"sv))
        return ArchiveFormat::Rar;
    if (bytes.starts_with("Rar!\x1A\x07\x01\0"sv))
        return ArchiveFormat::Rar5;
    if (bytes.starts_with("MSCF\0\0\0\0"sv))
        return ArchiveFormat::Cab;
    if (bytes.starts_with("xar!\0"sv))
        return ArchiveFormat::Xar;
    if (bytes.starts_with("!<arch>\n"))
        return ArchiveFormat::Ar;
    if (bytes.starts_with("\xED\xAB\xEE\xDB"sv))
        return ArchiveFormat::Rpm;
    if (IsCpio(bytes))
        return ArchiveFormat::Cpio;
    if (IsTarHeader(bytes))
        return ArchiveFormat::Tar;
    if (IsLha(bytes))
        return ArchiveFormat::Lha;
    return IsIso(bytes) ? ArchiveFormat::Iso : ArchiveFormat::None;
}

bool UnpacksToTar(std::string_view bytes, Packing packing) {
    const ArchiveOwner reader = OpenArchive(bytes, ArchiveFormat::Raw, packing, ZipWay::Directory);
    archive_entry* entry = nullptr;
    if (reader == nullptr || archive_read_next_header(reader.get(), &entry) != ARCHIVE_OK)
        return false;
    std::array<char, 512> head;
    const la_ssize_t size = archive_read_data(reader.get(), head.data(), head.size());
    return size == static_cast<la_ssize_t>(head.size()) && IsTarHeader({head.data(), head.size()});
}

bool IsCodeLibrary(std::string_view bytes) {
    if (bytes.starts_with("!<thin>\n"))
        return true;
    if (!bytes.starts_with("!<arch>\n"))
        return false;
    const std::string_view first = bytes.substr(8);
    return first.starts_with("/ ") || first.starts_with("/SYM64/") ||
           first.starts_with("__.SYMDEF");
}

bool HasPartNumber(std::string_view name) {
    constexpr std::size_t kDigits = 3;
    return name.size() > kDigits + 1 && name[name.size() - kDigits - 1] == '.' &&
           IsDigits(name.substr(name.size() - kDigits), 10);
}

bool IsPartOfSplit(ArchiveFormat format, std::string_view bytes) {
    constexpr std::uint64_t kRarVolume = 1, kCabNeighbours = 3;
    switch (format) {
    case ArchiveFormat::None:
    case ArchiveFormat::Zip:
        return IsPartOfSplitZip(bytes);
    case ArchiveFormat::Rar:
        return (LittleNumber(bytes, kRarFlagsAt, 2) & kRarVolume) != 0;
    case ArchiveFormat::Rar5: {
        const Rar5Start start = ReadRar5Start(bytes);
        return start.type == 1 && (start.flags & kRarVolume) != 0;
    }
    case ArchiveFormat::Cab:
        return (LittleNumber(bytes, 30, 2) & kCabNeighbours) != 0;
    default:
        return false;
    }
}

bool ListIsEncrypted(ArchiveFormat format, std::string_view bytes) {
    constexpr std::uint64_t kRarEncrypted = 0x80, kRar5Encryption = 4;
    if (format == ArchiveFormat::Rar)
        return (LittleNumber(bytes, kRarFlagsAt, 2) & kRarEncrypted) != 0;
    return format == ArchiveFormat::Rar5 && ReadRar5Start(bytes).type == kRar5Encryption;
}

std::string_view RpmContent(std::string_view bytes) {
    constexpr std::size_t kLead = 96, kIntro = 16, kIndexEntry = 16, kAlignment = 8;
    std::size_t at = kLead;
    for (int header = 0; header < 2; ++header) { // the signature's, then the package's own
        if (bytes.size() < at + kIntro || !bytes.substr(at).starts_with("\x8E\xAD\xE8"sv))
            return {};
        const std::uint64_t size =
            kIntro + BigNumber(bytes, at + 8, 4) * kIndexEntry + BigNumber(bytes, at + 12, 4);
        if (size > bytes.size() - at)
            return {};
        at += static_cast<std::size_t>(size);
        if (header == 0)
            at = (at + kAlignment - 1) / kAlignment * kAlignment;
    }
    return at < bytes.size() ? bytes.substr(at) : std::string_view();
}

void FreeArchive::operator()(archive* reader) const {
    archive_read_free(reader);
}

ArchiveOwner OpenArchive(std::string_view bytes, ArchiveFormat format, Packing packing,
                         ZipWay way) {
    ArchiveOwner reader(archive_read_new());
    if (reader == nullptr)
        throw std::bad_alloc();
    archive* const a = reader.get();
    SupportFormat(a, format, way);
    if (packing == Packing::Compress) // this one cannot be appended: it wants to see the bytes
        archive_read_support_filter_compress(a);
    else if (packing != Packing::None &&
             archive_read_append_filter(a, FilterCode(packing)) < ARCHIVE_WARN)
        return nullptr;
    if (archive_read_open_memory(a, bytes.data(), bytes.size()) != ARCHIVE_OK)
        return nullptr;
    constexpr int kOneLayer = 2; // with the one that reads the bytes
    if (archive_filter_count(a) > kOneLayer)
        return nullptr;
    return reader;
}

} // namespace engine
