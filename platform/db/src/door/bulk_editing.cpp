// dbputv_rows and dbmark_rows, dbtake_back and dbdo_again.
#include "door/change.h"

#include <orvane/db.h>

#include <algorithm>
#include <vector>

using namespace orvane;

namespace {

Result<std::vector<RecordRun>> runs_of(const DbRows *rows, size_t count)
{
    if (!rows && count > 0)
        return Status(Code::Argument, "the rows are null");
    std::vector<RecordRun> runs;
    for (size_t i = 0; i < count; ++i) {
        if (rows[i].first < 0 || rows[i].end < rows[i].first)
            return Status(Code::Argument,
                          concat("the rows ", rows[i].first, " to ", rows[i].end, " are no rows"));
        runs.push_back({rows[i].first, rows[i].end});
    }
    return in_order(runs);
}

// Does something with many rows; `act` takes the runs and what counts the records.
template <typename Act>
int change_rows(const char *call, Dbptr db, const DbRows *rows, size_t count, int64_t *changed, Act act)
{
    if (changed)
        *changed = 0;
    return guarded(call, [&] {
        Change change(db, call);
        if (!change.status.ok())
            return code_of(change.status);
        const auto runs = runs_of(rows, count);
        if (!runs.ok())
            return code_of(change.named(runs.status()));
        std::int64_t done = 0;
        const Status status = runs->empty() ? Status() : act(change, *runs, done);
        if (changed)
            *changed = done;
        return code_of(change.named(status));
    });
}

Status put_rows(Change &change, const char *field_name, const DbValue *db_value,
                std::span<const RecordRun> runs, std::int64_t &done)
{
    const auto value = value_of(db_value);
    if (!value.ok())
        return value.status();
    const auto field = field_of(change.subject, field_name);
    if (!field.ok())
        return field.status();
    return change.subject.table->put_many(runs, *field, *value, change.work, done);
}

// The base table that a change is of.
Result<BaseTable *> changed_table(const Subject &subject)
{
    if (auto *table = dynamic_cast<BaseTable *>(subject.table))
        return table;
    return Status(Code::Argument, concat(subject.table->name(), " is a view; records are those of tables"));
}

Status check_told(const DbChange &told, const Table &table)
{
    if (told.kind != dbCHANGED_VALUES && told.kind != dbCHANGED_MARKS && told.kind != dbCHANGED_ADDED)
        return Status(Code::Argument, concat("a change of kind ", told.kind, " cannot be taken back"));
    if (!told.records || !told.before || !told.after)
        return Status(Code::Argument, "the records or the texts of the change are null");
    const auto fields = static_cast<std::int64_t>(table.fields().size());
    if (!told.whole_records && (told.place.field < 0 || told.place.field >= fields))
        return Status(Code::Argument, concat("table ", table.name(), " has no field ", told.place.field));
    const std::int64_t length =
        told.whole_records ? table.record_size() - 1
                           : table.fields()[static_cast<std::size_t>(told.place.field)].attribute->width;
    if (static_cast<std::int64_t>(told.length) != length)
        return Status(Code::Argument,
                      concat("the texts are ", told.length, " bytes long where ", length, " are expected"));
    if (!std::is_sorted(told.records, told.records + told.count))
        return Status(Code::Argument, "the records of the change are not in order");
    return Status();
}

int exchange(const char *call, const DbChange *told, BaseTable::Direction direction, int64_t *left)
{
    if (left)
        *left = 0;
    return guarded(call, [&] {
        if (!told)
            return code_of(Status(Code::Argument, concat(call, ": the change is null")));
        Dbptr db = told->place;
        db.field = dbALL;
        Change change(db, call);
        if (!change.status.ok())
            return code_of(change.status);
        change.work.set_listener(nullptr); // who takes a change back knows of it
        const auto table = changed_table(change.subject);
        if (!table.ok())
            return code_of(change.named(table.status()));
        if (Status valid = check_told(*told, **table); !valid.ok())
            return code_of(change.named(valid));
        const RecordChange back{.kind = RecordChange::Kind::Values,
                                .relation = *(*table)->members().front(),
                                .generation = static_cast<std::uint64_t>(told->numbering),
                                .field = static_cast<int>(told->place.field),
                                .whole_records = told->whole_records != 0,
                                .records = {told->records, told->count},
                                .before = {told->before, told->count * told->length},
                                .after = {told->after, told->length}};
        std::int64_t others = 0;
        const Status status = (*table)->exchange(back, direction, change.work, others);
        if (left)
            *left = others;
        return code_of(change.named(status));
    });
}

} // namespace

int dbputv_rows(Dbptr db, const char *field, const DbValue *value, const DbRows *rows, size_t count,
                int64_t *changed)
{
    return change_rows("dbputv_rows", db, rows, count, changed,
                       [&](Change &change, std::span<const RecordRun> runs, std::int64_t &done) {
                           return put_rows(change, field, value, runs, done);
                       });
}

int dbmark_rows(Dbptr db, const DbRows *rows, size_t count, int64_t *changed)
{
    return change_rows("dbmark_rows", db, rows, count, changed,
                       [&](Change &change, std::span<const RecordRun> runs, std::int64_t &done) {
                           return change.subject.table->mark_many(runs, change.work, done);
                       });
}

int dbtake_back(const DbChange *change, int64_t *left)
{
    return exchange("dbtake_back", change, BaseTable::Direction::Back, left);
}

int dbdo_again(const DbChange *change, int64_t *left)
{
    return exchange("dbdo_again", change, BaseTable::Direction::Again, left);
}
