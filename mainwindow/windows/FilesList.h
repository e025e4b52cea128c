// The view of the file list.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/windows/FileDrops.h"

#include <QSet>
#include <QTreeView>
#include <memory>

namespace velmora {

class FilesModel;
class NameDelegate;

// Keeps selection, current row and scroll place when the model's rows are shown anew. Columns are
// remembered by their lasting names, so that new fields do not upset them.
class FilesList : public QTreeView {
    Q_OBJECT

  public:
    explicit FilesList(FilesModel& model, QWidget* parent = nullptr);
    ~FilesList() override;

    [[nodiscard]] bool IsEditing() const { return state() == EditingState; }
    [[nodiscard]] NameDelegate& Names() { return *m_names; }
    void AcceptDrops(FileDrops::Target target, FileDrops::Dropped dropped);
    // Fills a list with the selected rows, at the start of a drag.
    std::function<FileList()> dragged;

    // The selected rows from top to bottom.
    [[nodiscard]] std::vector<int> SelectedRows() const;
    void SelectRow(int row);

    // Hides the columns that are not for the eye; the folder's column is shown for rows from
    // anywhere.
    void ShowColumns(bool withFolder);
    // Widths, order and sorting of the columns as a text for the settings.
    [[nodiscard]] QString ColumnState();
    // Has effect on the columns that there are now and on those that come with ShowColumns.
    void SetColumnState(const QString& state);

    // Stands in the middle of the list while it has no rows.
    void SetHint(const QString& text);

  Q_SIGNALS:
    // No name is being edited any more.
    void EditEnded();

  protected:
    void startDrag(Qt::DropActions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;

  private:
    struct ColumnPlace {
        int width = 0;
        int visual = -1;
    };
    void PlaceColumns();
    void KeepColumns();
    void FillWidth();
    void KeepPlace();
    void RestorePlace();

    FilesModel& m_model;
    NameDelegate* m_names;
    std::unique_ptr<FileDrops> m_drops;
    QHash<QString, ColumnPlace> m_places; // by the columns' lasting names
    QString m_sortKey;
    bool m_withFolder = false;
    bool m_ownWidths = false; // the person has chosen: the name no longer takes what is left
    bool m_placing = false;
    QString m_hint;

    struct Place {
        QSet<QString> selected; // paths
        QString current;
        QString top;
    };
    Place m_place;
};

} // namespace velmora
