// What the index could not read.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/UnreadDocuments.h"

#include "core/Dialogue.h"
#include "core/Failure.h"
#include "core/Globals.h"
#include "core/Messages.h"
#include "engine/Ledger.h"
#include "indexing/EngineWords.h"
#include "indexing/UpdateLists.h"
#include "platform/LogicalPath.h"

using namespace Qt::StringLiterals;

namespace velmora {

std::vector<engine::Problem> ListUnreadDocuments() {
    return Guard("FrmUpdateIndex", "ShowLedger", []() -> std::vector<engine::Problem> {
        try {
            const Hourglass hourglass;
            return engine::ListProblems(ArchiveIndexPath(),
                                        platform::JoinPath(gProgramPath(), u"default.abc"_s));
        } catch (const engine::IndexError& error) {
            Tell(FaultMessage(error.fault, QString::fromUtf8(error.what())), GetMessage(226),
                 Icon::Critical);
            return {};
        }
    });
}

DocumentPlace PlaceOf(const engine::Problem& problem) {
    const QString file = problem.file.section(u'>', 0, 0);
    const qsizetype slash = file.lastIndexOf(u'/');
    return {slash <= 0 ? u"/"_s : file.first(slash), problem.file.sliced(slash + 1)};
}

} // namespace velmora
