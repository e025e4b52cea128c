// How the folder tree gets its sub-folders and plus signs.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/FolderFiles.h"
#include "mainwindow/windows/FileIcons.h"
#include "mainwindow/windows/FolderNode.h"
#include "mainwindow/windows/FoldersTree.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

FolderNode* ChildAt(FolderNode& node, int at) {
    return static_cast<FolderNode*>(node.child(at));
}

void ShowFolderIcon(QTreeWidgetItem& node) {
    node.setIcon(0, FileIcons::StdIcon(u"FLDCL"_s));
}

} // namespace

void FoldersTree::Load(FolderNode& node) {
    if (node.parent()) {
        m_reader->Read(node.id, node.path);
    }
}

void FoldersTree::TakeSubFolders(const SubFolders& folders) {
    FolderNode* node = m_nodes.value(folders.node);
    if (!node) {
        return;
    }
    if (!folders.error.Ok() && folders.names.isEmpty()) {
        node->setExpanded(false); // choosing it will tell why
        return;
    }
    node->machinePath = folders.machinePath;
    node->loaded = true;
    Merge(*node, folders.names);
}

void FoldersTree::SetSubFolders(const QString& path, const QString& machinePath,
                                const QStringList& names) {
    FolderNode* node = CurrentNode();
    if (node && node->parent() && node->path == path) {
        node->machinePath = machinePath;
        node->loaded = true;
        Merge(*node, names);
    }
}

void FoldersTree::Merge(FolderNode& node, const QStringList& names) {
    const QSet<QString> now(names.begin(), names.end());
    for (int at = node.childCount() - 1; at >= 0; --at) {
        // The chosen one stays: its own reading finds out that it is gone, and tells.
        if (!now.contains(node.child(at)->text(0)) && node.child(at) != currentItem()) {
            delete node.child(at);
        }
    }
    QSet<QString> known;
    for (int at = 0; at < node.childCount(); ++at) {
        known.insert(node.child(at)->text(0));
    }
    QList<FolderNode*> added;
    QList<QTreeWidgetItem*> run; // inserted as one: one by one is slow in large folders
    int place = 0;
    const auto insertRun = [&] {
        node.insertChildren(place, run);
        place += static_cast<int>(run.size());
        run.clear();
    };
    for (const QString& name : names) {
        if (known.contains(name)) {
            insertRun();
            ++place;
            continue;
        }
        auto* child = new FolderNode(*this, PathOf(node.path, name), name);
        child->machinePath = node.machinePath + u'/' + name;
        child->setFlags(child->flags() | Qt::ItemIsEditable);
        ShowFolderIcon(*child);
        added << child;
        run << child;
    }
    insertRun();
    node.setChildIndicatorPolicy(node.childCount() > 0
                                     ? QTreeWidgetItem::DontShowIndicatorWhenChildless
                                     : QTreeWidgetItem::DontShowIndicator);
    AskForPlus(added);
}

FolderNode* FoldersTree::ChildFor(FolderNode& node, const QString& name) {
    FolderNode* found = nullptr;
    for (int at = 0; at < node.childCount(); ++at) {
        FolderNode* child = ChildAt(node, at);
        if (platform::FileName(child->path) == name) {
            return child;
        }
        if (!found && platform::SamePath(platform::FileName(child->path), name)) {
            found = child;
        }
    }
    if (found) {
        return found;
    }
    // Not read yet: the one node is added, its neighbours come when the folder is opened.
    const QString path = platform::JoinPath(node.path, name);
    const QString machinePath = platform::ToMachine(path);
    if (machinePath.isEmpty() || !platform::IsFolder(machinePath)) {
        return nullptr;
    }
    const QString spelled = machinePath.section(u'/', -1);
    auto* child = new FolderNode(*this, PathOf(node.path, spelled), spelled);
    child->machinePath = machinePath;
    child->setFlags(child->flags() | Qt::ItemIsEditable);
    ShowFolderIcon(*child);
    node.addChild(child);
    AskForPlus({child});
    return child;
}

void FoldersTree::RemoveChildNodes(const QString& path) {
    FolderNode* node = FindNode(path);
    if (!node || !node->parent()) {
        return;
    }
    for (QTreeWidgetItem* above = currentItem(); above; above = above->parent()) {
        if (above->parent() == node) {
            setCurrentItem(node); // the chosen node is about to go
            break;
        }
    }
    qDeleteAll(node->takeChildren());
    node->loaded = false;
    if (node->isExpanded()) {
        Load(*node);
    } else {
        AskForPlus({node});
    }
}

void FoldersTree::AskForPlus(const QList<FolderNode*>& nodes) {
    if (nodes.isEmpty()) {
        return;
    }
    QList<PlusQuestion> questions;
    for (const FolderNode* node : nodes) {
        questions << PlusQuestion{node->id, node->path};
        m_withoutAnswer.insert(node->id);
    }
    m_reader->FindPlus(std::move(questions));
    m_patience.start();
}

void FoldersTree::TakePlus(const QList<PlusAnswer>& answers) {
    for (const PlusAnswer& answer : answers) {
        m_withoutAnswer.remove(answer.node);
        FolderNode* node = m_nodes.value(answer.node);
        if (!node) {
            continue;
        }
        if (!answer.machinePath.isEmpty()) {
            node->machinePath = answer.machinePath;
        }
        if (node->childCount() == 0) {
            node->setChildIndicatorPolicy(answer.plus && !node->loaded
                                              ? QTreeWidgetItem::ShowIndicator
                                              : QTreeWidgetItem::DontShowIndicator);
        }
    }
    if (m_withoutAnswer.isEmpty()) {
        m_patience.stop();
    } else {
        m_patience.start();
    }
}

} // namespace velmora
