// Reads EPUB books.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Base64.h"
#include "engine/readers/Charset.h"
#include "engine/readers/HtmlText.h"
#include "engine/readers/Limits.h"
#include "engine/readers/Package.h"
#include "engine/readers/Reader.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace engine {
namespace {

// "%20" and the like in the addresses of parts.
std::string DecodePercent(std::string_view address) {
    const auto digit = [](char c) {
        if (c >= '0' && c <= '9')
            return c - '0';
        const char lower = static_cast<char>(c | 0x20);
        return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
    };
    std::string plain;
    for (std::size_t i = 0; i < address.size(); ++i) {
        const bool escape = address[i] == '%' && i + 2 < address.size() &&
                            digit(address[i + 1]) >= 0 && digit(address[i + 2]) >= 0;
        plain += escape ? static_cast<char>(digit(address[i + 1]) * 16 + digit(address[i + 2]))
                        : address[i];
        i += escape ? 2 : 0;
    }
    return plain;
}

// Says where the book's package document is.
class Container final : public XmlHandler {
  public:
    std::string packagePart;
    bool Start(const XmlElement& element) override {
        if (element.name == "rootfile" && packagePart.empty())
            packagePart = ResolveName({}, element.Attribute("full-path"));
        return true;
    }
    void End(std::string_view, std::string_view) override {}
    void Text(std::string_view) override {}
};

// Lists the parts that are encrypted; scrambled fonts stand there too.
class EncryptionList final : public XmlHandler {
  public:
    std::set<std::string> parts;
    bool Start(const XmlElement& element) override {
        if (element.name == "CipherReference")
            parts.insert(ResolveName({}, DecodePercent(element.Attribute("URI"))));
        return true;
    }
    void End(std::string_view, std::string_view) override {}
    void Text(std::string_view) override {}
};

// The package document: metadata, the book's parts, and their order.
class Book final : public XmlHandler {
  public:
    Book(std::string_view part, DocumentSink& sink) : m_folder(FolderOf(part)), m_sink(sink) {}

    bool Start(const XmlElement& element) override {
        if (element.name == "item")
            m_items[element.Attribute("id")] = {
                ResolveName(m_folder, DecodePercent(element.Attribute("href"))),
                element.Attribute("media-type")};
        else if (element.name == "itemref")
            m_order.push_back(element.Attribute("idref"));
        m_value.clear();
        return true;
    }
    void End(std::string_view space, std::string_view name) override {
        constexpr std::string_view kDublinCore = "http://purl.org/dc/elements/";
        if (!space.starts_with(kDublinCore))
            return;
        if (name == "title" || name == "publisher")
            m_sink.Field(name, m_value);
        else if (name == "creator")
            m_sink.Field("author", m_value);
        else if (name == "subject")
            m_sink.Field("keywords", m_value);
        else if (name == "description")
            m_sink.Field("comments", m_value);
    }
    void Text(std::string_view utf8) override { m_value += utf8; }

    // The texts in reading order.
    [[nodiscard]] std::vector<std::string> Chapters() const {
        std::vector<std::string> chapters;
        for (const std::string& id : m_order)
            if (const auto item = m_items.find(id); item != m_items.end() && item->second.IsText())
                chapters.push_back(item->second.part);
        if (chapters.empty()) // a book without an order
            for (const auto& [id, item] : m_items)
                if (item.IsText())
                    chapters.push_back(item.part);
        return chapters;
    }

  private:
    struct Item {
        std::string part, type;
        [[nodiscard]] bool IsText() const {
            return type.find("html") != std::string::npos || part.ends_with("html") ||
                   part.ends_with(".htm");
        }
    };
    std::string m_folder;
    DocumentSink& m_sink;
    std::map<std::string, Item> m_items;
    std::vector<std::string> m_order;
    std::string m_value;
};

void ReadChapter(Package& package, const std::string& part, Flow& flow) {
    std::string problem;
    const std::string bytes = package.Load(part, kMaxMemberBytes, &problem);
    if (!problem.empty() || !package.Has(part))
        package.Sink().Incomplete(part + " " + (problem.empty() ? "is missing" : problem));
    const Charset charset = DetectCharset(bytes, DeclaredHtmlCharset(bytes));
    HtmlParts parts;
    parts.wantsPictures = package.Sink().WantsPictures();
    parts.picture = [&](const std::string& address, std::string& mime, std::string& picture) {
        const std::string name = ResolveName(FolderOf(part), DecodePercent(address));
        mime = PictureType(name);
        if (!mime.empty())
            picture = package.Load(name, kMaxPictureBytes);
        return !picture.empty();
    };
    ReadHtmlText(charset.wellFormed ? bytes.substr(charset.bomBytes)
                                    : DecodeText(bytes, charset, kMaxMemberBytes),
                 flow, parts);
    flow.EndParagraph();
}

} // namespace

void ReadEpub(const Source& source, DocumentSink& sink) {
    Package package(source, sink);
    Container container;
    package.Parse("META-INF/container.xml", container);
    if (container.packagePart.empty())
        throw ReadError(ReadState::Damaged, "the list of the book's parts is missing");
    package.Require(container.packagePart);
    Book book(container.packagePart, sink);
    package.Parse(container.packagePart, book);
    EncryptionList encrypted;
    package.Parse("META-INF/encryption.xml", encrypted);
    const std::vector<std::string> chapters = book.Chapters();
    std::size_t locked = 0;
    Flow flow(sink);
    for (const std::string& chapter : chapters) {
        if (encrypted.parts.count(chapter) != 0)
            ++locked;
        else
            ReadChapter(package, chapter, flow);
    }
    flow.Finish();
    if (locked > 0 && locked == chapters.size())
        throw ReadError(ReadState::Encrypted, "is protected against copying");
    if (locked > 0)
        sink.Incomplete(std::to_string(locked) + " parts are encrypted");
}

} // namespace engine
