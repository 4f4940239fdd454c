// dbadd, dbaddchk and dbnextid.
#include "edited.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

// What this process has read of files so far, as the system counts it.
int64_t bytes_read()
{
    std::ifstream counters("/proc/self/io");
    std::string name;
    int64_t bytes = -1;
    while (counters >> name >> bytes && name != "rchar:") {
    }
    return bytes;
}

class Adding : public testing::Test
{
protected:
    int64_t add(const char *table, const TemporaryDatabase::Row &row)
    {
        return dbadd(opened_.table(table), files_.record(table, row).c_str());
    }
    int64_t add_checked(const char *table, const TemporaryDatabase::Row &row)
    {
        return dbaddchk(opened_.table(table), files_.record(table, row).c_str());
    }
    std::string bytes(const char *table) { return TemporaryDatabase::readFile(files_.tablePath(table)); }

    TemporaryDatabase files_;
    Opened opened_{files_.path(), "r+"};
};

} // namespace

TEST_F(Adding, makes_the_file_and_answers_the_number)
{
    EXPECT_EQ(integer(opened_.table("event"), dbTABLE_IS_WRITABLE), 1);
    EXPECT_EQ(integer(opened_.table("event"), dbTABLE_PRESENT), 0);
    EXPECT_EQ(add("event", {"1", "10", "me"}), 0);
    EXPECT_EQ(add("event", {"2", "20", "you"}), 1);
    EXPECT_EQ(take_log(), "");
    EXPECT_EQ(column_of(opened_.table("event"), "evid"), (Texts{"1", "2"}));
    EXPECT_EQ(integer(opened_.table("event"), dbTABLE_PRESENT), 1);
    const std::string expected = files_.record("event", {"1", "10", "me"});
    EXPECT_EQ(bytes("event").substr(0, 30), expected.substr(0, 30));
    EXPECT_EQ(bytes("event").size(), 2 * (expected.size() + 1));
    EXPECT_NE(trim(get(opened_.field("event", "lddate", 0))), "-9999999999.99900");
}

TEST_F(Adding, takes_the_scratch_record)
{
    EXPECT_EQ(put(opened_.record("event", dbSCRATCH), "evid", "5"), 0);
    EXPECT_EQ(dbadd(opened_.table("event"), nullptr), 0);
    EXPECT_EQ(dbadd(opened_.table("event"), nullptr), 1);
    EXPECT_EQ(column_of(opened_.table("event"), "evid"), (Texts{"5", "5"}));
    EXPECT_EQ(trim(get(opened_.field("event", "lddate", dbSCRATCH))), "-9999999999.99900");
    // A record can be taken to scratch, changed and added.
    EXPECT_GT(dbget(opened_.record("event", 1), nullptr, 0), 0);
    EXPECT_EQ(put(opened_.record("event", dbSCRATCH), "prefor", "7"), 0);
    EXPECT_EQ(dbadd(opened_.table("event"), nullptr), 2);
    EXPECT_EQ(column_of(opened_.table("event"), "prefor"), (Texts{"-1", "-1", "7"}));
}

TEST_F(Adding, takes_the_scratch_record_that_was_filled_through_a_view_of_the_table)
{
    ASSERT_EQ(add("event", {"2", "20", "me"}), 0);
    ASSERT_EQ(add("event", {"1", "10", "you"}), 1);
    Tbl *keys = newtbl(1);
    char evid[] = "evid";
    pushtbl(keys, evid);
    Dbptr sorted = dbsort(opened_.table("event"), keys, 0, nullptr);
    freetbl(keys, nullptr);
    ASSERT_GE(sorted.table, 0) << take_log();
    // What the table's own scratch record has shows in the view.
    EXPECT_EQ(put(opened_.record("event", dbSCRATCH), "auth", "them"), 0);
    sorted.record = dbSCRATCH;
    EXPECT_EQ(get(sorted), get(opened_.record("event", dbSCRATCH)));
    // And the other way round.
    EXPECT_EQ(put(sorted, "evid", "3"), 0) << take_log();
    EXPECT_EQ(put(sorted, "evid", "0"), dbERROR_VALUE);
    EXPECT_NE(take_log().find("scratch record, field evid: the value is out of range"), std::string::npos);
    EXPECT_EQ(trim(get(opened_.field("event", "evid", dbSCRATCH))), "3");
    EXPECT_EQ(dbaddchk(opened_.table("event"), nullptr), 2);
    EXPECT_EQ(column_of(opened_.table("event"), "auth"), (Texts{"me", "you", "them"}));
    // A row of the view is taken to it.
    sorted.record = 0;
    EXPECT_GT(dbget(sorted, nullptr, 0), 0) << take_log();
    EXPECT_EQ(trim(get(opened_.field("event", "auth", dbSCRATCH))), "you");
    // The null record is none of them.
    sorted.record = dbNULL;
    EXPECT_EQ(get(sorted), get(opened_.record("event", dbNULL)));
}

