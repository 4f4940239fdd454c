#include <cmath>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "c_text.h"

namespace {

/* The time that a text is, shown in UTC; "refused" when it is none. */
std::string read_as(const std::string &text)
{
    elog_clear();
    double time = 12345;
    const int is_time = is_epoch_string(text.c_str(), &time);
    EXPECT_EQ(is_epoch_string(text.c_str(), nullptr), is_time);
    EXPECT_EQ(elog_count(), 0) << log_text();
    if (is_time == 1)
        return taken(epoch2str(time, "%Y-%m-%d %T.%u"));
    EXPECT_EQ(is_time, 0);
    EXPECT_EQ(time, 12345) << "a refusal leaves the result alone: " << text;
    return "refused";
}

struct Case {
    const char *text;
    const char *meaning;
};

TEST(TimeParse, ReadsEveryForm)
{
    const char *day = "2018-02-07 00:00:00.000000";
    const char *second = "2018-02-07 14:23:11.000000";
    const char *decimals = "2018-02-07 14:23:11.250000";
    const Case cases[] = {
        // ISO 8601, extended
        {"2018-02-07", day},
        {"2018-038", day},
        {"2018-W06-3", day},
        {"2018-02-07T14:23:11", second},
        {"2018-02-07t14:23:11", second},
        {"2018-02-07 14:23:11", second},
        {"2018-02-07   14:23:11", second},
        {"2018-038T14:23:11", second},
        {"2018-W06-3T14:23:11", second},
        {"2018-02-07T14:23:11.25", decimals},
        {"2018-02-07T14:23:11,25", decimals},
        {"2018-02-07T14:23", "2018-02-07 14:23:00.000000"},
        {"2018-02-07T14", "2018-02-07 14:00:00.000000"},
        {"2018-02-07T14:23:11Z", second},
        {"2018-02-07T14:23:11z", second},
        {"2018-02-07T14:23:11 Z", second},
        {"2018-02-07Z", day},
        {"2018-02-07T15:23:11+01", second},
        {"2018-02-07T19:53:11+0530", second},
        {"2018-02-07T19:53:11+05:30", second},
        {"2018-02-07T10:53:11-03:30", second},
        {"2018-02-07 10:53:11 -0330", second},
        {"2018-02-07T15:42:10+01:18:59", second},
        {"2018-02-07T15:42:10 +011859", second},
        {"2018-02-07 +01", "2018-02-06 23:00:00.000000"},
        {"2018-02-07T24:00:00", "2018-02-08 00:00:00.000000"},
        {"2018-02-07T24:00", "2018-02-08 00:00:00.000000"},
        // ISO 8601, basic
        {"20180207", day},
        {"2018038", day},
        {"2018W063", day},
        {"20180207T142311", second},
        {"20180207T142311Z", second},
        {"20180207T142311.25Z", decimals},
        {"20180207T152311+0100", second},
        {"20180207 142311", second},
        {"2018038T142311", second},
        {"20180207T1423", "2018-02-07 14:23:00.000000"},
        {"20180207T14", "2018-02-07 14:00:00.000000"},
        // mixtures that files have
        {"2014-03-03T110706", "2014-03-03 11:07:06.000000"},
        {"20180207T14:23:11", second},
        {"2011/01/31", "2011-01-31 00:00:00.000000"},
        {"2018/2/7", day},
        {"2018/02/07 14:23:11", second},
        {"2018/02/07T14:23:11Z", second},
        {"2018-02-07 9:23:11", "2018-02-07 09:23:11.000000"},
        // days of the year
        {"2018038:14:23:11", second},
        {"2018038:14:23:11.25", decimals},
        {"2018038 14:23:11", second},
        {"2018-038:14:23:11", second},
        {"2016366", "2016-12-31 00:00:00.000000"},
        // the display's form
        {"02/07/2018", day},
        {"2/7/2018", day},
        {"02/07/2018 14:23:11", second},
        {"02/07/2018 14:23:11.25", decimals},
        {"02/07/2018 (038)", day},
        {"02/07/2018 (038) 14:23:11.250000", decimals},
        {"02/07/2018 (038) 14:23:11.250000 UTC", decimals},
        {"02/07/2018 (038) 14:23:11.250000 GMT", decimals},
        {"02/07/2018 (038) 14:23:11.250000 -00", decimals},
        {"02/07/2018(038)  14:23:11.250000UTC", decimals},
        {"02/08/2018 (038) 14:23:11", "2018-02-08 14:23:11.000000"},
        {"01/01/1970 (001) 00:00:00.000000 UTC", "1970-01-01 00:00:00.000000"},
        // years far away
        {"0000-01-01", "0000-01-01 00:00:00.000000"},
        {"9999-12-31T23:59:59Z", "9999-12-31 23:59:59.000000"},
        {"-1199-02-15T14:13:20", "-1199-02-15 14:13:20.000000"},
        {"02/15/-1199 (046) 14:13:20.000000 UTC", "-1199-02-15 14:13:20.000000"},
        // white space around
        {"  2018-02-07T14:23:11 \n", second},
        {"\t20180207\r\n", day},
        // leap seconds are the next second
        {"2016-12-31T23:59:60Z", "2017-01-01 00:00:00.000000"},
        {"2016-12-31T23:59:60.5Z", "2017-01-01 00:00:00.500000"},
        {"2017-01-01T08:59:60+09", "2017-01-01 00:00:00.000000"},
    };
    for (const auto &[text, meaning] : cases)
        EXPECT_EQ(read_as(text), meaning) << text;
}

TEST(TimeParse, RoundsDecimalsToTheNearestDouble)
{
    const struct {
        const char *text;
        double time;
    } cases[] = {
        {"1970-01-01T00:00:00.1", 0.1},
        {"1970-01-01T00:00:00.000001", 0.000001},
        {"1969-12-31T23:59:59.9", -0.1},
        {"1969-12-31T23:59:59.999999999", -1e-9},
        {"2018-02-07T14:23:11.123456", 1518013391.123456},
        {"2018-02-07T14:23:11.1234567890123456789", 1518013391.123456789},
        {"2018-02-07T14:23:11.9999999999", 1518013392.0},
        {"1969-12-31T23:59:59.9999999999", 0.0},
        {"1653-02-10T06:13:20.001", ORVANE_NULL_TIME},
    };
    for (const auto &[text, expected] : cases) {
        double time = 0;
        ASSERT_EQ(is_epoch_string(text, &time), 1) << text;
        EXPECT_EQ(time, expected) << text;
    }
}

TEST(TimeParse, ReadsNumbersAsEpochSeconds)
{
    const struct {
        const char *text;
        double time;
    } cases[] = {
        {"0", 0},
        {"-1", -1},
        {"+5.5", 5.5},
        {" 1518013391.12345 ", 1518013391.12345},
        {"-9999999999.99900", ORVANE_NULL_TIME},
        {"-9999999999.999", ORVANE_NULL_TIME},
        {"1e9", 1e9},
        {".5", 0.5},
        {"5.", 5},
        {"2018", 2018},
        {"201802", 201802},
        {"1518013391", 1518013391},
    };
    for (const auto &[text, expected] : cases) {
        double time = 12345;
        ASSERT_EQ(is_epoch_string(text, &time), 1) << text;
        EXPECT_EQ(time, expected) << text;
    }
}

TEST(TimeParse, TellsBareDaysFromEpochSeconds)
{
    // Seven digits are a day where year and day are plausible, eight where year, month and day are.
    EXPECT_EQ(read_as("1800001"), "1800-01-01 00:00:00.000000");
    EXPECT_EQ(read_as("2199365"), "2199-12-31 00:00:00.000000");
    EXPECT_EQ(read_as("18000101"), "1800-01-01 00:00:00.000000");
    for (const char *seconds :
         {"1799001", "2200001", "2018000", "2018367", "1234567", "17991231", "22000101", "20181301",
          "20180001", "20180100", "20180132", "2018038.0", "20180207.5", "-2018038", "+2018038"}) {
        double time = 0;
        EXPECT_EQ(is_epoch_string(seconds, &time), 1) << seconds;
        EXPECT_EQ(time, std::strtod(seconds, nullptr)) << seconds;
    }
    // What looks like a day but is none is not quietly taken as seconds.
    EXPECT_EQ(read_as("2018366"), "refused");
    EXPECT_EQ(read_as("20180230"), "refused");
}

TEST(TimeParse, RefusesWhatIsNoTime)
{
    const char *const texts[] = {
        "",
        " ",
        "-",
        "+",
        ".",
        "now",
        "NULL",
        "nan",
        "inf",
        "-inf",
        "infinity",
        "1e400",
        "0x10",
        "1,5",
        "1 2",
        "--5",
        "+-5",
        "5 seconds",
        "2018-02-30",
        "2018-02-29",
        "1900-02-29",
        "2018-13-01",
        "2018-00-01",
        "2018-01-00",
        "2018-01-32",
        "2018-04-31",
        "02/30/2018",
        "13/01/2018",
        "31/01/2018",
        "2018/02/30",
        "2018-366",
        "2018-000",
        "2018-367",
        "2018366:00:00:00",
        "2018-W00-1",
        "2018-W53-1",
        "2018-W06-0",
        "2018-W06-8",
        "2018-W06",
        "2018-02",
        "2018-2-7",
        "18-02-07",
        "02/07/18",
        "02/07/2018 (000)",
        "02/07/2018 (38)",
        "02/07/2018 (038",
        "02/07/2018 038",
        "2018-02-07T25:00:00",
        "2018-02-07T24:00:01",
        "2018-02-07T24:01:00",
        "2018-02-07T24:00:00.5",
        "2018-02-07T14:60:00",
        "2018-02-07T14:23:61",
        "2018-02-07T14:23:60",
        "2018-02-07T23:59:60+01",
        "2018-02-07T14:23:11.",
        "2018-02-07T14:23:11.x",
        "2018-02-07T14:23:",
        "2018-02-07T",
        "2018-02-07T:23",
        "2018-02-07:14:23:11",
        "02/07/2018:14:23:11",
        "2018038:",
        "2018038:14:23:11:00",
        "2018-02-07-05",
        "2018-02-07T14:23:11+",
        "2018-02-07T14:23:11+5",
        "2018-02-07T14:23:11+24",
        "2018-02-07T14:23:11+05:60",
        "2018-02-07T14:23:11+05:3",
        "2018-02-07T14:23:11+05:30x",
        "2018-02-07T14:23:11+053",
        "2018-02-07T14:23:11 UTC+1",
        "2018-02-07T14:23:11 U.S.",
        "2018-02-07T14:23:11 NOWHERE",
        "2018-02-07 14",
        "2018-02-07 1423110",
        "12018-02-07",
        "2018-02-07 14:23:11 PM x",
        "2018\xE2\x80\x93"
        "02\xE2\x80\x93"
        "07",
    };
    for (const char *text : texts)
        EXPECT_EQ(read_as(text), "refused") << text;
    EXPECT_EQ(is_epoch_string(nullptr, nullptr), 0);
    EXPECT_EQ(zis_epoch_string(nullptr, "UTC", nullptr), 0);
    EXPECT_EQ(read_as(std::string(100000, '1')), "refused");
    EXPECT_EQ(read_as("2018-02-07T14:23:11." + std::string(100000, '1')), "refused");
}

TEST(TimeParse, AgreesWithTheCLibraryOnRandomDates)
{
    std::mt19937_64 random(11);
    const auto pick = [&random](int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(random);
    };
    const char *const forms[] = {
        "%Y-%m-%dT%H:%M:%SZ", "%Y%m%dT%H%M%S", "%m/%d/%Y %H:%M:%S", "%Y%j:%H:%M:%S", "%Y-%jT%H:%M",
        "%G-W%V-%uT%H%M",     "%GW%V%u",       "%Y/%m/%d %T",       "%Y-%m-%d",      "%Y%j"};
    for (int i = 0; i < 100000; ++i) {
        std::tm broken = {};
        broken.tm_year = pick(1800, 2199) - 1900;
        broken.tm_mon = pick(0, 11);
        broken.tm_mday = pick(1, 28);
        broken.tm_hour = pick(0, 23);
        broken.tm_min = pick(0, 59);
        const std::string form = forms[static_cast<size_t>(pick(0, 9))];
        const bool with_seconds =
            form.find("%S") != std::string::npos || form.find("%T") != std::string::npos;
        const bool with_time = form.find("%H") != std::string::npos || form.find("%T") != std::string::npos;
        broken.tm_sec = with_seconds ? pick(0, 59) : 0;
        if (!with_time)
            broken.tm_hour = broken.tm_min = 0;
        const std::time_t expected = timegm(&broken);
        char text[100];
        std::strftime(text, sizeof text, form.c_str(), &broken);
        double time = 0;
        ASSERT_EQ(is_epoch_string(text, &time), 1) << text;
        ASSERT_EQ(time, static_cast<double>(expected)) << text;
    }
}

TEST(TimeParse, TakesExactlyTheDaysThatExist)
{
    for (const int year : {1800, 1900, 2000, 2016, 2018}) {
        for (int month = 0; month <= 13; ++month) {
            for (int day = 0; day <= 32; ++day) {
                std::tm broken = {};
                broken.tm_year = year - 1900;
                broken.tm_mon = month - 1;
                broken.tm_mday = day;
                timegm(&broken);
                const bool exists = broken.tm_mon == month - 1 && broken.tm_mday == day;
                char text[32];
                std::snprintf(text, sizeof text, "%04d-%02d-%02d", year, month, day);
                EXPECT_EQ(is_epoch_string(text, nullptr), exists ? 1 : 0) << text;
            }
        }
    }
}

TEST(TimeParse, MeetsArbitraryText)
{
    std::mt19937_64 random(5);
    const std::string letters = "0123456789012345678901234567890-:/T .+ZWESTCD(),eE\t";
    const std::string starts[] = {"", "2018-02-07", "02/07/2018 (038) ", "2018038:14:", "20180207T", "-"};
    int times = 0;
    for (int i = 0; i < 300000; ++i) {
        std::string text = starts[random() % 6];
        for (auto length = random() % 20; length > 0; --length)
            text += random() % 50 == 0 ? static_cast<char>(random() % 255 + 1)
                                       : letters[random() % letters.size()];
        double time = 0;
        if (is_epoch_string(text.c_str(), &time) == 1) {
            ++times;
            ASSERT_TRUE(std::isfinite(time)) << text;
        }
    }
    EXPECT_GT(times, 1000);
}

} // namespace
