// dbfind, dbfind_rows, dbmoved_records and dbfree.
#include "door/derivations.h"

#include "base/concat.h"
#include "operation/same_rows.h"
#include "operation/subset.h"

#include <algorithm>

using namespace orvane;

namespace {

constexpr int max_attempts = 4; // at a table that keeps changing while it is read

Result<std::int64_t> find_once(const Subject &subject, std::string_view expression, bool backwards,
                               Work &work)
{
    const std::shared_ptr<Table> table = subject.database->shared_table(subject.pointer.table);
    const auto condition = bind_condition(*table, standing_on(subject.pointer), expression);
    if (!condition.ok())
        return condition.status();
    Operand operand(table);
    if (Status looked = operand.look(work.snapshots()); !looked.ok())
        return looked;
    for (const Status &remark : operand.remarks())
        log_failure(remark);
    const std::int64_t from = subject.pointer.record;
    return find_row(operand, *condition, from == dbALL ? -1 : from, backwards, work);
}

Result<std::int64_t> find(const Dbptr &db, const char *expression, bool backwards, dbprogress_hook hook)
{
    Subject subject;
    if (Status found = find_subject(db, Level::Table, "dbfind", subject); !found.ok())
        return found;
    if (!expression)
        return Status(Code::Argument, "the expression is null");
    if (db.record < 0 && db.record != dbALL)
        return Status(Code::Argument,
                      concat("the pointer ", pointer_text(db), " points to a record without a number"));
    OperationGuard running(*subject.database);
    if (!running.status().ok())
        return running.status();
    Work work("dbfind", hook ? ProgressHook{hook, nullptr} : process_progress_hook());
    for (int attempt = 1;; ++attempt) {
        auto found = find_once(subject, expression, backwards, work);
        if (found.ok() || !work.take_change() || attempt == max_attempts)
            return found;
    }
}

// The table that a pointer points to, as it is now.
Result<Operand> operand_of(const Dbptr &db, Snapshots &snapshots)
{
    Subject subject;
    if (Status found = find_subject(db, Level::Table, "dbfind_rows", subject); !found.ok())
        return found;
    Operand operand(subject.database->shared_table(db.table));
    if (Status looked = operand.look(snapshots); !looked.ok())
        return named_failure("dbfind_rows", looked);
    return operand;
}

} // namespace

int64_t dbfind(Dbptr db, const char *expression, int backwards, dbprogress_hook hook)
{
    return guarded("dbfind", [&]() -> std::int64_t {
        const auto found = find(db, expression, backwards != 0, hook);
        if (!found.ok())
            return code_of(named_failure("dbfind", found.status()));
        return *found >= 0 ? *found : static_cast<std::int64_t>(dbERROR_NOT_FOUND);
    });
}

int dbfind_rows(Dbptr from, Dbptr to, const int64_t *rows, size_t count, int64_t *places)
{
    return guarded("dbfind_rows", [&] {
        if (count > 0 && (!rows || !places))
            return code_of(Status(Code::Argument, "dbfind_rows: the rows or their places are null"));
        Snapshots snapshots;
        const auto source = operand_of(from, snapshots);
        if (!source.ok())
            return code_of(source.status());
        const auto target = operand_of(to, snapshots);
        if (!target.ok())
            return code_of(target.status());
        const auto found = same_rows(*source, *target, {rows, count});
        if (!found.ok())
            return code_of(named_failure("dbfind_rows", found.status()));
        std::copy(found->begin(), found->end(), places);
        return 0;
    });
}

int dbmoved_records(Dbptr db, int64_t numbering, const int64_t *numbers, size_t count, int64_t *places)
{
    return guarded("dbmoved_records", [&] {
        if (count > 0 && (!numbers || !places))
            return code_of(Status(Code::Argument, "dbmoved_records: the numbers or their places are null"));
        Subject subject;
        if (Status found = find_subject(db, Level::Table, "dbmoved_records", subject); !found.ok())
            return code_of(found);
        const std::int64_t now = subject.table->numbering();
        const RecordMoves &moves = subject.table->last_moves();
        if (numbering != now && (numbering != moves.from || now != moves.to))
            return static_cast<int>(dbERROR_STALE); // what became of them nobody knows, which is no failure
        std::transform(numbers, numbers + count, places, [&](std::int64_t number) {
            return numbering == now ? number : moves.place_of(number);
        });
        return 0;
    });
}

int dbfree(Dbptr db)
{
    return guarded("dbfree", [&] {
        Subject subject;
        if (Status found = find_subject(db, Level::Table, "dbfree", subject); !found.ok())
            return code_of(found);
        if (!subject.table->is_view())
            return code_of(Status(Code::Argument, concat("dbfree: table ", subject.table->name(),
                                                         " is no view; only views are freed")));
        if (!subject.database->is_listed(db.table))
            return code_of(
                Status(Code::Argument, concat("dbfree: the pointer ", pointer_text(db),
                                              " is that of bundles, which go with their grouped view")));
        if (subject.database->operation_running)
            return code_of(Status(Code::Argument, "dbfree: an operation is running; wait until it is done"));
        subject.database->free_view(db.table);
        return 0;
    });
}
