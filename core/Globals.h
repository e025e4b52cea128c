// The process-wide variables and the seams to the person in front: one struct, one accessor.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <functional>

namespace velmora {

class Reporter;
class Dialogue;

// Written by Starter at the start, read everywhere. All folders are logical paths.
struct Globals {
    // Folder of the current archive; without a closing back-slash when it is the program folder.
    QString gArchivePath;
    // Value of every suser column: "DOMAIN.USER" in capitals, or "SHARED".
    QString gUserKey;
    bool gIsDefaultArchive = true;
    // Windows locale id; 0 means English (see CurrentLanguage).
    qint32 gLocaleId = 0;
    bool gAutoIndexing = false;
    bool gShutdownAfterIndexing = false;
    // Major version of the registered PDF viewer; -1 when unknown.
    qint16 gAcrobatMajorVersion = -1;
    // Set by SelectLanguageHelp.
    QString HelpFile;

    // What FindFilesAPI found; its users clear it first (FoundFiles()).
    QStringList foundFiles;

    // Who answers failures, questions and yields in this process. Null means the plain text ones
    // (standard error, "no"). Not owned. Installed by the app, the command line and tests.
    Reporter* reporter = nullptr;
    Dialogue* dialogue = nullptr;
    std::function<void()> yieldToEvents;
    // Caption of the main window as it stands, for an error report; empty when there is none.
    std::function<QString()> mainCaption;
};

// The one set in force.
Globals& Program();

// The folder of the installation as a logical path without closing back-slash, asked of the
// machine each time.
QString gProgramPath();

// A test's own set, in force for the lifetime of this object. It starts with default values and
// the seams of the set it covers.
class ScopedGlobals {
  public:
    ScopedGlobals();
    ~ScopedGlobals();
    ScopedGlobals(const ScopedGlobals&) = delete;
    ScopedGlobals& operator=(const ScopedGlobals&) = delete;

    Globals* operator->() { return &m_own; }

  private:
    Globals m_own;
    Globals* m_covered;
};

} // namespace velmora