TEST_F(Adding, leaves_the_scratch_records_of_the_tables_of_a_join_alone)
{
    ASSERT_EQ(add("event", {"2", "20", "me"}), 0);
    Dbptr joined = dbtheta(opened_.table("event"), opened_.table("origin"), "evid == orid", "pairs");
    ASSERT_GE(joined.table, 0) << take_log();
    EXPECT_EQ(put(opened_.record("event", dbSCRATCH), "evid", "3"), 0);
    joined.record = dbSCRATCH;
    EXPECT_LT(put(joined, "evid", "4"), 0);
    EXPECT_NE(take_log().find("view pairs has no scratch record of its own"), std::string::npos);
    const std::string scratch = get(joined);
    joined.record = dbNULL;
    EXPECT_EQ(scratch, get(joined));
    EXPECT_EQ(trim(get(opened_.field("event", "evid", dbSCRATCH))), "3");
}

TEST_F(Adding, refuses_a_record_of_nothing_but_nulls)
{
    EXPECT_EQ(dbadd(opened_.table("event"), nullptr), dbERROR_VALUE);
    EXPECT_NE(take_log().find("nothing but nulls"), std::string::npos);
    EXPECT_EQ(add("event", {"-1", "-1", "-", "12345.00000"}), dbERROR_VALUE); // the timestamp doesn't count
    EXPECT_EQ(add("origin", {"-999", "-999.0"}), dbERROR_VALUE);              // nor decimals
    take_log();
    EXPECT_FALSE(std::filesystem::exists(files_.tablePath("event")));
}

TEST_F(Adding, checks_a_record_field_by_field)
{
    ASSERT_EQ(add("origin", {"1.0", "2.0"}), 0);
    const std::string before = bytes("origin");
    const std::string good = files_.record("origin", {"1.0", "2.0"});
    const auto refused = [&](const std::string &record, const char *why) {
        EXPECT_EQ(dbadd(opened_.table("origin"), record.c_str()), dbERROR_VALUE) << why;
        const std::string log = take_log();
        EXPECT_NE(log.find(why), std::string::npos) << log;
        EXPECT_EQ(bytes("origin"), before) << why;
    };
    refused(good.substr(1), "bytes long where");
    refused(good + " ", "bytes long where");
    refused(good.substr(0, 9) + "x" + good.substr(10), "no blank at byte 9, behind field lat");
    refused(files_.record("origin", {"91.0"}), "field lat: the value is out of range");
    refused(files_.record("origin", {"abc"}), "field lat: '      abc' is not a number");
    refused(files_.record("origin", {"1.0", "2.0", "3", "4", "5", "6", "7", "a\tb"}), "control character");
    refused(files_.record("origin", {"1.0", "2.0", "3", "4", "5", "6", "7", "a\xc3"}), "whole character");
    refused(files_.record("origin", {"1.0", "2.0", "3", "4", "5", "6", "7", "a\nb"}), "line feed");
    // A letter can't lie across two fields.
    std::string across =
        files_.record("origin", {"1.0", "2.0", "3", "4", "5", "6", "7", "01234567890123\xc3"});
    across[across.find('\xc3') + 1] = '\xa4';
    refused(across, "no blank at byte");
}

TEST_F(Adding, keeps_a_record_as_it_stands)
{
    std::string record = files_.record("origin", {"1", "+2.5", "3e0", "2018/02/07"});
    ASSERT_EQ(dbadd(opened_.table("origin"), record.c_str()), 0);
    EXPECT_EQ(get(opened_.record("origin", 0)).substr(0, 60), record.substr(0, 60));
}

TEST_F(Adding, asks_nothing_about_keys)
{
    EXPECT_EQ(add("event", {"1"}), 0);
    EXPECT_EQ(add("event", {"1"}), 1);
}

TEST_F(Adding, checked_answers_the_record_that_has_the_key)
{
    EXPECT_EQ(add_checked("event", {"1", "10"}), 0);
    EXPECT_EQ(add_checked("event", {"2", "20"}), 1);
    EXPECT_EQ(add_checked("event", {"1", "30"}), 0);
    EXPECT_EQ(add("event", {"2", "40"}), 2);
    EXPECT_EQ(add_checked("event", {"2", "40"}), 1); // the lowest
    EXPECT_EQ(integer(opened_.table("event"), dbRECORD_COUNT), 3);
    EXPECT_EQ(take_log(), "");
}

