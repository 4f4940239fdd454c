// ovdb select: rows of a table, or of what is derived from it.
#include "columns.h"
#include "commands.h"
#include "derivations.h"
#include "formats.h"
#include "library.h"
#include "long_work.h"
#include "new_file.h"
#include "output.h"
#include "sheet_rows.h"

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

const Format &format_of(const Request &request)
{
    if (request.format)
        return *request.format;
    if (request.output.empty())
        return default_format();
    const Format *told = format_of_file(request.output);
    if (!told)
        throw Failure(ExitCode::Usage, "--output " + request.output +
                                           ": its extension tells no format; give one with --format");
    return *told;
}

// What goes with what, looked at before anything is done.
void check_output(const Request &request, const Format &format)
{
    const std::string name(format.name);
    const bool has_rows = format.kind != Format::Kind::View && format.kind != Format::Kind::Database;
    if (request.output.empty() && !format.is_stream())
        throw Failure(ExitCode::Usage, "--format " + name + " needs --output FILE");
    if (request.output.empty() && request.force)
        throw Failure(ExitCode::Usage, "--force belongs to --output FILE");
    if (!request.output.empty() && request.count)
        throw Failure(ExitCode::Usage, "--count writes no rows: leave --output out");
    if (!has_rows && (!request.fields.empty() || request.limit || request.header))
        throw Failure(ExitCode::Usage,
                      "--format " + name +
                          " takes the records as they are: --fields, --limit and --header do not "
                          "go with it");
    if (format.kind == Format::Kind::Database && request.force)
        throw Failure(ExitCode::Usage, "--force replaces a file, and no database");
}

void write_database(Dbptr view, const std::string &path)
{
    const LongWork writing("writing");
    if (dbunjoin(view, path.c_str(), 0) < 0)
        fail_with_log("cannot make the database", "");
    pass_on_remarks();
}

void write_view(Dbptr view, NewFile &file)
{
    const LongWork writing("writing");
    if (dbwrite_view(view, file.open()) < 0)
        fail_with_log("cannot write the view", "");
    pass_on_remarks();
}

void write_file(const Rows &rows, const Request &request, const Format &format, bool header)
{
    if (format.kind == Format::Kind::Database)
        return write_database(rows.table, request.output);
    if (format.kind == Format::Kind::Sheet)
        check_sheet_size(rows, header);
    NewFile file(request.output, request.force);
    if (format.kind == Format::Kind::Sheet) {
        const LongWork writing("writing");
        write_sheet(rows, header, file.written_path());
        pass_on_remarks();
    } else if (format.kind == Format::Kind::View) {
        write_view(rows.table, file);
    } else {
        write_rows(rows, format, header, file.open());
    }
    file.put_in_place();
}

} // namespace

void run_select(const Request &request)
{
    const Format &format = format_of(request);
    check_output(request, format);
    const Database database(request.operands[0]);
    const Dbptr view = derived(database, starting_table(database), request.operations);
    columns_of(view, request.fields); // names that are wrong are told before anything is written
    const std::int64_t all = number_answer(view, dbRECORD_COUNT);
    const std::int64_t count = std::min(all, request.limit.value_or(all));
    if (request.count) {
        std::printf("%lld\n", static_cast<long long>(count));
        return;
    }
    const Dbptr rows = count > 0 && count < all ? dbrow_range(view, 0, count) : view;
    const bool header = request.header.value_or(format.has_header);
    if (!request.output.empty())
        return write_file(Rows{rows, count, request.fields}, request, format, header);
    const Output output;
    write_rows(Rows{rows, count, request.fields}, format, header, output.stream());
}

} // namespace ovdb
