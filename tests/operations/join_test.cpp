#include "operations/derived.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class Join : public testing::Test
{
protected:
    Join()
    {
        files.addTable("arrival",
                       {{"KIV", "1202256000.0", "1", "2008038", "P"}, // 2008-02-06
                        {"AAK", "1265328000.0", "2", "2010036", "S"}, // 2010-02-05
                        {"KIV", "-9999999999.999", "3", "-1", "P"},
                        {"-", "1202256000.0", "-1", "2008038", "P"},
                        {"KIV", "1262390399.5", "5", "2010001", "P"}}); // the last second of 2010-01-01
        files.addTable("assoc", {{"2", "10", "AAK", "S"},
                                 {"1", "10", "KIV", "P"},
                                 {"1", "11", "KIV", "Pn"},
                                 {"-1", "12", "XXX", "P"}});
        files.addTable("site", {{"AAK", "2008001", "-1", "42.6390", "74.4940"},
                                {"KIV", "2008001", "2010001", "43.9550", "42.6860"},
                                {"KIV", "2010001", "2011001", "43.0000", "42.0000"},
                                {"-", "-1", "-1", "-999.0000", "-999.0000"}});
        files.addTable("origin", {{"40.0", "70.0", "10.0", "1202255000.0", "10"},
                                  {"41.0", "71.0", "11.0", "1202255500.0", "11"},
                                  {"42.0", "72.0", "12.0", "1202255600.0", "13"}});
        open = std::make_unique<Opened>(files.path());
    }

    Dbptr table(const char *name) const { return open->table(name); }
    Dbptr join(Dbptr left, Dbptr right, int outer = 0) const
    {
        return dbjoin(left, right, nullptr, nullptr, outer, nullptr, nullptr);
    }

    TemporaryDatabase files;
    std::unique_ptr<Opened> open;
};

TEST_F(Join, GivesLeftRowsInOrderEachWithItsMatchesInRecordOrder)
{
    const Dbptr view = join(table("arrival"), table("assoc"));
    ASSERT_GE(view.table, 0) << take_log();
    EXPECT_THAT(column(view, "arrival.arid"), ElementsAre("1", "1", "2"));
    EXPECT_THAT(column(view, "orid"), ElementsAre("10", "11", "10"));
    EXPECT_THAT(column(view, "assoc.phase"), ElementsAre("P", "Pn", "S"));
    EXPECT_THAT(list(view, dbVIEW_TABLES), ElementsAre("arrival", "assoc"));
    EXPECT_EQ(text(view, dbTABLE_NAME), "arrival_assoc_join1");
    EXPECT_EQ(text(view, dbTABLE_CREATION), "dbopen arrival\ndbopen assoc\ndbjoin arid");
}

TEST_F(Join, OuterKeepsLeftRowsBesideANullRecord)
{
    const Dbptr view = join(table("arrival"), table("assoc"), 1);
    EXPECT_THAT(column(view, "arrival.arid"), ElementsAre("1", "1", "2", "3", "-1", "5"));
    EXPECT_THAT(column(view, "orid"), ElementsAre("10", "11", "10", "-1", "-1", "-1"));
    EXPECT_THAT(column(view, "assoc.phase"), ElementsAre("P", "Pn", "S", "-", "-", "-"));
    // The nulls are nulls to operations, too.
    EXPECT_THAT(column(dbsubset(view, "isnull(orid)", nullptr), "arrival.arid"), ElementsAre("3", "-1", "5"));
    EXPECT_THAT(column(dbsort(view, Names{"orid", "arrival.arid"}, 0, nullptr), "arrival.arid"),
                ElementsAre("-1", "3", "5", "1", "2", "1"));
}

TEST_F(Join, ByARangeTakesTheDaysAtItsEndsWhole)
{
    const Dbptr view = join(table("arrival"), table("site"));
    ASSERT_GE(view.table, 0) << take_log();
    EXPECT_THAT(column(view, "arid"), ElementsAre("1", "2", "5", "5"));
    EXPECT_THAT(column(view, "lat"), ElementsAre("43.9550", "42.6390", "43.9550", "43.0000"));
    // The same by the time, which has no day written beside it.
    const Dbptr by_time = dbjoin(table("arrival"), table("site"), Names{"sta", "time"},
                                 Names{"sta", "ondate::offdate"}, 0, nullptr, nullptr);
    ASSERT_GE(by_time.table, 0) << take_log();
    EXPECT_THAT(column(by_time, "arid"), ElementsAre("1", "2", "5", "5"));
    EXPECT_EQ(text(by_time, dbTABLE_CREATION),
              "dbopen arrival\ndbopen site\ndbjoin sta time=ondate::offdate");
}

