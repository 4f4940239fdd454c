#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>

#include "expression/expression_help.h"
#include "expression/function_table.h"

namespace orvane::expr::test {
namespace {

constexpr const char *referencePath = ORVANE_SOURCE_DIR "/docs/expressions.md";
const std::string beginMark = "<!-- functions: made from the function table -->\n\n";
const std::string endMark = "\n<!-- end of functions -->\n";

std::string fileText(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/* The functions' part of docs/expressions.md is made from the table. ORVANE_WRITE_REFERENCE=1 writes it anew.
 */
TEST(Reference, lists_the_functions_of_the_table)
{
    const std::string document = fileText(referencePath);
    const std::size_t begin = document.find(beginMark);
    const std::size_t end = document.find(endMark);
    ASSERT_NE(begin, std::string::npos);
    ASSERT_NE(end, std::string::npos);
    const std::size_t from = begin + beginMark.size();
    if (std::getenv("ORVANE_WRITE_REFERENCE"))
        std::ofstream(referencePath, std::ios::binary)
            << document.substr(0, from) << function_reference() << document.substr(end);
    else
        EXPECT_EQ(document.substr(from, end - from), function_reference())
            << "run this test with ORVANE_WRITE_REFERENCE=1 to write docs/expressions.md anew";
}

TEST(Reference, has_every_function_of_the_language)
{
    const std::set<std::string_view> wanted = {
        "abs",   "sqrt", "exp",    "log",    "log10",   "pow",      "floor",   "ceil",    "round",  "min",
        "max",   "sin",  "cos",    "tan",    "asin",    "acos",     "atan",    "atan2",   "length", "upper",
        "lower", "trim", "substr", "strcat", "isnull",  "now",      "epoch",   "yearday", "year",   "month",
        "day",   "hour", "minute", "second", "strtime", "distance", "azimuth", "deg2km",  "km2deg"};
    const auto names = function_names();
    EXPECT_EQ(std::set<std::string_view>(names.begin(), names.end()), wanted);
    EXPECT_EQ(names.size(), wanted.size()) << "rows of one name must stand together";
}

TEST(Reference, has_help_for_every_row)
{
    for (const Function &row : functions()) {
        EXPECT_TRUE(row.signature.starts_with(std::string(row.name) + "(")) << row.name;
        EXPECT_TRUE(row.help.ends_with(".")) << row.signature;
        EXPECT_EQ(row.help.find('|'), std::string_view::npos) << row.signature;
        EXPECT_TRUE(row.kernel || row.build == Build::Now || row.build == Build::NullTest) << row.signature;
        EXPECT_LE(row.least, row.most) << row.signature;
    }
}

TEST(Help, shows_signature_meaning_and_null_rule)
{
    const auto help = function_help("log10");
    ASSERT_TRUE(help.ok());
    EXPECT_EQ(*help, "log10(x: real) → real\n"
                     "    The logarithm to base 10; null unless x is positive.\n"
                     "    Null when an argument is null.\n");
}

TEST(Help, shows_all_ways_of_calling_a_function)
{
    const auto help = function_help("round");
    ASSERT_TRUE(help.ok());
    EXPECT_NE(help->find("round(x: integer) → integer\n"), std::string::npos);
    EXPECT_NE(help->find("round(x: real) → real\n"), std::string::npos);
    EXPECT_NE(help->find("round(x: real, n: integer) → real\n"), std::string::npos);
}

TEST(Help, keeps_to_the_width_of_a_terminal)
{
    for (const std::string_view name : function_names()) {
        std::istringstream lines(*function_help(name));
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), 90u) << line;
    }
}

TEST(Help, names_what_is_near_to_an_unknown_function)
{
    const auto help = function_help("sqrtt");
    ASSERT_FALSE(help.ok());
    EXPECT_EQ(help.status().code(), Code::NotFound);
    EXPECT_EQ(help.status().message(), "unknown function `sqrtt`; near it: sqrt");
}

} // namespace
} // namespace orvane::expr::test
