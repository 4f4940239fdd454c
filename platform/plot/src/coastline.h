// The outlines of the land.
#pragma once

#include <atomic>
#include <vector>

#include <QPolygonF>
#include <QRectF>

#include "projection.h"

struct GeoPoint {
    float longitude, latitude; // degrees
};
using Ring = std::vector<GeoPoint>; // closed: the last point is the first; the land lies to the right

enum class Detail { Coarse, Fine }; // 1:110 million, 1:50 million

// The rings of the shipped resource, read once. Empty when it can't be read. Any thread may call.
const std::vector<Ring> &coastlineRings(Detail detail);

// A line or an area of the plane with the rectangle around it.
struct PlaneShape {
    QPolygonF points;
    QRectF bounds;
    bool insideOut = false; // of an area: it is what lies outside of the outline
};

// The land in the plane of a projection.
struct ProjectedLand {
    std::vector<PlaneShape> areas; // filled by the odd-even rule they are the land
    std::vector<PlaneShape> coast; // in short pieces, without the cuts that the data have

    bool contains(QPointF point) const;
};

// The land within `range` degrees of the projection's centre. With *cancelled it ends early and unfinished.
ProjectedLand projectLand(const std::vector<Ring> &rings, const Projection &projection, double range,
                          const std::atomic<bool> &cancelled);
