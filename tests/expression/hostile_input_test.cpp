#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "bound.h"
#include "expression/expression_executor.h"
#include "memory_rows.h"

namespace orvane::expr::test {
namespace {

std::string repeated(const std::string &piece, std::size_t times)
{
    std::string out;
    out.reserve(piece.size() * times);
    for (std::size_t i = 0; i < times; ++i)
        out += piece;
    return out;
}

class HostileInput : public testing::Test
{
protected:
    /* What is wrong with the text, in lines; it must be wrong, and found to be so at once. */
    std::string reason(const std::string &text)
    {
        const auto start = std::chrono::steady_clock::now();
        const Status status = statusOf(text, rows.scope());
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        EXPECT_LT(took.count(), 5.0);
        EXPECT_FALSE(status.ok());
        EXPECT_LT(status.message().size(), 1000u);
        return std::string(status.message());
    }

    std::size_t selected(const std::string &text)
    {
        ExpressionExecutor executor(conditionOf(text, rows.scope()));
        auto batch = rows.all();
        SelectionVector positions;
        EXPECT_TRUE(executor.select_all(batch, positions).ok());
        return positions.size();
    }

    HostileInput()
    {
        for (int row = 0; row < 10; ++row)
            rows.add({std::to_string(row), "1.5", row == 3 ? repeated("x", 50) : "AAK"});
    }

