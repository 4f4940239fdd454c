// Comparisons of a field of numbers with a constant of the same kind, over all of a batch at once, as most
// conditions begin: without positions between them the machine can compare several values at a time.
#pragma once

#include "expression/bound_expression.h"

namespace orvane::expr {

// Null where there is none.
MaskKernel comparison_mask(Operator op, Storage storage);

// Writes the positions whose byte is 1 to `out`, which has room for `count`, and returns their number.
std::size_t positions_of_mask(const std::uint8_t *mask, std::size_t count, std::uint32_t *out);

} // namespace orvane::expr
