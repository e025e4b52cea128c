// Judges drags over a pane, marks the target and takes drops.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FileDrops.h"

#include "core/Dialogue.h"
#include "core/Messages.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"

#include <QAbstractItemView>
#include <QDrag>
#include <QDragMoveEvent>
#include <QMimeData>
#include <QPainter>

namespace velmora {

namespace {

constexpr int kHoverMs = 700;
constexpr int kInvalidPosition = 119; // title
constexpr int kCannotAddHere = 135;

} // namespace

FileDrops::FileDrops(QAbstractItemView& pane, Target target, Dropped dropped)
    : m_pane(pane), m_target(std::move(target)), m_dropped(std::move(dropped)) {
    m_hover.setSingleShot(true);
    m_hover.setInterval(kHoverMs);
    QObject::connect(&m_hover, &QTimer::timeout, &m_pane, [this] {
        if (m_shown.isValid() && open) {
            open(m_shown);
        }
    });
}

QModelIndex FileDrops::TargetIndex(const QPoint& place) const {
    const QModelIndex index = m_pane.indexAt(place);
    return index.siblingAtColumn(0);
}

bool FileDrops::SameDisk(const QString& path, const QString& target) {
    const auto disk = [this](const QString& of) {
        auto known = m_disks.find(of);
        if (known == m_disks.end()) {
            known = m_disks.insert(of, platform::DeviceOf(platform::ToMachine(of)).value_or(0));
        }
        return *known;
    };
    const quint64 there = disk(target);
    return there != 0 && disk(path) == there;
}

DropEffect FileDrops::Judge(const QDropEvent& event, QString* target, FileList* list) {
    if (!m_dragged) {
        m_dragged = FromMimeData(*event.mimeData());
    }
    const std::optional<QString> folder = m_target(TargetIndex(event.position().toPoint()));
    if (m_dragged->IsEmpty() || !folder) {
        return DropEffect::None;
    }
    *target = *folder;
    *list = *m_dragged;
    DropQuestion question;
    question.paths = m_dragged->paths;
    question.target = *folder;
    question.keys = event.modifiers();
    question.offered = event.possibleActions();
    question.sameDisk = !folder->isEmpty() && SameDisk(m_dragged->paths.first(), *folder);
    return EffectOf(question);
}

void FileDrops::Show(const QModelIndex& index, bool on) {
    if (m_shown != index) {
        m_hover.start();
    }
    if (m_shown != index || m_on != on) {
        m_shown = index;
        m_on = on;
        m_pane.viewport()->update();
    }
}

void FileDrops::Enter(QDragMoveEvent& event) {
    // Whatever lies under the pointer now, often the dragged row itself: a pane that refuses here
    // is not asked again on the way.
    m_dragged.reset();
    event.setAccepted(HasFileList(*event.mimeData()));
}

void FileDrops::Move(QDragMoveEvent& event) {
    if (!HasFileList(*event.mimeData())) {
        event.ignore();
        return;
    }
    QString target;
    FileList list;
    const DropEffect effect = Judge(event, &target, &list);
    const bool possible = effect == DropEffect::Move || effect == DropEffect::Copy;
    const QModelIndex index = TargetIndex(event.position().toPoint());
    // A file's row stands for the folder that is shown.
    const bool isFolder = m_target(index) != m_target({}) || !m_target({});
    Show(isFolder ? index : QModelIndex(), possible);
    switch (effect) {
    case DropEffect::None:
        event.ignore();
        return;
    case DropEffect::Impossible:
        // Accepted, with the pointer that forbids, so that a drop is told why nothing happens.
        event.setDropAction(Qt::IgnoreAction);
        break;
    case DropEffect::Move:
        event.setDropAction(Qt::MoveAction);
        break;
    case DropEffect::Copy:
        event.setDropAction(Qt::CopyAction);
        break;
    }
    event.accept();
}

void FileDrops::Leave() {
    m_hover.stop();
    m_dragged.reset();
    m_disks.clear();
    Show({}, false);
    m_hover.stop();
}

void FileDrops::Drop(QDropEvent& event) {
    QString target;
    FileList list;
    m_dragged.reset();
    const DropEffect effect = Judge(event, &target, &list);
    Leave();
    if (effect == DropEffect::None) {
        event.ignore();
        return;
    }
    list.move = effect == DropEffect::Move;
    // The files are moved here and by nobody else: the source must not remove them once more.
    event.setDropAction(effect == DropEffect::Impossible ? Qt::IgnoreAction : Qt::CopyAction);
    event.accept();
    // Later: a question in front of the person must not hold up the program that is dragged from.
    QTimer::singleShot(0, &m_pane, [this, effect, list, target] {
        if (effect == DropEffect::Impossible) {
            Tell(GetMessage(kCannotAddHere), GetMessage(kInvalidPosition), Icon::Exclamation);
        } else {
            m_dropped(list, target);
        }
    });
}

void FileDrops::Paint() const {
    if (!m_on) {
        return;
    }
    QWidget& area = *m_pane.viewport();
    QRect frame = area.rect();
    if (m_shown.isValid()) {
        const QRect row = m_pane.visualRect(m_shown);
        frame = QRect(0, row.top(), area.width(), row.height());
    }
    QPainter painter(&area);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = m_pane.palette().color(QPalette::Highlight);
    painter.setPen(QPen(fill, 2));
    fill.setAlpha(50);
    painter.setBrush(m_shown.isValid() ? QBrush(fill) : QBrush());
    painter.drawRoundedRect(QRectF(frame).adjusted(1, 1, -1, -1), 3, 3);
}

void DragFiles(QAbstractItemView& pane, const FileList& list) {
    if (list.IsEmpty()) {
        return;
    }
    auto* drag = new QDrag(&pane);
    drag->setMimeData(ToMimeData(list).release());
    const QModelIndex index = pane.currentIndex().siblingAtColumn(0);
    const QIcon icon = index.data(Qt::DecorationRole).value<QIcon>();
    if (!icon.isNull()) {
        drag->setPixmap(icon.pixmap(pane.iconSize(), pane.devicePixelRatioF()));
    }
    drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::MoveAction);
}

} // namespace velmora
