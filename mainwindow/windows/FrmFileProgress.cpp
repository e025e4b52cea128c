// The progress of a copy, a move or a deletion.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FrmFileProgress.h"

#include "core/Messages.h"
#include "core/windows/Captions.h"
#include "mainwindow/FileMessageIds.h"
#include "ui_FrmFileProgress.h"

#include <QLayout>

namespace velmora {

namespace {

void ShowPath(QLabel& label, const QString& path) {
    label.setText(label.fontMetrics().elidedText(OneLine(path), Qt::ElideMiddle, label.width()));
}

} // namespace

FrmFileProgress::FrmFileProgress(ShellWork work, QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::FrmFileProgress>()) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    setWindowModality(Qt::ApplicationModal);
    setWindowTitle(ShellTitle(work));
    const bool hasTarget = work != ShellWork::Delete;
    m_ui->lblToCaption->setVisible(hasTarget);
    m_ui->lblTo->setVisible(hasTarget);
    m_ui->lblStep->setText(GetMessage(kCountingFiles));
    m_ui->barProgress->setAccessibleName(windowTitle());
    connect(m_ui->cmdAnnulla, &QPushButton::clicked, this, &QDialog::reject);
    adjustSize();
    layout()->activate(); // paths are cut to the width of their labels, even before the first show
    m_clock.start();
}

FrmFileProgress::~FrmFileProgress() = default;

void FrmFileProgress::ShowProgress(const platform::CarryProgress& progress) {
    m_rate.Add(progress.bytes, m_clock.elapsed());
    if (Cancelled) {
        return;
    }
    m_ui->lblStep->setText(ProgressText(progress));
    ShowPath(*m_ui->lblFrom, progress.from);
    ShowPath(*m_ui->lblTo, progress.to);
    m_ui->lblRate->setText(RateText(progress, m_rate));
    const std::optional<int> part = ProgressPart(progress);
    m_ui->barProgress->setRange(0, part ? 1000 : 0);
    m_ui->barProgress->setValue(part.value_or(0));
}

void FrmFileProgress::reject() {
    Cancelled = true;
    m_ui->lblStep->setText(GetMessage(3125));
    m_ui->cmdAnnulla->setEnabled(false);
}

} // namespace velmora
