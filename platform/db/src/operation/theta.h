// Takes the condition of a theta join apart: what of it can be looked up is, and only the rest is tried on
// pairs.
#pragma once

#include "operation/match.h"

namespace orvane {

// The terms for a condition over the fields of the left operand, then those of the right: equalities and
// orderings between the sides become terms of their own, what depends on one side alone is found out for its
// rows, and what is left stays a condition. Loads the operands with what is needed.
Result<MatchTerms> theta_terms(Operand &left, Operand &right, const expr::BoundExpression &condition,
                               Work &work);

} // namespace orvane
