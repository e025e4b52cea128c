// What the first activation of the main window does.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Activation.h"

#include "core/CommonFunctions.h"
#include "core/Dialogue.h"
#include "core/Events.h"
#include "core/Failure.h"
#include "core/Globals.h"
#include "core/MessageIds.h"
#include "core/Messages.h"
#include "core/Settings.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int kDocuments = 5;

// This question is no message of the table: only Italian users are ever asked, all others go
// straight on.
Answer AskForDefaultFolder() {
    return Ask(QStringLiteral("Si desidera creare automaticamente una cartella predefinita "
                              "'Velmora' in 'Documenti' per consentire l'archiviazione dei dati?"),
               u"Primo avvio"_s, Icon::Question);
}

void FillEmptyTree(ActivationHost& host) {
    YieldToEvents();
    if (CurrentLanguage() == Language::Italian) {
        if (AskForDefaultFolder() == Answer::Yes) {
            AutoCreateVMFolder(
                [&host](const QString& path, const QString& description, const QString& iconId) {
                    host.AddIndexedFolder(path, description, iconId);
                });
        } else {
            const Hourglass busy;
            host.ShowFrmGestFolders();
        }
    }
    host.InitializeTreeView();
}

void RunUnattended(ActivationHost& host) {
    const bool shutDown = Program().gShutdownAfterIndexing;
    YieldToEvents();
    const bool cancelled = host.RunUnattendedUpdate(shutDown);
    if (!cancelled && shutDown) {
        host.ShutDownPC(true);
    }
    host.UnloadFrmMain();
}

void ReportUpdatedSoftware() {
    const QString marker = gProgramPath() + u"\\need.rebuild"_s;
    if (!VerifyExistsFileName(marker)) {
        return;
    }
    Tell(GetMessage(349), GetMessage(116), Icon::Exclamation);
    Guard("FrmMain", "Form_Activate",
          [&] { Check(platform::RemoveFile(MachinePath(marker)), marker); });
}

} // namespace

void RunFirstActivation(ActivationState& state, ActivationHost& host) {
    if (!state.FirstActivation) {
        return;
    }
    state.FirstActivation = false;
    if (state.EmptyTree) {
        state.EmptyTree = false;
        FillEmptyTree(host);
    }
    const bool dismissed = NumericValue(GetSetting(u"FTMessages"_s, u"QS"_s)) == 1;
    if (!dismissed && CurrentLanguage() == Language::Italian) {
        host.ShowFrmQuickStart();
    }
    if (Program().gAutoIndexing) {
        RunUnattended(host);
    } else {
        ReportUpdatedSoftware();
    }
}

void AutoCreateVMFolder(const std::function<void(const QString& path, const QString& description,
                                                 const QString& iconId)>& addRow) {
    Guard("Starter", "AutoCreateVMFolder", [&] {
        const QString documents = GetSpecialFolderPath(kDocuments);
        if (documents.isEmpty()) {
            throw Error(kNoDocumentsFolder, GetMessage(kNoDocumentsFolder));
        }
        const QString name = u"Velmora"_s;
        // Made under the folder's own spelling: capitals are for the tables only.
        const QString folder = platform::JoinPath(documents, name);
        Check(platform::CreateFolders(MachinePath(folder)), folder);
        addRow(platform::Capitals(folder), name, u"FLDCL"_s);
    });
}

} // namespace velmora
