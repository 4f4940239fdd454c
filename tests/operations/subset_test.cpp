#include "db/watched_file_system.h"
#include "operations/derived.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class Subset : public testing::Test
{
protected:
    Subset()
    {
        files.addTable("site", {{"AAK", "2008001", "-1", "42.6390", "74.4940"},
                                {"KIV", "2008001", "2010001", "43.9550", "42.6860"},
                                {"-", "-1", "-1", "-999.0000", "-999.0000"},
                                {"ABKT", "2008001", "-1", "37.9300", "58.1190"}});
        open = std::make_unique<Opened>(files.path());
    }

    TemporaryDatabase files;
    std::unique_ptr<Opened> open;
};

TEST_F(Subset, KeepsTheRowsForWhichTheExpressionIsTrueInOrder)
{
    const Dbptr view = dbsubset(open->table("site"), "lat > 40", nullptr);
    ASSERT_GE(view.table, 0) << take_log();
    EXPECT_THAT(column(view, "sta"), ElementsAre("AAK", "KIV"));
    EXPECT_EQ(view.field, dbALL);
    EXPECT_EQ(view.record, dbALL);
    EXPECT_EQ(take_log(), "");
}

TEST_F(Subset, OfAViewReadsTheViewsRows)
{
    const Dbptr north = dbsubset(open->table("site"), "lat > 38", "north");
    const Dbptr view = dbsubset(north, "sta =~ 'K$' && north.lon > 70", nullptr);
    ASSERT_GE(view.table, 0) << take_log();
    EXPECT_THAT(column(view, "sta"), ElementsAre("AAK"));
}

TEST_F(Subset, OfAMissingTableIsEmpty)
{
    const Dbptr view = dbsubset(open->table("origin"), "lat > 38", nullptr);
    ASSERT_GE(view.table, 0) << take_log();
    EXPECT_EQ(integer(view, dbRECORD_COUNT), 0);
    EXPECT_EQ(integer(view, dbTABLE_PRESENT), 1);
}

TEST_F(Subset, SeesRecordsThatWereAppendedSince)
{
    EXPECT_EQ(integer(dbsubset(open->table("site"), "lat > 40", nullptr), dbRECORD_COUNT), 2);
    files.appendRows("site", {{"TIXI", "2008001", "-1", "71.6341", "128.8667"}});
    EXPECT_EQ(integer(dbsubset(open->table("site"), "lat > 40", nullptr), dbRECORD_COUNT), 3);
}

// Whether columns have room or the file is read in blocks.
class SubsetOfManyRows : public testing::TestWithParam<const char *>
{
protected:
    SubsetOfManyRows()
    {
        setenv("ORVANE_COLUMN_BUDGET", GetParam(), 1);
        std::vector<TemporaryDatabase::Row> rows(150000, {"AAK", "2008001", "-1", "42.6390", "74.4940"});
        rows[1][0] = "R0";
        rows[3000][0] = "R1";
        rows[50000][0] = "R2";
        rows[149999][0] = "R3";
        rows[1][3] = "north";
        rows[50000][3] = "south";
        files.addTable("site", rows);
        std::this_thread::sleep_for(std::chrono::milliseconds(80)); // the file's time tells of later changes
        open = std::make_unique<Opened>(files.path());
    }
    ~SubsetOfManyRows() override { unsetenv("ORVANE_COLUMN_BUDGET"); }

    TemporaryDatabase files;
    WatchedFileSystem watched;
    const orvane::ScopedFileSystem scope{watched}; // memory of its own, with that budget
    std::unique_ptr<Opened> open;
};

