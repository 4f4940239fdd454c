#ifndef ORVANE_UTIL_ZONE_PERIOD_H
#define ORVANE_UTIL_ZONE_PERIOD_H

#include <cstdint>
#include <limits>
#include <string>

namespace orvane::util {

/* A stretch of time, in whole epoch seconds from `begin` up to `end`, in which a zone's clocks show one
 * offset under one abbreviation. */
struct ZonePeriod {
    static constexpr int64_t always = std::numeric_limits<int64_t>::min();
    static constexpr int64_t forever = std::numeric_limits<int64_t>::max();

    int64_t begin = always;
    int64_t end = forever;
    int32_t offset = 0; // seconds east of Greenwich
    std::string abbreviation;

    bool holds(int64_t time) const { return begin <= time && time < end; }
};

} // namespace orvane::util

#endif
