// Turns what a reader puts out into one compact text, such as "[h1]Title[/h1][p]Text[/p]".
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocumentSink.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace engine {

class RecordingSink final : public DocumentSink {
  public:
    std::string text;                          // blocks in brackets, line breaks as "[br]"
    std::map<std::string, std::string> fields; // several values of a name are joined by "|"
    std::vector<std::string> problems;         // clauses of Incomplete
    std::vector<std::pair<std::string, std::string>> pictures; // mime, alternative text
    bool wantsPictures = false;
    bool balanced = true; // every Close met the innermost Open

    void Field(std::string_view name, std::string_view value) override {
        if (value.empty())
            return;
        std::string& all = fields[std::string(name)];
        if (!all.empty())
            all += '|';
        all += value;
    }
    void Text(std::string_view utf8) override { text += utf8; }
    void Open(Block block, int level) override {
        m_open.emplace_back(block, level);
        text += '[' + Name(block, level) + ']';
    }
    void Close(Block block) override {
        if (m_open.empty() || m_open.back().first != block) {
            balanced = false;
            text += "[unbalanced]";
            return;
        }
        text += "[/" + Name(block, m_open.back().second) + ']';
        m_open.pop_back();
    }
    void Break() override { text += "[br]"; }
    [[nodiscard]] bool WantsPictures() const override { return wantsPictures; }
    void Picture(std::string_view mime, std::string_view /*bytes*/,
                 std::string_view alternativeText) override {
        pictures.emplace_back(mime, alternativeText);
    }
    void Incomplete(std::string_view reason) override { problems.emplace_back(reason); }

    [[nodiscard]] bool Whole() const { return balanced && m_open.empty(); }
    // The text alone: blocks and breaks become single blanks.
    [[nodiscard]] std::string Words() const {
        std::string words;
        bool gap = false;
        for (std::size_t i = 0; i < text.size(); ++i) {
            const std::size_t end = text[i] == '[' ? MarkEnd(i) : std::string::npos;
            if (end != std::string::npos)
                i = end;
            if (end != std::string::npos || text[i] == ' ' || text[i] == '\n' || text[i] == '\r' ||
                text[i] == '\t') {
                gap = !words.empty();
                continue;
            }
            if (gap)
                words += ' ';
            gap = false;
            words += text[i];
        }
        return words;
    }

  private:
    static std::string Name(Block block, int level) {
        switch (block) {
        case Block::Paragraph:
            return "p";
        case Block::Heading:
            return "h" + std::to_string(level);
        case Block::List:
            return level == 0 ? "ul" : "ol";
        case Block::Item:
            return "li";
        case Block::Table:
            return "table";
        case Block::Row:
            return "tr";
        case Block::Cell:
            return "td";
        case Block::Preformatted:
            return "pre";
        case Block::Quote:
            return "quote";
        case Block::Page:
            return "page" + std::to_string(level);
        case Block::Note:
            return "note";
        }
        return "?";
    }
    // The closing bracket of a mark that starts at begin; npos: a bracket of the text itself.
    [[nodiscard]] std::size_t MarkEnd(std::size_t begin) const {
        std::size_t i = begin + 1;
        if (i < text.size() && text[i] == '/')
            ++i;
        const std::size_t nameBegin = i;
        while (i < text.size() && text[i] >= 'a' && text[i] <= 'z')
            ++i;
        while (i < text.size() && text[i] >= '0' && text[i] <= '9')
            ++i;
        return i > nameBegin && i < text.size() && text[i] == ']' ? i : std::string::npos;
    }

    std::vector<std::pair<Block, int>> m_open;
};

} // namespace engine
