// Rows in the order of some fields, and runs of rows that are equal in them.
#pragma once

#include "operation/operand.h"

namespace orvane {

struct SortOrder {
    std::vector<int> fields; // of the operand's table
    bool reverse = false;
    bool unique = false; // keeps the first of equals in the input
};

// The rows in order; equal ones stay in theirs, in reverse too.
Result<RowNumbers> sort_rows(Operand &operand, const SortOrder &order, Work &work);

// Where the rows stand when they are grouped: in order of the fields, with the first of each run of equals,
// and behind the last run the end.
struct Groups {
    bool in_order = false; // the rows are in order as they are; `rows` is then empty
    RowNumbers rows;
    RowNumbers firsts;
};
Result<Groups> group_rows(Operand &operand, const std::vector<int> &fields, Work &work);

} // namespace orvane
