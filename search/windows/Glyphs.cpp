// Paints the glyphs as lines on a square of 16 units.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/windows/Glyphs.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <initializer_list>

namespace velmora {

namespace {

constexpr double kUnits = 16;
constexpr double kLine = 1.3; // width of a line

QPainterPath Line(std::initializer_list<QPointF> points) {
    QPainterPath path(*points.begin());
    for (const QPointF& point : points) {
        path.lineTo(point);
    }
    return path;
}

QPainterPath Box(double left, double top, double right, double bottom) {
    QPainterPath path;
    path.addRoundedRect(QRectF(QPointF(left, top), QPointF(right, bottom)), 1, 1);
    return path;
}

QPainterPath Page(double left, double top) {
    QPainterPath page = Line({{left, top}, {left + 5, top}, {left + 8, top + 3}});
    page.lineTo(left + 8, top + 11);
    page.lineTo(left, top + 11);
    page.closeSubpath();
    page.addPath(Line({{left + 5, top}, {left + 5, top + 3}, {left + 8, top + 3}}));
    return page;
}

QPainterPath PaperClip() {
    QPainterPath clip;
    clip.moveTo(11.5, 6);
    clip.lineTo(11.5, 11);
    clip.arcTo(QRectF(4.5, 7.5, 7, 7), 0, -180);
    clip.lineTo(4.5, 4);
    clip.arcTo(QRectF(4.5, 1.5, 5, 5), 180, -180);
    clip.lineTo(9.5, 10.5);
    clip.arcTo(QRectF(6.5, 9, 3, 3), 0, -180);
    clip.lineTo(6.5, 5.5);
    return clip;
}

QPainterPath Folder() {
    QPainterPath folder = Line({{2, 4}, {6, 4}, {7.5, 5.5}, {14, 5.5}, {14, 13}, {2, 13}});
    folder.closeSubpath();
    return folder;
}

// An arrow that points to the right, turned by so many degrees.
QPainterPath Arrow(double turn) {
    QPainterPath arrow = Line({{3, 8}, {13, 8}});
    arrow.addPath(Line({{9, 4}, {13, 8}, {9, 12}}));
    return QTransform().translate(8, 8).rotate(turn).translate(-8, -8).map(arrow);
}

QPainterPath Picture() {
    QPainterPath picture = Box(2, 3, 14, 13);
    picture.addPath(Line({{2.5, 11.5}, {6, 7.5}, {9, 11}, {11, 9}, {13.5, 11.5}}));
    picture.addEllipse(QPointF(10.5, 6), 1.1, 1.1);
    return picture;
}

QPainterPath Lens() {
    QPainterPath lens;
    lens.addEllipse(QPointF(9.5, 9.5), 2.6, 2.6);
    lens.addPath(Line({{11.5, 11.5}, {14.5, 14.5}}));
    return lens;
}

QPainterPath Joined(std::initializer_list<QPainterPath> parts) {
    QPainterPath whole;
    for (const QPainterPath& part : parts) {
        whole.addPath(part);
    }
    return whole;
}

QPainterPath Shape(Glyph glyph) {
    switch (glyph) {
    case Glyph::All:
        return Joined({Page(2.5, 1.5), Line({{6, 14.5}, {13.5, 14.5}, {13.5, 5.5}})});
    case Glyph::Document:
        return Page(4, 2.5);
    case Glyph::Mail:
        return Joined({Box(1.5, 3.5, 14.5, 12.5), Line({{2, 4.5}, {8, 9}, {14, 4.5}})});
    case Glyph::Attachment:
        return PaperClip();
    case Glyph::Archive:
        return Joined({Box(2, 3, 14, 6), Box(3, 6, 13, 13.5), Line({{6.5, 8.5}, {9.5, 8.5}})});
    case Glyph::Image:
        return Picture();
    case Glyph::Right:
        return Arrow(0);
    case Glyph::Down:
        return Arrow(90);
    case Glyph::Left:
        return Arrow(180);
    case Glyph::Up:
        return Arrow(270);
    case Glyph::Open:
        return Joined({Line({{9, 2.5}, {13.5, 2.5}, {13.5, 7}}), Line({{13.5, 2.5}, {7.5, 8.5}}),
                       Line({{6.5, 4}, {2.5, 4}, {2.5, 13.5}, {12, 13.5}, {12, 9.5}})});
    case Glyph::Locate:
        return Joined({Folder(), Lens()});
    case Glyph::Close:
        return Joined({Line({{4, 4}, {12, 12}}), Line({{12, 4}, {4, 12}})});
    }
    return {};
}

class GlyphEngine : public QIconEngine {
  public:
    explicit GlyphEngine(Glyph glyph) : m_glyph(glyph) {}
    QIconEngine* clone() const override { return new GlyphEngine(m_glyph); }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return picture;
    }
    void paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State) override {
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const auto role =
            mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::WindowText;
        const double scale = std::min(place.width(), place.height()) / kUnits;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(place.center() + QPointF(0.5, 0.5) - QPointF(8, 8) * scale);
        painter->scale(scale, scale);
        painter->setPen(QPen(QGuiApplication::palette().color(group, role), kLine, Qt::SolidLine,
                             Qt::RoundCap, Qt::RoundJoin));
        painter->drawPath(Shape(m_glyph));
        painter->restore();
    }

  private:
    Glyph m_glyph;
};

} // namespace

QIcon GlyphIcon(Glyph glyph) {
    return QIcon(new GlyphEngine(glyph));
}

} // namespace velmora
