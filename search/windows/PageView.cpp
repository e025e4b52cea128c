// The page, its hits and its walls.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/windows/PageView.h"

#include "core/Messages.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QScrollBar>
#include <QTextBlock>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int kCopy = 74;
constexpr int kSelectAll = 253;
constexpr QColor kCurrentHit(0x8C, 0xE9, 0x7A);

// The number of a hit's anchor; 0 for any other anchor.
int HitNumber(const QTextCharFormat& format) {
    for (const QString& name : format.anchorNames()) {
        if (name.startsWith(u"hit")) {
            return QStringView(name).mid(3).toInt();
        }
    }
    return 0;
}

} // namespace

PageView::PageView(QWidget* parent) : QTextBrowser(parent) {
    setOpenLinks(false);
    setOpenExternalLinks(false);
    setUndoRedoEnabled(false);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    QPalette paper = palette();
    paper.setColor(QPalette::Base, Qt::white);
    paper.setColor(QPalette::Text, Qt::black);
    paper.setColor(QPalette::Link, QColor(0x00, 0x45, 0xA0));
    setPalette(paper);
    document()->setDocumentMargin(14);
}

void PageView::ShowPage(const QString& html) {
    setExtraSelections({});
    setHtml(html);
    FindHits();
}

void PageView::FindHits() {
    m_hits.clear();
    bool isOpen = false; // the last hit may go on in the next piece
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        for (auto piece = block.begin(); !piece.atEnd(); ++piece) {
            const QTextFragment fragment = piece.fragment();
            const QTextCharFormat format = fragment.charFormat();
            const int end = fragment.position() + fragment.length();
            if (HitNumber(format) == HitCount() + 1) {
                m_hits.push_back({fragment.position(), end});
                isOpen = true;
            } else if (isOpen && format.fontWeight() >= QFont::Bold &&
                       format.background().style() != Qt::NoBrush) {
                m_hits.back().end = end;
            } else {
                isOpen = false;
            }
        }
    }
}

void PageView::ShowHit(int number) {
    if (number < 1 || number > HitCount()) {
        return;
    }
    const HitPlace& place = m_hits[static_cast<std::size_t>(number) - 1];
    QTextEdit::ExtraSelection mark;
    mark.cursor = QTextCursor(document());
    mark.cursor.setPosition(place.begin);
    const QRect line = cursorRect(mark.cursor);
    mark.cursor.setPosition(place.end, QTextCursor::KeepAnchor);
    mark.format.setBackground(kCurrentHit);
    setExtraSelections({mark});
    // A third of the page stands above the hit, so that it is read in its place.
    verticalScrollBar()->setValue(verticalScrollBar()->value() + line.top() -
                                  viewport()->height() / 3);
    const int right = line.right() + 40;
    if (line.left() < 0 || right > viewport()->width()) {
        horizontalScrollBar()->setValue(horizontalScrollBar()->value() + line.left() - 40);
    }
}

QVariant PageView::loadResource(int type, const QUrl& name) {
    if (name.scheme() == u"data") {
        return {}; // the document takes it apart itself
    }
    // No answer, or an empty picture, would make the toolkit look on the disk for it.
    if (type == QTextDocument::ImageResource) {
        QImage nothing(1, 1, QImage::Format_ARGB32_Premultiplied);
        nothing.fill(Qt::transparent);
        return nothing;
    }
    return QByteArray("");
}

void PageView::doSetSource(const QUrl& /*url*/, QTextDocument::ResourceType /*type*/) {
    // The page is all there is to see.
}

void PageView::contextMenuEvent(QContextMenuEvent* event) {
    QMenu menu(this);
    QAction* copy = menu.addAction(GetMessage(kCopy), this, &QTextEdit::copy);
    copy->setEnabled(textCursor().hasSelection());
    menu.addAction(GetMessage(kSelectAll), this, &QTextEdit::selectAll);
    menu.exec(event->globalPos());
}

} // namespace velmora
