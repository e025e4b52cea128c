// The bars of the main window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Messages.h"
#include "mainwindow/MessageIds.h"
#include "mainwindow/windows/FrmMain.h"
#include "resources/icons/Icons.h"
#include "search/windows/WordListPopup.h"
#include "ui_FrmMain.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

using namespace Qt::StringLiterals;

namespace velmora {

QAction* FrmMain::CommandAction(const QString& key) {
    const auto known = m_actions.constFind(key);
    if (known != m_actions.constEnd()) {
        return *known;
    }
    const Command* command = FindCommand(key);
    if (!command) {
        return nullptr;
    }
    auto* action = new QAction(GetMessage(command->caption), this);
    action->setObjectName(key);
    if (!command->icon.isEmpty()) {
        action->setIcon(LineIcon(command->icon));
    }
    action->setShortcuts(QKeySequence::listFromString(command->shortcuts));
    if (command->tip != 0) {
        const QString keys = action->shortcut().toString(QKeySequence::NativeText);
        const QString tip = GetMessage(command->tip).remove(u'&');
        action->setToolTip(keys.isEmpty() ? tip : tip + u" ("_s + keys + u')');
    }
    connect(action, &QAction::triggered, this, [this, key] { MenuBar_ButtonClick(key); });
    m_actions[key] = action;
    return action;
}

void FrmMain::FillBar(QWidget& bar, const QString& name) {
    QSet<QChar> usedKeys;
    for (const QString& key : KeysOfBar(name)) {
        QAction* action = key.isEmpty() ? nullptr : CommandAction(key);
        if (!action) {
            auto* separator = new QAction(&bar);
            separator->setSeparator(true); // before it is added: bars make another widget of it
            bar.addAction(separator);
            continue;
        }
        if (qobject_cast<QMenu*>(&bar)) {
            action->setText(WithAccessKey(action->text(), usedKeys));
        }
        bar.addAction(action);
    }
}

void FrmMain::PrepareBars() {
    for (const QString& key : KeysOfBar(u"MENU"_s)) {
        QMenu* menu = menuBar()->addMenu(GetMessage(FindCommand(key)->caption));
        menu->setObjectName(key);
        FillBar(*menu, MenuOf(key));
    }
    m_navBar = addToolBar(GetMessage(kToolBar));
    m_navBar->setObjectName(u"NavBar");
    m_navBar->setMovable(false);
    m_navBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_navBar->setIconSize({22, 22});
    m_navBar->setContextMenuPolicy(Qt::PreventContextMenu);
    FillBar(*m_navBar, u"STD"_s);
}

void FrmMain::PrepareSearchBar() {
    m_ui->SEARCH->setIcon(LineIcon(u"search"_s));
    m_ui->CHKMAIL->setText(GetMessage(25).trimmed());
    connect(m_ui->SEARCH, &QPushButton::clicked, this,
            [this] { MenuBar_ButtonClick(u"SEARCH"_s); });
    connect(m_ui->txtRicerca, &QLineEdit::returnPressed, this,
            [this] { MenuBar_ButtonClick(u"SEARCH"_s); });

    QLineEdit& box = *m_ui->txtRicerca;
    auto* operators = box.addAction(LineIcon(u"operators"_s), QLineEdit::TrailingPosition);
    operators->setObjectName(u"mnuOperators");
    operators->setToolTip(
        GetMessage(kSearchOperators) + u" ("_s +
        QKeySequence(Qt::CTRL | Qt::Key_Space).toString(QKeySequence::NativeText) + u')');
    connect(operators, &QAction::triggered, this,
            [&box] { ShowOperatorsMenu(box, box.mapToGlobal(QPoint(0, box.height()))); });
    auto* words = new WordListPopup(box);
    connect(words, &WordListPopup::AutoCompleteRequested, this,
            [&box](const QPoint& place) { ShowOperatorsMenu(box, place); });
}

void FrmMain::UpdateBars() {
    const Selection selection = CurrentSelection();
    CommandContext context;
    context.treeFocus = !selection.filesActive;
    context.node = selection.folder.isEmpty()  ? NodeKind::Root
                   : selection.isIndexedFolder ? NodeKind::Indexed
                                               : NodeKind::Below;
    context.selected = selection.filesActive ? 1 : 0;
    context.hasFolder = selection.itemIsFolder;
    for (auto each = m_actions.cbegin(); each != m_actions.cend(); ++each) {
        each.value()->setEnabled(IsEnabled(each.key(), context));
    }
    m_ui->cmdRemoveFolder->setEnabled(selection.isIndexedFolder);
}

void FrmMain::ShowPopup(QWidget& pane, const QPoint& place) {
    pane.setFocus();
    UpdateBars();
    QMenu menu(this);
    menu.setObjectName(u"POPUPMENU");
    FillBar(menu, u"POPUPMENU"_s);
    menu.exec(static_cast<QAbstractScrollArea&>(pane).viewport()->mapToGlobal(place));
}

} // namespace velmora
