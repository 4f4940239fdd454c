// Every question of dbquery: its answer on a base table, and its failures.
#include "opened.h"
#include "temporary_database.h"
#include "watched_file_system.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>

using namespace orvane;

namespace {

using Texts = std::vector<std::string>;

class QueryTest : public testing::Test
{
protected:
    QueryTest()
    {
        files_.writeFile("quakes", "schema: small\ndbpath: [., ref]\nlocks: none\nidserver: there\n"
                                   "description: a database\ndetail: of a test\n");
        files_.addTable("site", {{"AAK"}, {"NIL"}, {"KBL"}});
        files_.addTable("assoc", {});
        db_ = std::make_unique<Opened>(files_.path());
    }
    ~QueryTest() override { elog_clear(); }

    Dbptr root() const { return db_->pointer; }
    Dbptr site() const { return db_->table("site"); }
    Dbptr lat() const { return db_->field("site", "lat"); }

    TemporaryDatabase files_;
    std::unique_ptr<Opened> db_;
};

// A row for each code: the level that it needs and a sound answer's kind.
enum class Needs { Database, Table, Field };
struct CodeRow {
    int code;
    const char *name;
    Needs needs;
    char kind; // i integer, t text, l list, a array
};
const CodeRow codes[] = {
    {dbTABLE_COUNT, "table count", Needs::Database, 'i'},
    {dbFIELD_COUNT, "field count", Needs::Table, 'i'},
    {dbRECORD_COUNT, "record count", Needs::Table, 'i'},
    {dbSCHEMA_DESCRIPTION, "schema description", Needs::Database, 't'},
    {dbDATABASE_DESCRIPTION, "database description", Needs::Database, 't'},
    {dbTABLE_DESCRIPTION, "table description", Needs::Table, 't'},
    {dbFIELD_DESCRIPTION, "field description", Needs::Field, 't'},
    {dbSCHEMA_DETAIL, "schema detail", Needs::Database, 't'},
    {dbDATABASE_DETAIL, "database detail", Needs::Database, 't'},
    {dbTABLE_DETAIL, "table detail", Needs::Table, 't'},
    {dbFIELD_DETAIL, "field detail", Needs::Field, 't'},
    {dbSCHEMA_NAME, "schema name", Needs::Database, 't'},
    {dbDATABASE_NAME, "database name", Needs::Database, 't'},
    {dbTABLE_NAME, "table name", Needs::Table, 't'},
    {dbFIELD_NAME, "field name", Needs::Field, 't'},
    {dbTABLE_PRESENT, "table present", Needs::Table, 'i'},
    {dbTABLE_SIZE, "table size", Needs::Table, 'i'},
    {dbFIELD_SIZE, "field size", Needs::Field, 'i'},
    {dbFIELD_UNITS, "field units", Needs::Field, 't'},
    {dbFIELD_TYPE, "field type", Needs::Field, 'i'},
    {dbTABLE_FILENAME, "table file name", Needs::Table, 't'},
    {dbDBPATH, "database path", Needs::Database, 't'},
    {dbTABLE_DIRNAME, "table folder name", Needs::Table, 't'},
    {dbPRIMARY_KEY, "primary key", Needs::Table, 'l'},
    {dbALTERNATE_KEY, "alternate key", Needs::Table, 'l'},
    {dbFOREIGN_KEYS, "foreign keys", Needs::Table, 'l'},
    {dbUNIQUE_ID_NAME, "unique id name", Needs::Table, 't'},
    {dbFIELD_RANGE, "field range", Needs::Field, 't'},
    {dbRECORD_SIZE, "record size", Needs::Table, 'i'},
    {dbFIELD_FORMAT, "field format", Needs::Field, 't'},
    {dbFIELD_INDEX, "field index", Needs::Field, 'i'},
    {dbTABLE_FIELDS, "table fields", Needs::Table, 'l'},
    {dbVIEW_TABLES, "view tables", Needs::Table, 'l'},
    {dbLINK_FIELDS, "link fields", Needs::Database, 'a'},
    {dbTABLE_IS_WRITABLE, "table is writable", Needs::Table, 'i'},
    {dbTABLE_IS_VIEW, "table is view", Needs::Table, 'i'},
    {dbFIELD_BASE_TABLE, "field base table", Needs::Field, 't'},
    {dbTIMEDATE_NAME, "timedate name", Needs::Database, 't'},
    {dbDATABASE_FILENAME, "database file name", Needs::Database, 't'},
    {dbSCHEMA_TABLES, "schema tables", Needs::Database, 'l'},
    {dbIDSERVER, "id server", Needs::Database, 't'},
    {dbLOCKS, "locks", Needs::Database, 't'},
    {dbTABLE_CREATION, "table creation", Needs::Table, 't'},
    {dbNULL, "field null", Needs::Field, 't'},
};

// Asks for an answer of any kind and releases it. `null` tells whether the answer was all zero.
int ask(Dbptr db, const CodeRow &row, bool &null)
{
    union {
        int64_t integer;
        const char *text;
        Tbl *list;
        Arr *array;
    } answer;
    answer.integer = -1;
    const int result = dbquery(db, row.code, &answer);
    null = answer.integer == 0;
    if (result == 0 && row.kind == 'l')
        freetbl(answer.list, free);
    if (result == 0 && row.kind == 'a')
        freearr(answer.array, free);
    return result;
}

std::string pointer_text(Dbptr db)
{
    return "[" + std::to_string(db.database) + ", " + std::to_string(db.table) + ", " +
           std::to_string(db.field) + ", " + std::to_string(db.record) + "]";
}

} // namespace

