// The bars of the main window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Messages.h"
#include "mainwindow/Commands.h"
#include "mainwindow/MessageIds.h"
#include "mainwindow/windows/Browser.h"
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

namespace {

QString TipOf(const Command& command) {
    QString tip = GetMessage(command.tip != 0 ? command.tip : command.caption).remove(u'&');
    if (IsToCome(command.key)) {
        return tip + u"\n"_s + GetMessage(kToCome);
    }
    // A button tells the keys of the menu item that does the same.
    const Command* same =
        FindCommand(command.key == u"DEL" ? u"MNUDELETE"_s : u"MNU"_s + command.key);
    const QString& shortcuts =
        command.shortcuts.isEmpty() && same ? same->shortcuts : command.shortcuts;
    const QList<QKeySequence> keys = QKeySequence::listFromString(shortcuts);
    return keys.isEmpty() ? tip
                          : tip + u" ("_s + keys.front().toString(QKeySequence::NativeText) + u')';
}

// What the panes' selection is for: its keys count there only.
bool IsOfThePanes(const QString& key) {
    return key == u"MNURENAME" || key == u"MNUDELETE" || key == u"MNUCOPY" || key == u"MNUCUT" ||
           key == u"MNUPASTE" || key == u"MNUSELECTALL" || key == u"MNUINVERTSELECTION";
}

} // namespace

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
    if (key == u"MNUHELP") {
        action->setText(action->text() + u"\tF1"_s); // told only: the key works in every window
    }
    action->setPriority(command->important ? QAction::NormalPriority : QAction::LowPriority);
    action->setToolTip(TipOf(*command));
    if (IsOfThePanes(key)) {
        // Not while the person writes or a button has the focus.
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        m_browser->addAction(action);
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
        menu->setToolTipsVisible(true);
        FillBar(*menu, MenuOf(key));
    }
    m_navBar = addToolBar(GetMessage(kToolBar));
    m_navBar->setObjectName(u"NavBar");
    m_navBar->setMovable(false);
    m_navBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_navBar->setIconSize({22, 22});
    m_navBar->setContextMenuPolicy(Qt::PreventContextMenu);
    FillBar(*m_navBar, u"STD"_s);
    (void)CommandAction(u"MNUCUT"_s); // a key only
}

void FrmMain::PrepareSearchBar() {
    m_ui->SEARCH->setIcon(LineIcon(u"search"_s));
    m_ui->SEARCHBUILDER->setIcon(LineIcon(u"builder"_s));
    m_ui->CHKMAIL->setText(GetMessage(25).trimmed());
    m_ui->CHKMAIL->setIcon(LineIcon(u"file-mail"_s));
    auto* otherSearches = new QMenu(this);
    otherSearches->setObjectName(u"MNUOTHERSEARCHES"_s);
    otherSearches->setToolTipsVisible(true);
    FillBar(*otherSearches, u"MNUOTHERSEARCHES"_s);
    m_ui->OTHERSEARCHES->setMenu(otherSearches);
    connect(m_ui->SEARCHBUILDER, &QPushButton::clicked, this,
            [this] { MenuBar_ButtonClick(u"SEARCHBUILDER"_s); });
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
    const CommandContext context = Context(m_browser->State());
    for (auto each = m_actions.cbegin(); each != m_actions.cend(); ++each) {
        each.value()->setVisible(IsOffered(each.key(), context));
        each.value()->setEnabled(IsEnabled(each.key(), context));
    }
    m_ui->cmdRemoveFolder->setEnabled(m_browser->CurrentIndexedFolder().has_value());
}

void FrmMain::ShowPopup(const QPoint& place) {
    QMenu menu(this);
    menu.setObjectName(u"POPUPMENU"_s);
    menu.setToolTipsVisible(true);
    FillBar(menu, u"POPUPMENU"_s);
    UpdateBars();
    menu.exec(place);
}

} // namespace velmora
