// The commands of the main window by key, and the bars that they stand in.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QList>
#include <QSet>
#include <QString>

namespace velmora {

// One key means one action, wherever it comes from.
struct Command {
    QString key;
    int caption = 0;        // message
    int tip = 0;            // message; 0: the caption
    QString icon;           // name of a line icon; empty: none
    QString shortcuts;      // portable text, parted by "; "; empty: none
    bool important = false; // its caption stands beside its icon in the tool bar
};

// The command of a key; null for a separator and an unknown key.
const Command* FindCommand(const QString& key);

// A bar's keys in order; "" is a separator. Names: MENU, FILEMENU, EDITMENU, TOOLSMENU, INFOMENU,
// POPUPMENU, MNUOTHERSEARCHES, STD.
QStringList KeysOfBar(const QString& bar);
// The bar that opens under a key of MENU.
QString MenuOf(const QString& key);

// The caption with an access key that is not in `used`, which then holds it. A caption that has one
// keeps it; one without a free letter stays without.
QString WithAccessKey(const QString& caption, QSet<QChar>& used);

} // namespace velmora
