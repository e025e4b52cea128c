// velmora index: brings the index up to date, or lists what it could not read.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Commands.h"
#include "cli/Ending.h"
#include "cli/IndexFaults.h"
#include "cli/IndexProgress.h"
#include "cli/Json.h"
#include "cli/MessageIds.h"
#include "cli/Session.h"
#include "core/Messages.h"
#include "indexing/IndexedFolders.h"
#include "indexing/MessageIds.h"
#include "indexing/UpdateLists.h"
#include "platform/LogicalPath.h"
#include "platform/Names.h"
#include "search/TextQuery.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

QString StateName(engine::ReadState state) {
    switch (state) {
    case engine::ReadState::Read:
        return u"read"_s;
    case engine::ReadState::Partly:
        return u"partly"_s;
    case engine::ReadState::Encrypted:
        return u"encrypted"_s;
    case engine::ReadState::Damaged:
        return u"damaged"_s;
    case engine::ReadState::Unknown:
        return u"unknown"_s;
    case engine::ReadState::NameOnly:
        return u"name-only"_s;
    case engine::ReadState::Failed:
        break;
    }
    return u"failed"_s;
}

std::vector<engine::Problem> ProblemsOf(const QString& folder) {
    try {
        return engine::ListProblems(IndexFolder(), AlphabetFile(), folder);
    } catch (const engine::IndexError& error) {
        throw EndingOf(error);
    }
}

int PrintProblems(const Arguments& arguments, Output& output) {
    if (arguments.Operands().size() > 1) {
        throw UsageError{kArgumentExtra, {platform::DecodeName(arguments.Operands()[1])}};
    }
    const QString folder =
        arguments.Operands().isEmpty() ? QString() : LogicalPathOf(arguments.Operands().front());
    OpenArchive(arguments);
    const std::vector<engine::Problem> problems = ProblemsOf(folder);
    for (const engine::Problem& problem : problems) {
        if (arguments.Has("--json")) {
            output.Utf8(JsonLine({{u"file"_s, problem.file},
                                  {u"state"_s, StateName(problem.state)},
                                  {u"reason"_s, problem.reason}}));
        } else {
            output.Line(ProblemText(problem));
        }
    }
    return problems.empty() ? kDone : kIncomplete;
}

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
    return report.problems.empty() ? kDone : kIncomplete;
}

} // namespace

int RunIndex(const Arguments& arguments, Output& output) {
    const bool partial = !arguments.Operands().isEmpty();
    arguments.RefuseTogether("--problems", "--rebuild");
    arguments.RefuseTogether("--problems", "--mail");
    arguments.RefuseTogether("--quiet", "--verbose");
    if (arguments.Has("--problems")) {
        return PrintProblems(arguments, output);
    }
    if (arguments.Has("--json")) {
        throw UsageError{kOptionNeedsOption, {u"--json"_s, u"--problems"_s}};
    }
    if (partial && arguments.Has("--rebuild")) {
        throw UsageError{kNotTogether, {u"--rebuild"_s, u"PATH"_s}};
    }
    int code = kDone;
    UpdateMembers members;
    members.ForceRecreate = arguments.Has("--rebuild");
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
