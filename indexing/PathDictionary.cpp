// Paths that a run of the index update is to add or to remove.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/PathDictionary.h"

#include "platform/LogicalPath.h"

namespace velmora {

void PathDictionary::Add(const QString& path) {
    if (!Exists(path)) {
        m_items << platform::Capitals(path);
    }
}

bool PathDictionary::Remove(const QString& path) {
    return m_items.removeOne(platform::Capitals(path));
}

bool PathDictionary::Exists(const QString& path) const {
    return m_items.contains(platform::Capitals(path));
}

} // namespace velmora