// Stations of many arrivals are looked up in another way than those of few; the order is the same.
TEST_F(Join, ByARangeGivesMatchesInRecordOrderHoweverManyThereAre)
{
    std::vector<TemporaryDatabase::Row> arrivals;
    std::vector<std::string> of_aak;
    for (int arid = 1; arid <= 60; ++arid) { // later and later ones first
        const bool aak = arid % 10 == 0;
        arrivals.push_back(
            {aak ? "AAK" : "KIV", std::to_string(1230000000 - arid) + ".0", std::to_string(arid)});
        if (aak)
            of_aak.push_back(std::to_string(arid));
    }
    files.addTable("arrival", arrivals);
    const Dbptr view = dbjoin(table("site"), table("arrival"), Names{"sta", "ondate::offdate"},
                              Names{"sta", "time"}, 0, nullptr, nullptr);
    ASSERT_EQ(integer(view, dbRECORD_COUNT), 60) << take_log();
    const auto arids = column(view, "arid");
    EXPECT_EQ(std::vector<std::string>(arids.begin(), arids.begin() + 6), of_aak);
    EXPECT_EQ(arids[6], "1");
    EXPECT_EQ(arids[59], "59");
}

TEST_F(Join, OfManyTablesReadsEveryMember)
{
    const Dbptr view = join(join(join(table("arrival"), table("assoc")), table("origin")), table("site"));
    ASSERT_GE(view.table, 0) << take_log();
    EXPECT_THAT(list(view, dbVIEW_TABLES), ElementsAre("arrival", "assoc", "origin", "site"));
    EXPECT_THAT(column(view, "origin.lat"), ElementsAre("40.0", "41.0", "40.0"));
    EXPECT_THAT(column(view, "site.lat"), ElementsAre("43.9550", "43.9550", "42.6390"));
    // A bare name is the first member's that has it.
    EXPECT_THAT(column(view, "lat"), ElementsAre("40.0", "41.0", "40.0"));
    EXPECT_THAT(column(view, (text(view, dbTABLE_NAME) + ".lat").c_str()),
                ElementsAre("40.0", "41.0", "40.0"));
    const Dbptr of_site = dblookup(view, "", "", "site.lat", "");
    EXPECT_EQ(dblookup(of_site, "", "", "lat", "").field, of_site.field);
    EXPECT_EQ(get(Dbptr{view.database, view.table, dbALL, 0}),
              get(open->record("arrival", 0)) + " " + get(open->record("assoc", 1)) + " " +
                  get(open->record("origin", 0)) + " " + get(open->record("site", 1)));
    EXPECT_EQ(integer(view, dbRECORD_SIZE),
              static_cast<int64_t>(get(Dbptr{view.database, view.table, dbALL, 0}).size()) + 1);
    EXPECT_EQ(integer(view, dbTABLE_SIZE), 3 * integer(view, dbRECORD_SIZE));
}

TEST_F(Join, OnGivenKeysTakesThem)
{
    const Dbptr view =
        dbjoin(table("arrival"), table("assoc"), Names{"sta", "phase"}, nullptr, 0, nullptr, nullptr);
    EXPECT_THAT(column(view, "arrival.arid"), ElementsAre("1", "2", "3", "5"));
    const Dbptr further =
        dbjoin(table("arrival"), table("assoc"), nullptr, nullptr, 0, Names{"phase"}, nullptr);
    EXPECT_THAT(column(further, "arrival.arid"), ElementsAre("1", "2"));
    EXPECT_THAT(column(further, "orid"), ElementsAre("10", "10"));
}

TEST_F(Join, NojoinKeepsLeftRowsWithoutAMatch)
{
    const Dbptr view = dbnojoin(table("arrival"), table("assoc"), nullptr, nullptr, nullptr);
    EXPECT_THAT(column(view, "arid"), ElementsAre("3", "-1", "5"));
    EXPECT_THAT(list(view, dbVIEW_TABLES), ElementsAre("arrival"));
    EXPECT_THAT(column(dbnojoin(table("arrival"), table("site"), nullptr, nullptr, nullptr), "arid"),
                ElementsAre("3", "-1"));
}

TEST_F(Join, ThetaGivesThePairsForWhichTheExpressionIsTrue)
{
    const Dbptr view =
        dbtheta(table("origin"), table("arrival"),
                "arrival.time >= origin.time && arrival.time <= origin.time + 600 && phase != 'S'", nullptr);
    ASSERT_GE(view.table, 0) << take_log();
    EXPECT_THAT(column(view, "origin.orid"), ElementsAre("11", "11", "13", "13"));
    EXPECT_THAT(column(view, "arid"), ElementsAre("1", "-1", "1", "-1"));
    EXPECT_EQ(text(view, dbTABLE_NAME), "origin_arrival_theta1");
    const Dbptr by_day =
        dbtheta(table("arrival"), table("site"),
                "arrival.sta == site.sta && time >= ondate && (time <= offdate || offdate == -1)", nullptr);
    ASSERT_GE(by_day.table, 0) << take_log();
    EXPECT_THAT(column(by_day, "arid"), ElementsAre("1", "2", "5", "5"));
}

TEST_F(Join, ThetaOfComputedTextsLeavesOutBlanksAtTheirEnds)
{
    for (const char *expression :
         {"strcat(arrival.sta, '  ') == site.sta", "site.sta == strcat(arrival.sta, ' ')",
          "strcat(site.sta, ' ') == strcat(arrival.sta, '')"}) {
        const Dbptr view = dbtheta(table("arrival"), table("site"), expression, nullptr);
        ASSERT_GE(view.table, 0) << take_log();
        EXPECT_THAT(column(view, "arid"), ElementsAre("1", "1", "2", "3", "3", "5", "5")) << expression;
    }
}

