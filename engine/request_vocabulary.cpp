#include "request_vocabulary.h"

#include <QHash>

#include <orvane/db.h>

#include "request_handlers.h"

namespace {

constexpr RequestRow query(const char *name, RequestHandler answer, int code,
                           PointerLevel level = PointerLevel::Any, const char *failure = nullptr)
{
    return {.name = name, .handler = answer, .level = level, .queryCode = code, .failure = failure};
}

constexpr RequestRow names(const char *name, int code, const char *failure)
{
    return query(name, requests::queryNames, code, PointerLevel::Any, failure);
}

constexpr RequestRow plain(const char *name, RequestHandler handler)
{
    return {.name = name, .handler = handler};
}

// A view of the table pointed to, or an answer about its rows. `failure` is null where the library's answer
// is not tested.
constexpr RequestRow view(const char *name, RequestHandler handler, CheckOrder order, int argumentCount,
                          const char *expected, const char *failure = nullptr)
{
    return {.name = name,
            .handler = handler,
            .level = PointerLevel::Table,
            .argumentCount = argumentCount,
            .expected = expected,
            .order = order,
            .failure = failure};
}

constexpr RequestRow addition(const char *name, RequestHandler handler, const char *failure)
{
    return {
        .name = name, .handler = handler, .argumentCount = 1, .expected = "one (row)", .failure = failure};
}

constexpr RequestRow change(const char *name, RequestHandler handler, const char *failure)
{
    return {.name = name, .handler = handler, .failure = failure};
}

using enum PointerLevel;
using enum CheckOrder;
using namespace requests;

const char *const TablesFailed = "dbquery failed for dbSCHEMA_TABLES";

// The whole vocabulary. A new request is a new row, and a handler where no query answers it.
const RequestRow rows[] = {
    {"open_database", openDatabase, NoHandle, 2, "two (databaseName, permissions)"},

    query("database_name", queryText, dbDATABASE_NAME),
    query("database_filename", queryText, dbDATABASE_FILENAME),
    query("table_name", queryText, dbTABLE_NAME, Table, "Dbquery failed"),
    query("table_present", queryFlag, dbTABLE_PRESENT, Table),
    query("table_is_view", queryFlag, dbTABLE_IS_VIEW, Table),
    query("table_is_writable", queryFlag, dbTABLE_IS_WRITABLE, Table),
    query("field_null", queryText, dbNULL, Field),
    query("field_type", queryNumber, dbFIELD_TYPE, Field),
    query("field_name", queryText, dbFIELD_NAME, Field),
    query("field_base_table", queryText, dbFIELD_BASE_TABLE, Field),
    query("schema_name", queryText, dbSCHEMA_NAME),
    query("schema_description", queryText, dbSCHEMA_DESCRIPTION),
    query("database_description", queryText, dbDATABASE_DESCRIPTION),
    query("table_description", queryText, dbTABLE_DESCRIPTION),
    query("field_description", queryText, dbFIELD_DESCRIPTION),
    query("schema_detail", queryText, dbSCHEMA_DETAIL),
    query("database_detail", queryText, dbDATABASE_DETAIL),
    query("table_detail", queryText, dbTABLE_DETAIL),
    query("field_detail", queryText, dbFIELD_DETAIL),
    query("field_range", queryText, dbFIELD_RANGE),
    query("field_format", queryText, dbFIELD_FORMAT),
    query("field_units", queryText, dbFIELD_UNITS),
    query("table_filename", queryText, dbTABLE_FILENAME),
    query("table_dirname", queryText, dbTABLE_DIRNAME),
    query("dbpath", queryText, dbDBPATH),
    query("table_creation", queryText, dbTABLE_CREATION),
    query("unique_id_name", queryText, dbUNIQUE_ID_NAME),
    query("timedate_name", queryText, dbTIMEDATE_NAME),
    query("dbidserver", queryText, dbIDSERVER),
    query("dblocks", queryText, dbLOCKS),
    plain("database_abspath", databaseAbspath),
    query("table_count", queryNumber, dbTABLE_COUNT),
    plain("table_modtime", tableModTime),
    plain("table_modtimes", tableModTimes),
    query("field_count", queryNumber, dbFIELD_COUNT, Table),
    query("record_count", queryNumber, dbRECORD_COUNT, Table),
    query("table_size", queryNumber, dbTABLE_SIZE, Table),
    query("field_size", queryNumber, dbFIELD_SIZE, Field),
    query("record_size", queryNumber, dbRECORD_SIZE, Table),
    query("field_index", queryNumber, dbFIELD_INDEX, Table),

    {"lookup_table", lookupTable, Any, 1, "one (table name or number)"},
    {"lookup_field", lookupField, Table, 1, "one (field name or number)"},
    {"lookup_record", lookupRecord, Table, 1, "one (record name or number)"},

    plain("dbsample", sampleField),
    names("schema_tables", dbSCHEMA_TABLES, TablesFailed),
    names("view_tables", dbVIEW_TABLES, "dbquery failed for dbVIEW_TABLES"),
    plain("table_fields", tableFields),
    query("base_tables_present", baseTablesPresent, dbSCHEMA_TABLES, Any, TablesFailed),
    query("base_tables_absent", baseTablesAbsent, dbSCHEMA_TABLES, Any, TablesFailed),
    query("views_present", viewsPresent, dbSCHEMA_TABLES, Any, TablesFailed),
    plain("find_join_tables", findJoinTables),
    plain("find_join_tables_present", findJoinTablesPresent),
    query("link_fields", linkFields, dbLINK_FIELDS, Any, "dbquery failed for dbLINK_FIELDS"),
    names("primary_key", dbPRIMARY_KEY, "dbquery failed for dbPRIMARY_KEY"),
    names("alternate_key", dbALTERNATE_KEY, "dbquery failed for dbALTERNATE_KEY"),
    names("foreign_keys", dbFOREIGN_KEYS, "dbquery failed for dbFOREIGN_KEYS"),

    view("sort", sortRows, PointerFirst, 4, "four (list of fields, reverse flag, unique flag, view name)"),
    view("group", groupRows, PointerFirst, 2, "two (list of fields, view name)"),
    view("ungroup", ungroupRows, PointerFirst, 1, "one (view name)"),
    view("subset", subsetRows, PointerFirst, 2, "two (subset expression, view name)"),
    view("join_table", joinTable, CountFirst, 2, "two (name of table to join, view name)", "Join failed"),
    view("outer_join_table", outerJoinTable, CountFirst, 2, "two (name of table to outer-join, view name)",
         "Outer-join failed"),
    view("left_join_table", leftJoinTable, CountFirst, 2, "two (name of table to join, view name)",
         "Left-join failed"),
    view("no_join_table", noJoinTable, CountFirst, 2, "two (name of table to join, view name)",
         "Join failed"),
    view("theta_join_table", thetaJoinTable, CountFirst, 3,
         "three (name of table to join, join expression, view name)", "Theta-join failed"),
    view("sever_table", severTable, CountFirst, 2, "two (name of table to sever, view name)", "Sever failed"),
    view("separate_table", separateTable, CountFirst, 2, "two (name of table to separate, view name)",
         "Separate failed"),

    {"dbget", getText, Any, 1, "one (scratch-flag)"},
    {"dbgetv", getValues, Any, 1, "one (list of fields to get)"},
    {.name = "dbputv",
     .handler = putValues,
     .argumentCount = 1,
     .expected = "one (hash of fields to add)",
     .failure = "dbputv failed"},
    addition("dbadd", addRecord, "dbadd failed"),
    addition("dbaddchk", addCheckedRecord, "dbaddchk failed"),
    {"dbfind", findRecord, Table, 2, "two (expression, backwards-flag)"},
    plain("table_state", tableState),
    view("moved_records", movedRecords, PointerFirst, 2, "two (numbering, list of record numbers)",
         "dbmoved_records error"),
    view("find_rows", findRows, PointerFirst, 2, "two (name of table to find them in, list of row numbers)",
         "dbfind_rows error"),
    change("dbmark", markRecord, "dbmark error"),
    {.name = "put_rows",
     .handler = putRows,
     .level = Field,
     .argumentCount = 3,
     .expected = "three (field, value, list of first and last rows)",
     .order = CountFirst,
     .failure = "dbputv_rows failed"},
    {.name = "mark_rows",
     .handler = markRows,
     .level = Table,
     .argumentCount = 1,
     .expected = "one (list of first and last rows)",
     .order = CountFirst,
     .failure = "dbmark_rows failed"},
    change("dbcrunch", crunchTable, "dbcrunch error"),
    change("dbfree", freeView, "dbfree error"),

    plain("close_database", closeDatabase),
};

QHash<QString, const RequestRow *> rowsByName()
{
    QHash<QString, const RequestRow *> byName;
    byName.reserve(static_cast<int>(std::size(rows)));
    for (const RequestRow &row : rows)
        byName.insert(QLatin1String(row.name), &row);
    return byName;
}

} // namespace

const RequestRow *findRequest(const QString &name)
{
    static const QHash<QString, const RequestRow *> byName = rowsByName();
    return byName.value(name);
}
