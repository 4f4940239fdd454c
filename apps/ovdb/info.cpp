// ovdb info: what a database, or a table of it, is.
#include "commands.h"
#include "formats.h"
#include "library.h"
#include "schema_listings.h"

#include <cstdio>
#include <cstdlib>

namespace ovdb {

namespace {

void print_line(const char *label, const std::string &value)
{
    if (!value.empty())
        std::printf("%-14s %s\n", label, value.c_str());
}

// A text of several lines, under its label.
void print_detail(const std::string &text)
{
    if (!text.empty())
        std::printf("\n%s%s", text.c_str(), text.back() == '\n' ? "" : "\n");
}

std::string joined(const std::vector<std::string> &names)
{
    std::string text;
    for (const std::string &name : names)
        text.append(text.empty() ? "" : ", ").append(name);
    return text;
}

std::string owned(char *text)
{
    std::string copy = text ? text : "";
    std::free(text);
    return copy;
}

void print_database(Dbptr database)
{
    const std::string name = text_answer(database, dbDATABASE_NAME);
    print_line("database", name);
    print_line("path", owned(abspath(name.c_str())));
    print_line("description", text_answer(database, dbDATABASE_DESCRIPTION));
    print_line("table path", text_answer(database, dbDBPATH));
    print_line("locks", text_answer(database, dbLOCKS));
    print_line("id server", text_answer(database, dbIDSERVER));
    print_line("schema", text_answer(database, dbSCHEMA_NAME));
    print_line("", text_answer(database, dbSCHEMA_DESCRIPTION));
    print_line("timestamp", text_answer(database, dbTIMEDATE_NAME));
    print_detail(text_answer(database, dbDATABASE_DETAIL));
}

void print_table(Dbptr table)
{
    const auto count = [&](int code, const char *unit) {
        return std::to_string(number_answer(table, code)) + unit;
    };
    const bool present = number_answer(table, dbTABLE_PRESENT) != 0;
    const std::string file = text_answer(table, dbTABLE_FILENAME);
    print_line("table", text_answer(table, dbTABLE_NAME));
    print_line("database", text_answer(table, dbDATABASE_NAME));
    print_line("description", text_answer(table, dbTABLE_DESCRIPTION));
    print_line("file", present ? file : file + " (not there)");
    if (present)
        print_line("modified", owned(epoch2str(dfiletime(file.c_str()), "%Y-%m-%d %H:%M:%S UTC")));
    print_line("records", count(dbRECORD_COUNT, ""));
    print_line("size", count(dbTABLE_SIZE, " bytes"));
    print_line("record size", count(dbRECORD_SIZE, " bytes"));
    print_line("fields", count(dbFIELD_COUNT, ""));
    print_line("primary key", joined(list_answer(table, dbPRIMARY_KEY)));
    print_line("alternate key", joined(list_answer(table, dbALTERNATE_KEY)));
    print_line("foreign keys", joined(list_answer(table, dbFOREIGN_KEYS)));
    print_line("defines", text_answer(table, dbUNIQUE_ID_NAME));
    Tbl *joins = nullptr;
    if (dbfind_join_tables(table, &joins) == 0) {
        std::vector<std::string> names;
        for (std::int64_t i = 0; i < maxtbl(joins); ++i)
            names.emplace_back(static_cast<const char *>(gettbl(joins, i)));
        freetbl(joins, std::free);
        print_line("joins", joined(names));
    }
    print_detail(text_answer(table, dbTABLE_DETAIL));
}

} // namespace

void run_info(const Request &request)
{
    const Database database(request.operands[0]);
    if (database.names_table()) {
        print_table(database.pointer());
        return;
    }
    print_database(database.pointer());
    std::printf("\n");
    write_listing(table_listing(database, false), default_format(), true, stdout);
}

} // namespace ovdb
