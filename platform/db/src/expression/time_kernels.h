// Functions of times. All arguments are real: epoch seconds.
#pragma once

#include "expression/bound_expression.h"

namespace orvane::expr {

void time_same(KernelContext &, std::span<const Vector>, Selection, Vector &out); // epoch() of what is a time
void time_yearday(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void time_year(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void time_month(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void time_day(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void time_hour(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void time_minute(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void time_second(KernelContext &, std::span<const Vector>, Selection, Vector &out);
// A time as text; one argument, or a format of epoch2str() after it.
void time_text(KernelContext &, std::span<const Vector>, Selection, Vector &out);

} // namespace orvane::expr
