// Paints a page with a bar of light that goes over its lines.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/windows/ScanAnimation.h"

#include <QPainter>
#include <QPainterPath>
#include <QSettings>
#include <QStandardPaths>
#include <QStyle>
#include <cmath>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int kFrameMs = 50;
constexpr double kRoundMs = 2600;

} // namespace

bool DesktopAnimates(const QWidget& widget) {
    if (widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget) == 0) {
        return false;
    }
    // Desktops write their switch here for programs of another toolkit.
    const QString file =
        QStandardPaths::locate(QStandardPaths::GenericConfigLocation, u"gtk-3.0/settings.ini"_s);
    return file.isEmpty() || QSettings(file, QSettings::IniFormat)
                                 .value(u"Settings/gtk-enable-animations"_s, true)
                                 .toBool();
}

ScanAnimation::ScanAnimation(QWidget* parent) : QWidget(parent) {
    m_tick.setInterval(kFrameMs);
    connect(&m_tick, &QTimer::timeout, this, [this] {
        m_phase = std::fmod(m_phase + kFrameMs / kRoundMs, 1.0);
        update();
    });
}

void ScanAnimation::SetRunning(bool running) {
    m_running = running;
    Settle();
}

void ScanAnimation::Settle() {
    if (m_running && isVisible() && DesktopAnimates(*this)) {
        m_tick.start();
    } else {
        m_tick.stop();
        m_phase = 0;
        update();
    }
}

void ScanAnimation::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double unit = std::min(width(), height()) / 48.0;
    painter.translate(width() / 2.0, height() / 2.0);
    painter.scale(unit, unit);
    const QRectF page(-14, -19, 28, 38);
    painter.setPen(QPen(palette().color(QPalette::WindowText), 2));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(page, 3, 3);
    painter.setPen(QPen(palette().color(QPalette::Disabled, QPalette::WindowText), 2, Qt::SolidLine,
                        Qt::RoundCap));
    for (int line = 0; line < 5; ++line) {
        const double y = page.top() + 8 + line * 5.5;
        painter.drawLine(QPointF(page.left() + 6, y),
                         QPointF(page.right() - (line == 4 ? 14 : 6), y));
    }
    if (m_tick.isActive()) {
        // Slower at its two ends.
        const double way = (1 - std::cos(m_phase * 2 * M_PI)) / 2;
        const double y = page.top() + 4 + way * (page.height() - 8);
        QColor light = palette().color(QPalette::Highlight);
        painter.setPen(QPen(light, 2.5, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(page.left() - 4, y), QPointF(page.right() + 4, y));
        light.setAlpha(45);
        painter.fillRect(QRectF(page.left() + 1, y - 4, page.width() - 2, 8), light);
    }
}

void ScanAnimation::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    Settle();
}

void ScanAnimation::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    Settle();
}

} // namespace velmora
