// The operations by which 'select' makes views, each as one call of the library.
#pragma once

#include "library.h"
#include "request.h"

namespace ovdb {

// Each answers a new view of the table or view, or the invalid pointer with the reason in the error log; of a
// table that doesn't exist, or an expression file that can't be read, it throws.
Dbptr subset(const Database &database, Dbptr table, const Operation &operation);
Dbptr sort(const Database &database, Dbptr table, const Operation &operation);
Dbptr join(const Database &database, Dbptr table, const Operation &operation);
Dbptr outer_join(const Database &database, Dbptr table, const Operation &operation);
Dbptr left_join(const Database &database, Dbptr table, const Operation &operation);
Dbptr no_join(const Database &database, Dbptr table, const Operation &operation);
Dbptr theta_join(const Database &database, Dbptr table, const Operation &operation);
Dbptr group(const Database &database, Dbptr table, const Operation &operation);
Dbptr ungroup(const Database &database, Dbptr table, const Operation &operation);
Dbptr sever(const Database &database, Dbptr table, const Operation &operation);
Dbptr separate(const Database &database, Dbptr table, const Operation &operation);

// Applies the operations in their order. A view in between is let go of as soon as the next one is made.
Dbptr derived(const Database &database, Dbptr table, const std::vector<Operation> &operations);

// Fails where the table's file is refused, and notes where there is none: rows that silently are none
// mislead.
void check_table(Dbptr table, std::string_view where);

} // namespace ovdb
