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
#include "indexing/UnreadDocuments.h"
#include "indexing/windows/ProblemModel.h"
#include "ui_FrmUpdateIndex.h"

#include <QClipboard>
#include <QSortFilterProxyModel>
#include <QTimer>

namespace velmora {

namespace {

constexpr int kStartMs = 100;
constexpr int kProblemsWidth = 900; // names, reasons and folders side by side
constexpr int kTimeLeftMs = 1000;

} // namespace

FrmUpdateIndex::FrmUpdateIndex(QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::FrmUpdateIndex>()),
      m_tmrStartIdx(new QTimer(this)), m_tmrTimeLeft(new QTimer(this)) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    MakeHeading(*m_ui->lblStatus);
    m_clock.start();
    m_tmrTimeLeft->setInterval(kTimeLeftMs);
    connect(m_tmrTimeLeft, &QTimer::timeout, this, &FrmUpdateIndex::ShowTimeLeft);
    m_tmrStartIdx->setObjectName(u"tmrStartIdx");
    m_tmrStartIdx->setInterval(kStartMs);
    m_tmrStartIdx->setSingleShot(true);
    connect(m_tmrStartIdx, &QTimer::timeout, this, &FrmUpdateIndex::tmrStartIdx_Timer);
    connect(m_ui->cmdAnnulla, &QPushButton::clicked, this, &FrmUpdateIndex::cmdAnnulla_Click);
    connect(m_ui->cmdClose, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_ui->cmdCopyList, &QPushButton::clicked, this, &FrmUpdateIndex::cmdCopyList_Click);
    connect(m_ui->cmdRetry, &QPushButton::clicked, this, &FrmUpdateIndex::cmdRetry_Click);
    connect(m_ui->cmdLedger, &QPushButton::clicked, this, &FrmUpdateIndex::cmdLedger_Click);
    connect(m_ui->chkAutoShutDown, &QCheckBox::toggled, this,
            &FrmUpdateIndex::chkAutoShutDown_Click);
}

FrmUpdateIndex::~FrmUpdateIndex() = default;

void FrmUpdateIndex::TickAutoShutDown() {
    m_ui->chkAutoShutDown->setChecked(true);
}

void FrmUpdateIndex::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (event->spontaneous()) {
        return;
    }
    if (OnlyLedger) {
        ShowStep(GetMessage(kAllUnread));
        SetRunning(false);
        cmdLedger_Click();
    } else {
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
    SetRunning(true);
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

// One page for the run, one for what could not be read, each with its own buttons.
void FrmUpdateIndex::SetRunning(bool running) {
    m_ui->stkPages->setCurrentWidget(running ? m_ui->pagRun : m_ui->pagProblems);
    m_ui->aniIdx->setVisible(running);
    m_ui->aniIdx->SetRunning(running);
    m_ui->cmdAnnulla->setVisible(running);
    m_ui->cmdAnnulla->setEnabled(running);
    for (QPushButton* button :
         {m_ui->cmdCopyList, m_ui->cmdRetry, m_ui->cmdLedger, m_ui->cmdClose}) {
        button->setVisible(!running);
    }
    m_ui->cmdLedger->setEnabled(true);
    m_timeLeft = TimeLeft();
    ShowTimeLeft();
    if (running) {
        m_tmrTimeLeft->start();
        return;
    }
    m_tmrTimeLeft->stop();
    m_ui->chkAutoShutDown->setVisible(false);
    m_ui->cmdClose->setDefault(true);
    m_ui->cmdClose->setFocus();
}

void FrmUpdateIndex::ShowProblems() {
    ShowStep(SummaryMessage(*this));
    SetRunning(false);
    List(IndexReport.problems, kUnreadCount);
}

void FrmUpdateIndex::List(std::vector<engine::Problem> problems, int heading) {
    const std::unique_ptr<QAbstractItemModel> earlier(m_ui->lvwProblems->model());
    auto* sorted = new QSortFilterProxyModel(this);
    auto* model = new ProblemModel(std::move(problems), sorted);
    sorted->setSourceModel(model);
    m_ui->lvwProblems->setModel(sorted);
    m_ui->lvwProblems->sortByColumn(-1, Qt::AscendingOrder); // as they were read
    resize(std::max(width(), kProblemsWidth), height());
    QHeaderView& header = *m_ui->lvwProblems->header();
    header.setSectionResizeMode(ProblemModel::File, QHeaderView::Stretch);
    header.setStretchLastSection(false);
    m_ui->lvwProblems->resizeColumnToContents(ProblemModel::State);
    m_ui->lvwProblems->setColumnWidth(ProblemModel::Reason, width() / 4);
    m_ui->lvwProblems->setColumnWidth(ProblemModel::Folder, width() / 4);
    m_ui->lblProblems->setText(GetMessage(heading, {QString::number(model->rowCount())}));
    m_ui->cmdRetry->setEnabled(model->rowCount() > 0);
    m_ui->cmdCopyList->setEnabled(model->rowCount() > 0);
}

// All that is not read in the index, from earlier runs too; what is tried again is then all of it.
void FrmUpdateIndex::cmdLedger_Click() {
    m_added.reset();
    UpdateAll = true;
    m_ui->cmdLedger->setEnabled(false);
    List(ListUnreadDocuments(), kLedgerCount);
}

void FrmUpdateIndex::cmdCopyList_Click() {
    const auto* sorted = static_cast<QSortFilterProxyModel*>(m_ui->lvwProblems->model());
    QApplication::clipboard()->setText(static_cast<ProblemModel*>(sorted->sourceModel())->AsText());
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
    m_timeLeft.Tell(percent, TimeLeft::Time(m_clock.elapsed()));
}

void FrmUpdateIndex::ShowTimeLeft() {
    m_ui->lblTimeLeft->setText(TimeLeftMessage(m_timeLeft.Left(TimeLeft::Time(m_clock.elapsed()))));
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
