// The word list under the search box: words of the index next to what is being typed.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QTreeWidget>

class QLineEdit;

namespace velmora {

// Shows itself while the person types three characters or more and the index has words; the focus
// stays in the box. Arrow down goes into the list, Enter or a double click puts the word in place
// of the last one, Escape hides the list.
class WordListPopup : public QTreeWidget {
    Q_OBJECT

  public:
    // Belongs to the window of the box, which must outlive it.
    explicit WordListPopup(QLineEdit& box);

    // Fills and shows the list for the text in the box, or hides it.
    void LoadWordList();

  Q_SIGNALS:
    // Ctrl+Space in the box: the place for the menu of operators, in global coordinates.
    void AutoCompleteRequested(const QPoint& place);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void txtRicerca_KeyUp(const QString& text);
    [[nodiscard]] bool TakesKey(int key, Qt::KeyboardModifiers modifiers);
    void lvwWords_DblClick(const QTreeWidgetItem* item);
    void Place();

    QLineEdit& m_box;
};

// Adds an operator to the box and puts the caret to the end. index: from 0.
void AppendOperator(QLineEdit& box, int index);

// Shows the menu of operators (mnuAutoComplete) at a place and adds the one that is chosen.
void ShowOperatorsMenu(QLineEdit& box, const QPoint& place);

} // namespace velmora
