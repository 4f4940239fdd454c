#include "operations/derived.h"

#include "catalog/database_registry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

class Views : public testing::Test
{
protected:
    Views()
    {
        files.addTable("site", {{"AAK", "2008001", "-1", "42.6390", "74.4940"},
                                {"KIV", "2008001", "2010001", "43.9550", "42.6860"}});
        files.addTable("arrival", {{"KIV", "100.5", "1", "-1", "P"},
                                   {"AAK", "99.0", "2", "-1", "S"},
                                   {"KIV", "90.0", "3", "-1", "P"},
                                   {"AAK", "100.5", "4", "-1", "P"}});
        files.addTable("assoc", {{"2", "10", "AAK", "S"}, {"3", "10", "KIV", "P"}, {"9", "11", "KIV", "P"}});
        open = std::make_unique<Opened>(files.path());
    }

    Dbptr table(const char *name) const { return open->table(name); }

    TemporaryDatabase files;
    std::unique_ptr<Opened> open;
};

TEST_F(Views, TakeTheNextIndexesBehindTheTablesAndKeepThemTillFreed)
{
    const Dbptr a = dbsubset(table("site"), "lat > 0", "a");
    const Dbptr b = dbsubset(table("site"), "lat > 0", "b");
    EXPECT_EQ(a.table, 7);
    EXPECT_EQ(b.table, 8);
    EXPECT_EQ(dbfree(a), 0);
    EXPECT_EQ(integer(b, dbRECORD_COUNT), 2);
    const Dbptr c = dbsubset(table("site"), "lat > 0", "a"); // the name is free again
    EXPECT_EQ(c.table, 9);
    EXPECT_THAT(list(open->pointer, dbSCHEMA_TABLES),
                ElementsAre("site", "origin", "arrival", "assoc", "event", "remark", "kinds", "b", "a"));
    EXPECT_EQ(integer(open->pointer, dbTABLE_COUNT), 9);
}

TEST_F(Views, FreedLeavePointersThatFail)
{
    const Dbptr view = dbsubset(table("site"), "lat > 0", "gone");
    EXPECT_EQ(dbfree(view), 0);
    EXPECT_EQ(dbfree(view), dbERROR_STALE);
    take_log();
    EXPECT_LT(integer(view, dbRECORD_COUNT), 0);
    EXPECT_THAT(take_log(), HasSubstr("points to no table or view"));
    EXPECT_LT(dbsubset(view, "lat > 0", nullptr).table, 0);
    EXPECT_LT(dblookup(open->pointer, "", "gone", "", "").table, 0);
    EXPECT_EQ(dbfree(table("site")), dbERROR_ARGUMENT);
    EXPECT_THAT(take_log(), HasSubstr("dbfree: table site is no view"));
}

TEST_F(Views, OfFreedViewsGoOn)
{
    const Dbptr first = dbsort(table("arrival"), Names{"time"}, 0, nullptr);
    const Dbptr second = dbsubset(first, "sta == 'KIV'", nullptr);
    EXPECT_EQ(dbfree(first), 0);
    EXPECT_THAT(column(second, "arid"), ElementsAre("3", "1"));
    EXPECT_EQ(text(second, dbTABLE_CREATION), "dbopen arrival\ndbsort time\ndbsubset sta == 'KIV'");
}

