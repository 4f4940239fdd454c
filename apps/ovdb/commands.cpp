#include "commands.h"

#include "options.h"

#include <cstddef>

namespace ovdb {

namespace {

constexpr std::size_t any_number = ~std::size_t{0};

// clang-format off
const Command table[] = {
    {"info", "DB[.TABLE]", for_info, 1, 1, "tell about a database, or about one table of it",
     "Of a database: where it is, its schema, the tables that are present with their\n"
     "records and sizes. Of a table: its file, records, keys and description.\n",
     run_info},
    {"tables", "DB", for_tables, 1, 1, "list the tables that have a file",
     "One line for each table, in schema order: its name, the number of records, the\n"
     "bytes of its file, and what it is for. A table whose file is refused counts as\n"
     "one without records, and standard error says why.\n",
     run_tables},
    {"fields", "DB[.TABLE]", for_fields, 1, 1, "list fields with their types, widths and units",
     "One line for each field of the table, or of all tables of the schema: table,\n"
     "field, type, width, format, null text, units, description.\n",
     run_fields},
    {"select", "DB.TABLE", for_select, 1, 1, "write rows of a table, or of what is derived from it",
     "Operations are applied in the order given, each to what the one before it has\n"
     "made; the rows are written when all are done. An expression that begins with @\n"
     "is read from the file behind it (@- is standard input). The keys of joins are\n"
     "inferred from the schema. DB.VIEW is a view saved beside the database, and - the\n"
     "text of a saved view on standard input.\n"
     "\n"
     "Formats:\n"
     "  text   fields in full width as they stand in the tables, a blank between two:\n"
     "         of a whole table, a copy\n"
     "  csv    trimmed fields between commas, quoted as RFC 4180 has it where needed,\n"
     "         below a line of names; missing values as they stand\n"
     "  tsv    the same between tabs\n"
     "  json   an array with one object a line: numbers as numbers, times as seconds\n"
     "         since 1970, missing values as null, bundles as \"first-end\", bytes that\n"
     "         are no UTF-8 as U+FFFD\n"
     "With --output FILE also:\n"
     "  xlsx   a spreadsheet: numbers, dates, missing values as empty cells\n"
     "  view   a saved view, which 'ovdb select -' and 'ovedit -' read\n"
     "  database\n"
     "         a new database of the records that the rows stand for\n"
     "FILE.txt, .csv, .tsv, .json and .xlsx need no --format. A file that is there is left\n"
     "as it is unless --force is given. The new one gets its name when it is whole.\n",
     run_select},
    {"map", "DB", for_map, 1, 1, "draw the events of a database on a map",
     "Writes a picture (PNG) of coastlines, a graticule and the events of the table origin:\n"
     "discs, larger for larger magnitudes, coloured by depth. Standard error says how many\n"
     "there are, and how many can't be drawn for want of coordinates.\n",
     run_map},
    {"create", "PATH", for_create, 1, 1, "make a new database, with no tables yet",
     "The path is that of its descriptor; a file that is there is never overwritten.\n"
     "Tables get their files when the first record is added.\n",
     run_create},
    {"add", "DB.TABLE", for_add, 1, 1, "add records from the lines of standard input",
     "A value goes to the field that its column is called after; fields without a column\n"
     "become null. The timestamp is set to the present time. The first line that is\n"
     "wrong ends it; what was added before stays, and standard error says how many.\n"
     "\n"
     "Formats:\n"
     "  text   fields in full width, a blank between two: all fields of the table,\n"
     "         those of --fields, or with --header those of the line of names\n"
     "  csv    values between commas, quoted as RFC 4180 has it, below a line of names;\n"
     "         an empty value is null\n"
     "  tsv    the same between tabs\n"
     "  json   one object a line, or an array as 'select' writes it\n",
     run_add},
    {"set", "DB.TABLE FIELD=VALUE...", for_set, 2, any_number, "put values into records",
     "Writes how many records were changed. Values are those of the field's type, NULL\n"
     "is its null; one that does not fit is refused before anything is changed. An\n"
     "expression that begins with @ is read from the file behind it.\n",
     run_set},
    {"mark", "DB.TABLE", for_mark, 1, 1, "mark records to be removed by crunch",
     "Writes how many records were marked. A marked record has nothing but nulls; what\n"
     "it had is gone.\n",
     run_mark},
    {"crunch", "DB.TABLE", for_crunch, 1, 1, "remove the records that are marked",
     "Writes how many were removed. The records behind them get other numbers.\n", run_crunch},
    {"check", "DB[.TABLE]", for_check, 1, 1, "check a database, and repair what loses nothing",
     "Writes a line for each finding: the file and its line, the record, the byte in the\n"
     "file, the field, what stands there, and what is wrong with it. Errors are what a\n"
     "program can stumble over; notes are allowed. Exit status is 3 when there are\n"
     "errors (that were not repaired).\n"
     "\n"
     "--repair takes back a change that was left half done, ends a last line that wants\n"
     "its line feed, puts lines that are no records aside into a file TABLE.damaged-TIME\n"
     "(the table as it was stays in TABLE.before-TIME), and raises counters of ids that\n"
     "are behind. It removes nothing and changes no value.\n",
     run_check},
    {"nextid", "DB ID", for_nextid, 2, 2, "write a new number for an id field, such as orid",
     "It is greater than any in use in the table that defines the id. Where the schema\n"
     "has a table lastid it is kept there, and is not given out again.\n",
     run_nextid},
    {"expr", "[FUNCTION...]", for_expr, 0, any_number, "help on the functions of expressions",
     "", run_expr}, // its help is that of the functions
};
// clang-format on

} // namespace

std::span<const Command> commands()
{
    return table;
}

const Command *find_command(std::string_view name)
{
    for (const Command &command : table)
        if (command.name == name)
            return &command;
    return nullptr;
}

std::vector<std::string_view> command_names()
{
    std::vector<std::string_view> names;
    for (const Command &command : table)
        names.push_back(command.name);
    return names;
}

} // namespace ovdb
