// Shows the help of the active window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/windows/HelpKey.h"

#include "core/Failure.h"
#include "core/Globals.h"

#include <QApplication>
#include <QKeyEvent>

using namespace Qt::StringLiterals;

namespace velmora {

QStringList HelpPagesOf(const QWidget& window) {
    QStringList names;
    for (const QWidget* each = &window; each; each = each->parentWidget()) {
        if (each->isWindow()) {
            names << QString::fromLatin1(each->metaObject()->className()).section(u"::"_s, -1);
        }
    }
    return names;
}

FrmHelp& HelpKey::ShowHelpOf(QWidget& window) {
    const Help help(m_folder.isEmpty() ? HelpFolder() : m_folder, CurrentLanguage());
    const QString page = help.PageOf(HelpPagesOf(window));
    QWidget* owner = window.window();
    if (m_shown != owner && (!m_shown || m_shown->parentWidget() != owner)) {
        delete m_shown;
        m_shown = new FrmHelp(help, owner);
    }
    m_shown->ShowPage(page);
    m_shown->show();
    m_shown->raise();
    m_shown->activateWindow();
    return *m_shown;
}

bool HelpKey::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) {
        return false;
    }
    const auto& key = static_cast<const QKeyEvent&>(*event);
    const bool isHelp =
        key.key() == Qt::Key_Help || (key.key() == Qt::Key_F1 && key.modifiers() == Qt::NoModifier);
    // A key that no widget wants climbs up to its window.
    auto* window = isHelp ? qobject_cast<QWidget*>(watched) : nullptr;
    if (!window || !window->isWindow() || window->windowType() == Qt::Popup) {
        return false;
    }
    Guard("HelpKey", "eventFilter", [&] { ShowHelpOf(*window); });
    return true;
}

void SendHelpKey(QWidget& window) {
    QKeyEvent press(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier);
    QApplication::sendEvent(window.window(), &press);
}

} // namespace velmora
