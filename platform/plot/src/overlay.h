// What stands over the map: labels of the graticule, the distance scale, the texts.
#pragma once

#include <functional>
#include <optional>

#include <QPainter>

#include "graticule.h"
#include "map_colours.h"
#include "map_frame.h"
#include "projection.h"

// A bar of a round number of kilometres, true along lines through the map's centre, with its right end at
// `corner`. Answers the space that it takes.
QRectF drawDistanceScale(QPainter &painter, const MapFrame &frame, QPointF corner, const MapColours &colours);

// The text in the lower left corner of `page`, with a bar above it that tells how far something is. Answers
// the space that they take.
QRectF drawStatus(QPainter &painter, const QRectF &page, const QString &text, std::optional<double> progress,
                  const MapColours &colours);

// Labels where the graticule leaves the part of the map in `frame`; none overlaps another, or a place for
// which isTaken() is true. Logical pixels.
void drawGraticuleLabels(QPainter &painter, const MapFrame &frame, const Projection &projection, double range,
                         const GraticuleSteps &steps, const MapColours &colours,
                         const std::function<bool(const QRectF &)> &isTaken);