TEST_F(Join, SeverDropsAMemberAndThenEqualRows)
{
    const Dbptr view = join(table("arrival"), table("assoc"));
    const Dbptr severed = dbsever(view, "assoc", nullptr);
    EXPECT_THAT(column(severed, "arid"), ElementsAre("1", "2"));
    EXPECT_THAT(list(severed, dbVIEW_TABLES), ElementsAre("arrival"));
    const Dbptr three = join(view, table("origin"));
    EXPECT_THAT(column(dbsever(three, "arrival", nullptr), "assoc.arid"), ElementsAre("1", "1", "2"));
    EXPECT_EQ(dbsever(view, "site", nullptr).table, dbINVALID);
    EXPECT_THAT(take_log(),
                HasSubstr("dbsever: no table 'site' in view arrival_assoc_join1, which is made of "
                          "arrival, assoc"));
    EXPECT_EQ(dbsever(severed, "arrival", nullptr).table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("nothing would be left"));
}

TEST_F(Join, SeparateGivesTheDistinctRecordsOfAMemberInRecordOrder)
{
    const Dbptr view =
        dbsort(join(table("arrival"), table("assoc"), 1), Names{"arrival.time"}, dbSORT_REVERSE, nullptr);
    EXPECT_THAT(column(dbseparate(view, "arrival"), "arid"), ElementsAre("1", "2", "3", "-1", "5"));
    EXPECT_THAT(column(dbseparate(view, "assoc"), "orid"), ElementsAre("10", "10", "11"));
}

TEST_F(Join, OfGroupsWithATableCanBeUngroupedBesideIt)
{
    const Dbptr groups = dbgroup(table("arrival"), Names{"sta"}, nullptr, 1);
    const Dbptr view = dbjoin(groups, table("site"), Names{"sta"}, nullptr, 0, nullptr, nullptr);
    ASSERT_GE(view.table, 0) << take_log();
    EXPECT_THAT(column(view, "arrival_group1.sta"), ElementsAre("AAK", "KIV", "KIV"));
    EXPECT_EQ(bundle(view, 1), "2-5");
    const Dbptr rows = dbungroup(view, nullptr);
    EXPECT_THAT(column(rows, "arid"), ElementsAre("2", "1", "3", "5", "1", "3", "5"));
    EXPECT_THAT(column(rows, "site.lat"),
                ElementsAre("42.6390", "43.9550", "43.9550", "43.9550", "43.0000", "43.0000", "43.0000"));
}

struct BadJoin {
    const char *name;
    std::vector<std::string> left_keys;
    std::vector<std::string> right_keys;
    const char *reason;
};

TEST_F(Join, OnBadKeysLeavesNoView)
{
    const BadJoin bad[] = {
        {"unknown", {"aridd"}, {"arid"}, "no field 'aridd' in table arrival; near it: arid"},
        {"unknown right", {"arid"}, {"ardi"}, "no field 'ardi' in table assoc"},
        {"lengths", {"arid", "sta"}, {"arid"}, "2 keys of arrival and 1 of assoc"},
        {"types", {"sta"}, {"arid"}, "'sta' of arrival is of type string"},
        {"no range", {"sta::phase"}, {"sta"}, "'sta::phase' is no range"},
        {"mixed range", {"time::jdate"}, {"arid"}, "both ends have to be numbers of one type"},
        {"empty", {""}, {"arid"}, "no field ''"},
    };
    for (const BadJoin &join : bad) {
        const Dbptr made = dbjoin(table("arrival"), table("assoc"), Names(join.left_keys),
                                  Names(join.right_keys), 0, nullptr, nullptr);
        EXPECT_EQ(made.table, dbINVALID) << join.name;
        const std::string log = take_log();
        EXPECT_THAT(log, HasSubstr(std::string("dbjoin: "))) << join.name;
        EXPECT_THAT(log, HasSubstr(join.reason)) << join.name;
    }
    EXPECT_EQ(join(table("site"), table("event")).table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("no keys by which site joins event"));
    EXPECT_EQ(join(table("site"), table("site")).table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("table site is in both"));
    EXPECT_EQ(join(table("site"), dbinvalid()).table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("points to no open database"));
    EXPECT_EQ(integer(open->pointer, dbTABLE_COUNT), 7);
}

TEST_F(Join, ThetaOfABadExpressionShowsItsPlace)
{
    EXPECT_EQ(dbtheta(table("site"), table("arrival"), "site.sta = arrival.sta", nullptr).table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("^"));
    EXPECT_EQ(dbtheta(table("site"), table("arrival"), "site.stat == arrival.sta", nullptr).table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("^^^^"));
    EXPECT_EQ(dbtheta(table("site"), table("arrival"), nullptr, nullptr).table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("the expression is null"));
    EXPECT_EQ(integer(open->pointer, dbTABLE_COUNT), 7);
}

} // namespace
