// Start of the process: one copy, language, user, viewer plug-in, archive, flags, main window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <memory>

namespace platform {
class SingleCopy;
}

namespace velmora {

// What the archive selection window answers.
struct ArchiveChoice {
    bool cancelled = false;
    QString path; // empty: the default archive
};

// What the start needs of the world: its windows, and the machine where that has to be scripted.
class StarterHost {
  public:
    StarterHost();
    virtual ~StarterHost();
    StarterHost(const StarterHost&) = delete;
    StarterHost& operator=(const StarterHost&) = delete;

    // Shows the splash and comes back when it has closed.
    virtual void ShowSplash() = 0;
    // Shows FrmArchiveSelection modally.
    virtual ArchiveChoice ShowArchiveSelection() = 0;
    // Shows the main window and comes back at once.
    virtual void ShowFrmMain() = 0;

    // Whether another copy of this executable runs for this user. From this call on this copy
    // counts as running, for as long as the host lives.
    virtual bool IsSecondCopy();
    // The system's Windows locale id.
    virtual qint32 GetUserDefaultLCID();
    virtual int GetWinVersion();
    virtual void GetCurrentLogon(QString& user, QString& domain);
    // The same for the old family of systems (GetWinVersion -1).
    virtual void GetCurrentLogon16(QString& user, QString& domain);
    virtual QString GetWksName();
    // Registers one component file; nothing is waited for and no result looked at. This machine
    // keeps no such register, so nothing happens.
    virtual void RegisterComponent(const QString& file);
    // Logical path of the program that opens a PDF document. Empty here: the one make of viewer
    // that counts does not exist for this system, so the desktop need not be asked.
    virtual QString PdfViewer();
    // Major product version of that program; below 0 when it has none.
    virtual int MajorVersion(const QString& program);
    // Folders of the installed viewers that take the plug-in, as registered: several folders in
    // one text are parted by ";" and the first counts. None on this machine.
    virtual QStringList ViewerFolders();

  private:
    std::unique_ptr<platform::SingleCopy> m_copy;
};

namespace Starter {

// Runs the start with the raw command line (all arguments, parted by blanks). Returns when the
// main window is shown, or earlier when there is nothing to show: a second copy, a cancelled
// archive selection, a failure that was cancelled.
void main(StarterHost& host, const QString& commandLine);

// The arguments behind the program's name as one command line.
QString CommandLine(const QStringList& arguments);

// Hands every lib\*.dll, then every lib\*.ocx of the program folder to RegisterComponent.
void RepairInstallation(StarterHost& host);
// Major version of the registered viewer; 65535 when there is none or it is another make.
quint16 GetAcrobatMajorVersion(StarterHost& host);
// Removes plug_ins\dtsacro.api from every viewer's folder, or lays it there.
void UninstallAcrobatPlugin(StarterHost& host);
void InstallAcrobatPlugin(StarterHost& host);

} // namespace Starter

// Sets the C locale's number format back to "C", since reading and writing numbers in files and
// in outside libraries relies on the full stop. Call right after creating the application.
void PrepareLocale();

} // namespace velmora
