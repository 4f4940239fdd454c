/* Zones: against the C library's reading of the same zone data, and from text back to the time. */

#include <cstdlib>
#include <ctime>
#include <date/tz.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "c_text.h"
#include "posix_rule.h"

namespace {

constexpr const char *display_format = "%D (%j) %H:%M:%S.%u %Z";

std::vector<std::string> all_zones()
{
    std::vector<std::string> names;
    for (const date::time_zone &zone : date::get_tzdb().zones)
        names.push_back(zone.name());
    return names;
}

/* Makes a zone that of the C library. */
void set_c_zone(const std::string &name)
{
    setenv("TZ", name.c_str(), 1);
    tzset();
}

class Zones : public testing::Test
{
protected:
    void TearDown() override { set_c_zone("UTC"); }
};

std::string shown(double time, const std::string &zone, const char *format = display_format)
{
    return taken(zepoch2str(time, format, zone.c_str()));
}

std::string c_shown(std::time_t time)
{
    std::tm local = {};
    localtime_r(&time, &local);
    char text[100];
    std::strftime(text, sizeof text, "%Y-%m-%d %T %Z", &local);
    return text;
}

TEST_F(Zones, AgreeWithTheCLibraryAtRandomTimes)
{
    ASSERT_GT(all_zones().size(), 300u) << "the system's zone data are missing";
    std::mt19937_64 random(23);
    for (const std::string &zone : all_zones()) {
        set_c_zone(":" + zone);
        for (int i = 0; i < 300; ++i) {
            const int64_t time = std::uniform_int_distribution<int64_t>(-6000000000, 9000000000)(random);
            ASSERT_EQ(shown(static_cast<double>(time), zone, "%Y-%m-%d %T %Z"), c_shown(time))
                << zone << " " << time;
        }
    }
}

/* The times at which a zone's clocks change, of its data and of some years after them. */
std::vector<int64_t> transitions(const std::string &zone)
{
    std::vector<int64_t> times;
    const auto *const data = date::locate_zone(zone);
    auto info = data->get_info(date::sys_days{date::year{1700} / 1 / 1});
    while (info.end < date::sys_days{date::year{2200} / 1 / 1}) {
        times.push_back(info.end.time_since_epoch().count());
        info = data->get_info(info.end);
    }
    return times;
}

TEST_F(Zones, AgreeWithTheCLibraryAroundEveryTransition)
{
    int64_t count = 0;
    for (const std::string &zone : all_zones()) {
        set_c_zone(":" + zone);
        for (const int64_t change : transitions(zone)) {
            for (const int64_t time : {change - 1, change, change + 1}) {
                ++count;
                ASSERT_EQ(shown(static_cast<double>(time), zone, "%Y-%m-%d %T %Z"), c_shown(time))
                    << zone << " " << time;
            }
        }
    }
    EXPECT_GT(count, 50000);
}

/* Checks that a shown time comes back; answers false where the text itself names two times. */
bool comes_back(double time, const std::string &zone)
{
    const std::string text = shown(time, zone);
    double plain = 0, in_zone = 0;
    EXPECT_EQ(is_epoch_string(text.c_str(), &plain), 1) << zone << " " << text;
    EXPECT_EQ(zis_epoch_string(text.c_str(), zone.c_str(), &in_zone), 1) << zone << " " << text;
    EXPECT_EQ(plain, in_zone) << zone << " " << text;
    if (plain == time)
        return true;
    EXPECT_EQ(shown(plain, zone), text) << zone << " " << text << ": neither that time nor one shown alike";
    return false;
}

TEST_F(Zones, ShownTimesComeBackAtRandomTimes)
{
    std::mt19937_64 random(29);
    int twins = 0;
    for (const std::string &zone : all_zones()) {
        for (int i = 0; i < 200; ++i) {
            const int64_t micros =
                std::uniform_int_distribution<int64_t>(-4000000000000000, 4000000000000000)(random);
            if (!comes_back(static_cast<double>(micros) / 1e6, zone))
                ++twins;
            ASSERT_FALSE(HasFailure());
        }
    }
    EXPECT_LE(twins, 5);
}

TEST_F(Zones, ShownTimesComeBackAroundEveryTransition)
{
    int count = 0;
    std::vector<std::string> twins;
    for (const std::string &zone : all_zones()) {
        for (const int64_t change : transitions(zone)) {
            for (const int64_t off : {-5400, -1, 0, 1800}) {
                ++count;
                if (!comes_back(static_cast<double>(change + off), zone))
                    twins.push_back(zone + " " + shown(static_cast<double>(change + off), zone));
                ASSERT_FALSE(HasFailure());
            }
        }
    }
    EXPECT_GT(count, 150000);
    RecordProperty("twins", static_cast<int>(twins.size()));
    // Clocks that were set back under the same abbreviation show two times alike: nothing in the text tells
    // them apart. That is rare.
    EXPECT_LT(static_cast<double>(twins.size()) / count, 0.01) << testing::PrintToString(twins);
}

TEST_F(Zones, TheAbbreviationDecidesInTheHourThatAutumnRepeats)
{
    const char *zone = "America/New_York";
    const double first = 1541309400; // 2018-11-04 01:30 EDT
    for (const double time : {first, first + 3600}) {
        double back = 0;
        ASSERT_EQ(zis_epoch_string(shown(time, zone).c_str(), zone, &back), 1);
        EXPECT_EQ(back, time);
        ASSERT_EQ(is_epoch_string(shown(time, zone).c_str(), &back), 1);
        EXPECT_EQ(back, time);
    }
    double back = 0;
    ASSERT_EQ(zis_epoch_string("11/04/2018 01:30:00", zone, &back), 1);
    EXPECT_EQ(back, first) << "without an abbreviation the earlier one";
}

TEST_F(Zones, ATimeWithoutAZoneIsLocalTimeOfTheNamedZone)
{
    double time = 0;
    ASSERT_EQ(zis_epoch_string("2018-02-07 14:23:11", "Asia/Tokyo", &time), 1);
    EXPECT_EQ(time, 1518013391 - 9 * 3600);
    ASSERT_EQ(zis_epoch_string("2018038", "Asia/Tokyo", &time), 1);
    EXPECT_EQ(time, 1517961600 - 9 * 3600);
    ASSERT_EQ(zis_epoch_string("2018-02-07 14:23:11Z", "Asia/Tokyo", &time), 1);
    EXPECT_EQ(time, 1518013391);
    ASSERT_EQ(zis_epoch_string("2018-02-07 14:23:11 -05", "Asia/Tokyo", &time), 1);
    EXPECT_EQ(time, 1518013391 + 5 * 3600);
    ASSERT_EQ(zis_epoch_string("1518013391.5", "Asia/Tokyo", &time), 1);
    EXPECT_EQ(time, 1518013391.5);
    for (const char *none : {static_cast<const char *>(nullptr), ""}) {
        ASSERT_EQ(zis_epoch_string("2018-02-07 14:23:11", none, &time), 1);
        EXPECT_EQ(time, 1518013391);
    }
}

TEST_F(Zones, ALocalTimeThatClocksSkipIsRefused)
{
    EXPECT_EQ(zis_epoch_string("2018-03-11 02:30:00", "America/New_York", nullptr), 0);
    EXPECT_EQ(zis_epoch_string("2018-03-11 01:59:59", "America/New_York", nullptr), 1);
    EXPECT_EQ(zis_epoch_string("2018-03-11 03:00:00", "America/New_York", nullptr), 1);
    EXPECT_EQ(zis_epoch_string("2011-12-30 12:00:00", "Pacific/Apia", nullptr), 0)
        << "a day that Samoa left out";
}

TEST_F(Zones, AnUnknownZoneIsUtcWithANotice)
{
    int notices = 0;
    elog_clear();
    elog_set_notice_hook([](const char *, void *count) { ++*static_cast<int *>(count); }, &notices);
    double time = 0;
    EXPECT_EQ(zis_epoch_string("2018-02-07 14:23:11", "Mars/Olympus", &time), 1);
    elog_set_notice_hook(nullptr, nullptr);
    EXPECT_EQ(time, 1518013391);
    EXPECT_EQ(notices, 1);
    EXPECT_EQ(elog_count(), 0);
}

/* Shows times in so many other zones that those shown before no longer count. */
void forget_shown_zones()
{
    for (int hours = 1; hours <= 8; ++hours)
        shown(0, "Etc/GMT+" + std::to_string(hours));
}

double read_plain(const char *text)
{
    double time = -1;
    EXPECT_EQ(is_epoch_string(text, &time), 1) << text;
    return time;
}

TEST_F(Zones, AnAmbiguousAbbreviationMeansItsUsualZoneUntilAnotherWasShown)
{
    forget_shown_zones();
    const double noon = 1518004800; // 2018-02-07 12:00 UTC
    EXPECT_EQ(read_plain("02/07/2018 12:00:00 CST"), noon + 6 * 3600);
    EXPECT_EQ(read_plain("02/07/2018 12:00:00 IST"), noon - 5.5 * 3600);
    EXPECT_EQ(read_plain("07/07/2018 12:00:00 BST"), noon + 150 * 86400 - 3600);
    shown(noon, "Asia/Shanghai");
    EXPECT_EQ(read_plain("02/07/2018 12:00:00 CST"), noon - 8 * 3600);
    shown(noon, "America/Chicago");
    EXPECT_EQ(read_plain("02/07/2018 12:00:00 CST"), noon + 6 * 3600);
    shown(noon, "Asia/Jerusalem");
    EXPECT_EQ(read_plain("02/07/2018 12:00:00 IST"), noon - 2 * 3600);
    shown(noon, "Asia/Kolkata", "%H");
    EXPECT_EQ(read_plain("02/07/2018 12:00:00 IST"), noon - 2 * 3600) << "no abbreviation was shown";
    double time = 0;
    ASSERT_EQ(zis_epoch_string("02/07/2018 12:00:00 IST", "Asia/Kolkata", &time), 1);
    EXPECT_EQ(time, noon - 5.5 * 3600) << "the zone named goes before those shown";
    ASSERT_EQ(zis_epoch_string("02/07/2018 12:00:00 CST", "Asia/Kolkata", &time), 1);
    EXPECT_EQ(time, noon + 6 * 3600) << "what the zone doesn't have is looked up as ever";
}

TEST_F(Zones, AnAbbreviationOutOfSeasonKeepsItsOffset)
{
    forget_shown_zones();
    const double noon = 1530446400; // 2018-07-01 12:00 UTC
    EXPECT_EQ(read_plain("07/01/2018 12:00:00 PST"), noon + 8 * 3600);
    EXPECT_EQ(read_plain("07/01/2018 12:00:00 EST"), noon + 5 * 3600);
    EXPECT_EQ(read_plain("02/07/2018 12:00:00 EDT"), 1518004800 + 4 * 3600);
    EXPECT_EQ(read_plain("07/01/2018 12:00:00 CET"), noon - 3600);
    EXPECT_EQ(read_plain("07/01/2150 12:00:00 EDT"), 5695963200 + 4 * 3600);
    shown(noon, "Asia/Jerusalem"); // shows IDT in July
    EXPECT_EQ(read_plain("07/01/2018 12:00:00 IST"), noon - 2 * 3600);
}

TEST_F(Zones, AbbreviationsOfOneMeaningOrUsualMeaningNeedNoZone)
{
    forget_shown_zones();
    const double noon = 1518004800; // 2018-02-07 12:00 UTC, when Pyongyang's KST was another
    const struct {
        const char *abbreviation;
        double hours;
    } cases[] = {{"JST", 9},   {"AKST", -9}, {"HST", -10},  {"NZDT", 13}, {"CET", 1},
                 {"MSK", 3},   {"WIB", 7},   {"NST", -3.5}, {"SAST", 2},  {"PKT", 5},
                 {"ChST", 10}, {"chst", 10}, {"est", -5},   {"KST", 9}};
    for (const auto &[abbreviation, hours] : cases)
        EXPECT_EQ(read_plain((std::string("2018-02-07 12:00 ") + abbreviation).c_str()), noon - hours * 3600)
            << abbreviation;
}

TEST_F(Zones, AnAbbreviationOfManyMeaningsIsRefusedWhenNoneIsUsual)
{
    forget_shown_zones();
    EXPECT_EQ(is_epoch_string("1850-01-01 12:00 LMT", nullptr), 0);
    EXPECT_EQ(is_epoch_string("2018-02-07 12:00 XYZ", nullptr), 0);
    EXPECT_EQ(zis_epoch_string("1850-01-01 12:00 LMT", "Europe/Berlin", nullptr), 1);
}

TEST_F(Zones, TheClosingRuleOfAZoneAgreesWithTheCLibrary)
{
    const char *const rules[] = {
        "EST5EDT,M3.2.0,M11.1.0",
        "<-03>3",
        "IST-1GMT0,M10.5.0,M3.5.0/1",
        "<-02>2<-01>,M3.5.0/-1,M10.5.0/0",
        "EET-2EEST,M3.4.4/50,M10.4.4/50",
        "AEST-10AEDT,M10.1.0,M4.1.0/3",
        "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0",
        "NST3:30NDT2:30:15,J60/0:01:30,J300/25",
        "ABC-3DEF,59/2,304/2",
        "ABC3DEF,J2/0,J363/23",
        "CET-1CEST,M3.5.0,M10.5.0/3",
        "ABC0DEF,M2.5.6/2,J60",
    };
    std::mt19937_64 random(31);
    for (const char *text : rules) {
        const auto rule = orvane::util::PosixRule::parsed(text);
        ASSERT_TRUE(rule.has_value()) << text;
        set_c_zone(text);
        for (int i = 0; i < 3000; ++i) {
            const std::time_t time = std::uniform_int_distribution<std::time_t>(0, 8000000000)(random);
            std::tm local = {};
            localtime_r(&time, &local);
            const auto period = rule->period_at(time);
            ASSERT_EQ(period.offset, local.tm_gmtoff) << text << " " << time;
            ASSERT_EQ(period.abbreviation, local.tm_zone) << text << " " << time;
            ASSERT_TRUE(period.holds(time));
            ASSERT_EQ(rule->period_at(period.begin == INT64_MIN ? time : period.begin).offset, period.offset);
        }
    }
}

TEST_F(Zones, AClosingRuleMaySetSummerTimeAllYear)
{
    const auto rule = orvane::util::PosixRule::parsed("XXX3EDT4,0/0,J365/23");
    ASSERT_TRUE(rule.has_value());
    for (int64_t time = 1500000000; time < 1600000000; time += 3571) {
        ASSERT_EQ(rule->period_at(time).offset, -4 * 3600) << time;
        ASSERT_EQ(rule->period_at(time).abbreviation, "EDT") << time;
    }
}

TEST_F(Zones, AClosingRuleThatIsNoneIsNotRead)
{
    for (const char *text : {"", "E", "EST", "5", "EST5EDT", "EST5EDT,", "EST5EDT,M3.2.0",
                             "EST5EDT,M13.2.0,M11.1.0", "EST5EDT,M3.6.0,M11.1.0", "EST5EDT,M3.2.7,M11.1.0",
                             "EST5EDT,M3.2.0,M11.1.0x", "EST5EDT,J0,J5", "EST5EDT,J366,J5", "EST5EDT,366,5",
                             "EST168", "EST5:60", "<EST5", "EST5EDT,M3.2.0/,M11.1.0", "EST--5"})
        EXPECT_FALSE(orvane::util::PosixRule::parsed(text).has_value()) << text;
}

} // namespace
