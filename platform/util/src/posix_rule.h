/* The rule that ends a zone's data file and says how its clocks go after the last transition listed in the
 * file, in the notation of the TZ environment variable: "EST5EDT,M3.2.0,M11.1.0". */
#ifndef ORVANE_UTIL_POSIX_RULE_H
#define ORVANE_UTIL_POSIX_RULE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "zone_period.h"

namespace orvane::util {

class PosixRule
{
public:
    /* Nothing when the text is not such a rule. */
    static std::optional<PosixRule> parsed(std::string_view text);

    /* The period that holds a time. */
    ZonePeriod period_at(int64_t time) const;

    bool has_summer() const { return summer_.has_value(); }

    struct Clock {
        std::string abbreviation;
        int32_t offset = 0; // seconds east of Greenwich
    };
    const Clock &standard() const { return standard_; }
    const std::optional<Clock> &summer() const { return summer_; }

    /* A day of every year and the local time on it at which clocks change. */
    struct Change {
        enum Form { julian, day_of_year, weekday_of_month } form = julian;
        int day = 0; // 1…365 without leap days, 0…365 with them, or the weekday from Sunday
        int week = 0;
        int month = 0;
        int64_t time_of_day = 7200; // seconds; may be negative or beyond a day
        int64_t local_time(int year) const;
    };

private:
    Clock standard_;
    std::optional<Clock> summer_;
    Change summer_begins_;
    Change summer_ends_;
};

} // namespace orvane::util

#endif
