#include "background.h"

#include <cmath>

#include <QTransform>

static QColor mix(const QColor &a, const QColor &b, double part)
{
    return QColor::fromRgbF(a.redF() * (1 - part) + b.redF() * part,
                            a.greenF() * (1 - part) + b.greenF() * part,
                            a.blueF() * (1 - part) + b.blueF() * part);
}

MapColours::MapColours(const QPalette &palette)
    : page(palette.color(QPalette::Base)), text(palette.color(QPalette::Text))
{
    const bool dark = page.lightnessF() < 0.5;
    sea = mix(page, dark ? QColor(40, 90, 140) : QColor(150, 190, 225), dark ? 0.18 : 0.28);
    land = mix(page, text, dark ? 0.22 : 0.13);
    coast = mix(page, text, 0.5);
    graticule = mix(sea, text, dark ? 0.2 : 0.17);
    outline = dark ? QColor(245, 245, 245, 200) : QColor(30, 30, 30, 190);
}

// Adds a line of places; parts beyond the range are left out.
template <typename Place>
static void addLine(QPainterPath &path, const Projection &projection, double range, double first, double last,
                    double step, Place place)
{
    bool drawing = false;
    const int steps = static_cast<int>(std::lround((last - first) / step));
    for (int i = 0; i <= steps; ++i) {
        const auto [latitude, longitude] = place(first + i * step);
        const QPointF point = projection.forward(latitude, longitude);
        const bool inside = std::hypot(point.x(), point.y()) <= std::min(range + 2, 179.5);
        if (inside && drawing)
            path.lineTo(point);
        else if (inside)
            path.moveTo(point);
        drawing = inside;
    }
}

QPainterPath graticule(const Projection &projection, double range, double step)
{
    QPainterPath lines;
    for (double latitude = -90 + step; latitude < 90 - step / 2; latitude += step)
        addLine(lines, projection, range, -180, 180, 1,
                [=](double longitude) { return std::pair(latitude, longitude); });
    for (double longitude = -180; longitude < 180 - step / 2; longitude += step)
        addLine(lines, projection, range, -90, 90, 1,
                [=](double latitude) { return std::pair(latitude, longitude); });
    return lines;
}

void drawBackground(QPainter &painter, const MapFrame &frame, const ProjectedLand &land,
                    const QPainterPath &lines, double range, const MapColours &colours)
{
    const QPointF origin = frame.toPixel({0, 0});
    const QTransform toPixel(frame.scale, 0, 0, -frame.scale, origin.x(), origin.y());
    QPainterPath disc;
    disc.addEllipse(origin, range * frame.scale, range * frame.scale);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(disc, colours.sea);
    painter.setClipPath(disc, Qt::IntersectClip);
    painter.fillPath(toPixel.map(land.area), colours.land);
    painter.setPen(QPen(colours.graticule, 0.6));
    painter.drawPath(toPixel.map(lines));
    painter.setPen(QPen(colours.coast, 0.9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(toPixel.map(land.coast));
    painter.restore();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colours.coast, 1.2));
    painter.drawPath(disc);
    painter.restore();
}
