// Walks a file into its documents: the file itself, a container's members, a mail's attachments,
// nested as they come. Reading for the index and for a page both go this way.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Reader.h"

#include <string>

namespace engine {

// Containers inside containers are opened this deep; what lies deeper is listed by name.
inline constexpr int kDeepestNesting = 8;

// One document that the walk has come to.
struct FoundDocument {
    std::string path;          // as in DocumentHead
    std::string display;
    std::int64_t modified = 0; // seconds since 1970; 0 unknown
    Kind kind = Kind::Unknown;
    Source source;
    bool container = false;    // its members came before it; nothing of its own to read
    ReadState state = ReadState::Read; // not Read: cannot be read, for reason
    std::string reason;
};

class DocumentVisitor {
  public:
    virtual ~DocumentVisitor() = default;
    // Whether the member at path, or something inside it, is wanted at all.
    [[nodiscard]] virtual bool Wants(const std::string& path) = 0;
    // Read the document now; its attachments, if it is a mail, go to attachments.
    virtual void Visit(const FoundDocument& document, MemberSink& attachments) = 0;
};

void WalkDocuments(const Source& file, DocumentVisitor& visitor);

} // namespace engine
