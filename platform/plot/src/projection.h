// The map's projection: azimuthal equidistant on the WGS84 ellipsoid.
#pragma once

#include <QPointF>

#include <GeographicLib/AzimuthalEquidistant.hpp>

// Distances and directions from the centre are true. The plane's unit is a degree of arc, x to the east and y
// to the north; the point opposite to the centre lies 180 degrees away in no certain direction.
class Projection
{
public:
    Projection(double centreLatitude, double centreLongitude);

    QPointF forward(double latitude, double longitude) const;

    struct Place {
        double latitude, longitude; // degrees
    };
    Place inverse(QPointF point) const;

    // forward() where that lies within `range` degrees of the centre; beyond it a place that is beyond it,
    // too, and no further from the right one than `roughness`. Many times as fast there.
    QPointF forwardWithin(double latitude, double longitude, double range) const;
    static constexpr double roughness = 2; // degrees

private:
    QPointF forwardOnSphere(double latitude, double longitude) const;

    GeographicLib::AzimuthalEquidistant m_projection;
    double m_latitude, m_longitude;
    double m_sine, m_cosine; // of the centre's latitude
};