TEST_F(Adding, checked_compares_keys_by_their_values)
{
    EXPECT_EQ(add_checked("origin", {"1.0000", "2.0000", "0.0000", "5.00000"}), 0);
    EXPECT_EQ(add_checked("origin", {"1", "2.0", "-0.0", "5"}), 0);
    EXPECT_EQ(add_checked("origin", {"1", "2.0", "0.0", "6"}), 1);
    // The same day whether in words or in seconds.
    EXPECT_EQ(add_checked("arrival", {"AAK", "1517961600.00000", "1"}), 0);
    EXPECT_EQ(add_checked("arrival", {"AAK", "2018/02/07", "2"}), 0);
    EXPECT_EQ(add_checked("arrival", {"AAKX", "2018/02/07", "2"}), 1);
}

TEST_F(Adding, checked_compares_both_ends_of_a_range)
{
    EXPECT_EQ(add_checked("site", {"AAK", "2010001", "-1", "1.0"}), 0);
    EXPECT_EQ(add_checked("site", {"AAK", "2010001", "-1", "2.0"}), 0);
    EXPECT_EQ(add_checked("site", {"AAK", "2010001", "2012001", "1.0"}), 1);
    EXPECT_EQ(add_checked("site", {"AAK", "2012001", "-1", "1.0"}), 2);
    EXPECT_EQ(add_checked("site", {"BBB", "2010001", "-1", "1.0"}), 3);
}

TEST_F(Adding, checked_follows_edits_marks_and_crunches)
{
    for (int i = 1; i <= 100; ++i)
        ASSERT_EQ(add_checked("event", {std::to_string(i)}), i - 1);
    EXPECT_EQ(put(opened_.record("event", 10), "evid", "1011"), 0);
    EXPECT_EQ(add_checked("event", {"11"}), 100);  // it is free now
    EXPECT_EQ(add_checked("event", {"1011"}), 10); // and this one taken
    EXPECT_EQ(dbmark(opened_.record("event", 20)), 0);
    EXPECT_EQ(add_checked("event", {"21"}), 101);
    EXPECT_EQ(dbcrunch(opened_.table("event")), 0);
    EXPECT_EQ(add_checked("event", {"22"}), 20);
    EXPECT_EQ(add_checked("event", {"21"}), 100);
    EXPECT_EQ(take_log(), "");
}

TEST_F(Adding, checked_sees_what_other_programs_wrote)
{
    EXPECT_EQ(add_checked("event", {"1"}), 0);
    files_.appendRows("event", {{"2"}});
    EXPECT_EQ(add_checked("event", {"2"}), 1);
    Opened other(files_.path(), "r+");
    EXPECT_EQ(dbaddchk(other.table("event"), files_.record("event", {"3"}).c_str()), 2);
    EXPECT_EQ(add_checked("event", {"3"}), 2);
    EXPECT_EQ(put(other.record("event", 0), "evid", "7"), 0);
    EXPECT_EQ(add_checked("event", {"7"}), 0);
    EXPECT_EQ(add_checked("event", {"1"}), 3);
}

TEST_F(Adding, checked_reads_the_table_once_and_not_for_each_record)
{
    constexpr int records = 50000;
    std::vector<TemporaryDatabase::Row> rows;
    for (int id = 1; id <= records; ++id)
        rows.push_back({std::to_string(id)});
    files_.addTable("event", rows);
    const auto size = static_cast<int64_t>(bytes("event").size());
    const int64_t before = bytes_read();
    ASSERT_GE(before, 0);
    ASSERT_EQ(add_checked("event", {std::to_string(records + 1)}), records);
    const int64_t with_keys = bytes_read();
    EXPECT_GE(with_keys - before, size) << "the keys come from the file";
    for (int64_t id = 2; id <= 200; ++id) {
        ASSERT_EQ(add_checked("event", {std::to_string(records + id)}), records + id - 1);
        ASSERT_EQ(add_checked("event", {std::to_string(id)}), id - 1);
    }
    EXPECT_LT(bytes_read() - with_keys, size) << "all of 398 checked adds together read less than one scan";
}

