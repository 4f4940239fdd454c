// dbcheck and dbcheck_kind.
#include "door/guard.h"
#include "door/subject.h"

#include "base/concat.h"
#include "check/database_check.h"
#include "operation/derivation.h"

#include <orvane/db_check.h>

using namespace orvane;

namespace {

static_assert(static_cast<int>(FindingLevel::Error) == dbFINDING_ERROR);
static_assert(static_cast<int>(FindingLevel::Note) == dbFINDING_NOTE);
static_assert(static_cast<int>(FindingLevel::Repair) == dbFINDING_REPAIR);

// A hook that wants to stop can't do so in the middle of a finding: the next look at the work does.
struct Telling {
    dbfinding_hook hook;
    void *data;
    bool stopped = false;

    void tell(const Finding &finding)
    {
        if (!hook || stopped)
            return;
        const std::string kind(row_of(finding.kind).name);
        const DbFinding told{static_cast<int>(finding.level),
                             kind.c_str(),
                             finding.table.c_str(),
                             finding.file.c_str(),
                             finding.line,
                             finding.record,
                             finding.offset,
                             finding.field.c_str(),
                             finding.found.c_str(),
                             finding.message.c_str(),
                             finding.more};
        stopped = hook(&told, data) != 0;
    }
};

Status check(const Dbptr &db, const DbCheckOptions *chosen, Telling &telling, DbCheckSummary &out)
{
    Subject subject;
    const bool whole = db.table < 0;
    if (Status found = find_subject(db, whole ? Level::Database : Level::Table, "dbcheck", subject);
        !found.ok())
        return found;
    Database &database = *subject.database;
    CheckOptions options;
    if (chosen) {
        options.limit = chosen->limit;
        if (chosen->repair < 0 || chosen->repair > 2)
            return Status(Code::Argument, concat("dbcheck: there is no repair ", chosen->repair));
        options.repair = static_cast<Repair>(chosen->repair);
    }
    if (!whole && !dynamic_cast<BaseTable *>(subject.table))
        return Status(Code::Argument, concat("dbcheck: ", subject.table->name(),
                                             " is a view; the tables it is of are checked"));
    if (options.repair == Repair::Do && !database.opened_for_writing())
        return Status(Code::Permission,
                      concat("dbcheck: ", database.name(),
                             ": was opened for reading only; open it with 'r+' to repair it"));
    const OperationGuard running(database);
    if (!running.status().ok())
        return named_failure("dbcheck", running.status());
    Work work("dbcheck");
    CheckSummary summary;
    Status checked = check_database(
        database, current_file_system(), whole ? -1 : db.table, options,
        [&](const Finding &finding) {
            telling.tell(finding);
            if (telling.stopped)
                work.stop();
        },
        summary, work);
    out = DbCheckSummary{summary.tables, summary.records, summary.marked,
                         summary.errors, summary.notes,   summary.repaired};
    return named_failure("dbcheck", checked);
}

} // namespace

int dbcheck(Dbptr db, const DbCheckOptions *options, dbfinding_hook hook, void *data, DbCheckSummary *summary)
{
    return guarded("dbcheck", [&] {
        Telling telling{hook, data};
        DbCheckSummary found{};
        const Status checked = check(db, options, telling, found);
        if (summary)
            *summary = found;
        return code_of(checked);
    });
}

int dbcheck_kind(int64_t index, DbFindingKind *kind)
{
    return guarded("dbcheck_kind", [&] {
        if (!kind)
            return code_of(Status(Code::Argument, "dbcheck_kind: there is no place for the answer"));
        *kind = DbFindingKind{};
        if (index < 0 || index >= static_cast<std::int64_t>(finding_kinds))
            return static_cast<int>(Code::NotFound);
        const FindingKindRow &row = row_of(static_cast<FindingKind>(index));
        *kind = DbFindingKind{row.name.data(), static_cast<int>(row.level), row.meaning.data()};
        return 0;
    });
}
