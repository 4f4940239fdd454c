// Numbers for rows of two sides that are equal where the rows agree in some values.
#pragma once

#include "operation/operand.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace orvane {

// Values of the rows of one side: a field, or what was computed for each row.
struct SideValues {
    RowColumn column;
    std::shared_ptr<const Column> computed = nullptr; // keeps what `column` reads, unless it is a field
    std::shared_ptr<const std::vector<std::uint8_t>> missing = nullptr; // rows without a value; null: none is

    bool is_missing(std::size_t row) const { return missing && (*missing)[row]; }
};

// Values of both sides that have to be equal. Text is never compared with numbers. A yearday and a time are
// equal when the time lies on that day.
struct EqualValues {
    SideValues left;
    SideValues right;
    bool nulls_join = false; // nulls are equal to nulls, as values
};

// Per row a number below `domain`, or null_row where the row can't have an equal on the other side.
struct EqualIds {
    RowNumbers left;
    RowNumbers right;
    std::uint32_t domain = 1;
};

// Numbers that are equal where all values are. Without any values all rows are equal.
Result<EqualIds> equal_ids(std::int64_t left_count, std::int64_t right_count,
                           const std::vector<EqualValues> &values, Work &work);

} // namespace orvane
