#include "door/subject.h"

#include "base/concat.h"

namespace orvane {

std::string pointer_text(const Dbptr &pointer)
{
    return concat("[", pointer.database, ", ", pointer.table, ", ", pointer.field, ", ", pointer.record, "]");
}

Status subject_failure(const Dbptr &pointer, Level level, const char *doing)
{
    const std::string start = concat(doing, ": the pointer ", pointer_text(pointer), " ");
    const Database *database = DatabaseRegistry::of_process().database(pointer.database);
    if (!database)
        return Status(Code::Stale, concat(start, "points to no open database"));
    if (pointer.table < 0)
        return Status(Code::Argument, concat(start, "does not point to a table of ", database->name()));
    const Table *table = database->table(pointer.table);
    if (!table)
        return Status(Code::Stale, concat(start, "points to no table or view of ", database->name()));
    if (level == Level::Field && pointer.field < 0)
        return Status(Code::Argument, concat(start, "does not point to a field of table ", table->name()));
    return Status(Code::Stale, concat(start, "points to no field of table ", table->name(), ", which has ",
                                      table->fields().size(), " fields"));
}

} // namespace orvane
