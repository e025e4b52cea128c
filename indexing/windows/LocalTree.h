// The tree of this machine's folders; a folder is read when it is opened, and nobody waits for it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "indexing/LocalFolders.h"
#include "indexing/windows/FolderPane.h"

#include <QTimer>
#include <chrono>
#include <functional>
#include <future>
#include <map>

namespace velmora {

class LocalTree : public FolderPane {
    Q_OBJECT

  public:
    using Reader = std::function<Subfolders(const QString& path)>;
    static constexpr int kKindRole = kPathRole + 1;
    static constexpr std::chrono::seconds kPatience{10};

    explicit LocalTree(QWidget* parent = nullptr);

    // Fills the tree anew: desktop, documents, the computer with its drives.
    void InitializeTreeView();
    // For tests: who reads the folders, on other threads, and how long he may take.
    void SetReader(Reader reader, std::chrono::milliseconds patience);

    // Reads the folders below a node unless that has been done: treLocalResource_NodeClick.
    void NodeClick(QTreeWidgetItem* item);

  private:
    struct Pending {
        std::future<Subfolders> answer;
        std::chrono::steady_clock::time_point end;
    };
    QTreeWidgetItem* AddNode(QTreeWidgetItem* parent, const LocalFolder& folder);
    void Poll();
    void Fill(QTreeWidgetItem* item, const Subfolders& found);

    Reader m_reader = ReadSubfolders;
    std::chrono::milliseconds m_patience = kPatience;
    std::map<QTreeWidgetItem*, Pending> m_pending; // nodes go only with all others
    QTimer m_poll{this};
};

} // namespace velmora
