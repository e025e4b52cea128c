// A second, plain evaluator of the request language: word by word, every pair compared.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace engine_test {

// A document as the oracle sees it.
struct OracleDocument {
    std::string name;               // file name
    std::vector<std::string> words; // folded; word 1 is words[0]
    std::size_t titleWords = 0;     // the first so many words are the field "title"
};

using Instance = std::pair<std::size_t, std::size_t>; // first and last word number
using Instances = std::set<Instance>;

// A request that knows how it is written and what it means.
class OracleRequest {
  public:
    virtual ~OracleRequest() = default;
    [[nodiscard]] virtual std::string Text() const = 0;
    // Whether the document satisfies it; instances outside [from, to] do not count.
    virtual bool Matches(const OracleDocument& document, std::size_t from, std::size_t to,
                         Instances& instances) const = 0;
};

// A random request over words that stand in the documents.
[[nodiscard]] std::unique_ptr<OracleRequest>
RandomRequest(std::mt19937& random, const std::vector<OracleDocument>& documents, int depth);

// Words of a text, cut and folded without the engine's help: letters, digits and marks of scripts
// with blanks.
[[nodiscard]] std::vector<std::string> OracleWords(const std::string& utf8);

} // namespace engine_test
