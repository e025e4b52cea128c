// Packing of page requests.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/html/PageRequest.h"

#include "engine/readers/Wire.h"

namespace engine {

std::string Pack(const PageRequest& request) {
    Packer pack;
    pack.Text(request.name).Text(request.member).Text(request.title);
    pack.Number(static_cast<std::uint64_t>(request.rule)).Number(request.hits.size());
    for (const std::uint32_t hit : request.hits)
        pack.Number(hit);
    return pack.Text(request.marks.beforeHit)
        .Text(request.marks.afterHit)
        .Text(request.marks.footer)
        .Text(request.marks.note)
        .Bytes();
}

PageRequest UnpackPageRequest(std::string_view bytes) {
    Unpacker unpack(bytes);
    PageRequest request;
    request.name = unpack.Text();
    request.member = unpack.Text();
    request.title = unpack.Text();
    request.rule = unpack.Number() == 0 ? WordRule::Letters : WordRule::Blanks;
    request.hits.resize(unpack.Number());
    for (std::uint32_t& hit : request.hits)
        hit = static_cast<std::uint32_t>(unpack.Number());
    request.marks.beforeHit = unpack.Text();
    request.marks.afterHit = unpack.Text();
    request.marks.footer = unpack.Text();
    request.marks.note = unpack.Text();
    return request;
}

} // namespace engine
