// ovdb set, mark, crunch: changes of the records for which an expression is true.
#include "changes.h"
#include "commands.h"
#include "derivations.h"
#include "long_work.h"

#include <cstdio>
#include <functional>
#include <numeric>

namespace ovdb {

namespace {

// The numbers of the records that --where keeps.
std::vector<std::int64_t> records_where(const Database &database, Dbptr table, const Request &request)
{
    const std::string where = std::string(request.command->name) + " " + database.path();
    if (request.operations.empty())
        throw Failure(ExitCode::Usage,
                      where + ": --where E is missing; it says which records are meant, --where 1==1 all");
    check_table(table, where);
    const Dbptr view = derived(database, table, request.operations);
    std::vector<std::int64_t> rows(static_cast<std::size_t>(number_answer(view, dbRECORD_COUNT)));
    std::iota(rows.begin(), rows.end(), std::int64_t{0});
    std::vector<std::int64_t> records(rows.size());
    if (dbfind_rows(view, table, rows.data(), rows.size(), records.data()) < 0)
        fail_with_log(where, "");
    return records;
}

// Changes one record after the other, and prints how many there were, "changed 3 records"; the change answers
// false with the reason in the error log. Where one fails those before it stay changed, and the message says
// how many.
void change_each(Dbptr table, const std::vector<std::int64_t> &records, const std::string &done,
                 const std::function<bool(Dbptr)> &change)
{
    const LongWork work(done);
    std::int64_t count = 0;
    try {
        for (const std::int64_t number : records) {
            stop_if_interrupted();
            Dbptr record = table;
            record.record = number;
            if (!change(record))
                fail_with_log("record " + std::to_string(number), "");
            ++count;
            dbreport_progress(done.c_str(), static_cast<double>(count) / static_cast<double>(records.size()));
        }
    } catch (const Failure &failure) {
        throw Failure(failure.code(),
                      std::string(failure.what()) + "\n" + done + " " + records_text(count) + " before that");
    }
    pass_on_remarks();
    std::printf("%s %s\n", done.c_str(), records_text(count).c_str());
}

struct Assignment {
    std::string field;
    std::string text;
};

// "FIELD=VALUE"; NULL stands for the field's null.
Assignment assignment(Dbptr table, const std::string &operand)
{
    const auto equals = operand.find('=');
    if (equals == std::string::npos || equals == 0)
        throw Failure(ExitCode::Usage, "set: '" + operand + "' is no FIELD=VALUE");
    Assignment made{operand.substr(0, equals), operand.substr(equals + 1)};
    const Dbptr field = dblookup(table, "", "", made.field.c_str(), "");
    if (field.field < 0)
        fail_with_log("set " + made.field, "'ovdb fields DB.TABLE' lists the fields of a table");
    if (made.text == "NULL")
        made.text = text_answer(field, dbNULL);
    return made;
}

} // namespace

void run_set(const Request &request)
{
    const Database database(request.operands[0], Database::Access::Change);
    const Dbptr table = table_to_change(database, "set");
    std::vector<Assignment> assignments;
    for (std::size_t i = 1; i < request.operands.size(); ++i)
        assignments.push_back(assignment(table, request.operands[i]));
    const auto put_all = [&](Dbptr record) {
        for (const Assignment &one : assignments)
            if (!put_text(record, one.field, one.text))
                return false;
        return true;
    };
    // A value that does not fit is told before anything is changed.
    Dbptr scratch = table;
    scratch.record = dbSCRATCH;
    if (!put_all(scratch))
        fail_with_log("set " + database.path(), "");
    change_each(table, records_where(database, table, request), "changed", put_all);
}

void run_mark(const Request &request)
{
    const Database database(request.operands[0], Database::Access::Change);
    const Dbptr table = table_to_change(database, "mark");
    change_each(table, records_where(database, table, request), "marked",
                [](Dbptr record) { return dbmark(record) >= 0; });
}

void run_crunch(const Request &request)
{
    const Database database(request.operands[0], Database::Access::Change);
    const Dbptr table = table_to_change(database, "crunch");
    check_table(table, "crunch " + database.path());
    if (number_answer(table, dbTABLE_PRESENT) == 0) {
        std::printf("removed %s\n", records_text(0).c_str());
        return;
    }
    const LongWork work("crunching");
    const std::int64_t before = number_answer(table, dbRECORD_COUNT);
    if (dbcrunch(table) < 0)
        fail_with_log("crunch " + database.path(), "");
    pass_on_remarks();
    std::printf("removed %s\n", records_text(before - number_answer(table, dbRECORD_COUNT)).c_str());
}

} // namespace ovdb
