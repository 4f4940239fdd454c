#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

#include "guard.h"
#include "owned_text.h"

namespace orvane::util {
namespace {

struct Unit {
    double seconds;
    std::string_view name;
    double most; // from this number on, the next unit is used
};

constexpr double day = 86400;

constexpr std::array<Unit, 5> units = {{
    {1, "second", 60},
    {60, "minute", 60},
    {3600, "hour", 24},
    {day, "day", 730},
    {365.25 * day, "year", HUGE_VAL},
}};

/* As many decimals as people give: one below ten, none from there on, and below one what is needed to say
 * anything, down to milliseconds. */
int decimals_for(double number)
{
    if (number >= 9.95)
        return 0;
    if (number >= 0.95)
        return 1;
    return number >= 0.095 ? 2 : 3;
}

std::string shown(double number)
{
    char text[64];
    if (number >= 1e9)
        return {text, std::to_chars(text, text + sizeof text, number, std::chars_format::general, 3).ptr};
    std::string digits(
        text,
        std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, decimals_for(number)).ptr);
    if (digits.find('.') != std::string::npos) {
        digits.erase(digits.find_last_not_of('0') + 1);
        if (digits.back() == '.')
            digits.pop_back();
    }
    return digits;
}

std::string spoken(double seconds)
{
    if (std::isnan(seconds))
        return "an unknown time";
    if (std::isinf(seconds))
        return "an infinite time";
    const double size = std::fabs(seconds);
    for (const Unit &unit : units) {
        const std::string number = shown(size / unit.seconds);
        // The number as shown decides: 59.96 minutes are an hour, not 60 minutes.
        double value = HUGE_VAL; // where rounding has gone beyond the largest number
        std::from_chars(number.data(), number.data() + number.size(), value);
        if (value >= unit.most)
            continue;
        std::string text = seconds < 0 && value > 0 ? "-" : "";
        text.append(number).append(" ").append(unit.name);
        return value == 1 ? text : text + "s";
    }
    return "an infinite time"; // not reached: years have no end
}

} // namespace
} // namespace orvane::util

char *strtdelta(double seconds)
{
    using namespace orvane::util;
    return guarded<char *>("strtdelta", nullptr, [&] { return owned_text(spoken(seconds)); });
}
