#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <ctime>
#include <string>
#include <string_view>

#include "calendar_range.h"
#include "guard.h"
#include "owned_text.h"
#include "rounded_time.h"
#include "shown_zones.h"
#include "time_zone.h"

namespace orvane::util {
namespace {

/* A time taken apart for printing. */
struct BrokenTime {
    RoundedTime epoch;
    std::string_view abbreviation;
    int32_t offset = 0;
    int year = 1970;
    int month = 1;
    int day = 1;
    int day_of_year = 1;
    int weekday = 0; // from Sunday
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/* `value` in decimal with at least `width` digits. */
void append_number(std::string &text, int64_t value, int width)
{
    if (value < 0)
        text += '-';
    char digits[24];
    const uint64_t size = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    const auto end = std::to_chars(digits, digits + sizeof digits, size).ptr;
    const auto length = end - digits;
    if (length < width)
        text.append(static_cast<size_t>(width - length), '0');
    text.append(digits, end);
}

/* The fraction of a time in 10 ** -digits seconds. */
int64_t fraction_in(const RoundedTime &time, int digits)
{
    int64_t fraction = time.fraction;
    for (int i = time.digits; i < digits; ++i)
        fraction *= 10;
    for (int i = digits; i < time.digits; ++i)
        fraction /= 10;
    return fraction;
}

constexpr std::array<std::string_view, 12> months = {"January",   "February", "March",    "April",
                                                     "May",       "June",     "July",     "August",
                                                     "September", "October",  "November", "December"};
constexpr std::array<std::string_view, 7> weekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                      "Thursday", "Friday", "Saturday"};

void append_date(std::string &text, const BrokenTime &time)
{
    append_number(text, time.month, 2);
    text += '/';
    append_number(text, time.day, 2);
    text += '/';
    append_number(text, time.year, 4);
}

void append_clock(std::string &text, const BrokenTime &time)
{
    append_number(text, time.hour, 2);
    text += ':';
    append_number(text, time.minute, 2);
    text += ':';
    append_number(text, time.second, 2);
}

/* Seconds follow where a zone's offset has them, as local mean times do: the text stays exact. */
void append_offset(std::string &text, const BrokenTime &time)
{
    const int size = std::abs(time.offset);
    text += time.offset < 0 ? '-' : '+';
    append_number(text, size / 3600, 2);
    append_number(text, size / 60 % 60, 2);
    if (size % 60 != 0)
        append_number(text, size % 60, 2);
}

void append_epoch(std::string &text, const BrokenTime &time)
{
    int64_t seconds = time.epoch.seconds;
    int64_t fraction = fraction_in(time.epoch, 5);
    if (seconds < 0 && fraction > 0) { // the fraction counts up from the whole seconds below
        ++seconds;
        fraction = 100000 - fraction;
        if (seconds == 0)
            text += '-';
    }
    append_number(text, seconds, 1);
    text += '.';
    append_number(text, fraction, 5);
}

struct Conversion {
    char letter;
    void (*append)(std::string &, const BrokenTime &);
    int digits; // decimals of a second that it shows; -1: no seconds at all
};

constexpr Conversion conversions[] = {
    {'Y', [](std::string &s, const BrokenTime &t) { append_number(s, t.year, 4); }, -1},
    {'m', [](std::string &s, const BrokenTime &t) { append_number(s, t.month, 2); }, -1},
    {'d', [](std::string &s, const BrokenTime &t) { append_number(s, t.day, 2); }, -1},
    {'H', [](std::string &s, const BrokenTime &t) { append_number(s, t.hour, 2); }, -1},
    {'M', [](std::string &s, const BrokenTime &t) { append_number(s, t.minute, 2); }, -1},
    {'S', [](std::string &s, const BrokenTime &t) { append_number(s, t.second, 2); }, 0},
    {'j', [](std::string &s, const BrokenTime &t) { append_number(s, t.day_of_year, 3); }, -1},
    {'y', [](std::string &s, const BrokenTime &t) { append_number(s, (t.year % 100 + 100) % 100, 2); }, -1},
    {'b',
     [](std::string &s, const BrokenTime &t) { s += months[static_cast<size_t>(t.month - 1)].substr(0, 3); },
     -1},
    {'B', [](std::string &s, const BrokenTime &t) { s += months[static_cast<size_t>(t.month - 1)]; }, -1},
    {'a',
     [](std::string &s, const BrokenTime &t) { s += weekdays[static_cast<size_t>(t.weekday)].substr(0, 3); },
     -1},
    {'A', [](std::string &s, const BrokenTime &t) { s += weekdays[static_cast<size_t>(t.weekday)]; }, -1},
    {'D', append_date, -1},
    {'T', append_clock, 0},
    {'Z', [](std::string &s, const BrokenTime &t) { s += t.abbreviation; }, -1},
    {'z', append_offset, -1},
    {'u', [](std::string &s, const BrokenTime &t) { append_number(s, fraction_in(t.epoch, 6), 6); }, 6},
    {'s', [](std::string &s, const BrokenTime &t) { append_number(s, fraction_in(t.epoch, 3), 3); }, 3},
    {'E', append_epoch, 5},
    {'%', [](std::string &s, const BrokenTime &) { s += '%'; }, -1},
};

const Conversion *conversion_of(char letter)
{
    const auto found =
        std::find_if(std::begin(conversions), std::end(conversions),
                     [letter](const Conversion &conversion) { return conversion.letter == letter; });
    return found == std::end(conversions) ? nullptr : found;
}

/* Calls `literal` with every run of plain text of a format and `convert` with every conversion. */
template <typename Literal, typename Convert>
void walk_format(std::string_view format, Literal &&literal, Convert &&convert)
{
    while (!format.empty()) {
        const size_t percent = format.find('%');
        literal(format.substr(0, percent));
        if (percent == std::string_view::npos)
            return;
        format.remove_prefix(percent);
        const Conversion *conversion = format.size() > 1 ? conversion_of(format[1]) : nullptr;
        if (conversion)
            convert(*conversion);
        else // not ours: it stays as it stands
            literal(format.substr(0, 2));
        format.remove_prefix(std::min<size_t>(2, format.size()));
    }
}

/* The decimals of a second to round to. A format without seconds isn't rounded to minutes or days: those say
 * when a time was, so only what binary fractions leave below a microsecond is rounded away. */
int decimals_of(std::string_view format)
{
    int decimals = -1;
    walk_format(
        format, [](std::string_view) {},
        [&](const Conversion &conversion) { decimals = std::max(decimals, conversion.digits); });
    return decimals < 0 ? 6 : decimals;
}

/* False when the time's year is not one that a calendar shows. */
bool break_down(const RoundedTime &epoch, const ZonePeriod &period, BrokenTime &time)
{
    const int64_t local = epoch.seconds + period.offset;
    if (local < first_calendar_second || local > last_calendar_second)
        return false;
    const date::sys_days day{date::floor<date::days>(std::chrono::seconds{local})};
    const date::year_month_day date{day};
    const auto second_of_day = static_cast<int>(local - seconds_at_midnight(day));
    time.epoch = epoch;
    time.abbreviation = period.abbreviation;
    time.offset = period.offset;
    time.year = static_cast<int>(date.year());
    time.month = static_cast<int>(static_cast<unsigned>(date.month()));
    time.day = static_cast<int>(static_cast<unsigned>(date.day()));
    time.day_of_year = static_cast<int>((day - date::sys_days{date.year() / date::January / 1}).count()) + 1;
    time.weekday = static_cast<int>(date::weekday{day}.c_encoding());
    time.hour = second_of_day / 3600;
    time.minute = second_of_day / 60 % 60;
    time.second = second_of_day % 60;
    return true;
}

/* What a time beyond the calendar shows, whatever the format: its seconds. */
std::string bare_seconds(double epoch)
{
    if (std::isnan(epoch))
        return "nan";
    if (std::fabs(epoch) > 1e15) {
        char text[40];
        return {text, std::to_chars(text, text + sizeof text, epoch).ptr};
    }
    char text[40];
    return {text, std::to_chars(text, text + sizeof text, epoch, std::chars_format::fixed, 5).ptr};
}

/* The period of the latest question of this thread: neighbouring cells mostly fall into one. */
const ZonePeriod &cached_period(const TimeZone &zone, int64_t seconds)
{
    thread_local const TimeZone *last_zone = nullptr;
    thread_local ZonePeriod period;
    if (last_zone != &zone || !period.holds(seconds)) {
        last_zone = nullptr;
        period = zone.period_at(seconds);
        last_zone = &zone;
    }
    return period;
}

std::string formatted(double epoch, const RoundedTime &rounded, const ZonePeriod &period,
                      std::string_view format)
{
    BrokenTime time;
    if (!break_down(rounded, period, time))
        return bare_seconds(epoch);
    std::string text;
    text.reserve(64);
    walk_format(
        format, [&](std::string_view literal) { text += literal; },
        [&](const Conversion &conversion) { conversion.append(text, time); });
    return text;
}

std::string formatted(double epoch, std::string_view format, const TimeZone &zone)
{
    const auto rounded = rounded_time(epoch, decimals_of(format));
    if (!rounded)
        return bare_seconds(epoch);
    if (format.find("%Z") != std::string_view::npos)
        note_shown(zone);
    return formatted(epoch, *rounded, cached_period(zone, rounded->seconds), format);
}

/* The machine's own zone at a time, which the TZ environment variable may name in ways of its own. */
ZonePeriod machine_period(int64_t seconds)
{
    const std::time_t time = seconds;
    std::tm local = {};
    if (!localtime_r(&time, &local))
        return {ZonePeriod::always, ZonePeriod::forever, 0, "UTC"};
    return {seconds, seconds + 1, static_cast<int32_t>(local.tm_gmtoff), local.tm_zone};
}

} // namespace
} // namespace orvane::util

using namespace orvane::util;

char *zepoch2str(double epoch, const char *format, const char *zone)
{
    if (!format) {
        elog_log("zepoch2str: expected a format, got a null pointer");
        return nullptr;
    }
    return guarded<char *>("zepoch2str", nullptr,
                           [&] { return owned_text(formatted(epoch, format, zone_or_utc(zone))); });
}

char *epoch2str(double epoch, const char *format)
{
    return zepoch2str(epoch, format, nullptr);
}

char *strlocaltime(double epoch)
{
    return guarded<char *>("strlocaltime", nullptr, [&] {
        const auto rounded = rounded_time(epoch, 0);
        if (!rounded)
            return owned_text(bare_seconds(epoch));
        return owned_text(
            formatted(epoch, *rounded, machine_period(rounded->seconds), "%D (%j) %H:%M:%S %Z"));
    });
}
