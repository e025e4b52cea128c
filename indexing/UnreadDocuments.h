// What the index could not read, in this run and in all earlier ones.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/IndexJob.h"

#include <vector>

namespace velmora {

// The documents of the open archive's index that were not read, or only in part, in the order of
// names. A fault of the index is told and gives none.
std::vector<engine::Problem> ListUnreadDocuments();

// Machine path of the folder in which a document's file lies, and the rest of its name: the file,
// or the file and what is inside it.
struct DocumentPlace {
    QString folder;
    QString name;
};
DocumentPlace PlaceOf(const engine::Problem& problem);

} // namespace velmora
