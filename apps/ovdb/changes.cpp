#include "changes.h"

namespace ovdb {

Dbptr table_to_change(const Database &database, std::string_view command)
{
    const std::string where = std::string(command) + " " + database.path();
    if (!database.names_table())
        throw Failure(ExitCode::Usage, where + ": no table is named; give " + database.path() +
                                           ".TABLE\n'ovdb tables " + database.path() + "' lists the tables");
    taken_log();
    if (number_answer(database.pointer(), dbTABLE_IS_VIEW) != 0)
        throw Failure(ExitCode::Usage, where + ": this is a saved view; give the table that it is of");
    number_answer(database.pointer(), dbRECORD_COUNT);
    if (elog_count() > 0)
        fail_with_log(where, "");
    return database.pointer();
}

std::string records_text(std::int64_t count)
{
    return std::to_string(count) + (count == 1 ? " record" : " records");
}

bool put_text(Dbptr record, const std::string &field, std::string text)
{
    if (text.find('\0') != std::string::npos) {
        elog_log("field %s: a zero byte is in the text", field.c_str());
        return false;
    }
    DbValue value{};
    value.type = dbSTRING;
    value.text = text.data();
    return dbputv(record, field.c_str(), &value) >= 0;
}

} // namespace ovdb
