#include "columns.h"

namespace ovdb {

namespace {

Column column_at(Dbptr field, std::string name)
{
    const char *null = nullptr;
    dbquery(field, dbNULL, &null);
    return Column{std::move(name), text_answer(field, dbFIELD_BASE_TABLE), number_answer(field, dbFIELD_TYPE),
                  static_cast<std::size_t>(number_answer(field, dbFIELD_SIZE)), null ? null : ""};
}

} // namespace

std::vector<Column> columns_of(Dbptr table, const std::vector<std::string> &names)
{
    std::vector<Column> columns;
    for (const std::string &name : names) {
        const Dbptr field = dblookup(table, "", "", name.c_str(), "");
        if (field.field < 0)
            fail_with_log("--fields " + name, "'ovdb fields DB.TABLE' lists the fields of a table");
        columns.push_back(column_at(field, name));
    }
    const std::int64_t count = names.empty() ? number_answer(table, dbFIELD_COUNT) : 0;
    for (std::int64_t i = 0; i < count; ++i) {
        Dbptr field = table;
        field.field = i;
        const std::string name = text_answer(field, dbFIELD_NAME);
        const bool first = dblookup(table, "", "", name.c_str(), "").field == i;
        columns.push_back(
            column_at(field, first ? name : text_answer(field, dbFIELD_BASE_TABLE) + "." + name));
    }
    return columns;
}

} // namespace ovdb
