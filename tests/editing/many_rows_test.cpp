// dbputv_rows and dbmark_rows: one value into many records, many records marked.
#include "edited.h"
#include "operations/derived.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

constexpr int64_t many = 20'000; // several windows

class ManyRows : public testing::Test
{
protected:
    ManyRows()
    {
        std::vector<TemporaryDatabase::Row> rows;
        for (int64_t i = 0; i < many; ++i)
            rows.push_back({std::to_string(i + 1), std::to_string(i % 7 + 1), "an author", "3.00000"});
        files.addTable("event", rows);
        opened = std::make_unique<Opened>(files.path(), "r+");
    }

    int put_rows(Dbptr db, const char *field, const std::string &text, const std::vector<DbRows> &rows)
    {
        const DbValue value = text_value(text);
        return dbputv_rows(db, field, &value, rows.data(), rows.size(), &changed);
    }
    int mark_rows(Dbptr db, const std::vector<DbRows> &rows)
    {
        return dbmark_rows(db, rows.data(), rows.size(), &changed);
    }
    Dbptr event() const { return opened->table("event"); }
    std::string value(int64_t record, const char *field) const
    {
        return trim(get(opened->field("event", field, record)));
    }
    // As another program sees it.
    Texts as_others_see(const char *field) const
    {
        const Opened other(files.path());
        return column_of(other.table("event"), field);
    }

    TemporaryDatabase files;
    std::unique_ptr<Opened> opened;
    int64_t changed = -1;
};

} // namespace

TEST_F(ManyRows, get_one_value)
{
    ASSERT_EQ(put_rows(event(), "prefor", "77", {{0, many}}), 0) << take_log();
    EXPECT_EQ(changed, many);
    EXPECT_EQ(as_others_see("prefor"), Texts(many, "77"));
    EXPECT_EQ(value(0, "evid") + value(many - 1, "evid"), "1" + std::to_string(many));
    EXPECT_GT(std::stod(value(5, "lddate")), 1.6e9) << "the timestamp is set";
    EXPECT_EQ(take_log(), "");
}

TEST_F(ManyRows, are_those_that_were_named)
{
    // Far apart, side by side, overlapping, out of order and none.
    const std::vector<DbRows> rows = {{9000, 9003}, {5, 6},   {7, 8},          {0, 2},
                                      {1, 4},       {30, 30}, {many - 1, many}};
    ASSERT_EQ(put_rows(event(), "prefor", "77", rows), 0) << take_log();
    Texts expected;
    int64_t wanted = 0;
    for (int64_t i = 0; i < many; ++i) {
        const bool named = i < 4 || i == 5 || i == 7 || (i >= 9000 && i < 9003) || i == many - 1;
        wanted += named;
        expected.push_back(named ? "77" : std::to_string(i % 7 + 1));
    }
    EXPECT_EQ(changed, wanted);
    EXPECT_EQ(column_of(event(), "prefor"), expected);
    EXPECT_EQ(as_others_see("prefor"), expected);
}

TEST_F(ManyRows, keep_decoded_columns_and_the_index_of_keys_true)
{
    const auto count = [&](const char *expression) {
        const Dbptr view = dbsubset(event(), expression, nullptr);
        const int64_t rows = integer(view, dbRECORD_COUNT);
        dbfree(view);
        return rows;
    };
    EXPECT_EQ(count("prefor == 77 || auth == 'nobody'"), 0);
    const std::string key = files.record("event", {"13", "1", "x"});
    EXPECT_EQ(dbaddchk(event(), key.c_str()), 12);
    ASSERT_EQ(put_rows(event(), "prefor", "77", {{100, 300}}), 0);
    ASSERT_EQ(put_rows(event(), "auth", "nobody", {{200, 400}}), 0);
    ASSERT_EQ(mark_rows(event(), {{10, 20}}), 0);
    EXPECT_EQ(count("prefor == 77"), 200);
    EXPECT_EQ(count("auth == 'nobody' && prefor != 77"), 100);
    EXPECT_EQ(dbaddchk(event(), key.c_str()), many) << "the one that had the key is marked";
    ASSERT_EQ(mark_rows(event(), {{0, 5000}}), 0) << "more than are followed one by one";
    EXPECT_EQ(dbaddchk(event(), files.record("event", {"2", "1", "x"}).c_str()), many + 1);
    EXPECT_EQ(dbaddchk(event(), files.record("event", {"6001", "1", "x"}).c_str()), 6000);
    const Texts evids = as_others_see("evid");
    EXPECT_EQ(std::count(evids.begin(), evids.end(), "-1"), 5000);
    EXPECT_EQ(take_log(), "");
}