TEST_F(Views, AnswerEveryQuestion)
{
    const Dbptr view = dbjoin(table("arrival"), table("site"), Names{"sta"}, nullptr, 0, nullptr, "stations");
    EXPECT_EQ(text(view, dbTABLE_NAME), "stations");
    EXPECT_EQ(integer(view, dbTABLE_IS_VIEW), 1);
    EXPECT_EQ(integer(view, dbTABLE_PRESENT), 1);
    EXPECT_EQ(integer(view, dbTABLE_IS_WRITABLE), 0); // opened to read
    EXPECT_EQ(text(view, dbTABLE_FILENAME), "");
    EXPECT_EQ(text(view, dbTABLE_DIRNAME), "");
    EXPECT_EQ(integer(view, dbFIELD_COUNT), 16);
    EXPECT_EQ(integer(view, dbRECORD_COUNT), 4);
    EXPECT_EQ(text(view, dbTABLE_DESCRIPTION), "view of arrival, site");
    EXPECT_EQ(text(view, dbTABLE_DETAIL), text(view, dbTABLE_CREATION));
    EXPECT_EQ(text(view, dbUNIQUE_ID_NAME), "arid");
    EXPECT_THAT(list(view, dbPRIMARY_KEY), ElementsAre("sta", "time", "ondate::offdate"));
    EXPECT_THAT(list(view, dbALTERNATE_KEY), ElementsAre("arid"));
    const Dbptr lat = dblookup(view, "", "", "lat", "");
    EXPECT_EQ(text(lat, dbFIELD_BASE_TABLE), "site");
    EXPECT_EQ(text(lat, dbFIELD_FORMAT), "%9.4f");
    EXPECT_EQ(integer(lat, dbFIELD_INDEX),
              integer(table("arrival"), dbRECORD_SIZE) +
                  integer(dblookup(table("site"), "", "", "lat", ""), dbFIELD_INDEX));
    EXPECT_EQ(integer(view, dbRECORD_SIZE),
              integer(table("arrival"), dbRECORD_SIZE) + integer(table("site"), dbRECORD_SIZE));
    EXPECT_EQ(get(Dbptr{view.database, view.table, lat.field, dbNULL}), "-999.0000");
    DbValue value{};
    Dbptr cell = lat;
    cell.record = 1;
    EXPECT_EQ(dbgetv(cell, nullptr, &value), 0);
    EXPECT_DOUBLE_EQ(value.real, 42.639);
    EXPECT_EQ(dbgetv(cell, "arrival.sta", &value), 0);
    EXPECT_STREQ(value.text, "AAK");
    free(value.text);
    EXPECT_LT(dbget(Dbptr{view.database, view.table, dbALL, 1}, nullptr, 0),
              0); // no scratch record of its own
    cell.record = 4;
    EXPECT_EQ(get(cell), "(-3)");
    EXPECT_THAT(take_log(), HasSubstr("view stations has 4 rows"));
}

TEST_F(Views, KeepTheFieldThatAPointerStandsOnForABareName)
{
    const Dbptr view = dbjoin(table("arrival"), table("assoc"), Names{"sta"}, nullptr, 0, nullptr, "both");
    const Dbptr on_assoc = dblookup(view, "", "", "assoc.phase", "");
    const Dbptr on_arrival = dblookup(view, "", "", "phase", "");
    EXPECT_NE(on_assoc.field, on_arrival.field);
    EXPECT_EQ(dblookup(on_assoc, "", "", "phase", "").field, on_assoc.field);
    EXPECT_EQ(dblookup(on_assoc, "", "", "both.phase", "").field, on_assoc.field);
    EXPECT_EQ(dblookup(on_assoc, "", "", "arrival.phase", "").field, on_arrival.field);
    EXPECT_THAT(column(dbsort(on_assoc, Names{"phase", "assoc.arid"}, 0, nullptr), "assoc.phase"),
                ElementsAre("P", "P", "P", "P", "S", "S"));
    EXPECT_EQ(integer(dbsubset(on_assoc, "phase == 'S'", nullptr), dbRECORD_COUNT), 2);
    EXPECT_EQ(integer(dbsubset(on_arrival, "phase == 'S' && arid == 2", nullptr), dbRECORD_COUNT), 1);
}

TEST_F(Views, RefuseNamesThatCannotBeOnes)
{
    for (const char *name : {"site", "a/b", "/", "dbALL", "dbNULL", "two\nlines"}) {
        EXPECT_LT(dbsubset(table("site"), "lat > 0", name).table, 0) << name;
        EXPECT_THAT(take_log(), HasSubstr("dbsubset: a view cannot have the name")) << name;
    }
    EXPECT_THAT(dbsubset(table("site"), "lat > 0", "a name with blanks").table, 7);
    EXPECT_LT(dbsort(table("site"), Names{"lat"}, 0, "a name with blanks").table, 0);
}

TEST_F(Views, AreFoundByTheNameOfAFreedGroupedMember)
{
    const Dbptr groups = dbgroup(table("arrival"), Names{"sta"}, "stations", 1);
    const Dbptr view = dbjoin(groups, table("site"), Names{"sta"}, nullptr, 0, nullptr, nullptr);
    EXPECT_EQ(dbfree(groups), 0);
    EXPECT_THAT(list(open->pointer, dbSCHEMA_TABLES), Not(Contains("stations")));
    EXPECT_THAT(list(view, dbVIEW_TABLES), ElementsAre("stations", "site"));
    EXPECT_THAT(list(dblookup(open->pointer, "", "stations", "", ""), dbTABLE_FIELDS),
                ElementsAre("sta", "bundle"));
    EXPECT_LT(dbsubset(table("site"), "lat > 0", "stations").table, 0);
    EXPECT_THAT(take_log(), HasSubstr("still a member of another one"));
    EXPECT_EQ(dbfree(view), 0);
    EXPECT_GE(dbsubset(table("site"), "lat > 0", "stations").table, 0);
}

