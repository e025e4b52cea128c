// Reads styles.xml and numbering.xml.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/DocxStyles.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace engine {
namespace {

class StyleSheet final : public XmlHandler {
  public:
    explicit StyleSheet(std::map<std::string, DocxStyles::Style, std::less<>>& styles)
        : m_styles(styles) {}

    bool Start(const XmlElement& element) override {
        if (element.name == "style") {
            m_style = {};
            m_id = element.Attribute("styleId");
        } else if (element.name == "name") {
            m_style.form.outline = std::max(m_style.form.outline, ByName(element.Attribute("val")));
        } else if (element.name == "basedOn") {
            m_style.basedOn = element.Attribute("val");
        } else if (element.name == "outlineLvl") {
            m_style.form.outline = ToNumber(element.Attribute("val"), -1);
        } else if (element.name == "numId") {
            m_style.form.numbering = ToNumber(element.Attribute("val"), -1);
        } else if (element.name == "ilvl") {
            m_style.form.listLevel = ToNumber(element.Attribute("val"), -1);
        }
        return element.name != "rPr" && element.name != "docDefaults" &&
               element.name != "latentStyles" && element.name != "tblStylePr";
    }
    void End(std::string_view /*space*/, std::string_view name) override {
        if (name == "style")
            m_styles[m_id] = m_style;
    }
    void Text(std::string_view) override {}

  private:
    // The built-in styles keep their English names in every language.
    static int ByName(std::string name) {
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (name == "title")
            return 0;
        constexpr std::string_view kHeading = "heading ";
        if (name.starts_with(kHeading))
            return ToNumber(std::string_view(name).substr(kHeading.size()), 0) - 1;
        return -1;
    }

    std::map<std::string, DocxStyles::Style, std::less<>>& m_styles;
    std::string m_id;
    DocxStyles::Style m_style;
};

class NumberingList final : public XmlHandler {
  public:
    std::map<int, int> abstractOf;
    std::map<std::pair<int, int>, bool> bullets;

    bool Start(const XmlElement& element) override {
        if (element.name == "abstractNum")
            m_abstract = ToNumber(element.Attribute("abstractNumId"), -1);
        else if (element.name == "lvl")
            m_level = ToNumber(element.Attribute("ilvl"), -1);
        else if (element.name == "numFmt" && !m_inNumbering)
            bullets[{m_abstract, m_level}] = element.Attribute("val") == "bullet";
        else if (element.name == "num") {
            m_inNumbering = true;
            m_numbering = ToNumber(element.Attribute("numId"), -1);
        } else if (element.name == "abstractNumId")
            abstractOf[m_numbering] = ToNumber(element.Attribute("val"), -1);
        return true;
    }
    void End(std::string_view, std::string_view) override {}
    void Text(std::string_view) override {}

  private:
    int m_abstract = -1, m_level = -1, m_numbering = -1;
    bool m_inNumbering = false;
};

} // namespace

int ToNumber(std::string_view text, int fallback) {
    int value = fallback;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() ? value : fallback;
}

void DocxStyles::Read(OpenXmlPackage& package, const Relationships& relationships) {
    StyleSheet styles(m_styles);
    package.Parse(relationships.FirstOf("styles"), styles);
    NumberingList numbering;
    package.Parse(relationships.FirstOf("numbering"), numbering);
    m_abstractOf = std::move(numbering.abstractOf);
    m_bullets = std::move(numbering.bullets);
}

ParagraphForm DocxStyles::Resolve(ParagraphForm form) const {
    constexpr int kLongestChain = 20; // styles can be based on each other in a circle
    std::string_view id = form.style;
    for (int i = 0; i < kLongestChain; ++i) {
        const auto style = m_styles.find(id);
        if (style == m_styles.end())
            break;
        const ParagraphForm& inherited = style->second.form;
        form.outline = form.outline >= 0 ? form.outline : inherited.outline;
        if (form.numbering < 0)
            form.numbering = inherited.numbering;
        if (form.listLevel < 0)
            form.listLevel = inherited.listLevel;
        id = style->second.basedOn;
    }
    return form;
}

bool DocxStyles::IsNumbered(int numbering, int listLevel) const {
    const auto definition = m_abstractOf.find(numbering);
    if (definition == m_abstractOf.end())
        return false;
    const auto bullet = m_bullets.find({definition->second, listLevel});
    return bullet != m_bullets.end() && !bullet->second;
}

} // namespace engine
