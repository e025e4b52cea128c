// A document that is a zip package of parts, read into a sink.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocumentSink.h"
#include "engine/readers/Flow.h"
#include "engine/readers/Source.h"
#include "engine/readers/XmlSax.h"
#include "engine/readers/ZipFile.h"

#include <string>
#include <string_view>
#include <vector>

namespace engine {

// What is damaged is reported to the sink, once per part; what is whole is read all the same.
class Package {
  public:
    // Throws ReadError as ZipFile does.
    Package(const Source& source, DocumentSink& sink);

    [[nodiscard]] bool Has(std::string_view part) const { return m_zip.Find(part) != nullptr; }
    // The names of all parts, in the order of the archive.
    [[nodiscard]] std::vector<std::string> Parts() const;
    // Throws ReadError when the part is missing (Damaged) or encrypted.
    void Require(std::string_view part) const;
    // Parses a part. false: there is no such part.
    bool Parse(std::string_view part, XmlHandler& handler);
    // Hands on a part that is no XML, piece by piece. false as above.
    bool Unpack(std::string_view part, const ZipFile::Take& take);
    // A part as it is, up to limit bytes; empty: none, or larger. problem, if given, takes why a
    // part that is there did not come whole; what there is of it is then returned.
    [[nodiscard]] std::string Load(std::string_view part, std::size_t limit,
                                   std::string* problem = nullptr);
    // Puts a picture's part and its alternative text into flow.
    void PutPicture(std::string_view part, std::string_view alternativeText, Flow& flow);

    [[nodiscard]] DocumentSink& Sink() { return m_sink; }

  private:
    DocumentSink& m_sink;
    ZipFile m_zip;
};

// The folder a part stands in, without "/" at its end; empty at the top.
[[nodiscard]] std::string_view FolderOf(std::string_view part);
// The part that a target means which stands in a part of folder; never outside the package.
[[nodiscard]] std::string ResolveName(std::string_view folder, std::string_view target);

} // namespace engine