TEST_F(QueryTest, answers_about_the_database)
{
    EXPECT_EQ(integer(root(), dbTABLE_COUNT), 7);
    EXPECT_EQ(text(root(), dbDATABASE_NAME), files_.path());
    EXPECT_EQ(text(root(), dbDATABASE_FILENAME), files_.path());
    EXPECT_EQ(text(root(), dbDATABASE_DESCRIPTION), "a database");
    EXPECT_EQ(text(root(), dbDATABASE_DETAIL), "of a test");
    EXPECT_EQ(text(root(), dbDBPATH), ".:ref");
    EXPECT_EQ(text(root(), dbIDSERVER), "there");
    EXPECT_EQ(text(root(), dbLOCKS), "none");
    EXPECT_EQ(take_log(), "");
}

TEST_F(QueryTest, answers_about_the_schema)
{
    EXPECT_EQ(text(root(), dbSCHEMA_NAME), "small");
    EXPECT_EQ(text(root(), dbSCHEMA_DESCRIPTION), "a small schema");
    EXPECT_EQ(text(root(), dbSCHEMA_DETAIL), "Made for tests:\nevery type, every kind of key.\n");
    EXPECT_EQ(text(root(), dbTIMEDATE_NAME), "lddate");
    EXPECT_EQ(list(root(), dbSCHEMA_TABLES),
              (Texts{"site", "origin", "arrival", "assoc", "event", "remark", "kinds"}));
}

TEST_F(QueryTest, answers_the_tables_that_define_ids_on_any_pointer)
{
    const std::map<std::string, std::string> expected{
        {"orid", "origin"}, {"arid", "arrival"}, {"evid", "event"}, {"commid", "remark"}};
    for (const Dbptr db : {root(), site(), lat()}) {
        Arr *links = nullptr;
        ASSERT_EQ(dbquery(db, dbLINK_FIELDS, &links), 0);
        std::map<std::string, std::string> found;
        Tbl *keys = keysarr(links);
        for (int64_t i = 0; i < maxtbl(keys); ++i) {
            const char *key = static_cast<const char *>(gettbl(keys, i));
            found[key] = static_cast<const char *>(getarr(links, key));
        }
        freetbl(keys, nullptr);
        freearr(links, free);
        EXPECT_EQ(found, expected);
    }
}

