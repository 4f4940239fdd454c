// Which rows of two sides belong together: the inside of all joins.
#pragma once

#include "expression/bound_expression.h"
#include "operation/equal_ids.h"
#include "operation/intervals.h"

#include <memory>
#include <optional>
#include <vector>

namespace orvane {

// Intervals, of either side, that have to meet.
struct MeetingIntervals {
    std::unique_ptr<IntervalSource> left;
    std::unique_ptr<IntervalSource> right;
};

// All of these have to hold for a pair of rows.
struct MatchTerms {
    std::vector<EqualValues> equal;
    std::vector<MeetingIntervals> intervals;
    std::vector<std::uint8_t> left_out;  // 1 for left rows that match nothing; empty: none is known to
    std::vector<std::uint8_t> right_out; // likewise
    std::optional<expr::BoundExpression>
        condition;  // over the fields of the left operand, then those of the right
    double now = 0; // what now() is in it
};

struct MatchedPairs {
    RowNumbers left;
    RowNumbers right; // null_row beside a left row without a match, where such are asked for
};

enum class Unmatched {
    LeftOut,
    BesideNull, // an outer join
};

// The pairs, left rows in order, each with its matches in order. What the condition reads has to be loaded.
Result<MatchedPairs> matched_pairs(const Operand &left, const Operand &right, const MatchTerms &terms,
                                   Unmatched unmatched, Work &work);

// The left rows without a match, in order.
Result<RowNumbers> unmatched_rows(const Operand &left, const Operand &right, const MatchTerms &terms,
                                  Work &work);

} // namespace orvane
