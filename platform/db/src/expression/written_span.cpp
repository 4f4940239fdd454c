#include "expression/written_span.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string>

#include <orvane/util.h>
#include <re2/re2.h>

#include "expression/calendar.h"

namespace orvane::expr {

namespace {

constexpr std::size_t longest_text = 400;
constexpr int finest_decimals = 6; // of today's epoch seconds a double has no more

// After the date, if anything: hour, minute, second, decimals. is_epoch_string() has already checked that it
// is a time.
const re2::RE2 &clock_form()
{
    static const re2::RE2 form(
        R"(^\s*[+-]?(?:\d{1,2}/\d{1,2}/-?\d{4,}|\d{4}/\d{1,2}/\d{1,2}|\d{4}-\d{2}-\d{2}|\d{4}-\d{3}|\d{4}-W\d{2}-\d|)"
        R"(\d{4}W\d{3}|\d{8}|\d{7})(?:\s*\(\d{3}\))?)"
        R"((?:[T:\s]\s*(\d{1,2})(?::?(\d{2})(?::?(\d{2})(?:[.,](\d+))?)?)?)?)"
        R"(\s*(?:Z|[A-Za-z]+|[+-]\d{2}(?::?\d{2})?)?\s*$)",
        re2::RE2::Quiet);
    return form;
}

const re2::RE2 &seconds_form()
{
    static const re2::RE2 form(R"(^\s*[+-]?\d+(?:\.(\d*))?\s*$)", re2::RE2::Quiet);
    return form;
}

// The span of one unit in the last of the decimals. Whole numbers of that unit are exact, and so each bound
// is the double next to its decimal text, as are the times that are read from files.
TimeSpan decimal_span(double begin, std::size_t decimals)
{
    if (decimals > finest_decimals)
        return {begin, begin};
    const double scale = std::pow(10.0, static_cast<double>(decimals));
    const double units = std::round(begin * scale);
    if (std::abs(units) > 9e15)
        return {begin, begin};
    return {begin, (units + 1) / scale};
}

bool same_number(std::string_view text, double epoch)
{
    const std::size_t first = text.find_first_not_of(" +");
    double number = 0;
    const auto read =
        std::from_chars(text.data() + std::min(first, text.size()), text.data() + text.size(), number);
    return read.ec == std::errc() && number == epoch;
}

} // namespace

std::optional<TimeSpan> written_span(std::string_view text)
{
    double begin = 0;
    if (text.size() > longest_text || text.find('\0') != std::string_view::npos ||
        !is_epoch_string(std::string(text).c_str(), &begin) || !std::isfinite(begin))
        return std::nullopt;
    const re2::StringPiece piece(text.data(), text.size());
    std::string decimals;
    if (re2::RE2::PartialMatch(piece, seconds_form(), &decimals) && same_number(text, begin))
        return decimal_span(begin, decimals.size());
    std::array<std::string, 4> parts; // hour, minute, second, decimals
    if (!re2::RE2::PartialMatch(piece, clock_form(), &parts[0], &parts[1], &parts[2], &parts[3]))
        return TimeSpan{begin, begin};
    if (!parts[2].empty())
        return decimal_span(begin, parts[3].size());
    return TimeSpan{begin, begin + (!parts[1].empty() ? 60 : !parts[0].empty() ? 3600 : seconds_of_day)};
}

} // namespace orvane::expr
