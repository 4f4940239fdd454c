// What helps people write expressions: the check while they type, and the list of functions.
#include "opened.h"
#include "temporary_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

using testing::HasSubstr;

namespace {

struct Checked {
    int code = 0;
    std::string reason;
    size_t offset = 0;
    size_t length = 0;
};

Checked check(Dbptr db, const char *expression, Dbptr other = dbinvalid())
{
    DbExpressionError error{};
    const int code = dbexpr_check(db, other, expression, &error);
    const Checked checked{code, error.reason ? error.reason : "", error.offset, error.length};
    free(error.reason);
    return checked;
}

class ExpressionCheck : public testing::Test
{
protected:
    ExpressionCheck()
    {
        files.addTable("site", {{"AAK", "2008001"}});
        files.addTable("arrival", {});
    }

    TemporaryDatabase files;
    Opened open{files.path()};
};

} // namespace

TEST_F(ExpressionCheck, takes_what_a_subset_takes)
{
    const int64_t tables = integer(open.pointer, dbTABLE_COUNT);
    EXPECT_EQ(check(open.table("site"), "sta == 'AAK' && lat > 40").code, 0);
    EXPECT_EQ(check(open.table("site"), "site.sta == 'AAK'").code, 0);
    EXPECT_EQ(check(open.table("arrival"), "time > 0").code, 0) << "a table without records";
    EXPECT_EQ(take_log(), "");
    EXPECT_EQ(integer(open.pointer, dbTABLE_COUNT), tables) << "nothing is made";
}

TEST_F(ExpressionCheck, tells_what_is_wrong_and_where)
{
    const Checked unknown = check(open.table("site"), "lat > 40 && stb == 'AAK'");
    EXPECT_EQ(unknown.code, dbERROR_VALUE);
    EXPECT_THAT(unknown.reason, HasSubstr("`stb`"));
    EXPECT_THAT(unknown.reason, HasSubstr("sta"));
    EXPECT_EQ(unknown.offset, 12u);
    EXPECT_EQ(unknown.length, 3u);

    const Checked unended = check(open.table("site"), "sta == 'AAK");
    EXPECT_EQ(unended.offset, 7u);
    EXPECT_NE(unended.reason, "");

    const Checked cut = check(open.table("site"), "lat >");
    EXPECT_EQ(cut.offset, 5u);
    EXPECT_EQ(cut.reason.find('\n'), std::string::npos);

    const Checked half = check(open.table("site"), "site.");
    EXPECT_EQ(half.offset, 5u);
    EXPECT_EQ(half.length, 0u) << "nothing stands there";
    EXPECT_EQ(take_log(), "");
}

TEST_F(ExpressionCheck, knows_the_fields_of_both_sides_of_a_theta_join)
{
    const Dbptr site = open.table("site");
    EXPECT_NE(check(site, "site.sta == arrival.sta").code, 0);
    EXPECT_EQ(check(site, "site.sta == arrival.sta", open.table("arrival")).code, 0);
    EXPECT_EQ(check(site, "lat > arid", open.table("arrival")).code, 0);
    EXPECT_NE(check(site, "lat > nothing", open.table("arrival")).code, 0);
}

TEST_F(ExpressionCheck, fails_with_a_reason_in_the_log_where_the_expression_is_not_it)
{
    DbExpressionError error{};
    EXPECT_EQ(dbexpr_check(dbinvalid(), dbinvalid(), "1", &error), dbERROR_STALE);
    EXPECT_EQ(error.reason, nullptr);
    EXPECT_THAT(take_log(), HasSubstr("dbexpr_check"));
    EXPECT_EQ(dbexpr_check(open.table("site"), dbinvalid(), nullptr, &error), dbERROR_ARGUMENT);
    EXPECT_EQ(dbexpr_check(open.table("site"), dbinvalid(), "1", nullptr), dbERROR_ARGUMENT);
    EXPECT_EQ(dbexpr_check(open.pointer, dbinvalid(), "1", &error), dbERROR_ARGUMENT);
    take_log();
}

TEST(ExpressionFunctions, are_listed_with_their_help)
{
    DbFunction function{};
    std::set<std::string> names, groups;
    int64_t count = 0;
    for (; dbexpr_function(count, &function) == 0; ++count) {
        names.insert(function.name);
        groups.insert(function.group);
        EXPECT_EQ(std::string(function.signature).rfind(std::string(function.name) + "(", 0), 0u)
            << function.signature;
        EXPECT_NE(std::string(function.help), "") << function.name;
    }
    EXPECT_GT(count, 20);
    EXPECT_EQ(names.count("substr"), 1u);
    EXPECT_GE(groups.size(), 4u);
    EXPECT_EQ(function.name, nullptr) << "behind the last";
    EXPECT_EQ(dbexpr_function(-1, &function), dbERROR_NOT_FOUND);
    EXPECT_EQ(dbexpr_function(0, nullptr), dbERROR_NOT_FOUND);
    EXPECT_EQ(take_log(), "");
}
