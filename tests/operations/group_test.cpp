#include "operations/derived.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class Group : public testing::Test
{
protected:
    Group()
    {
        files.addTable("arrival", {{"KIV", "100.5", "1", "-1", "P"},
                                   {"AAK", "99.0", "2", "-1", "S"},
                                   {"KIV", "90.0", "3", "-1", "P"},
                                   {"AAK", "100.5", "4", "-1", "P"}});
        open = std::make_unique<Opened>(files.path());
        arrival = open->table("arrival");
    }

    TemporaryDatabase files;
    std::unique_ptr<Opened> open;
    Dbptr arrival;
};

TEST_F(Group, BundlesEqualRowsAndSortsThemFirst)
{
    const Dbptr groups = dbgroup(arrival, Names{"sta"}, nullptr, 1);
    ASSERT_GE(groups.table, 0) << take_log();
    EXPECT_EQ(groups.table, 7);
    EXPECT_THAT(column(groups, "sta"), ElementsAre("AAK", "KIV"));
    EXPECT_THAT(column(groups, "bundle"), ElementsAre("0-2", "2-4"));
    EXPECT_EQ(bundle(groups, 0), "0-2");
    EXPECT_EQ(bundle(groups, 1), "2-4");
    EXPECT_THAT(list(groups, dbTABLE_FIELDS), ElementsAre("sta", "bundle"));
    EXPECT_THAT(list(groups, dbVIEW_TABLES), ElementsAre("arrival_group1"));
    EXPECT_THAT(list(open->pointer, dbSCHEMA_TABLES).back(), "arrival_group1");
    EXPECT_EQ(integer(open->pointer, dbTABLE_COUNT), 8);
}

TEST_F(Group, BundlesStandInTheSortedRows)
{
    const Dbptr groups = dbgroup(arrival, Names{"sta"}, nullptr, 1);
    Dbptr at = dblookup(groups, "", "", "bundle", "1");
    DbValue value{};
    ASSERT_EQ(dbgetv(at, nullptr, &value), 0);
    Dbptr row = dblookup(Dbptr{value.dbptr.database, value.dbptr.table, dbALL, dbALL}, "", "", "arid", "");
    row.record = value.dbptr.record;
    EXPECT_EQ(get(row), "       1");
    ++row.record;
    EXPECT_EQ(get(row), "       3");
}

TEST_F(Group, OfASortedViewStandsInThatView)
{
    const Dbptr sorted = dbsort(arrival, Names{"sta", "time"}, 0, "ordered");
    const Dbptr groups = dbgroup(sorted, Names{"sta"}, nullptr, 1);
    Dbptr at = dblookup(groups, "", "", "bundle", "0");
    DbValue value{};
    ASSERT_EQ(dbgetv(at, nullptr, &value), 0);
    EXPECT_EQ(value.dbptr.table, sorted.table);
    // Freed, it lives on for the bundles.
    EXPECT_EQ(dbfree(sorted), 0);
    EXPECT_LT(integer(sorted, dbRECORD_COUNT), 0);
    elog_clear();
    EXPECT_EQ(bundle(groups, 0), "0-2");
    EXPECT_THAT(column(groups, "sta"), ElementsAre("AAK", "KIV"));
}

TEST_F(Group, UngroupGivesTheRowsOfTheBundlesInOrder)
{
    const Dbptr groups = dbgroup(arrival, Names{"sta"}, nullptr, 1);
    const Dbptr chosen = dbsort(groups, Names{"sta"}, dbSORT_REVERSE, nullptr);
    EXPECT_THAT(column(dbungroup(groups, nullptr), "arid"), ElementsAre("2", "4", "1", "3"));
    EXPECT_THAT(column(dbungroup(chosen, nullptr), "arid"), ElementsAre("1", "3", "2", "4"));
    const Dbptr one = dbsubset(groups, "sta == 'KIV'", nullptr);
    EXPECT_THAT(column(dbungroup(one, "kivs"), "arid"), ElementsAre("1", "3"));
}

TEST_F(Group, UngroupOfWhatIsNotGroupedIsRefused)
{
    EXPECT_EQ(dbungroup(arrival, nullptr).table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("dbungroup: table arrival is not grouped"));
}

TEST_F(Group, OfAnEmptyTableHasNoBundles)
{
    const Dbptr groups = dbgroup(open->table("origin"), Names{"lat"}, nullptr, 1);
    ASSERT_GE(groups.table, 0) << take_log();
    EXPECT_EQ(integer(groups, dbRECORD_COUNT), 0);
    EXPECT_EQ(integer(dbungroup(groups, nullptr), dbRECORD_COUNT), 0);
}

} // namespace
