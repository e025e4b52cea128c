// Embedded documents.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Embedded.h"

#include "engine/readers/CompoundFile.h"
#include "engine/readers/Limits.h"
#include "engine/readers/MemberNames.h"
#include "engine/readers/NameCharset.h"
#include "engine/readers/OleObjects.h"

#include <set>
#include <vector>

namespace engine {
namespace {

bool IsEmbedded(const std::string& part) {
    return FolderOf(part).ends_with("/embeddings");
}

// The workbooks that charts keep their numbers in.
std::set<std::string> ChartData(OpenXmlPackage& package, const std::vector<std::string>& parts) {
    std::set<std::string> data;
    for (const std::string& part : parts)
        if (FolderOf(part).ends_with("/charts"))
            for (const Relationship& inner : package.RelationshipsOf(part).all)
                if (inner.type == "package")
                    data.insert(inner.target);
    return data;
}

} // namespace

void DeliverEmbedded(OpenXmlPackage& package, MemberSink& members) {
    const std::vector<std::string> parts = package.Parts();
    std::vector<std::string> embedded;
    for (const std::string& part : parts)
        if (IsEmbedded(part))
            embedded.push_back(part);
    if (embedded.empty())
        return;
    const std::set<std::string> chartData = ChartData(package, parts);
    OleObjects objects(members, package.Sink());
    for (const std::string& part : embedded) {
        if (chartData.contains(part))
            continue;
        std::string problem;
        const std::string bytes = package.Load(part, kMaxMemberBytes, &problem);
        if (bytes.empty() || !problem.empty())
            package.Sink().Incomplete(
                part + (problem.empty() ? " is larger than what is unpacked" : " " + problem));
        if (CompoundFile::Recognises(bytes) && part.ends_with(".bin"))
            objects.TakeFile(bytes);
        else if (!bytes.empty())
            objects.Hand(bytes, CleanFileName(NameCharset().Decode(LastPart(part))));
    }
}

} // namespace engine
