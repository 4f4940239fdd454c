// dbputv, dbcheckv, dbadd, dbaddchk, dbmark, dbcrunch and dbnextid.
#include "door/change.h"

#include <orvane/db.h>

#include <string>

using namespace orvane;

namespace {

enum class Put { Stored, CheckedOnly };

Status put(Change &change, const char *field_name, const DbValue *db_value, Put how = Put::Stored)
{
    Table &table = *change.subject.table;
    const Dbptr &db = change.subject.pointer;
    const auto value = value_of(db_value);
    if (!value.ok())
        return value.status();
    const auto field = field_of(change.subject, field_name);
    if (!field.ok())
        return field.status();
    if (db.record == dbSCRATCH && how == Put::Stored)
        return table.put_scratch(*field, *value);
    if (db.record < 0)
        return Status(Code::Argument,
                      concat("the pointer ", pointer_text(db), " does not point to a record of table ",
                             table.name(), " that could be changed"));
    return how == Put::CheckedOnly ? table.check_put(db.record, *field, *value)
                                   : table.put(db.record, *field, *value, change.work);
}

Result<std::int64_t> add(Change &change, const char *record, bool checked)
{
    auto *table = dynamic_cast<BaseTable *>(change.subject.table);
    if (!table)
        return Status(Code::Argument,
                      concat("records are added to tables; ", change.subject.table->name(), " is a view"));
    const std::string text(record ? std::string_view(record) : table->special_record(SpecialRecord::Scratch));
    return checked ? table->add_checked(text, change.work) : table->add(text, change.work);
}

std::int64_t add(const char *call, const Dbptr &db, const char *record, bool checked)
{
    return guarded(call, [&]() -> std::int64_t {
        Change change(db, call);
        return change.status.ok() ? change.answer(add(change, record, checked)) : code_of(change.status);
    });
}

} // namespace

int dbputv(Dbptr db, const char *field, const DbValue *value)
{
    return guarded("dbputv", [&] {
        Change change(db, "dbputv");
        return code_of(change.status.ok() ? change.named(put(change, field, value)) : change.status);
    });
}

int dbcheckv(Dbptr db, const char *field, const DbValue *value)
{
    return guarded("dbcheckv", [&] {
        Change change(db, "dbcheckv");
        return code_of(change.status.ok() ? change.named(put(change, field, value, Put::CheckedOnly))
                                          : change.status);
    });
}

int64_t dbadd(Dbptr db, const char *record)
{
    return add("dbadd", db, record, false);
}

int64_t dbaddchk(Dbptr db, const char *record)
{
    return add("dbaddchk", db, record, true);
}

int dbmark(Dbptr db)
{
    return guarded("dbmark", [&] {
        Change change(db, "dbmark");
        if (!change.status.ok())
            return code_of(change.status);
        if (db.record < 0)
            return code_of(change.named(
                Status(Code::Argument,
                       concat("the pointer ", pointer_text(db), " does not point to a record of table ",
                              change.subject.table->name(), " that could be marked"))));
        return code_of(change.named(change.subject.table->mark(db.record, change.work)));
    });
}

int dbcrunch(Dbptr db)
{
    return guarded("dbcrunch", [&] {
        Change change(db, "dbcrunch");
        return code_of(change.status.ok()
                           ? change.named(change.subject.database->crunch(*change.subject.table, change.work))
                           : change.status);
    });
}

int64_t dbnextid(Dbptr db, const char *name)
{
    return guarded("dbnextid", [&]() -> std::int64_t {
        Subject subject;
        if (Status found = find_subject(db, Level::Database, "dbnextid", subject); !found.ok())
            return code_of(found);
        const auto named = [](const Status &failure) { return code_of(named_failure("dbnextid", failure)); };
        if (!name)
            return named(Status(Code::Argument, "the name of the id is null"));
        OperationGuard running(*subject.database);
        if (!running.status().ok())
            return named(running.status());
        Work work("dbnextid");
        const auto next = subject.database->next_id(name, work);
        return next.ok() ? *next : static_cast<std::int64_t>(named(next.status()));
    });
}
