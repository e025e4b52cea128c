// Words that stand for each other.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace engine {

class Thesaurus {
  public:
    virtual ~Thesaurus() = default;
    // Synonyms of a folded word, each as its folded words; the word itself is not among them.
    [[nodiscard]] virtual std::vector<std::vector<std::string>>
    Synonyms(std::string_view word) const = 0;
};

} // namespace engine
