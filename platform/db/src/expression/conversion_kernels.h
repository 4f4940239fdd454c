// Values read as values of another type. A stored null stays a stored null where it can be read.
#pragma once

#include "expression/bound_expression.h"

namespace orvane::expr {

void integer_to_real(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void integer_to_text(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void real_to_text(KernelContext &, std::span<const Vector>, Selection, Vector &out);
// The first second of a day, and the first of the day after.
void yearday_to_begin(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void yearday_to_end(KernelContext &, std::span<const Vector>, Selection, Vector &out);
// Text that can't be read so is missing.
void text_to_real(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void text_to_time(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void text_to_time_end(KernelContext &, std::span<const Vector>, Selection,
                      Vector &out); // of the span it names
void text_to_yearday(KernelContext &, std::span<const Vector>, Selection, Vector &out);

// A yearday as a number (2018038), or a time on that day.
std::optional<std::int64_t> read_yearday(std::string_view text);

} // namespace orvane::expr
