// velmora init: makes an archive.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Commands.h"
#include "cli/Ending.h"
#include "cli/MessageIds.h"
#include "cli/Session.h"
#include "core/Messages.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "store/Template.h"

using namespace Qt::StringLiterals;

namespace velmora {

int RunInit(const Arguments& arguments, Output& output) {
    for (const char* option : {"--archive", "--user-key"}) {
        if (arguments.Has(option)) {
            throw UsageError{kUnknownOption, {QString::fromLatin1(option)}};
        }
    }
    const QString folder = MachinePathOf(arguments.Operands().front());
    if (const auto error = platform::CreateFolders(folder); !error.Ok()) {
        throw CommandError{kUnusable, folder + u": "_s + error.text};
    }
    CreateDatabase(platform::ToLogical(folder));
    output.Line(GetMessage(kArchiveMade, {folder}));
    return kDone;
}

} // namespace velmora
