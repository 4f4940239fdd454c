#include "event_layer.h"

#include <algorithm>
#include <cmath>

EventLayer::EventLayer(const std::vector<Event> &events, const Projection &projection, double range)
    : m_events(events)
{
    m_points.reserve(events.size());
    for (std::size_t i = 0; i < events.size(); ++i) {
        const QPointF place = projection.forward(events[i].latitude, events[i].longitude);
        if (std::hypot(place.x(), place.y()) <= range)
            m_points.push_back({static_cast<float>(place.x()), static_cast<float>(place.y()),
                                static_cast<std::uint32_t>(i)});
    }
}

// The points to draw, largest first: of every cell of two by two pixels the largest event. Its disc is no
// smaller than the cell, so that what is left out would hardly be seen.
std::vector<std::uint32_t> EventLayer::visible(const MapFrame &frame) const
{
    constexpr double cell = 2;
    const double margin = largestRadius + 2;
    const int columns = static_cast<int>((frame.size.width() + 2 * margin) / cell) + 1;
    const int rows = static_cast<int>((frame.size.height() + 2 * margin) / cell) + 1;
    std::vector<bool> taken(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    std::vector<std::uint32_t> chosen;
    for (std::size_t i = m_points.size(); i-- > 0;) {
        const QPointF pixel = frame.toPixel({m_points[i].x, m_points[i].y});
        const double column = std::floor((pixel.x() + margin) / cell),
                     row = std::floor((pixel.y() + margin) / cell);
        if (column < 0 || row < 0 || column >= columns || row >= rows)
            continue;
        const auto place = static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
                           static_cast<std::size_t>(column);
        if (taken[place])
            continue;
        taken[place] = true;
        chosen.push_back(static_cast<std::uint32_t>(i));
    }
    return chosen;
}

void EventLayer::draw(QPainter &painter, const MapFrame &frame, const EventSymbols &symbols) const
{
    const std::vector<std::uint32_t> chosen = visible(frame);
    const double ratio = symbols.devicePixelRatio();
    painter.save();
    painter.scale(1 / ratio, 1 / ratio); // symbols are in device pixels
    std::for_each(chosen.rbegin(), chosen.rend(), [&](std::uint32_t i) {
        const Event &event = m_events[m_points[i].event];
        const QPointF pixel = frame.toPixel({m_points[i].x, m_points[i].y}) * ratio;
        const QImage &image = symbols.symbol(event.magnitude, event.depth);
        painter.drawImage(QPoint(static_cast<int>(std::floor(pixel.x())) - image.width() / 2,
                                 static_cast<int>(std::floor(pixel.y())) - image.height() / 2),
                          image);
    });
    painter.restore();
}

const Event *EventLayer::eventAt(QPointF pixel, const MapFrame &frame) const
{
    for (std::size_t i = m_points.size(); i-- > 0;) {
        const Event &event = m_events[m_points[i].event];
        const QPointF away = frame.toPixel({m_points[i].x, m_points[i].y}) - pixel;
        const double reach = eventRadius(event.magnitude) + 1;
        if (QPointF::dotProduct(away, away) <= reach * reach)
            return &event;
    }
    return nullptr;
}
