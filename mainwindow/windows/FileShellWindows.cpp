// The windows of file operations: progress, questions, and the desktop's clipboard.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FileShellWindows.h"

#include "core/Messages.h"
#include "mainwindow/FileMessageIds.h"
#include "mainwindow/windows/FrmFileConflict.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace velmora {

using platform::CarryStep;
using platform::ProblemAnswer;
using platform::ProblemChoice;

FileShellWindows::FileShellWindows(QWidget* owner, int momentMs) : m_owner(owner) {
    m_moment.setSingleShot(true);
    m_moment.setInterval(momentMs);
    connect(&m_moment, &QTimer::timeout, this, &FileShellWindows::ShowWindow);
}

FileShellWindows::~FileShellWindows() = default;

void FileShellWindows::Begin(ShellWork work) {
    m_progress = std::make_unique<FrmFileProgress>(work, m_owner);
    m_moment.start();
}

void FileShellWindows::ShowProgress(const platform::CarryProgress& progress) {
    m_progress->ShowProgress(progress);
}

bool FileShellWindows::IsCancelled() const {
    return m_progress->Cancelled;
}

platform::ConflictAnswer FileShellWindows::AskConflict(const platform::Conflict& conflict) {
    ShowWindow();
    FrmFileConflict window(conflict, m_progress.get());
    window.exec();
    return window.Answer;
}

ProblemAnswer FileShellWindows::AskProblem(const platform::Problem& problem) {
    ShowWindow();
    QMessageBox box(QMessageBox::Warning, GetMessage(99), ProblemText(problem),
                    QMessageBox::NoButton, m_progress.get());
    box.setTextFormat(Qt::PlainText); // names of files come in here
    const bool isSpace = problem.step == CarryStep::Space;
    QPushButton* retry = problem.step == CarryStep::IntoItself
                             ? nullptr
                             : box.addButton(GetMessage(1029), QMessageBox::AcceptRole);
    QPushButton* skip =
        box.addButton(GetMessage(isSpace ? kContinueAnyway : kSkip), QMessageBox::DestructiveRole);
    QPushButton* cancel = box.addButton(GetMessage(1001), QMessageBox::RejectRole);
    skip->setObjectName(u"cmdSkip");
    cancel->setObjectName(u"cmdAnnulla");
    if (retry) {
        retry->setObjectName(u"cmdRetry");
    }
    box.setDefaultButton(retry ? retry : skip);
    box.setEscapeButton(cancel);
    auto* forAll = new QCheckBox(GetMessage(kForAll));
    forAll->setObjectName(u"chkForAll");
    forAll->setVisible(!isSpace);
    if (!isSpace) {
        box.setCheckBox(forAll);
    } else {
        forAll->setParent(&box);
    }
    box.exec();
    const auto* clicked = box.clickedButton();
    if (clicked == skip) {
        return {ProblemChoice::Skip, !isSpace && forAll->isChecked()};
    }
    return {retry && clicked == retry ? ProblemChoice::Retry : ProblemChoice::Cancel, false};
}

void FileShellWindows::End() {
    m_moment.stop();
    m_progress.reset();
}

void FileShellWindows::ShowWindow() {
    m_moment.stop();
    if (!m_progress->isVisible()) {
        m_progress->show();
    }
}

DesktopClipboard::DesktopClipboard() {
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, [this] {
        m_known = false;
        Q_EMIT Changed();
    });
}

FileList DesktopClipboard::Read(QStringList* foreign) const {
    if (!m_known) {
        Reload();
    }
    if (foreign) {
        *foreign = m_foreign;
    }
    return m_list;
}

void DesktopClipboard::Write(const FileList& list) {
    if (list.IsEmpty()) {
        QGuiApplication::clipboard()->clear();
    } else {
        QGuiApplication::clipboard()->setMimeData(ToMimeData(list).release());
    }
    m_known = false;
}

void DesktopClipboard::Reload() const {
    m_list = {};
    m_foreign.clear();
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (data && HasFileList(*data)) {
        m_list = FromMimeData(*data, &m_foreign);
    }
    m_known = true;
}

} // namespace velmora
