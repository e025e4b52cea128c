// Lists and sorts for the file list on another thread, in portions.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/Background.h"
#include "mainwindow/FileOrder.h"
#include "platform/SystemError.h"

#include <QStringList>
#include <optional>

namespace velmora {

using FileRows = std::shared_ptr<const std::vector<FileRow>>;

struct ListingRequest {
    QString folder;    // logical
    QStringList found; // or these paths from anywhere
    bool isFound = false;
    FileRows shown; // what is to be compared with, or, with `sortOnly`, sorted; may be null
    bool sortOnly = false;
    FileOrder order;
    std::shared_ptr<const FolderRecords> records; // may be null
};

struct Listing {
    FileRows rows; // sorted
    FileOrder order;
    bool complete = false; // else a portion, and more follows
    bool sortOnly = false;
    // Of a complete listing, what makes the rows shown into these, if they are few.
    FileRows shown;
    std::optional<std::vector<RowChange>> changes;
    std::vector<int> newPlaces; // with `sortOnly`: the new place of each row

    // Of a folder.
    QString folder;         // logical, in the spelling of the disk
    QString machinePath;    // empty: no such place on this computer
    QStringList subFolders; // names in order, when complete
    bool exists = true;
    bool onNetwork = false;
    qint64 modifiedNs = 0;       // when the folder's names had last changed as the reading began
    platform::SystemError error; // the rows are what could be read
    qint64 tookMs = 0;
};

// One listing at a time: a new one cancels the one before.
class FolderReader {
  public:
    // Called on the interface thread for each portion and, at the end, the whole.
    using Receiver = std::function<void(const std::shared_ptr<Listing>&)>;
    explicit FolderReader(Receiver receiver);
    ~FolderReader();

    // Waits a moment for the answer, so that a small folder appears at once, without a flicker.
    void Start(ListingRequest request);
    void Cancel();
    [[nodiscard]] bool IsRunning() const { return m_task != nullptr; }

  private:
    void Receive(const std::shared_ptr<Listing>& listing);

    Receiver m_receiver;
    BackgroundTaskPtr m_task;
    Background m_background;
};

} // namespace velmora
