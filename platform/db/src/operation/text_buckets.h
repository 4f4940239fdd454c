// Rows in the order of one text field that has few different texts: they are counted and put in their places,
// without keys.
#pragma once

#include "operation/operand.h"

namespace orvane {

struct TextBuckets {
    RowNumbers rows;       // in order; equal ones in theirs
    RowNumbers firsts;     // where each run of equals begins in them, and behind the last run the end
    bool in_order = false; // as they are
};

// Whether that is a way for this field.
bool has_few_texts(const RowColumn &column);
Result<TextBuckets> text_buckets(const RowColumn &column, std::int64_t row_count, bool reverse, Work &work);

} // namespace orvane
