// Reads ODT, ODS, ODP, ODG, their templates, and their form as one XML file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/OdfText.h"
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

void ReadPackage(const Source& source, DocumentSink& sink) {
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

void ReadOpenDocument(const Source& source, DocumentSink& sink) {
    const bool packed = source.bytes.starts_with("PK");
    if (packed)
        ReadPackage(source, sink);
    else
        ReadFlat(source, sink);
}

} // namespace engine
