// Renders the program's line icons.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "resources/icons/Icons.h"

#include <QBuffer>
#include <QFile>
#include <QGuiApplication>
#include <QHash>
#include <QIconEngine>
#include <QImageReader>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>

using namespace Qt::StringLiterals;

// Outside the namespace: what a static library holds of resources is left out by the linker unless
// it is asked for.
static void LoadResources() {
    Q_INIT_RESOURCE(icons);
}

namespace velmora {

namespace {

QByteArray IconText(const QString& name) {
    LoadResources();
    QFile file(u":/velmora/%1.svg"_s.arg(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QPixmap Render(QByteArray svg, const QColor& colour, QSize size) {
    svg.replace("currentColor", colour.name().toLatin1());
    QBuffer buffer(&svg);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "svg");
    reader.setScaledSize(size);
    return QPixmap::fromImage(reader.read());
}

class LineIconEngine : public QIconEngine {
  public:
    explicit LineIconEngine(const QString& name) : m_name(name), m_svg(IconText(name)) {}

    QIconEngine* clone() const override { return new LineIconEngine(*this); }
    bool isNull() override { return m_svg.isEmpty(); }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const qreal ratio = painter->device()->devicePixelRatioF();
        QPixmap drawn = Drawn(rect.size() * ratio, mode);
        drawn.setDevicePixelRatio(ratio);
        painter->drawPixmap(rect, drawn);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        return Drawn(size, mode);
    }

  private:
    QPixmap Drawn(QSize size, QIcon::Mode mode) const {
        const QPalette palette = QGuiApplication::palette();
        const QColor colour =
            mode == QIcon::Disabled   ? palette.color(QPalette::Disabled, QPalette::WindowText)
            : mode == QIcon::Selected ? palette.color(QPalette::Active, QPalette::HighlightedText)
                                      : palette.color(QPalette::Active, QPalette::WindowText);
        const QString key = u"velmora-%1-%2-%3x%4"_s.arg(m_name, colour.name())
                                .arg(size.width())
                                .arg(size.height());
        QPixmap pixmap;
        if (!QPixmapCache::find(key, &pixmap)) {
            pixmap = Render(m_svg, colour, size);
            QPixmapCache::insert(key, pixmap);
        }
        return pixmap;
    }

    QString m_name;
    QByteArray m_svg;
};

} // namespace

QIcon LineIcon(const QString& name) {
    return QIcon(new LineIconEngine(name));
}

QString IconOfFile(const QString& fileName) {
    static const QHash<QString, QString> kinds = [] {
        QHash<QString, QString> icons;
        const auto add = [&](const QString& icon, const QString& endings) {
            for (const QString& ending : endings.split(u' ')) {
                icons[ending] = icon;
            }
        };
        add(u"file-text"_s,
            u"txt md doc docx odt rtf pdf htm html xml epub tex log ppt pptx odp"_s);
        add(u"file-table"_s, u"xls xlsx ods csv"_s);
        add(u"file-image"_s, u"tif tiff png jpg jpeg gif bmp svg webp heic"_s);
        add(u"file-mail"_s, u"eml msg mbox pst"_s);
        add(u"file-archive"_s, u"zip tar gz tgz bz2 xz 7z rar zst"_s);
        return icons;
    }();
    return kinds.value(fileName.section(u'.', -1).toLower(), u"file"_s);
}

QIcon ProgramIcon() {
    return LineIcon(u"velmora"_s);
}

} // namespace velmora