    MemoryRows rows{{{"orid", "", ValueType::Integer, "-1"},
                     {"lat", "", ValueType::Real, "-999.0"},
                     {"sta", "", ValueType::Text, "-"}}};
};

TEST_F(HostileInput, refuses_ten_megabytes)
{
    const std::string text = repeated("orid == 1 || ", 10 * 1024 * 1024 / 13) + "1";
    const std::string start =
        "the expression has " + std::to_string(text.size()) + " bytes; at most 1048576 are taken\n";
    EXPECT_EQ(reason(text).substr(0, start.size()), start);
}

TEST_F(HostileInput, refuses_deep_nests)
{
    const std::string deep = "nested more than 1000 deep\n";
    EXPECT_EQ(reason(repeated("(", 100000) + "1" + repeated(")", 100000)).substr(0, deep.size()), deep);
    EXPECT_EQ(reason(repeated("(", 100000)).substr(0, deep.size()), deep);
    EXPECT_EQ(reason(repeated("!", 100000) + "1").substr(0, deep.size()), deep);
    EXPECT_EQ(reason(repeated("-", 100000) + "1").substr(0, deep.size()), deep);
    EXPECT_EQ(reason(repeated("abs(", 100000) + "1").substr(0, deep.size()), deep);
    EXPECT_EQ(reason(repeated("2 ** ", 100000) + "1").substr(0, deep.size()), deep);
    EXPECT_EQ(reason(repeated("1 ? ", 100000) + "1").substr(0, deep.size()), deep);
    EXPECT_EQ(reason(repeated("1 ? 2 : ", 100000) + "1").substr(0, deep.size()), deep);
    EXPECT_EQ(reason(repeated("1 + ", 100000) + "1").substr(0, deep.size()), deep);
    EXPECT_EQ(reason(repeated("1 < ", 100000) + "1").substr(0, deep.size()), deep);
    EXPECT_EQ(reason(repeated("(1 && ", 100000) + "1" + repeated(")", 100000)).substr(0, deep.size()), deep);
}

TEST_F(HostileInput, takes_nests_that_are_just_not_too_deep)
{
    EXPECT_EQ(selected(repeated("(", 999) + "orid > 5" + repeated(")", 999)), 4u);
    EXPECT_EQ(selected(repeated("!", 998) + "(orid > 5)"), 4u);
    EXPECT_EQ(selected("orid" + repeated(" + 1", 990) + " > 995"), 4u);
    EXPECT_EQ(selected(repeated("abs(", 990) + "orid" + repeated(")", 990) + " > 5"), 4u);
    EXPECT_EQ(selected("(" + repeated("orid == 11 ? 0 : ", 900) + "orid) > 5"), 4u);
    EXPECT_EQ(selected(repeated("(1 && 0 || 1 == 1 + 1 * 1 - ", 190) + "1" + repeated(")", 190)), 10u);
}

TEST_F(HostileInput, takes_a_long_list_of_alternatives)
{
    std::string text = "orid == 3";
    while (text.size() < 1000000)
        text += " || orid == " + std::to_string(text.size() % 100000 + 100);
    EXPECT_EQ(selected(text), 1u);
    text = "orid != 3";
    while (text.size() < 1000000)
        text += " && sta != '" + std::to_string(text.size()) + "'";
    EXPECT_EQ(selected(text), 9u);
}

TEST_F(HostileInput, refuses_calls_with_too_many_arguments)
{
    EXPECT_EQ(reason("min(orid" + repeated(", orid", 100000) + ")").substr(0, 34),
              "a call has at most 100 arguments\n ");
}

TEST_F(HostileInput, shows_only_the_neighbourhood_of_a_place_in_a_long_text)
{
    const std::string shown =
        reason(repeated("orid > 1 && ", 5000) + "ordi > 1 && " + repeated("orid > 1 && ", 5000) + "1");
    EXPECT_NE(shown.find("  …"), std::string::npos);
    EXPECT_NE(shown.find("&& ordi > 1 &&"), std::string::npos);
    EXPECT_EQ(reason("'" + repeated("x", 1000000)),
              "the text that begins here does not end; expected a closing '\n  '" + repeated("x", 28) +
                  "…\n  ^");
    EXPECT_LT(reason(repeated("x", 1000000)).size(), 400u);
    EXPECT_LT(reason(repeated("9", 1000000)).size(), 400u);
    EXPECT_LT(reason(repeated("\n", 500000) + "x").size(), 400u);
}

TEST_F(HostileInput, matches_patterns_made_to_blow_up_in_linear_time)
{
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(selected("sta =~ '(x+x+)+y'"), 0u);
    EXPECT_EQ(selected("sta =~ '^(x*)*$'"), 1u);
    EXPECT_EQ(selected("'" + repeated("a", 50000) + "' =~ '^(a|aa)+$' && orid > 5"), 4u);
    EXPECT_EQ(selected("'" + repeated("a", 50000) + "' =~ '(a?){50}(a){50}b'"), 0u);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    EXPECT_LT(took.count(), 5.0);
}

TEST_F(HostileInput, refuses_patterns_that_need_too_much)
{
    EXPECT_NE(reason("sta =~ '((a{100}){100}){100}'").find("expected a regular expression: "),
              std::string::npos);
    EXPECT_NE(reason("sta =~ '" + repeated("a", 100000) + "'").find("the pattern has more than"),
              std::string::npos);
    EXPECT_NE(reason("sta =~ '" + repeated("(", 60000) + "'").find("expected a regular expression: "),
              std::string::npos);
    EXPECT_NE(reason("sta =~ 'a'" + repeated(" || sta =~ 'b'", 1000)).find("more than 256 patterns"),
              std::string::npos);
}

TEST_F(HostileInput, shows_bytes_that_are_no_text)
{
    EXPECT_NE(reason(std::string("orid > 1\0 && 2", 14)).find("has no place"), std::string::npos);
    EXPECT_NE(reason("orid \x01 5").find("has no place"), std::string::npos);
    EXPECT_NE(reason("\xff\xfe > 5").find("unknown field"), std::string::npos);
    EXPECT_EQ(selected("sta == '\xff\xfe'"), 0u);
    EXPECT_EQ(selected("length('\xff\xfe\xc3') == 3"), 10u);
    EXPECT_EQ(selected("'\xff\xfe' =~ '^.$'"), 0u);
}

/* Pieces that are put together at random: most of it is wrong, all of it must be answered. */
TEST_F(HostileInput, answers_whatever_is_thrown_at_it)
{
    const std::vector<std::string> pieces = {"orid",
                                             "lat",
                                             "sta",
                                             "nosuch",
                                             ".",
                                             "1",
                                             "2.5",
                                             "'x'",
                                             "\"y\"",
                                             "'",
                                             "(",
                                             ")",
                                             "+",
                                             "-",
                                             "*",
                                             "/",
                                             "%",
                                             "**",
                                             "!",
                                             "&&",
                                             "||",
                                             "==",
                                             "!=",
                                             "<",
                                             ">=",
                                             "=~",
                                             "!~",
                                             "?",
                                             ":",
                                             ",",
                                             " ",
                                             "abs(",
                                             "substr(",
                                             "min(",
                                             "strcat(",
                                             "isnull(",
                                             "now()",
                                             "year(",
                                             "strtime(",
                                             "epoch(",
                                             "'2018-02-07'",
                                             "distance(",
                                             "\\",
                                             "é",
                                             "9223372036854775807",
                                             "0",
                                             "1e308",
                                             "-9223372036854775807"};
    std::mt19937 random(11);
    const auto below = [&](std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    };
    int right = 0;
    for (int i = 0; i < 60000; ++i) {
        std::string text;
        for (std::size_t count = 1 + below(12); count > 0; --count)
            text += pieces[below(pieces.size())];
        const auto parsed = ParsedExpression::parse(text);
        if (!parsed.ok())
            continue;
        const auto bound = BoundExpression::bind(*parsed, rows.scope());
        if (!bound.ok())
            continue;
        ++right;
        ExpressionExecutor executor(*bound);
        auto batch = rows.all();
        std::vector<Value> values;
        EXPECT_TRUE(executor.values(batch, values).ok()) << text;
        EXPECT_EQ(values.size(), rows.size()) << text;
    }
    EXPECT_GT(right, 500);
}

/* Numbers at the ends of their types, through all operators and functions of numbers. */
TEST_F(HostileInput, gives_a_value_or_none_for_extreme_numbers)
{
    MemoryRows extremes({{"i", "", ValueType::Integer, "-1"},
                         {"r", "", ValueType::Real, "-999.0"},
                         {"d", "", ValueType::Yearday, "-1"},
                         {"t", "", ValueType::Time, "-9999999999.999"}});
    const std::vector<std::string> integers = {"-9223372036854775808", "9223372036854775807", "0", "-2", "1"};
    const std::vector<std::string> reals = {"1e308", "-1e308", "nan", "inf", "-inf", "0", "-0.0", "5e-324"};
    for (const std::string &integer : integers)
        for (const std::string &real : reals)
            extremes.add({integer, real, integer, real});
    const std::vector<std::string> values = {"i", "r", "d", "t", "-i", "i * i", "r * r"};
    std::vector<std::string> forms;
    for (const char *op : {"+", "-", "*", "/", "%", "**", "<", "==", ">=", "&&"})
        forms.push_back(std::string("A ") + op + " B");
    for (const char *call :
         {"abs(A)", "sqrt(A)", "floor(A)", "round(A)", "round(A, i)", "min(A, B)", "deg2km(A)", "sin(A)",
          "year(A)", "yearday(A)", "epoch(A)", "second(A)", "strtime(A)", "distance(A, B, r, r)",
          "azimuth(A, B, r, r)", "substr('abc', i, i)", "strcat(i, r, d)", "isnull(A)", "A ? B : A"})
        forms.emplace_back(call);
    int bound = 0;
    for (const std::string &form : forms)
        for (const std::string &a : values)
            for (const std::string &b : values) {
                std::string text = form;
                for (std::size_t at = 0; (at = text.find_first_of("AB", at)) != std::string::npos; at += 2)
                    text.replace(at, 1, "(" + (text[at] == 'A' ? a : b) + ")");
                const auto parsed = ParsedExpression::parse(text);
                ASSERT_TRUE(parsed.ok()) << text;
                const auto expression = BoundExpression::bind(*parsed, extremes.scope());
                if (!expression.ok())
                    continue; // as a time with a yearday
                ++bound;
                ExpressionExecutor executor(*expression);
                auto batch = extremes.all();
                std::vector<Value> answers;
                ASSERT_TRUE(executor.values(batch, answers).ok()) << text;
            }
    EXPECT_GT(bound, 900);
}

} // namespace
} // namespace orvane::expr::test