TEST_F(Views, OverATableThatWasReplacedNeverShowAWrongRecord)
{
    const Dbptr view = dbsort(table("arrival"), Names{"time"}, 0, nullptr);
    const Dbptr groups = dbgroup(table("arrival"), Names{"sta"}, nullptr, 1);
    Dbptr cell = dblookup(view, "", "", "arid", "0");
    EXPECT_EQ(get(cell), "       3");
    // Another program sorts the file.
    const std::string path = files.tablePath("arrival");
    std::filesystem::rename(path, path + ".old");
    files.addTable("arrival", {{"AAK", "99.0", "2", "-1", "S"},
                               {"AAK", "100.5", "4", "-1", "P"},
                               {"KIV", "90.0", "3", "-1", "P"},
                               {"KIV", "100.5", "1", "-1", "P"}});
    integer(table("arrival"), dbRECORD_COUNT);
    EXPECT_EQ(get(cell), "(-1)");
    EXPECT_THAT(take_log(), HasSubstr("before another program replaced it or cut it short"));
    EXPECT_EQ(get(Dbptr{view.database, view.table, dbALL, 0}), "(-1)");
    EXPECT_EQ(get(dblookup(groups, "", "", "sta", "0")), "(-1)");
    take_log();
    EXPECT_LT(dbsubset(view, "time > 0", nullptr).table, 0);
    EXPECT_THAT(take_log(), HasSubstr("dbsubset: view arrival_sort1 was made of table arrival before"));
    EXPECT_THAT(column(dbsort(table("arrival"), Names{"time"}, 0, nullptr), "arid"),
                ElementsAre("3", "2", "4", "1"));
    // Growth leaves views as they are.
    const Dbptr made_again = dbsort(table("arrival"), Names{"time"}, 0, nullptr);
    files.appendRows("arrival", {{"AAK", "1.0", "5", "-1", "S"}});
    EXPECT_THAT(column(made_again, "arid"), ElementsAre("3", "2", "4", "1"));
}

TEST_F(Views, OverRecordsThatAreGoneFail)
{
    const Dbptr view = dbsort(table("arrival"), Names{"time"}, 0, nullptr);
    const std::string path = files.tablePath("arrival");
    std::filesystem::resize_file(path, static_cast<uintmax_t>(2 * integer(table("arrival"), dbRECORD_SIZE)));
    EXPECT_LT(dbsubset(view, "time > 0", nullptr).table, 0);
    EXPECT_THAT(take_log(), HasSubstr("before another program replaced it or cut it short"));
    EXPECT_GE(dbsort(table("arrival"), Names{"time"}, 0, nullptr).table, 0);
}

TEST_F(Views, OfARefusedTableAreEmptyAndSayWhy)
{
    files.writeFile("quakes.assoc", "too short\n");
    const Dbptr view = dbsort(table("assoc"), Names{"arid"}, 0, nullptr);
    EXPECT_GE(view.table, 0);
    EXPECT_EQ(integer(view, dbRECORD_COUNT), 0);
    EXPECT_THAT(take_log(), HasSubstr("9 bytes wide"));
}

// What a crunch is going to do to views.
class RenumberedViews : public Views
{
protected:
    orvane::Database &database()
    {
        return *orvane::DatabaseRegistry::of_process().database(open->pointer.database);
    }
    orvane::RecordTable &records(const char *name)
    {
        return dynamic_cast<orvane::RecordTable &>(*database().table(database().table_index(name)));
    }
    // Replaces the records of a table by those of the same columns; the new numbers of the old ones, -1 is
    // gone.
    void replace(const char *name, const std::vector<TemporaryDatabase::Row> &rows,
                 const std::vector<int> &numbers)
    {
        orvane::RecordTable &base = records(name);
        base.snapshot();
        const std::uint64_t generation = base.generation();
        const std::string path = files.tablePath(name);
        std::filesystem::rename(path, path + ".old");
        files.addTable(name, rows);
        std::vector<orvane::RowNumber> renumbered;
        for (const int number : numbers)
            renumbered.push_back(number < 0 ? orvane::null_row : static_cast<orvane::RowNumber>(number));
        database().renumber(base, generation, renumbered);
    }
    // The arrivals without the second one.
    void dropSecondArrival()
    {
        replace("arrival",
                {{"KIV", "100.5", "1", "-1", "P"},
                 {"KIV", "90.0", "3", "-1", "P"},
                 {"AAK", "100.5", "4", "-1", "P"}},
                {0, -1, 1, 2});
    }
};

