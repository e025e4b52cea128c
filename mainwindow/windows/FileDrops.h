// Drags over and drops on the folder tree and the file list: what both panes have in common.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/DropRules.h"

#include <QHash>
#include <QPersistentModelIndex>
#include <QTimer>
#include <functional>
#include <optional>

class QAbstractItemView;
class QDragMoveEvent;
class QDropEvent;
class QMimeData;
class QModelIndex;
class QPainter;

namespace velmora {

// The pane that owns this hands its drag events over.
class FileDrops {
  public:
    // The folder (logical path, empty for the root of the tree) that a drop at an index or, for an
    // invalid one, on the empty area is meant for; nothing where a drop means nothing.
    using Target = std::function<std::optional<QString>(const QModelIndex&)>;
    using Dropped = std::function<void(const FileList&, const QString& target)>;
    FileDrops(QAbstractItemView& pane, Target target, Dropped dropped);

    void Enter(QDragMoveEvent& event);
    void Move(QDragMoveEvent& event);
    void Leave();
    void Drop(QDropEvent& event);
    // Called in the pane's paint event, after its own painting.
    void Paint() const;

    // Called when a drag stays for a while over a row that can be opened.
    std::function<void(const QModelIndex&)> open;

  private:
    [[nodiscard]] QModelIndex TargetIndex(const QPoint& place) const;
    [[nodiscard]] DropEffect Judge(const QDropEvent& event, QString* target, FileList* list);
    [[nodiscard]] bool SameDisk(const QString& path, const QString& target);
    void Show(const QModelIndex& index, bool on);

    QAbstractItemView& m_pane;
    Target m_target;
    Dropped m_dropped;
    QTimer m_hover;
    std::optional<FileList> m_dragged; // of the drag that is over the pane
    QHash<QString, quint64> m_disks;   // asked once for each drag
    QPersistentModelIndex m_shown;
    bool m_on = false;
};

// Starts a drag of the list out of the pane; does nothing for an empty one.
void DragFiles(QAbstractItemView& pane, const FileList& list);

} // namespace velmora
