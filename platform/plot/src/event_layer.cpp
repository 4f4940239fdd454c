#include "event_layer.h"

#include <algorithm>
#include <cmath>

static constexpr double cell = 3; // logical pixels; the smallest disc is four wide

static bool smaller(const Event &a, const Event &b)
{
    if (std::isnan(a.magnitude) || std::isnan(b.magnitude))
        return std::isnan(a.magnitude) && !std::isnan(b.magnitude);
    return a.magnitude < b.magnitude;
}

static bool beforeRecord(const Event &event, std::int64_t record)
{
    return event.record < record;
}

EventLayer::EventLayer(std::shared_ptr<const EventCatalogue> catalogue, const Projection &projection,
                       double range, const std::atomic<bool> &cancelled)
    : m_catalogue(std::move(catalogue))
{
    const std::vector<Event> &events = m_catalogue->events;
    m_places.reserve(events.size());
    for (std::uint32_t i = 0; i < events.size() && !cancelled; ++i) {
        const QPointF place = projection.forwardWithin(events[i].latitude, events[i].longitude, range);
        if (std::hypot(place.x(), place.y()) > range)
            continue;
        m_places.push_back({static_cast<float>(place.x()), static_cast<float>(place.y()), i});
        m_unknownDepths |= std::isnan(events[i].depth);
    }
    std::stable_sort(m_places.begin(), m_places.end(), [&](const Place &a, const Place &b) {
        return smaller(events[a.event], events[b.event]);
    });
    std::vector<RankedPoint> points;
    points.reserve(m_places.size());
    m_rankOf.assign(events.size(), noRank);
    for (std::uint32_t rank = 0; rank < m_places.size() && !cancelled; ++rank) {
        points.push_back({m_places[rank].x, m_places[rank].y, rank});
        m_rankOf[m_places[rank].event] = rank;
    }
    m_all = EventIndex(std::move(points));
}

std::int64_t EventLayer::unknownMagnitudes() const
{
    const auto known = std::partition_point(m_places.begin(), m_places.end(), [this](const Place &place) {
        return std::isnan(m_catalogue->events[place.event].magnitude);
    });
    return known - m_places.begin();
}

void EventLayer::select(const std::vector<std::int64_t> &records)
{
    std::vector<RankedPoint> points;
    const std::vector<Event> &events = m_catalogue->events;
    auto event = events.begin();
    for (const std::int64_t record : records) { // both are ascending
        event = std::lower_bound(event, events.end(), record, beforeRecord);
        if (event == events.end())
            break;
        const std::uint32_t rank = m_rankOf[static_cast<std::size_t>(event - events.begin())];
        if (event->record == record && rank != noRank)
            points.push_back({m_places[rank].x, m_places[rank].y, rank});
    }
    m_selected = EventIndex(std::move(points));
}

void EventLayer::draw(QPainter &painter, const MapFrame &frame, const EventIndex &index,
                      const EventSymbols &symbols) const
{
    const double reach = (symbols.reach() + cell) * symbols.devicePixelRatio();
    const QRectF area = frame.toPlane(QRectF({0, 0}, frame.size).adjusted(-reach, -reach, reach, reach));
    for (const std::uint32_t rank :
         index.highestOfCells(area, cell * symbols.devicePixelRatio() / frame.scale)) {
        const Event &event = eventOf(rank);
        const QPointF pixel = frame.toPixel({m_places[rank].x, m_places[rank].y});
        const QImage &image = symbols.symbol(event.magnitude, event.depth);
        painter.drawImage(QPoint(static_cast<int>(std::floor(pixel.x())) - image.width() / 2,
                                 static_cast<int>(std::floor(pixel.y())) - image.height() / 2),
                          image);
    }
}

void EventLayer::draw(QPainter &painter, const MapFrame &frame, const EventSymbols &plain,
                      const EventSymbols &selected) const
{
    draw(painter, frame, m_all, plain);
    draw(painter, frame, m_selected, selected);
}

EventLayer::Found EventLayer::eventAt(QPointF pixel, const MapFrame &frame, const EventIndex &index) const
{
    Found found;
    std::uint32_t highest = 0;
    constexpr double reach = largestRadius + 1;
    const QRectF area = frame.toPlane(QRectF(pixel - QPointF(reach, reach), QSizeF(2 * reach, 2 * reach)));
    index.visitWithin(area, [&](const RankedPoint &point) {
        const QPointF away = frame.toPixel({point.x, point.y}) - pixel;
        const double radius = eventRadius(eventOf(point.rank).magnitude) + 1;
        if (QPointF::dotProduct(away, away) > radius * radius)
            return;
        ++found.count;
        highest = std::max(highest, point.rank);
    });
    if (found.count > 0)
        found.event = &eventOf(highest);
    return found;
}

EventLayer::Found EventLayer::eventAt(QPointF pixel, const MapFrame &frame) const
{
    Found found = eventAt(pixel, frame, m_all);
    if (const Found selected = eventAt(pixel, frame, m_selected); selected.event)
        found.event = selected.event;
    return found;
}

std::vector<std::int64_t> EventLayer::recordsWithin(const QRectF &plane) const
{
    std::vector<std::int64_t> records;
    m_all.visitWithin(plane,
                      [&](const RankedPoint &point) { records.push_back(eventOf(point.rank).record); });
    std::sort(records.begin(), records.end());
    return records;
}

std::optional<QPointF> EventLayer::placeOf(std::int64_t record) const
{
    const std::vector<Event> &events = m_catalogue->events;
    const auto found = std::lower_bound(events.begin(), events.end(), record, beforeRecord);
    if (found == events.end() || found->record != record)
        return std::nullopt;
    const std::uint32_t rank = m_rankOf[static_cast<std::size_t>(found - events.begin())];
    if (rank == noRank)
        return std::nullopt;
    return QPointF(m_places[rank].x, m_places[rank].y);
}
