// The record numbers of a view's rows, through the C interface: read off the text of the saved view.
#pragma once

#include <orvane/db.h>

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

// One number that stands for a view's rows, and is as easily computed in SQL.
struct Answer {
    int64_t count = 0;
    int64_t checksum = 0;
};

// The sum over the rows of record × (place mod 1009 + 1): tells of a wrong order.
Answer ordered_answer(Dbptr view);
// The sum over the rows of (31 a + 17 b + 7 c) mod 1000003, a, b and c being the records of the members.
Answer unordered_answer(Dbptr view);
// The number of bundles, and the sum of the squares of their sizes.
Answer bundles_answer(Dbptr grouped);

} // namespace bench
