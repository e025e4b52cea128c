// The tree of this machine's folders.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/windows/LocalTree.h"

#include "core/MessageIds.h"
#include "core/Messages.h"
#include "indexing/MessageIds.h"
#include "store/RunAside.h"

namespace velmora {

namespace {

constexpr int kPollMs = 30;

// A line of a text instead of folders.
void PutNote(QTreeWidgetItem* item, int message) {
    qDeleteAll(item->takeChildren());
    auto* note = new QTreeWidgetItem(item, {GetMessage(message)});
    note->setFlags(Qt::ItemIsEnabled);
    note->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicator);
    QFont font = note->font(0);
    font.setItalic(true);
    note->setFont(0, font);
}

} // namespace

LocalTree::LocalTree(QWidget* parent) : FolderPane(parent) {
    setHeaderHidden(true);
    setUniformRowHeights(true);
    m_poll.setInterval(kPollMs);
    connect(&m_poll, &QTimer::timeout, this, &LocalTree::Poll);
    connect(this, &QTreeWidget::itemExpanded, this, &LocalTree::NodeClick);
    connect(this, &QTreeWidget::itemClicked, this,
            [this](QTreeWidgetItem* item) { NodeClick(item); });
}

void LocalTree::SetReader(Reader reader, std::chrono::milliseconds patience) {
    m_reader = std::move(reader);
    m_patience = patience;
}

QTreeWidgetItem* LocalTree::AddNode(QTreeWidgetItem* parent, const LocalFolder& folder) {
    auto* item = new QTreeWidgetItem({folder.text});
    item->setIcon(0, FolderIcon(folder.kind));
    item->setData(0, kPathRole, folder.path);
    item->setData(0, kKindRole, folder.kind);
    item->setToolTip(0, folder.path.toHtmlEscaped());
    item->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
    if (parent != nullptr) {
        parent->addChild(item);
    } else {
        addTopLevelItem(item);
    }
    return item;
}

void LocalTree::InitializeTreeView() {
    m_pending.clear();
    clear();
    for (const LocalFolder& root : LocalRoots()) {
        QTreeWidgetItem* item = AddNode(nullptr, root);
        if (root.kind == kMyComputer) {
            for (const LocalFolder& drive : LocalDrives()) {
                AddNode(item, drive);
            }
            item->setExpanded(true);
        }
    }
    setCurrentItem(topLevelItem(0));
}

void LocalTree::NodeClick(QTreeWidgetItem* item) {
    const QString path = item->data(0, kPathRole).toString();
    const bool read =
        item->childCount() > 0 && !item->child(0)->data(0, kPathRole).toString().isEmpty();
    if (path.isEmpty() || read || m_pending.count(item) != 0) {
        return;
    }
    PutNote(item, kPleaseWait);
    m_pending[item] = {RunAside([reader = m_reader, path] { return reader(path); }),
                       std::chrono::steady_clock::now() + m_patience};
    m_poll.start();
}

void LocalTree::Poll() {
    for (auto each = m_pending.begin(); each != m_pending.end();) {
        auto& [item, pending] = *each;
        if (pending.answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready) {
            Fill(item, pending.answer.get());
        } else if (std::chrono::steady_clock::now() > pending.end) {
            PutNote(item, kFolderSilent);
        } else {
            ++each;
            continue;
        }
        each = m_pending.erase(each);
    }
    if (m_pending.empty()) {
        m_poll.stop();
    }
}

void LocalTree::Fill(QTreeWidgetItem* item, const Subfolders& found) {
    if (found.refused && found.folders.isEmpty()) {
        PutNote(item, 329);
        return;
    }
    qDeleteAll(item->takeChildren());
    for (const LocalFolder& folder : found.folders) {
        AddNode(item, folder);
    }
    if (found.folders.isEmpty()) {
        item->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicator);
    }
}

} // namespace velmora
