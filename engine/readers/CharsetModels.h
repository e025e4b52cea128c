// How languages write: which letters follow each other, which ideographs are common.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <span>
#include <string_view>

namespace engine {

// A language of letters. alphabet begins with a blank, which stands for all that is no letter;
// costs has a row for each of them: what it costs that the letter of the column follows, in half
// bits from '0' upwards.
struct LanguageModel {
    std::string_view name;
    std::u32string_view alphabet; // small letters, sorted
    std::string_view costs;
};
[[nodiscard]] std::span<const LanguageModel> LanguageModels();

enum class WritingSystem { Japanese, SimplifiedChinese, TraditionalChinese, Korean };
// Its most common ideographs or syllables, sorted.
[[nodiscard]] std::u32string_view CommonCharacters(WritingSystem system);

} // namespace engine
