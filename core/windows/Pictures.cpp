// Paints the program's sign and the pictures of the hints.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/windows/Pictures.h"

#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QWidget>
#include <cmath>
#include <numbers>

namespace velmora {

namespace {

constexpr QSize kHintSize{320, 150};
const QColor kPaper(250, 250, 252);
const QColor kPaperEdge(150, 158, 172);
const QColor kInk(176, 184, 198);
const QColor kHit(255, 208, 64);
const QColor kBlue(46, 108, 190);

QPixmap Canvas(QSize size, const QWidget& window) {
    const qreal ratio = window.devicePixelRatio();
    QPixmap pixmap(size * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

void PaintPage(QPainter& painter, const QRectF& page, int lines) {
    painter.setPen(QPen(kPaperEdge, page.width() / 45));
    painter.setBrush(kPaper);
    painter.drawRoundedRect(page, page.width() / 20, page.width() / 20);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kInk);
    const double step = page.height() / (lines + 1);
    for (int line = 1; line <= lines; ++line) {
        const double part = line % 3 == 0 ? 0.5 : 0.76; // some lines end early, as text does
        painter.drawRoundedRect(QRectF(page.left() + page.width() * 0.12,
                                       page.top() + step * line - step * 0.2, page.width() * part,
                                       step * 0.38),
                                step * 0.15, step * 0.15);
    }
}

void PaintMagnifier(QPainter& painter, QPointF centre, double radius) {
    const double away = radius * std::numbers::sqrt2 / 2;
    painter.setPen(QPen(kBlue, radius * 0.36, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(centre + QPointF(away, away) * 1.2, centre + QPointF(away, away) * 2.1);
    painter.setPen(QPen(kBlue, radius * 0.22));
    painter.setBrush(QColor(210, 230, 255, 150));
    painter.drawEllipse(centre, radius, radius);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kHit);
    painter.drawRoundedRect(
        QRectF(centre.x() - radius * 0.55, centre.y() - radius * 0.2, radius * 1.1, radius * 0.4),
        radius * 0.12, radius * 0.12);
}

void PaintButton(QPainter& painter, const QRectF& place, const QColor& face, const QColor& edge) {
    painter.setPen(QPen(edge, 1));
    painter.setBrush(face);
    painter.drawRoundedRect(place, 4, 4);
}

void PaintArrow(QPainter& painter, const QRectF& place, bool toTheLeft) {
    const QPointF centre = place.center();
    const double width = toTheLeft ? -5 : 5;
    QPainterPath arrow(centre + QPointF(width, 0));
    arrow.lineTo(centre + QPointF(-width, -7));
    arrow.lineTo(centre + QPointF(-width, 7));
    arrow.closeSubpath();
    painter.fillPath(arrow, kBlue);
}

// A viewer's bar with the two hit buttons set off, and a page with a hit below.
void PaintViewerBar(QPainter& painter, const QPalette& palette) {
    const QColor edge = palette.color(QPalette::Mid);
    const QColor face = palette.color(QPalette::Button);
    painter.setPen(QPen(edge, 1));
    painter.setBrush(palette.color(QPalette::AlternateBase));
    painter.drawRoundedRect(QRectF(10.5, 10.5, 299, 44), 5, 5);
    for (int button = 0; button < 7; ++button) {
        const QRectF place(20 + 40.0 * button, 17.5, 30, 30);
        const bool isHitButton = button == 3 || button == 4;
        PaintButton(painter, place, isHitButton ? kHit : face, isHitButton ? kBlue : edge);
        if (isHitButton) {
            PaintArrow(painter, place, button == 3);
        }
    }
    painter.setClipRect(QRectF(0, 64, kHintSize.width(), kHintSize.height() - 64));
    PaintPage(painter, QRectF(90, 66, 140, 150), 9);
    painter.setBrush(kHit);
    painter.drawRoundedRect(QRectF(136, 91.5, 44, 11), 2, 2);
}

// A page image with a dashed rectangle around some lines and the pointer at its corner.
void PaintSelection(QPainter& painter, const QPalette&) {
    PaintPage(painter, QRectF(85, 6, 150, 190), 11);
    const QRectF area(98, 46, 108, 56);
    painter.setPen(QPen(kBlue, 1.6, Qt::DashLine));
    painter.setBrush(QColor(46, 108, 190, 50));
    painter.drawRect(area);
    QPainterPath arrow(area.bottomRight());
    for (const QPointF& corner : {QPointF(0, 20), QPointF(5, 15.5), QPointF(9, 23),
                                  QPointF(12.5, 21), QPointF(8.5, 14), QPointF(15, 13.5)}) {
        arrow.lineTo(area.bottomRight() + corner);
    }
    arrow.closeSubpath();
    painter.setPen(QPen(Qt::white, 1.4));
    painter.setBrush(QColor(30, 30, 34));
    painter.drawPath(arrow);
}

} // namespace

void PaintLogo(QPainter& painter, const QRectF& place, double phase) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double unit = std::min(place.width(), place.height());
    PaintPage(
        painter,
        QRectF(place.left() + unit * 0.14, place.top() + unit * 0.06, unit * 0.64, unit * 0.86), 7);
    const double angle = phase * 2 * std::numbers::pi;
    PaintMagnifier(painter,
                   place.topLeft() + QPointF(unit * (0.56 + 0.10 * std::sin(angle)),
                                             unit * (0.56 - 0.12 * std::sin(2 * angle))),
                   unit * 0.19);
    painter.restore();
}

QPixmap LogoPicture(int size, const QWidget& window) {
    QPixmap pixmap = Canvas({size, size}, window);
    QPainter painter(&pixmap);
    PaintLogo(painter, QRectF(0, 0, size, size), 0);
    return pixmap;
}

QPixmap HintPicture(int pictureId, const QWidget& window) {
    if (pictureId != 106 && pictureId != 107) {
        return {};
    }
    QPixmap pixmap = Canvas(kHintSize, window);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    if (pictureId == 106) {
        PaintViewerBar(painter, window.palette());
    } else {
        PaintSelection(painter, window.palette());
    }
    return pixmap;
}

} // namespace velmora
