// Reads compiled help (CHM).
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Charset.h"
#include "engine/readers/ChmContents.h"
#include "engine/readers/ChmFile.h"
#include "engine/readers/CodePage.h"
#include "engine/readers/Flow.h"
#include "engine/readers/HtmlText.h"
#include "engine/readers/Limits.h"
#include "engine/readers/LittleEndian.h"
#include "engine/readers/Package.h"
#include "engine/readers/Reader.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <vector>

namespace engine {
namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return lower;
}

bool EndsWithAny(std::string_view lowerName, const auto& endings) {
    return std::any_of(endings.begin(), endings.end(),
                       [&](std::string_view ending) { return lowerName.ends_with(ending); });
}

bool IsHtml(std::string_view lowerName) {
    constexpr std::array<std::string_view, 4> kEndings{".htm", ".html", ".xhtml", ".shtml"};
    return EndsWithAny(lowerName, kEndings);
}

// What the compiler noted of the whole.
struct SystemInfo {
    std::string title, contents; // in the charset of the language
    unsigned language = 0;
};

SystemInfo ReadSystem(std::string_view bytes) {
    constexpr unsigned kContents = 0, kTitle = 3, kLanguage = 4;
    SystemInfo info;
    for (std::size_t at = 4; at + 4 <= bytes.size();) {
        const unsigned code = U16(bytes, at);
        const std::string_view value = Slice(bytes, at + 4, U16(bytes, at + 2));
        if (code == kContents)
            info.contents = value.substr(0, value.find('\0'));
        else if (code == kTitle)
            info.title = value.substr(0, value.find('\0'));
        else if (code == kLanguage && value.size() >= 4)
            info.language = U32(value, 0);
        at += 4 + std::size_t{U16(bytes, at + 2)};
    }
    return info;
}

class Help {
  public:
    Help(const Source& source, DocumentSink& sink)
        : m_file(source.bytes), m_sink(sink), m_flow(sink) {}
    void Read();

  private:
    void Unpack();
    void ReadContents();
    void ReadTopic(std::size_t number, int level, const std::string& title);
    [[nodiscard]] std::string Decode(const std::string& bytes, bool html) const;
    [[nodiscard]] std::size_t Find(std::string_view lowerName) const;

    ChmFile m_file;
    DocumentSink& m_sink;
    Flow m_flow;
    std::unordered_map<std::string, std::size_t> m_byName;  // in small letters
    std::unordered_map<std::size_t, std::string> m_content; // by number
    std::vector<std::size_t> m_topics;                      // in the order of the directory
    std::string m_charset;                                  // where a page names none
    std::string m_contentsName;
    int m_pages = 0;
};

std::size_t Help::Find(std::string_view lowerName) const {
    const auto found = m_byName.find(std::string(lowerName));
    return found == m_byName.end() ? kNone : found->second;
}

void Help::Unpack() {
    std::vector<std::size_t> wanted;
    for (std::size_t i = 0; i < m_file.Entries().size(); ++i) {
        const std::string name = Lower(m_file.Entries()[i].name);
        const bool topic = IsHtml(name) || name.ends_with(".txt");
        if (!topic && name != "#system" && !name.ends_with(".hhc"))
            continue;
        if (!m_byName.try_emplace(name, i).second)
            continue;
        wanted.push_back(i);
        if (topic)
            m_topics.push_back(i);
        else if (name.ends_with(".hhc") && m_contentsName.empty())
            m_contentsName = name;
    }
    const std::size_t count = wanted.size();
    const ChmFile::Losses losses =
        m_file.Unpack(std::move(wanted), [this](std::size_t number, std::string&& content) {
            m_content[number] = std::move(content);
        });
    const std::string of = " of " + std::to_string(count) + " parts ";
    if (losses.damaged > 0)
        m_sink.Incomplete(std::to_string(losses.damaged) + of + "are damaged");
    if (losses.tooLarge > 0)
        m_sink.Incomplete(std::to_string(losses.tooLarge) + of +
                          "are larger than what is unpacked");
}

std::string Help::Decode(const std::string& bytes, bool html) const {
    std::string declared = html ? DeclaredHtmlCharset(bytes) : std::string();
    if (CharsetOfLabel(declared).empty())
        declared = m_charset;
    return DecodeText(bytes, DetectCharset(bytes, declared), kMaxMemberBytes);
}

void Help::ReadTopic(std::size_t number, int level, const std::string& title) {
    const auto content = m_content.find(number);
    if (content == m_content.end())
        return;
    const bool html = IsHtml(Lower(m_file.Entries()[number].name));
    const std::string text = Decode(content->second, html);
    m_content.erase(content);
    m_flow.Open(Block::Page, ++m_pages);
    if (!title.empty()) {
        m_flow.Open(Block::Heading, level);
        m_flow.Collapse(title);
        m_flow.Close(Block::Heading);
    }
    if (html) {
        ReadHtmlText(text, m_flow, {});
    } else {
        m_flow.Open(Block::Preformatted);
        m_flow.Text(text);
        m_flow.Close(Block::Preformatted);
    }
    m_flow.Close(Block::Page);
}

// The topics that the table of contents names, under their titles there.
void Help::ReadContents() {
    const auto contents = m_content.find(Find(m_contentsName));
    if (contents == m_content.end())
        return;
    const std::string folder(FolderOf(m_contentsName));
    for (const ChmContentsEntry& entry : ReadChmContents(Decode(contents->second, true))) {
        const std::size_t topic =
            entry.address.empty() ? kNone : Find(Lower(ResolveName(folder, entry.address)));
        if (topic != kNone) {
            ReadTopic(topic, entry.level, entry.title);
        } else if (entry.address.empty()) { // a chapter without a text of its own
            m_flow.Open(Block::Heading, entry.level);
            m_flow.Collapse(entry.title);
            m_flow.Close(Block::Heading);
        }
    }
}

void Help::Read() {
    Unpack();
    if (const auto system = m_content.find(Find("#system")); system != m_content.end()) {
        const SystemInfo info = ReadSystem(system->second);
        const unsigned page = CodePageOfLanguage(info.language);
        m_charset = CharsetOfCodePage(page);
        m_sink.Field("title", DecodeCodePage(info.title, page));
        const std::string contents = Lower(ResolveName({}, DecodeCodePage(info.contents, page)));
        if (contents.ends_with(".hhc") && Find(contents) != kNone)
            m_contentsName = contents;
    }
    if (m_topics.empty())
        throw ReadError(ReadState::Damaged, "holds no topics");
    ReadContents();
    for (const std::size_t topic : m_topics)
        ReadTopic(topic, 1, {});
    m_flow.Finish();
}

} // namespace

void ReadChm(const Source& source, DocumentSink& sink) {
    Help(source, sink).Read();
}

} // namespace engine
