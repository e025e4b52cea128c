// Lists folders and found files on another thread.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/FolderReader.h"

#include "platform/Files.h"
#include "platform/LogicalPath.h"

#include <QElapsedTimer>

namespace velmora {

namespace {

constexpr int kThreads = 6;     // some may hang on dead shares
constexpr int kPatienceMs = 50; // how long Start waits
constexpr int kFirstPortionMs = 120;
constexpr int kMostChanges = 24; // runs of rows that are worth being shown one by one

using Rows = std::vector<FileRow>;
using ListingPtr = std::shared_ptr<Listing>;
using Post = std::function<void(const ListingPtr&)>;

qint64 ModifiedNs(const QString& folder) {
    const auto status = platform::StatusOf(folder);
    return status ? status->modifiedNs : 0;
}

ListingPtr Sorted(Rows rows, const ListingRequest& request) {
    auto listing = std::make_shared<Listing>();
    SortRows(rows, request.order, request.records.get());
    listing->rows = std::make_shared<const Rows>(std::move(rows));
    listing->order = request.order;
    return listing;
}

// Shows what is there so far after growing pauses, so that sorting it again and again costs no more
// than sorting it once at the end.
class Portions {
  public:
    Portions(const ListingRequest& request, BackgroundTask& task, const Post& post)
        : m_request(request), m_task(task), m_post(post) {
        m_clock.start();
    }

    // False when the listing was cancelled.
    bool GoOn(const Rows& rows, const ListingPtr& facts) {
        // With rows shown already a half-read folder would take the others away.
        if (!m_request.shown && !rows.empty() && m_clock.elapsed() >= m_next) {
            m_next = 2 * m_clock.elapsed();
            const ListingPtr portion = Sorted(rows, m_request);
            portion->folder = facts->folder;
            portion->machinePath = facts->machinePath;
            m_post(portion);
        }
        return !m_task.IsCancelled();
    }
    [[nodiscard]] qint64 Elapsed() const { return m_clock.elapsed(); }

  private:
    const ListingRequest& m_request;
    BackgroundTask& m_task;
    const Post& m_post;
    QElapsedTimer m_clock;
    qint64 m_next = kFirstPortionMs;
};

QStringList SubFoldersOf(const Rows& rows, const FileOrder& order) {
    QStringList names;
    for (const FileRow& row : rows) {
        if (row.isFolder) {
            names << row.name;
        }
    }
    if (order != FileOrder()) {
        SortNames(names);
    }
    return names;
}

void Complete(const ListingPtr& listing, const ListingRequest& request) {
    listing->complete = true;
    listing->shown = request.shown;
    if (request.shown) {
        listing->changes = ChangesBetween(*request.shown, *listing->rows, kMostChanges);
    }
}

void ListFolder(const ListingRequest& request, BackgroundTask& task, const Post& post) {
    auto facts = std::make_shared<Listing>();
    facts->machinePath = platform::ToMachine(request.folder);
    facts->folder =
        facts->machinePath.isEmpty() ? request.folder : platform::ToLogical(facts->machinePath);
    Portions portions(request, task, post);
    const qint64 before = ModifiedNs(facts->machinePath);
    FolderContent content =
        ReadRows(facts->machinePath, [&](const Rows& rows) { return portions.GoOn(rows, facts); });
    if (task.IsCancelled()) {
        return;
    }
    const ListingPtr listing = Sorted(std::move(content.rows), request);
    listing->folder = facts->folder;
    listing->machinePath = facts->machinePath;
    listing->exists = content.exists;
    listing->error = content.error;
    listing->subFolders = SubFoldersOf(*listing->rows, request.order);
    listing->onNetwork = content.exists && platform::IsNetworkFileSystem(facts->machinePath);
    listing->tookMs = portions.Elapsed();
    Complete(listing, request);
    listing->modifiedNs = before;
    post(listing);
}

void ListFound(const ListingRequest& request, BackgroundTask& task, const Post& post) {
    auto facts = std::make_shared<Listing>();
    Portions portions(request, task, post);
    Rows rows;
    for (const QString& path : request.found) {
        const QString machinePath = platform::ToMachine(path);
        const auto status = machinePath.isEmpty() ? std::nullopt : platform::StatusOf(machinePath);
        if (status && status->kind != platform::EntryKind::Other) {
            FileRow row = RowOf(machinePath.section(u'/', -1), *status);
            row.folder = machinePath.section(u'/', 0, -2);
            rows.push_back(std::move(row));
        }
        if (!portions.GoOn(rows, facts)) {
            return;
        }
    }
    const ListingPtr listing = Sorted(std::move(rows), request);
    listing->tookMs = portions.Elapsed();
    Complete(listing, request);
    post(listing);
}

void SortAgain(const ListingRequest& request, const Post& post) {
    const std::vector<std::size_t> places =
        SortedPlaces(*request.shown, request.order, request.records.get());
    auto listing = std::make_shared<Listing>();
    auto rows = std::make_shared<Rows>();
    rows->reserve(places.size());
    listing->newPlaces.resize(places.size());
    for (const std::size_t at : places) {
        listing->newPlaces[at] = static_cast<int>(rows->size());
        rows->push_back((*request.shown)[at]);
    }
    listing->rows = rows;
    listing->order = request.order;
    listing->sortOnly = listing->complete = true;
    listing->shown = request.shown;
    post(listing);
}

} // namespace

FolderReader::FolderReader(Receiver receiver)
    : m_receiver(std::move(receiver)), m_background(kThreads) {}

FolderReader::~FolderReader() {
    Cancel();
}

void FolderReader::Start(ListingRequest request) {
    Cancel();
    m_task = m_background.Run([this, request = std::move(request)](BackgroundTask& task) {
        // `this` is only touched by what runs on the interface thread, and not after a cancel.
        const Post post = [this, &task](const ListingPtr& listing) {
            task.Post([this, listing] { Receive(listing); });
        };
        if (request.sortOnly) {
            SortAgain(request, post);
        } else if (request.isFound) {
            ListFound(request, task, post);
        } else {
            ListFolder(request, task, post);
        }
    });
    if (m_task->WaitFinished(kPatienceMs)) {
        m_background.Deliver();
    }
}

void FolderReader::Cancel() {
    if (m_task) {
        m_task->Cancel();
        m_task.reset();
    }
}

void FolderReader::Receive(const std::shared_ptr<Listing>& listing) {
    if (listing->complete) {
        m_task.reset();
    }
    m_receiver(listing);
}

} // namespace velmora
