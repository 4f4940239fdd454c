// Draws a part of the map: sea, land, graticule and events.
#pragma once

#include <QImage>

#include "coastline.h"
#include "event_layer.h"
#include "graticule.h"
#include "map_colours.h"

// What a part of the map is drawn of. Land and events may still be missing.
struct MapContents {
    const Projection &projection;
    double range; // degrees
    const ProjectedLand *land = nullptr;
    const EventLayer *events = nullptr;
};

class TilePainter
{
public:
    TilePainter(const MapColours &colours, double devicePixelRatio);

    const MapColours &colours() const { return m_colours; }
    double devicePixelRatio() const { return m_ratio; }

    // A frame in device pixels. What lies beyond the range is the page.
    QImage draw(const MapFrame &frame, const MapContents &contents, const GraticuleSteps &steps) const;

private:
    void drawLand(QPainter &painter, const MapFrame &frame, const ProjectedLand &land) const;
    void hideBeyond(QPainter &painter, const MapFrame &frame, double range) const;

    MapColours m_colours;
    double m_ratio;
    EventSymbols m_plain, m_selected;
};
