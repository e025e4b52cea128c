// Makes zip archives.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <archive.h>
#include <archive_entry.h>

#include <utility>
#include <vector>

namespace engine_test {

// Of up to a megabyte. members: name, content.
inline QByteArray Zip(const std::vector<std::pair<QByteArray, QByteArray>>& members) {
    QByteArray bytes(1 << 20, '\0');
    std::size_t used = 0;
    archive* out = archive_write_new();
    archive_write_set_format_zip(out);
    archive_write_open_memory(out, bytes.data(), static_cast<std::size_t>(bytes.size()), &used);
    for (const auto& [name, content] : members) {
        archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname_utf8(entry, name.constData());
        archive_entry_set_size(entry, content.size());
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_perm(entry, 0644);
        archive_write_header(out, entry);
        archive_write_data(out, content.constData(), static_cast<std::size_t>(content.size()));
        archive_entry_free(entry);
    }
    archive_write_close(out);
    archive_write_free(out);
    bytes.truncate(static_cast<qsizetype>(used));
    return bytes;
}

} // namespace engine_test
