// A time as it is written in an expression: the span of time that the text names.
#pragma once

#include <optional>
#include <string_view>

namespace orvane::expr {

// From begin up to, not including, end. With end == begin, that instant.
struct TimeSpan {
    double begin = 0;
    double end = 0;
};

// The span of a text that is_epoch_string() takes: '2018-02-07' is a day, '2018-02-07T05' an hour,
// '2018-02-07 05:12' a minute, '05:12:13.50' a hundredth of a second; epoch seconds likewise by their
// decimals.
std::optional<TimeSpan> written_span(std::string_view text);

} // namespace orvane::expr
