// Edits names in place.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/NameDelegate.h"

#include <QLineEdit>
#include <QScopedValueRollback>
#include <utility>

namespace velmora {

namespace {

// Selects the part before the ending when it gets the focus, after the view has selected all.
class NameEditor : public QLineEdit {
  public:
    using QLineEdit::QLineEdit;
    int stem = 0;

  protected:
    void focusInEvent(QFocusEvent* event) override {
        QLineEdit::focusInEvent(event);
        setSelection(0, std::exchange(stem, static_cast<int>(text().size())));
    }
};

} // namespace

QWidget* NameDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                    const QModelIndex& index) const {
    auto* editor = new NameEditor(parent);
    editor->setAccessibleName(index.data(Qt::EditRole).toString());
    editor->setAutoFillBackground(true);
    editor->setTextMargins(0, 0, 0, 0);
    return editor;
}

void NameDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    auto& line = static_cast<NameEditor&>(*editor);
    if (line.isModified()) {
        return; // news of the row must not take back what is being typed
    }
    const QString name = index.data(Qt::EditRole).toString();
    line.setText(name);
    const qsizetype point = isFolder && isFolder(index) ? -1 : name.lastIndexOf(u'.');
    line.stem = static_cast<int>(point > 0 ? point : name.size());
}

void NameDelegate::setModelData(QWidget* editor, QAbstractItemModel*,
                                const QModelIndex& index) const {
    const QString name = qobject_cast<QLineEdit*>(editor)->text();
    // A message box takes the focus from the editor, which hands its text over once more.
    if (m_renaming || name.isEmpty() || name == index.data(Qt::EditRole).toString()) {
        return;
    }
    const QScopedValueRollback renaming(m_renaming, true);
    renamed(index, name);
}

void NameDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    if (index.data(m_cutRole).toBool()) {
        option->state &= ~QStyle::State_Enabled;
    }
}

} // namespace velmora
