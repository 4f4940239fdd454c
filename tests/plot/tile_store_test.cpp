#include "tile_store.h"

#include <gtest/gtest.h>

static constexpr auto noTime = TileStore::Clock::time_point::min();
static constexpr auto allTime = TileStore::Clock::time_point::max();

// A tile whose every pixel tells its place on the map.
static QImage coordinates(const QRect &place)
{
    QImage image(place.size(), QImage::Format_RGB32);
    for (int y = 0; y < place.height(); ++y)
        for (int x = 0; x < place.width(); ++x)
            image.setPixel(x, y, qRgb((place.x() + x) & 255, (place.y() + y) & 255, 200));
    return image;
}

static QImage painted(const TileStore &tiles, const QRect &seen)
{
    QImage image(seen.size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    tiles.paint(painter, seen);
    return image;
}

TEST(TileStore, PutsTilesTogetherWithoutSeams)
{
    TileStore tiles;
    tiles.setScale(1);
    for (const QRect seen : {QRect(-300, -301, 601, 602), QRect(-1, -1, 2, 2), QRect(255, -257, 3, 3)}) {
        EXPECT_TRUE(tiles.drawMissing(seen, coordinates, allTime));
        const QImage image = painted(tiles, seen);
        for (int y = 0; y < seen.height(); ++y)
            for (int x = 0; x < seen.width(); ++x)
                ASSERT_EQ(image.pixel(x, y), qRgb((seen.x() + x) & 255, (seen.y() + y) & 255, 200));
    }
}

TEST(TileStore, DrawsAtLeastOneTileHoweverShortTheTime)
{
    TileStore tiles;
    tiles.setScale(1);
    const QRect seen(0, 0, 512, 512);
    for (int i = 1; i < 4; ++i) {
        EXPECT_FALSE(tiles.drawMissing(seen, coordinates, noTime));
        EXPECT_EQ(tiles.drawnTiles(), i);
    }
    EXPECT_TRUE(tiles.drawMissing(seen, coordinates, noTime));
    EXPECT_TRUE(tiles.drawMissing(seen, coordinates, noTime));
    EXPECT_EQ(tiles.drawnTiles(), 4);
}

TEST(TileStore, DrawsOnlyWhatPanningUncovers)
{
    TileStore tiles;
    tiles.setScale(1);
    tiles.drawMissing(QRect(0, 0, 512, 512), coordinates, allTime);
    tiles.drawMissing(QRect(10, 0, 502, 512), coordinates, allTime);
    EXPECT_EQ(tiles.drawnTiles(), 4);
    tiles.drawMissing(QRect(10, 0, 512, 512), coordinates, allTime);
    EXPECT_EQ(tiles.drawnTiles(), 6);
}

TEST(TileStore, ShowsWhatIsOutOfDateUntilItIsDrawnAnew)
{
    TileStore tiles;
    tiles.setScale(1);
    const QRect seen(0, 0, 512, 256);
    auto filled = [](QColor colour) {
        return [colour](const QRect &place) {
            QImage image(place.size(), QImage::Format_RGB32);
            image.fill(colour);
            return image;
        };
    };
    tiles.drawMissing(seen, filled(Qt::red), allTime);
    tiles.renew();
    EXPECT_EQ(painted(tiles, seen).pixelColor(5, 5), QColor(Qt::red));
    tiles.drawMissing(seen, filled(Qt::blue), allTime);
    EXPECT_EQ(painted(tiles, seen).pixelColor(5, 5), QColor(Qt::blue));
    // The last scale stands in for the next.
    tiles.setScale(2);
    EXPECT_EQ(painted(tiles, seen).pixelColor(500, 200), QColor(Qt::blue));
    tiles.drawMissing(seen, filled(Qt::green), noTime);
    const QImage mixed = painted(tiles, seen);
    EXPECT_NE(mixed.pixelColor(5, 5), mixed.pixelColor(500, 5));
    tiles.clear();
    EXPECT_EQ(painted(tiles, seen).pixelColor(5, 5), QColor(Qt::white));
}

TEST(TileStore, LetsGoOfTilesFarAway)
{
    TileStore tiles;
    tiles.setScale(1);
    const QRect first(0, 0, 256, 256);
    tiles.drawMissing(first, coordinates, allTime);
    tiles.trim(QRect(100'000, 0, 256, 256));
    tiles.drawMissing(first, coordinates, allTime);
    EXPECT_EQ(tiles.drawnTiles(), 2);
}
