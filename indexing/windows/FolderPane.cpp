// Dragging folders between two panes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/windows/FolderPane.h"

#include "indexing/LocalFolders.h"
#include "platform/Names.h"
#include "resources/icons/Icons.h"

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// Tells which pane of which process the folders come from.
const QString kPaneFormat = u"application/x-velmora-folders"_s;

// Names that are not UTF-8 travel as their bytes.
QUrl UrlOf(const QString& machinePath) {
    return QUrl::fromEncoded("file://" + platform::EncodeName(machinePath).toPercentEncoding("/"));
}

QString PathOf(const QUrl& url) {
    if (!url.isLocalFile()) {
        return {};
    }
    QByteArray path = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
    while (path.size() > 1 && path.endsWith('/')) {
        path.chop(1);
    }
    return platform::DecodeName(path);
}

} // namespace

QIcon FolderIcon(const QString& kind) {
    return LineIcon(kind == kMyComputer    ? u"computer"_s
                    : kind == kDesktop     ? u"desktop"_s
                    : kind == kDocuments   ? u"documents"_s
                    : kind == kDisk        ? u"drive"_s
                    : kind == kNetworkDisk ? u"drive-network"_s
                                           : u"folder"_s);
}

FolderPane::FolderPane(QWidget* parent) : QTreeWidget(parent) {
    setDragDropMode(QAbstractItemView::DragDrop);
    setDropIndicatorShown(false);
}

void FolderPane::SetPartner(const FolderPane& partner, bool takesFiles) {
    m_partner = &partner;
    m_takesFiles = takesFiles;
}

QString FolderPane::SelectedPath() const {
    const QList<QTreeWidgetItem*> items = selectedItems();
    return items.isEmpty() ? QString() : items.first()->data(0, kPathRole).toString();
}

QByteArray FolderPane::Name() const {
    return QByteArray::number(QCoreApplication::applicationPid()) + ' ' + objectName().toUtf8();
}

QStringList FolderPane::mimeTypes() const {
    return {u"text/uri-list"_s, kPaneFormat};
}

QMimeData* FolderPane::mimeData(const QList<QTreeWidgetItem*>& items) const {
    QList<QUrl> urls;
    for (const QTreeWidgetItem* item : items) {
        if (const QString path = item->data(0, kPathRole).toString(); !path.isEmpty()) {
            urls << UrlOf(path);
        }
    }
    if (urls.isEmpty()) {
        return nullptr; // the drag does not begin
    }
    auto* carried = new QMimeData; // the drag takes it over
    carried->setUrls(urls);
    carried->setData(kPaneFormat, Name());
    return carried;
}

QStringList FolderPane::PathsOf(const QMimeData& dragged) const {
    const QByteArray from = dragged.data(kPaneFormat);
    const bool welcome =
        from.isEmpty() ? m_takesFiles : m_partner != nullptr && from == m_partner->Name();
    QStringList paths;
    for (const QUrl& url : welcome ? dragged.urls() : QList<QUrl>()) {
        if (const QString path = PathOf(url); !path.isEmpty()) {
            paths << path;
        }
    }
    return paths;
}

void FolderPane::dragEnterEvent(QDragEnterEvent* event) {
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(!PathsOf(*event->mimeData()).isEmpty());
}

void FolderPane::dragMoveEvent(QDragMoveEvent* event) {
    dragEnterEvent(static_cast<QDragEnterEvent*>(event));
}

void FolderPane::dropEvent(QDropEvent* event) {
    const QStringList paths = PathsOf(*event->mimeData());
    event->setDropAction(Qt::CopyAction); // a file manager must not take its folder away
    event->setAccepted(!paths.isEmpty());
    if (!paths.isEmpty()) {
        Q_EMIT FoldersDropped(paths);
    }
}

} // namespace velmora
