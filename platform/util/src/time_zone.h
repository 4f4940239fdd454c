/* A zone of the system's zone data: which offset its clocks show, and under which abbreviation, at any time.
 */
#ifndef ORVANE_UTIL_TIME_ZONE_H
#define ORVANE_UTIL_TIME_ZONE_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "posix_rule.h"
#include "zone_period.h"

namespace orvane::util {

/* Immutable once made; any thread may ask. Times are epoch seconds within the years -9999 to 9999. */
class TimeZone
{
public:
    /* `periods` without gaps, in order, the first from always on; `rule` holds from the last one's begin on.
     */
    TimeZone(std::vector<ZonePeriod> periods, std::optional<PosixRule> rule);

    ZonePeriod period_at(int64_t time) const;

    /* The periods in which the zone's clocks show this local time: none where clocks skip it, two (the
     * earlier first) where they show it twice. */
    std::vector<ZonePeriod> periods_showing(int64_t local) const;

    /* The offset that an abbreviation means in the zone at a local time: that of the period in force, else of
     * the nearest one that has it; nothing when the zone never had the abbreviation. */
    std::optional<int32_t> offset_of(std::string_view abbreviation, int64_t local) const;

    /* Every period of the data; those of the rule as one period of each abbreviation, without an end. */
    std::vector<ZonePeriod> all_periods() const;

private:
    /* Those of the rule: one for each abbreviation, without an end. */
    std::vector<ZonePeriod> rule_periods() const;

    std::vector<ZonePeriod> periods_;
    std::optional<PosixRule> rule_;
};

/* Coordinated universal time. */
const TimeZone &utc_zone();

/* A zone by name, or null when the system's zone data don't have it. It lives as long as the program. */
const TimeZone *find_zone(std::string_view name);

/* The zone by name; UTC for null and empty names and, with a notice, for unknown ones. */
const TimeZone &zone_or_utc(const char *name);

/* The names of all zones of the system's zone data. */
std::vector<std::string_view> zone_names();

/* True when two abbreviations are the same but for the case of letters. */
bool same_abbreviation(std::string_view a, std::string_view b);

} // namespace orvane::util

#endif
