// What the calls that make views have in common.
#pragma once

#include "door/guard.h"
#include "door/subject.h"
#include "operation/derivation.h"

#include <orvane/db.h>

#include <string>
#include <vector>

namespace orvane {

// The texts of a caller's list; a null in it is a failure.
Result<std::vector<std::string>> texts_of(const Tbl *list, const char *what);

// The field that a pointer stands on, or -1.
inline int standing_on(const Dbptr &db)
{
    return db.field >= 0 ? static_cast<int>(db.field) : -1;
}

// Looks the pointer's table up, runs `derive` with a derivation and the table, logs, and answers the new
// pointer.
template <typename Derive>
Dbptr derived(const char *call, const Dbptr &db, const char *view, Derive derive)
{
    Dbptr made = dbinvalid();
    guarded(call, [&] {
        Subject subject;
        if (Status found = find_subject(db, Level::Table, call, subject); !found.ok())
            return code_of(found);
        Derivation derivation(*subject.database, call, view ? view : "");
        Result<std::int64_t> index = derive(derivation, subject.database->shared_table(db.table));
        for (const Status &remark : derivation.remarks())
            log_failure(remark);
        if (!index.ok())
            return code_of(named_failure(call, index.status()));
        made = Dbptr{db.database, *index, dbALL, dbALL};
        return 0;
    });
    return made;
}

} // namespace orvane
