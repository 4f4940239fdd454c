// dbopen_database, OVdbclose and the invalid pointer.
#include "catalog/database_registry.h"
#include "door/guard.h"
#include "door/subject.h"

#include <orvane/db.h>

using namespace orvane;

Dbptr dbinvalid(void)
{
    return Dbptr{dbINVALID, dbINVALID, dbINVALID, dbINVALID};
}

int dbopen_database(const char *path, const char *permissions, Dbptr *db)
{
    return guarded("dbopen_database", [&] {
        if (!db)
            return code_of(Status(Code::Argument, "dbopen_database: the place for the pointer is null"));
        *db = dbinvalid();
        if (!path || !permissions)
            return code_of(Status(Code::Argument, "dbopen_database: the path or the permissions are null"));
        std::int64_t table = -1;
        const auto index = DatabaseRegistry::of_process().open(path, permissions, table);
        if (!index.ok())
            return code_of(index.status());
        *db = Dbptr{*index, table < 0 ? std::int64_t{dbALL} : table, dbALL, dbALL};
        return 0;
    });
}

int OVdbclose(Dbptr db)
{
    return guarded("OVdbclose", [&] {
        const Database *database = DatabaseRegistry::of_process().database(db.database);
        if (database && database->operation_running)
            return code_of(Status(
                Code::Argument, "OVdbclose: an operation is running in the database; wait until it is done"));
        if (DatabaseRegistry::of_process().close(db.database))
            return 0;
        return code_of(subject_failure(db, Level::Database, "OVdbclose"));
    });
}
