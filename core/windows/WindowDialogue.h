// The dialogue and the reporter of a process with windows.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/Dialogue.h"
#include "core/Failure.h"

namespace velmora {

// Message boxes, the folder chooser and hints as windows over the active one.
class WindowDialogue : public Dialogue {
  public:
    void Tell(const QString& text, const QString& title, Icon icon) override;
    Answer Ask(const QString& text, const QString& title, Icon icon) override;
    QString BrowseForFolder(const QString& prompt, const QString& start) override;
    bool ShowHint(int pictureId, const QString& text, const QString& title) override;
    void SetPointer(Pointer pointer) override;
    Pointer CurrentPointer() const override;
};

// Shows FrmReportErr.
class WindowReporter : public Reporter {
  public:
    bool Retry(const QString& report) override;
};

} // namespace velmora