TEST_P(SubsetOfManyRows, FindsThemWhereTheyAre)
{
    const Dbptr site = open->table("site");
    for (int again = 0; again < 2; ++again) {
        EXPECT_THAT(column(dbsubset(site, "sta =~ '^R'", nullptr), "sta"),
                    ElementsAre("R0", "R1", "R2", "R3"));
        EXPECT_EQ(dbfind(site, "sta =~ '^R'", 0, nullptr), 1);
        EXPECT_EQ(dbfind(site, "sta =~ '^R' && lat > 0", 0, nullptr), 3000);
        EXPECT_EQ(dbfind(site, "sta =~ '^R'", 1, nullptr), 149999);
        Dbptr from = site;
        from.record = 149999;
        EXPECT_EQ(dbfind(from, "sta =~ '^R'", 1, nullptr), 50000);
    }
    const int before = watched.reads("quakes.site");
    dbsubset(site, "sta =~ '^R'", nullptr);
    const bool read_again = watched.reads("quakes.site") > before;
    EXPECT_EQ(read_again, std::string(GetParam()) == "1");
}

TEST_P(SubsetOfManyRows, SaysOnceThatValuesCannotBeRead)
{
    testing::internal::CaptureStderr(); // where notices go
    EXPECT_EQ(dbfind(open->table("site"), "lat > 80", 0, nullptr), dbERROR_NOT_FOUND);
    const std::string notices = testing::internal::GetCapturedStderr();
    EXPECT_THAT(notices, HasSubstr("field lat: 2 values are not of type"));
    EXPECT_EQ(std::count(notices.begin(), notices.end(), '\n'), 1) << notices;
    take_log();
    EXPECT_THAT(column(dbsubset(open->table("site"), "isnull(lat)", nullptr), "lat"),
                ElementsAre("north", "south"));
}

INSTANTIATE_TEST_SUITE_P(Memory, SubsetOfManyRows, testing::Values("1", ""), [](const auto &budget) {
    return std::string(*budget.param ? "without_room_for_columns" : "with_room");
});

TEST_F(Subset, WithAnUnknownFieldLeavesNoView)
{
    const Dbptr view = dbsubset(open->table("site"), "latt > 40", nullptr);
    EXPECT_EQ(view.table, dbINVALID);
    const std::string log = take_log();
    EXPECT_THAT(log, HasSubstr("dbsubset: "));
    EXPECT_THAT(log, HasSubstr("latt > 40"));
    EXPECT_THAT(log, HasSubstr("^^^^"));
    EXPECT_EQ(list(open->pointer, dbSCHEMA_TABLES).size(), 7u);
}

TEST_F(Subset, WithAHostileExpressionLeavesNoView)
{
    const std::string hostile[] = {
        std::string(10 << 20, '1'),
        "sta == '" + std::string(10 << 20, 'x') + "'",
        std::string(100000, '(') + "1" + std::string(100000, ')'),
        std::string(100000, '!') + "1",
        "sta == 'A",
        "sta =~ '" + std::string(5000, '(') + "'",
        "sta =~ '((((((((a{1,1000}){1,1000}){1,1000}){1,1000})))))'",
        "lat + ",
        "",
        "lat",
        "sta + 1 > 2",
        "bogus(lat) > 1",
    };
    for (const std::string &expression : hostile) {
        const bool a_number = expression == "lat"; // true where it is not 0
        EXPECT_EQ(dbsubset(open->table("site"), expression.c_str(), nullptr).table >= 0, a_number)
            << expression.substr(0, 60);
        const std::string log = take_log();
        EXPECT_EQ(log.starts_with("dbsubset: "), !a_number) << log.substr(0, 200);
    }
    EXPECT_EQ(dbsubset(open->table("site"), nullptr, nullptr).table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("the expression is null"));
    // A pattern that other matchers take for ever over.
    const std::string slow = "'" + std::string(60, 'a') + "!' =~ '^(a+)+$'";
    EXPECT_EQ(integer(dbsubset(open->table("site"), slow.c_str(), nullptr), dbRECORD_COUNT), 0);
    EXPECT_EQ(list(open->pointer, dbSCHEMA_TABLES).size(), 9u);
}

TEST_F(Subset, WithANameThatIsTakenOrHoldsASlashLeavesNoView)
{
    EXPECT_EQ(dbsubset(open->table("site"), "lat > 40", "origin").table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("'origin'"));
    EXPECT_EQ(dbsubset(open->table("site"), "lat > 40", "a/b").table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("slash"));
    EXPECT_EQ(list(open->pointer, dbSCHEMA_TABLES).size(), 7u);
}

} // namespace
