// What the file list shows: loading, following the disk, the search mode.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Dialogue.h"
#include "core/Messages.h"
#include "mainwindow/FolderReader.h"
#include "mainwindow/FolderRecords.h"
#include "mainwindow/MessageIds.h"
#include "mainwindow/windows/Browser.h"
#include "mainwindow/windows/FilesList.h"
#include "mainwindow/windows/FilesModel.h"
#include "mainwindow/windows/FoldersTree.h"
#include "platform/Files.h"
#include "platform/FolderWatch.h"
#include "platform/LogicalPath.h"

#include <QLabel>
#include <QStackedWidget>
#include <algorithm>
#include <cerrno>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr qint64 kSettleMs = 350;
constexpr qint64 kLongestSettleMs = 10'000;
constexpr qint64 kPollMs = 4'000;
constexpr qint64 kLongestPollMs = 120'000;

bool IsRefusal(const platform::SystemError& error) {
    return error.code == EACCES || error.code == EPERM;
}

} // namespace

void Browser::FollowChanges() {
    m_settle.setSingleShot(true);
    m_settle.setInterval(static_cast<int>(kSettleMs));
    connect(&m_settle, &QTimer::timeout, this, &Browser::Reload);
    connect(&m_poll, &QTimer::timeout, this, [this] {
        if (isVisible()) {
            Reload();
        }
    });
    connect(m_watch.get(), &platform::FolderWatch::Changed, this, [this] {
        if (!m_settle.isActive()) { // not put off again and again by a stream of changes
            m_settle.start();
        }
    });
}

bool Browser::IsLoading() const {
    return m_reader->IsRunning() || m_failing;
}

void Browser::ReadRecords() {
    m_files->SetRecords(
        FolderRecords::Read(m_searchMode ? QString() : m_folder, m_files->Fields()));
}

void Browser::UpdateCurrentFileField() {
    if (m_searchMode || !m_folder.isEmpty()) {
        ReadRecords();
    }
}

void Browser::CreateLVWColumns() {
    if (m_files->Order().column == FileColumn::Field) {
        m_lvwFiles->sortByColumn(FilesModel::Name, Qt::AscendingOrder);
    }
    m_files->SetFields(ReadFieldColumns());
    m_lvwFiles->ShowColumns(m_searchMode);
    UpdateCurrentFileField();
}

void Browser::StopFollowing() {
    m_reader->Cancel();
    m_waitsForEdit = false;
    m_settle.stop();
    m_poll.stop();
    m_watched.clear();
    (void)m_watch->Watch({});
}

void Browser::LoadlvwFiles(const QString& path, bool forceReload) {
    if (m_searchMode) {
        if (forceReload) {
            ReadRecords();
            StartListing(true, false);
        }
        return;
    }
    const bool same = path == m_folder || path == m_files->Folder();
    if (same && !forceReload && !path.isEmpty()) {
        return;
    }
    if (!same || path.isEmpty()) {
        StopFollowing();
        m_folder = path;
        m_target = {};
        m_files->Clear(path);
        m_lvwFiles->SetHint({});
        ListChanged();
    }
    if (path.isEmpty()) {
        Q_EMIT Loaded();
        return;
    }
    ReadRecords();
    StartListing(same, false);
}

void Browser::StartListing(bool keepRows, bool quiet) {
    m_quiet = quiet;
    m_keepRows = keepRows;
    m_changedMeanwhile = false;
    ListingRequest request;
    request.folder = m_folder;
    request.isFound = m_searchMode;
    request.found = m_foundPaths;
    request.shown = keepRows ? m_files->Rows() : nullptr;
    request.order = m_files->Order();
    request.records = m_files->Records();
    m_reader->Start(std::move(request));
    if (m_reader->IsRunning() && !keepRows) {
        m_lvwFiles->SetHint(GetMessage(kReadingFolder));
    }
}

void Browser::SortList() {
    if (m_reader->IsRunning()) {
        StartListing(m_keepRows, m_quiet);
    } else if (m_files->rowCount() > 1) {
        ListingRequest request;
        request.sortOnly = true;
        request.shown = m_files->Rows();
        request.order = m_files->Order();
        request.records = m_files->Records();
        m_reader->Start(std::move(request));
    }
}

void Browser::Reload() {
    if (m_folder.isEmpty() || m_searchMode || m_failing) {
        return;
    }
    if (m_reader->IsRunning()) {
        m_changedMeanwhile = true;
    } else {
        StartListing(true, true);
    }
}

void Browser::TakeListing(const std::shared_ptr<Listing>& listing) {
    if (m_lvwFiles->IsEditing()) { // rows that move would take the editor away
        m_waitsForEdit = true;
        return;
    }
    const bool refused = IsRefusal(listing->error) && listing->rows->empty();
    if (!listing->exists || refused) {
        // Later: the choice of the node that led here is not over yet.
        m_failing = true;
        QTimer::singleShot(0, this, [this, folder = m_folder, refused] {
            m_failing = false;
            if (folder == m_folder && !m_searchMode) {
                refused ? FolderIsRefused() : FolderIsGone();
            }
        });
        return;
    }
    if (!listing->folder.isEmpty()) {
        m_files->SetFolder(listing->folder);
    }
    const bool changed = !listing->shown || !listing->changes || !listing->changes->empty();
    m_files->Take(*listing);
    if (changed) {
        ListChanged();
    }
    if (!listing->complete) {
        return;
    }
    if (listing->order != m_files->Order() ||
        (listing->sortOnly && listing->rows != m_files->Rows())) {
        SortList();
    }
    if (!listing->sortOnly) {
        FinishListing(*listing);
    }
}

