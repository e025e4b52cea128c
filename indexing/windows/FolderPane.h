// A list or tree of folders whose folders can be dragged to its partner.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QTreeWidget>

namespace velmora {

// The icon of a kind of folder (LocalFolders.h); that of a plain folder for what is not known.
QIcon FolderIcon(const QString& kind);

class FolderPane : public QTreeWidget {
    Q_OBJECT

  public:
    // Of an item: its machine path; empty where it cannot be dragged.
    static constexpr int kPathRole = Qt::UserRole;

    explicit FolderPane(QWidget* parent = nullptr);

    // Whose folders may be dropped here. With takesFiles those of a file manager, too.
    void SetPartner(const FolderPane& partner, bool takesFiles);

    // The path of the selected item; empty when there is none.
    [[nodiscard]] QString SelectedPath() const;

  Q_SIGNALS:
    // Machine paths, at least one. Connect it queued: a message box inside would hold up the
    // program that the folders come from.
    void FoldersDropped(const QStringList& paths);

  protected:
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QList<QTreeWidgetItem*>& items) const override;
    Qt::DropActions supportedDropActions() const override { return Qt::CopyAction; }
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    [[nodiscard]] QByteArray Name() const;
    [[nodiscard]] QStringList PathsOf(const QMimeData& dragged) const;

    const FolderPane* m_partner = nullptr;
    bool m_takesFiles = false;
};

} // namespace velmora
