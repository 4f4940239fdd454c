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

// Distance in metres and direction by Vincenty's series of 1975, on the same ellipsoid; not for places close
// to opposite ones.
static std::pair<double, double> vincenty(double latitude1, double longitude1, double latitude2,
                                          double longitude2)
{
    constexpr double a = 6378137, f = 1 / 298.257223563, b = a * (1 - f), radians = M_PI / 180;
    const double u1 = std::atan((1 - f) * std::tan(latitude1 * radians));
    const double u2 = std::atan((1 - f) * std::tan(latitude2 * radians));
    const double l = (longitude2 - longitude1) * radians;
    double lambda = l, sinSigma = 0, cosSigma = 1, sigma = 0, cosSquare = 1, cos2 = 0;
    for (int i = 0; i < 200; ++i) {
        sinSigma = std::hypot(std::cos(u2) * std::sin(lambda),
                              std::cos(u1) * std::sin(u2) - std::sin(u1) * std::cos(u2) * std::cos(lambda));
        cosSigma = std::sin(u1) * std::sin(u2) + std::cos(u1) * std::cos(u2) * std::cos(lambda);
        sigma = std::atan2(sinSigma, cosSigma);
        const double sinAlpha = std::cos(u1) * std::cos(u2) * std::sin(lambda) / sinSigma;
        cosSquare = 1 - sinAlpha * sinAlpha;
        cos2 = cosSquare == 0 ? 0 : cosSigma - 2 * std::sin(u1) * std::sin(u2) / cosSquare;
        const double c = f / 16 * cosSquare * (4 + f * (4 - 3 * cosSquare));
        const double before = lambda;
        lambda = l + (1 - c) * f * sinAlpha *
                         (sigma + c * sinSigma * (cos2 + c * cosSigma * (2 * cos2 * cos2 - 1)));
        if (std::abs(lambda - before) < 1e-13)
            break;
    }
    const double square = cosSquare * (a * a - b * b) / (b * b);
    const double bigA = 1 + square / 16384 * (4096 + square * (-768 + square * (320 - 175 * square)));
    const double bigB = square / 1024 * (256 + square * (-128 + square * (74 - 47 * square)));
    const double delta =
        bigB * sinSigma *
        (cos2 + bigB / 4 *
                    (cosSigma * (2 * cos2 * cos2 - 1) -
                     bigB / 6 * cos2 * (4 * sinSigma * sinSigma - 3) * (4 * cos2 * cos2 - 3)));
    const double azimuth =
        std::atan2(std::cos(u2) * std::sin(lambda),
                   std::cos(u1) * std::sin(u2) - std::sin(u1) * std::cos(u2) * std::cos(lambda));
    return {b * bigA * (sigma - delta), azimuth};
}

TEST(Projection, AgreesWithAnotherSolutionOfTheGeodesic)
{
    int compared = 0;
    for (double latitude = -80; latitude <= 80; latitude += 20)
        for (double toLatitude = -87; toLatitude <= 88; toLatitude += 12.5)
            for (double toLongitude = -178; toLongitude <= 178; toLongitude += 19) {
                const Projection projection(latitude, 33);
                const QPointF place = projection.forward(toLatitude, toLongitude);
                if (length(place) > 160) // where the series doesn't converge
                    continue;
                const auto [distance, azimuth] = vincenty(latitude, 33, toLatitude, toLongitude);
                const double degrees = distance / 111132.9525472;
                EXPECT_NEAR(place.x(), degrees * std::sin(azimuth), 1e-6) << latitude << ' ' << toLatitude;
                EXPECT_NEAR(place.y(), degrees * std::cos(azimuth), 1e-6) << toLongitude;
                ++compared;
            }
    EXPECT_GT(compared, 2000);
}

TEST(Projection, IsExactWithinARangeAndBeyondItBeyond)
{
    for (const double range : {0.5, 20.0, 120.0})
        for (double latitude = -90; latitude <= 90; latitude += 7.5)
            for (double longitude = -180; longitude <= 180; longitude += 11.25) {
                const Projection projection(40, -100);
                const QPointF exact = projection.forward(latitude, longitude);
                const QPointF found = projection.forwardWithin(latitude, longitude, range);
                if (length(exact) <= range) {
                    EXPECT_EQ(found, exact);
                } else {
                    EXPECT_GT(length(found), range);
                }
                EXPECT_NEAR(length(found), length(exact), Projection::roughness);
                if (length(exact) < 150) { // opposite to the centre, directions are anything
                    EXPECT_LT(length(found - exact), Projection::roughness) << latitude << ' ' << longitude;
                }
            }
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
