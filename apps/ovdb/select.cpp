// ovdb select: rows of a table, or of what is derived from it.
#include "columns.h"
#include "commands.h"
#include "derivations.h"
#include "formats.h"
#include "library.h"
#include "output.h"

#include <algorithm>
#include <cstdio>

namespace ovdb {

namespace {

Dbptr starting_table(const Database &database)
{
    if (!database.names_table())
        throw Failure(ExitCode::Usage, "select " + database.path() + ": no table is named; give " +
                                           database.path() + ".TABLE\n'ovdb tables " + database.path() +
                                           "' lists the tables");
    check_table(database.pointer(), "select " + database.path());
    return database.pointer();
}

} // namespace

void run_select(const Request &request)
{
    const Database database(request.operands[0]);
    const Dbptr view = derived(database, starting_table(database), request.operations);
    columns_of(view, request.fields); // names that are wrong are told before anything is written
    const std::int64_t all = number_answer(view, dbRECORD_COUNT);
    const std::int64_t count = std::min(all, request.limit.value_or(all));
    if (request.count) {
        std::printf("%lld\n", static_cast<long long>(count));
        return;
    }
    const Format &format = request.format ? *request.format : default_format();
    const Dbptr rows = count > 0 && count < all ? dbrow_range(view, 0, count) : view;
    const Output output;
    write_rows(Rows{rows, count, request.fields}, format, request.header.value_or(format.has_header),
               output.stream());
}

} // namespace ovdb
