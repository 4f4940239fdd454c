// Checks a whole database, and repairs what can be repaired without losing anything.
#pragma once

#include "catalog/database.h"
#include "check/finding.h"
#include "check/key_check.h"
#include "work/work.h"

namespace orvane {

enum class Repair { None, Plan, Do };

struct CheckOptions {
    std::int64_t limit = 10; // findings told of a kind in a field of a table; negative: all
    Repair repair = Repair::None;
    CheckLimits limits = {};
};

struct CheckSummary {
    std::int64_t tables = 0; // with a file
    std::int64_t records = 0;
    std::int64_t marked = 0; // of these
    std::int64_t errors = 0;
    std::int64_t notes = 0;
    std::int64_t repaired = 0; // errors that are none any more, or, of a plan, would be none
};

// Checks the table of that index, or all of the database when it is negative. A failure is of the check
// itself; what it found before was told.
Status check_database(Database &database, FileSystem &files, std::int64_t table, const CheckOptions &options,
                      const Findings::Sink &sink, CheckSummary &summary, Work &work);

} // namespace orvane
