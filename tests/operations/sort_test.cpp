#include "operations/derived.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class Sort : public testing::Test
{
protected:
    Sort()
    {
        files.addTable("arrival", {{"KIV", "100.5", "1", "-1", "P"},
                                   {"AAK", "99.0", "2", "-1", "S"},
                                   {"KIV", "-9999999999.999", "3", "-1", "P"},
                                   {"AAK", "100.5", "4", "-1", "P"},
                                   {"-", "100.5", "5", "-1", "S"}});
        open = std::make_unique<Opened>(files.path());
        arrival = open->table("arrival");
    }

    TemporaryDatabase files;
    std::unique_ptr<Opened> open;
    Dbptr arrival;
};

TEST_F(Sort, OrdersNumbersAsNumbersWithNullsAsTheyAreStored)
{
    const Dbptr view = dbsort(arrival, Names{"time"}, 0, nullptr);
    ASSERT_GE(view.table, 0) << take_log();
    EXPECT_THAT(column(view, "arid"), ElementsAre("3", "2", "1", "4", "5"));
}

TEST_F(Sort, InReverseLeavesEqualsInTheirOrder)
{
    EXPECT_THAT(column(dbsort(arrival, Names{"time"}, dbSORT_REVERSE, nullptr), "arid"),
                ElementsAre("1", "4", "5", "2", "3"));
}

TEST_F(Sort, UniqueKeepsTheFirstOfEquals)
{
    EXPECT_THAT(column(dbsort(arrival, Names{"time"}, dbSORT_UNIQUE, nullptr), "arid"),
                ElementsAre("3", "2", "1"));
    EXPECT_THAT(column(dbsort(arrival, Names{"time"}, dbSORT_UNIQUE | dbSORT_REVERSE, nullptr), "arid"),
                ElementsAre("1", "2", "3"));
}

TEST_F(Sort, BySeveralFieldsLetsTheFirstWeighMost)
{
    EXPECT_THAT(column(dbsort(arrival, Names{"sta", "time"}, 0, nullptr), "arid"),
                ElementsAre("5", "2", "4", "3", "1"));
    EXPECT_THAT(column(dbsort(arrival, Names{"phase", "sta", "arid"}, 0, nullptr), "arid"),
                ElementsAre("4", "1", "3", "5", "2"));
}

TEST_F(Sort, GivesAViewATellingName)
{
    EXPECT_EQ(text(dbsort(arrival, Names{"time"}, 0, nullptr), dbTABLE_NAME), "arrival_sort1");
    const Dbptr second = dbsort(arrival, Names{"time"}, 0, "");
    EXPECT_EQ(text(second, dbTABLE_NAME), "arrival_sort2");
    EXPECT_EQ(dblookup(open->pointer, "", "arrival_sort2", "", "").table, second.table);
}

TEST_F(Sort, TellsHowTheViewWasMade)
{
    const Dbptr late = dbsubset(arrival, "time > 99", nullptr);
    const Dbptr view = dbsort(late, Names{"sta", "arid"}, dbSORT_REVERSE, nullptr);
    EXPECT_EQ(text(view, dbTABLE_CREATION), "dbopen arrival\ndbsubset time > 99\ndbsort -reverse sta arid");
}

TEST_F(Sort, WithoutFieldsOrWithUnknownOnesLeavesNoView)
{
    EXPECT_EQ(dbsort(arrival, Names{}, 0, nullptr).table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("dbsort: no fields are given"));
    EXPECT_EQ(dbsort(arrival, Names{"tim"}, 0, nullptr).table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("no field 'tim' in table arrival; near it: time"));
    EXPECT_EQ(integer(open->pointer, dbTABLE_COUNT), 7);
}

} // namespace
