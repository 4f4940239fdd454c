#include "coastline.h"

#include <algorithm>
#include <cmath>

#include <QDataStream>
#include <QFile>
#include <QPolygonF>

static constexpr char magic[] = "OVCL0001";
static constexpr quint32 mostRings = 100'000, mostPoints = 10'000'000;

static bool readRing(QDataStream &stream, Ring &ring)
{
    quint32 count = 0;
    stream >> count;
    if (stream.status() != QDataStream::Ok || count > mostPoints)
        return false;
    ring.reserve(count);
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        qint16 longitude = 0, latitude = 0;
        stream >> longitude >> latitude;
        ring.push_back({static_cast<float>(longitude / 100.0), static_cast<float>(latitude / 100.0)});
    }
    return stream.status() == QDataStream::Ok;
}

static std::vector<Ring> readRings()
{
    QFile file(QStringLiteral(":/orvane/plot/coastline.bin"));
    if (!file.open(QIODevice::ReadOnly) || file.read(sizeof magic - 1) != magic)
        return {};
    QDataStream stream(&file);
    quint32 count = 0;
    stream >> count;
    if (stream.status() != QDataStream::Ok || count > mostRings)
        return {};
    std::vector<Ring> rings(count);
    for (Ring &ring : rings)
        if (!readRing(stream, ring))
            return {};
    return rings;
}

const std::vector<Ring> &coastlineRings()
{
    static const std::vector<Ring> rings = readRings();
    return rings;
}

// Whether the step between two points is a cut of the data and no coast.
static bool isCut(GeoPoint a, GeoPoint b)
{
    auto onMeridian = [](GeoPoint p) { return std::abs(p.longitude) > 179.98F; };
    return onMeridian(a) && onMeridian(b);
}

// The step from one longitude to another the short way round: rings step across the 180th meridian.
static double eastward(GeoPoint a, GeoPoint b)
{
    return std::remainder(static_cast<double>(b.longitude) - static_cast<double>(a.longitude), 360.0);
}

// Adds the projected way from a to b, in steps short enough to look curved, without a itself.
static void appendWay(QPolygonF &way, GeoPoint a, GeoPoint b, const Projection &projection)
{
    const double longest =
        std::max(std::abs(eastward(a, b)), static_cast<double>(std::abs(b.latitude - a.latitude)));
    const int steps = std::max(1, static_cast<int>(std::ceil(longest)));
    for (int i = 1; i <= steps; ++i) {
        const double part = static_cast<double>(i) / steps;
        way << projection.forward(a.latitude + part * (b.latitude - a.latitude),
                                  a.longitude + part * eastward(a, b));
    }
}

static double signedArea(const QPolygonF &polygon)
{
    double area = 0;
    for (int i = 0; i < polygon.size(); ++i) {
        const QPointF a = polygon[i], b = polygon[(i + 1) % polygon.size()];
        area += a.x() * b.y() - b.x() * a.y();
    }
    return area / 2;
}

// By the sign of the area on the sphere, measured from the south pole: a ring with the land to its right runs
// clockwise, a hole the other way.
static bool runsClockwise(const Ring &ring)
{
    constexpr double radians = 3.14159265358979323846 / 180;
    double sum = 0;
    for (std::size_t i = 0; i + 1 < ring.size(); ++i)
        sum += eastward(ring[i], ring[i + 1]) *
               (2 + std::sin(ring[i].latitude * radians) + std::sin(ring[i + 1].latitude * radians));
    return sum > 0;
}

static bool anyWithin(const QPolygonF &polygon, double range)
{
    for (const QPointF point : polygon)
        if (std::hypot(point.x(), point.y()) <= range)
            return true;
    return false;
}

ProjectedLand projectLand(const std::vector<Ring> &rings, const Projection &projection, double range)
{
    ProjectedLand land;
    for (const Ring &ring : rings) {
        if (ring.size() < 3)
            continue;
        QPolygonF outline;
        outline << projection.forward(ring[0].latitude, ring[0].longitude);
        for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
            QPolygonF way;
            way << outline.back();
            appendWay(way, ring[i], ring[i + 1], projection);
            if (!isCut(ring[i], ring[i + 1]) && anyWithin(way, range))
                land.coast.addPolygon(way);
            way.removeFirst();
            outline << way;
        }
        // A ring around the point opposite to the centre comes out turned inside out: its land is what lies
        // outside of it.
        const bool inverted = (signedArea(outline) < 0) != runsClockwise(ring);
        if (!inverted && !anyWithin(outline, range))
            continue;
        land.area.addPolygon(outline);
        land.area.closeSubpath();
        if (inverted)
            land.area.addEllipse(QPointF(0, 0), 200, 200);
    }
    return land;
}
