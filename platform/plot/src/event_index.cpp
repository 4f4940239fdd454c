#include "event_index.h"

#include <algorithm>
#include <cmath>

static constexpr std::uint32_t leafSize = 256;

EventIndex::EventIndex(std::vector<RankedPoint> points) : m_points(std::move(points))
{
    if (m_points.empty())
        return;
    m_nodes.reserve(4 * m_points.size() / leafSize + 1);
    build(0, static_cast<std::uint32_t>(m_points.size()));
}

EventIndex::Node EventIndex::described(std::uint32_t first, std::uint32_t last) const
{
    const RankedPoint &start = m_points[first];
    Node node{start.x, start.x, start.y, start.y, first, last, start.rank};
    for (std::uint32_t i = first + 1; i < last; ++i) {
        const RankedPoint &point = m_points[i];
        node.left = std::min(node.left, point.x);
        node.right = std::max(node.right, point.x);
        node.bottom = std::min(node.bottom, point.y);
        node.top = std::max(node.top, point.y);
        node.highest = std::max(node.highest, point.rank);
    }
    return node;
}

std::uint32_t EventIndex::build(std::uint32_t first, std::uint32_t last)
{
    const auto number = static_cast<std::uint32_t>(m_nodes.size());
    const Node node = described(first, last);
    m_nodes.push_back(node);
    const bool onePlace = node.left == node.right && node.bottom == node.top;
    if (last - first <= leafSize || onePlace)
        return number;
    const std::uint32_t middle = first + (last - first) / 2;
    const bool wide = node.right - node.left > node.top - node.bottom;
    std::nth_element(
        m_points.begin() + first, m_points.begin() + middle, m_points.begin() + last,
        [wide](const RankedPoint &a, const RankedPoint &b) { return wide ? a.x < b.x : a.y < b.y; });
    build(first, middle);
    const std::uint32_t second = build(middle, last);
    m_nodes[number].second = second;
    return number;
}

bool EventIndex::anyWithin(const QRectF &area) const
{
    bool found = false;
    auto inside = [&](float x, float y) {
        return x >= area.left() && x <= area.right() && y >= area.top() && y <= area.bottom();
    };
    auto enter = [&](const Node &node) {
        if (found || node.right < area.left() || node.left > area.right() || node.top < area.top() ||
            node.bottom > area.bottom())
            return false;
        found = inside(node.left, node.bottom) && inside(node.right, node.top);
        return !found;
    };
    descend(enter, [&](const Node &node) {
        for (std::uint32_t i = node.first; i < node.last && !found; ++i)
            found = inside(m_points[i].x, m_points[i].y);
    });
    return found;
}

std::vector<std::uint32_t> EventIndex::highestOfCells(const QRectF &area, double cell) const
{
    const double left = std::floor(area.left() / cell), bottom = std::floor(area.top() / cell);
    const auto columns = static_cast<std::int64_t>(std::floor(area.right() / cell) - left) + 1;
    const auto rows = static_cast<std::int64_t>(std::floor(area.bottom() / cell) - bottom) + 1;
    std::vector<std::uint32_t> highest(static_cast<std::size_t>(columns * rows)); // rank + 1; 0: none
    auto column = [&](float x) { return static_cast<std::int64_t>(std::floor(x / cell) - left); };
    auto row = [&](float y) { return static_cast<std::int64_t>(std::floor(y / cell) - bottom); };
    auto take = [&](std::int64_t atColumn, std::int64_t atRow, std::uint32_t rank) {
        if (atColumn < 0 || atRow < 0 || atColumn >= columns || atRow >= rows)
            return;
        std::uint32_t &place = highest[static_cast<std::size_t>(atRow * columns + atColumn)];
        place = std::max(place, rank + 1);
    };
    auto enter = [&](const Node &node) {
        const std::int64_t first = column(node.left), last = column(node.right);
        const std::int64_t lowest = row(node.bottom), top = row(node.top);
        if (last < 0 || top < 0 || first >= columns || lowest >= rows)
            return false;
        if (first != last || lowest != top)
            return true;
        take(first, lowest, node.highest); // all of them lie in one cell
        return false;
    };
    descend(enter, [&](const Node &node) {
        for (std::uint32_t i = node.first; i < node.last; ++i)
            take(column(m_points[i].x), row(m_points[i].y), m_points[i].rank);
    });
    std::vector<std::uint32_t> ranks;
    for (const std::uint32_t rank : highest)
        if (rank > 0)
            ranks.push_back(rank - 1);
    std::sort(ranks.begin(), ranks.end());
    return ranks;
}
