#include "schema/field_format.h"

#include "base/concat.h"

#include <cstdio>

namespace orvane {

namespace {

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

// Up to three digits from `at` on; -1 when there are none or more.
int read_number(std::string_view text, std::size_t &at)
{
    const std::size_t start = at;
    int number = 0;
    while (at < text.size() && is_digit(text[at]) && at - start < 4)
        number = number * 10 + (text[at++] - '0');
    return at == start || at - start > 3 ? -1 : number;
}

template <typename T>
std::string print(const std::string &c_format, T value)
{
    const int length = std::snprintf(nullptr, 0, c_format.c_str(), value);
    std::string out(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::snprintf(out.data(), out.size() + 1, c_format.c_str(), value);
    return out;
}

} // namespace

std::string FieldFormat::c_format() const
{
    std::string out = concat('%', flags);
    if (width > 0)
        out += std::to_string(width);
    if (precision >= 0)
        out += concat('.', precision);
    if (conversion == 'd')
        out += "ll";
    out += conversion;
    return out;
}

std::optional<FieldFormat> parse_field_format(std::string_view text)
{
    FieldFormat format;
    std::size_t at = 0;
    if (at >= text.size() || text[at] != '%')
        return std::nullopt;
    ++at;
    while (at < text.size() && std::string_view("-+ #0").find(text[at]) != std::string_view::npos) {
        if (format.flags.find(text[at]) != std::string::npos)
            return std::nullopt;
        format.flags += text[at++];
    }
    if (at < text.size() && is_digit(text[at])) {
        format.width = read_number(text, at);
        if (format.width < 0)
            return std::nullopt;
    }
    if (at < text.size() && text[at] == '.') {
        ++at;
        format.precision = read_number(text, at);
        if (format.precision < 0)
            return std::nullopt;
    }
    if (at + 1 != text.size() || std::string_view("defgs").find(text[at]) == std::string_view::npos)
        return std::nullopt;
    format.conversion = text[at];
    return format;
}

std::string print_integer(const FieldFormat &format, long long value)
{
    return print(format.c_format(), value);
}

std::string print_real(const FieldFormat &format, double value)
{
    return print(format.c_format(), value);
}

} // namespace orvane
