// Walks the folders that were visited.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/FolderHistory.h"

#include <QScopedValueRollback>

namespace velmora {

void FolderHistory::Append(const QString& path) {
    if (m_moving) {
        return;
    }
    if (m_paths.isEmpty() || m_paths.last() != path) {
        m_paths << path;
    }
    m_position = Size() - 1;
}

void FolderHistory::Move(int step, const std::function<bool(const QString&)>& select) {
    if (m_moving) {
        return;
    }
    const QScopedValueRollback moving(m_moving, true);
    const int before = m_position;
    for (m_position += step; m_position >= 0 && m_position < Size(); m_position += step) {
        // Between two visits of one folder may lie one that is gone: that is no step.
        if (m_paths[m_position] != m_paths[before] && select(m_paths[m_position])) {
            return;
        }
    }
    m_position = before;
}

} // namespace velmora
