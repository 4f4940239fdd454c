/* A time shown can be stored again: text and back, equal to the microsecond. */

#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include <orvane/util.h>

namespace {

/* The time that comes back from text in a format. */
double back(double time, const char *format, const char *zone)
{
    char *const text = zepoch2str(time, format, zone);
    double result = std::nan("");
    EXPECT_EQ(is_epoch_string(text, &result), 1) << text;
    std::free(text);
    return result;
}

constexpr const char *display_format = "%D (%j) %H:%M:%S.%u %Z";

TEST(TimeRoundTrip, KeepsAMillionTimesToTheMicrosecond)
{
    std::mt19937_64 random(20260101);
    std::uniform_int_distribution<int64_t> micros(-4000000000000000, 4000000000000000);
    for (int i = 0; i < 1000000; ++i) {
        const double time = static_cast<double>(micros(random)) / 1e6;
        ASSERT_EQ(back(time, display_format, nullptr), time) << i;
    }
}

TEST(TimeRoundTrip, KeepsAnyDoubleToHalfAMicrosecond)
{
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> times(-4e9, 4e9);
    for (int i = 0; i < 200000; ++i) {
        const double time = times(random);
        // Half a microsecond of rounding, and half of the step between doubles of that size.
        ASSERT_NEAR(back(time, display_format, nullptr), time, 0.5e-6 + 0.25e-6) << i;
    }
}

TEST(TimeRoundTrip, KeepsTheYearsOfTheWholeCalendarToTheMillisecond)
{
    std::mt19937_64 random(8);
    std::uniform_int_distribution<int64_t> millis(-377705116800000, 253402300799999);
    for (int i = 0; i < 200000; ++i) {
        const double time = static_cast<double>(millis(random)) / 1e3;
        ASSERT_EQ(back(time, display_format, nullptr), time) << i;
    }
}

TEST(TimeRoundTrip, KeepsEpochSecondsInFiveDecimals)
{
    std::mt19937_64 random(9);
    std::uniform_int_distribution<int64_t> units(-999999999999900, 999999999999900);
    for (int i = 0; i < 200000; ++i) {
        const double time = static_cast<double>(units(random)) / 1e5;
        ASSERT_EQ(back(time, "%E", nullptr), time) << i;
    }
}

TEST(TimeRoundTrip, KeepsTimesShownInOtherForms)
{
    std::mt19937_64 random(10);
    // From 1800 on, where bare digits are days.
    std::uniform_int_distribution<int64_t> seconds(-5364662400, 7258118399);
    const char *const formats[] = {"%Y-%m-%dT%H:%M:%SZ", "%Y%j:%H:%M:%S", "%Y/%m/%d %T", "%m/%d/%Y %H:%M:%S",
                                   "%Y%m%dT%H%M%S.%u%z", "%Y-%jT%T.%s",   "%D %T %z"};
    for (int i = 0; i < 200000; ++i) {
        const auto time = static_cast<double>(seconds(random));
        ASSERT_EQ(back(time, formats[i % 7], nullptr), time) << formats[i % 7];
    }
}

TEST(TimeRoundTrip, KeepsTimesShownInZones)
{
    std::mt19937_64 random(11);
    std::uniform_int_distribution<int64_t> micros(-2000000000000000, 4000000000000000);
    for (const char *zone : {"America/Los_Angeles", "Asia/Kolkata", "Asia/Shanghai", "Australia/Lord_Howe",
                             "America/St_Johns", "Europe/Dublin", "Asia/Kathmandu", "Antarctica/Troll"}) {
        for (int i = 0; i < 50000; ++i) {
            const double time = static_cast<double>(micros(random)) / 1e6;
            ASSERT_EQ(back(time, display_format, zone), time) << zone;
        }
    }
}

} // namespace
