// Comparisons of a field of numbers with a constant of the same kind, over all of a batch at once, as most
// conditions begin: without positions between them the machine can compare several values at a time.
#pragma once

#include "expression/bound_expression.h"

#include <vector>

namespace orvane::expr {

// Null where there is none.
MaskKernel comparison_mask(Operator op, Storage storage);

// Writes for each of the codes the byte that `holds` has for it. Where those of all codes count (they don't
// where some are not known), and it is one that holds, that one is looked for.
void mask_of_codes(const std::uint32_t *codes, std::size_t count, const std::vector<std::uint8_t> &holds,
                   bool all_count, std::uint8_t *mask);

// Writes the positions whose byte is 1 to `out`, which has room for `count`, and returns their number.
std::size_t positions_of_mask(const std::uint8_t *mask, std::size_t count, std::uint32_t *out);

} // namespace orvane::expr
