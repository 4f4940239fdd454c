#include "graticule.h"

#include <algorithm>
#include <cmath>

static double stepFor(double shown)
{
    for (const double step : {30.0, 15.0, 10.0, 5.0, 2.0, 1.0, 0.5, 0.2, 0.1, 0.05, 0.02})
        if (shown / step >= 4)
            return step;
    return 0.01;
}

GraticuleSteps graticuleSteps(double shown, double latitude)
{
    constexpr double radians = 3.14159265358979323846 / 180;
    const bool seesPole = 90 - std::abs(latitude) < shown;
    return {stepFor(shown), seesPole ? 30 : stepFor(shown / std::cos(latitude * radians))};
}

namespace {

// Which latitudes and longitudes a part of the plane shows.
struct Extent {
    double south = 90, north = -90;
    double west = 0, width = 360; // longitudes west to west + width
};

} // namespace

static std::vector<QPointF> edgeOf(const QRectF &part)
{
    constexpr int steps = 12; // of an edge
    std::vector<QPointF> edge;
    const QPointF corners[] = {part.topLeft(), part.topRight(), part.bottomRight(), part.bottomLeft(),
                               part.topLeft()};
    for (int side = 0; side < 4; ++side)
        for (int i = 0; i < steps; ++i)
            edge.push_back(corners[side] + (corners[side + 1] - corners[side]) * i / steps);
    return edge;
}

// The longitudes without their widest gap.
static void findLongitudes(std::vector<double> longitudes, Extent &extent)
{
    std::sort(longitudes.begin(), longitudes.end());
    double widest = longitudes.front() + 360 - longitudes.back(), west = longitudes.front();
    for (std::size_t i = 1; i < longitudes.size(); ++i)
        if (longitudes[i] - longitudes[i - 1] > widest) {
            widest = longitudes[i] - longitudes[i - 1];
            west = longitudes[i];
        }
    extent.west = west;
    extent.width = 360 - widest;
}

static Extent extentOf(const QRectF &part, const Projection &projection, double range)
{
    const Extent everything{-90, 90, -180, 360};
    Extent extent;
    std::vector<double> longitudes;
    for (QPointF point : edgeOf(part)) {
        const double radius = std::hypot(point.x(), point.y());
        if (std::min(radius, range) > 170) // the point opposite to the centre looks to all sides
            return everything;
        if (radius > range)
            point *= range / radius;
        const auto place = projection.inverse(point);
        extent.south = std::min(extent.south, place.latitude);
        extent.north = std::max(extent.north, place.latitude);
        longitudes.push_back(place.longitude);
    }
    const QRectF around = part.adjusted(-1e-6, -1e-6, 1e-6, 1e-6);
    const bool southPole = around.contains(projection.forward(-90, 0));
    const bool northPole = around.contains(projection.forward(90, 0));
    if (southPole)
        extent.south = -90;
    if (northPole)
        extent.north = 90;
    if (southPole || northPole)
        return {extent.south, extent.north, -180, 360};
    findLongitudes(std::move(longitudes), extent);
    return extent;
}

// Adds a line of places at `first`, `first + step`, ...; what lies beyond the range is left out.
template <typename Place>
static void addLine(QPainterPath &lines, const Projection &projection, double range, const MapFrame &frame,
                    double first, double last, double step, Place place)
{
    bool drawing = false;
    QPointF before;
    for (auto i = static_cast<std::int64_t>(std::floor(first / step)); (i - 1) * step < last; ++i) {
        const auto [latitude, longitude] = place(static_cast<double>(i) * step);
        const QPointF point = projection.forwardWithin(latitude, longitude, range);
        const bool inside = std::hypot(point.x(), point.y()) <= std::min(range + 1, 179.0);
        // Close to the point opposite to the centre a step may lead across the plane.
        const bool near = std::hypot(point.x() - before.x(), point.y() - before.y()) < 25;
        if (inside && drawing && near)
            lines.lineTo(frame.toPixel(point));
        else if (inside)
            lines.moveTo(frame.toPixel(point));
        drawing = inside;
        before = point;
    }
}

QPainterPath graticuleLines(const Projection &projection, double range, const GraticuleSteps &steps,
                            const MapFrame &frame)
{
    QPainterPath lines;
    const QRectF part = frame.toPlane(QRectF({0, 0}, frame.size));
    const Extent extent = extentOf(part, projection, range);
    const double along = std::min(steps.meridians / 6, 2.5), across = std::min(steps.parallels / 6, 2.5);
    const double first = std::floor(extent.south / steps.parallels) * steps.parallels;
    for (double latitude = first; latitude < extent.north + steps.parallels; latitude += steps.parallels)
        if (std::abs(latitude) < 90 - 1e-9)
            addLine(lines, projection, range, frame, extent.west - along, extent.west + extent.width + along,
                    along, [=](double longitude) { return std::pair(latitude, longitude); });
    const double number = std::floor(extent.west / steps.meridians);
    const double count = std::min(std::floor(extent.width / steps.meridians) + 2, 360 / steps.meridians);
    for (double i = 0; i < count - 1e-9; ++i) {
        const double longitude = (number + i) * steps.meridians;
        addLine(lines, projection, range, frame, extent.south - across, extent.north + across, across,
                [=](double latitude) { return std::pair(std::clamp(latitude, -90.0, 90.0), longitude); });
    }
    return lines;
}

static QString degrees(double value, double step, QChar positive, QChar negative)
{
    const int decimals = step >= 1 || value == 0 ? 0 : step >= 0.1 ? 1 : 2;
    QString text = QString::number(std::abs(value), 'f', decimals) + QChar(0xb0);
    if (std::abs(value) > step / 2 && std::abs(value) < 180 - step / 2)
        text += value > 0 ? positive : negative;
    return text;
}

// Where between two values a multiple of the step lies: its number and how far on the way; or nothing.
static bool crossing(double a, double b, double step, double &value, double &part)
{
    const double first = std::floor(a / step), second = std::floor(b / step);
    if (first == second || std::abs(first - second) > 1)
        return false;
    value = std::max(first, second) * step;
    part = (value - a) / (b - a);
    return true;
}

std::vector<GraticuleLabel> labelsAlong(const std::vector<QPointF> &way, const Projection &projection,
                                        const GraticuleSteps &steps, Lines lines)
{
    std::vector<GraticuleLabel> labels;
    if (way.empty())
        return labels;
    auto before = projection.inverse(way.front());
    for (std::size_t i = 1; i < way.size(); ++i) {
        const auto place = projection.inverse(way[i]);
        const QPointF leg = way[i] - way[i - 1];
        double value, part;
        if (lines != Lines::Meridians &&
            crossing(before.latitude, place.latitude, steps.parallels, value, part))
            labels.push_back({way[i - 1] + leg * part,
                              degrees(value, steps.parallels, QLatin1Char('N'), QLatin1Char('S'))});
        const double east = before.longitude + std::remainder(place.longitude - before.longitude, 360.0);
        if (lines != Lines::Parallels && crossing(before.longitude, east, steps.meridians, value, part))
            labels.push_back({way[i - 1] + leg * part,
                              degrees(std::abs(value) > 180 ? std::remainder(value, 360.0) : value,
                                      steps.meridians, QLatin1Char('E'), QLatin1Char('W'))});
        before = place;
    }
    return labels;
}
