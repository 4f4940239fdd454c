#include "coastline.h"

#include <cmath>

#include <gtest/gtest.h>

static const std::atomic<bool> never{false};

static const Detail details[] = {Detail::Coarse, Detail::Fine};

TEST(Coastline, IsThereAndClosed)
{
    for (const Detail detail : details) {
        ASSERT_GT(coastlineRings(detail).size(), 100U);
        for (const Ring &ring : coastlineRings(detail)) {
            EXPECT_EQ(ring.front().longitude, ring.back().longitude);
            EXPECT_EQ(ring.front().latitude, ring.back().latitude);
            for (const GeoPoint point : ring)
                EXPECT_TRUE(std::abs(point.latitude) <= 90 && std::abs(point.longitude) <= 180);
        }
    }
}

// Also where the centre, the poles, the 180th meridian or the point opposite to the centre lies on land.
TEST(Coastline, TellsLandFromSeaWhereverTheMapIsCentred)
{
    for (const Detail detail : details)
        for (const auto &[latitude, longitude] : {std::pair(0.0, 0.0),
                                                  {40.0, -100.0},
                                                  {-35.0, 150.0},
                                                  {90.0, 0.0},
                                                  {-90.0, 0.0},
                                                  {-50.0, -60.0},
                                                  {-30.0, 80.0},
                                                  {65.0, 180.0},
                                                  {-17.0, 180.0},
                                                  {-40.0, 176.5}}) {
            const Projection projection(latitude, longitude);
            const ProjectedLand land = projectLand(coastlineRings(detail), projection, 180, never);
            auto isLand = [&](double lat, double lon) { return land.contains(projection.forward(lat, lon)); };
            const auto where = ::testing::Message() << latitude << ' ' << longitude;
            EXPECT_TRUE(isLand(50, 20)) << where;   // Poland
            EXPECT_TRUE(isLand(40, -100)) << where; // Kansas
            EXPECT_TRUE(isLand(-25, 135)) << where; // Australia
            EXPECT_TRUE(isLand(-85, 60)) << where;  // Antarctica
            EXPECT_TRUE(isLand(67, 179)) << where;  // Chukotka
            EXPECT_TRUE(isLand(67, -179)) << where; // Chukotka beyond the 180th meridian
            EXPECT_TRUE(isLand(71, 180)) << where;  // Wrangel Island, which the data cut there
            EXPECT_FALSE(isLand(0, -150)) << where;
            EXPECT_FALSE(isLand(30, -45)) << where;
            EXPECT_FALSE(isLand(-40, 80)) << where;
            EXPECT_FALSE(isLand(85, 0)) << where;
            EXPECT_FALSE(isLand(42, 51)) << where; // the Caspian Sea
            EXPECT_FALSE(isLand(-30, 180)) << where;
        }
}

TEST(Coastline, LeavesOutWhatIsBeyondTheRange)
{
    const Projection pacific(0, -150);
    EXPECT_TRUE(projectLand(coastlineRings(Detail::Coarse), pacific, 5, never).coast.empty());
    for (const PlaneShape &piece :
         projectLand(coastlineRings(Detail::Coarse), Projection(40, -100), 20, never).coast) {
        EXPECT_LT(std::abs(piece.bounds.center().x()), 60);
        EXPECT_LT(std::abs(piece.bounds.center().y()), 60);
    }
}

// A map of a few degrees in the middle of a continent has no coast, and is land all the same.
TEST(Coastline, KnowsThatASmallMapInlandIsLand)
{
    for (const Detail detail : details) {
        const ProjectedLand land = projectLand(coastlineRings(detail), Projection(50, 20), 1, never);
        EXPECT_TRUE(land.coast.empty());
        EXPECT_TRUE(land.contains({0.5, 0.5}));
    }
}

// The coast crosses the 180th meridian without a line along it, and without a gap.
TEST(Coastline, CrossesTheAntimeridian)
{
    const Projection projection(68, 180);
    const ProjectedLand land = projectLand(coastlineRings(Detail::Coarse), projection, 10, never);
    const QPointF inland = projection.forward(67, 180);
    double nearest = 180;
    bool west = false, east = false, across = false;
    for (const PlaneShape &piece : land.coast)
        for (int i = 0; i + 1 < piece.points.size(); ++i) {
            const QPointF a = piece.points[i], b = piece.points[i + 1], middle = (a + b) / 2;
            nearest = std::min(nearest, std::hypot(middle.x() - inland.x(), middle.y() - inland.y()));
            west |= a.x() < -1;
            east |= a.x() > 1;
            across |= (a.x() <= 0) != (b.x() <= 0);
            EXPECT_LT(std::hypot(b.x() - a.x(), b.y() - a.y()), 4.5);
        }
    EXPECT_GT(nearest, 0.5);
    EXPECT_TRUE(west && east && across);
}

// Close to the point opposite to the centre, the coast goes around the rim and not across the map.
TEST(Coastline, DoesNotLeadAcrossTheMap)
{
    for (const auto &[latitude, longitude] : {std::pair(-40.0, 180.0), {-64.5, 0.0}, {-36.0, 174.0}}) {
        const ProjectedLand land =
            projectLand(coastlineRings(Detail::Coarse), Projection(latitude, longitude), 180, never);
        for (const PlaneShape &piece : land.coast)
            for (int i = 0; i + 1 < piece.points.size(); ++i) {
                const QPointF step = piece.points[i + 1] - piece.points[i];
                EXPECT_LT(std::hypot(step.x(), step.y()), 9) << latitude << ' ' << longitude;
            }
    }
}

TEST(Coastline, EndsEarlyWhenCancelled)
{
    EXPECT_TRUE(projectLand(coastlineRings(Detail::Fine), Projection(0, 0), 180, true).areas.empty());
}
