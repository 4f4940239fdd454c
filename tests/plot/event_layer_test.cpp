#include "event_layer.h"

#include <cmath>
#include <limits>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include <QImage>

static const std::atomic<bool> never{false};

namespace {

// The same numbers everywhere.
class Numbers
{
public:
    double next(double lowest, double highest)
    {
        m_state = m_state * 6364136223846793005U + 1442695040888963407U;
        return lowest + (highest - lowest) * static_cast<double>(m_state >> 11) / 9007199254740992.0;
    }

private:
    std::uint64_t m_state = 1;
};

} // namespace

static EventLayer layerOf(std::vector<Event> events, double latitude = 0, double longitude = 0,
                          double range = 180)
{
    auto catalogue = std::make_shared<EventCatalogue>();
    catalogue->events = std::move(events);
    return EventLayer(catalogue, Projection(latitude, longitude), range, never);
}

static QImage drawn(const EventLayer &layer, const MapFrame &frame)
{
    QImage image(frame.size.toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    layer.draw(painter, frame, EventSymbols(1, Qt::black), EventSymbols(1, Qt::black, Qt::green, Qt::white));
    return image;
}

TEST(EventIndex, FindsWhatASearchFinds)
{
    Numbers numbers;
    std::vector<RankedPoint> points;
    for (std::uint32_t rank = 0; rank < 20'000; ++rank)
        points.push_back({static_cast<float>(std::floor(numbers.next(-50, 50))),
                          static_cast<float>(numbers.next(-50, 50)), rank});
    const EventIndex index(points);
    for (int i = 0; i < 50; ++i) {
        const QRectF area(numbers.next(-60, 40), numbers.next(-60, 40), numbers.next(0, 30),
                          numbers.next(0, 30));
        std::multiset<std::uint32_t> expected, found;
        for (const RankedPoint &point : points)
            if (point.x >= area.left() && point.x <= area.right() && point.y >= area.top() &&
                point.y <= area.bottom())
                expected.insert(point.rank);
        index.visitWithin(area, [&](const RankedPoint &point) { found.insert(point.rank); });
        ASSERT_EQ(found, expected);
        ASSERT_EQ(index.anyWithin(area), !expected.empty());
    }
}

TEST(EventIndex, KeepsTheHighestOfEachCellAndNoOther)
{
    Numbers numbers;
    std::vector<RankedPoint> points;
    for (std::uint32_t rank = 0; rank < 30'000; ++rank) // half of them in a heap
        points.push_back({static_cast<float>(rank % 2 ? numbers.next(-50, 50) : numbers.next(3, 3.5)),
                          static_cast<float>(rank % 2 ? numbers.next(-50, 50) : numbers.next(4, 4.5)), rank});
    const EventIndex index(points);
    const double cell = 0.7;
    std::map<std::pair<int, int>, std::uint32_t> highest;
    for (const RankedPoint &point : points) {
        const std::pair place(static_cast<int>(std::floor(point.x / cell)),
                              static_cast<int>(std::floor(point.y / cell)));
        if (place.first >= -10 && place.first <= 20 && place.second >= -10 && place.second <= 20)
            highest[place] = std::max(highest[place], point.rank);
    }
    std::vector<std::uint32_t> expected;
    for (const auto &[place, rank] : highest)
        expected.push_back(rank);
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(index.highestOfCells(
                  QRectF(QPointF(-9.5 * cell, -9.5 * cell), QPointF(20.5 * cell, 20.5 * cell)), cell),
              expected);
}

TEST(EventIndex, TakesPointsThatAllLieAtOnePlace)
{
    std::vector<RankedPoint> points;
    for (std::uint32_t rank = 0; rank < 5000; ++rank)
        points.push_back({1, 2, rank});
    const EventIndex index(points);
    EXPECT_EQ(index.highestOfCells(QRectF(0, 0, 4, 4), 0.1), std::vector<std::uint32_t>{4999});
    EXPECT_EQ(EventIndex().highestOfCells(QRectF(0, 0, 4, 4), 1), std::vector<std::uint32_t>());
}

TEST(EventLayer, NeverHidesALargerEventAmongAMillion)
{
    Numbers numbers;
    std::vector<Event> events;
    for (int i = 0; i < 1'000'000; ++i)
        events.push_back({numbers.next(-60, 60), numbers.next(-150, 150), i, 300, 1.0F});
    std::vector<Event> large;
    for (int i = 0; i < 60; ++i) // in the crowd, each at a place of its own
        large.push_back(
            {-50 + 10.0 * (i / 6), -100 + 40.0 * (i % 6), 1'000'000 + i, 0, static_cast<float>(5 + i % 4)});
    events.insert(events.begin() + 500'000, large.begin(), large.end());
    for (std::size_t i = 0; i < events.size(); ++i)
        events[i].record = static_cast<std::int64_t>(i);
    const EventLayer layer = layerOf(events);
    EXPECT_EQ(layer.size(), events.size());
    const MapFrame frame{{0, 0}, 2, {720, 720}};
    const QImage image = drawn(layer, frame);
    const Projection projection(0, 0);
    for (const Event &event : large) {
        const QPointF place = frame.toPixel(projection.forward(event.latitude, event.longitude));
        EXPECT_EQ(image.pixelColor(place.toPoint()), depthColour(0));
        const auto found = layer.eventAt(place, frame);
        ASSERT_TRUE(found.event);
        EXPECT_FLOAT_EQ(found.event->magnitude, event.magnitude);
        EXPECT_GT(found.count, 1);
    }
    int covered = 0;
    for (int x = 260; x < 460; ++x)
        covered += image.pixelColor(x, 400) != QColor(Qt::white);
    EXPECT_GT(covered, 150);
}

TEST(EventLayer, DrawsSelectedEventsOverTheOthers)
{
    EventLayer layer = layerOf({{0, 0, 0, 0, 8.0F}, {0, 1, 1, 600, 1.0F}});
    const MapFrame frame{{0, 0}, 4, {200, 200}};
    EXPECT_EQ(layer.eventAt({104, 100}, frame).event->record, 0);
    EXPECT_EQ(drawn(layer, frame).pixelColor(104, 100), depthColour(0));
    layer.select({1});
    EXPECT_EQ(layer.eventAt({104, 100}, frame).event->record, 1);
    EXPECT_NE(drawn(layer, frame).pixelColor(104, 100), depthColour(0));
    layer.select({0, 1, 77}); // there is no 77
    EXPECT_EQ(layer.eventAt({104, 100}, frame).event->record, 0);
}

TEST(EventLayer, LeavesOutEventsBeyondTheRange)
{
    const EventLayer layer = layerOf({{0, 9, 0, 0, 5}, {0, 11, 1, 0, 5}, {0, -171, 2, 0, 5}}, 0, 0, 10);
    EXPECT_EQ(layer.size(), 1U);
    EXPECT_TRUE(layer.placeOf(0).has_value());
    EXPECT_FALSE(layer.placeOf(1).has_value());
    EXPECT_FALSE(layer.placeOf(99).has_value());
    EXPECT_EQ(layer.recordsWithin(QRectF(-200, -200, 400, 400)), std::vector<std::int64_t>{0});
}

TEST(EventLayer, CountsThoseOfUnknownMagnitudeAndDrawsThemSmallest)
{
    const float unknown = std::numeric_limits<float>::quiet_NaN();
    const EventLayer layer =
        layerOf({{0, 0, 0, 10, 3}, {0, 0, 1, unknown, unknown}, {0, 50, 2, 10, unknown}});
    EXPECT_EQ(layer.unknownMagnitudes(), 2);
    EXPECT_TRUE(layer.hasUnknownDepths());
    EXPECT_EQ(layer.eventAt({100, 100}, MapFrame{{0, 0}, 4, {200, 200}}).event->record, 0);
}
