// == != < <= > >= =~ !~, and the truth of a number, as tests over vectors.
//
// An ordering holds of present values only. == holds of stored values, nulls too, and != where == does not;
// what has no value equals nothing. Blanks at the end of texts don't count.
#pragma once

#include "expression/bound_expression.h"

namespace orvane::expr {

TestKernel integer_comparison(Operator op);
TestKernel real_comparison(Operator op);
// Of an integer with a real number, by their values, not by the nearest double of the integer.
TestKernel mixed_comparison(Operator op);
TestKernel text_comparison(Operator op);
// Of a time with a span of time [begin, end): `<` is before it, `==` within it, `>` after it. A span whose
// end is its begin is that instant. Three arguments, all real.
TestKernel span_comparison(Operator op);
// Match or NotMatch of a text with the node's pattern.
TestKernel pattern_match(Operator op);
// Of a number: present and not 0.
TestKernel truth(Storage storage);
// Of anything: null, stored or without a value.
TestKernel null_test(Storage storage);

} // namespace orvane::expr
