// Shows and edits the names in the folder tree and the file list.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QStyledItemDelegate>
#include <functional>

namespace velmora {

// Of a file the part before the ending is selected at first. Rows whose `cutRole` is true are shown
// dimmed. The typed name goes to `renamed`, once, when it is a new one.
class NameDelegate : public QStyledItemDelegate {
    Q_OBJECT

  public:
    NameDelegate(int cutRole, QObject* parent) : QStyledItemDelegate(parent), m_cutRole(cutRole) {}

    std::function<void(const QModelIndex&, const QString& name)> renamed;
    std::function<bool(const QModelIndex&)> isFolder;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

  private:
    int m_cutRole;
    mutable bool m_renaming = false;
};

} // namespace velmora
