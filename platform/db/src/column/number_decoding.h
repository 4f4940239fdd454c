// Reads the numbers of fixed-width fields. What data files hold nearly always, blanks, a sign, digits and
// perhaps decimals, is read in one go; everything else as table/field_value.h does, with the same outcome.
#pragma once

#include <cstdint>

namespace orvane {

namespace detail {

inline bool is_digit(char c)
{
    return static_cast<unsigned char>(c - '0') < 10;
}

// The powers of ten that doubles hold exactly.
inline constexpr double exact_powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                          1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                          1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

} // namespace detail

// False where the text is of another form, or too long to be read so.
inline bool decode_plain_integer(const char *at, const char *end, std::int64_t &value)
{
    while (at != end && *at == ' ')
        ++at;
    const bool negative = at != end && *at == '-';
    at += negative ? 1 : 0;
    std::uint64_t digits = 0; // of too many digits it is anything
    const char *const first = at;
    while (at != end && detail::is_digit(*at))
        digits = digits * 10 + static_cast<std::uint64_t>(*at++ - '0');
    const auto length = at - first;
    while (at != end && *at == ' ')
        ++at;
    if (at != end || length == 0 || length > 18)
        return false;
    value = negative ? -static_cast<std::int64_t>(digits) : static_cast<std::int64_t>(digits);
    return true;
}

// The nearest double, as an exact quotient of two exact numbers is rounded to it.
inline bool decode_plain_real(const char *at, const char *end, double &value)
{
    while (at != end && *at == ' ')
        ++at;
    const bool negative = at != end && *at == '-';
    at += negative ? 1 : 0;
    std::uint64_t digits = 0;
    const char *first = at;
    while (at != end && detail::is_digit(*at))
        digits = digits * 10 + static_cast<std::uint64_t>(*at++ - '0');
    auto length = at - first;
    std::int64_t decimals = 0;
    if (at != end && *at == '.') {
        first = ++at;
        while (at != end && detail::is_digit(*at))
            digits = digits * 10 + static_cast<std::uint64_t>(*at++ - '0');
        decimals = at - first;
        length += decimals;
    }
    while (at != end && *at == ' ')
        ++at;
    constexpr std::uint64_t exact_limit = std::uint64_t{1} << 53;
    if (at != end || length == 0 || length > 18 || digits > exact_limit)
        return false;
    const double magnitude = static_cast<double>(digits) / detail::exact_powers[decimals];
    value = negative ? -magnitude : magnitude;
    return true;
}

} // namespace orvane
