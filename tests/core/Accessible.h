// Whether a person who cannot see a window is told what its controls are.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QAccessible>
#include <QStringList>
#include <QWidget>

namespace velmora {

// The controls of a shown window that can take the focus and have no name for a screen reader, as
// "class objectName": a test expects none.
//   window.show();
//   EXPECT_THAT(NamelessControls(window), IsEmpty());
inline QStringList NamelessControls(QWidget& window) {
    if (!window.isVisible()) {
        return {QStringLiteral("(nothing to look at: is the window shown?)")};
    }
    QStringList nameless;
    QList<QAccessibleInterface*> waiting{QAccessible::queryAccessibleInterface(&window)};
    while (!waiting.isEmpty()) {
        QAccessibleInterface* each = waiting.takeLast();
        // Rows and cells have no object of their own: their text is their name.
        const auto* widget = each ? qobject_cast<QWidget*>(each->object()) : nullptr;
        if (!widget) {
            continue;
        }
        for (int child = 0; child < each->childCount(); ++child) {
            waiting.append(each->child(child));
        }
        const bool canBeReached = each->state().focusable && !each->state().invisible &&
                                  widget->isVisible() && widget->focusPolicy() != Qt::NoFocus &&
                                  !widget->focusProxy();
        if (canBeReached && each->text(QAccessible::Name).trimmed().isEmpty()) {
            nameless << QString::fromLatin1(widget->metaObject()->className()) + u' ' +
                            widget->objectName();
        }
    }
    return nameless;
}

} // namespace velmora
