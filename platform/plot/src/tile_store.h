// The tiles that the map is put together of, so that panning moves what is drawn already.
#pragma once

#include <chrono>
#include <functional>

#include <QHash>
#include <QImage>
#include <QPainter>
#include <QRect>

// Tiles are squares of device pixels of the map at one scale; the plane's origin is a corner of four of them,
// and y runs down. Tiles of the scale before stand in for those that are not drawn yet.
class TileStore
{
public:
    static constexpr int side = 256; // device pixels
    using Clock = std::chrono::steady_clock;
    using Draw = std::function<QImage(const QRect &)>; // the picture of a rectangle of device pixels

    // Another scale (device pixels per degree). The same one changes nothing.
    void setScale(double scale);

    // What is drawn is out of date: it is shown until it is drawn anew.
    void renew();

    // Nothing that is drawn may be shown any more.
    void clear();

    // Draws what is missing of the tiles in `seen`, from the middle outwards, one at least, until the time is
    // over. True when nothing is missing.
    bool drawMissing(const QRect &seen, const Draw &draw, Clock::time_point end);

    // Puts the tiles, or what stands in for them, onto a painter whose pixels are device pixels; the upper
    // left corner of `seen` lies at its origin.
    void paint(QPainter &painter, const QRect &seen) const;

    // Lets go of tiles far from what is seen.
    void trim(const QRect &seen);

    int drawnTiles() const { return m_drawn; } // since the store was made

private:
    struct Tile {
        QImage image;
        bool current = true;
    };
    using Tiles = QHash<QPair<int, int>, Tile>;
    static QRect placeOf(QPair<int, int> key);
    void paintStandIns(QPainter &painter, const QRect &seen) const;

    Tiles m_tiles, m_standIns;
    double m_scale = 0, m_standInScale = 0;
    bool m_complete = false;
    int m_drawn = 0;
};
