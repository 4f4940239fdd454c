// Times: what reads as one, what is printed of it, and what that reads as again. The input is a text, and on
// lines of their own a format, a zone and the rule of a zone's data file.
#include "check.h"
#include "fuzzers.h"
#include "world.h"

#include "posix_rule.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

namespace orvane::fuzz {

namespace {

constexpr const char *display_format = "%D (%j) %H:%M:%S.%u %Z";
// The years -9999 to 9999.
constexpr double first_shown = -377736739200.0;
constexpr double last_shown = 253402300799.0;

std::string taken(char *text)
{
    FUZZ_CHECK(text != nullptr, take_log());
    std::string copy(text);
    free(text);
    return copy;
}

std::string shown(double time)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.17g", time);
    return text;
}

// The step between doubles of that size.
double step_at(double time)
{
    return std::nextafter(std::abs(time), std::numeric_limits<double>::infinity()) - std::abs(time);
}

// The time that the text reads as; the call answers and logs the same whenever it is made.
bool read(const std::string &text, double &time)
{
    double again = 7;
    const int is_time = is_epoch_string(text.c_str(), &time);
    FUZZ_CHECK(is_epoch_string(text.c_str(), &again) == is_time, text);
    FUZZ_CHECK(is_epoch_string(text.c_str(), nullptr) == is_time, text);
    FUZZ_CHECK(is_time ? again == time : again == 7, text);
    FUZZ_CHECK(elog_count() == 0, take_log());
    return is_time != 0;
}

// What is shown is read as the time it was made of, but for the digits that the format leaves out.
void check_shown(double time)
{
    FUZZ_CHECK(std::isfinite(time), shown(time));
    const bool in_calendar = time >= first_shown && time <= last_shown;
    const std::string text = taken(epoch2str(time, display_format));
    double back = 0;
    FUZZ_CHECK(read(text, back), text + " of " + shown(time));
    const double lost = in_calendar ? 0.5e-6 + step_at(time) : step_at(time);
    FUZZ_CHECK(std::abs(back - time) <= lost, text + " of " + shown(time) + " is read as " + shown(back));
    // And from then on nothing is lost any more.
    const std::string again = taken(epoch2str(back, display_format));
    FUZZ_CHECK(again == text, text + " and " + again);
    if (std::abs(time) < 1e11) {
        double seconds = 0;
        FUZZ_CHECK(read(taken(epoch2str(time, "%E")), seconds), shown(time));
        FUZZ_CHECK(std::abs(seconds - time) <= 0.5e-5 + step_at(time), shown(time));
    }
}

// Whatever the format, the text has an end, and a time and its text go together.
void check_format(double time, const std::string &format, const char *zone)
{
    const std::string text = taken(zepoch2str(time, format.c_str(), zone));
    FUZZ_CHECK(text == taken(zepoch2str(time, format.c_str(), zone)), text);
    FUZZ_CHECK(text.size() <= format.size() * 400 + 400, text);
    if (format.find('%') == std::string::npos && time >= first_shown && time <= last_shown)
        FUZZ_CHECK(text == format, text);
    FUZZ_CHECK(elog_count() == 0, take_log());
}

// A text of a zone is read as in that zone.
void check_zone(double time, const char *zone)
{
    if (std::abs(time) > 4e9)
        return;
    const std::string text = taken(zepoch2str(time, "%Y-%m-%dT%H:%M:%S.%u%z", zone));
    double back = 0;
    FUZZ_CHECK(zis_epoch_string(text.c_str(), zone, &back) == 1, text);
    FUZZ_CHECK(std::abs(back - time) <= 0.5e-6 + step_at(time), text + " of " + shown(time));
    const std::string bare = taken(zepoch2str(time, "%Y-%m-%dT%H:%M:%S.%u", zone));
    if (zis_epoch_string(bare.c_str(), zone, &back) ==
        1) // clocks that show a time twice mean the earlier one
        FUZZ_CHECK(taken(zepoch2str(back, "%Y-%m-%dT%H:%M:%S.%u", zone)) == bare, bare);
    else
        FUZZ_CHECK(false, bare + " was shown and is refused");
}

void check_rule(const std::string &text, double time)
{
    const auto rule = util::PosixRule::parsed(text);
    if (!rule || time < first_shown || time > last_shown)
        return;
    const auto at = static_cast<std::int64_t>(time);
    const auto period = rule->period_at(at);
    const bool is_summer = rule->has_summer() && period.offset == rule->summer()->offset &&
                           period.abbreviation == rule->summer()->abbreviation;
    const bool is_standard =
        period.offset == rule->standard().offset && period.abbreviation == rule->standard().abbreviation;
    FUZZ_CHECK(is_summer || is_standard, text + " at " + shown(time));
    FUZZ_CHECK(std::abs(period.offset) <= 168 * 3600, text);
}

void check_durations(double seconds)
{
    const std::string text = taken(strtdelta(seconds));
    FUZZ_CHECK(!text.empty() && text.size() < 400, text);
    const std::string local = taken(strlocaltime(seconds));
    FUZZ_CHECK(!local.empty(), local);
}

} // namespace

void fuzz_time_text(std::string_view input)
{
    if (input.find('\0') != std::string_view::npos)
        return;
    elog_set_notice_hook([](const char *, void *) {}, nullptr);
    const std::string text(take_until(input, '\n'));
    const std::string format(take_until(input, '\n'));
    const std::string zone(take_until(input, '\n'));
    const std::string rule(take_until(input, '\n'));
    double time = 0;
    if (!read(text, time)) {
        char *end = nullptr;
        time = std::strtod(text.c_str(), &end); // times that no text reads as are printed, too
        check_format(time, format, zone.c_str());
        check_durations(time);
        return;
    }
    check_shown(time);
    check_format(time, format, zone.c_str());
    check_zone(time, zone.c_str());
    check_rule(rule, time);
    check_durations(time);
}

} // namespace orvane::fuzz
