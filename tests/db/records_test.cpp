#include "opened.h"
#include "temporary_database.h"
#include "watched_file_system.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <thread>

using namespace orvane;

namespace {

const std::string site_null =
    "-            -1       -1 -999.0000 -999.0000 -999.0000 -" + std::string(49, ' ') + " -9999999999.99900";

class RecordsTest : public testing::Test
{
protected:
    RecordsTest()
    {
        files_.addTable("site", {{"AAK", "2008001", "-1", "42.6390"},
                                 {"NIL", "1994343", "-1", "33.6506"},
                                 {"KBL", "2005001", "-1", "34.5408"}});
        // Flag, orid, lat, time, jdate, sta, bundle, lddate.
        files_.addTable("kinds", {{"1", "7", "42.5", "1517363399.65", "2018031", "AAK"},
                                  {"x", "7.5", "north", "soon", "day", "\xff\xfe", "1 2", "2011/01/31"},
                                  {}});
        db_ = std::make_unique<Opened>(files_.path());
    }
    ~RecordsTest() override { elog_clear(); }

    std::string line(const char *table, int64_t number) const { return get(db_->record(table, number)); }
    std::string cell(const char *table, const char *field, int64_t record) const
    {
        return get(db_->field(table, field, record));
    }
    DbValue value(const char *field, int64_t record, int expected = 0) const
    {
        DbValue found;
        EXPECT_EQ(dbgetv(db_->field("kinds", field, record), nullptr, &found), expected) << take_log();
        return found;
    }
    std::string not_a_value(const char *field, int64_t record) const
    {
        elog_clear();
        const DbValue found = value(field, record, dbERROR_VALUE);
        EXPECT_TRUE(found.type == 0 && found.integer == 0 && found.real == 0 && found.text == nullptr);
        return take_log();
    }

    TemporaryDatabase files_;
    std::unique_ptr<Opened> db_;
};

} // namespace

TEST_F(RecordsTest, hands_out_fields_and_records_as_they_stand)
{
    EXPECT_EQ(cell("site", "sta", 0), "AAK   ");
    EXPECT_EQ(cell("site", "ondate", 1), " 1994343");
    EXPECT_EQ(cell("site", "lat", 2), "  34.5408");
    EXPECT_EQ(line("site", 1), files_.record("site", {"NIL", "1994343", "-1", "33.6506"}));
    EXPECT_EQ(cell("kinds", "sta", 1), "\xff\xfe    ") << "bytes that are no UTF-8 too";
    EXPECT_EQ(take_log(), "");
}

TEST_F(RecordsTest, writes_nothing_into_a_buffer_that_is_too_small)
{
    const Dbptr sta = db_->field("site", "sta", 0);
    char buffer[8] = "xxxxxxx";
    EXPECT_EQ(dbget(sta, buffer, 0), 6);
    EXPECT_EQ(dbget(sta, buffer, 6), 6);
    EXPECT_STREQ(buffer, "xxxxxxx");
    EXPECT_EQ(dbget(sta, buffer, 7), 6);
    EXPECT_STREQ(buffer, "AAK   ");
    EXPECT_EQ(take_log(), "");
}

TEST_F(RecordsTest, has_a_null_record_in_the_form_of_the_file)
{
    EXPECT_EQ(line("site", dbNULL), site_null);
    EXPECT_EQ(cell("site", "sta", dbNULL), "-     ");
    EXPECT_EQ(cell("site", "ondate", dbNULL), "      -1");
    EXPECT_EQ(cell("event", "evid", dbNULL), "      -1") << "of a table without a file too";
}

TEST_F(RecordsTest, has_a_scratch_record_per_table)
{
    EXPECT_EQ(line("site", dbSCRATCH), site_null) << "nulls at first";
    EXPECT_EQ(dbget(db_->record("site", 1), nullptr, 0), static_cast<int64_t>(site_null.size()));
    EXPECT_EQ(line("site", dbSCRATCH), line("site", 1));
    EXPECT_EQ(dbget(db_->field("site", "lat", 2), nullptr, 0), static_cast<int64_t>(site_null.size()));
    EXPECT_EQ(line("site", dbSCRATCH), line("site", 2)) << "the whole record, from a cell too";
    EXPECT_EQ(cell("site", "sta", dbSCRATCH), "KBL   ");
    EXPECT_EQ(dbget(db_->record("site", dbSCRATCH), nullptr, 0), static_cast<int64_t>(site_null.size()));
    EXPECT_EQ(line("site", dbSCRATCH), line("site", 2)) << "onto itself";
    EXPECT_EQ(dbget(db_->record("site", dbNULL), nullptr, 0), static_cast<int64_t>(site_null.size()));
    EXPECT_EQ(line("site", dbSCRATCH), site_null);
    EXPECT_EQ(line("kinds", dbSCRATCH), line("kinds", dbNULL)) << "another table's is its own";
    EXPECT_EQ(take_log(), "");
}

