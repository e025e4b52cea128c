// The user's thesaurus file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/ThesaurusFiles.h"

#include "platform/Files.h"
#include "platform/LogicalPath.h"

#include <QXmlStreamReader>

#include <algorithm>
#include <utility>

namespace engine {
namespace {

using Phrase = std::vector<std::string>;

class UserThesaurus final : public Thesaurus {
  public:
    void AddEntry(const std::vector<Phrase>& phrases) {
        for (const Phrase& phrase : phrases) {
            if (phrase.size() != 1)
                continue;
            std::vector<Phrase>& others = m_synonyms[phrase.front()];
            for (const Phrase& other : phrases)
                if (other != phrase && std::find(others.begin(), others.end(), other) == others.end())
                    others.push_back(other);
        }
    }
    std::vector<Phrase> Synonyms(std::string_view word) const override {
        const auto found = m_synonyms.find(std::string(word));
        return found == m_synonyms.end() ? std::vector<Phrase>() : found->second;
    }

  private:
    std::map<std::string, std::vector<Phrase>> m_synonyms;
};

Phrase Folded(const QString& text, Tokenizer& tokenizer) {
    Phrase phrase;
    const std::string utf8 = text.toStdString();
    for (const Word& word : tokenizer.Split(utf8))
        phrase.emplace_back(word.term);
    return phrase;
}

// Words parted by blanks or commas; several words in quotes are one synonym.
std::vector<Phrase> SplitSynonyms(const QString& text, Tokenizer& tokenizer) {
    std::vector<Phrase> phrases;
    const auto add = [&](const QString& part) {
        if (Phrase phrase = Folded(part, tokenizer); !phrase.empty())
            phrases.push_back(std::move(phrase));
    };
    bool quoted = false;
    for (const QString& part : text.split(QLatin1Char('"'))) {
        if (quoted)
            add(part);
        else
            for (QString word : QString(part).replace(QLatin1Char(','), QLatin1Char(' ')).split(QLatin1Char(' ')))
                add(word);
        quoted = !quoted;
    }
    return phrases;
}

} // namespace

std::unique_ptr<Thesaurus> ReadUserThesaurus(const QString& logicalPath, Tokenizer& tokenizer) {
    auto thesaurus = std::make_unique<UserThesaurus>();
    const platform::FileContent content = platform::ReadFile(platform::ToMachine(logicalPath));
    if (!content.error.Ok())
        return thesaurus;
    QXmlStreamReader xml(content.bytes);
    std::vector<Phrase> entry;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == QLatin1String("Item"))
            entry.clear();
        if (xml.isStartElement() && xml.name() == QLatin1String("Name")) {
            if (Phrase name = Folded(xml.readElementText(), tokenizer); !name.empty())
                entry.push_back(std::move(name));
        } else if (xml.isStartElement() && xml.name() == QLatin1String("Synonyms")) {
            for (Phrase& phrase : SplitSynonyms(xml.readElementText(), tokenizer))
                entry.push_back(std::move(phrase));
        } else if (xml.isEndElement() && xml.name() == QLatin1String("Item")) {
            thesaurus->AddEntry(entry);
        }
    }
    return thesaurus;
}

} // namespace engine
