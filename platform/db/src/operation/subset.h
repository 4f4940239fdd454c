// Rows for which an expression is true: all of them, or the next one.
#pragma once

#include "expression/bound_expression.h"
#include "operation/operand.h"

#include <string_view>

namespace orvane {

// Parses an expression and binds it as a condition over the fields of a table. The failure shows the place.
Result<expr::BoundExpression> bind_condition(const Table &table, int standing_on, std::string_view text);

// The rows for which the condition is true, in order. The operand is loaded with what the condition needs.
Result<RowNumbers> subset_rows(Operand &operand, const expr::BoundExpression &condition, Work &work);

// The next row after `from` (before it, backwards) for which the condition is true, or -1. From -1 the first
// (last).
Result<std::int64_t> find_row(Operand &operand, const expr::BoundExpression &condition, std::int64_t from,
                              bool backwards, Work &work);

} // namespace orvane
