// + - * / % ** and the sign.
#pragma once

#include "expression/bound_expression.h"

namespace orvane::expr {

// Of two integers (Add to Remainder), or of two real numbers (Add to Power). What goes beyond the type, or
// has no finite value, is missing.
Kernel integer_arithmetic(Operator op);
Kernel real_arithmetic(Operator op);
Kernel negation(Storage storage);

} // namespace orvane::expr