TEST_F(RenumberedViews, FollowAndLoseTheRowsOfGoneRecords)
{
    const Dbptr sorted = dbsort(table("arrival"), Names{"time"}, 0, nullptr);
    const Dbptr joined =
        dbjoin(table("assoc"), table("arrival"), Names{"arid"}, nullptr, 1, nullptr, nullptr);
    dropSecondArrival();
    EXPECT_THAT(column(sorted, "arid"), ElementsAre("3", "1", "4"));
    EXPECT_THAT(column(joined, "assoc.arid"), ElementsAre("3", "9"));
    EXPECT_THAT(column(joined, "arrival.arid"), ElementsAre("3", "-1"));
    EXPECT_THAT(column(dbsort(sorted, Names{"arid"}, 0, nullptr), "arid"), ElementsAre("1", "3", "4"));
}

TEST_F(RenumberedViews, LoseBundlesWithoutRows)
{
    const Dbptr groups = dbgroup(table("arrival"), Names{"time"}, nullptr, 1); // 90, 99, 100.5 twice
    const Dbptr beside = dbjoin(groups, table("assoc"), Names{"time"}, Names{"arid"}, 1, nullptr, nullptr);
    const Dbptr again = dbgroup(groups, Names{"time"}, nullptr, 1);
    EXPECT_EQ(integer(beside, dbRECORD_COUNT), 3);
    EXPECT_EQ(bundle(groups, 2), "2-4");
    dropSecondArrival();
    EXPECT_THAT(column(groups, "time"), ElementsAre("90.0", "100.5"));
    EXPECT_EQ(bundle(groups, 0), "0-1");
    EXPECT_EQ(bundle(groups, 1), "1-3");
    EXPECT_EQ(integer(beside, dbRECORD_COUNT), 2);
    EXPECT_EQ(bundle(beside, 1), "1-3");
    EXPECT_THAT(column(again, "time"), ElementsAre("90.0", "100.5"));
    EXPECT_THAT(column(dbungroup(groups, nullptr), "arid"), ElementsAre("3", "1", "4"));
}

TEST_F(RenumberedViews, MayBecomeEmpty)
{
    const Dbptr sorted = dbsort(table("arrival"), Names{"time"}, 0, nullptr);
    const Dbptr groups = dbgroup(sorted, Names{"time"}, nullptr, 1);
    replace("arrival", {}, {-1, -1, -1, -1});
    EXPECT_EQ(integer(sorted, dbRECORD_COUNT), 0);
    EXPECT_EQ(integer(groups, dbRECORD_COUNT), 0);
    EXPECT_EQ(integer(dbungroup(groups, nullptr), dbRECORD_COUNT), 0);
}

TEST_F(RenumberedViews, ThatAreEmptyStayOfUse)
{
    const Dbptr none = dbsubset(table("arrival"), "time < 0", nullptr);
    const Dbptr groups = dbgroup(none, Names{"sta"}, nullptr, 1);
    dropSecondArrival();
    EXPECT_EQ(integer(dbsort(none, Names{"time"}, 0, nullptr), dbRECORD_COUNT), 0);
    EXPECT_EQ(integer(dbungroup(groups, nullptr), dbRECORD_COUNT), 0);
    EXPECT_EQ(take_log(), "");
}

TEST_F(RenumberedViews, ThatWereOutdatedBeforeStayOutdated)
{
    const Dbptr sorted = dbsort(table("arrival"), Names{"time"}, 0, nullptr);
    const Dbptr groups = dbgroup(table("arrival"), Names{"sta"}, nullptr, 1);
    // Another program turns the records round, and nobody looks until ours are numbered anew.
    const std::string path = files.tablePath("arrival");
    std::filesystem::rename(path, path + ".older");
    files.addTable("arrival", {{"AAK", "100.5", "4", "-1", "P"},
                               {"KIV", "90.0", "3", "-1", "P"},
                               {"AAK", "99.0", "2", "-1", "S"},
                               {"KIV", "100.5", "1", "-1", "P"}});
    replace(
        "arrival",
        {{"AAK", "100.5", "4", "-1", "P"}, {"KIV", "90.0", "3", "-1", "P"}, {"KIV", "100.5", "1", "-1", "P"}},
        {0, 1, -1, 2});
    EXPECT_THAT(column(sorted, "arid"), testing::Each("(-1)"));
    EXPECT_THAT(column(groups, "sta"), testing::Each("(-1)"));
    take_log();
    EXPECT_LT(dbsubset(sorted, "time > 0", nullptr).table, 0);
    EXPECT_THAT(take_log(), HasSubstr("before another program replaced it or cut it short"));
    EXPECT_THAT(column(dbsort(table("arrival"), Names{"time"}, 0, nullptr), "arid"),
                ElementsAre("3", "4", "1"));
}

} // namespace
