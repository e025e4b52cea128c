// Reads the sub-folders of tree nodes on other threads, and finds out which nodes have any.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/Background.h"
#include "platform/SystemError.h"

#include <QList>
#include <QStringList>

namespace velmora {

struct SubFolders {
    quint64 node = 0;    // as given
    QString machinePath; // of the folder itself; empty: no such place
    QStringList names;   // in order, hidden ones left out
    bool exists = true;
    platform::SystemError error;
};

// A node whose plus sign is to be found out.
struct PlusQuestion {
    quint64 node = 0;
    QString path; // logical
};

struct PlusAnswer {
    quint64 node = 0;
    QString machinePath;
    // Shown when in doubt: a folder that takes too long, or all of them together do.
    bool plus = true;
};

class SubFolderReader {
  public:
    using ReadReceiver = std::function<void(const SubFolders&)>;
    using PlusReceiver = std::function<void(const QList<PlusAnswer>&)>;
    SubFolderReader(ReadReceiver read, PlusReceiver plus);

    void Read(quint64 node, const QString& path);
    // Answers arrive in portions, in the order of the questions.
    void FindPlus(QList<PlusQuestion> questions);
    // Forgets all that is under way.
    void Cancel();

  private:
    ReadReceiver m_read;
    PlusReceiver m_plus;
    std::vector<std::weak_ptr<BackgroundTask>> m_tasks;
    Background m_background;
};

// Whether the folder (machine path) has a folder that is not hidden, looking for that long at most;
// true when that was not enough. A folder that may not be read has none.
[[nodiscard]] bool HasSubFolders(const QString& path, int milliseconds);

} // namespace velmora
