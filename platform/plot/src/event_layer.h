// The events on the map's plane: drawn, and found under the pointer.
#pragma once

#include <optional>
#include <vector>

#include <QPainter>

#include "event_catalogue.h"
#include "event_style.h"
#include "map_frame.h"
#include "projection.h"

class EventLayer
{
public:
    // The events within `range` degrees of the centre. They must stay as they are while the layer lives.
    EventLayer(const std::vector<Event> &events, const Projection &projection, double range);

    std::size_t size() const { return m_points.size(); }

    // Draws them so that no event lies on a larger one; of events within two pixels of each other only the
    // largest.
    void draw(QPainter &painter, const MapFrame &frame, const EventSymbols &symbols) const;

    // The topmost event whose disc holds this pixel, or null.
    const Event *eventAt(QPointF pixel, const MapFrame &frame) const;

private:
    struct Point {
        float x, y; // in the projection's plane
        std::uint32_t event;
    };
    std::vector<std::uint32_t> visible(const MapFrame &frame) const;

    const std::vector<Event> &m_events;
    std::vector<Point> m_points; // by magnitude ascending
};
