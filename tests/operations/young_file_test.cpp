// Operations that meet a table in several places, while its file is so young that each look at it might show
// another one.
#include "operations/derived.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

using testing::ElementsAre;

namespace {

class YoungFile : public testing::Test
{
protected:
    YoungFile()
    {
        files.addTable("arrival", {{"KIV", "100.5", "1", "-1", "P"},
                                   {"AAK", "99.0", "2", "-1", "S"},
                                   {"KIV", "90.0", "3", "-1", "P"}});
        open = std::make_unique<Opened>(files.path());
        arrival = open->table("arrival");
        stations = dbgroup(arrival, Names{"sta"}, nullptr, 1);
        grow_young();
    }

    // The file counts as young from now on, and for some time to come.
    void grow_young() const
    {
        std::filesystem::last_write_time(files.tablePath("arrival"),
                                         std::filesystem::file_time_type::clock::now() +
                                             std::chrono::milliseconds(40));
    }

    TemporaryDatabase files;
    std::unique_ptr<Opened> open;
    Dbptr arrival;
    Dbptr stations;
};

TEST_F(YoungFile, JoinsWithAGroupedViewOfItself)
{
    const Dbptr joined = dbjoin(arrival, stations, Names{"sta"}, nullptr, 0, nullptr, nullptr);
    ASSERT_GE(joined.table, 0) << take_log();
    EXPECT_THAT(column(joined, "arid"), ElementsAre("1", "2", "3"));
    grow_young();
    const Dbptr turned = dbjoin(stations, arrival, Names{"sta"}, nullptr, 0, nullptr, nullptr);
    ASSERT_GE(turned.table, 0) << take_log();
    EXPECT_THAT(column(turned, "arid"), ElementsAre("2", "1", "3"));
}

TEST_F(YoungFile, IsComparedWithAGroupedViewOfItself)
{
    const Dbptr joined =
        dbtheta(stations, arrival, "arid == 2 && arrival.sta == arrival_group1.sta", nullptr);
    ASSERT_GE(joined.table, 0) << take_log();
    EXPECT_THAT(column(joined, "arid"), ElementsAre("2"));
}

TEST_F(YoungFile, IsJoinedNotWithAViewOfItself)
{
    const Dbptr others = dbsubset(arrival, "phase == 'P'", nullptr);
    grow_young();
    const Dbptr left = dbnojoin(arrival, others, Names{"arid"}, nullptr, nullptr);
    ASSERT_GE(left.table, 0) << take_log();
    EXPECT_THAT(column(left, "arid"), ElementsAre("2"));
}

TEST_F(YoungFile, IsSortedWithAGroupedViewOfItself)
{
    const Dbptr joined = dbjoin(stations, arrival, Names{"sta"}, nullptr, 0, nullptr, nullptr);
    grow_young();
    const Dbptr sorted = dbsort(joined, Names{"arrival_group1.sta", "arid"}, 0, nullptr);
    ASSERT_GE(sorted.table, 0) << take_log();
    EXPECT_THAT(column(sorted, "arid"), ElementsAre("2", "1", "3"));
}

TEST_F(YoungFile, IsCopiedByUnjoinThoughItIsThereTwice)
{
    const Dbptr joined = dbjoin(arrival, stations, Names{"sta"}, nullptr, 0, nullptr, nullptr);
    const std::string path = files.path() + "_copy";
    grow_young();
    ASSERT_EQ(dbunjoin(joined, path.c_str(), 0), 0) << take_log();
    EXPECT_EQ(TemporaryDatabase::readFile(path + ".arrival"),
              TemporaryDatabase::readFile(files.tablePath("arrival")));
}

// What was seen is that of one operation: the next one sees what was written since.
TEST_F(YoungFile, IsLookedAtAnewByTheNextOperation)
{
    ASSERT_GE(dbjoin(arrival, stations, Names{"sta"}, nullptr, 0, nullptr, nullptr).table, 0) << take_log();
    files.appendRows("arrival", {{"AAK", "80.0", "4", "-1", "P"}});
    grow_young();
    EXPECT_THAT(column(dbsort(arrival, Names{"time"}, 0, nullptr), "arid"), ElementsAre("4", "3", "2", "1"));
}

} // namespace
