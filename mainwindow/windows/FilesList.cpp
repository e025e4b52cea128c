// The view of the file list: place, drags and drops. Columns: FilesListColumns.cpp.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FilesList.h"

#include "mainwindow/windows/FilesModel.h"
#include "mainwindow/windows/NameDelegate.h"

#include <QDragEnterEvent>
#include <QHeaderView>
#include <QPainter>
#include <QProxyStyle>
#include <QScrollBar>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// Room between the columns: sizes end where dates begin.
class RoomyCells : public QProxyStyle {
  public:
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override {
        constexpr int kRoom = 5;
        return QProxyStyle::pixelMetric(metric, option, widget) +
               (metric == PM_FocusFrameHMargin || metric == PM_HeaderMargin ? kRoom : 0);
    }
};

} // namespace

FilesList::FilesList(FilesModel& model, QWidget* parent)
    : QTreeView(parent), m_model(model), m_names(new NameDelegate(FilesModel::CutRole, this)) {
    auto* roomy = new RoomyCells;
    roomy->setParent(this);
    setStyle(roomy);
    header()->setStyle(roomy);
    setModel(&model);
    setItemDelegate(m_names);
    m_names->isFolder = [](const QModelIndex& index) {
        return index.data(FilesModel::TagRole).toString() == u"F";
    };
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setTextElideMode(Qt::ElideMiddle);
    setSelectionMode(ExtendedSelection);
    setSelectionBehavior(SelectRows);
    // A slow second click renames nothing: too many names would change by accident.
    setEditTriggers(EditKeyPressed);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setSortingEnabled(true);
    sortByColumn(FilesModel::Name, Qt::AscendingOrder);
    header()->setStretchLastSection(false);
    header()->setMinimumSectionSize(50);
    header()->setSectionsMovable(true);
    header()->setFirstSectionMovable(false);
    connect(header(), &QHeaderView::sectionResized, this,
            [this] { m_ownWidths = m_ownWidths || (!m_placing && isVisible()); });
    connect(&model, &QAbstractItemModel::modelAboutToBeReset, this, &FilesList::KeepPlace);
    connect(&model, &QAbstractItemModel::modelReset, this, &FilesList::RestorePlace);
}

FilesList::~FilesList() = default;

void FilesList::AcceptDrops(FileDrops::Target target, FileDrops::Dropped dropped) {
    m_drops = std::make_unique<FileDrops>(*this, std::move(target), std::move(dropped));
}

std::vector<int> FilesList::SelectedRows() const {
    std::vector<int> rows;
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            rows.push_back(row);
        }
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

void FilesList::SelectRow(int row) {
    const QModelIndex index = m_model.index(row, 0);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                                 QItemSelectionModel::Rows);
    scrollTo(index);
}

void FilesList::KeepPlace() {
    KeepColumns();
    m_place = {};
    for (const int row : SelectedRows()) {
        m_place.selected.insert(m_model.Path(row));
    }
    if (currentIndex().isValid()) {
        m_place.current = m_model.Path(currentIndex().row());
    }
    const QModelIndex top = indexAt(QPoint(1, 1));
    if (top.isValid() && verticalScrollBar()->value() > 0) {
        m_place.top = m_model.Path(top.row());
    }
}

void FilesList::RestorePlace() {
    const Place place = std::exchange(m_place, {});
    if (place.selected.isEmpty() && place.current.isEmpty() && place.top.isEmpty()) {
        return;
    }
    const int lastColumn = m_model.columnCount() - 1;
    QItemSelection selection;
    for (int row = 0; row < m_model.rowCount(); ++row) {
        const QString path = m_model.Path(row);
        if (place.selected.contains(path)) {
            // Neighbours become one range: thousands of ranges would make every paint slow.
            if (!selection.isEmpty() && selection.last().bottom() == row - 1) {
                selection.last() =
                    QItemSelectionRange(selection.last().topLeft(), m_model.index(row, lastColumn));
            } else {
                selection.append({m_model.index(row, 0), m_model.index(row, lastColumn)});
            }
        }
        if (path == place.current) {
            selectionModel()->setCurrentIndex(m_model.index(row, 0), QItemSelectionModel::NoUpdate);
        }
        if (path == place.top) {
            scrollTo(m_model.index(row, 0), PositionAtTop);
        }
    }
    selectionModel()->select(selection, QItemSelectionModel::Select);
}

void FilesList::SetHint(const QString& text) {
    if (m_hint != text) {
        m_hint = text;
        viewport()->update();
    }
}

void FilesList::startDrag(Qt::DropActions) {
    if (dragged) {
        DragFiles(*this, dragged());
    }
}

void FilesList::dragEnterEvent(QDragEnterEvent* event) {
    if (m_drops) {
        m_drops->Enter(*event);
    }
}

void FilesList::dragMoveEvent(QDragMoveEvent* event) {
    QTreeView::dragMoveEvent(event); // scrolls near the edges; its answer does not count
    if (m_drops) {
        m_drops->Move(*event);
    }
}

void FilesList::dragLeaveEvent(QDragLeaveEvent* event) {
    QTreeView::dragLeaveEvent(event);
    if (m_drops) {
        m_drops->Leave();
    }
}

void FilesList::dropEvent(QDropEvent* event) {
    if (m_drops) {
        m_drops->Drop(*event);
    }
    stopAutoScroll();
    setState(NoState);
}

void FilesList::paintEvent(QPaintEvent* event) {
    QTreeView::paintEvent(event);
    if (m_model.rowCount() == 0 && !m_hint.isEmpty()) {
        QPainter painter(viewport());
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(viewport()->rect().adjusted(12, 12, -12, -12),
                         Qt::AlignCenter | Qt::TextWordWrap, m_hint);
    }
    if (m_drops) {
        m_drops->Paint();
    }
}

void FilesList::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    FillWidth();
}

void FilesList::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
    QTreeView::closeEditor(editor, hint);
    Q_EMIT EditEnded();
}

} // namespace velmora
