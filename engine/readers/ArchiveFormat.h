// What kind of archive or compressed file some bytes are, by their marks.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct archive;

namespace engine {

enum class ArchiveFormat : std::uint8_t {
    None,
    Zip,
    Tar,
    SevenZip,
    Rar,
    Rar5,
    Iso, // ISO 9660, with UDF beside it or not
    Cab,
    Cpio,
    Lha,
    Xar,
    Ar, // Debian packages too
    Rpm,
    Raw, // the content of a compressed file, whatever it is
};

// How bytes are compressed as a whole.
enum class Packing : std::uint8_t { None, Gzip, Bzip2, Xz, Lzma, Zstd, Lz4, Compress, Lzip };

[[nodiscard]] Packing PackingOf(std::string_view bytes);
// Zip is not among the answers (see ZipFile), nor is what is compressed as a whole.
[[nodiscard]] ArchiveFormat FormatOf(std::string_view bytes);
// Whether compressed bytes unpack to a tar.
[[nodiscard]] bool UnpacksToTar(std::string_view bytes, Packing packing);
// Whether bytes are a library of compiled code: an ar archive that begins with a list of symbols.
[[nodiscard]] bool IsCodeLibrary(std::string_view bytes);

// One of several files that only together are an archive, by the marks of such a part.
[[nodiscard]] bool IsPartOfSplit(ArchiveFormat format, std::string_view bytes);
// Whether a name may be that of a part without marks: "archive.7z.001".
[[nodiscard]] bool HasPartNumber(std::string_view name);
// Whether even the list of members needs a password.
[[nodiscard]] bool ListIsEncrypted(ArchiveFormat format, std::string_view bytes);
// The compressed content of an RPM package; empty where the package is damaged.
[[nodiscard]] std::string_view RpmContent(std::string_view bytes);

struct FreeArchive {
    void operator()(archive* reader) const;
};
using ArchiveOwner = std::unique_ptr<archive, FreeArchive>;

// How a zip archive is read: by its table of contents, or from the front where that is damaged.
enum class ZipWay : std::uint8_t { Directory, Stream };

// Opens bytes, of which one layer of packing is taken off: each further one is a file of its own,
// so that the caps hold for each. Format None tries zip and tar. Null: the library refuses.
[[nodiscard]] ArchiveOwner OpenArchive(std::string_view bytes, ArchiveFormat format,
                                       Packing packing, ZipWay way);

} // namespace engine
