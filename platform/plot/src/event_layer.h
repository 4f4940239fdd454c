// The events on the map's plane: drawn, and found under the pointer.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

#include <QPainter>

#include "event_catalogue.h"
#include "event_index.h"
#include "event_style.h"
#include "map_frame.h"
#include "projection.h"

class EventLayer
{
public:
    // The events within `range` degrees of the centre. With *cancelled it ends early and unfinished.
    EventLayer(std::shared_ptr<const EventCatalogue> catalogue, const Projection &projection, double range,
               const std::atomic<bool> &cancelled);

    std::size_t size() const { return m_places.size(); }
    const EventCatalogue &catalogue() const { return *m_catalogue; }
    std::int64_t unknownMagnitudes() const;
    bool hasUnknownDepths() const { return m_unknownDepths; }

    // The events of these records, ascending, are drawn and found before all others.
    void select(const std::vector<std::int64_t> &records);

    // Draws onto a part of the plane, whose pixels are device pixels: no event lies on a larger one, selected
    // ones lie on the others, and of the events in a cell of three by three logical pixels only the largest is
    // drawn.
    void draw(QPainter &painter, const MapFrame &frame, const EventSymbols &plain,
              const EventSymbols &selected) const;

    // The topmost event whose disc holds this logical pixel, or null, and how many discs hold it.
    struct Found {
        const Event *event = nullptr;
        std::int64_t count = 0;
    };
    Found eventAt(QPointF pixel, const MapFrame &frame) const;

    // The records of the events within a rectangle of the plane, ascending.
    std::vector<std::int64_t> recordsWithin(const QRectF &plane) const;

    // Whether there are events within a rectangle of the plane.
    bool anyWithin(const QRectF &plane) const { return m_all.anyWithin(plane); }

    // Where the event of a record lies; nothing when it has none on the map.
    std::optional<QPointF> placeOf(std::int64_t record) const;

private:
    struct Place {
        float x, y;
        std::uint32_t event; // of the catalogue
    };
    static constexpr std::uint32_t noRank = 0xffffffff;
    const Event &eventOf(std::uint32_t rank) const { return m_catalogue->events[m_places[rank].event]; }
    void draw(QPainter &painter, const MapFrame &frame, const EventIndex &index,
              const EventSymbols &symbols) const;
    Found eventAt(QPointF pixel, const MapFrame &frame, const EventIndex &index) const;

    std::shared_ptr<const EventCatalogue> m_catalogue;
    std::vector<Place> m_places;         // by rank: by magnitude ascending, unknown ones first
    std::vector<std::uint32_t> m_rankOf; // by event of the catalogue; noRank for those that have no place
    bool m_unknownDepths = false;
    EventIndex m_all, m_selected;
};
