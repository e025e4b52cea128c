// What carrying and removing have in common: progress, cancelling, and asking after a failure.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/CarryJob.h"

#include "platform/Files.h"

#include <algorithm>
#include <cerrno>

namespace platform {

bool CarryJob::AskRetry(const Problem& problem) {
    if (problem.error.code == ECANCELED) {
        throw CarryCancelled();
    }
    const std::pair sort(problem.step, problem.error.code);
    if (!m_skipAll.contains(sort)) {
        const ProblemAnswer answer = m_observer.AskProblem(problem);
        if (answer.choice == ProblemChoice::Cancel) {
            throw CarryCancelled();
        }
        if (answer.choice == ProblemChoice::Retry) {
            return true;
        }
        if (answer.forAll) {
            m_skipAll.insert(sort);
        }
    }
    ++m_result.skipped;
    return false;
}

void CarryJob::Show(const QString& from, const QString& to) {
    m_progress.from = from;
    m_progress.to = to;
    Tell();
}

std::optional<QStringList> CarryJob::Names(const QString& folder) {
    FolderListing listing;
    const bool read = Try(CarryStep::Read, folder, [&] {
        listing = ListFolder(folder);
        return listing.error;
    });
    if (!read) {
        return std::nullopt;
    }
    QStringList names;
    for (const FolderEntry& entry : listing.entries) {
        names << entry.name;
    }
    // So that a person sees an order in it.
    std::sort(names.begin(), names.end());
    return names;
}

void CarryJob::Count(const QString& path) {
    const std::optional<OwnStatus> status = OwnStatusOf(path);
    if (!status) {
        return;
    }
    if (status->kind == OwnKind::Folder) {
        for (const FolderEntry& entry : ListFolder(path).entries) {
            Count(path + u'/' + entry.name);
        }
        return;
    }
    ++m_progress.totalFiles;
    if (status->kind == OwnKind::File) {
        m_progress.totalBytes += status->size;
        m_needed += std::min(status->size, status->allocated);
    }
    m_progress.from = path;
    Tell();
}

} // namespace platform
