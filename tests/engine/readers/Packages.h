// Makes zip packages in memory, and reads documents into a RecordingSink.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Reader.h"
#include "tests/engine/readers/MemberRecorder.h"
#include "tests/engine/readers/RecordingSink.h"

#include <archive.h>
#include <archive_entry.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace engine {

using Parts = std::vector<std::pair<std::string, std::string>>; // name and content

inline std::string MakeZip(const Parts& parts) {
    std::string bytes;
    archive* writer = archive_write_new();
    archive_write_set_format_zip(writer);
    archive_write_open2(
        writer, &bytes, nullptr,
        [](archive*, void* to, const void* piece, std::size_t size) -> la_ssize_t {
            static_cast<std::string*>(to)->append(static_cast<const char*>(piece), size);
            return static_cast<la_ssize_t>(size);
        },
        nullptr, nullptr);
    archive_write_set_bytes_in_last_block(writer, 1);
    for (const auto& [name, content] : parts) {
        archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname(entry, name.c_str());
        archive_entry_set_size(entry, static_cast<la_int64_t>(content.size()));
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_perm(entry, 0644);
        archive_write_header(writer, entry);
        archive_write_data(writer, content.data(), content.size());
        archive_entry_free(entry);
    }
    archive_write_close(writer);
    archive_write_free(writer);
    return bytes;
}

inline std::string LoadOffice(const std::string& name) {
    std::ifstream file(std::string(VELMORA_TEST_DATA) + "/office/" + name, std::ios::binary);
    if (!file)
        throw std::runtime_error("no test file " + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

using ReadFunction = void (*)(const Source&, DocumentSink&);
using ReadOfficeFunction = void (*)(const Source&, DocumentSink&, MemberSink&);

inline RecordingSink ReadWith(ReadOfficeFunction read, const std::string& bytes,
                              bool pictures = false, MemberRecorder* embedded = nullptr) {
    RecordingSink sink;
    MemberRecorder members;
    sink.wantsPictures = pictures;
    read(Source{bytes, {}}, sink, embedded == nullptr ? members : *embedded);
    if (!sink.Whole())
        throw std::runtime_error("blocks are not well nested: " + sink.text);
    return sink;
}

inline RecordingSink ReadWith(ReadFunction read, const std::string& bytes, bool pictures = false) {
    RecordingSink sink;
    sink.wantsPictures = pictures;
    read(Source{bytes, {}}, sink);
    if (!sink.Whole())
        throw std::runtime_error("blocks are not well nested: " + sink.text);
    return sink;
}

} // namespace engine
