// Small habits of look that all windows of the program share.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QPixmap>
#include <QStyle>

class QLabel;
class QWidget;

namespace velmora {

// A picture of the desktop's style for a message ("error", "information"), in the size that
// message boxes use.
QPixmap StandardPicture(const QWidget& window, QStyle::StandardPixmap which);

// Makes a label a heading: bold and a little larger than the window's text.
void MakeHeading(QLabel& label);

} // namespace velmora
