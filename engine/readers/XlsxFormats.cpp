// The formats of a workbook's cells.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/XlsxFormats.h"

#include "engine/readers/DocxStyles.h"

namespace engine {
namespace {

class StyleSheet final : public XmlHandler {
  public:
    explicit StyleSheet(NumberFormats& formats) : m_formats(formats) {}

    bool Start(const XmlElement& element) override {
        if (element.name == "numFmt")
            m_formats.Define(ToNumber(element.Attribute("numFmtId"), -1),
                             element.Attribute("formatCode"));
        else if (element.name == "cellXfs")
            m_inCells = true;
        else if (element.name == "xf" && m_inCells)
            m_formats.AddStyle(ToNumber(element.Attribute("numFmtId"), 0));
        return element.name != "dxfs" && element.name != "fonts";
    }
    void End(std::string_view /*space*/, std::string_view name) override {
        m_inCells = m_inCells && name != "cellXfs";
    }
    void Text(std::string_view) override {}

  private:
    NumberFormats& m_formats;
    bool m_inCells = false;
};

} // namespace

void ReadXlsxFormats(OpenXmlPackage& package, std::string_view part, NumberFormats& formats) {
    StyleSheet sheet(formats);
    package.Parse(part, sheet);
}

} // namespace engine
