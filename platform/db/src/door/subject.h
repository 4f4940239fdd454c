// What a pointer of the C interface points to, looked up once per call.
#pragma once

#include "catalog/database_registry.h"

#include <orvane/db.h>

#include <string>

namespace orvane {

struct Subject {
    Dbptr pointer;
    Database *database = nullptr;
    Table *table = nullptr;            // null above table level
    const TableField *field = nullptr; // null above field level
};

enum class Level { Database, Table, Field };

// The pointer as text for messages: "[0, 3, -501, -501]".
std::string pointer_text(const Dbptr &pointer);
// The failure that find_subject answers, kept out of its fast path.
Status subject_failure(const Dbptr &pointer, Level level, const char *doing);

// Looks the pointer up down to the level asked for, and no further: what lies below may be anything. `doing`
// begins the message of a failure. What is no longer there is Stale, a pointer of a higher level Argument.
inline Status find_subject(const Dbptr &pointer, Level level, const char *doing, Subject &subject)
{
    subject.pointer = pointer;
    subject.database = DatabaseRegistry::of_process().database(pointer.database);
    if (!subject.database)
        return subject_failure(pointer, level, doing);
    if (level == Level::Database)
        return Status();
    subject.table = subject.database->table(pointer.table);
    if (!subject.table)
        return subject_failure(pointer, level, doing);
    if (level == Level::Table)
        return Status();
    const auto &fields = subject.table->fields();
    if (pointer.field < 0 || pointer.field >= static_cast<std::int64_t>(fields.size()))
        return subject_failure(pointer, level, doing);
    subject.field = &fields[static_cast<std::size_t>(pointer.field)];
    return Status();
}

} // namespace orvane
