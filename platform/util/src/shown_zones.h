/* The zones whose abbreviations this process has shown: what "IST" means to a reader is what the screen
 * meant. */
#ifndef ORVANE_UTIL_SHOWN_ZONES_H
#define ORVANE_UTIL_SHOWN_ZONES_H

#include <vector>

#include "time_zone.h"

namespace orvane::util {

/* A time was written with the zone's abbreviation. */
void note_shown(const TimeZone &zone);

/* The last few zones shown, the latest first. */
std::vector<const TimeZone *> shown_zones();

} // namespace orvane::util

#endif