TEST_F(QueryTest, answers_about_a_table_with_records)
{
    const int64_t width = 6 + 8 + 8 + 9 + 9 + 9 + 50 + 17 + 8;
    EXPECT_EQ(text(site(), dbTABLE_NAME), "site");
    EXPECT_EQ(integer(site(), dbTABLE_PRESENT), 1);
    EXPECT_EQ(integer(site(), dbTABLE_IS_VIEW), 0);
    EXPECT_EQ(integer(site(), dbFIELD_COUNT), 8);
    EXPECT_EQ(integer(site(), dbRECORD_COUNT), 3);
    EXPECT_EQ(integer(site(), dbRECORD_SIZE), width);
    EXPECT_EQ(integer(site(), dbTABLE_SIZE), 3 * width);
    EXPECT_EQ(static_cast<int64_t>(std::filesystem::file_size(files_.tablePath("site"))), 3 * width);
    EXPECT_EQ(text(site(), dbTABLE_DESCRIPTION), "station locations");
    EXPECT_EQ(text(site(), dbTABLE_DETAIL), "Where stations stand.\n");
    EXPECT_EQ(text(site(), dbTABLE_FILENAME), files_.tablePath("site"));
    EXPECT_EQ(text(site(), dbTABLE_DIRNAME), files_.folder());
    EXPECT_EQ(text(site(), dbTABLE_CREATION), "dbopen site");
    EXPECT_EQ(list(site(), dbTABLE_FIELDS),
              (Texts{"sta", "ondate", "offdate", "lat", "lon", "elev", "staname", "lddate"}));
    EXPECT_EQ(list(site(), dbVIEW_TABLES), Texts{"site"});
    EXPECT_EQ(take_log(), "");
}

TEST_F(QueryTest, answers_about_a_table_without_a_file)
{
    const Dbptr event = db_->table("event");
    EXPECT_EQ(integer(event, dbTABLE_PRESENT), 0);
    EXPECT_EQ(integer(event, dbRECORD_COUNT), 0);
    EXPECT_EQ(integer(event, dbTABLE_SIZE), 0);
    EXPECT_EQ(text(event, dbTABLE_FILENAME), files_.tablePath("event"));
    EXPECT_EQ(text(event, dbTABLE_DIRNAME), files_.folder());
    EXPECT_EQ(take_log(), "");
}

TEST_F(QueryTest, takes_an_empty_file_for_a_table_that_is_present)
{
    EXPECT_EQ(integer(db_->table("assoc"), dbTABLE_PRESENT), 1);
    EXPECT_EQ(integer(db_->table("assoc"), dbRECORD_COUNT), 0);
    EXPECT_EQ(take_log(), "");
}

TEST_F(QueryTest, answers_keys)
{
    EXPECT_EQ(list(site(), dbPRIMARY_KEY), (Texts{"sta", "ondate::offdate"}));
    EXPECT_EQ(list(site(), dbALTERNATE_KEY), Texts{});
    EXPECT_EQ(list(site(), dbFOREIGN_KEYS), Texts{});
    EXPECT_EQ(text(site(), dbUNIQUE_ID_NAME), "");
    const Dbptr origin = db_->table("origin");
    EXPECT_EQ(list(origin, dbPRIMARY_KEY), (Texts{"lat", "lon", "depth", "time"}));
    EXPECT_EQ(list(origin, dbALTERNATE_KEY), Texts{"orid"});
    EXPECT_EQ(list(origin, dbFOREIGN_KEYS), (Texts{"evid", "commid"}));
    EXPECT_EQ(text(origin, dbUNIQUE_ID_NAME), "orid");
}

TEST_F(QueryTest, answers_about_a_field)
{
    EXPECT_EQ(text(lat(), dbFIELD_NAME), "lat");
    EXPECT_EQ(integer(lat(), dbFIELD_TYPE), dbREAL);
    EXPECT_EQ(integer(lat(), dbFIELD_SIZE), 9);
    EXPECT_EQ(integer(lat(), dbFIELD_INDEX), 6 + 8 + 8 + 3);
    EXPECT_EQ(text(lat(), dbFIELD_FORMAT), "%9.4f");
    EXPECT_EQ(text(lat(), dbNULL), "-999.0000");
    EXPECT_EQ(text(lat(), dbFIELD_RANGE), "lat >= -90.0 && lat <= 90.0");
    EXPECT_EQ(text(lat(), dbFIELD_UNITS), "degrees");
    EXPECT_EQ(text(lat(), dbFIELD_DESCRIPTION), "latitude");
    EXPECT_EQ(text(lat(), dbFIELD_DETAIL), "Geographic latitude, north positive.");
    EXPECT_EQ(text(lat(), dbFIELD_BASE_TABLE), "site");
    EXPECT_EQ(text(db_->field("site", "sta"), dbFIELD_UNITS), "");
    EXPECT_EQ(text(db_->field("site", "sta"), dbFIELD_RANGE), "");
}

