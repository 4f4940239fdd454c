// dbfind_join_tables and dbfind_join_keys.
#include "door/guard.h"
#include "door/subject.h"
#include "door/text_lists.h"

#include "base/concat.h"
#include "join/key_inference.h"

#include <orvane/db.h>

#include <algorithm>
#include <cstdlib>

using namespace orvane;

namespace {

Status find_join_tables(const Dbptr &db, Tbl **tables)
{
    Subject subject;
    if (Status found = find_subject(db, Level::Table, "dbfind_join_tables", subject); !found.ok())
        return found;
    const Schema &schema = subject.database->schema();
    const auto &members = subject.table->members();
    std::vector<std::string_view> names;
    for (const Relation &relation : schema.relations()) {
        if (std::find(members.begin(), members.end(), &relation) != members.end())
            continue;
        const Relation *const other[] = {&relation};
        if (!infer_join_keys(schema, members, other).empty())
            names.push_back(relation.name);
    }
    *tables = new_text_list(names);
    return Status();
}

Status find_join_keys(const Dbptr &left, const Dbptr &right, Tbl **left_keys, Tbl **right_keys)
{
    Subject on_left, on_right;
    if (Status found = find_subject(left, Level::Table, "dbfind_join_keys", on_left); !found.ok())
        return found;
    if (Status found = find_subject(right, Level::Table, "dbfind_join_keys", on_right); !found.ok())
        return found;
    if (on_left.database != on_right.database)
        return Status(Code::Argument, "dbfind_join_keys: the tables are of different databases");
    const JoinKeys keys =
        infer_join_keys(on_left.database->schema(), on_left.table->members(), on_right.table->members());
    if (keys.empty())
        return Status(Code::NotFound, concat("dbfind_join_keys: there are no keys by which ",
                                             on_left.table->name(), " joins ", on_right.table->name()));
    *left_keys = new_text_list({keys.left.begin(), keys.left.end()});
    try {
        *right_keys = new_text_list({keys.right.begin(), keys.right.end()});
    } catch (...) {
        freetbl(*left_keys, std::free);
        *left_keys = nullptr;
        throw;
    }
    return Status();
}

} // namespace

int dbfind_join_tables(Dbptr db, Tbl **tables)
{
    return guarded("dbfind_join_tables", [&] {
        if (!tables)
            return code_of(Status(Code::Argument, "dbfind_join_tables: the place for the list is null"));
        *tables = nullptr;
        return code_of(find_join_tables(db, tables));
    });
}

int dbfind_join_keys(Dbptr left, Dbptr right, Tbl **left_keys, Tbl **right_keys)
{
    return guarded("dbfind_join_keys", [&] {
        if (!left_keys || !right_keys)
            return code_of(Status(Code::Argument, "dbfind_join_keys: a place for the keys is null"));
        *left_keys = *right_keys = nullptr;
        return code_of(find_join_keys(left, right, left_keys, right_keys));
    });
}