TEST_F(Adding, mends_the_end_of_a_file)
{
    // What a writer left who was killed is removed.
    ASSERT_EQ(add("event", {"1"}), 0);
    files_.writeFile("quakes.event", bytes("event") + files_.record("event", {"2"}).substr(0, 20));
    EXPECT_EQ(integer(opened_.table("event"), dbRECORD_COUNT), 1);
    EXPECT_EQ(add("event", {"3"}), 1);
    EXPECT_EQ(column_of(opened_.table("event"), "evid"), (Texts{"1", "3"}));
    // A record without its line feed, as the last one of a file that a person wrote, gets one.
    files_.writeFile("quakes.event", bytes("event") + files_.record("event", {"4"}));
    EXPECT_EQ(add("event", {"5"}), 3);
    EXPECT_EQ(column_of(opened_.table("event"), "evid"), (Texts{"1", "3", "4", "5"}));
    // Lines of another width are not ours to remove.
    const std::string strange = bytes("event") + "a note\n";
    files_.writeFile("quakes.event", strange);
    EXPECT_EQ(add("event", {"6"}), dbERROR_FORMAT);
    EXPECT_NE(take_log().find("are no records"), std::string::npos);
    EXPECT_EQ(bytes("event"), strange);
}

TEST_F(Adding, goes_to_the_first_folder)
{
    files_.writeFile("two", "schema: small\ndbpath: [new, .]\n");
    Opened two(files_.folder() + "/two", "r+");
    EXPECT_EQ(dbadd(two.table("event"), files_.record("event", {"1"}).c_str()), dbERROR_NOT_FOUND);
    EXPECT_NE(take_log().find("new/two.event: the table's file cannot be made"), std::string::npos);
    std::filesystem::create_directory(files_.folder() + "/new");
    EXPECT_EQ(dbadd(two.table("event"), files_.record("event", {"1"}).c_str()), 0);
    EXPECT_TRUE(std::filesystem::exists(files_.folder() + "/new/two.event"));
}

TEST_F(Adding, is_for_tables_of_databases_opened_to_be_written)
{
    ASSERT_EQ(add("event", {"1"}), 0);
    Opened reader(files_.path(), "r");
    const std::string record = files_.record("event", {"2"});
    EXPECT_EQ(integer(reader.table("event"), dbTABLE_IS_WRITABLE), 0);
    EXPECT_EQ(dbadd(reader.table("event"), record.c_str()), dbERROR_PERMISSION);
    EXPECT_NE(take_log().find("opened for reading only; open it with 'r+'"), std::string::npos);
    EXPECT_EQ(dbaddchk(reader.table("event"), record.c_str()), dbERROR_PERMISSION);
    EXPECT_EQ(put(reader.record("event", 0), "evid", "3"), dbERROR_PERMISSION);
    EXPECT_EQ(dbmark(reader.record("event", 0)), dbERROR_PERMISSION);
    EXPECT_EQ(dbcrunch(reader.table("event")), dbERROR_PERMISSION);
    take_log();
    const Dbptr view = dbsubset(opened_.table("event"), "evid == 1", nullptr);
    EXPECT_EQ(dbadd(view, record.c_str()), dbERROR_ARGUMENT);
    EXPECT_EQ(dbadd(opened_.pointer, record.c_str()), dbERROR_ARGUMENT);
    take_log();
    EXPECT_EQ(column_of(opened_.table("event"), "evid"), (Texts{"1"}));
}

TEST(NextId, is_beyond_what_is_in_use_and_what_was_given_out)
{
    const auto files = TemporaryDatabase::ofPublicStandard();
    Opened opened(files->path(), "r+");
    EXPECT_EQ(dbnextid(opened.pointer, "orid"), 1);
    EXPECT_EQ(dbnextid(opened.pointer, "orid"), 2);
    EXPECT_EQ(dbnextid(opened.pointer, "evid"), 1);
    files->addTable("origin", {{"1.0", "2.0", "3.0", "4.0", "100"}, {"1.0", "2.0", "3.0", "5.0", "50"}});
    EXPECT_EQ(dbnextid(opened.pointer, "orid"), 101);
    Opened other(files->path(), "r+");
    EXPECT_EQ(dbnextid(other.table("origin"), "orid"), 102);
    EXPECT_EQ(dbnextid(opened.pointer, "orid"), 103);
    EXPECT_EQ(column_of(opened.table("lastid"), "keyvalue"), (Texts{"103", "1"}));
    EXPECT_EQ(take_log(), "");
    EXPECT_EQ(dbnextid(opened.pointer, "nothing"), dbERROR_NOT_FOUND);
    EXPECT_EQ(dbnextid(opened.pointer, "lat"), dbERROR_NOT_FOUND);
    EXPECT_EQ(dbnextid(opened.pointer, nullptr), dbERROR_ARGUMENT);
    take_log();
}

TEST_F(Adding, next_id_is_beyond_what_is_in_use_where_nothing_is_kept)
{
    EXPECT_EQ(dbnextid(opened_.pointer, "evid"), 1);
    EXPECT_EQ(add("event", {"17"}), 0);
    EXPECT_EQ(dbnextid(opened_.pointer, "evid"), 18);
    EXPECT_EQ(dbnextid(opened_.pointer, "evid"), 18);
}