TEST_F(QueryTest, answers_the_code_of_each_type)
{
    const std::map<std::string, int64_t> expected{
        {"flag", dbBOOLEAN},  {"orid", dbINTEGER}, {"lat", dbREAL},    {"time", dbTIME},
        {"jdate", dbYEARDAY}, {"sta", dbSTRING},   {"bundle", dbDBPTR}};
    for (const auto &[field, type] : expected)
        EXPECT_EQ(integer(db_->field("kinds", field.c_str()), dbFIELD_TYPE), type) << field;
}

TEST_F(QueryTest, keeps_borrowed_texts_until_the_same_question_is_asked_again)
{
    const char *site_file = nullptr, *origin_file = nullptr, *dbpath = nullptr;
    ASSERT_EQ(dbquery(site(), dbTABLE_FILENAME, &site_file), 0);
    ASSERT_EQ(dbquery(db_->table("origin"), dbTABLE_FILENAME, &origin_file), 0);
    ASSERT_EQ(dbquery(root(), dbDBPATH, &dbpath), 0);
    EXPECT_EQ(site_file, files_.tablePath("site"));
    EXPECT_EQ(origin_file, files_.tablePath("origin"));
    EXPECT_STREQ(dbpath, ".:ref");
}

TEST_F(QueryTest, answers_every_code_at_its_level_and_below)
{
    for (const CodeRow &row : codes)
        for (const Dbptr db : {root(), site(), lat()}) {
            const bool enough =
                row.needs == Needs::Database || (row.needs == Needs::Table && db.table >= 0) || db.field >= 0;
            bool null = false;
            elog_clear();
            const int result = ask(db, row, null);
            if (enough) {
                EXPECT_EQ(result, 0) << row.name;
                EXPECT_EQ(take_log(), "") << row.name;
                EXPECT_TRUE(row.kind == 'i' || !null) << row.name;
                continue;
            }
            EXPECT_EQ(result, dbERROR_ARGUMENT) << row.name;
            EXPECT_TRUE(null) << row.name;
            const std::string missing =
                db.table < 0 ? "a table of " + files_.path() : "a field of table site";
            EXPECT_EQ(take_log(), "dbquery: the pointer " + pointer_text(db) + " does not point to " +
                                      missing + " (asked for its " + row.name + ")");
        }
}

TEST_F(QueryTest, fails_for_every_code_on_a_stale_pointer)
{
    Dbptr no_database = lat(), no_table = lat(), no_field = lat();
    no_database.database = 99999;
    no_table.table = 7;
    no_field.field = 8;
    for (const CodeRow &row : codes) {
        bool null = false;
        EXPECT_EQ(ask(dbinvalid(), row, null), dbERROR_STALE) << row.name;
        EXPECT_TRUE(null);
        EXPECT_EQ(ask(no_database, row, null), dbERROR_STALE) << row.name;
        EXPECT_EQ(ask(no_table, row, null), row.needs == Needs::Database ? 0 : dbERROR_STALE) << row.name;
        EXPECT_EQ(ask(no_field, row, null), row.needs == Needs::Field ? dbERROR_STALE : 0) << row.name;
    }
    elog_clear();
    EXPECT_EQ(text(no_table, dbTABLE_NAME), "(failed)");
    EXPECT_EQ(take_log(), "dbquery: the pointer " + pointer_text(no_table) +
                              " points to no table or view of " + files_.path() +
                              " (asked for its table name)");
    EXPECT_EQ(text(no_field, dbFIELD_NAME), "(failed)");
    EXPECT_EQ(take_log(),
              "dbquery: the pointer " + pointer_text(no_field) +
                  " points to no field of table site, which has 8 fields (asked for its field name)");
}

TEST_F(QueryTest, fails_for_an_unknown_code_and_for_no_place)
{
    for (const int code :
         {0, 1, -300, -302, -306, -311, -322, -371, -501, -504, -506, INT32_MIN, INT32_MAX}) {
        int64_t answer = 5;
        elog_clear();
        EXPECT_EQ(dbquery(lat(), code, &answer), dbERROR_ARGUMENT) << code;
        EXPECT_EQ(answer, 0);
        EXPECT_EQ(take_log(), "dbquery: there is no question " + std::to_string(code));
    }
    EXPECT_EQ(dbquery(root(), dbTABLE_COUNT, nullptr), dbERROR_ARGUMENT);
    EXPECT_EQ(take_log(), "dbquery: the place for the answer is null");
}

