// What every operation makes of bad input: an error that says why, no half view, and a database as before.
#include "operations/derived.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>

using testing::HasSubstr;

namespace {

class BadInput : public testing::Test
{
protected:
    BadInput()
    {
        files.addTable("site", {{"AAK", "2008001", "-1", "42.6390", "74.4940"},
                                {"KIV", "2008001", "2010001", "43.9550", "42.6860"}});
        files.addTable("arrival", {{"KIV", "100.5", "1", "-1", "P"}, {"AAK", "99.0", "2", "-1", "S"}});
        files.addTable("assoc", {{"2", "10", "AAK", "S"}, {"1", "10", "KIV", "P"}});
        open = std::make_unique<Opened>(files.path());
        joined = dbjoin(table("arrival"), table("assoc"), Names{"arid"}, nullptr, 0, nullptr, "pairs");
        grouped = dbgroup(table("arrival"), Names{"sta"}, "stations", 1);
        before = list(open->pointer, dbSCHEMA_TABLES);
    }

    Dbptr table(const char *name) const { return open->table(name); }

    // The call failed, said why, and left everything as it was.
    void expectRefused(Dbptr made, const std::string &start, const std::string &reason)
    {
        EXPECT_EQ(made.database, dbINVALID);
        EXPECT_EQ(made.table, dbINVALID);
        const std::string log = take_log();
        EXPECT_TRUE(log.starts_with(start + ": ")) << log.substr(0, 300);
        EXPECT_THAT(log.substr(0, 3000), HasSubstr(reason));
        EXPECT_EQ(list(open->pointer, dbSCHEMA_TABLES), before);
        EXPECT_EQ(integer(open->pointer, dbTABLE_COUNT), static_cast<int64_t>(before.size()));
        EXPECT_LT(dblookup(open->pointer, "", "wanted", "", "").table, 0);
        take_log();
        const Dbptr next = dbsubset(table("site"), "lat > 43", "next");
        EXPECT_EQ(integer(next, dbRECORD_COUNT), 1);
        EXPECT_EQ(dbfree(next), 0);
    }

