// Points of the plane, found by where they lie.
#pragma once

#include <cstdint>
#include <vector>

#include <QRectF>

// A point has a rank: of points that stand for each other on the screen the one of the highest rank is shown.
struct RankedPoint {
    float x, y;
    std::uint32_t rank;
};

// A k-d tree whose nodes know their extent and their highest rank.
class EventIndex
{
public:
    EventIndex() = default;
    explicit EventIndex(std::vector<RankedPoint> points);

    std::size_t size() const { return m_points.size(); }

    // Calls visit(point) for the points within the rectangle, its edges included.
    template <typename Visit>
    void visitWithin(const QRectF &area, Visit visit) const;

    bool anyWithin(const QRectF &area) const;

    // The points to draw of those within the rectangle: of each cell of a grid the one of the highest rank,
    // ranks ascending. The plane's origin is a corner of a cell, so that neighbouring rectangles agree; cells
    // that the rectangle cuts count as a whole.
    std::vector<std::uint32_t> highestOfCells(const QRectF &area, double cell) const;

private:
    struct Node {
        float left, right, bottom, top; // of its points
        std::uint32_t first, last;      // its points, without the last
        std::uint32_t highest;          // rank
        std::uint32_t second = 0;       // child, the other one follows its parent; 0: a leaf
    };
    std::uint32_t build(std::uint32_t first, std::uint32_t last);
    Node described(std::uint32_t first, std::uint32_t last) const;

    // Calls enter(node), and leaf(node) for the leaves of the nodes for which that was true.
    template <typename Enter, typename Leaf>
    void descend(Enter enter, Leaf leaf) const;

    std::vector<RankedPoint> m_points;
    std::vector<Node> m_nodes; // a parent before its children
};

template <typename Enter, typename Leaf>
void EventIndex::descend(Enter enter, Leaf leaf) const
{
    if (m_nodes.empty())
        return;
    std::vector<std::uint32_t> waiting{0};
    while (!waiting.empty()) {
        const std::uint32_t number = waiting.back();
        const Node &node = m_nodes[number];
        waiting.pop_back();
        if (!enter(node))
            continue;
        if (node.second == 0) {
            leaf(node);
        } else {
            waiting.push_back(node.second);
            waiting.push_back(number + 1);
        }
    }
}

template <typename Visit>
void EventIndex::visitWithin(const QRectF &area, Visit visit) const
{
    auto touches = [&](const Node &node) {
        return node.right >= area.left() && node.left <= area.right() && node.top >= area.top() &&
               node.bottom <= area.bottom();
    };
    descend(touches, [&](const Node &node) {
        for (std::uint32_t i = node.first; i < node.last; ++i) {
            const RankedPoint &point = m_points[i];
            if (point.x >= area.left() && point.x <= area.right() && point.y >= area.top() &&
                point.y <= area.bottom())
                visit(point);
        }
    });
}
