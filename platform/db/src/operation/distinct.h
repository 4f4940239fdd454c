// Sever and separate: members left out, and what is equal then once.
#pragma once

#include "operation/operand.h"

namespace orvane {

// The members but one; of rows that are equal then, the first.
Result<std::vector<ViewMember>> severed(const Operand &operand, std::size_t dropped, Work &work);

// One member; each of its records once, in order. Null records are none.
Result<std::vector<ViewMember>> separated(const Operand &operand, std::size_t kept, Work &work);

} // namespace orvane