    TemporaryDatabase files;
    std::unique_ptr<Opened> open;
    Dbptr joined{}, grouped{};
    std::vector<std::string> before;
};

struct Operation {
    const char *call;
    std::function<Dbptr(const char *view)> run;
};

TEST_F(BadInput, NamesThatViewsCannotHaveAreRefusedByEveryOperation)
{
    const Operation operations[] = {
        {"dbsubset", [&](const char *view) { return dbsubset(table("site"), "lat > 0", view); }},
        {"dbsort", [&](const char *view) { return dbsort(table("site"), Names{"lat"}, 0, view); }},
        {"dbgroup", [&](const char *view) { return dbgroup(table("site"), Names{"sta"}, view, 1); }},
        {"dbungroup", [&](const char *view) { return dbungroup(grouped, view); }},
        {"dbsever", [&](const char *view) { return dbsever(joined, "assoc", view); }},
        {"dbjoin",
         [&](const char *view) {
             return dbjoin(table("arrival"), table("site"), Names{"sta"}, nullptr, 1, nullptr, view);
         }},
        {"dbnojoin",
         [&](const char *view) {
             return dbnojoin(table("arrival"), table("site"), Names{"sta"}, nullptr, view);
         }},
        {"dbtheta",
         [&](const char *view) {
             return dbtheta(table("arrival"), table("site"), "arrival.sta == site.sta", view);
         }},
    };
    const std::pair<std::string, const char *> names[] = {
        {"origin", "there already"},
        {"pairs", "there already"},
        {"a/b", "slash"},
        {"dbSCRATCH", "meaning of its own"},
        {"two\nlines", "control"},
        {"caf\xe9", "UTF-8"},
        {"half a character \xc3", "UTF-8"},
        {std::string(256, 'x'), "256 bytes"},
        {std::string(10 << 20, 'x'), "bytes"},
    };
    for (const Operation &operation : operations) {
        SCOPED_TRACE(operation.call);
        for (const auto &[name, reason] : names) {
            SCOPED_TRACE(name.substr(0, 40));
            expectRefused(operation.run(name.c_str()), operation.call, reason);
        }
        // None, and the longest one.
        const Dbptr telling = operation.run("");
        const Dbptr longest = operation.run(std::string(255, 'y').c_str());
        EXPECT_NE(text(telling, dbTABLE_NAME), "") << take_log();
        EXPECT_EQ(text(longest, dbTABLE_NAME), std::string(255, 'y'));
        for (const Dbptr made : {telling, longest})
            EXPECT_EQ(dbfree(made), 0);
    }
}

TEST_F(BadInput, TellingNamesOfViewsWithLongNamesStayShort)
{
    std::string name = "x";
    for (int i = 0; i < 127; ++i)
        name += "ö";
    const Dbptr long_named = dbgroup(table("arrival"), Names{"sta"}, name.c_str(), 1);
    ASSERT_EQ(text(long_named, dbTABLE_NAME), name) << take_log();
    const Dbptr sorted = dbsort(long_named, Names{"sta"}, 0, nullptr);
    EXPECT_EQ(text(sorted, dbTABLE_NAME), name.substr(0, 199) + "_sort1") << take_log();
}

TEST_F(BadInput, ExpressionsAreRefusedWithTheirPlace)
{
    const std::pair<std::string, const char *> expressions[] = {
        {"statoin == 'AAK'", "unknown field"},
        {"arrival.tiem > 0", "time"},
        {"nowhere.sta == 'A'", "nowhere"},
        {"sta > 3 + ", "expected"},
        {"sta + 1 > 2", "sta"},
        {"time == 'yesterday evening'", "yesterday"},
        {"arid == 'many'", "number"},
        {"sta == 'A", "does not end"},
        {"sta == \"A'", "does not end"},
        {"(sta == 'A'", ")"},
        {"sta == 'A')", ")"},
        {"sta =~ '('", "regular expression"},
        {"sta =~ iphase", "iphase"},
        {"sta =~ phase", "constant"},
        {"lenght(sta) > 1", "length"},
        {"substr(sta) == 'A'", "substr"},
        {"", "expression"},
        {"   ", "expression"},
        {std::string(10 << 20, '1'), "at most 1048576 are taken"},
        {"sta == '" + std::string(10 << 20, 'x') + "'", "at most 1048576 are taken"},
        {std::string(100000, '(') + "1" + std::string(100000, ')'), "deep"},
        {std::string(100000, '!') + "1", "deep"},
        {std::string(100000, '-') + "1 > 0", "deep"},
        {"sta =~ '((((((((a{1,1000}){1,1000}){1,1000}){1,1000})))))'", "regular expression"},
        {"sta == 'A\x01", "does not end"},
        {"sta == \xff", ""},
    };
    for (const auto &[expression, reason] : expressions) {
        SCOPED_TRACE(expression.substr(0, 60));
        const auto begin = std::chrono::steady_clock::now();
        expectRefused(dbsubset(table("arrival"), expression.c_str(), "wanted"), "dbsubset", reason);
        expectRefused(dbsubset(joined, expression.c_str(), "wanted"), "dbsubset", reason);
        expectRefused(dbtheta(table("arrival"), table("site"), expression.c_str(), "wanted"), "dbtheta",
                      reason);
        EXPECT_LT(dbfind(table("arrival"), expression.c_str(), 0, nullptr), 0);
        EXPECT_NE(take_log(), "");
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    }
    expectRefused(dbsubset(table("arrival"), nullptr, "wanted"), "dbsubset", "null");
    expectRefused(dbtheta(table("arrival"), table("site"), nullptr, "wanted"), "dbtheta", "null");
}

TEST_F(BadInput, FieldsAndTablesThatAreNotThereAreRefused)
{
    for (const char *field : {"stta", "", "site.sta", "arrival.", ".sta", "sta time"}) {
        SCOPED_TRACE(field);
        expectRefused(dbsort(table("arrival"), Names{field}, 0, "wanted"), "dbsort", "no field");
        expectRefused(dbgroup(table("arrival"), Names{"sta", field}, "wanted", 1), "dbgroup", "no field");
    }
    expectRefused(dbsort(table("arrival"), Names(std::vector<std::string>()), 0, "wanted"), "dbsort",
                  "field");
    expectRefused(dbsort(table("arrival"), nullptr, 0, "wanted"), "dbsort", "field");
    expectRefused(dbsort(table("arrival"), Names{"sta"}, 4, "wanted"), "dbsort", "flags");
    expectRefused(dbgroup(table("arrival"), Names{"sta"}, "wanted", 2), "dbgroup", "type 2");
    for (const char *member : {"site", "nowhere", "", "pairs", "arrival.sta"}) {
        SCOPED_TRACE(member);
        expectRefused(dbsever(joined, member, "wanted"), "dbsever", "no table '" + std::string(member) + "'");
        expectRefused(dbseparate(joined, member), "dbseparate", "no table '" + std::string(member) + "'");
    }
    expectRefused(dbsever(joined, nullptr, "wanted"), "dbsever", "null");
    expectRefused(dbseparate(joined, nullptr), "dbseparate", "null");
    expectRefused(dbsever(table("site"), "site", "wanted"), "dbsever", "nothing would be left");
    expectRefused(dbungroup(table("site"), "wanted"), "dbungroup", "not grouped");
    expectRefused(dbungroup(joined, "wanted"), "dbungroup", "not grouped");
}

TEST_F(BadInput, PointersToNoTableAreRefused)
{
    const Dbptr pointers[] = {dbinvalid(), open->pointer, Dbptr{open->pointer.database, 999, dbALL, dbALL},
                              Dbptr{open->pointer.database, -7, dbALL, dbALL}, Dbptr{999, 0, dbALL, dbALL}};
    for (const Dbptr pointer : pointers) {
        expectRefused(dbsubset(pointer, "1 == 1", "wanted"), "dbsubset", "");
        expectRefused(dbsort(pointer, Names{"sta"}, 0, "wanted"), "dbsort", "");
        expectRefused(dbgroup(pointer, Names{"sta"}, "wanted", 1), "dbgroup", "");
        expectRefused(dbungroup(pointer, "wanted"), "dbungroup", "");
        expectRefused(dbsever(pointer, "site", "wanted"), "dbsever", "");
        expectRefused(dbseparate(pointer, "site"), "dbseparate", "");
        for (const auto &[left, right] :
             {std::pair(pointer, table("site")), std::pair(table("site"), pointer)}) {
            expectRefused(dbjoin(left, right, nullptr, nullptr, 0, nullptr, "wanted"), "dbjoin", "");
            expectRefused(dbnojoin(left, right, nullptr, nullptr, "wanted"), "dbnojoin", "");
            expectRefused(dbtheta(left, right, "1 == 1", "wanted"), "dbtheta", "");
        }
    }
}

TEST_F(BadInput, JoinsWithoutKeysOrWithTheWrongOnesAreRefused)
{
    for (const int outer : {0, 1})
        expectRefused(dbjoin(table("site"), table("event"), nullptr, nullptr, outer, nullptr, "wanted"),
                      "dbjoin", "no keys by which site joins event");
    expectRefused(dbnojoin(table("site"), table("event"), nullptr, nullptr, "wanted"), "dbnojoin",
                  "no keys by which site joins event");
    struct Keys {
        std::vector<std::string> left;
        std::vector<std::string> right;
        const char *reason;
    };
    const Keys wrong[] = {
        {{"stta"}, {"sta"}, "no field 'stta'"},
        {{"sta"}, {"stta"}, "no field 'stta'"},
        {{"sta", "time"}, {"sta"}, "2 keys of arrival and 1 of site"},
        {{"arid"}, {"sta"}, "of type"},
        {{"sta"}, {"ondate::offdate"}, "of type"},
        {{"time"}, {"ondate::"}, "no field ''"},
        {{"time"}, {"::offdate"}, "no field ''"},
        {{"time"}, {"ondate::lat"}, "one type"},
        {{"time"}, {"ondate::offdate::lat"}, "no field"},
    };
    for (const Keys &keys : wrong) {
        SCOPED_TRACE(keys.right.front());
        expectRefused(dbjoin(table("arrival"), table("site"), Names(keys.left), Names(keys.right), 0, nullptr,
                             "wanted"),
                      "dbjoin", keys.reason);
        expectRefused(
            dbnojoin(table("arrival"), table("site"), Names(keys.left), Names(keys.right), "wanted"),
            "dbnojoin", keys.reason);
    }
    expectRefused(dbjoin(joined, table("assoc"), Names{"sta"}, nullptr, 0, nullptr, "wanted"), "dbjoin",
                  "table assoc is in both");
}

} // namespace
