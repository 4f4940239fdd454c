// What is wrong in an expression, and where.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "base/status.h"

namespace orvane::expr {

// Bytes of the expression's text.
struct Place {
    std::size_t offset = 0;
    std::size_t length = 0;
};

// The smallest place that holds both.
Place spanning(Place a, Place b);

struct ExpressionError {
    std::string reason; // what was found, what was expected, names that are near; one line
    Place place;
    Code code = Code::Value;
};

// The failure as people read it: the reason, the line of the text that holds the place (its neighbourhood
// when the line is long), and a caret under the place.
Status error_status(std::string_view text, const ExpressionError &error);

// The text, or its beginning and an ellipsis where it has more than `most` bytes; without control characters.
std::string shortened(std::string_view text, std::size_t most);

// A piece of the text for use inside a reason: in quotes, shortened when it is long, without control
// characters.
std::string quoted(std::string_view piece);

} // namespace orvane::expr
