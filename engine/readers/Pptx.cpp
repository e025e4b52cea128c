// Reads PPTX, POTX, PPSX and their kin.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Embedded.h"
#include "engine/readers/OpenXml.h"
#include "engine/readers/Reader.h"

#include <algorithm>
#include <string>
#include <vector>

namespace engine {
namespace {

class SlideList final : public XmlHandler {
  public:
    std::vector<std::string> ids; // of the relationships, in the order of the show

    bool Start(const XmlElement& element) override {
        if (element.name == "sldId")
            ids.push_back(element.Attribute("/relationships", "id"));
        return true;
    }
    void End(std::string_view, std::string_view) override {}
    void Text(std::string_view) override {}
};

// A slide, or the page of notes that belongs to one.
class SlideText final : public XmlHandler {
  public:
    SlideText(OpenXmlPackage& package, const Relationships& references, bool notes, Flow& flow)
        : m_package(package), m_references(references), m_notes(notes), m_flow(flow) {}

    bool Start(const XmlElement& element) override;
    void End(std::string_view space, std::string_view name) override;
    void Text(std::string_view utf8) override {
        if (m_inText > 0 && !m_passOver)
            m_flow.Text(utf8);
    }

  private:
    void EndShape();

    OpenXmlPackage& m_package;
    const Relationships& m_references;
    const bool m_notes;
    Flow& m_flow;
    AlternateContent m_alternate;
    std::string m_placeholder;
    std::string m_alternativeText;
    int m_inText = 0;
    bool m_inPicture = false;
    bool m_passOver = false; // a shape whose text is not the page's own
};

bool SlideText::Start(const XmlElement& element) {
    const std::string_view name = element.name;
    if (!m_alternate.Start(name))
        return false;
    if (name == "sp" || name == "pic" || name == "graphicFrame" || name == "cxnSp") {
        EndShape();
        m_inPicture = name == "pic";
    } else if (name == "cNvPr") {
        m_alternativeText = element.Attribute("descr");
    } else if (name == "ph") {
        m_placeholder = element.Attribute("type");
        m_passOver = m_notes && (m_placeholder == "sldNum" || m_placeholder == "hdr" ||
                                 m_placeholder == "ftr" || m_placeholder == "dt");
    } else if (name == "p") {
        const bool title = !m_notes && (m_placeholder == "title" || m_placeholder == "ctrTitle");
        m_flow.Open(title ? Block::Heading : Block::Paragraph, title ? 1 : 0);
    } else if (name == "t") {
        ++m_inText;
    } else if (name == "br") {
        m_flow.Break();
    } else if (name == "tbl") {
        m_flow.Open(Block::Table);
    } else if (name == "tr") {
        m_flow.Open(Block::Row);
    } else if (name == "tc") {
        m_flow.Open(Block::Cell);
    } else if (name == "blip" && m_inPicture) {
        m_flow.EndParagraph();
        m_package.PutPicture(m_references.TargetOf(element.Attribute("embed")), m_alternativeText,
                             m_flow);
        m_alternativeText.clear();
    }
    return name != "rPr" && name != "pPr" && name != "spPr" && name != "lstStyle" &&
           name != "timing";
}

void SlideText::End(std::string_view /*space*/, std::string_view name) {
    m_alternate.End(name);
    if (name == "p")
        m_flow.EndParagraph();
    else if (name == "t")
        --m_inText;
    else if (name == "tbl")
        m_flow.Close(Block::Table);
    else if (name == "tr")
        m_flow.Close(Block::Row);
    else if (name == "tc")
        m_flow.Close(Block::Cell);
    else if (name == "sp" || name == "pic" || name == "graphicFrame" || name == "cxnSp")
        EndShape();
}

void SlideText::EndShape() {
    m_flow.EndParagraph();
    if (!m_passOver && !m_notes)
        m_flow.Collapse(m_alternativeText);
    m_flow.EndParagraph();
    m_alternativeText.clear();
    m_placeholder.clear();
    m_inPicture = false;
    m_passOver = false;
}

// Comments of both generations.
class SlideComments final : public XmlHandler {
  public:
    explicit SlideComments(Flow& flow) : m_flow(flow) {}
    bool Start(const XmlElement& element) override {
        if (element.name == "cm" || element.name == "reply")
            m_flow.Open(Block::Note);
        else if (element.name == "p")
            m_flow.Open(Block::Paragraph);
        else if (element.name == "text" || element.name == "t")
            ++m_inText;
        return true;
    }
    void End(std::string_view /*space*/, std::string_view name) override {
        if (name == "cm" || name == "reply")
            m_flow.Close(Block::Note);
        else if (name == "p")
            m_flow.EndParagraph();
        else if (name == "text" || name == "t")
            --m_inText;
    }
    void Text(std::string_view utf8) override {
        if (m_inText > 0)
            m_flow.Text(utf8);
    }

  private:
    Flow& m_flow;
    int m_inText = 0;
};

class PptxReading {
  public:
    PptxReading(const Source& source, DocumentSink& sink)
        : m_package(source, sink), m_sink(sink), m_flow(sink) {}

    void Run(MemberSink& attachments) {
        const std::string presentation = m_package.MainPart("ppt/presentation.xml");
        m_package.ReadProperties();
        const Relationships references = m_package.RelationshipsOf(presentation);
        SlideList list;
        m_package.Parse(presentation, list);
        int number = 0;
        for (const std::string& id : list.ids)
            Slide(++number, references.TargetOf(id));
        if (list.ids.empty()) // a damaged list: the slides may be whole
            for (const Relationship& reference : references.all)
                if (reference.type == "slide")
                    Slide(++number, reference.target);
        m_flow.Finish();
        DeliverEmbedded(m_package, attachments);
    }

  private:
    void Slide(int number, const std::string& part) {
        const Relationships references = m_package.RelationshipsOf(part);
        m_flow.Open(Block::Page, number);
        SlideText slide(m_package, references, false, m_flow);
        if (!m_package.Parse(part, slide))
            m_sink.Incomplete("slide " + std::to_string(number) + " is missing");
        ReadDrawings(m_package, references, m_flow);
        const std::string notes = references.FirstOf("notesSlide");
        if (m_package.Has(notes)) {
            m_flow.Open(Block::Note);
            SlideText text(m_package, references, true, m_flow);
            m_package.Parse(notes, text);
            m_flow.Close(Block::Note);
        }
        for (const Relationship& reference : references.all) {
            if (reference.type != "comments")
                continue;
            SlideComments comments(m_flow);
            m_package.Parse(reference.target, comments);
        }
        m_flow.Close(Block::Page);
    }

    OpenXmlPackage m_package;
    DocumentSink& m_sink;
    Flow m_flow;
};

} // namespace

void ReadPptx(const Source& source, DocumentSink& sink, MemberSink& attachments) {
    PptxReading(source, sink).Run(attachments);
}

} // namespace engine