TEST_F(RecordsTest, fails_where_the_pointer_is_at_no_record)
{
    char buffer[256];
    EXPECT_EQ(dbget(db_->table("site"), buffer, sizeof buffer), dbERROR_ARGUMENT);
    EXPECT_NE(take_log().find("does not point to a record of table site"), std::string::npos);
    EXPECT_EQ(dbget(db_->table("site"), nullptr, 0), dbERROR_ARGUMENT);
    EXPECT_EQ(dbget(db_->field("site", "lat", dbALL), buffer, sizeof buffer), dbERROR_ARGUMENT);
    EXPECT_EQ(dbget(db_->record("site", -7), buffer, sizeof buffer), dbERROR_ARGUMENT);
    EXPECT_EQ(dbget(db_->pointer, buffer, sizeof buffer), dbERROR_ARGUMENT);
    EXPECT_EQ(dbget(dbinvalid(), buffer, sizeof buffer), dbERROR_STALE);
    Dbptr no_field = db_->record("site", 0);
    no_field.field = 8;
    EXPECT_EQ(dbget(no_field, buffer, sizeof buffer), dbERROR_STALE);
    no_field.field = dbNULL;
    EXPECT_EQ(dbget(no_field, buffer, sizeof buffer), dbERROR_ARGUMENT);
}

TEST_F(RecordsTest, fails_for_a_record_that_is_not_there)
{
    elog_clear();
    EXPECT_EQ(line("site", 3), "(-3)");
    EXPECT_EQ(take_log(), files_.tablePath("site") + ": record 3 is not there: the file has 3 records");
    EXPECT_EQ(cell("event", "evid", 0), "(-3)");
    EXPECT_EQ(take_log(), files_.tablePath("event") + ": record 0 is not there: there is no such file");
    EXPECT_EQ(line("site", INT64_MAX), "(-3)");
}

TEST_F(RecordsTest, gives_values_by_their_types)
{
    EXPECT_EQ(value("flag", 0).type, dbBOOLEAN);
    EXPECT_EQ(value("flag", 0).integer, 1);
    EXPECT_EQ(value("orid", 0).type, dbINTEGER);
    EXPECT_EQ(value("orid", 0).integer, 7);
    EXPECT_EQ(value("lat", 0).type, dbREAL);
    EXPECT_EQ(value("lat", 0).real, 42.5);
    EXPECT_EQ(value("time", 0).type, dbTIME);
    EXPECT_EQ(value("time", 0).real, 1517363399.65);
    EXPECT_EQ(value("lddate", 1).real, 1296432000.0) << "a date in words";
    EXPECT_EQ(value("jdate", 0).type, dbYEARDAY);
    EXPECT_EQ(value("jdate", 0).integer, 2018031);
    for (const auto &[record, expected] : {std::pair(0, "AAK"), {1, "\xff\xfe"}, {2, "-"}}) {
        const DbValue sta = value("sta", record);
        EXPECT_EQ(sta.type, dbSTRING);
        EXPECT_STREQ(sta.text, expected);
        free(sta.text);
    }
    EXPECT_EQ(take_log(), "");
}

TEST_F(RecordsTest, gives_nulls_as_the_values_they_are_stored_as)
{
    EXPECT_EQ(value("flag", 2).integer, -1);
    EXPECT_EQ(value("orid", 2).integer, -1);
    EXPECT_EQ(value("lat", 2).real, -999.0);
    EXPECT_EQ(value("time", dbNULL).real, -9999999999.999);
    EXPECT_EQ(value("bundle", 2).type, dbDBPTR);
    EXPECT_EQ(value("bundle", 2).dbptr.database, dbINVALID);
}

TEST_F(RecordsTest, names_file_record_field_and_text_that_is_no_value)
{
    const std::string start = "dbgetv: " + files_.tablePath("kinds") + ": record 1, field ";
    EXPECT_EQ(not_a_value("flag", 1), start + "flag: ' x' is not a value of type boolean");
    EXPECT_EQ(not_a_value("orid", 1), start + "orid: '     7.5' is not a value of type integer");
    EXPECT_EQ(not_a_value("lat", 1), start + "lat: '    north' is not a value of type real");
    EXPECT_EQ(not_a_value("time", 1), start + "time: '             soon' is not a value of type time");
    EXPECT_EQ(not_a_value("jdate", 1), start + "jdate: '     day' is not a value of type yearday");
    EXPECT_NE(not_a_value("bundle", 1).find("is not a value of type dbptr"), std::string::npos);
}

