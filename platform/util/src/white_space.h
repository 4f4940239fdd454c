#ifndef ORVANE_UTIL_WHITE_SPACE_H
#define ORVANE_UTIL_WHITE_SPACE_H

#include <string_view>

namespace orvane::util {

/* White space whatever the locale: blank, tab, line feed, vertical tab, form feed, carriage return. */
constexpr bool is_white(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && is_white(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && is_white(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace orvane::util

#endif
