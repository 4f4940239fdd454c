#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "c_text.h"

namespace {

std::string said(double seconds)
{
    return taken(strtdelta(seconds));
}

TEST(Duration, IsSaidAsAPersonSaysIt)
{
    constexpr double minute = 60, hour = 3600, day = 86400;
    const struct {
        double seconds;
        const char *said;
    } cases[] = {
        {0, "0 seconds"},          {0.0004, "0 seconds"},
        {0.0125, "0.013 seconds"}, {0.25, "0.25 seconds"},
        {0.5, "0.5 seconds"},      {0.999, "1 second"},
        {1, "1 second"},           {1.04, "1 second"},
        {2.5, "2.5 seconds"},      {9.94, "9.9 seconds"},
        {9.96, "10 seconds"},      {42.4, "42 seconds"},
        {59.4, "59 seconds"},      {59.6, "1 minute"},
        {minute, "1 minute"},      {90, "1.5 minutes"},
        {3 * minute, "3 minutes"}, {59.6 * minute, "1 hour"},
        {2.5 * hour, "2.5 hours"}, {23.4 * hour, "23 hours"},
        {23.6 * hour, "1 day"},    {day, "1 day"},
        {12 * day, "12 days"},     {12.3 * day, "12 days"},
        {400 * day, "400 days"},   {730 * day, "2 years"},
        {1000 * day, "2.7 years"},
    };
    for (const auto &[seconds, expected] : cases)
        EXPECT_EQ(said(seconds), expected) << seconds;
}

TEST(Duration, KeepsItsSign)
{
    EXPECT_EQ(said(-180), "-3 minutes");
    EXPECT_EQ(said(-1), "-1 second");
    EXPECT_EQ(said(-0.0001), "0 seconds");
    EXPECT_EQ(said(-0.0), "0 seconds");
}

TEST(Duration, MeetsWhatNoClockShows)
{
    EXPECT_EQ(said(365.25 * 86400 * 373), "373 years");
    EXPECT_EQ(said(1e30), "3.17e+22 years");
    EXPECT_EQ(said(std::numeric_limits<double>::max()), "5.7e+300 years");
    EXPECT_EQ(said(std::nan("")), "an unknown time");
    EXPECT_EQ(said(HUGE_VAL), "an infinite time");
    EXPECT_EQ(said(-HUGE_VAL), "an infinite time");
    EXPECT_EQ(said(5e-324), "0 seconds");
}

TEST(Duration, NeverReachesTheNextUnit)
{
    const struct {
        double unit;
        double next;
        const char *name;
    } units[] = {{1, 60, " second"}, {60, 60, " minute"}, {3600, 24, " hour"}, {86400, 730, " day"}};
    for (const auto &[unit, next, name] : units) {
        for (double count = 0.97; count < next; count *= 1.003) {
            const std::string text = said(count * unit);
            if (text.find(name) != std::string::npos) {
                EXPECT_LT(std::stod(text), next) << text;
            }
        }
    }
}

} // namespace