void Browser::AfterEdit() {
    // Read again: what came meanwhile does not know the new name.
    if (!m_lvwFiles->IsEditing() && std::exchange(m_waitsForEdit, false)) {
        StartListing(true, true);
    }
}

void Browser::FinishListing(const Listing& listing) {
    m_lvwFiles->SetHint(m_searchMode ? QString() : GetMessage(kEmptyFolder));
    const bool quiet = m_quiet;
    if (!m_searchMode) {
        m_treFolders->SetSubFolders(m_folder, listing.machinePath, listing.subFolders);
        FollowDisk(listing);
    }
    ResolveTarget();
    Q_EMIT Loaded();
    if (!listing.error.Ok() && !quiet) {
        const QStringList what{listing.machinePath, listing.error.text};
        QTimer::singleShot(0, this, [what] {
            Tell(GetMessage(kFolderReadInPart, what), GetMessage(99), Icon::Exclamation);
        });
    }
}

void Browser::FollowDisk(const Listing& listing) {
    // Large and slow folders are read again less often: never more than a fifth of the time.
    m_settle.setInterval(
        static_cast<int>(std::clamp(4 * listing.tookMs, kSettleMs, kLongestSettleMs)));
    m_poll.setInterval(static_cast<int>(std::clamp(20 * listing.tookMs, kPollMs, kLongestPollMs)));
    if (listing.machinePath != m_watched) {
        m_watched = listing.machinePath;
        const bool watched = !listing.onNetwork && m_watch->Watch(m_watched).Ok();
        watched ? m_poll.stop() : m_poll.start();
        const auto now = watched ? platform::StatusOf(m_watched) : std::nullopt;
        if (watched && (!now || now->modifiedNs != listing.modifiedNs)) {
            m_settle.start(); // it changed before it was watched
        }
    }
    if (m_changedMeanwhile) {
        m_settle.start();
    }
}

void Browser::FolderIsGone() {
    const QString gone = m_folder;
    const bool isIndexed = m_treFolders->CurrentKind() == NodeKind::Indexed;
    StopFollowing();
    if (isIndexed) {
        m_treFolders->RemoveChildNodes(gone);
        m_treFolders->SelectRoot();
        Tell(GetMessage(296) + u'\n' + platform::DisplayPath(gone), GetMessage(41), Icon::Critical);
        return;
    }
    // Nobody clicked on what vanishes while it is shown: the folder above says enough.
    const bool tell = !m_quiet;
    m_treFolders->DropCurrent();
    if (tell) {
        Tell(GetMessage(1063), GetMessage(116), Icon::Exclamation);
    }
}

void Browser::FolderIsRefused() {
    const QString refused = m_folder;
    StopFollowing();
    m_treFolders->SelectRoot();
    Tell(GetMessage(329) + u'\n' + platform::DisplayPath(refused), GetMessage(99), Icon::Critical);
}

void Browser::ResolveTarget() {
    if (m_target.name.isEmpty()) {
        return;
    }
    const int row = m_files->RowOf(m_target.name);
    if (row < 0 && m_reader->IsRunning()) {
        return; // it may still come
    }
    if (row < 0 && !std::exchange(m_target.reloaded, true)) {
        StartListing(true, true);
        return;
    }
    const Target target = std::exchange(m_target, {});
    if (row >= 0) {
        m_lvwFiles->SelectRow(row);
        m_lvwFiles->setFocus();
        if (target.rename) {
            m_lvwFiles->edit(m_files->index(row, FilesModel::Name));
        }
    } else if (target.tell) {
        QTimer::singleShot(0, this,
                           [] { Tell(GetMessage(1064), GetMessage(121), Icon::Critical); });
    }
}

void Browser::ListChanged() {
    if (m_searchMode) {
        m_lblFound->setText(GetMessage(kFoundCount, {QString::number(m_files->rowCount())}));
    }
    Q_EMIT RowsChanged();
    Q_EMIT SelectionChanged();
}

void Browser::ShowFound(const QStringList& paths) {
    if (!m_searchMode) {
        m_previousPath = m_folder;
    }
    StopFollowing();
    m_searchMode = true;
    m_foundPaths = paths;
    m_target = {};
    m_files->Clear({});
    m_lvwFiles->ShowColumns(true);
    m_picSearch->show();
    m_pages->setCurrentIndex(0);
    ReadRecords();
    ListChanged();
    StartListing(false, false);
    m_lvwFiles->setFocus();
}

void Browser::LeaveSearchMode() {
    if (!m_searchMode) {
        return;
    }
    StopFollowing();
    m_searchMode = false;
    m_foundPaths.clear();
    m_folder.clear(); // its files are no longer in the list
    m_files->Clear({});
    m_lvwFiles->ShowColumns(false);
    m_picSearch->hide();
    m_pages->setCurrentIndex(HasFolders() ? 0 : m_pages->count() - 1);
}

void Browser::CloseFilter() {
    if (!m_searchMode) {
        return;
    }
    LeaveSearchMode();
    if (m_previousPath != m_treFolders->CurrentPath() && !SelectVisited(m_previousPath)) {
        m_treFolders->SelectRoot();
    }
    LoadlvwFiles(m_treFolders->CurrentPath(), false);
    Q_EMIT SelectionChanged();
}

} // namespace velmora
