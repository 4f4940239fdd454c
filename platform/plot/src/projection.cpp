#include "projection.h"

#include <algorithm>
#include <cmath>

// The meridian's length over 360.
static constexpr double metresPerDegree = 40007862.917 / 360;
static constexpr double radians = 3.14159265358979323846 / 180;

Projection::Projection(double centreLatitude, double centreLongitude)
    : m_projection(GeographicLib::Geodesic::WGS84()), m_latitude(centreLatitude),
      m_longitude(centreLongitude), m_sine(std::sin(centreLatitude * radians)),
      m_cosine(std::cos(centreLatitude * radians))
{
}

QPointF Projection::forward(double latitude, double longitude) const
{
    double x, y;
    m_projection.Forward(m_latitude, m_longitude, latitude, longitude, x, y);
    return {x / metresPerDegree, y / metresPerDegree};
}

Projection::Place Projection::inverse(QPointF point) const
{
    Place place{};
    m_projection.Reverse(m_latitude, m_longitude, point.x() * metresPerDegree, point.y() * metresPerDegree,
                         place.latitude, place.longitude);
    return place;
}

QPointF Projection::forwardOnSphere(double latitude, double longitude) const
{
    const double sine = std::sin(latitude * radians), cosine = std::cos(latitude * radians);
    const double eastward = (longitude - m_longitude) * radians;
    const double east = cosine * std::sin(eastward);
    const double north = m_cosine * sine - m_sine * cosine * std::cos(eastward);
    const double up = m_sine * sine + m_cosine * cosine * std::cos(eastward);
    const double level = std::hypot(east, north);
    if (level == 0)
        return {up < 0 ? 180.0 : 0.0, 0};
    const double distance = std::atan2(level, up) / radians;
    return {distance * east / level, distance * north / level};
}

QPointF Projection::forwardWithin(double latitude, double longitude, double range) const
{
    // Distances on the sphere and on the ellipsoid differ by less than 1.2 degrees.
    const QPointF rough = forwardOnSphere(latitude, longitude);
    return std::hypot(rough.x(), rough.y()) > range + roughness ? rough : forward(latitude, longitude);
}
