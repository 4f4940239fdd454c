// A condition over two sides, taken apart for a join: what it says of one side alone, which equalities and
// orderings it asks between the sides, and the rest.
#pragma once

#include <vector>

#include "expression/bound_expression.h"

namespace orvane::expr {

// `left op right`: left reads columns of the left side only, right of the right side only. Equal means as ==
// does: stored values are compared, a null equals the same null, what has no value equals nothing. An
// ordering holds of present values only.
struct JoinTerm {
    Operator op; // Equal, Less, LessEqual, Greater, GreaterEqual
    BoundExpression left;
    BoundExpression right;
};

// The condition holds of a pair where all of it holds: every term, the left and right conditions, and the
// rest.
struct JoinTerms {
    std::vector<JoinTerm> equalities;
    std::vector<JoinTerm> orderings;
    std::vector<BoundExpression> left_only; // of these each is a condition
    std::vector<BoundExpression> right_only;
    std::vector<BoundExpression> rest; // of both sides, or constant
};

// `condition` is bound by bind_condition() in a scope whose columns below `first_right` are the left side's.
JoinTerms take_apart(const BoundExpression &condition, std::size_t first_right);

} // namespace orvane::expr
