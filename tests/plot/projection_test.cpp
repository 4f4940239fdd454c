#include "projection.h"

#include <cmath>

#include <gtest/gtest.h>

static double length(QPointF point)
{
    return std::hypot(point.x(), point.y());
}

TEST(Projection, PutsItsCentreAtTheOrigin)
{
    EXPECT_NEAR(length(Projection(40, -100).forward(40, -100)), 0, 1e-12);
    EXPECT_NEAR(length(Projection(40, -100).forward(40, 260)), 0, 1e-12);
}

TEST(Projection, ShowsThePoleStraightUpAtItsDistance)
{
    const QPointF pole = Projection(0, 30).forward(90, 0);
    EXPECT_NEAR(pole.x(), 0, 1e-9);
    EXPECT_NEAR(pole.y(), 90, 1e-9); // the quarter meridian is exactly 90 of the plane's units
}

TEST(Projection, KeepsDistanceAndDirection)
{
    // A degree of the equator is 111319.49 m, one of the mean meridian 111132.95 m.
    const QPointF east = Projection(0, 0).forward(0, 10);
    EXPECT_NEAR(east.x(), 10 * 111319.4908 / 111132.9525, 1e-6);
    EXPECT_NEAR(east.y(), 0, 1e-9);
    // JFK to London Heathrow: 5554.9 km by the geodesic, setting out at 51.4 degrees.
    const QPointF london = Projection(40.6413, -73.7781).forward(51.4700, -0.4543);
    EXPECT_NEAR(length(london) * 111.1329525, 5555, 3);
    EXPECT_NEAR(std::atan2(london.x(), london.y()) * 180 / M_PI, 51.4, 0.3);
}

TEST(Projection, ComesBackToThePlaceItStartedFrom)
{
    const Projection projection(40, -100);
    for (double latitude = -85; latitude <= 85; latitude += 17)
        for (double longitude = -175; longitude <= 175; longitude += 25) {
            const QPointF point = projection.forward(latitude, longitude);
            const auto place = projection.inverse(point);
            EXPECT_NEAR(place.latitude, latitude, 1e-6);
            EXPECT_NEAR(place.longitude, longitude, 1e-6);
        }
}

TEST(Projection, GivesTheFarSideAFinitePlace)
{
    const double far = length(Projection(40, -100).forward(-40, 80));
    EXPECT_TRUE(std::isfinite(far));
    EXPECT_NEAR(far, 180, 0.7);
}
