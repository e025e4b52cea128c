// Brings files and folders to another place: conflicts, problems, and never a loss.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Carrier.h"

#include "platform/CarryJob.h"
#include "platform/Draft.h"
#include "platform/Files.h"
#include "platform/Names.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

namespace platform {

namespace {

constexpr qsizetype kLongestName = 255; // bytes
// Waiting for the disk takes as long for one small file as for many.
constexpr qint64 kSmallFile = 1024 * 1024;
constexpr std::size_t kMostTogether = 128;
constexpr std::size_t kFewFiles = 4; // for these alone other programs' writes are not waited for

QString NameOf(const QString& path) {
    return path.section(u'/', -1);
}

QString Below(const QString& folder, const QString& name) {
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

class Carrier : private CarryJob {
  public:
    Carrier(const QString& folder, CarryMode mode, CarryObserver& observer, CarryResult& result)
        : CarryJob(observer, result), m_folder(folder), m_move(mode == CarryMode::Move) {}

    void Run(const QStringList& sources) {
        CountAll(sources);
        CheckSpace();
        for (const QString& source : sources) {
            CarryNamed(source);
        }
        (void)PlaceSmall();
        (void)m_observer.ShowProgress(m_progress);
        if (!m_move) {
            // The copies are there; only a failure of power could still take their names.
            (void)SyncFolder(EncodeName(m_folder));
        }
    }

  private:
    // What became of an entry: where it is now, or nothing when it was left out in whole or part.
    using Place = std::optional<QString>;

    void CountAll(const QStringList& sources) {
        m_progress.counting = true;
        m_progress.to = m_folder;
        const auto device = DeviceOf(m_folder);
        for (const QString& source : sources) {
            const std::optional<OwnStatus> status = OwnStatusOf(source);
            if (m_move && status && device && status->device == *device) {
                ++m_progress.totalFiles; // a renaming, however much lies below
            } else {
                Count(source);
            }
        }
        m_progress.counting = false;
        Tell();
    }

    void CheckSpace() {
        const auto space = [&]() -> SystemError {
            m_free = FreeSpace(m_folder);
            const bool enough = m_free < 0 || m_needed <= m_free;
            return enough ? SystemError() : SystemError::Of(ENOSPC);
        };
        const qint64 skipped = m_result.skipped;
        while (!space().Ok() &&
               AskRetry({CarryStep::Space, m_folder, SystemError::Of(ENOSPC), m_needed, m_free})) {
        }
        m_result.skipped = skipped; // nothing was left out
    }

    void CarryNamed(const QString& source) {
        if (IsWithin(m_folder, source)) {
            (void)AskRetry({CarryStep::IntoItself, source, SystemError::Of(EINVAL), 0, 0});
            return;
        }
        m_movedFiles.clear();
        m_named = source;
        m_waits = false;
        const std::optional<OwnStatus> status = Look(source);
        if (!status) {
            return;
        }
        const bool isFolder = status->kind == OwnKind::Folder;
        if (isFolder) {
            (void)PlaceSmall();
        }
        try {
            if (const Place place = CarryEntry(source, *status, Below(m_folder, NameOf(source)));
                place && !m_waits) {
                m_result.done.push_back({source, *place, isFolder});
                m_movedFiles.clear();
            }
        } catch (...) {
            KeepMovedFiles();
            throw;
        }
        KeepMovedFiles();
    }

    void KeepMovedFiles() {
        m_result.done.insert(m_result.done.end(), m_movedFiles.begin(), m_movedFiles.end());
        m_movedFiles.clear();
    }

    std::optional<OwnStatus> Look(const QString& path) {
        std::optional<OwnStatus> status;
        (void)Try(CarryStep::Look, path, [&] {
            SystemError error;
            status = OwnStatusOf(path, &error);
            return error;
        });
        return status;
    }

    Place CarryEntry(const QString& from, const OwnStatus& status, const QString& to) {
        Show(from, to);
        if (m_move && from == to) {
            ++m_result.skipped;
            return std::nullopt;
        }
        return status.kind == OwnKind::Folder ? CarryFolder(from, status, to)
                                              : CarrySingle(from, status, to);
    }

    // --- files, links, special files

    Place CarrySingle(const QString& from, const OwnStatus& status, QString to) {
        if (!IsSmall(status)) {
            m_allPlaced = PlaceSmall() && m_allPlaced; // what is done shall not wait for long work
        }
        CopyOptions options;
        options.forMove = m_move;
        qint64 portion = 0; // of this try
        options.progress = [&](qint64 bytes) {
            portion += bytes;
            m_progress.bytes += bytes;
            return m_observer.ShowProgress(m_progress);
        };
        for (;;) {
            if (!options.replaces && OwnStatusOf(to) && !Settle(from, status, to, options)) {
                return std::nullopt;
            }
            if (IsSmall(status) && !options.replaces && FillSmall(from, status, to, options)) {
                return to;
            }
            m_progress.bytes -= std::exchange(portion, 0);
            Problem problem;
            if (CarryOnce(from, status, to, options, problem)) {
                return Arrived(from, status, to);
            }
            m_progress.bytes -= std::exchange(portion, 0);
            if (problem.error.Ok()) {
                return std::nullopt; // passed over
            }
            if (problem.error.code == EEXIST) {
                options.replaces.reset(); // something else stands there now
            } else if (!AskRetry(problem)) {
                return std::nullopt;
            }
        }
    }

    // False with an error in `problem`, or without one for what is passed over.
    bool CarryOnce(const QString& from, const OwnStatus& status, const QString& to,
                   const CopyOptions& options, Problem& problem) {
        if (m_move) {
            const SystemError error = MoveEntry(from, to, options);
            if (error.code != EXDEV) {
                problem = {CarryStep::Move, from, error, 0, 0};
                return error.Ok();
            }
        }
        if (status.kind == OwnKind::Special) {
            m_result.passedOver << from;
            return false;
        }
        const CopyOutcome outcome = status.kind == OwnKind::Link ? CopyLinkEntry(from, to, options)
                                                                 : CopyFileEntry(from, to, options);
        problem = {outcome.atTarget ? CarryStep::Write : CarryStep::Read,
                   outcome.atTarget ? to : from, outcome.error, 0, 0};
        if (!outcome.Ok()) {
            return false;
        }
        // The copy is whole and stays, whatever becomes of the source.
        return !m_move || RemoveSource(from, status);
    }

    bool RemoveSource(const QString& from, const OwnStatus& status) {
        return Try(CarryStep::Remove, from, [&]() -> SystemError {
            const std::optional<OwnStatus> now = OwnStatusOf(from);
            if (now && !now->IsUnchanged(status)) {
                return SystemError::Of(ESTALE);
            }
            return RemoveEntry(from, false);
        });
    }

    // --- small files, which wait for the disk together

    [[nodiscard]] bool IsSmall(const OwnStatus& status) const {
        const bool copies = !m_move || m_device != status.device;
        return copies && !m_oneByOne && status.kind == OwnKind::File && status.size <= kSmallFile;
    }

    // False: nothing has been done; the ordinary way tells why.
    bool FillSmall(const QString& from, const OwnStatus& status, const QString& to,
                   const CopyOptions& options) {
        Small small{std::make_unique<FileCopy>(), from, to, status, from == m_named};
        const CopyOutcome outcome = small.copy->Fill(from, to, options);
        if (outcome.error.code == ECANCELED) {
            throw CarryCancelled();
        }
        if (!outcome.Ok()) {
            return false;
        }
        m_small.push_back(std::move(small));
        m_waits = m_waits || from == m_named;
        if (m_small.size() >= kMostTogether) {
            m_allPlaced = PlaceSmall() && m_allPlaced;
        }
        return true;
    }

    // Gives the waiting files their names, and removes their sources in a move. One that fails goes
    // the ordinary way once more. False when one of them did not end under the name meant for it.
    bool PlaceSmall() {
        std::vector<Small> waiting = std::exchange(m_small, {});
        bool all = std::exchange(m_allPlaced, true);
        CopyOptions options;
        options.forMove = m_move;
        const bool synced = waiting.size() > kFewFiles && waiting.front().copy->SyncDisk();
        for (Small& small : waiting) {
            small.placed = (synced || small.copy->Sync().Ok()) &&
                           small.copy->Place(small.to, options, false).Ok();
        }
        if (m_move && !waiting.empty()) {
            const QByteArray folder = FolderOf(EncodeName(waiting.front().to));
            (void)Try(CarryStep::Write, waiting.front().to, [&] { return SyncFolder(folder); });
        }
        for (Small& small : waiting) {
            Place place;
            if (!small.placed) {
                small.copy.reset();
                m_progress.bytes -= small.status.size;
                m_oneByOne = true;
                place = CarrySingle(small.from, small.status, small.to);
                m_oneByOne = false;
            } else if (!m_move || RemoveSource(small.from, small.status)) {
                place = Arrived(small.from, small.status, small.to);
            }
            if (place && small.isNamed) {
                m_result.done.push_back({small.from, *place, false});
            }
            all = all && place == small.to;
        }
        return all;
    }

    QString Arrived(const QString& from, const OwnStatus& status, const QString& to) {
        CountDone();
        if (m_move && status.kind == OwnKind::File && from != m_named &&
            from.section(u'/', 0, -2) == m_named) {
            m_movedFiles.push_back({from, to, false});
        }
        return to;
    }

    // A merge within a disk finds more than was counted.
    void CountDone() {
        ++m_progress.files;
        m_progress.totalFiles = std::max(m_progress.totalFiles, m_progress.files);
        m_progress.totalBytes = std::max(m_progress.totalBytes, m_progress.bytes);
    }

    // --- folders

    Place CarryFolder(const QString& from, const OwnStatus& status, QString to) {
        bool made = false;
        for (;;) {
            const std::optional<OwnStatus> there = OwnStatusOf(to);
            if (there) {
                CopyOptions options;
                if (!Settle(from, status, to, options)) {
                    return std::nullopt;
                }
                if (options.replaces) {
                    break; // merge
                }
            }
            SystemError error = SystemError::Of(EXDEV);
            if (m_move) {
                error = MoveEntry(from, to, {});
                if (error.Ok()) {
                    CountDone();
                    return to;
                }
            }
            const bool copies = error.code == EXDEV;
            if (copies) {
                error = MakeFolder(to);
                made = error.Ok();
            }
            if (made) {
                break;
            }
            if (error.code != EEXIST && !AskRetry({copies ? CarryStep::MakeFolder : CarryStep::Move,
                                                   copies ? to : from, error, 0, 0})) {
                return std::nullopt;
            }
        }
        return CarryContent(from, to, made);
    }

    Place CarryContent(const QString& from, const QString& to, bool made) {
        bool whole = true;
        try {
            const std::optional<QStringList> names = Names(from);
            whole = names.has_value();
            for (const QString& name : names.value_or(QStringList())) {
                const QString child = Below(from, name);
                const QString wanted = Below(to, name);
                const std::optional<OwnStatus> status = Look(child);
                if (status && status->kind == OwnKind::Folder) {
                    whole = PlaceSmall() && whole;
                }
                const Place place = status ? CarryEntry(child, *status, wanted) : std::nullopt;
                whole = whole && place == wanted;
            }
            whole = PlaceSmall() && whole;
        } catch (...) {
            if (made) {
                (void)FinishFolder(from, to, m_move); // what is there shall not stay locked up
            }
            throw;
        }
        if (made) {
            (void)Try(CarryStep::Write, to, [&] { return FinishFolder(from, to, m_move).error; });
        }
        // A folder out of which all went, if under other names, is done with all the same; one that
        // still holds something stays.
        if (m_move && !RemoveEmptied(from, whole)) {
            return std::nullopt;
        }
        return whole ? Place(to) : std::nullopt;
    }

    bool RemoveEmptied(const QString& from, bool whole) {
        if (!whole) {
            const SystemError ignored = RemoveEntry(from, true);
            return ignored.Ok();
        }
        return Try(CarryStep::Remove, from, [&] { return RemoveEntry(from, true); });
    }

    // --- conflicts

    // Decides what happens to a taken name: changes `to` or sets `options.replaces`. False: skip.
    bool Settle(const QString& from, const OwnStatus& status, QString& to, CopyOptions& options) {
        const std::optional<OwnStatus> there = OwnStatusOf(to);
        if (!there) {
            return true;
        }
        Conflict conflict{{from, status}, {to, *there}, false};
        const bool folder = status.kind == OwnKind::Folder;
        const bool replaceable = folder
                                     ? there->kind == OwnKind::Folder
                                     : there->kind == OwnKind::File || there->kind == OwnKind::Link;
        conflict.canReplace = replaceable && !conflict.IsSameEntry();
        // Below a folder that is merged, folders merge without a word.
        const bool inside = conflict.IsMerge() && from != m_named;
        switch (inside ? ConflictChoice::Replace : Choose(conflict)) {
        case ConflictChoice::Cancel:
            throw CarryCancelled();
        case ConflictChoice::Skip:
            ++m_result.skipped;
            return false;
        case ConflictChoice::KeepBoth:
            to = FreeName(to);
            return true;
        case ConflictChoice::Replace:
            break;
        }
        options.replaces = *there;
        return true;
    }

    ConflictChoice Choose(const Conflict& conflict) {
        std::optional<ConflictChoice>& known = conflict.IsMerge() ? m_forFolders : m_forFiles;
        if (known && (conflict.canReplace || *known != ConflictChoice::Replace)) {
            return *known;
        }
        const ConflictAnswer answer = m_observer.AskConflict(conflict);
        if (answer.choice == ConflictChoice::Replace && !conflict.canReplace) {
            return ConflictChoice::Skip;
        }
        if (answer.forAll) {
            known = answer.choice;
        }
        return answer.choice;
    }

    // A small copy without a name yet.
    struct Small {
        std::unique_ptr<FileCopy> copy;
        QString from;
        QString to;
        OwnStatus status;
        bool isNamed;
        bool placed = false;
    };

    QString m_folder;
    bool m_move;
    std::optional<quint64> m_device = DeviceOf(m_folder);
    std::vector<Small> m_small; // all in one folder
    bool m_allPlaced = true;    // so far, of those of the folder in work
    bool m_oneByOne = false;
    bool m_waits = false; // the named source itself is among the small ones
    qint64 m_free = 0;
    QString m_named; // the source in work
    std::vector<Carried> m_movedFiles;
    std::optional<ConflictChoice> m_forFiles;
    std::optional<ConflictChoice> m_forFolders;
};

} // namespace

QString FreeName(const QString& path) {
    const QString folder = path.section(u'/', 0, -2);
    const QString name = NameOf(path);
    const qsizetype dot = name.lastIndexOf(u'.');
    const QString ending = dot > 0 ? name.mid(dot) : QString();
    QString base = dot > 0 ? name.left(dot) : name;
    for (int number = 2;; ++number) {
        const QString added = QStringLiteral(" (%1)").arg(number) + ending;
        while (base.size() > 1 && EncodeName(base + added).size() > kLongestName) {
            base.chop(base.back().isLowSurrogate() ? 2 : 1);
        }
        const QString free = Below(folder, base + added);
        if (!OwnStatusOf(free)) {
            return free;
        }
    }
}

void Carry(const QStringList& sources, const QString& folder, CarryMode mode,
           CarryObserver& observer, CarryResult& result) {
    try {
        Carrier(folder, mode, observer, result).Run(sources);
    } catch (const CarryCancelled&) {
        result.cancelled = true;
    }
}

} // namespace platform