TEST_F(RecordsTest, gives_the_value_of_a_field_that_is_named)
{
    DbValue found;
    ASSERT_EQ(dbgetv(db_->record("kinds", 0), "orid", &found), 0);
    EXPECT_EQ(found.integer, 7);
    ASSERT_EQ(dbgetv(db_->field("kinds", "lat", 0), "kinds.orid", &found), 0) << "also on another field";
    EXPECT_EQ(found.integer, 7);
    elog_clear();
    EXPECT_EQ(dbgetv(db_->record("kinds", 0), "oridd", &found), dbERROR_NOT_FOUND);
    EXPECT_EQ(take_log(), "dbgetv: no field 'oridd' in table kinds");
    EXPECT_EQ(dbgetv(db_->record("kinds", 0), nullptr, &found), dbERROR_ARGUMENT) << "points to no field";
    EXPECT_EQ(dbgetv(db_->record("kinds", 3), "orid", &found), dbERROR_NOT_FOUND);
    EXPECT_EQ(dbgetv(db_->table("kinds"), "orid", &found), dbERROR_ARGUMENT);
    EXPECT_EQ(dbgetv(db_->record("kinds", 0), "orid", nullptr), dbERROR_ARGUMENT);
}

TEST_F(RecordsTest, takes_numbers_from_elsewhere_as_they_are)
{
    std::string record = files_.record("kinds", {"1", "7", "42.5", "1517363399.65"});
    record.replace(record.find("       7"), 8, "7       ");
    record.replace(record.find("     42.5"), 9, "42       ");
    files_.writeFile("quakes.kinds", record + "\n");
    EXPECT_EQ(value("orid", 0).integer, 7);
    EXPECT_EQ(value("lat", 0).real, 42.0);
    EXPECT_EQ(cell("kinds", "lat", 0), "42       ");
}

TEST_F(RecordsTest, answers_the_range_that_a_pointer_stands_for)
{
    int64_t first = -1, end = -1;
    ASSERT_EQ(dbget_range(db_->table("site"), &first, &end), 0);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(end, 3);
    ASSERT_EQ(dbget_range(db_->field("site", "lat", 1), &first, &end), 0);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(end, 2);
    ASSERT_EQ(dbget_range(db_->table("event"), &first, &end), 0);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(end, 0);
    EXPECT_EQ(take_log(), "");
}

TEST_F(RecordsTest, has_no_range_for_what_has_no_number)
{
    int64_t first = -1, end = -1;
    for (const int64_t record : {int64_t{dbNULL}, int64_t{dbSCRATCH}, int64_t{-1}})
        EXPECT_EQ(dbget_range(db_->record("site", record), &first, &end), dbERROR_ARGUMENT);
    EXPECT_EQ(dbget_range(db_->record("site", 3), &first, &end), dbERROR_NOT_FOUND);
    EXPECT_EQ(dbget_range(db_->pointer, &first, &end), dbERROR_ARGUMENT);
    EXPECT_EQ(dbget_range(dbinvalid(), &first, &end), dbERROR_STALE);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(end, 0);
    EXPECT_EQ(dbget_range(db_->table("site"), nullptr, &end), dbERROR_ARGUMENT);
}

TEST_F(RecordsTest, of_a_refused_table_are_an_error_with_the_reason)
{
    files_.writeFile("quakes.origin", "too short\n");
    elog_clear();
    EXPECT_EQ(line("origin", 0), "(-4)");
    EXPECT_EQ(take_log().find(files_.tablePath("origin") + ":1: a record is 9 bytes wide"), 0u);
    EXPECT_EQ(line("origin", dbNULL).substr(0, 9), "-999.0000") << "its special records are there";
}

TEST_F(RecordsTest, are_an_error_once_the_file_is_cut_short_and_never_a_crash)
{
    ASSERT_EQ(cell("site", "sta", 2), "KBL   ");
    std::filesystem::resize_file(files_.tablePath("site"), site_null.size() + 10);
    std::this_thread::sleep_for(std::chrono::milliseconds(130));
    elog_clear();
    EXPECT_EQ(cell("site", "sta", 2), "(-3)");
    EXPECT_EQ(take_log(), files_.tablePath("site") + ": record 2 is not there: the file has 1 record");
    EXPECT_EQ(cell("site", "sta", 0), "AAK   ");
}

TEST_F(RecordsTest, ask_the_system_nothing_for_cells_of_a_block_that_is_read)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(60)); // the file's time is then final
    WatchedFileSystem files;
    const ScopedFileSystem scope(files);
    const Opened db(files_.path());
    Dbptr at = db.field("site", "lat", 0);
    ASSERT_EQ(get(at), "  42.6390");
    files.forget();
    for (int i = 0; i < 2000; ++i) {
        at.record = i % 3;
        ASSERT_EQ(get(at).size(), 9u);
    }
    EXPECT_EQ(files.reads("quakes.site"), 0);
    EXPECT_LE(files.all_states(), 3) << "one look each tenth of a second";
}
