#include "projection.h"

// The meridian's length over 360.
static constexpr double metresPerDegree = 40007862.917 / 360;

Projection::Projection(double centreLatitude, double centreLongitude)
    : m_projection(GeographicLib::Geodesic::WGS84()), m_latitude(centreLatitude), m_longitude(centreLongitude)
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
