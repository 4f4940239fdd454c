// dbfind_rows: where rows of one table are in another one of the same member tables.
#include "operations/large_tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using Rows = std::vector<int64_t>;

Rows places(Dbptr from, Dbptr to, const Rows &rows)
{
    Rows found(rows.size(), -77);
    EXPECT_EQ(dbfind_rows(from, to, rows.data(), rows.size(), found.data()), 0) << take_log();
    return found;
}

Rows all_rows(Dbptr table)
{
    Rows rows(static_cast<size_t>(integer(table, dbRECORD_COUNT)));
    std::iota(rows.begin(), rows.end(), 0);
    return rows;
}

class SameRows : public testing::Test
{
protected:
    SameRows()
    {
        files.addTable("arrival", {{"KIV", "100.5", "1"}, {"AAK", "99.0", "2"}, {"KIV", "90.0", "3"}});
        files.addTable("assoc", {{"2", "10", "AAK", "S"}, {"3", "10", "KIV", "P"}, {"3", "11", "KIV", "P"}});
        open = std::make_unique<Opened>(files.path());
        arrival = open->table("arrival");
    }

    TemporaryDatabase files;
    std::unique_ptr<Opened> open;
    Dbptr arrival{};
};

TEST_F(SameRows, AreFoundInBothDirections)
{
    const Dbptr sorted = dbsort(arrival, Names{"time"}, 0, nullptr); // 3 2 1
    EXPECT_THAT(places(arrival, sorted, {0, 1, 2}), ElementsAre(2, 1, 0));
    EXPECT_THAT(places(sorted, arrival, {0, 1, 2}), ElementsAre(2, 1, 0));
    EXPECT_THAT(places(arrival, arrival, {2, 0, 2}), ElementsAre(2, 0, 2));
    const Dbptr some = dbsubset(sorted, "sta == 'KIV'", nullptr);
    EXPECT_THAT(places(sorted, some, {0, 1, 2}), ElementsAre(0, -1, 1));
    EXPECT_THAT(places(some, arrival, {1, 0}), ElementsAre(0, 2));
    EXPECT_THAT(places(arrival, some, {}), IsEmpty());
}

TEST_F(SameRows, AreNoneForNumbersOfNoRow)
{
    EXPECT_THAT(places(arrival, arrival, {3, -1, dbALL, INT64_MAX, 1}), ElementsAre(-1, -1, -1, -1, 1));
}

TEST_F(SameRows, OfViewsOfSeveralTablesHaveAllRecordsInCommon)
{
    const Dbptr joined =
        dbjoin(arrival, open->table("assoc"), nullptr, nullptr, 1, nullptr, nullptr); // 1- 2/10 3/10 3/11
    const Dbptr turned = dbsort(joined, Names{"orid", "time"}, dbSORT_REVERSE, nullptr);
    const Rows there = places(joined, turned, all_rows(joined));
    EXPECT_EQ(places(turned, joined, there), all_rows(joined));
    for (size_t i = 0; i < there.size(); ++i) {
        Dbptr a = joined;
        Dbptr b = turned;
        a.record = static_cast<int64_t>(i);
        b.record = there[i];
        EXPECT_EQ(get(a), get(b));
    }
}

TEST_F(SameRows, MayHaveTheirMembersInAnotherOrder)
{
    const Dbptr assoc = open->table("assoc");
    const Dbptr one = dbjoin(arrival, assoc, nullptr, nullptr, 0, nullptr, nullptr); // 2/10 3/10 3/11
    const Dbptr other = dbjoin(assoc, arrival, nullptr, nullptr, 0, nullptr, nullptr);
    const Dbptr turned = dbsort(other, Names{"assoc.orid"}, dbSORT_REVERSE, nullptr); // 3/11 2/10 3/10
    EXPECT_THAT(places(one, turned, {0, 1, 2}), ElementsAre(1, 2, 0));
}

TEST_F(SameRows, OfAGroupedViewAreItsBundles)
{
    const Dbptr grouped = dbgroup(arrival, Names{"sta"}, nullptr, 1);
    const Dbptr turned = dbsort(grouped, Names{"sta"}, dbSORT_REVERSE, nullptr);
    EXPECT_THAT(places(grouped, turned, {0, 1}), ElementsAre(1, 0));
}

TEST_F(SameRows, FailForOtherTablesAndStalePointers)
{
    const int64_t row = 0;
    int64_t place = -77;
    const Dbptr joined = dbjoin(arrival, open->table("assoc"), nullptr, nullptr, 0, nullptr, "joined");
    for (const Dbptr &other : {open->table("assoc"), joined}) {
        EXPECT_LT(dbfind_rows(arrival, other, &row, 1, &place), 0);
        EXPECT_THAT(take_log(), HasSubstr("are not made of the same tables"));
    }
    EXPECT_LT(dbfind_rows(open->pointer, arrival, &row, 1, &place), 0);
    const Dbptr freed = dbsubset(arrival, "1", nullptr);
    dbfree(freed);
    EXPECT_EQ(dbfind_rows(arrival, freed, &row, 1, &place), dbERROR_STALE);
    EXPECT_LT(dbfind_rows(arrival, arrival, nullptr, 1, &place), 0);
    EXPECT_LT(dbfind_rows(arrival, arrival, &row, 1, nullptr), 0);
    EXPECT_EQ(place, -77);
    take_log();
}

TEST_F(SameRows, OfATableThatWasReplacedFail)
{
    const Dbptr sorted = dbsort(arrival, Names{"time"}, 0, nullptr);
    files.addTable("arrival", {{"AAK", "1.0", "9"}});
    const int64_t row = 0;
    int64_t place = -77;
    EXPECT_LT(dbfind_rows(sorted, arrival, &row, 1, &place), 0);
    EXPECT_EQ(place, -77);
    take_log();
}

TEST(SameRowsOfALargeTable, AreThoseThatTheirCellsTell)
{
    TemporaryDatabase files{"narrow", narrowSchemaText()};
    writeNarrowTable(files, "many", narrowRows(300000, 50000, 1));
    const Opened open(files.path());
    const Dbptr many = open.table("many");
    const Dbptr sorted = dbsort(many, Names{"word", "value"}, dbSORT_REVERSE, nullptr);
    const Rows there = places(many, sorted, all_rows(many));
    std::vector<bool> met(there.size());
    for (size_t i = 0; i < there.size(); i += 7) {
        Dbptr a = many;
        Dbptr b = sorted;
        a.record = static_cast<int64_t>(i);
        b.record = there[i];
        ASSERT_EQ(get(a), get(b));
    }
    for (const int64_t place : there) {
        ASSERT_FALSE(met[static_cast<size_t>(place)]);
        met[static_cast<size_t>(place)] = true;
    }
}

} // namespace
