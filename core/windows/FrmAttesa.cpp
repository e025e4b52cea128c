// The wait window and its animation.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/windows/FrmAttesa.h"

#include "core/windows/Captions.h"
#include "core/windows/Pictures.h"
#include "ui_FrmAttesa.h"

#include <QPainter>
#include <cmath>

namespace velmora {

namespace {

constexpr int kFrameMs = 40;
constexpr double kFramesPerRound = 50;

} // namespace

WaitAnimation::WaitAnimation(QWidget* parent) : QWidget(parent) {
    m_tick.setInterval(kFrameMs);
    connect(&m_tick, &QTimer::timeout, this, [this] {
        m_phase = std::fmod(m_phase + 1 / kFramesPerRound, 1.0);
        update();
    });
}

void WaitAnimation::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PaintLogo(painter, rect(), m_phase);
}

void WaitAnimation::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_tick.start();
}

void WaitAnimation::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    m_tick.stop();
}

FrmAttesa::FrmAttesa(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
      m_ui(std::make_unique<Ui::FrmAttesa>()) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
}

FrmAttesa::~FrmAttesa() = default;

void FrmAttesa::SetText(const QString& text) {
    m_ui->lblWait->setText(text);
}

} // namespace velmora
