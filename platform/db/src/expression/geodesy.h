// Distances and azimuths on the globe, as seismologists reckon them: along great circles of a sphere of 6371
// km radius, with the latitudes as they are given. All angles in degrees.
#pragma once

namespace orvane::expr {

constexpr double earth_radius_km = 6371.0;

// NaN where a latitude lies beyond a pole.
double great_circle_degrees(double lat1, double lon1, double lat2, double lon2);

// The direction at the first point in which the second one lies, clockwise from north, from 0 up to, not
// including, 360; 0 where the points are one.
double great_circle_azimuth(double lat1, double lon1, double lat2, double lon2);

// Along the surface of the sphere.
double degrees_to_km(double degrees);
double km_to_degrees(double km);

} // namespace orvane::expr
