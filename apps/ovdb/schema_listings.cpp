#include "schema_listings.h"

#include "commands.h"
#include "formats.h"

namespace ovdb {

namespace {

std::string type_name(std::int64_t type)
{
    struct Row {
        std::int64_t type;
        const char *name; // as in schemas
    };
    static constexpr Row rows[] = {{dbBOOLEAN, "boolean"}, {dbINTEGER, "integer"}, {dbREAL, "real"},
                                   {dbTIME, "time"},       {dbYEARDAY, "yearday"}, {dbSTRING, "string"},
                                   {dbDBPTR, "dbptr"}};
    for (const Row &row : rows)
        if (row.type == type)
            return row.name;
    return std::to_string(type);
}

void add_fields(Dbptr table, Listing &listing)
{
    const std::string table_name = text_answer(table, dbTABLE_NAME);
    const std::int64_t count = number_answer(table, dbFIELD_COUNT);
    for (std::int64_t i = 0; i < count; ++i) {
        Dbptr field = table;
        field.field = i;
        listing.rows.push_back({table_name, text_answer(field, dbFIELD_NAME),
                                type_name(number_answer(field, dbFIELD_TYPE)),
                                number_answer(field, dbFIELD_SIZE), text_answer(field, dbFIELD_FORMAT),
                                text_answer(field, dbNULL), text_answer(field, dbFIELD_UNITS),
                                text_answer(field, dbFIELD_DESCRIPTION)});
    }
}

const Format &format_of(const Request &request)
{
    return request.format ? *request.format : default_format();
}

} // namespace

Listing table_listing(const Database &database, bool all)
{
    Listing listing{{"table", "records", "bytes", "description"}, {}};
    for (const std::string &name : list_answer(database.pointer(), dbSCHEMA_TABLES)) {
        const Dbptr table = database.table(name, "tables");
        const bool present = number_answer(table, dbTABLE_PRESENT) != 0;
        if (present || all)
            listing.rows.push_back({name, number_answer(table, dbRECORD_COUNT),
                                    number_answer(table, dbTABLE_SIZE),
                                    text_answer(table, dbTABLE_DESCRIPTION)});
        pass_on_remarks();
    }
    return listing;
}

Listing field_listing(const Database &database)
{
    Listing listing{{"table", "field", "type", "width", "format", "null", "units", "description"}, {}};
    if (database.names_table())
        add_fields(database.pointer(), listing);
    else
        for (const std::string &name : list_answer(database.pointer(), dbSCHEMA_TABLES))
            add_fields(database.table(name, "fields"), listing);
    return listing;
}

void run_tables(const Request &request)
{
    const Database database(request.operands[0]);
    write_listing(table_listing(database, request.all), format_of(request), request.header.value_or(true),
                  stdout);
}

void run_fields(const Request &request)
{
    const Database database(request.operands[0]);
    write_listing(field_listing(database), format_of(request), request.header.value_or(true), stdout);
}

} // namespace ovdb
