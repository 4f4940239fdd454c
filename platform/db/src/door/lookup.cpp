// dblookup: names to indexes.
#include "door/guard.h"
#include "door/subject.h"

#include "base/concat.h"
#include "base/near_names.h"
#include "table/field_value.h"

#include <orvane/db.h>

using namespace orvane;

namespace {

std::string_view named(const char *name)
{
    return name ? std::string_view(name) : std::string_view();
}

Status unknown(const char *what, std::string_view name, std::string_view where,
               const std::vector<std::string_view> &known)
{
    return Status(Code::NotFound,
                  concat("dblookup: no ", what, " '", name, "' in ", where, near_names_hint(name, known)));
}

Status look_up_database(std::string_view name, Dbptr &db)
{
    if (name.empty())
        return Status();
    const std::int64_t index = DatabaseRegistry::of_process().index_of(std::string(name));
    if (index < 0)
        return Status(Code::NotFound, concat("dblookup: no database '", name, "' is open"));
    db = Dbptr{index, dbALL, dbALL, dbALL};
    return Status();
}

Status look_up_table(Database &database, std::string_view name, Dbptr &db)
{
    if (name.empty())
        return Status();
    const std::int64_t index = name == "dbALL" ? std::int64_t{dbALL} : database.index_for_lookup(name);
    if (index < 0 && index != dbALL) {
        const Status failure = unknown("table", name, database.name(), database.table_names());
        const Status refused = database.refused_view(std::string(name));
        return refused.ok() ? failure : failure.with_line(refused.message());
    }
    db.table = index;
    db.field = db.record = dbALL;
    return Status();
}

std::vector<std::string_view> field_names(const Table &table)
{
    std::vector<std::string_view> names;
    for (const TableField &field : table.fields())
        names.push_back(field.attribute->name);
    return names;
}

Status look_up_field(Database &database, std::string_view name, Dbptr &db)
{
    if (name.empty())
        return Status();
    if (name == "dbALL") {
        db.field = dbALL;
        return Status();
    }
    // "table.field" names its table where the pointer points to none.
    if (const auto dot = name.find('.'); db.table == dbALL && dot != std::string_view::npos)
        if (Status table = look_up_table(database, name.substr(0, dot), db); !table.ok())
            return table;
    Subject subject;
    if (Status found = find_subject(db, Level::Table, "dblookup", subject); !found.ok())
        return found;
    const int index = subject.table->field_index(name, static_cast<int>(db.field));
    if (index < 0)
        return unknown("field", name, concat("table ", subject.table->name()), field_names(*subject.table));
    db.field = index;
    return Status();
}

struct SpecialName {
    std::string_view name;
    std::int64_t record;
};
constexpr SpecialName special_records[] = {{"dbALL", dbALL}, {"dbSCRATCH", dbSCRATCH}, {"dbNULL", dbNULL}};

Status look_up_record(std::string_view name, Dbptr &db)
{
    if (name.empty())
        return Status();
    for (const SpecialName &special : special_records)
        if (special.name == name) {
            db.record = special.record;
            return Status();
        }
    Subject subject;
    if (Status found = find_subject(db, Level::Table, "dblookup", subject); !found.ok())
        return found;
    const auto number = decode_integer(name);
    if (!number || *number < 0)
        return Status(Code::NotFound,
                      concat("dblookup: '", name, "' is not a record of table ", subject.table->name(),
                             ": a number from 0 on, dbALL, dbSCRATCH or dbNULL was expected"));
    const RecordCount count = subject.table->count_records();
    if (*number >= count.records) {
        Status failure(Code::NotFound, concat("dblookup: no record ", *number, " in table ",
                                              subject.table->name(), ", which has ", count.records));
        return count.refusal.ok() ? failure : failure.with_line(count.refusal.message());
    }
    db.record = *number;
    return Status();
}

Status look_up(Dbptr &db, const char *database, const char *table, const char *field, const char *record)
{
    if (Status done = look_up_database(named(database), db); !done.ok())
        return done;
    Subject subject;
    if (Status found = find_subject(db, Level::Database, "dblookup", subject); !found.ok())
        return found;
    if (Status done = look_up_table(*subject.database, named(table), db); !done.ok())
        return done;
    if (Status done = look_up_field(*subject.database, named(field), db); !done.ok())
        return done;
    return look_up_record(named(record), db);
}

} // namespace

Dbptr dblookup(Dbptr db, const char *database, const char *table, const char *field, const char *record)
{
    const int code =
        guarded("dblookup", [&] { return code_of(look_up(db, database, table, field, record)); });
    return code < 0 ? dbinvalid() : db;
}