TEST_F(ManyRows, are_marked_and_crunched)
{
    ASSERT_EQ(mark_rows(event(), {{10, many}}), 0) << take_log();
    EXPECT_EQ(changed, many - 10);
    ASSERT_EQ(dbcrunch(event()), 0);
    EXPECT_EQ(as_others_see("evid"), (Texts{"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"}));
}

TEST_F(ManyRows, of_a_view_are_those_of_its_tables)
{
    files.addTable("origin",
                   {{"1.0", "2.0", "3.0", "4.0", "1", "3"}, {"1.0", "2.0", "3.0", "5.0", "2", "3"}});
    const Dbptr sorted = dbsort(event(), Names({"prefor"}), 1, nullptr);
    ASSERT_EQ(put_rows(sorted, "auth", "first", {{0, 3}}), 0) << take_log(); // those of prefor 7
    EXPECT_EQ(changed, 3);
    EXPECT_EQ(value(6, "auth") + value(13, "auth") + value(20, "auth") + value(27, "auth"),
              "firstfirstfirstan author");
    // Both origins stand beside one event.
    const Dbptr joined =
        dbjoin(opened->table("origin"), event(), nullptr, nullptr, 0, Names({"evid"}), nullptr);
    ASSERT_EQ(integer(joined, dbRECORD_COUNT), 2);
    ASSERT_EQ(put_rows(joined, "event.auth", "joined", {{0, 2}}), 0) << take_log();
    EXPECT_EQ(changed, 1);
    EXPECT_EQ(value(2, "auth"), "joined");
    // Rows of a view are flagged, and go when the view is crunched.
    ASSERT_EQ(mark_rows(sorted, {{0, 5}, {many - 1, many}}), 0);
    EXPECT_EQ(changed, 6);
    ASSERT_EQ(dbcrunch(sorted), 0);
    EXPECT_EQ(integer(sorted, dbRECORD_COUNT), many - 6);
    EXPECT_EQ(integer(event(), dbRECORD_COUNT), many);
}

TEST_F(ManyRows, beside_which_a_join_put_nulls_are_told)
{
    files.addTable("origin",
                   {{"1.0", "2.0", "3.0", "4.0", "1", "3"}, {"1.0", "2.0", "3.0", "5.0", "2", "-1"}});
    const Dbptr joined =
        dbjoin(opened->table("origin"), event(), nullptr, nullptr, 1, Names({"evid"}), nullptr);
    EXPECT_EQ(put_rows(joined, "event.auth", "joined", {{0, 2}}), dbERROR_ARGUMENT);
    EXPECT_NE(take_log().find("1 row has no record of table event"), std::string::npos);
    EXPECT_EQ(changed, 1);
    EXPECT_EQ(value(2, "auth"), "joined");
}

