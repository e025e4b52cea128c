// A run of the index update, step by step.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/UpdateIndex.h"

#include "core/Dialogue.h"
#include "core/Events.h"
#include "core/Failure.h"
#include "core/Globals.h"
#include "core/Messages.h"
#include "indexing/EngineWords.h"
#include "indexing/MessageIds.h"
#include "indexing/UpdateLists.h"
#include "platform/Files.h"
#include "platform/Folders.h"
#include "platform/LogicalPath.h"

#include <array>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr auto kModule = "FrmUpdateIndex";
// Every file, and the texts of scanned pages by name. What the program itself keeps beside
// documents, and tables, stay out.
const QString kIncludeFilters = u"*.* *.ocr"_s;
const QString kExcludeFilters = u"*.nxp *.coords *.mdb *.dbf *.db *.csv *.xlv *.xlw"_s;

// Asks whether mail is to be read too, as that can take long. An unattended run reads it.
void SettleMail(UpdateMembers& members, bool configured) {
    // Who tries again what was not read has answered before.
    if (!members.IndexMail || !configured || members.Cancelled || members.Retry ||
        Program().gAutoIndexing) {
        return;
    }
    const QString question = GetMessage(142) + u'\n' + GetMessage(181);
    members.IndexMail = Ask(question, GetMessage(10), Icon::Question) == Answer::Yes;
}

engine::IndexJob MakeJob(const UpdateMembers& members, const UpdateLists& lists, bool create,
                         bool mailConfigured, UpdateStatus& status) {
    engine::IndexJob job;
    job.AlphabetFile = platform::JoinPath(gProgramPath(), u"default.abc"_s);
    job.WorkerProgram = platform::WorkerProgram();
    job.IndexPath = ArchiveIndexPath();
    job.ActionCreate = create;
    job.ActionCompress = lists.compress;
    job.ActionAdd = true;
    job.ActionRetry = members.Retry;
    // A run that does not renew mail must not take away what was read of it before.
    job.ActionRemoveDeleted = !mailConfigured || members.IndexMail;
    job.ActionRemoveListed = true;
    job.WholeArchive =
        (members.ForceRecreate || members.UpdateAll) && (members.IndexMail || !mailConfigured);
    job.Shared = !Program().gIsDefaultArchive;
    job.ToAddFileListName = lists.add.Name();
    job.ToRemoveListName = lists.remove.Name();
    job.ToRemoveFolders = lists.removeFolders;
    job.IncludeFilters = kIncludeFilters;
    job.ExcludeFilters = kExcludeFilters;
    job.IndexName = u"VMINDEX"_s;
    job.StatusHandler = &status;
    return job;
}

// One pass: lists, job, outcome.
void RunJob(UpdateMembers& members, UpdateView& view, UpdateStatus& status,
            const MailConfig& mail) {
    // The first index needs no command of its own. What it is to hold stays the caller's choice:
    // a partial update then makes an index of just that part.
    const QString indexFile = ArchiveIndexPath() + u"\\index_a.ix"_s;
    const bool create = members.ForceRecreate || !platform::IsFile(platform::ToMachine(indexFile));
    UpdateLists lists;
    const bool ready = Guard(kModule, "UpdateIndex", [&] {
        lists = UpdateLists();
        return WriteLists(lists, members, create, mail, view);
    });
    if (!ready) {
        members.IndexReport = {};
        members.IndexReport.aborted = true;
        return;
    }
    members.IndexReport = MakeJob(members, lists, create, mail.configured, status).Execute();
}

bool NewIndexMends(engine::IndexFault fault) {
    return fault == engine::IndexFault::Damaged || fault == engine::IndexFault::Unsuitable;
}

// Tells a fault of the run. True when the run shall begin again with a new index.
bool SettleFault(const engine::IndexReport& report) {
    if (!report.fault) {
        return false;
    }
    const QString text = FaultMessage(*report.fault, report.faultText);
    const bool rebuild = NewIndexMends(*report.fault);
    if (Program().gAutoIndexing) {
        TextDialogue().Tell(text, GetMessage(226), Icon::Critical);
        return rebuild;
    }
    if (rebuild) {
        const QString question = text + u'\n' + GetMessage(kRebuildNow);
        return Ask(question, GetMessage(226), Icon::Question) == Answer::Yes;
    }
    Tell(text, GetMessage(226), Icon::Critical);
    return false;
}

