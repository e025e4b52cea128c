// What the first activation of the main window does: first-start question, unattended run, notice.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>

namespace velmora {

// What the first activation needs of the main window.
class ActivationHost {
  public:
    virtual ~ActivationHost() = default;
    // Adds a row to the indexed folders of this user.
    virtual void AddIndexedFolder(const QString& path, const QString& description,
                                  const QString& iconId) = 0;
    virtual void ShowFrmGestFolders() = 0;
    virtual void InitializeTreeView() = 0;
    virtual void ShowFrmQuickStart() = 0;
    // Shows FrmUpdateIndex for unattended work, with chkAutoShutDown ticked when told so, and
    // answers whether it was cancelled.
    virtual bool RunUnattendedUpdate(bool tickShutDown) = 0;
    virtual void ShutDownPC(bool force) = 0;
    // Unloads the main window, which ends the process.
    virtual void UnloadFrmMain() = 0;
};

// The two flags that FrmMain.Form_Load sets.
struct ActivationState {
    bool FirstActivation = true;
    // The folder tree holds its root node only.
    bool EmptyTree = false;
};

// The part of Form_Activate that runs once; does nothing when FirstActivation is false.
void RunFirstActivation(ActivationState& state, ActivationHost& host);

// Makes the folder "Velmora" in the user's documents and hands the row to `addRow`: path in
// capitals, description, icon key.
void AutoCreateVMFolder(const std::function<void(const QString& path, const QString& description,
                                                 const QString& iconId)>& addRow);

} // namespace velmora
