#include "expression/number_text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace orvane::expr {

std::optional<WrittenNumber> read_number(std::string_view text)
{
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    if (text.empty() || text.find_first_not_of("0123456789.eE+-") != std::string_view::npos)
        return std::nullopt;
    const char *last = text.data() + text.size();
    WrittenNumber number;
    const auto whole = std::from_chars(text.data(), last, number.integer);
    if (whole.ec == std::errc() && whole.ptr == last) {
        number.whole = true;
        number.real = static_cast<double>(number.integer);
        return number;
    }
    const auto read = std::from_chars(text.data(), last, number.real);
    if (read.ec != std::errc() || read.ptr != last || !std::isfinite(number.real))
        return std::nullopt;
    return number;
}

std::string number_text(double number)
{
    std::array<char, 32> text{};
    const auto written = std::to_chars(text.data(), text.data() + text.size(), number);
    return std::string(text.data(), written.ptr);
}

} // namespace orvane::expr
