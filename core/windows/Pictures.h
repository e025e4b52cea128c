// The program's own pictures, painted in the colours of the desktop and sharp at every scale.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QPixmap>
#include <QRectF>

class QPainter;
class QWidget;

namespace velmora {

// The program's sign, a page under a magnifier, `size` device-independent pixels square.
QPixmap LogoPicture(int size, const QWidget& window);

// The sign with the magnifier on its way over the lines: `phase` runs from 0 to 1 for one round.
void PaintLogo(QPainter& painter, const QRectF& place, double phase);

// The picture of a first-time hint: 106 the hit buttons of a PDF viewer, 107 an area selected on
// a page image. Null for any other id.
QPixmap HintPicture(int pictureId, const QWidget& window);

} // namespace velmora
