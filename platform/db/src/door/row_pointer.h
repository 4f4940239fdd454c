// Pointers to several rows: one to the first of them, with the end as a field index below all that have a
// meaning.
#pragma once

#include <orvane/db.h>

namespace orvane {

constexpr std::int64_t row_pointer_field_base = -1'000'000;

inline Dbptr pointer_to_rows(std::int64_t database, std::int64_t table, std::int64_t first, std::int64_t end)
{
    return Dbptr{database, table, row_pointer_field_base - end, first};
}

// One beyond the last row that a pointer to a numbered row, or to several, stands for.
inline std::int64_t end_of_rows(const Dbptr &db)
{
    const bool several = db.field <= row_pointer_field_base && row_pointer_field_base - db.field > 0;
    return several ? row_pointer_field_base - db.field : db.record + 1;
}

} // namespace orvane
