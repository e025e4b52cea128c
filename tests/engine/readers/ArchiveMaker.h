// Makes archives for tests.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <archive.h>
#include <archive_entry.h>

#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

struct PackedEntry {
    std::string path;
    std::string content;
    unsigned type = AE_IFREG; // or AE_IFDIR; AE_IFLNK: content is where it leads to
};

// Packs entries; format is an ARCHIVE_FORMAT_ code, filter an ARCHIVE_FILTER_ code, options such as
// "zip:zip64" are the library's.
inline std::string PackArchive(int format, int filter, const std::vector<PackedEntry>& entries,
                               const char* options = nullptr) {
    struct Free {
        void operator()(archive* a) const { archive_write_free(a); }
        void operator()(archive_entry* e) const { archive_entry_free(e); }
    };
    std::string out;
    const std::unique_ptr<archive, Free> owner(archive_write_new());
    archive* const a = owner.get();
    const auto check = [a](la_ssize_t result) {
        if (result < ARCHIVE_WARN)
            throw std::runtime_error(archive_error_string(a));
    };
    check(format == ARCHIVE_FORMAT_AR_GNU ? archive_write_set_format_ar_svr4(a)
                                          : archive_write_set_format(a, format));
    check(archive_write_add_filter(a, filter));
    archive_write_set_bytes_in_last_block(a, 1);
    if (options != nullptr)
        check(archive_write_set_options(a, options));
    check(archive_write_open(
        a, &out, nullptr,
        [](archive*, void* to, const void* bytes, std::size_t size) {
            static_cast<std::string*>(to)->append(static_cast<const char*>(bytes), size);
            return static_cast<la_ssize_t>(size);
        },
        nullptr));
    for (const PackedEntry& entry : entries) {
        const std::unique_ptr<archive_entry, Free> e(archive_entry_new());
        archive_entry_set_pathname(e.get(), entry.path.c_str());
        archive_entry_set_filetype(e.get(), entry.type);
        archive_entry_set_perm(e.get(), 0644);
        archive_entry_set_mtime(e.get(), 1'600'000'000, 0);
        const auto size = static_cast<std::int64_t>(entry.content.size());
        if (entry.type == AE_IFLNK)
            archive_entry_set_symlink(e.get(), entry.content.c_str());
        else
            archive_entry_set_size(e.get(), size);
        check(archive_write_header(a, e.get()));
        if (entry.type == AE_IFREG && size > 0)
            check(archive_write_data(a, entry.content.data(), entry.content.size()));
        check(archive_write_finish_entry(a));
    }
    check(archive_write_close(a));
    return out;
}

inline std::string PackZip(const std::vector<PackedEntry>& entries, const char* options = nullptr) {
    return PackArchive(ARCHIVE_FORMAT_ZIP, ARCHIVE_FILTER_NONE, entries, options);
}
inline std::string PackTar(const std::vector<PackedEntry>& entries,
                           int filter = ARCHIVE_FILTER_NONE) {
    return PackArchive(ARCHIVE_FORMAT_TAR_PAX_RESTRICTED, filter, entries);
}
// One compressed file.
inline std::string Compress(int filter, const std::string& content) {
    return PackArchive(ARCHIVE_FORMAT_RAW, filter, {{"data", content}});
}

// Letters that cannot be packed well, always the same.
inline std::string Noise(std::size_t size) {
    std::string noise;
    noise.reserve(size);
    for (std::uint32_t i = 0, x = 1; i < size; ++i, x = x * 1103515245 + 12345)
        noise += static_cast<char>('a' + (x >> 16) % 26);
    return noise;
}

} // namespace engine
