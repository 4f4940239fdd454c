// What decides whether two rows join: pairs of fields that have to be equal, pairs of ranges that have to
// meet.
#pragma once

#include "operation/operand.h"
#include "schema/schema.h"

#include <span>
#include <string>
#include <vector>

namespace orvane {

// Fields, one of either side, whose values have to be equal and not null. A yearday and a time are equal when
// the time lies on that day.
struct EqualTerm {
    int left;
    int right;
};

// A range of one side: from the value of `begin` to that of `end`, both included, an end that is null open;
// or a single value (end is begin), which must not be null.
struct RangeSide {
    int begin;
    int end;
    bool is_point() const { return begin == end; }
};

// Ranges, one of either side, that have to have a value in common. With times, a yearday is the whole day.
struct RangeTerm {
    RangeSide left;
    RangeSide right;
};

struct JoinTerms {
    std::vector<EqualTerm> equal;
    std::vector<RangeTerm> ranges;
};

// The terms that two lists of keys stand for: a field, or a range as "ondate::offdate". Fails on unknown
// fields, lists of different lengths, keys that can't be compared.
Result<JoinTerms> join_terms(const Table &left, const Table &right, std::span<const std::string> left_keys,
                             std::span<const std::string> right_keys);

} // namespace orvane
