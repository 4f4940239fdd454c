// The format of an attribute: one C conversion, "%9.4f".
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

struct FieldFormat {
    std::string flags;
    int width = 0;      // 0: none
    int precision = -1; // -1: none
    char conversion = 's';

    // The conversion for a number of C type long long (d) or double (e, f, g) or a text (s), without the
    // parts that were not there.
    std::string c_format() const;
};

// Takes a format apart. None when it isn't exactly one conversion d, e, f, g or s with flags, width and
// precision, or when width or precision has more than three digits.
std::optional<FieldFormat> parse_field_format(std::string_view text);

// The number as the format prints it.
std::string print_integer(const FieldFormat &format, long long value);
std::string print_real(const FieldFormat &format, double value);

} // namespace orvane
