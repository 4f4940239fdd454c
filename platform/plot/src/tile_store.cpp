#include "tile_store.h"

#include <algorithm>
#include <vector>

static int tileOf(int pixel)
{
    return pixel >= 0 ? pixel / TileStore::side : -((-pixel - 1) / TileStore::side) - 1;
}

QRect TileStore::placeOf(QPair<int, int> key)
{
    return {key.first * side, key.second * side, side, side};
}

void TileStore::setScale(double scale)
{
    if (scale == m_scale)
        return;
    // Of several changes in quick succession the last that was shown whole stands in.
    if (m_complete || m_standIns.isEmpty()) {
        m_standIns = std::move(m_tiles);
        m_standInScale = m_scale;
    }
    m_tiles.clear();
    m_scale = scale;
    m_complete = false;
}

void TileStore::renew()
{
    for (Tile &tile : m_tiles)
        tile.current = false;
    m_complete = false;
}

void TileStore::clear()
{
    m_tiles.clear();
    m_standIns.clear();
    m_complete = false;
}

bool TileStore::drawMissing(const QRect &seen, const Draw &draw, Clock::time_point end)
{
    std::vector<QPair<int, int>> missing;
    for (int y = tileOf(seen.top()); y <= tileOf(seen.bottom()); ++y)
        for (int x = tileOf(seen.left()); x <= tileOf(seen.right()); ++x) {
            const auto found = m_tiles.constFind({x, y});
            if (found == m_tiles.constEnd() || !found->current)
                missing.push_back({x, y});
        }
    const QPoint middle = seen.center();
    std::sort(missing.begin(), missing.end(), [&](auto a, auto b) {
        return (placeOf(a).center() - middle).manhattanLength() <
               (placeOf(b).center() - middle).manhattanLength();
    });
    for (std::size_t i = 0; i < missing.size(); ++i) {
        if (i > 0 && Clock::now() >= end)
            return false;
        m_tiles[missing[i]] = {draw(placeOf(missing[i])), true};
        ++m_drawn;
    }
    m_complete = true;
    m_standIns.clear();
    return true;
}

void TileStore::paintStandIns(QPainter &painter, const QRect &seen) const
{
    const double factor = m_scale / m_standInScale;
    for (auto tile = m_standIns.begin(); tile != m_standIns.end(); ++tile) {
        const QRect place = placeOf(tile.key());
        const QRectF target(QPointF(place.topLeft()) * factor - seen.topLeft(),
                            QSizeF(place.size()) * factor);
        if (target.intersects(QRectF({0, 0}, seen.size())))
            painter.drawImage(target, tile->image);
    }
}

void TileStore::paint(QPainter &painter, const QRect &seen) const
{
    if (!m_standIns.isEmpty() && m_standInScale > 0)
        paintStandIns(painter, seen);
    for (int y = tileOf(seen.top()); y <= tileOf(seen.bottom()); ++y)
        for (int x = tileOf(seen.left()); x <= tileOf(seen.right()); ++x) {
            const auto found = m_tiles.constFind({x, y});
            if (found != m_tiles.constEnd())
                painter.drawImage(placeOf({x, y}).topLeft() - seen.topLeft(), found->image);
        }
}

void TileStore::trim(const QRect &seen)
{
    const QRect kept = seen.adjusted(-seen.width(), -seen.height(), seen.width(), seen.height())
                           .adjusted(-side, -side, side, side);
    for (auto tile = m_tiles.begin(); tile != m_tiles.end();)
        tile = kept.intersects(placeOf(tile.key())) ? std::next(tile) : m_tiles.erase(tile);
}
