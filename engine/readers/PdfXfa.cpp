// Texts of a form that is described in XML inside a PDF.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/PdfXfa.h"

#include "engine/readers/XmlSax.h"

namespace engine {

namespace {

class Texts final : public XmlHandler {
  public:
    Texts(std::string_view part, std::vector<std::string>& texts) : m_part(part), m_texts(texts) {}

    bool Start(const XmlElement& element) override {
        if (m_depth == 0 && element.name != m_part)
            return element.name == "xdp";
        if (element.name == "script" || element.name == "dataDescription")
            return false;
        ++m_depth;
        Close();
        // Of a template only these are shown: captions, fixed texts, choices.
        if (m_part == "template" && m_inText == 0 &&
            (element.name == "text" || element.name == "exData"))
            m_inText = m_depth;
        return true;
    }

    void End(std::string_view /*space*/, std::string_view /*name*/) override {
        Close();
        if (m_inText == m_depth)
            m_inText = 0;
        if (m_depth > 0)
            --m_depth;
    }

    void Text(std::string_view utf8) override {
        if (m_depth > 0 && (m_part != "template" || m_inText > 0))
            m_text += utf8;
    }

  private:
    // Each element's text is a paragraph of its own.
    void Close() {
        const std::size_t begin = m_text.find_first_not_of(" \t\r\n");
        if (begin != std::string::npos)
            m_texts.push_back(m_text.substr(begin, m_text.find_last_not_of(" \t\r\n") - begin + 1));
        m_text.clear();
    }

    std::string_view m_part;
    std::vector<std::string>& m_texts;
    std::string m_text;
    int m_depth = 0;  // of elements, from the part on
    int m_inText = 0; // depth at which shown text began
};

} // namespace

void AppendXfaTexts(std::string_view xml, std::string_view part, std::vector<std::string>& texts) {
    if (xml.empty())
        return;
    Texts handler(part, texts);
    static_cast<void>(ReadXmlInto(xml, handler)); // what a broken one holds counts
}

} // namespace engine
