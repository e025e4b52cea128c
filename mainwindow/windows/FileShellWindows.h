// The windows of file operations: progress, questions, and the desktop's clipboard.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/FileOperations.h"
#include "mainwindow/windows/FrmFileProgress.h"

#include <QTimer>
#include <memory>

namespace velmora {

// Shows an operation that takes longer than a moment, and puts its questions.
//   FileShellWindows windows(this); DesktopClipboard clipboard;
//   FileOperations operations(windows, clipboard);
class FileShellWindows : public QObject, public ShellView {
    Q_OBJECT

  public:
    // `owner` must outlive this object. The progress is shown after `momentMs`, or before the
    // first question.
    explicit FileShellWindows(QWidget* owner, int momentMs = 1000);
    ~FileShellWindows() override;

    void Begin(ShellWork work) override;
    void ShowProgress(const platform::CarryProgress& progress) override;
    [[nodiscard]] bool IsCancelled() const override;
    platform::ConflictAnswer AskConflict(const platform::Conflict& conflict) override;
    platform::ProblemAnswer AskProblem(const platform::Problem& problem) override;
    void End() override;

  private:
    void ShowWindow();

    QWidget* m_owner;
    QTimer m_moment{this};
    std::unique_ptr<FrmFileProgress> m_progress;
};

// Reads the clipboard again only after it changed: asking another program takes its time.
class DesktopClipboard : public QObject, public FileClipboard {
    Q_OBJECT

  public:
    DesktopClipboard();

    [[nodiscard]] FileList Read(QStringList* foreign = nullptr) const override;
    void Write(const FileList& list) override;

  Q_SIGNALS:
    // Another list is there, by whichever program.
    void Changed();

  private:
    void Reload() const;

    mutable bool m_known = false;
    mutable FileList m_list;
    mutable QStringList m_foreign;
};

} // namespace velmora
