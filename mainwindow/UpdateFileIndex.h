// What of a selection is brought up to date in the index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "indexing/PathDictionary.h"

namespace velmora {

// The folder of the tree, or the file of the list. Of a scanned document (TIF) it is the folder of
// its recognised text, as that alone is in the index; nothing without one. May throw
// velmora::Error.
PathDictionary UpdateFileIndex(const QString& path, bool isFile);

} // namespace velmora
