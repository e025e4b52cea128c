// Replaces the caption references of a form ("_R1000") by the texts of the language.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>

class QWidget;

namespace velmora {

// Every caption-bearing widget of the form, itself included, that holds "_R" plus a base id gets
// the message of that id: buttons, check boxes, labels, group boxes, menus, tabs, actions, column
// heads, window title, tool tips, placeholders. A plain word stays. Call right after setupUi; for
// a bar or menu filled later, call it with that.
void AssignHBCaption(QWidget* form);

// The text that a caption stands for: the message when it is a reference, else itself.
QString ResolveCaption(const QString& caption);

} // namespace velmora
