// The text that the index keeps of each document.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/IndexFile.h"
#include "engine/text/Tokenizer.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace engine {

[[nodiscard]] constexpr std::int64_t FirstChunkId(std::int64_t document) { return document << 20; }

// How words are cut in the document of that logical name; path: its member path, "" for a file.
[[nodiscard]] WordRule RuleFor(std::string_view name, std::string_view path);

// Throws IndexError Damaged when bytes are not what was stored.
[[nodiscard]] std::string Decompress(std::string_view bytes, std::size_t plainLength);

// Whole text of a document, chunk by chunk: use(text) for each.
template <class Use> void ReadStoredText(IndexFile& index, std::int64_t document, Use use) {
    sqlite::Statement chunks(index.Db(),
                             "SELECT plain, text FROM chunk WHERE id BETWEEN ?1 AND ?2 ORDER BY id");
    chunks.Bind(1, FirstChunkId(document)).Bind(2, FirstChunkId(document + 1) - 1);
    while (chunks.Step())
        use(Decompress(chunks.Blob(1), static_cast<std::size_t>(chunks.Int64(0))));
}

} // namespace engine
