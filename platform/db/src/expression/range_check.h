// The range of an attribute: an expression of the language whose only field is the attribute.
#pragma once

#include <string_view>

#include "base/status.h"
#include "expression/bound_expression.h"
#include "expression/expression_executor.h"

namespace orvane::expr {

// Reads "lat >= -90.0 && lat <= 90.0" as the range of `attribute`. A failure's message shows the place in the
// text.
Result<BoundExpression> check_range(std::string_view attribute, ValueType type, std::string_view range);

// Tells values in the range from those out of it. One thread at a time.
class RangeCheck
{
public:
    explicit RangeCheck(BoundExpression range) : executor_(std::move(range)) {}

    // Whether the value, which is of the attribute's type, lies in the range. A null does always.
    Result<bool> admits(const Value &value);

private:
    ExpressionExecutor executor_;
};

} // namespace orvane::expr
