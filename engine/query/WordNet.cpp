// The English word net: sets of words with one meaning, and the sets next to them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/ThesaurusFiles.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <charconv>
#include <set>
#include <utility>

namespace engine {
namespace {

constexpr const char* kFolder = "/usr/share/wordnet/";
constexpr std::array<const char*, 4> kParts{"noun", "verb", "adj", "adv"};

// A text file whose lines are found by their place or, being sorted, by their first word.
class LineFile {
  public:
    bool Open(const QString& path) {
        m_file.setFileName(path);
        if (!m_file.open(QIODevice::ReadOnly))
            return false;
        const uchar* data = m_file.map(0, m_file.size());
        if (data == nullptr)
            return false;
        m_text = {reinterpret_cast<const char*>(data), static_cast<std::size_t>(m_file.size())};
        return true;
    }
    std::string_view LineAt(std::size_t offset) const {
        return offset >= m_text.size() ? std::string_view()
                                       : m_text.substr(offset, m_text.find('\n', offset) - offset);
    }
    // The line that begins with the word and a blank; empty when there is none.
    std::string_view LineOf(std::string_view word) const {
        std::size_t low = 0;
        std::size_t high = m_text.size();
        while (low < high) {
            std::size_t middle = low + (high - low) / 2;
            const auto begin = m_text.rfind('\n', middle);
            middle = begin == std::string_view::npos || begin < low ? low : begin + 1;
            const std::string_view line = LineAt(middle);
            const std::string_view key = line.substr(0, line.find(' '));
            if (key == word && !line.empty() && line.front() != ' ')
                return line;
            if (line.empty() || (line.front() != ' ' && word < key))
                high = middle;
            else
                low = middle + line.size() + 1;
        }
        return {};
    }

  private:
    QFile m_file;
    std::string_view m_text;
};

std::vector<std::string_view> Cut(std::string_view line) {
    std::vector<std::string_view> parts;
    while (!line.empty()) {
        const auto blank = line.find(' ');
        if (blank != 0)
            parts.push_back(line.substr(0, blank));
        line.remove_prefix(blank == std::string_view::npos ? line.size() : blank + 1);
    }
    return parts;
}

// An ending, and what stands in its place in the base form; by part, as the net's own tools do it.
struct Ending {
    std::size_t part; // in kParts
    std::string_view inflected, base;
};
constexpr std::array kEndings{
    Ending{0, "s", ""},      Ending{0, "ses", "s"}, Ending{0, "xes", "x"},   Ending{0, "zes", "z"},
    Ending{0, "ches", "ch"}, Ending{0, "shes", "sh"}, Ending{0, "men", "man"}, Ending{0, "ies", "y"},
    Ending{1, "s", ""},      Ending{1, "ies", "y"}, Ending{1, "es", "e"},    Ending{1, "es", ""},
    Ending{1, "ed", "e"},    Ending{1, "ed", ""},   Ending{1, "ing", "e"},   Ending{1, "ing", ""},
    Ending{2, "er", ""},     Ending{2, "est", ""},  Ending{2, "er", "e"},    Ending{2, "est", "e"},
};

std::size_t Number(std::string_view text, int base = 10) {
    std::size_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value, base);
    return value;
}

class WordNet final : public Thesaurus {
  public:
    WordNet(Tokenizer& tokenizer, bool related) : m_tokenizer(tokenizer), m_related(related) {}
    bool Open() {
        for (std::size_t i = 0; i < kParts.size(); ++i) {
            const QString part = QString::fromLatin1(kParts[i]);
            if (!m_index[i].Open(QString::fromLatin1(kFolder) + QStringLiteral("index.") + part) ||
                !m_data[i].Open(QString::fromLatin1(kFolder) + QStringLiteral("data.") + part))
                return false;
            (void)m_exceptions[i].Open(QString::fromLatin1(kFolder) + part + QStringLiteral(".exc"));
        }
        return true;
    }

    std::vector<std::vector<std::string>> Synonyms(std::string_view word) const override {
        std::set<std::vector<std::string>> found;
        for (std::size_t part = 0; part < kParts.size(); ++part)
            for (const std::string& form : BaseForms(part, word))
                AddWord(part, form, found);
        found.erase({std::string(word)});
        return {found.begin(), found.end()};
    }

  private:
    // What stands in the net for a word as it is written: "mice" and "running" too.
    std::set<std::string> BaseForms(std::size_t part, std::string_view word) const {
        std::set<std::string> forms{std::string(word)};
        const auto irregular = Cut(m_exceptions[part].LineOf(word));
        for (std::size_t i = 1; i < irregular.size(); ++i)
            forms.emplace(irregular[i]);
        for (const Ending& ending : kEndings)
            if (ending.part == part && word.size() > ending.inflected.size() &&
                word.ends_with(ending.inflected))
                forms.insert(std::string(word.substr(0, word.size() - ending.inflected.size())) +
                             std::string(ending.base));
        return forms;
    }

    void AddWord(std::size_t part, std::string_view word,
                 std::set<std::vector<std::string>>& found) const {
        const auto fields = Cut(m_index[part].LineOf(word));
        // lemma, part, count of sets, count of pointers, pointers…, two counts, sets…
        if (fields.size() < 6)
            return;
        for (std::size_t i = fields.size() - std::min(Number(fields[2]), fields.size()); i < fields.size(); ++i)
            AddSet(part, Number(fields[i]), m_related, found);
    }

    // offset, file, type, count of words (hexadecimal), then word and number pairs; count of
    // pointers, then symbol, offset, part and places.
    void AddSet(std::size_t part, std::size_t offset, bool withNeighbours,
                std::set<std::vector<std::string>>& found) const {
        const auto fields = Cut(m_data[part].LineAt(offset));
        if (fields.size() < 6)
            return;
        const std::size_t words = Number(fields[3], 16);
        for (std::size_t i = 0; i < words && 4 + 2 * i < fields.size(); ++i) {
            std::vector<std::string> phrase;
            for (const Word& word : m_tokenizer.Split(fields[4 + 2 * i].substr(0, fields[4 + 2 * i].find('('))))
                phrase.emplace_back(word.term);
            if (!phrase.empty())
                found.insert(std::move(phrase));
        }
        const std::size_t at = 4 + 2 * words;
        if (!withNeighbours || at >= fields.size())
            return;
        const std::size_t pointers = Number(fields[at]);
        for (std::size_t i = 0; i < pointers && at + 4 * i + 3 < fields.size(); ++i) {
            const std::string_view symbol = fields[at + 1 + 4 * i];
            if (symbol != "@" && symbol != "~" && symbol != "&")
                continue;
            static constexpr std::string_view kLetters = "nvar";
            const auto other = kLetters.find(fields[at + 3 + 4 * i].front());
            if (other != std::string_view::npos)
                AddSet(other, Number(fields[at + 2 + 4 * i]), false, found);
        }
    }

    Tokenizer& m_tokenizer;
    bool m_related;
    std::array<LineFile, 4> m_index, m_data, m_exceptions;
};

} // namespace

std::unique_ptr<Thesaurus> OpenWordNet(Tokenizer& tokenizer, bool related) {
    auto net = std::make_unique<WordNet>(tokenizer, related);
    if (!net->Open())
        return nullptr;
    return net;
}

} // namespace engine
