// Parts of a package.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Package.h"

#include "engine/readers/Base64.h"
#include "engine/readers/Limits.h"
#include "engine/readers/Reader.h"

#include <algorithm>
#include <vector>

namespace engine {

Package::Package(const Source& source, DocumentSink& sink) : m_sink(sink), m_zip(source.bytes) {
    if (m_zip.Truncated())
        sink.Incomplete("the end of the file is missing");
}

std::vector<std::string> Package::Parts() const {
    std::vector<std::string> parts;
    for (const ZipMember& member : m_zip.Members())
        parts.push_back(member.name);
    return parts;
}

void Package::Require(std::string_view part) const {
    const ZipMember* member = m_zip.Find(part);
    if (member == nullptr)
        throw ReadError(ReadState::Damaged, "the part " + std::string(part) + " is missing");
    if (member->encrypted)
        throw ReadError(ReadState::Encrypted, "needs a password");
}

bool Package::Parse(std::string_view part, XmlHandler& handler) {
    const ZipMember* member = m_zip.Find(part);
    if (member == nullptr)
        return false;
    XmlParser parser(handler);
    const std::string broken =
        m_zip.Unpack(*member, [&parser](std::string_view piece) { parser.Feed(piece); });
    parser.Finish();
    const std::string& problem = broken.empty() ? parser.Problem() : broken;
    if (!problem.empty())
        m_sink.Incomplete(member->name + " " + problem);
    return true;
}

bool Package::Unpack(std::string_view part, const ZipFile::Take& take) {
    const ZipMember* member = m_zip.Find(part);
    if (member == nullptr)
        return false;
    const std::string broken = m_zip.Unpack(*member, take);
    if (!broken.empty())
        m_sink.Incomplete(member->name + " " + broken);
    return true;
}

std::string Package::Load(std::string_view part, std::size_t limit, std::string* problem) {
    const ZipMember* member = m_zip.Find(part);
    std::string bytes;
    if (member == nullptr || member->packed > limit)
        return bytes;
    const std::string broken = m_zip.Unpack(*member, [&](std::string_view piece) {
        if (bytes.size() <= limit)
            bytes += piece;
    });
    if (problem != nullptr)
        *problem = broken;
    if (bytes.size() > limit || (!broken.empty() && problem == nullptr))
        bytes.clear();
    return bytes;
}

void Package::PutPicture(std::string_view part, std::string_view alternativeText, Flow& flow) {
    std::string bytes, type;
    if (m_sink.WantsPictures() && !part.empty()) {
        type = PictureType(part);
        if (!type.empty())
            bytes = Load(part, kMaxPictureBytes);
    }
    flow.Picture(type, bytes, alternativeText);
}

std::string_view FolderOf(std::string_view part) {
    const std::size_t slash = part.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : part.substr(0, slash);
}

std::string ResolveName(std::string_view folder, std::string_view target) {
    target = target.substr(0, target.find('#'));
    std::vector<std::string_view> parts;
    const auto add = [&parts](std::string_view path) {
        while (!path.empty()) {
            const std::size_t slash = std::min(path.find_first_of("/\\"), path.size());
            const std::string_view part = path.substr(0, slash);
            path.remove_prefix(std::min(slash + 1, path.size()));
            if (part == ".." && !parts.empty())
                parts.pop_back();
            else if (!part.empty() && part != "." && part != "..")
                parts.push_back(part);
        }
    };
    if (!target.starts_with('/'))
        add(folder);
    add(target);
    std::string name;
    for (const std::string_view part : parts) {
        if (!name.empty())
            name += '/';
        name += part;
    }
    return name;
}

} // namespace engine
