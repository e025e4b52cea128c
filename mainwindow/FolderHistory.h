// The folders that were visited, for going back and forward.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QStringList>
#include <functional>
#include <optional>

namespace velmora {

// Folders as logical paths, exactly spelled; the root is the empty path.
class FolderHistory {
  public:
    // Does nothing while a move through the history is under way, nor when the path is the last.
    // A new folder goes to the end even after steps back: what lay between stays.
    void Append(const QString& path);

    [[nodiscard]] int Position() const { return m_position; } // from 0; -1 while it is empty
    [[nodiscard]] int Size() const { return static_cast<int>(m_paths.size()); }
    [[nodiscard]] bool IsMoving() const { return m_moving; }

    // One step back or forward, passing over what `select` refuses: it shows a folder and answers
    // false for one that is gone. Where none is left the position stays.
    void Back(const std::function<bool(const QString&)>& select) { Move(-1, select); }
    void Forward(const std::function<bool(const QString&)>& select) { Move(1, select); }

  private:
    void Move(int step, const std::function<bool(const QString&)>& select);

    QStringList m_paths;
    int m_position = -1;
    bool m_moving = false;
};

} // namespace velmora