TEST_F(ManyRows, stay_as_they_are_when_the_value_does_not_fit)
{
    const std::string before = TemporaryDatabase::readFile(files.tablePath("event"));
    EXPECT_EQ(put_rows(event(), "evid", "0", {{0, many}}), dbERROR_VALUE);
    EXPECT_EQ(changed, 0);
    EXPECT_NE(take_log().find("out of range"), std::string::npos);
    EXPECT_EQ(put_rows(event(), "nothing", "0", {{0, many}}), dbERROR_NOT_FOUND);
    EXPECT_EQ(put_rows(event(), "evid", "1", {{-1, 3}}), dbERROR_ARGUMENT);
    EXPECT_EQ(put_rows(event(), "evid", "1", {{3, 2}}), dbERROR_ARGUMENT);
    EXPECT_EQ(dbmark_rows(event(), nullptr, 1, nullptr), dbERROR_ARGUMENT);
    EXPECT_EQ(dbmark_rows(event(), nullptr, 0, nullptr), 0);
    EXPECT_EQ(TemporaryDatabase::readFile(files.tablePath("event")), before);
    const Opened reader(files.path(), "r");
    EXPECT_EQ(put_rows(reader.table("event"), "prefor", "1", {{0, 3}}), dbERROR_PERMISSION);
    take_log();
}

TEST_F(ManyRows, beyond_the_end_fail_and_those_before_are_done)
{
    EXPECT_EQ(put_rows(event(), "prefor", "77", {{0, 10}, {many - 1, many + 1}}), dbERROR_NOT_FOUND);
    EXPECT_NE(take_log().find("record 20000 is not there"), std::string::npos);
    EXPECT_EQ(changed, 10);
    EXPECT_EQ(value(9, "prefor"), "77");
}

TEST_F(ManyRows, can_be_cancelled_between)
{
    // Time enough for the hook to be asked.
    std::string lines;
    const std::string line = files.record("event", {"1", "1", "an author", "3.00000"}) + "\n";
    for (int i = 0; i < 3'000'000; ++i)
        lines += line;
    files.writeFile("quakes.event", lines);
    double told = -1;
    dbset_progress_hook(
        [](double fraction, void *data) {
            *static_cast<double *>(data) = fraction;
            return 1;
        },
        &told);
    const int code = put_rows(event(), "prefor", "77", {{0, 3'000'000}});
    dbset_progress_hook(nullptr, nullptr);
    EXPECT_EQ(code, dbERROR_CANCELLED);
    EXPECT_NE(take_log().find("cancelled"), std::string::npos);
    ASSERT_GT(changed, 0);
    ASSERT_LT(changed, 3'000'000);
    EXPECT_NEAR(told, static_cast<double>(changed) / 3e6, 1e-6);
    EXPECT_EQ(value(changed - 1, "prefor"), "77");
    EXPECT_EQ(value(changed, "prefor"), "1");
}

TEST_F(ManyRows, are_the_same_as_one_after_the_other)
{
    std::mt19937 random(7);
    TemporaryDatabase copy;
    copy.writeFile("quakes.event", TemporaryDatabase::readFile(files.tablePath("event")));
    const Opened single(copy.path(), "r+");
    for (int round = 0; round < 30; ++round) {
        std::vector<DbRows> rows;
        for (int i = 0; i < 20; ++i) {
            const auto first = static_cast<int64_t>(random() % (many - 300));
            rows.push_back({first, first + static_cast<int64_t>(random() % (random() % 2 == 0 ? 3 : 300))});
        }
        const bool marks = random() % 4 == 0;
        const std::string text = std::to_string(random() % 1000 + 1);
        ASSERT_EQ(marks ? mark_rows(event(), rows) : put_rows(event(), "prefor", text, rows), 0)
            << take_log();
        for (const DbRows &run : rows)
            for (int64_t number = run.first; number < run.end; ++number)
                ASSERT_EQ(marks ? dbmark(single.record("event", number))
                                : put(single.record("event", number), "prefor", text),
                          0);
    }
    for (const char *field : {"evid", "prefor", "auth"})
        ASSERT_EQ(column_of(event(), field), column_of(single.table("event"), field)) << field;
    ASSERT_EQ(dbcrunch(event()), 0);
    ASSERT_EQ(dbcrunch(single.table("event")), 0);
    EXPECT_EQ(column_of(event(), "evid"), column_of(single.table("event"), "evid"));
}
