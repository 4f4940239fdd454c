#include "expression/geodesy.h"

#include <cmath>
#include <limits>
#include <numbers>

#include <GeographicLib/Geodesic.hpp>

namespace orvane::expr {

namespace {

constexpr double km_per_degree = earth_radius_km * std::numbers::pi / 180.0;
constexpr double no_number = std::numeric_limits<double>::quiet_NaN();

const GeographicLib::Geodesic &sphere()
{
    static const GeographicLib::Geodesic geodesic(earth_radius_km * 1000.0, 0.0);
    return geodesic;
}

bool on_globe(double lat)
{
    return std::abs(lat) <= 90.0;
}

} // namespace

double great_circle_degrees(double lat1, double lon1, double lat2, double lon2)
{
    if (!on_globe(lat1) || !on_globe(lat2) || !std::isfinite(lon1) || !std::isfinite(lon2))
        return no_number;
    double metres = 0;
    return sphere().Inverse(lat1, lon1, lat2, lon2, metres);
}

double great_circle_azimuth(double lat1, double lon1, double lat2, double lon2)
{
    if (!on_globe(lat1) || !on_globe(lat2) || !std::isfinite(lon1) || !std::isfinite(lon2))
        return no_number;
    double there = 0;
    double back = 0;
    const double arc = sphere().Inverse(lat1, lon1, lat2, lon2, there, back);
    if (arc == 0)
        return 0;
    const double turned = there < 0 ? there + 360.0 : there;
    return turned >= 360.0 ? 0.0 : turned + 0.0; // + 0.0 makes the zero of due north a positive one
}

double degrees_to_km(double degrees)
{
    return degrees * km_per_degree;
}
double km_to_degrees(double km)
{
    return km / km_per_degree;
}

} // namespace orvane::expr
