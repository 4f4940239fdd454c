#include "rounded_time.h"

#include <charconv>
#include <cmath>

namespace orvane::util {

std::optional<RoundedTime> rounded_time(double time, int digits)
{
    const double size = std::fabs(time);
    if (!(size <= furthest_time))
        return std::nullopt;
    int64_t units = 0; // of 10 ** -digits seconds: at most 10 ** 18
    int64_t unit = 1;
    for (int i = 0; i < digits; ++i)
        unit *= 10;
    if (size >= 1e-9) { // anything smaller rounds to 0, and would have too many digits
        char text[64];
        const char *const end = std::to_chars(text, text + sizeof text, size, std::chars_format::fixed).ptr;
        const char *at = text;
        while (at != end && *at != '.')
            units = units * 10 + (*at++ - '0');
        const auto next_digit = [&] { return at != end && ++at != end ? *at - '0' : 0; };
        for (int i = 0; i < digits; ++i)
            units = units * 10 + next_digit();
        if (next_digit() >= 5)
            ++units;
    }
    if (time < 0)
        units = -units;
    RoundedTime rounded{units / unit, units % unit, digits};
    if (rounded.fraction < 0) {
        rounded.fraction += unit;
        --rounded.seconds;
    }
    return rounded;
}

} // namespace orvane::util
