// velmora index: brings the index up to date, or tells of the documents in it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Commands.h"
#include "cli/Ending.h"
#include "cli/IndexProgress.h"
#include "cli/LedgerReport.h"
#include "cli/MessageIds.h"
#include "cli/Session.h"
#include "core/Messages.h"
#include "indexing/IndexedFolders.h"
#include "indexing/MessageIds.h"
#include "indexing/UpdateLists.h"
#include "platform/LogicalPath.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// The paths that a partial update reads; `code` becomes kIncomplete when one of them cannot go
// into the list.
PathDictionary PathsOf(const QByteArrayList& arguments, int& code, Output& output) {
    PathDictionary paths;
    for (const QByteArray& argument : arguments) {
        const QString path = LogicalPathOf(argument);
        if (path.contains(u'\n') || path.contains(u'\r')) {
            output.Complain(MachinePathOf(argument) + u": "_s + GetMessage(kLineBreakInName));
            code = kIncomplete;
        } else {
            paths.Add(path);
        }
    }
    return paths;
}

// Paths go to the engine in capitals: what it cannot find comes back so, and is told as typed.
void SpellAsTyped(std::vector<engine::Problem>& problems, const QByteArrayList& arguments) {
    for (const QByteArray& argument : arguments) {
        const QString typed = MachinePathOf(argument);
        for (engine::Problem& problem : problems) {
            if (platform::Capitals(problem.file) == platform::Capitals(typed)) {
                problem.file = typed;
            }
        }
    }
}

bool NothingToIndex(const UpdateMembers& members) {
    return members.UpdateAll && ListIndexedFolders().isEmpty() &&
           !(members.IndexMail && ReadMailConfig().configured);
}

void PrintSummary(const engine::IndexReport& report, Output& output) {
    output.Line(GetMessage(kIndexSummary,
                           {QString::number(report.added), QString::number(report.changed),
                            QString::number(report.removed), QString::number(report.unchanged),
                            QString::number(report.problems.size())}));
}

int CodeOf(const UpdateMembers& members) {
    const engine::IndexReport& report = members.IndexReport;
    if (report.fault) {
        return kUnusable;
    }
    if (members.Cancelled) {
        return kCancelled;
    }
    if (report.aborted) {
        return kUnusable; // before it began, for a reason that has been told
    }
    return report.problems.empty() && !report.otherFoldersMissing ? kDone : kIncomplete;
}

} // namespace

int RunIndex(const Arguments& arguments, Output& output) {
    const bool partial = !arguments.Operands().isEmpty();
    for (const char* report : {"--problems", "--counts"}) {
        for (const char* update : {"--rebuild", "--retry", "--mail"}) {
            arguments.RefuseTogether(report, update);
        }
    }
    arguments.RefuseTogether("--problems", "--counts");
    arguments.RefuseTogether("--rebuild", "--retry");
    arguments.RefuseTogether("--quiet", "--verbose");
    if (arguments.Has("--problems")) {
        return PrintProblems(arguments, output);
    }
    if (arguments.Has("--counts")) {
        return PrintCounts(arguments, output);
    }
    if (arguments.Has("--json")) {
        throw UsageError{kOptionNeedsOption, {u"--json"_s, u"--problems | --counts"_s}};
    }
    if (partial && arguments.Has("--rebuild")) {
        throw UsageError{kNotTogether, {u"--rebuild"_s, u"PATH"_s}};
    }
    int code = kDone;
    UpdateMembers members;
    members.ForceRecreate = arguments.Has("--rebuild");
    members.Retry = arguments.Has("--retry");
    members.IndexMail = arguments.Has("--mail");
    members.UpdateAll = !partial;
    if (partial) {
        members.FileOrFolderToAdd = PathsOf(arguments.Operands(), code, output);
    }
    OpenArchive(arguments);
    if (NothingToIndex(members)) {
        output.Complain(GetMessage(kNoFolders));
        code = kIncomplete;
    }
    RunUpdate(members, {arguments.Has("--quiet"), arguments.Has("--verbose")}, output);
    if (!members.IndexReport.fault) {
        SpellAsTyped(members.IndexReport.problems, arguments.Operands());
        ComplainOfProblems(members.IndexReport.problems, output);
        if (members.Cancelled) {
            output.Complain(GetMessage(kIndexCancelled));
        }
        PrintSummary(members.IndexReport, output);
    }
    const int ending = CodeOf(members);
    return ending == kDone ? code : ending;
}

} // namespace velmora
