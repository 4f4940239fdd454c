// Sea, land and graticule.
#pragma once

#include <QPainter>
#include <QPalette>

#include "coastline.h"
#include "map_frame.h"

struct MapColours {
    explicit MapColours(const QPalette &palette); // light or dark as the palette is
    QColor page, sea, land, coast, graticule, text, outline;
};

// Parallels and meridians every `step` degrees within `range` of the centre, in the plane.
QPainterPath graticule(const Projection &projection, double range, double step);

// The map's disc of radius `range` degrees.
void drawBackground(QPainter &painter, const MapFrame &frame, const ProjectedLand &land,
                    const QPainterPath &lines, double range, const MapColours &colours);
