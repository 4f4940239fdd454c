// Where rows of one table are in another one of the same member tables.
#pragma once

#include "operation/operand.h"

#include <cstdint>
#include <span>
#include <vector>

namespace orvane {

// For each of `rows` of `from` the row of `to` with the same records; -1 where there is none. Both were
// looked at.
Result<std::vector<std::int64_t>> same_rows(const Operand &from, const Operand &to,
                                            std::span<const std::int64_t> rows);

} // namespace orvane
