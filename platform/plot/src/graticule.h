// Parallels and meridians, and their labels.
#pragma once

#include <vector>

#include <QPainterPath>
#include <QString>

#include "map_frame.h"
#include "projection.h"

// The distances of the lines in degrees.
struct GraticuleSteps {
    double parallels = 30, meridians = 30;
    bool operator==(const GraticuleSteps &) const = default;
};

// For a part of the globe of `shown` degrees around a latitude: some four lines of each kind are seen, and
// around a pole no more meridians than have room.
GraticuleSteps graticuleSteps(double shown, double latitude);

// The lines within `range` degrees of the centre that cross a part of the plane, in its pixels. Places on a
// line are the same whatever the part, so that neighbouring parts fit.
QPainterPath graticuleLines(const Projection &projection, double range, const GraticuleSteps &steps,
                            const MapFrame &frame);

struct GraticuleLabel {
    QPointF at; // in the plane
    QString text;
};

// Labels of the lines that cross a way through the plane, where they do.
enum class Lines { Parallels, Meridians, Both };
std::vector<GraticuleLabel> labelsAlong(const std::vector<QPointF> &way, const Projection &projection,
                                        const GraticuleSteps &steps, Lines lines);
