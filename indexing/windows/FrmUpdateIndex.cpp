// The progress window of an index update.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/windows/FrmUpdateIndex.h"

#include "core/Events.h"
#include "core/Globals.h"
#include "core/MessageIds.h"
#include "core/Messages.h"
#include "core/windows/Captions.h"
#include "core/windows/Looks.h"
#include "indexing/MessageIds.h"
#include "indexing/windows/ProblemModel.h"
#include "ui_FrmUpdateIndex.h"

#include <QClipboard>
#include <QTimer>

namespace velmora {

namespace {

constexpr int kStartMs = 100;
constexpr int kProblemsWidth = 860; // paths and reasons side by side

} // namespace

FrmUpdateIndex::FrmUpdateIndex(QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::FrmUpdateIndex>()),
      m_tmrStartIdx(new QTimer(this)) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    MakeHeading(*m_ui->lblStatus);
    m_tmrStartIdx->setObjectName(u"tmrStartIdx");
    m_tmrStartIdx->setInterval(kStartMs);
    m_tmrStartIdx->setSingleShot(true);
    connect(m_tmrStartIdx, &QTimer::timeout, this, &FrmUpdateIndex::tmrStartIdx_Timer);
    connect(m_ui->cmdAnnulla, &QPushButton::clicked, this, &FrmUpdateIndex::cmdAnnulla_Click);
    connect(m_ui->cmdClose, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_ui->cmdCopyList, &QPushButton::clicked, this, &FrmUpdateIndex::cmdCopyList_Click);
    connect(m_ui->cmdRetry, &QPushButton::clicked, this, &FrmUpdateIndex::cmdRetry_Click);
    connect(m_ui->chkAutoShutDown, &QCheckBox::toggled, this,
            &FrmUpdateIndex::chkAutoShutDown_Click);
}

FrmUpdateIndex::~FrmUpdateIndex() = default;

void FrmUpdateIndex::TickAutoShutDown() {
    m_ui->chkAutoShutDown->setChecked(true);
}

void FrmUpdateIndex::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!event->spontaneous()) {
        Form_Load();
    }
}

void FrmUpdateIndex::Form_Load() {
    Cancelled = false;
    UpdateView& view = *this;
    m_status = std::make_unique<UpdateStatus>(view);
    m_ui->chkAutoShutDown->setVisible(EnableAutoShutDown);
    if (EnableAutoShutDown) {
        EnableAutoShutDown = false;
        m_ui->chkAutoShutDown->setChecked(false);
    }
    ShutDownPC = m_ui->chkAutoShutDown->isChecked();
    m_ui->stkPages->setCurrentWidget(m_ui->pagRun);
    m_ui->cmdAnnulla->setVisible(true);
    m_ui->cmdAnnulla->setEnabled(true);
    m_ui->cmdClose->setVisible(false);
    m_ui->cmdCopyList->setVisible(false);
    m_ui->cmdRetry->setVisible(false);
    m_ui->aniIdx->setVisible(true);
    m_ui->prgTotal->setValue(0);
    m_ui->prgPage->setValue(0);
    m_ui->txtLog->clear();
    ShowStep(GetMessage(239));
    m_tmrStartIdx->start();
}

void FrmUpdateIndex::tmrStartIdx_Timer() {
    m_added = FileOrFolderToAdd;
    UpdateIndex(*this, *this, *m_status);
    m_status.reset();
    const bool stay = !IndexReport.problems.empty() && !IndexReport.fault && !IndexReport.aborted &&
                      !Cancelled && !ShutDownPC && !Program().gAutoIndexing;
    if (stay) {
        ShowProblems();
    } else {
        accept();
    }
}

void FrmUpdateIndex::cmdAnnulla_Click() {
    m_ui->cmdAnnulla->setEnabled(false);
    ShowStep(GetMessage(kCancelling));
    if (m_status) {
        m_status->Abort();
    }
    YieldToEvents();
    Cancelled = true;
}

void FrmUpdateIndex::reject() {
    if (!m_status) {
        QDialog::reject();
    } else if (m_ui->cmdAnnulla->isEnabled()) {
        cmdAnnulla_Click();
    }
}

void FrmUpdateIndex::chkAutoShutDown_Click() {
    ShutDownPC = m_ui->chkAutoShutDown->isChecked();
}

void FrmUpdateIndex::ShowProblems() {
    delete m_ui->lvwProblems->model(); // of an earlier run
    auto* model = new ProblemModel(IndexReport.problems, this);
    resize(std::max(width(), kProblemsWidth), height());
    m_ui->lvwProblems->setModel(model);
    m_ui->lvwProblems->header()->setSectionResizeMode(ProblemModel::File, QHeaderView::Stretch);
    m_ui->lvwProblems->header()->setStretchLastSection(false);
    m_ui->lvwProblems->resizeColumnToContents(ProblemModel::State);
    m_ui->lvwProblems->setColumnWidth(ProblemModel::Reason, width() / 3);
    m_ui->lblProblems->setText(GetMessage(kUnreadCount, {QString::number(model->rowCount())}));
    ShowStep(SummaryMessage(*this));
    m_ui->aniIdx->setVisible(false);
    m_ui->chkAutoShutDown->setVisible(false);
    m_ui->cmdAnnulla->setVisible(false);
    m_ui->cmdCopyList->setVisible(true);
    m_ui->cmdRetry->setVisible(true);
    m_ui->cmdClose->setVisible(true);
    m_ui->cmdClose->setDefault(true);
    m_ui->stkPages->setCurrentWidget(m_ui->pagProblems);
    m_ui->cmdClose->setFocus();
}

void FrmUpdateIndex::cmdCopyList_Click() {
    QApplication::clipboard()->setText(
        static_cast<ProblemModel*>(m_ui->lvwProblems->model())->AsText());
}

void FrmUpdateIndex::cmdRetry_Click() {
    Retry = true;
    ForceRecreate = false;
    FileOrFolderToAdd = m_added;
    Form_Load();
}

void FrmUpdateIndex::ShowStep(const QString& text) {
    m_ui->lblStatus->setText(text);
}

void FrmUpdateIndex::SetTotalProgress(int percent) {
    m_ui->prgTotal->setValue(percent);
}

void FrmUpdateIndex::SetFileProgress(int percent) {
    m_ui->prgPage->setValue(percent);
}

int FrmUpdateIndex::LogLength() const {
    return m_ui->txtLog->document()->characterCount() - 1; // it counts its own end
}

void FrmUpdateIndex::EmptyLog() {
    m_ui->txtLog->clear();
}

void FrmUpdateIndex::AppendLog(const QString& text) {
    m_ui->txtLog->moveCursor(QTextCursor::End);
    m_ui->txtLog->insertPlainText(text);
    m_ui->txtLog->moveCursor(QTextCursor::End);
}

QString RunFolderChanges(const FolderChanges& changes, QWidget* parent) {
    if (!changes.Any()) {
        return {};
    }
    FrmUpdateIndex window(parent);
    window.FileOrFolderToAdd = changes.add;
    window.FileOrFolderToRemove = changes.remove;
    window.exec();
    return SummaryMessage(window);
}

} // namespace velmora
