#include "coastline.h"

#include <algorithm>
#include <cmath>

#include <QDataStream>
#include <QFile>

static constexpr char magic[] = "OVCL0001";
static constexpr quint32 mostRings = 100'000, mostPoints = 10'000'000;
static constexpr double radians = 3.14159265358979323846 / 180;

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

static std::vector<Ring> readRings(const QString &name)
{
    QFile file(name);
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

const std::vector<Ring> &coastlineRings(Detail detail)
{
    static const std::vector<Ring> coarse = readRings(QStringLiteral(":/orvane/plot/coastline-110m.bin"));
    if (detail == Detail::Coarse)
        return coarse;
    static const std::vector<Ring> fine = readRings(QStringLiteral(":/orvane/plot/coastline-50m.bin"));
    return fine;
}

// Whether the step between two points is a cut of the data and no coast.
static bool isCut(GeoPoint a, GeoPoint b)
{
    auto onCut = [](GeoPoint p) { return std::abs(p.longitude) > 179.995F || p.latitude < -89.995F; };
    return onCut(a) && onCut(b);
}

// The step from one longitude to another the short way round: rings step across the 180th meridian.
static double eastward(GeoPoint a, GeoPoint b)
{
    return std::remainder(static_cast<double>(b.longitude) - static_cast<double>(a.longitude), 360.0);
}

namespace {

// The projected ways between points of a ring: curved as they should be, and around the rim of the plane
// where they pass close to the point opposite to the centre.
class WayTracer
{
public:
    WayTracer(const Projection &projection, double range) : m_projection(projection), m_range(range) {}

    QPointF place(double latitude, double longitude) const
    {
        return m_projection.forwardWithin(latitude, longitude, m_range);
    }

    // Adds the way from a, which lies at `start`, to b, without a itself.
    void append(QPolygonF &way, GeoPoint a, GeoPoint b, QPointF start) const
    {
        const Leg leg{a.latitude, a.longitude, static_cast<double>(b.latitude) - a.latitude, eastward(a, b)};
        const double longest = std::max(std::abs(leg.eastward), std::abs(leg.northward));
        const int steps = std::max(1, static_cast<int>(std::ceil(longest)));
        double from = 0;
        for (int i = 1; i <= steps; ++i) {
            const double to = static_cast<double>(i) / steps;
            const QPointF end = at(leg, to);
            refine(way, leg, from, to, start, end, 0);
            start = end;
            from = to;
        }
    }

private:
    struct Leg {
        double latitude, longitude, northward, eastward; // degrees
    };

    QPointF at(const Leg &leg, double part) const
    {
        return place(leg.latitude + part * leg.northward, leg.longitude + part * leg.eastward);
    }

    void refine(QPolygonF &way, const Leg &leg, double from, double to, QPointF start, QPointF end,
                int depth) const
    {
        constexpr double longestStep = 4; // degrees of the plane; steps on the globe are one at most
        constexpr int deepest = 16;
        const QPointF step = end - start;
        if (std::hypot(step.x(), step.y()) > longestStep) {
            if (depth == deepest) {
                appendRim(way, start, end);
            } else {
                const double middle = (from + to) / 2;
                const QPointF between = at(leg, middle);
                refine(way, leg, from, middle, start, between, depth + 1);
                refine(way, leg, middle, to, between, end, depth + 1);
                return;
            }
        }
        way << end;
    }

    // Two neighbours far from each other face each other over the point opposite to the centre, which the rim
    // stands for.
    static void appendRim(QPolygonF &way, QPointF start, QPointF end)
    {
        const double first = std::atan2(start.y(), start.x());
        const double turn = std::remainder(std::atan2(end.y(), end.x()) - first, 360 * radians);
        const double radius = std::max(std::hypot(start.x(), start.y()), std::hypot(end.x(), end.y()));
        const int steps = static_cast<int>(std::ceil(std::abs(turn) / (2 * radians)));
        for (int i = 1; i < steps; ++i)
            way << radius * QPointF(std::cos(first + turn * i / steps), std::sin(first + turn * i / steps));
    }

    const Projection &m_projection;
    double m_range;
};

} // namespace

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
    double sum = 0;
    for (std::size_t i = 0; i + 1 < ring.size(); ++i)
        sum += eastward(ring[i], ring[i + 1]) *
               (2 + std::sin(ring[i].latitude * radians) + std::sin(ring[i + 1].latitude * radians));
    return sum > 0;
}

static bool anyWithin(const QPolygonF &polygon, double range)
{
    return std::any_of(polygon.begin(), polygon.end(),
                       [range](QPointF point) { return std::hypot(point.x(), point.y()) <= range; });
}

namespace {

// Collects the coast in pieces short enough to be passed over quickly where they aren't seen.
class CoastPieces
{
public:
    CoastPieces(std::vector<PlaneShape> &pieces, double range) : m_pieces(pieces), m_range(range) {}

    void add(const QPolygonF &way)
    {
        constexpr int longest = 48;
        if (m_piece.isEmpty() || m_piece.back() != way.front() || m_piece.size() > longest) {
            end();
            m_piece << way.front();
        }
        m_piece.append(way.mid(1));
    }

    void end()
    {
        if (m_piece.size() > 1 && anyWithin(m_piece, m_range + Projection::roughness))
            m_pieces.push_back({m_piece, m_piece.boundingRect()});
        m_piece.clear();
    }

private:
    std::vector<PlaneShape> &m_pieces;
    double m_range;
    QPolygonF m_piece;
};

} // namespace

static void projectRing(const Ring &ring, const WayTracer &tracer, double range, ProjectedLand &land)
{
    QPolygonF outline;
    CoastPieces pieces(land.coast, range);
    outline << tracer.place(ring[0].latitude, ring[0].longitude);
    for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
        QPolygonF way;
        way << outline.back();
        tracer.append(way, ring[i], ring[i + 1], outline.back());
        if (isCut(ring[i], ring[i + 1]))
            pieces.end();
        else
            pieces.add(way);
        outline.append(way.mid(1));
    }
    pieces.end();
    // A ring around the point opposite to the centre comes out turned inside out, and then large; of the
    // smallest islands the sense is uncertain.
    const double area = signedArea(outline);
    const bool insideOut = std::abs(area) > 1 && (area < 0) != runsClockwise(ring);
    const bool aroundCentre = !insideOut && outline.containsPoint({0, 0}, Qt::OddEvenFill);
    if (insideOut || aroundCentre || anyWithin(outline, range + Projection::roughness))
        land.areas.push_back({outline, outline.boundingRect(), insideOut});
}

ProjectedLand projectLand(const std::vector<Ring> &rings, const Projection &projection, double range,
                          const std::atomic<bool> &cancelled)
{
    ProjectedLand land;
    const WayTracer tracer(projection, range);
    for (const Ring &ring : rings) {
        if (cancelled)
            break;
        if (ring.size() >= 3)
            projectRing(ring, tracer, range, land);
    }
    return land;
}

bool ProjectedLand::contains(QPointF point) const
{
    bool inside = false;
    for (const PlaneShape &area : areas)
        inside ^= area.points.containsPoint(point, Qt::OddEvenFill) != area.insideOut;
    return inside;
}
