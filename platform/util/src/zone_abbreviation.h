/* What a zone's abbreviation means where no zone is named. */
#ifndef ORVANE_UTIL_ZONE_ABBREVIATION_H
#define ORVANE_UTIL_ZONE_ABBREVIATION_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "time_zone.h"

namespace orvane::util {

/* The offset, in seconds east of Greenwich, that an abbreviation means at a local time; nothing when it is
 * unknown or when zones disagree and none of them is the usual one. `zones` are asked first, in order: those
 * that have the abbreviation in force at that time, then those that have it at any. */
std::optional<int32_t> abbreviated_offset(std::string_view abbreviation, int64_t local,
                                          const std::vector<const TimeZone *> &zones);

} // namespace orvane::util

#endif
