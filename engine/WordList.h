// The words of an index around or behind what a person types.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

namespace engine {

class IndexFile;

struct ListedWord {
    QString word;              // folded
    std::int64_t documents = 0; // that hold it
};

// Builds lists of words in the order of the index. Texts are folded as words are.
class WordListBuilder {
  public:
    // Logical paths. False: there is no index, or it cannot be opened.
    [[nodiscard]] bool OpenIndex(const QString& indexPath, const QString& alphabetFile);
    // These two throw IndexError when the index cannot be read to the end.
    // The word itself where it stands or the nearest behind it, with range words before and
    // range words after.
    void ListWords(const QString& word, int range);
    // Words that begin with prefix, most documents first, at most limit.
    void ListPrefix(const QString& prefix, int limit);
    [[nodiscard]] int Count() const { return static_cast<int>(m_words.size()); }
    [[nodiscard]] const ListedWord& Word(int index) const { return m_words.at(static_cast<std::size_t>(index)); }

  private:
    void Read(const std::function<void(IndexFile&)>& use);

    QString m_file, m_alphabetFile;
    std::vector<ListedWord> m_words;
};

} // namespace engine
