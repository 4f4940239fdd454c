#include "derivations.h"

#include "long_work.h"
#include "name_list.h"
#include "options.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace ovdb {

namespace {

// A file longer than this is no expression that the library would take.
constexpr std::size_t longest_expression_file = 64 << 20;

std::string whole_file(const std::string &path, std::string_view option)
{
    const std::string shown = path == "-" ? "standard input" : path;
    errno = 0;
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(
        path == "-" ? ::fdopen(dup(0), "r") : std::fopen(path.c_str(), "r"),
        [](std::FILE *open) { return open ? std::fclose(open) : 0; });
    std::string text;
    if (file) {
        char buffer[1 << 16];
        while (const std::size_t got = std::fread(buffer, 1, sizeof buffer, file.get())) {
            text.append(buffer, got);
            if (text.size() > longest_expression_file)
                throw Failure(ExitCode::Failed,
                              std::string(option) + ": " + shown + ": too long for an expression");
        }
    }
    stop_if_interrupted();
    if (!file || std::ferror(file.get()))
        throw Failure(ExitCode::Failed, std::string(option) + ": " + shown +
                                            ": cannot read the expression: " + std::strerror(errno));
    if (text.find('\0') != std::string::npos)
        throw Failure(ExitCode::Failed,
                      std::string(option) + ": " + shown + ": holds a zero byte, which no expression has");
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    return text;
}

// The expression itself, or, behind an @, the file that it is in: arguments of a program can't be of any
// length.
std::string expression(const std::string &argument, std::string_view option)
{
    return argument.starts_with('@') ? whole_file(argument.substr(1), option) : argument;
}

Dbptr other_table(const Database &database, const Operation &operation)
{
    const std::string where = std::string(operation.option->name) + " " + operation.arguments[0];
    const Dbptr other = database.table(operation.arguments[0], where);
    check_table(other, where);
    return other;
}

} // namespace

Dbptr subset(const Database &, Dbptr table, const Operation &operation)
{
    const std::string condition = expression(operation.arguments[0], operation.option->name);
    return dbsubset(table, condition.c_str(), nullptr);
}

Dbptr sort(const Database &, Dbptr table, const Operation &operation)
{
    const int flags = (operation.reverse ? dbSORT_REVERSE : 0) | (operation.unique ? dbSORT_UNIQUE : 0);
    return dbsort(table, TextList(name_list(operation.arguments[0], "--sort")), flags, nullptr);
}

Dbptr join(const Database &database, Dbptr table, const Operation &operation)
{
    return dbjoin(table, other_table(database, operation), nullptr, nullptr, 0, nullptr, nullptr);
}

Dbptr outer_join(const Database &database, Dbptr table, const Operation &operation)
{
    return dbjoin(table, other_table(database, operation), nullptr, nullptr, 1, nullptr, nullptr);
}

Dbptr left_join(const Database &database, Dbptr table, const Operation &operation)
{
    return dbjoin(other_table(database, operation), table, nullptr, nullptr, 0, nullptr, nullptr);
}

Dbptr no_join(const Database &database, Dbptr table, const Operation &operation)
{
    return dbnojoin(table, other_table(database, operation), nullptr, nullptr, nullptr);
}

Dbptr theta_join(const Database &database, Dbptr table, const Operation &operation)
{
    const std::string condition = expression(operation.arguments[1], operation.option->name);
    return dbtheta(table, other_table(database, operation), condition.c_str(), nullptr);
}

Dbptr group(const Database &, Dbptr table, const Operation &operation)
{
    return dbgroup(table, TextList(name_list(operation.arguments[0], "--group")), nullptr, 1);
}

Dbptr ungroup(const Database &, Dbptr table, const Operation &)
{
    return dbungroup(table, nullptr);
}

Dbptr sever(const Database &, Dbptr table, const Operation &operation)
{
    return dbsever(table, operation.arguments[0].c_str(), nullptr);
}

Dbptr separate(const Database &, Dbptr table, const Operation &operation)
{
    return dbseparate(table, operation.arguments[0].c_str());
}

void check_table(Dbptr table, std::string_view where)
{
    taken_log();
    number_answer(table, dbRECORD_COUNT);
    const std::int64_t present = number_answer(table, dbTABLE_PRESENT);
    if (elog_count() > 0)
        fail_with_log(where, "");
    if (!present)
        note(std::string(where) + ": there is no file " + text_answer(table, dbTABLE_FILENAME) +
             "; the table counts as empty");
}

Dbptr derived(const Database &database, Dbptr table, const std::vector<Operation> &operations)
{
    for (const Operation &operation : operations) {
        const LongWork work(operation.option->name);
        const Dbptr made = operation.option->derive(database, table, operation);
        if (made.table < 0)
            fail_with_log(operation.option->name, operation.option->remedy);
        pass_on_remarks();
        if (number_answer(table, dbTABLE_IS_VIEW) != 0)
            dbfree(table);
        table = made;
    }
    return table;
}

} // namespace ovdb
