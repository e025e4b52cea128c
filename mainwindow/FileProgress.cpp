// What a shell operation shows, in figures and words.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/FileProgress.h"

#include "core/Messages.h"
#include "mainwindow/FileMessageIds.h"
#include "mainwindow/FolderFiles.h"

#include <algorithm>
#include <cerrno>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr qint64 kWindowMs = 8000;
constexpr qint64 kShortestMs = 2000;

int TextOf(platform::CarryStep step) {
    switch (step) {
    case platform::CarryStep::Look:
        return 1064;
    case platform::CarryStep::Read:
        return kCannotRead;
    case platform::CarryStep::Write:
        return kCannotWrite;
    case platform::CarryStep::MakeFolder:
        return kCannotMakeFolder;
    case platform::CarryStep::Move:
        return kCannotMove;
    case platform::CarryStep::Remove:
        return kCannotRemove;
    case platform::CarryStep::Space:
        return kNoSpace;
    case platform::CarryStep::IntoItself:
        break;
    }
    return kIntoItself;
}

QString TimeLeft(qint64 seconds) {
    const qint64 minutes = (seconds + 59) / 60;
    if (seconds < 60) {
        return GetMessage(kSecondsLeft);
    }
    return minutes < 60 ? GetMessage(kMinutesLeft, {QString::number(minutes)})
                        : GetMessage(kHoursLeft, {QString::number(minutes / 60),
                                                  QString::number(minutes % 60)});
}

} // namespace

void RateMeter::Add(qint64 bytes, qint64 nowMs) {
    m_samples.push_back({bytes, nowMs});
    // One sample from before the window stays, so that a standstill lowers the rate.
    while (m_samples.size() > 2 && m_samples[1].ms <= nowMs - kWindowMs) {
        m_samples.pop_front();
    }
}

std::optional<qint64> RateMeter::BytesPerSecond() const {
    if (m_samples.empty()) {
        return std::nullopt;
    }
    const qint64 ms = m_samples.back().ms - m_samples.front().ms;
    const qint64 bytes = m_samples.back().bytes - m_samples.front().bytes;
    return ms < kShortestMs || bytes <= 0 ? std::nullopt : std::optional(bytes * 1000 / ms);
}

QString ShellTitle(ShellWork work) {
    return GetMessage(work == ShellWork::Copy ? 75 : work == ShellWork::Move ? kMoving : kDeleting);
}

QString ProgressText(const platform::CarryProgress& progress) {
    if (progress.counting) {
        return GetMessage(kCountingFiles);
    }
    const QString files =
        GetMessage(kFilesDone, {QString::number(progress.files),
                                QString::number(std::max(progress.files, progress.totalFiles))});
    const qint64 total = std::max(progress.bytes, progress.totalBytes);
    return total == 0 ? files
                      : files + u", "_s +
                            GetMessage(kBytesDone, {SizeText(progress.bytes), SizeText(total)});
}

QString RateText(const platform::CarryProgress& progress, const RateMeter& rate) {
    const std::optional<qint64> speed = rate.BytesPerSecond();
    if (progress.counting || !speed || *speed == 0) {
        return {};
    }
    const qint64 left = std::max<qint64>(progress.totalBytes - progress.bytes, 0);
    return GetMessage(kBytesPerTime, {SizeText(*speed)}) + u", "_s + TimeLeft(left / *speed);
}

std::optional<int> ProgressPart(const platform::CarryProgress& progress) {
    const bool byBytes = progress.totalBytes > 0;
    const qint64 total = byBytes ? progress.totalBytes : progress.totalFiles;
    if (progress.counting || total <= 0) {
        return std::nullopt;
    }
    const double part =
        static_cast<double>(byBytes ? progress.bytes : progress.files) / static_cast<double>(total);
    return static_cast<int>(std::clamp(part, 0.0, 1.0) * 1000);
}

QString ConflictText(const platform::Conflict& conflict) {
    const int id = !conflict.canReplace ? kConflictNoReplace
                   : conflict.IsMerge() ? kConflictFolder
                                        : kConflictFile;
    return GetMessage(id, {OneLine(conflict.to.path.section(u'/', -1))});
}

QString SideText(const platform::CarrySide& side) {
    const QString date = DateText(side.status.modifiedNs);
    return side.status.kind == platform::OwnKind::File ? SizeText(side.status.size) + u", "_s + date
                                                       : date;
}

QString ProblemText(const platform::Problem& problem) {
    const QString place = OneLine(problem.path);
    if (problem.error.code == ESTALE) {
        return GetMessage(kChangedMeanwhile, {place});
    }
    const QString text =
        GetMessage(TextOf(problem.step), {place, SizeText(problem.needed), SizeText(problem.free)});
    switch (problem.step) {
    case platform::CarryStep::Space:
    case platform::CarryStep::IntoItself:
        return text;
    case platform::CarryStep::Look:
        return text + u'\n' + place;
    default:
        return text + u'\n' + problem.error.text;
    }
}

QString OneLine(const QString& path) {
    QString line = path;
    for (QChar& c : line) {
        // A line break, or a mark that turns the direction of writing, would dress a name up.
        if (c.category() == QChar::Other_Control || c.category() == QChar::Other_Format) {
            c = QChar::ReplacementCharacter;
        }
    }
    return line;
}

} // namespace velmora