// Tells that a damaged index was made anew. True when a run over everything shall follow, since
// something may be missing.
bool SettleMending(const UpdateMembers& members) {
    const engine::IndexReport& report = members.IndexReport;
    const bool moreToRead = report.otherFoldersMissing && !members.UpdateAll;
    QStringList texts;
    if (!report.damagedKept.isEmpty()) {
        texts << GetMessage(kIndexMended, {report.damagedKept});
    }
    if (report.otherFoldersMissing) {
        texts << GetMessage(kOthersMissing);
    }
    if (texts.isEmpty()) {
        return false;
    }
    if (Program().gAutoIndexing) {
        TextDialogue().Tell(texts.join(u'\n'), GetMessage(226), Icon::Exclamation);
        return moreToRead;
    }
    if (moreToRead) {
        texts << GetMessage(kUpdateAllNow);
        return Ask(texts.join(u'\n'), GetMessage(226), Icon::Question) == Answer::Yes;
    }
    Tell(texts.join(u'\n'), GetMessage(226), Icon::Exclamation);
    return false;
}

// All folders, and mail unless the person does not want that now: less would lose the rest.
void WantEverything(UpdateMembers& members, const MailConfig& mail) {
    if (!members.UpdateAll) {
        members.UpdateAll = members.IndexMail = true;
        SettleMail(members, mail.configured);
    }
}

} // namespace

void UpdateStatus::ReceiveProgress(int percent) {
    if (percent < 101) {
        m_view.SetTotalProgress(percent);
    }
    YieldToEvents();
}

void UpdateStatus::ReceiveStep(int step) {
    constexpr std::array kSteps{143, 78, 147, 170, 105, 11, 63, 144};
    if (step >= 1 && step <= static_cast<int>(kSteps.size())) {
        m_view.ShowStep(GetMessage(kSteps[static_cast<std::size_t>(step - 1)]));
    }
    YieldToEvents();
}

void UpdateStatus::ReceiveFileInfo(const QString& name, int percentDone) {
    ReceiveFiles({name}, percentDone);
}

void UpdateStatus::ReceiveFiles(const QStringList& names, int percentDone) {
    qsizetype length = m_view.LogLength();
    QString text;
    for (const QString& name : names) {
        if (length > kLongestLog) {
            m_view.EmptyLog();
            text.clear();
            length = 0;
        }
        text += name + u'\n';
        length += name.size() + 1;
    }
    m_view.AppendLog(text);
    m_view.SetFileProgress(percentDone);
    YieldToEvents();
}

bool UpdateStatus::CheckForAbort() {
    // The engine polls here through long silent stretches too, such as a compression or one huge
    // document, in which nothing else would keep the window alive.
    YieldToEvents();
    return m_abort;
}

void UpdateIndex(UpdateMembers& members, UpdateView& view, UpdateStatus& status) {
    members.IndexReport = {};
    MailConfig mail;
    if (Attempt(kModule, "UpdateIndex", [&] { mail = ReadMailConfig(); })) {
        SettleMail(members, mail.configured);
        RunJob(members, view, status, mail);
        if (!members.Cancelled && SettleFault(members.IndexReport)) {
            members.ForceRecreate = true;
            WantEverything(members, mail);
            RunJob(members, view, status, mail);
            (void)(members.IndexReport.fault && SettleFault(members.IndexReport));
        }
        if (!members.Cancelled && SettleMending(members)) {
            WantEverything(members, mail);
            RunJob(members, view, status, mail);
            (void)SettleFault(members.IndexReport);
        }
    } else {
        members.IndexReport.aborted = true;
    }
    members.Retry = false;
    members.FileOrFolderToAdd.reset();
    members.FileOrFolderToRemove.reset();
}

QString SummaryMessage(const UpdateMembers& members) {
    const engine::IndexReport& report = members.IndexReport;
    const QString counts = GetMessage(
        kIndexCounts, {QString::number(report.added), QString::number(report.changed),
                       QString::number(report.removed), QString::number(report.unchanged)});
    if (report.fault) {
        return GetMessage(kIndexingFailed);
    }
    if (report.aborted || members.Cancelled) {
        return GetMessage(kIndexCancelled);
    }
    return GetMessage(144) + u". "_s + counts;
}

} // namespace velmora
