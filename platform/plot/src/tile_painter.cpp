#include "tile_painter.h"

#include <cmath>

#include <QPainter>
#include <QPainterPath>

#include "graticule.h"

TilePainter::TilePainter(const MapColours &colours, double devicePixelRatio)
    : m_colours(colours), m_ratio(devicePixelRatio), m_plain(devicePixelRatio, colours.outline),
      m_selected(devicePixelRatio, colours.outline, colours.selection, colours.halo)
{
}

// One edge of a rectangle against which an area is cut.
namespace {
struct Edge {
    bool vertical;
    double at;
    double sign; // inside is where sign * (coordinate - at) >= 0
    double distance(QPointF point) const { return sign * ((vertical ? point.x() : point.y()) - at); }
};
} // namespace

static QPolygonF cutBy(const QPolygonF &area, const Edge &edge)
{
    QPolygonF rest;
    for (int i = 0; i < area.size(); ++i) {
        const QPointF a = area[i], b = area[(i + 1) % area.size()];
        const double before = edge.distance(a), after = edge.distance(b);
        if (before >= 0)
            rest << a;
        if ((before >= 0) != (after >= 0))
            rest << a + (b - a) * (before / (before - after));
    }
    return rest;
}

// The part of an area within a rectangle; its outline follows the rectangle where the area goes on.
static QPolygonF cut(QPolygonF area, const QRectF &part)
{
    for (const Edge &edge : {Edge{true, part.left(), 1}, Edge{true, part.right(), -1},
                             Edge{false, part.top(), 1}, Edge{false, part.bottom(), -1}})
        area = cutBy(area, edge);
    return area;
}

static QPolygonF inPixels(QPolygonF points, const MapFrame &frame)
{
    for (QPointF &point : points)
        point = frame.toPixel(point);
    return points;
}

void TilePainter::drawLand(QPainter &painter, const MapFrame &frame, const ProjectedLand &land) const
{
    const QRectF pixels = QRectF({0, 0}, frame.size).adjusted(-4, -4, 4, 4);
    const QRectF part = frame.toPlane(pixels);
    QPainterPath areas;
    for (const PlaneShape &area : land.areas) {
        if (area.insideOut)
            areas.addRect(pixels);
        if (!area.bounds.intersects(part))
            continue;
        areas.addPolygon(inPixels(part.contains(area.bounds) ? area.points : cut(area.points, part), frame));
        areas.closeSubpath();
    }
    painter.fillPath(areas, m_colours.land);
}

static void drawCoast(QPainter &painter, const MapFrame &frame, const ProjectedLand &land)
{
    const QRectF part = frame.toPlane(QRectF({0, 0}, frame.size).adjusted(-4, -4, 4, 4));
    QPainterPath coast;
    for (const PlaneShape &piece : land.coast)
        if (piece.bounds.adjusted(0, 0, 1e-6, 1e-6).intersects(part))
            coast.addPolygon(inPixels(piece.points, frame));
    painter.drawPath(coast);
}

void TilePainter::hideBeyond(QPainter &painter, const MapFrame &frame, double range) const
{
    const QPointF middle = frame.toPixel(QPointF(0, 0));
    const double radius = range * frame.scale;
    const QRectF pixels = QRectF({0, 0}, frame.size).adjusted(-4, -4, 4, 4);
    double furthest = 0;
    for (const QPointF corner :
         {pixels.topLeft(), pixels.topRight(), pixels.bottomRight(), pixels.bottomLeft()})
        furthest = std::max(furthest, std::hypot(corner.x() - middle.x(), corner.y() - middle.y()));
    if (furthest < radius - 2 * m_ratio)
        return;
    QPainterPath beyond;
    beyond.addRect(pixels);
    beyond.addEllipse(middle, radius, radius);
    painter.fillPath(beyond, m_colours.page);
    painter.setPen(QPen(m_colours.coast, 1.2 * m_ratio));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(middle, radius, radius);
}

// Whether any of the frame is within the range.
static bool seesMap(const MapFrame &frame, double range)
{
    const QPointF middle = frame.toPixel(QPointF(0, 0));
    const double x = std::max({-middle.x(), middle.x() - frame.size.width(), 0.0});
    const double y = std::max({-middle.y(), middle.y() - frame.size.height(), 0.0});
    return std::hypot(x, y) <= range * frame.scale + 4;
}

QImage TilePainter::draw(const MapFrame &frame, const MapContents &contents,
                         const GraticuleSteps &steps) const
{
    QImage image(frame.size.toSize(), QImage::Format_RGB32);
    image.fill(m_colours.page);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    if (seesMap(frame, contents.range)) {
        image.fill(m_colours.sea);
        if (contents.land)
            drawLand(painter, frame, *contents.land);
        painter.setPen(QPen(m_colours.graticule, 0.6 * m_ratio));
        painter.drawPath(graticuleLines(contents.projection, contents.range, steps, frame));
        painter.setPen(QPen(m_colours.coast, 0.9 * m_ratio, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        if (contents.land)
            drawCoast(painter, frame, *contents.land);
        hideBeyond(painter, frame, contents.range);
    }
    if (contents.events)
        contents.events->draw(painter, frame, m_plain, m_selected);
    return image;
}
