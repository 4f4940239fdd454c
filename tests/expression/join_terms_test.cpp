#include <gtest/gtest.h>

#include <random>

#include "bound.h"
#include "expression/expression_executor.h"
#include "expression/join_terms.h"
#include "memory_rows.h"

namespace orvane::expr::test {
namespace {

enum Columns : std::size_t { ArrivalSta, ArrivalTime, ArrivalJdate, FirstOfSite, SiteCount = 4 };

const std::vector<ScopeField> arrivalFields = {{"sta", "arrival", ValueType::Text, "-"},
                                               {"time", "arrival", ValueType::Time, "-9999999999.999"},
                                               {"jdate", "arrival", ValueType::Yearday, "-1"}};
const std::vector<ScopeField> siteFields = {{"sta", "site", ValueType::Text, "-"},
                                            {"ondate", "site", ValueType::Yearday, "-1"},
                                            {"offdate", "site", ValueType::Yearday, "-1"},
                                            {"lat", "site", ValueType::Real, "-999.0"}};

std::vector<ScopeField> pairFields()
{
    std::vector<ScopeField> fields = arrivalFields;
    fields.insert(fields.end(), siteFields.begin(), siteFields.end());
    return fields;
}

JoinTerms termsOf(const std::string &text)
{
    return take_apart(conditionOf(text, FieldListScope(pairFields())), FirstOfSite);
}

TEST(JoinTerms, finds_the_equalities_and_orderings_between_the_sides)
{
    const JoinTerms terms =
        termsOf("arrival.sta == site.sta && ondate <= jdate && (jdate <= offdate && lat > 10) && time > 5");
    ASSERT_EQ(terms.equalities.size(), 1u);
    EXPECT_EQ(terms.equalities[0].left.columns(), std::vector<std::size_t>{ArrivalSta});
    EXPECT_EQ(terms.equalities[0].right.columns(), std::vector<std::size_t>{FirstOfSite});
    ASSERT_EQ(terms.orderings.size(), 2u);
    EXPECT_EQ(terms.orderings[0].op,
              Operator::GreaterEqual); // turned, so that the left side stands on the left
    EXPECT_EQ(terms.orderings[0].left.columns(), std::vector<std::size_t>{ArrivalJdate});
    EXPECT_EQ(terms.orderings[1].op, Operator::LessEqual);
    EXPECT_EQ(terms.right_only.size(), 1u);
    EXPECT_EQ(terms.left_only.size(), 1u);
    EXPECT_TRUE(terms.rest.empty());
}

TEST(JoinTerms, makes_two_orderings_of_a_time_on_a_day)
{
    const JoinTerms terms = termsOf("ondate == time");
    EXPECT_TRUE(terms.equalities.empty());
    ASSERT_EQ(terms.orderings.size(), 2u);
    EXPECT_EQ(terms.orderings[0].op, Operator::GreaterEqual);
    EXPECT_EQ(terms.orderings[1].op, Operator::Less);
    EXPECT_TRUE(terms.rest.empty());
}

TEST(JoinTerms, leaves_the_rest_whole)
{
    const JoinTerms terms =
        termsOf("(arrival.sta == site.sta || lat > jdate) && arrival.sta != site.sta && 1 < 2");
    EXPECT_TRUE(terms.equalities.empty());
    EXPECT_TRUE(terms.orderings.empty());
    EXPECT_EQ(terms.rest.size(), 3u);
}

/* Rows of both sides side by side. */
class Pairs : public testing::Test
{
protected:
    Pairs()
    {
        std::mt19937 random(3);
        const auto below = [&](int count) {
            return std::uniform_int_distribution<int>(0, count - 1)(random);
        };
        const auto sta = [&] {
            return std::vector<std::string>{"AAK", "BBK", "C", "-", "2018038"}[below(5)];
        };
        const auto day = [&] { return below(5) == 0 ? "-1" : std::to_string(2018036 + below(5)); };
        const auto time = [&] {
            return below(5) == 0 ? std::string("-9999999999.999")
                                 : std::to_string(1517788800 + below(6) * 43200);
        };
        for (int row = 0; row < 400; ++row)
            pairs.add({sta(), time(), day(), sta(), day(), day(), std::to_string(below(3) + 36)});
    }

