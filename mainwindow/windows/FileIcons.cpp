// Chooses icons by kind of file and draws the mark of recognised documents.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FileIcons.h"

#include "resources/icons/Icons.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

const QString kOcrKey = u"_TIF_OCR_"_s;
const QString kFolderKey = u"FLDCL"_s;

// The icon of a kind of file with a page of text in its corner.
class OcrIconEngine : public QIconEngine {
  public:
    explicit OcrIconEngine(QIcon base) : m_base(std::move(base)) {}

    QIconEngine* clone() const override { return new OcrIconEngine(*this); }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        m_base.paint(painter, rect, Qt::AlignCenter, mode, state);
        const QPalette palette = QGuiApplication::palette();
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const bool turned = mode == QIcon::Selected;
        const QColor plate =
            palette.color(group, turned ? QPalette::HighlightedText : QPalette::Highlight);
        const QColor lines =
            palette.color(group, turned ? QPalette::Highlight : QPalette::HighlightedText);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / 24.0, rect.height() / 24.0);
        painter->setPen(Qt::NoPen);
        painter->setBrush(plate);
        painter->drawRoundedRect(QRectF(10.5, 10.5, 13.5, 13.5), 2.5, 2.5);
        painter->setPen(QPen(lines, 2, Qt::SolidLine, Qt::RoundCap));
        painter->drawLine(QPointF(13.5, 14.5), QPointF(21, 14.5));
        painter->drawLine(QPointF(13.5, 17.5), QPointF(21, 17.5));
        painter->drawLine(QPointF(13.5, 20.5), QPointF(18, 20.5));
        painter->restore();
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap drawn(size);
        drawn.fill(Qt::transparent);
        QPainter painter(&drawn);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return drawn;
    }

  private:
    QIcon m_base;
};

// Closed, and open where a view shows an opened node.
class FolderIconEngine : public QIconEngine {
  public:
    FolderIconEngine(QIcon closed, QIcon open)
        : m_closed(std::move(closed)), m_open(std::move(open)) {}

    QIconEngine* clone() const override { return new FolderIconEngine(*this); }
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        (state == QIcon::On ? m_open : m_closed).paint(painter, rect, Qt::AlignCenter, mode);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return (state == QIcon::On ? m_open : m_closed).pixmap(size, 1.0, mode);
    }

  private:
    QIcon m_closed;
    QIcon m_open;
};

// The first of the names that the desktop's theme has; none without a theme.
QIcon ThemeIcon(const QStringList& names) {
    for (const QString& name : names) {
        if (!name.isEmpty() && QIcon::hasThemeIcon(name)) {
            return QIcon::fromTheme(name);
        }
    }
    return {};
}

QIcon ThemeOr(const QStringList& names, const QString& ours) {
    const QIcon icon = ThemeIcon(names);
    return icon.isNull() ? LineIcon(ours) : icon;
}

QIcon OpenFolder() {
    return ThemeOr({u"folder-open"_s, u"folder"_s}, u"folder-open"_s);
}

QIcon MakeStdIcon(const QString& key) {
    if (key == u"DSK") {
        return ThemeOr({u"user-desktop"_s}, u"computer"_s);
    }
    if (key == u"DOCS") {
        return ThemeOr({u"folder-documents"_s}, u"folder"_s);
    }
    if (key == u"MYCMP") {
        return ThemeOr({u"computer"_s}, u"computer"_s);
    }
    if (key == u"HDD") {
        return ThemeOr({u"drive-harddisk"_s}, u"drive"_s);
    }
    if (key == u"NETHDD") {
        return ThemeOr({u"folder-remote"_s, u"network-server"_s}, u"drive-network"_s);
    }
    if (key == u"FLDOP") {
        return OpenFolder();
    }
    if (key == u"DEF") {
        return ThemeOr({u"text-x-generic"_s, u"unknown"_s}, u"file"_s);
    }
    if (key == kOcrKey) {
        const QIcon image = ThemeOr({u"image-tiff"_s, u"image-x-generic"_s}, u"file-image"_s);
        return QIcon(new OcrIconEngine(image));
    }
    return QIcon(new FolderIconEngine(ThemeOr({u"folder"_s}, u"folder"_s), OpenFolder()));
}

} // namespace

QIcon FileIcons::StdIcon(const QString& key) {
    static QHash<QString, QIcon> icons;
    static QString theme;
    if (theme != QIcon::themeName()) {
        icons.clear();
        theme = QIcon::themeName();
    }
    auto icon = icons.find(key);
    if (icon == icons.end()) {
        icon = icons.insert(key, MakeStdIcon(key));
    }
    return *icon;
}

QIcon FileIcons::IconOf(const FileRow& row, bool hasOcr) {
    if (row.isFolder) {
        return StdIcon(kFolderKey);
    }
    if (hasOcr) {
        return StdIcon(kOcrKey);
    }
    const qsizetype point = row.name.lastIndexOf(u'.');
    QString key = point > 0 ? row.name.mid(point + 1).toLower() : QString();
    const bool isProgram = row.isProgram && point <= 0;
    key += isProgram ? u"/program"_s : QString();
    auto icon = m_icons.find(key);
    if (icon == m_icons.end()) {
        icon = m_icons.insert(key, IconOfKind(key, row));
    }
    return *icon;
}

QIcon FileIcons::IconOfKind(const QString& ending, const FileRow& row) const {
    // A starter's own picture stands inside it: one picture for all of them, unread.
    if (ending == u"desktop") {
        return ThemeOr({u"application-x-desktop"_s, u"application-x-executable"_s}, u"program"_s);
    }
    if (ending == u"/program") {
        return ThemeOr({u"application-x-executable"_s}, u"program"_s);
    }
    const QMimeType kind = m_kinds.mimeTypeForFile(row.name, QMimeDatabase::MatchExtension);
    const QIcon icon = kind.isDefault() ? ThemeIcon({u"text-x-generic"_s})
                                        : ThemeIcon({kind.iconName(), kind.genericIconName()});
    return icon.isNull() ? LineIcon(IconOfFile(row.name)) : icon;
}

} // namespace velmora
