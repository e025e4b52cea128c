// Replaces caption references, property by property.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/windows/Captions.h"

#include "core/Messages.h"

#include <QAction>
#include <QLineEdit>
#include <QTabBar>
#include <QTableWidget>
#include <QTextEdit>
#include <QTreeWidget>
#include <optional>

namespace velmora {

namespace {

// The id of a reference; nothing for a plain word.
std::optional<int> ReferredId(const QString& caption) {
    if (!caption.startsWith(u"_R")) {
        return std::nullopt;
    }
    bool isNumber = false;
    const int id = QStringView(caption).mid(2).toInt(&isNumber);
    return isNumber ? std::optional(id) : std::nullopt;
}

void Replace(QObject& object, const char* property, bool showsAccessKey) {
    const QVariant value = object.property(property);
    if (!value.isValid()) {
        return;
    }
    if (const auto id = ReferredId(value.toString())) {
        QString text = GetMessage(*id);
        object.setProperty(property, showsAccessKey ? text : text.remove(u'&'));
    }
}

void ReplaceProperties(QObject& object) {
    // What stands in an edit box is the person's text, not a caption.
    if (!qobject_cast<QLineEdit*>(&object) && !qobject_cast<QTextEdit*>(&object)) {
        Replace(object, "text", true);
    }
    Replace(object, "title", true);
    for (const char* property : {"windowTitle", "toolTip", "statusTip", "whatsThis",
                                 "placeholderText", "accessibleName", "accessibleDescription"}) {
        Replace(object, property, false);
    }
}

void ReplaceHeads(QTreeWidget& tree) {
    for (int column = 0; column < tree.columnCount(); ++column) {
        tree.headerItem()->setText(column, ResolveCaption(tree.headerItem()->text(column)));
    }
}

void ReplaceHeads(QTableWidget& table) {
    for (int column = 0; column < table.columnCount(); ++column) {
        if (QTableWidgetItem* head = table.horizontalHeaderItem(column)) {
            head->setText(ResolveCaption(head->text()));
        }
    }
}

void ReplaceTabs(QTabBar& bar) {
    for (int tab = 0; tab < bar.count(); ++tab) {
        bar.setTabText(tab, ResolveCaption(bar.tabText(tab)));
    }
}

void ReplaceParts(QWidget& widget) {
    // The items of a bar or menu may belong to another window.
    for (QAction* action : widget.actions()) {
        ReplaceProperties(*action);
    }
    if (auto* tree = qobject_cast<QTreeWidget*>(&widget)) {
        ReplaceHeads(*tree);
    } else if (auto* table = qobject_cast<QTableWidget*>(&widget)) {
        ReplaceHeads(*table);
    } else if (auto* bar = qobject_cast<QTabBar*>(&widget)) {
        ReplaceTabs(*bar);
    }
}

} // namespace

QString ResolveCaption(const QString& caption) {
    const auto id = ReferredId(caption);
    return id ? GetMessage(*id) : caption;
}

void AssignHBCaption(QWidget* form) {
    ReplaceProperties(*form);
    ReplaceParts(*form);
    for (QWidget* widget : form->findChildren<QWidget*>()) {
        ReplaceProperties(*widget);
        ReplaceParts(*widget);
    }
    for (QAction* action : form->findChildren<QAction*>()) {
        ReplaceProperties(*action);
    }
}

} // namespace velmora
