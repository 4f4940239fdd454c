#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string>

#include "calendar_range.h"
#include "guard.h"
#include "shown_zones.h"
#include "time_zone.h"
#include "white_space.h"
#include "written_time.h"
#include "zone_abbreviation.h"

namespace orvane::util {
namespace {

// No form of a time is longer, whatever its number of decimals is good for.
constexpr size_t longest_time_text = 400;

/* The double next to a time. Going through its decimal text rounds once, where sums and products of doubles
 * would round at each step. */
double nearest_double(int64_t seconds, int32_t nanoseconds)
{
    constexpr int32_t unit = 1000000000;
    const bool negative = seconds < 0;
    if (negative) {
        seconds = -seconds;
        if (nanoseconds > 0) {
            --seconds;
            nanoseconds = unit - nanoseconds;
        }
    }
    if (nanoseconds == unit) {
        ++seconds;
        nanoseconds = 0;
    }
    const std::string fraction = std::to_string(nanoseconds);
    const std::string text = std::to_string(seconds) + "." + std::string(9 - fraction.size(), '0') + fraction;
    double size = 0;
    std::from_chars(text.data(), text.data() + text.size(), size);
    return negative ? -size : size;
}

/* The offset of the clock that a time was read from; nothing when that can't be told. */
std::optional<int32_t> offset_of(const WrittenTime &time, const TimeZone *zone)
{
    if (time.offset)
        return time.offset;
    if (!time.abbreviation.empty()) {
        // The zone that the caller names goes before all others.
        const auto own = zone ? zone->offset_of(time.abbreviation, time.local_seconds) : std::nullopt;
        return own ? own : abbreviated_offset(time.abbreviation, time.local_seconds, shown_zones());
    }
    if (!zone)
        return 0;
    const auto periods = zone->periods_showing(time.local_seconds);
    return periods.empty() ? std::nullopt : std::optional(periods.front().offset);
}

std::optional<double> instant(std::string_view text, const TimeZone *zone)
{
    text = trimmed(text);
    if (text.size() > longest_time_text)
        return std::nullopt;
    if (const auto number = written_number(text))
        return number;
    const auto time = written_time(text);
    if (!time)
        return std::nullopt;
    const auto offset = offset_of(*time, zone);
    if (!offset)
        return std::nullopt;
    const int64_t seconds = time->local_seconds - *offset;
    // Leap seconds end days of UTC; epoch seconds don't count them, so one is the next day's first second.
    if (time->leap_second && seconds % day_seconds != 0)
        return std::nullopt;
    return nearest_double(seconds, time->nanoseconds);
}

int answer(std::string_view text, const TimeZone *zone, double *epoch)
{
    const auto time = instant(text, zone);
    if (time && epoch)
        *epoch = *time;
    return time ? 1 : 0;
}

} // namespace
} // namespace orvane::util

using namespace orvane::util;

int is_epoch_string(const char *text, double *epoch)
{
    if (!text)
        return 0;
    return guarded("is_epoch_string", 0, [&] { return answer(text, nullptr, epoch); });
}

int zis_epoch_string(const char *text, const char *zone, double *epoch)
{
    if (!text)
        return 0;
    return guarded("zis_epoch_string", 0,
                   [&] { return answer(text, zone && *zone ? &zone_or_utc(zone) : nullptr, epoch); });
}
