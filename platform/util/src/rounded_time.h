#ifndef ORVANE_UTIL_ROUNDED_TIME_H
#define ORVANE_UTIL_ROUNDED_TIME_H

#include <cstdint>
#include <optional>

namespace orvane::util {

/* The largest time, in seconds and either direction, that can be rounded to the microsecond. */
constexpr double furthest_time = 1e12;

/* A time rounded to 10 ** -digits seconds (0 to 6 digits), as whole seconds and a fraction from 0 on. */
struct RoundedTime {
    int64_t seconds = 0;
    int64_t fraction = 0;
    int digits = 0;
};

/* Rounds a time, halves away from zero. It is taken as the shortest decimal number that means the same
 * double, so that -9999999999.999 is that and not its binary neighbour. Nothing when it is not a number or
 * beyond furthest_time. */
std::optional<RoundedTime> rounded_time(double time, int digits);

} // namespace orvane::util

#endif
