// The one place that drives the indexer: request, outcome, status handler and the run itself.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/IndexJob.h"
#include "indexing/PathDictionary.h"

#include <QString>
#include <optional>

namespace velmora {

// What a caller sets before a run and reads after it.
struct UpdateMembers {
    bool ForceRecreate = false;      // in: a new index in place of the old one
    bool IndexMail = false;          // in: mail too
    bool UpdateAll = false;          // in: all indexed folders instead of FileOrFolderToAdd
    bool Retry = false;              // in: what was not read is tried again; false after the run
    bool EnableAutoShutDown = false; // in: offer to switch the machine off afterwards
    // In: what a partial update adds, and the folders whose files leave the index. Both are
    // nothing again after the run.
    std::optional<PathDictionary> FileOrFolderToAdd;
    std::optional<PathDictionary> FileOrFolderToRemove;

    bool Cancelled = false;          // out
    bool ShutDownPC = false;         // out: the box is ticked
    engine::IndexReport IndexReport; // out: what the engine tells of its last job
};

// Where a run shows itself.
class UpdateView {
  public:
    virtual ~UpdateView() = default;
    virtual void ShowStep(const QString& text) = 0;
    virtual void SetTotalProgress(int percent) = 0; // of the whole run
    virtual void SetFileProgress(int percent) = 0;  // of one file
    // Characters in the log.
    [[nodiscard]] virtual int LogLength() const = 0;
    virtual void EmptyLog() = 0;
    // Adds lines, each of which closes in a line break, and moves the caret behind them.
    virtual void AppendLog(const QString& text) = 0;
};

// What the engine calls while it works. Lets pending events run, so that a button can be pressed.
class UpdateStatus : public engine::StatusHandler {
  public:
    static constexpr int kLongestLog = 30'000; // characters

    explicit UpdateStatus(UpdateView& view) : m_view(view) {}

    void ReceiveProgress(int percent) override; // more than 100 is not looked at
    void ReceiveStep(int step) override;        // none but 1 to 8 is looked at
    void ReceiveFileInfo(const QString& name, int percentDone) override;
    // Every file comes into the log; all that are there are shown at once.
    void ReceiveFiles(const QStringList& names, int percentDone) override;
    bool CheckForAbort() override;

    // The engine ends its job at its next CheckForAbort.
    void Abort() { m_abort = true; }

  private:
    UpdateView& m_view;
    bool m_abort = false;
};

// Runs the engine's job that `members` asks for on the index of the open archive; returns when it
// has ended. A fault is told; where a new index mends it, that is asked, and done at once in an
// unattended run, in which nobody is there to ask. That a damaged index was made anew is told; so
// is that other folders may be missing in it, and a run over all of them asked or, unattended,
// made.
void UpdateIndex(UpdateMembers& members, UpdateView& view, UpdateStatus& status);

// Appends the paths of all files in the folder, at any depth, to the list file, one a line; makes
// the file when it is missing and there is something to write. False when not every file could be
// named in it: its name holds a line break.
bool BuildFileListToDelete(const QString& folder, const QString& listFile, UpdateView& view);

// What came of a run in a line: cancelled, failed, or how many documents are new, changed, removed.
QString SummaryMessage(const UpdateMembers& members);

} // namespace velmora
