// The outlines of the land.
#pragma once

#include <vector>

#include <QPainterPath>

#include "projection.h"

struct GeoPoint {
    float longitude, latitude; // degrees
};
using Ring = std::vector<GeoPoint>; // closed: the last point is the first; the land lies to the right

// The rings of the shipped resource, read once. Empty when it can't be read.
const std::vector<Ring> &coastlineRings();

// The land within `range` degrees of the projection's centre, in its plane.
struct ProjectedLand {
    QPainterPath area;  // filled by the odd-even rule and clipped to the range it is the land
    QPainterPath coast; // without the cuts that the data have along the 180th meridian
};
ProjectedLand projectLand(const std::vector<Ring> &rings, const Projection &projection, double range);
