// F1 in any window shows the help page of that window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/windows/FrmHelp.h"

#include <QObject>
#include <QPointer>

namespace velmora {

// An event filter of the application:
//   HelpKey helpKey;
//   application.installEventFilter(&helpKey);
// It takes the key when the focused widget and those around it did not want it, alone or as the
// keyboard's own Help key; Shift+F1 stays the desktop's. There is one help window at a time: it
// belongs to the window that asked last, so that it can be used while a modal window is open.
class HelpKey : public QObject {
    Q_OBJECT

  public:
    // Reads the pages of HelpFolder() in the language of this run, at each showing.
    HelpKey() = default;
    // The same from another folder, for tests.
    explicit HelpKey(const QString& folder) : m_folder(folder) {}

    // Shows the page of a window: that of its class, or of the nearest window that it belongs to
    // and that has one, else the overview. Answers the help window.
    FrmHelp& ShowHelpOf(QWidget& window);

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QString m_folder;
    QPointer<FrmHelp> m_shown;
};

// Presses F1 in a window as a person would: for a menu item.
void SendHelpKey(QWidget& window);

// The names under which a window's page is looked for: its class, then those of the windows that it
// belongs to.
QStringList HelpPagesOf(const QWidget& window);

} // namespace velmora
