// What tells a program that record numbers stand for other records, and where its records are now.
#include "edited.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>

namespace {

class Moved : public testing::Test
{
protected:
    Moved()
    {
        files_.addTable(
            "event",
            {{"1", "10", "a"}, {"2", "20", "b"}, {"3", "30", "c"}, {"4", "40", "d"}, {"5", "50", "e"}});
    }

    static int64_t numbering(Dbptr table) { return integer(table, dbTABLE_NUMBERING); }
    static int64_t version(Dbptr table) { return integer(table, dbTABLE_VERSION); }
    using Numbers = std::vector<int64_t>;
    static Numbers places(Dbptr table, int64_t since, Numbers numbers)
    {
        EXPECT_EQ(dbmoved_records(table, since, numbers.data(), numbers.size(), numbers.data()), 0);
        EXPECT_EQ(take_log(), "");
        return numbers;
    }
    static int code(Dbptr table, int64_t since)
    {
        int64_t number = 1;
        const int answer = dbmoved_records(table, since, &number, 1, &number);
        EXPECT_EQ(number, 1);
        return answer;
    }
    void crunch(std::initializer_list<int> records)
    {
        for (const int record : records)
            ASSERT_EQ(dbmark(opened_.record("event", record)), 0);
        ASSERT_EQ(dbcrunch(opened_.table("event")), 0) << take_log();
    }
    void replace() const
    {
        files_.addTable("event", {{"7", "70"}});
        std::filesystem::rename(files_.tablePath("event"), files_.tablePath("other"));
        files_.addTable("event", {{"8", "80"}, {"9", "90"}});
        std::filesystem::rename(files_.tablePath("other"), files_.tablePath("event"));
    }

    TemporaryDatabase files_;
    Opened opened_{files_.path(), "r+"};
};

} // namespace

TEST_F(Moved, records_are_where_they_were_after_changes_in_place_and_adds)
{
    const Dbptr event = opened_.table("event");
    const int64_t since = numbering(event);
    EXPECT_EQ(put(opened_.record("event", 0), "auth", "me"), 0);
    EXPECT_EQ(dbmark(opened_.record("event", 1)), 0);
    EXPECT_EQ(dbadd(event, files_.record("event", {"6"}).c_str()), 5);
    files_.appendRows("event", {{"7"}});
    EXPECT_EQ(numbering(event), since);
    EXPECT_EQ(places(event, since, {0, 4, 5}), (Numbers{0, 4, 5}));
}

TEST_F(Moved, records_are_followed_through_a_crunch)
{
    const Dbptr event = opened_.table("event");
    const int64_t since = numbering(event);
    crunch({1, 3});
    EXPECT_NE(numbering(event), since);
    EXPECT_EQ(places(event, since, {0, 1, 2, 3, 4, -1}), (Numbers{0, -1, 1, -1, 2, -1}));
    EXPECT_EQ(places(event, numbering(event), {0, 1}), (Numbers{0, 1}));
    crunch({0});
    EXPECT_EQ(code(event, since), dbERROR_STALE) << "two crunches ago";
    EXPECT_EQ(take_log(), "");
}

TEST_F(Moved, rows_of_views_are_followed_too)
{
    const Dbptr view = dbsubset(opened_.table("event"), "evid >= 2", "later");
    Tbl *fields = newtbl(1);
    pushtbl(fields, const_cast<char *>("auth"));
    const Dbptr groups = dbgroup(view, fields, "groups", 1);
    freetbl(fields, nullptr);
    ASSERT_EQ(integer(groups, dbRECORD_COUNT), 4);
    const int64_t since = numbering(view);
    const int64_t groups_since = numbering(groups);
    crunch({0, 2}); // of the view the second row
    EXPECT_NE(numbering(view), since);
    EXPECT_EQ(places(view, since, {0, 1, 2, 3}), (Numbers{0, -1, 1, 2}));
    EXPECT_EQ(places(groups, groups_since, {0, 1, 2, 3}), (Numbers{0, -1, 1, 2}));

    const int64_t after = numbering(view);
    const int64_t table_after = numbering(opened_.table("event"));
    Dbptr row = view;
    row.record = 0;
    ASSERT_EQ(dbmark(row), 0);
    ASSERT_EQ(dbcrunch(view), 0);
    EXPECT_EQ(places(view, after, {0, 1, 2}), (Numbers{-1, 0, 1}));
    EXPECT_EQ(numbering(opened_.table("event")), table_after) << "the records stay";
}

TEST_F(Moved, nobody_knows_where_records_are_after_another_program_replaced_the_table)
{
    const Dbptr event = opened_.table("event");
    const Dbptr view = dbsubset(event, "evid >= 2", "later");
    const int64_t since = numbering(event);
    const int64_t view_since = numbering(view);
    replace();
    EXPECT_NE(numbering(event), since);
    EXPECT_NE(numbering(view), view_since);
    EXPECT_EQ(code(event, since), dbERROR_STALE);
    EXPECT_EQ(code(view, view_since), dbERROR_STALE);
    EXPECT_EQ(take_log(), "");
}

TEST_F(Moved, versions_change_with_what_other_programs_do)
{
    const Dbptr event = opened_.table("event");
    const Dbptr view = dbsubset(event, "evid >= 2", "later");
    Opened other(files_.path(), "r+");
    // The time of a file that was changed just now may hide another change.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    ASSERT_EQ(put(opened_.record("event", 0), "auth", "me"), 0);
    const int64_t before = version(event);
    const int64_t view_before = version(view);
    ASSERT_EQ(put(opened_.record("event", 0), "auth", "us"), 0);
    ASSERT_GE(dbadd(event, files_.record("event", {"6"}).c_str()), 0);
    EXPECT_EQ(version(event), before) << "one's own changes are known";
    EXPECT_EQ(version(view), view_before);
    ASSERT_EQ(put(other.record("event", 0), "auth", "you"), 0);
    EXPECT_NE(version(event), before);
    EXPECT_NE(version(view), view_before);
}

TEST_F(Moved, what_can_not_be_asked_is_an_error)
{
    const Dbptr event = opened_.table("event");
    int64_t number = 0;
    EXPECT_EQ(dbmoved_records(event, 0, nullptr, 1, &number), dbERROR_ARGUMENT);
    EXPECT_EQ(dbmoved_records(event, 0, &number, 1, nullptr), dbERROR_ARGUMENT);
    EXPECT_LT(dbmoved_records(opened_.pointer, 0, &number, 1, &number), 0);
    EXPECT_EQ(dbmoved_records(event, numbering(event), nullptr, 0, nullptr), 0);
    take_log();
}
