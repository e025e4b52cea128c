// Documents that are embedded in DOC, XLS and PPT documents, handed on as attachments.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/CompoundFile.h"
#include "engine/readers/DocumentSink.h"
#include "engine/readers/MemberNames.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace engine {

class OleObjects {
  public:
    OleObjects(MemberSink& members, DocumentSink& sink) : m_members(members), m_sink(sink) {}

    // The object in a storage ("" is the root): a package, a file of any kind, or a document that
    // is a compound file itself. Objects that hold nothing to read are passed over.
    void Take(const CompoundFile& file, std::string_view storage);
    // An object that is a compound file of its own, packed or not.
    void TakeFile(std::string_view bytes);
    // Unpacks (zlib) and takes; size is what it says to come to.
    void TakePacked(std::string_view packed, std::uint64_t size);

    // A document as it stands. One without a name gets one, unless there is nothing to read in it.
    void Hand(std::string_view bytes, std::string name);

  private:
    [[nodiscard]] bool Room(std::uint64_t size);

    MemberSink& m_members;
    DocumentSink& m_sink;
    UniqueNames m_names;
    int m_number = 0;
    std::uint64_t m_bytes = 0; // handed on or unpacked so far
    bool m_full = false;       // told already
};

} // namespace engine
