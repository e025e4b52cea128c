// Reads ODT, ODS, ODP, ODG, their templates, and their form as one XML file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/CompoundFile.h"
#include "engine/readers/Limits.h"
#include "engine/readers/OdfText.h"
#include "engine/readers/OleObjects.h"
#include "engine/readers/Package.h"
#include "engine/readers/Reader.h"

#include <string>

namespace engine {
namespace {

// The list of parts, which tells what is encrypted.
class Manifest final : public XmlHandler {
  public:
    bool contentEncrypted = false;

    bool Start(const XmlElement& element) override {
        if (element.name == "file-entry")
            m_part = element.Attribute("full-path");
        else if (element.name == "encryption-data")
            contentEncrypted =
                contentEncrypted || m_part == "content.xml" || m_part == "encrypted-package";
        return true;
    }
    void End(std::string_view, std::string_view) override {}
    void Text(std::string_view) override {}

  private:
    std::string m_part;
};

// An object within the document: a formula, or a chart, a sheet or a text as in a file of its own.
class ObjectText final : public XmlHandler {
  public:
    ObjectText(Flow& flow, OdfText& document) : m_flow(flow), m_document(document) {}

    bool Start(const XmlElement& element) override {
        m_formula = m_formula || (m_isRoot && element.name == "math");
        m_isRoot = false;
        if (IsChartTitle(element.space, element.name))
            return true;
        if (!m_formula)
            return m_document.Start(element);
        m_inSymbol = element.name == "mi" || element.name == "mn" || element.name == "mo" ||
                     element.name == "mtext";
        return element.name != "annotation"; // the code it was written in
    }
    void End(std::string_view space, std::string_view name) override {
        if (IsChartTitle(space, name))
            return;
        if (!m_formula)
            return m_document.End(space, name);
        if (m_inSymbol)
            m_flow.Blank();
        m_inSymbol = false;
    }
    void Text(std::string_view utf8) override {
        if (!m_formula)
            m_document.Text(utf8);
        else if (m_inSymbol)
            m_flow.Collapse(utf8);
    }

  private:
    // It holds paragraphs of its own; elsewhere an element of this name describes a picture.
    static bool IsChartTitle(std::string_view space, std::string_view name) {
        return name == "title" && space.find(":chart:") != std::string_view::npos;
    }

    Flow& m_flow;
    OdfText& m_document;
    bool m_isRoot = true;
    bool m_formula = false;
    bool m_inSymbol = false;
};

// Objects lie in folders of their own; those of other programs are files.
void ReadObjects(Package& package, OdfMeta& meta, Flow& flow, OleObjects& others) {
    for (const std::string& part : package.Parts()) {
        const std::string_view folder = FolderOf(part);
        const bool ofOthers = folder.empty() && part.starts_with("Object ");
        if (ofOthers) {
            std::string problem;
            others.TakeFile(package.Load(part, kMaxMemberBytes, &problem));
            if (!problem.empty())
                package.Sink().Incomplete(part + " " + problem);
        } else if (!folder.empty() && part == std::string(folder) + "/content.xml") {
            OdfText text(flow, meta, OdfPart::Embedded,
                         [&](const std::string& picture, const std::string& words) {
                             package.PutPicture(ResolveName(folder, picture), words, flow);
                         });
            ObjectText object(flow, text);
            package.Parse(part, object);
            flow.EndParagraph();
        }
    }
}

void ReadPackage(const Source& source, DocumentSink& sink, MemberSink& attachments) {
    Package package(source, sink);
    Manifest manifest;
    package.Parse("META-INF/manifest.xml", manifest);
    if (manifest.contentEncrypted)
        throw ReadError(ReadState::Encrypted, "needs a password");
    package.Require("content.xml");
    Flow flow(sink);
    OdfMeta meta(sink);
    const auto read = [&](const char* name, OdfPart part) {
        OdfText text(flow, meta, part, [&](const std::string& picture, const std::string& words) {
            package.PutPicture(ResolveName({}, picture), words, flow);
        });
        package.Parse(name, text);
        flow.EndParagraph();
    };
    read("meta.xml", OdfPart::Everything);
    read("styles.xml", OdfPart::Headers);
    read("content.xml", OdfPart::Everything);
    read("styles.xml", OdfPart::Footers);
    OleObjects others(attachments, sink);
    ReadObjects(package, meta, flow, others);
    flow.Finish();
}

void ReadFlat(const Source& source, DocumentSink& sink) {
    Flow flow(sink);
    OdfMeta meta(sink);
    OdfText text(flow, meta, OdfPart::Everything,
                 [&](const std::string& /*picture*/, const std::string& words) {
                     flow.Picture({}, {}, words);
                 });
    const std::string problem = ReadXmlInto(source.bytes, text);
    flow.Finish();
    if (!problem.empty())
        sink.Incomplete("the document " + problem);
}

} // namespace

void ReadOpenDocument(const Source& source, DocumentSink& sink, MemberSink& attachments) {
    const bool packed = source.bytes.starts_with("PK");
    if (packed)
        ReadPackage(source, sink, attachments);
    else
        ReadFlat(source, sink);
}

} // namespace engine
