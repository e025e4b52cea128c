// Fills, places and hides the word list.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/windows/WordListPopup.h"

#include "core/Messages.h"
#include "search/MessageIds.h"
#include "search/OperatorsMenu.h"
#include "search/WordList.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int kLeastWidth = 220;

} // namespace

WordListPopup::WordListPopup(QLineEdit& box) : QTreeWidget(box.window()), m_box(box) {
    setObjectName(u"lvwWords"_s);
    setAccessibleName(GetMessage(kWordsOfIndex));
    setColumnCount(2);
    setHeaderHidden(true);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFrameShape(QFrame::Box);
    setFrameShadow(QFrame::Plain);
    setFocusPolicy(Qt::ClickFocus);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(0, QHeaderView::Stretch);
    header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    hide();
    m_box.installEventFilter(this);
    connect(&m_box, &QLineEdit::textEdited, this, &WordListPopup::txtRicerca_KeyUp);
    connect(this, &QTreeWidget::itemDoubleClicked, this, &WordListPopup::lvwWords_DblClick);
}

void WordListPopup::txtRicerca_KeyUp(const QString& text) {
    if (text.size() >= kWordListFrom) {
        LoadWordList();
    } else {
        hide();
    }
}

void WordListPopup::LoadWordList() {
    clear();
    for (const engine::ListedWord& word : velmora::LoadWordList(m_box.text())) {
        auto* item = new QTreeWidgetItem(this, {word.word, QString::number(word.documents)});
        item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
    }
    if (topLevelItemCount() == 0) {
        hide();
        return;
    }
    Place();
    show();
    raise();
}

void WordListPopup::Place() {
    if (parentWidget() != m_box.window()) {
        setParent(m_box.window()); // the box may have moved since, into a bar for example
    }
    QWidget& window = *parentWidget();
    const QPoint corner = m_box.mapTo(&window, QPoint(0, m_box.height()));
    const int rows = topLevelItemCount() * sizeHintForRow(0) + 2 * frameWidth();
    const int below = window.height() - corner.y();
    setGeometry(corner.x(), corner.y(), std::max(m_box.width(), kLeastWidth),
                std::min(rows, below));
}

bool WordListPopup::TakesKey(int key, Qt::KeyboardModifiers modifiers) {
    if (key == Qt::Key_Space && modifiers == Qt::ControlModifier) {
        Q_EMIT AutoCompleteRequested(m_box.mapToGlobal(QPoint(0, m_box.height())));
        return true;
    }
    if (!isVisible()) {
        return false;
    }
    if (key == Qt::Key_Escape) {
        hide();
        return true;
    }
    if (key == Qt::Key_Down) {
        setFocus();
        setCurrentItem(topLevelItem(0));
        return true;
    }
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        hide(); // the search begins, for the box gets the key too
    }
    return false;
}

bool WordListPopup::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &m_box) {
        if (event->type() == QEvent::KeyPress) {
            const auto& key = static_cast<QKeyEvent&>(*event);
            if (TakesKey(key.key(), key.modifiers())) {
                return true;
            }
        } else if (event->type() == QEvent::FocusOut && !hasFocus()) {
            const auto& focus = static_cast<QFocusEvent&>(*event);
            // A click into the list takes the focus from the box, and must find the list there.
            if (focus.reason() != Qt::OtherFocusReason && !underMouse()) {
                hide();
            }
        }
    }
    return QTreeWidget::eventFilter(watched, event);
}

void WordListPopup::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        lvwWords_DblClick(currentItem());
        return;
    case Qt::Key_Escape:
        hide();
        m_box.setFocus();
        return;
    default:
        QTreeWidget::keyPressEvent(event);
    }
}

void WordListPopup::focusOutEvent(QFocusEvent* event) {
    QTreeWidget::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason) {
        hide();
    }
}

void WordListPopup::lvwWords_DblClick(const QTreeWidgetItem* item) {
    if (item == nullptr) {
        return;
    }
    const QString text = ReplaceLastWord(m_box.text(), item->text(0));
    hide();
    m_box.setText(text);
    m_box.setFocus();
    m_box.setCursorPosition(static_cast<int>(text.size()));
}

void AppendOperator(QLineEdit& box, int index) {
    box.setText(mnuOperators_Click(index, box.text()));
    box.setFocus();
    box.end(false);
}

void ShowOperatorsMenu(QLineEdit& box, const QPoint& place) {
    QMenu menu(&box);
    menu.setObjectName(u"mnuAutoComplete"_s);
    for (int index = 0; index < kOperatorCount; ++index) {
        menu.addAction(OperatorCaption(index), &box, [&box, index] { AppendOperator(box, index); });
    }
    menu.exec(place);
}

} // namespace velmora
