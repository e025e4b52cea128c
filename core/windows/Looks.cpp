// Small habits of look that all windows of the program share.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/windows/Looks.h"

#include <QIcon>
#include <QLabel>
#include <QWidget>

namespace velmora {

QPixmap StandardPicture(const QWidget& window, QStyle::StandardPixmap which) {
    const QStyle& style = *window.style();
    const int size = style.pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, &window);
    return style.standardIcon(which, nullptr, &window)
        .pixmap(QSize(size, size), window.devicePixelRatio());
}

void MakeHeading(QLabel& label) {
    QFont font = label.font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.25);
    label.setFont(font);
}

} // namespace velmora