    std::vector<Value> values(const BoundExpression &expression)
    {
        ExpressionExecutor executor(expression);
        auto batch = pairs.all();
        std::vector<Value> out;
        EXPECT_TRUE(executor.values(batch, out).ok());
        return out;
    }

    std::vector<bool> held(const BoundExpression &condition)
    {
        ExpressionExecutor executor(condition);
        auto batch = pairs.all();
        SelectionVector positions;
        EXPECT_TRUE(executor.select_all(batch, positions).ok());
        std::vector<bool> out(pairs.size());
        for (const std::uint32_t position : positions)
            out[position] = true;
        return out;
    }

    static double number(const Value &value)
    {
        return storage_of(value.type) == Storage::Integer ? static_cast<double>(value.integer) : value.real;
    }

    /* By what join_terms.h says of terms, not by the executor. */
    static bool holds(Operator op, const Value &a, const Value &b)
    {
        const bool texts = a.type == ValueType::Text;
        if (op == Operator::Equal)
            return a.presence != Missing && b.presence != Missing &&
                   (texts ? a.text == b.text : number(a) == number(b));
        if (a.presence != Present || b.presence != Present)
            return false;
        const int order = texts                   ? a.text.compare(b.text)
                          : number(a) < number(b) ? -1
                          : number(a) > number(b) ? 1
                                                  : 0;
        switch (op) {
        case Operator::Less:
            return order < 0;
        case Operator::LessEqual:
            return order <= 0;
        case Operator::Greater:
            return order > 0;
        default:
            return order >= 0;
        }
    }

    MemoryRows pairs{pairFields()};
};

TEST_F(Pairs, all_parts_together_say_what_the_condition_says)
{
    for (const char *text :
         {"arrival.sta == site.sta", "arrival.sta == site.sta && ondate <= jdate && jdate <= offdate",
          "time >= ondate && time <= offdate && arrival.sta == site.sta", "time == ondate", "ondate != time",
          "time < ondate", "ondate < time", "time > offdate && lat > 36",
          "arrival.sta < site.sta && jdate > 2018037",
          "site.sta == arrival.sta && (lat > 37 || jdate == ondate)",
          "jdate == arrival.sta && site.sta == jdate", "jdate % 10 == lat - 30 && 1",
          "jdate - 2018000 == lat", "lat == jdate - 2018000", "time == site.sta", "site.sta >= time && 2 > 1",
          "!(arrival.sta == site.sta) && jdate >= offdate"}) {
        const BoundExpression condition = conditionOf(text, pairs.scope());
        const JoinTerms terms = take_apart(condition, FirstOfSite);
        std::vector<bool> together(pairs.size(), true);
        const auto require = [&](const std::vector<bool> &part) {
            for (std::size_t i = 0; i < part.size(); ++i)
                together[i] = together[i] && part[i];
        };
        for (const auto *conditions : {&terms.left_only, &terms.right_only, &terms.rest})
            for (const BoundExpression &part : *conditions)
                require(held(part));
        for (const auto *group : {&terms.equalities, &terms.orderings})
            for (const JoinTerm &term : *group) {
                const auto left = values(term.left);
                const auto right = values(term.right);
                for (std::size_t i = 0; i < left.size(); ++i)
                    together[i] = together[i] && holds(term.op, left[i], right[i]);
            }
        const std::vector<bool> expected = held(condition);
        EXPECT_EQ(together, expected) << text;
        EXPECT_GT(std::count(expected.begin(), expected.end(), true), 0) << text;
    }
}

} // namespace
} // namespace orvane::expr::test