TEST_F(QueryTest, answers_a_refused_table_as_one_without_records_and_says_why_each_time)
{
    files_.writeFile("quakes.origin", "too short\nfor a record\n");
    const Dbptr origin = db_->table("origin");
    const std::string why =
        files_.tablePath("origin") +
        ":1: a record is 9 bytes wide where table origin of schema small expects " +
        std::to_string(integer(origin, dbRECORD_SIZE) - 1) +
        " (and a line feed); open the file with the schema that it was written for, or mend it";
    elog_clear();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(integer(origin, dbRECORD_COUNT), 0);
        EXPECT_EQ(take_log(), why);
        EXPECT_EQ(integer(origin, dbTABLE_SIZE), 0);
        EXPECT_EQ(take_log(), why);
    }
    EXPECT_EQ(integer(origin, dbTABLE_PRESENT), 1);
    EXPECT_EQ(text(origin, dbTABLE_FILENAME), files_.tablePath("origin"));
    EXPECT_EQ(integer(site(), dbRECORD_COUNT), 3) << "the other tables are as they were";
    EXPECT_EQ(take_log(), "");
}

TEST_F(QueryTest, says_why_a_table_can_not_be_looked_for)
{
    WatchedFileSystem files;
    const ScopedFileSystem scope(files);
    const Opened db(files_.path());
    files.failing_states["quakes.origin"] = EACCES;
    EXPECT_EQ(integer(db.table("origin"), dbTABLE_PRESENT), 0);
    EXPECT_EQ(take_log(), files_.tablePath("origin") +
                              ": cannot look for the file of table origin of schema small: " +
                              files_.tablePath("origin") + ": cannot look at: Permission denied");
}

TEST_F(QueryTest, tells_tables_writable_when_opened_so_and_the_system_allows_it)
{
    EXPECT_EQ(integer(site(), dbTABLE_IS_WRITABLE), 0) << "opened to read";
    WatchedFileSystem files;
    const ScopedFileSystem scope(files);
    const Opened db(files_.path(), "r+");
    EXPECT_EQ(integer(db.table("site"), dbTABLE_IS_WRITABLE), 1);
    EXPECT_EQ(integer(db.table("event"), dbTABLE_IS_WRITABLE), 1) << "the folder is writable";
    files_.writeFile("quakes.origin", "of a wrong width\n");
    EXPECT_EQ(integer(db.table("origin"), dbTABLE_IS_WRITABLE), 0);
    files.writable = false;
    EXPECT_EQ(integer(db.table("site"), dbTABLE_IS_WRITABLE), 0);
    EXPECT_EQ(integer(db.table("event"), dbTABLE_IS_WRITABLE), 0);
}

TEST_F(QueryTest, notices_growth_and_vanishing_of_a_table)
{
    files_.appendRows("site", {{"ABC"}, {"DEF"}});
    EXPECT_EQ(integer(site(), dbRECORD_COUNT), 5);
    std::filesystem::remove(files_.tablePath("site"));
    EXPECT_EQ(integer(site(), dbTABLE_PRESENT), 0);
    EXPECT_EQ(integer(site(), dbRECORD_COUNT), 0);
    EXPECT_EQ(take_log(), "");
}

TEST_F(QueryTest, answers_names_and_counts_without_touching_a_file)
{
    WatchedFileSystem files;
    const ScopedFileSystem scope(files);
    const Opened db(files_.path());
    const Dbptr origin = db.table("origin"), at = db.field("origin", "lat");
    files.forget();
    for (const int code : {dbFIELD_COUNT, dbRECORD_SIZE, dbTABLE_IS_VIEW})
        integer(origin, code);
    for (const int code : {dbTABLE_NAME, dbTABLE_DESCRIPTION, dbTABLE_CREATION})
        text(origin, code);
    for (const int code :
         std::initializer_list<int>{dbFIELD_NAME, dbFIELD_FORMAT, dbNULL, dbFIELD_BASE_TABLE})
        text(at, code);
    EXPECT_EQ(files.all_states(), 0);
}
