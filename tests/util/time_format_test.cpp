#include <cmath>
#include <cstring>
#include <ctime>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "c_text.h"

namespace {

constexpr const char *display_format = "%D (%j) %H:%M:%S.%u %Z";

std::string utc(double time, const char *format = display_format)
{
    return taken(epoch2str(time, format));
}

std::string in_zone(double time, const char *zone, const char *format = display_format)
{
    return taken(zepoch2str(time, format, zone));
}

TEST(TimeFormat, ShowsEveryConversion)
{
    const double time = 1518013391.123456; // 2018-02-07, a Wednesday
    const struct {
        const char *format, *text;
    } cases[] = {
        {"%Y", "2018"},
        {"%m", "02"},
        {"%d", "07"},
        {"%H", "14"},
        {"%M", "23"},
        {"%S", "11"},
        {"%j", "038"},
        {"%y", "18"},
        {"%b", "Feb"},
        {"%B", "February"},
        {"%a", "Wed"},
        {"%A", "Wednesday"},
        {"%D", "02/07/2018"},
        {"%T", "14:23:11"},
        {"%Z", "UTC"},
        {"%z", "+0000"},
        {"%u", "123456"},
        {"%s", "123"},
        {"%E", "1518013391.12346"},
        {"%%", "%"},
        {display_format, "02/07/2018 (038) 14:23:11.123456 UTC"},
        {"", ""},
        {"plain \xC3\xA9 text", "plain \xC3\xA9 text"},
        {"%", "%"},
        {"100%", "100%"},
        {"%q%Y%", "%q2018%"},
        {"%%Y", "%Y"},
        {"%5Y", "%5Y"},
        {"%%%Y%%", "%2018%"},
    };
    for (const auto &[format, text] : cases)
        EXPECT_EQ(utc(time, format), text) << format;
}

TEST(TimeFormat, RoundsOnceToTheFinestUnitShown)
{
    EXPECT_EQ(utc(59.9999999), "01/01/1970 (001) 00:01:00.000000 UTC");
    EXPECT_EQ(utc(59.9999994), "01/01/1970 (001) 00:00:59.999999 UTC");
    EXPECT_EQ(utc(59.9996, "%S.%s"), "00.000");
    EXPECT_EQ(utc(59.9996, "%M:%S.%s"), "01:00.000");
    EXPECT_EQ(utc(59.9994, "%M:%S.%s"), "00:59.999");
    EXPECT_EQ(utc(59.6, "%T"), "00:01:00");
    EXPECT_EQ(utc(59.4, "%T"), "00:00:59");
    EXPECT_EQ(utc(1.999999, "%S %s"), "02 000");
    EXPECT_EQ(utc(1.999999, "%S %s %u"), "01 999 999999") << "the microseconds are the finest unit";
    EXPECT_EQ(utc(86399.9999999), "01/02/1970 (002) 00:00:00.000000 UTC");
    EXPECT_EQ(utc(-0.0000001), "01/01/1970 (001) 00:00:00.000000 UTC");
    EXPECT_EQ(utc(-0.000001), "12/31/1969 (365) 23:59:59.999999 UTC");
}

TEST(TimeFormat, DoesNotRoundMinutesOrDays)
{
    EXPECT_EQ(utc(86399.0, "%D"), "01/01/1970");
    EXPECT_EQ(utc(59.5, "%H:%M"), "00:00");
    EXPECT_EQ(utc(59.9999999, "%H:%M"), "00:01") << "no more than what binary fractions leave";
}

TEST(TimeFormat, ShowsEpochSecondsWithFiveDecimals)
{
    const struct {
        double time;
        const char *text;
    } cases[] = {
        {0.0, "0.00000"},
        {-0.5, "-0.50000"},
        {-1.25, "-1.25000"},
        {-0.000001, "0.00000"},
        {0.000005, "0.00001"},
        {0.999996, "1.00000"},
        {1518013391.25, "1518013391.25000"},
        {ORVANE_NULL_TIME, "-9999999999.99900"},
        {9999999999.999, "9999999999.99900"},
    };
    for (const auto &[time, text] : cases)
        EXPECT_EQ(utc(time, "%E"), text);
}

TEST(TimeFormat, ShowsTheNullTimeToTheDecimal)
{
    EXPECT_EQ(utc(ORVANE_NULL_TIME), "02/10/1653 (041) 06:13:20.001000 UTC");
    EXPECT_EQ(in_zone(ORVANE_NULL_TIME, "Asia/Tokyo", "%D %T.%u %Z %z"),
              "02/10/1653 15:32:19.001000 LMT +091859");
}

TEST(TimeFormat, ShowsFarYears)
{
    EXPECT_EQ(utc(1e11), "11/16/5138 (320) 09:46:40.000000 UTC");
    EXPECT_EQ(utc(-1e11), "02/15/-1199 (046) 14:13:20.000000 UTC");
    EXPECT_EQ(utc(-62167219200.0), "01/01/0000 (001) 00:00:00.000000 UTC");
    EXPECT_EQ(utc(-62167219201.0, "%Y %y"), "-0001 99");
    EXPECT_EQ(utc(253402300799.0), "12/31/9999 (365) 23:59:59.000000 UTC");
    EXPECT_EQ(utc(-377705116800.0), "01/01/-9999 (001) 00:00:00.000000 UTC");
}

TEST(TimeFormat, ShowsTheBareNumberBeyondTheCalendar)
{
    EXPECT_EQ(utc(253402300800.0), "253402300800.00000");
    EXPECT_EQ(utc(-377705116801.0), "-377705116801.00000");
    EXPECT_EQ(utc(1e13, "%Y"), "10000000000000.00000");
    EXPECT_EQ(utc(1e300), "1e+300");
    EXPECT_EQ(utc(-std::numeric_limits<double>::max()), "-1.7976931348623157e+308");
    EXPECT_EQ(utc(std::nan("")), "nan");
    EXPECT_EQ(utc(-std::nan("")), "nan");
    EXPECT_EQ(utc(HUGE_VAL), "inf");
    EXPECT_EQ(utc(-HUGE_VAL, "%E"), "-inf");
    EXPECT_EQ(utc(5e-324), "01/01/1970 (001) 00:00:00.000000 UTC");
    EXPECT_EQ(in_zone(253402300799.0, "Asia/Tokyo"), "253402300799.00000") << "its local year is 10000";
}

TEST(TimeFormat, ShowsZones)
{
    const double winter = 1518013391, summer = 1530000000;
    EXPECT_EQ(in_zone(winter, "America/Los_Angeles"), "02/07/2018 (038) 06:23:11.000000 PST");
    EXPECT_EQ(in_zone(summer, "America/Los_Angeles"), "06/26/2018 (177) 01:00:00.000000 PDT");
    EXPECT_EQ(in_zone(winter, "Asia/Kathmandu", "%T %Z %z"), "20:08:11 +0545 +0545");
    EXPECT_EQ(in_zone(winter, "America/St_Johns", "%T %Z %z"), "10:53:11 NST -0330");
    EXPECT_EQ(in_zone(winter, "Etc/GMT+5", "%H %Z"), "09 -05");
    for (const char *universal : {"", "UTC", "Etc/UTC", "Zulu"})
        EXPECT_EQ(in_zone(winter, universal), "02/07/2018 (038) 14:23:11.000000 UTC") << universal;
    EXPECT_EQ(in_zone(winter, nullptr), "02/07/2018 (038) 14:23:11.000000 UTC");
}

TEST(TimeFormat, KeepsSummerTimeAfterTheListedTransitions)
{
    EXPECT_EQ(in_zone(4100000000, "America/New_York", "%D %Z"), "12/03/2099 EST");
    EXPECT_EQ(in_zone(4087000000, "America/New_York", "%D %Z"), "07/06/2099 EDT");
    EXPECT_EQ(in_zone(4087000000, "Australia/Sydney", "%D %Z"), "07/06/2099 AEST");
    EXPECT_EQ(in_zone(4100000000, "Australia/Sydney", "%D %Z"), "12/04/2099 AEDT");
}

struct Notices {
    std::vector<std::string> texts;
    Notices()
    {
        elog_set_notice_hook([](const char *text,
                                void *context) { static_cast<Notices *>(context)->texts.emplace_back(text); },
                             this);
    }
    ~Notices() { elog_set_notice_hook(nullptr, nullptr); }
};

TEST(TimeFormat, TakesAnUnknownZoneAsUtcAndSaysSoOnce)
{
    elog_clear();
    for (const char *unknown :
         {"Mars/Olympus", "../../etc/passwd", "/etc/localtime", "PST", "utc", "posix/UTC"}) {
        const Notices notices;
        EXPECT_EQ(in_zone(0, unknown), "01/01/1970 (001) 00:00:00.000000 UTC") << unknown;
        in_zone(1, unknown);
        in_zone(2, "Asia/Tokyo");
        in_zone(3, unknown);
        EXPECT_THAT(notices.texts,
                    testing::ElementsAre(testing::HasSubstr(std::string("'") + unknown + "'")));
    }
    const Notices again;
    in_zone(0, "Mars/Olympus");
    EXPECT_EQ(again.texts.size(), 1u) << "a new listener is told";
    EXPECT_EQ(elog_count(), 0);
}

TEST(TimeFormat, MeetsANullFormatWithAnError)
{
    elog_clear();
    EXPECT_EQ(epoch2str(0, nullptr), nullptr);
    EXPECT_EQ(zepoch2str(0, nullptr, "UTC"), nullptr);
    EXPECT_EQ(elog_count(), 2);
}

TEST(TimeFormat, AgreesWithTheCLibraryInUtc)
{
    std::mt19937_64 random(1);
    for (int i = 0; i < 200000; ++i) {
        // The years -1000 to 9999, of which strftime pads those below 1000 in its own way.
        const auto seconds = std::uniform_int_distribution<int64_t>(-30610224000, 253402300799)(random);
        std::tm broken = {};
        const std::time_t time = seconds;
        ASSERT_NE(gmtime_r(&time, &broken), nullptr);
        char expected[200];
        std::strftime(expected, sizeof expected, "%Y %m %d %H %M %S %j %y %b %B %a %A %m/%d/%Y %T %z",
                      &broken);
        ASSERT_EQ(utc(static_cast<double>(seconds), "%Y %m %d %H %M %S %j %y %b %B %a %A %D %T %z"),
                  expected);
    }
}

TEST(TimeFormat, ShowsTheMachinesZoneAsTheCLibraryDoes)
{
    for (const char *zone :
         {"UTC", "America/Denver", ":Europe/Berlin", "XYZ3ABC,M4.1.0,M10.5.0", "<-0330>3:30"}) {
        ASSERT_EQ(setenv("TZ", zone, 1), 0);
        tzset();
        for (const double time : {0.0, 1518013391.0, 1530000000.0, 4087000000.0, -5e9}) {
            const std::time_t seconds = static_cast<std::time_t>(time);
            std::tm local = {};
            localtime_r(&seconds, &local);
            char expected[100];
            std::strftime(expected, sizeof expected, "%m/%d/%Y (%j) %T %Z", &local);
            EXPECT_EQ(taken(strlocaltime(time)), expected) << zone;
        }
    }
    setenv("TZ", "UTC", 1);
    tzset();
    EXPECT_EQ(taken(strlocaltime(59.6)), "01/01/1970 (001) 00:01:00 UTC");
    EXPECT_EQ(taken(strlocaltime(std::nan(""))), "nan");
    EXPECT_EQ(taken(strlocaltime(1e300)), "1e+300");
    EXPECT_EQ(taken(strlocaltime(ORVANE_NULL_TIME)), "02/10/1653 (041) 06:13:20 UTC");
}

TEST(TimeFormat, MeetsArbitraryFormatsAndTimes)
{
    std::mt19937_64 random(3);
    const std::string letters = "%%%%YmdHMSjybBaADTZzusEqx \xC3";
    for (int i = 0; i < 100000; ++i) {
        std::string format(random() % 12, ' ');
        for (char &c : format)
            c = letters[random() % letters.size()];
        const auto bits = random();
        double time;
        static_assert(sizeof time == sizeof bits);
        std::memcpy(&time, &bits, sizeof time);
        char *text = zepoch2str(time, format.c_str(), i % 2 ? "Europe/London" : nullptr);
        ASSERT_NE(text, nullptr);
        std::free(text);
    }
}

TEST(TimeFormat, IsSafeInSeveralThreads)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([thread] {
            const char *zones[] = {"Asia/Tokyo", "Europe/Berlin", "America/Denver", "Pacific/Auckland"};
            for (int i = 0; i < 5000; ++i) {
                const char *zone = zones[(thread + i / 7) % 4];
                const double time = i * 86400.0;
                const std::string text = in_zone(time, zone);
                double back = -1;
                EXPECT_EQ(zis_epoch_string(text.c_str(), zone, &back), 1) << text;
                EXPECT_EQ(back, time) << text;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace
