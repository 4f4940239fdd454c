#include <gtest/gtest.h>

#include <thread>

#include "bound.h"
#include "expression/expression_executor.h"
#include "memory_rows.h"

namespace orvane::expr::test {
namespace {

enum Column : std::size_t { Lat, Depth, Sta, Chan, Orid };

class Executor : public testing::Test
{
protected:
    Executor()
    {
        for (int row = 0; row < 1000; ++row)
            rows.add({std::to_string(row % 90), row % 7 == 0 ? "-999.0" : std::to_string(row % 50),
                      "S" + std::to_string(row % 5), "C" + std::to_string(row % 3), std::to_string(row)});
    }

    SelectionVector selected(ExpressionExecutor &executor, MemoryRows::Batch &batch)
    {
        SelectionVector positions;
        const Status status = executor.select_all(batch, positions);
        EXPECT_TRUE(status.ok()) << status.message();
        return positions;
    }

    SelectionVector selected(const std::string &text, std::size_t batchSize)
    {
        ExpressionExecutor executor(conditionOf(text, rows.scope()));
        SelectionVector all;
        for (std::size_t first = 0; first < rows.size(); first += batchSize) {
            auto batch = rows.batch(first, std::min(batchSize, rows.size() - first));
            for (const std::uint32_t position : selected(executor, batch))
                all.push_back(static_cast<std::uint32_t>(first) + position);
        }
        return all;
    }

    MemoryRows rows{{{"lat", "origin", ValueType::Real, "-999.0"},
                     {"depth", "origin", ValueType::Real, "-999.0"},
                     {"sta", "", ValueType::Text, "-"},
                     {"chan", "", ValueType::Text, "-"},
                     {"orid", "", ValueType::Integer, "-1"}}};
};

TEST_F(Executor, asks_for_no_column_that_the_survivors_of_a_conjunction_do_not_need)
{
    ExpressionExecutor executor(conditionOf("lat > 500 && depth > 1 && sta == 'S1'", rows.scope()));
    auto batch = rows.all();
    EXPECT_TRUE(selected(executor, batch).empty());
    EXPECT_EQ(batch.asked[Lat], 1);
    EXPECT_EQ(batch.asked.count(Depth), 0u);
    EXPECT_EQ(batch.asked.count(Sta), 0u);
}

TEST_F(Executor, asks_for_no_column_once_a_disjunction_is_true_everywhere)
{
    ExpressionExecutor executor(conditionOf("lat >= 0 || depth > 1", rows.scope()));
    auto batch = rows.all();
    EXPECT_EQ(selected(executor, batch).size(), rows.size());
    EXPECT_EQ(batch.asked.count(Depth), 0u);
}

TEST_F(Executor, works_out_only_the_branch_that_rows_choose)
{
    ExpressionExecutor executor(conditionOf("(lat >= 0 ? orid : depth) >= 0", rows.scope()));
    auto batch = rows.all();
    EXPECT_EQ(selected(executor, batch).size(), rows.size());
    EXPECT_EQ(batch.asked.count(Depth), 0u);
}

TEST_F(Executor, asks_for_a_column_once_per_run)
{
    ExpressionExecutor executor(
        conditionOf("lat > 5 && lat < 80 && sqrt(lat) != 4 && sta =~ '1' && upper(sta) > 'A'", rows.scope()));
    auto batch = rows.all();
    EXPECT_FALSE(selected(executor, batch).empty());
    EXPECT_EQ(batch.asked[Lat], 1);
    EXPECT_EQ(batch.asked[Sta], 1);
}

TEST_F(Executor, works_a_text_out_once_per_entry_of_its_dictionary)
{
    ExpressionExecutor executor(conditionOf("sta =~ '[12]$' || lower(sta) == 's4'", rows.scope()));
    rows.dictionary(Sta).reads = 0;
    std::size_t count = 0;
    for (std::size_t first = 0; first < rows.size(); first += 10) {
        auto batch = rows.batch(first, 10);
        count += selected(executor, batch).size();
    }
    EXPECT_EQ(count, 600u);
    EXPECT_LE(rows.dictionary(Sta).reads, 2u * rows.dictionary(Sta).size());
}

TEST_F(Executor, follows_a_dictionary_that_grows)
{
    ExpressionExecutor executor(conditionOf("sta =~ '9$'", rows.scope()));
    auto before = rows.all();
    EXPECT_TRUE(selected(executor, before).empty());
    rows.add({"1", "1", "S9", "C", "1000"});
    auto after = rows.all();
    EXPECT_EQ(selected(executor, after), SelectionVector{1000});
}

TEST_F(Executor, does_not_mistake_another_dictionary_for_the_one_it_knows)
{
    MemoryRows others(rows.fields());
    others.add({"1", "1", "other", "C", "1"});
    ExpressionExecutor executor(conditionOf("sta == 'S0'", rows.scope()));
    auto batch = rows.batch(0, 1);
    EXPECT_EQ(selected(executor, batch).size(), 1u);
    auto otherBatch = others.all();
    EXPECT_TRUE(selected(executor, otherBatch).empty());
    auto again = rows.batch(0, 1);
    EXPECT_EQ(selected(executor, again).size(), 1u);
}

TEST_F(Executor, gives_the_same_rows_whatever_the_batches)
{
    for (const char *text : {"lat > 40 && (depth < 10 || sta == 'S3')", "isnull(depth) || chan == sta",
                             "strcat(sta, chan) =~ '^S1C2$'", "(orid % 3 == 0 ? lat : depth) > 20",
                             "!(depth > 10) && (sta < 'S2' || chan != 'C1')", "length(sta) + orid > 500"}) {
        const SelectionVector whole = selected(text, rows.size());
        EXPECT_FALSE(whole.empty()) << text;
        EXPECT_LT(whole.size(), rows.size()) << text;
        for (const std::size_t size : {std::size_t{1}, std::size_t{3}, std::size_t{64}, std::size_t{999}})
            EXPECT_EQ(selected(text, size), whole) << text << " by " << size;
    }
}

TEST_F(Executor, keeps_to_the_positions_it_is_given)
{
    ExpressionExecutor executor(conditionOf("orid >= 4 || sta == 'S1'", rows.scope()));
    auto batch = rows.all();
    SelectionVector positions{0, 1, 3, 5, 900};
    ASSERT_TRUE(executor.select(batch, positions).ok());
    EXPECT_EQ(positions, (SelectionVector{1, 5, 900}));
    positions.clear();
    ASSERT_TRUE(executor.select(batch, positions).ok());
    EXPECT_TRUE(positions.empty());
}

TEST_F(Executor, fails_as_the_column_does_and_leaves_the_positions)
{
    ExpressionExecutor executor(conditionOf("lat > 40 && sta =~ '1'", rows.scope()));
    auto batch = rows.all();
    batch.broken = Sta;
    SelectionVector positions{1, 2, 3, 41, 42, 43};
    const SelectionVector before = positions;
    const Status status = executor.select(batch, positions);
    EXPECT_EQ(status.code(), Code::Io);
    EXPECT_EQ(status.message(), "the disk is gone");
    EXPECT_EQ(positions, before);
    auto mended = rows.all();
    ASSERT_TRUE(executor.select(mended, positions).ok());
    EXPECT_EQ(positions, SelectionVector{41});
}

TEST_F(Executor, refuses_to_select_by_what_is_no_condition)
{
    const auto parsed = ParsedExpression::parse("lat + 1");
    ASSERT_TRUE(parsed.ok());
    const auto bound = BoundExpression::bind(*parsed, rows.scope());
    ASSERT_TRUE(bound.ok());
    ExpressionExecutor executor(*bound);
    auto batch = rows.all();
    SelectionVector positions{1};
    EXPECT_EQ(executor.select(batch, positions).code(), Code::Argument);
    EXPECT_EQ(positions, SelectionVector{1});
}

TEST_F(Executor, answers_an_empty_batch_with_nothing)
{
    ExpressionExecutor executor(conditionOf("1", rows.scope()));
    auto batch = rows.batch(0, 0);
    EXPECT_TRUE(selected(executor, batch).empty());
}

TEST_F(Executor, takes_one_time_for_now_in_all_batches)
{
    ExpressionExecutor executor(conditionOf("now() == now() && now() > '2020-01-01'", rows.scope()));
    auto batch = rows.all();
    EXPECT_EQ(selected(executor, batch).size(), rows.size());
    ExpressionExecutor fixed(conditionOf("now() == 5.0", rows.scope()), 5.0);
    EXPECT_EQ(selected(fixed, batch).size(), rows.size());
}

TEST_F(Executor, says_which_columns_an_expression_reads)
{
    EXPECT_EQ(conditionOf("sta == chan && sta != 'x' && lat > 1", rows.scope()).columns(),
              (std::vector<std::size_t>{Lat, Sta, Chan}));
    EXPECT_TRUE(is_constant(conditionOf("1 < 2 && now() > 5", rows.scope())));
    EXPECT_FALSE(is_constant(conditionOf("lat > 2", rows.scope())));
}

TEST_F(Executor, works_constants_out_when_it_binds)
{
    const BoundExpression bound = conditionOf(
        "orid == 2 * 3 + length(strcat('a', 'bc')) && 1 < 2 || '2018-02-07' == epoch('2018-02-07 05:00')",
        rows.scope());
    const BoundNode &comparison = *bound.root()->children[0]->children[0];
    ASSERT_TRUE(comparison.comparison);
    ASSERT_EQ(comparison.children[1]->kind, BoundNode::Kind::Constant);
    EXPECT_EQ(comparison.children[1]->constant.integer, 9);
    EXPECT_EQ(bound.root()->children[1]->kind, BoundNode::Kind::Constant);
}

// Alone, first of several and behind another test, by batches whose ends are no round numbers.
TEST_F(Executor, compares_numbers_with_a_constant_on_either_side)
{
    const auto expected = [&](const auto &holds) {
        SelectionVector positions;
        for (std::uint32_t row = 0; row < rows.size(); ++row)
            if (holds(static_cast<int>(row)))
                positions.push_back(row);
        return positions;
    };
    const auto depth = [](int row) { return row % 7 == 0 ? -999 : row % 50; };
    const auto present = [](int row) { return row % 7 != 0; };
    const std::vector<std::pair<std::string, SelectionVector>> cases = {
        {"depth < 20", expected([&](int row) { return present(row) && depth(row) < 20; })},
        {"20.0 > depth", expected([&](int row) { return present(row) && depth(row) < 20; })},
        {"depth <= 20", expected([&](int row) { return present(row) && depth(row) <= 20; })},
        {"20 >= depth", expected([&](int row) { return present(row) && depth(row) <= 20; })},
        {"depth > 20", expected([&](int row) { return depth(row) > 20; })},
        {"depth >= 20.5", expected([&](int row) { return depth(row) >= 21; })},
        {"depth == 20", expected([&](int row) { return depth(row) == 20; })},
        {"-999 == depth", expected([&](int row) { return !present(row); })},
        {"20 != depth", expected([&](int row) { return depth(row) != 20; })},
        {"orid < 500", expected([&](int row) { return row < 500; })},
        {"499.0 >= orid", expected([&](int row) { return row < 500; })},
        {"orid < 499.5", expected([&](int row) { return row < 500; })},
        {"orid != 7", expected([&](int row) { return row != 7; })},
        {"depth < 20 && 10 <= depth && orid >= 300",
         expected([&](int row) { return depth(row) >= 10 && depth(row) < 20 && row >= 300; })},
        {"depth > 2 && sta == 'S1' && orid < 77",
         expected([&](int row) { return depth(row) > 2 && row % 5 == 1 && row < 77; })},
        {"sta == 'S1' && depth > 2", expected([&](int row) { return depth(row) > 2 && row % 5 == 1; })},
        {"!(depth > 20)", expected([&](int row) { return depth(row) <= 20; })},
        {"depth > 40 || depth < 3",
         expected([&](int row) { return depth(row) > 40 || (present(row) && depth(row) < 3); })},
        {"depth < 0", {}},
        {"depth < 1e300 && depth > 1e300", {}},
    };
    for (const auto &[text, positions] : cases)
        for (const std::size_t batchSize : {1u, 7u, 61u, 1000u})
            EXPECT_EQ(selected(text, batchSize), positions) << text << ", batches of " << batchSize;
}

TEST_F(Executor, stops_where_computed_texts_would_fill_the_memory)
{
    MemoryRows wide({{"a", "", ValueType::Text, "-"}, {"b", "", ValueType::Text, "-"}});
    const std::string text(30000, 'x');
    for (int row = 0; row < 6000; ++row)
        wide.add({text, text});
    ExpressionExecutor executor(conditionOf("length(strcat(a, b)) > 5", wide.scope()));
    auto batch = wide.all();
    SelectionVector positions;
    EXPECT_EQ(executor.select_all(batch, positions).code(), Code::Memory);
    auto fewer = wide.batch(0, 100);
    ASSERT_TRUE(executor.select_all(fewer, positions).ok());
    EXPECT_EQ(positions.size(), 100u);
}

TEST_F(Executor, gives_no_value_for_a_text_that_is_too_long)
{
    MemoryRows wide({{"a", "", ValueType::Text, "-"}, {"b", "", ValueType::Text, "-"}});
    wide.add({std::string(40000, 'x'), std::string(40000, 'y')});
    ExpressionExecutor executor(conditionOf("isnull(strcat(a, b)) && !isnull(strcat(a, 'y'))", wide.scope()));
    auto batch = wide.all();
    EXPECT_EQ(selected(executor, batch).size(), 1u);
}

TEST_F(Executor, lets_threads_share_a_bound_expression)
{
    const BoundExpression bound =
        conditionOf("sta =~ 'S[13]' && lat > 10 && strcat(sta, chan) != 'S1C1'", rows.scope());
    std::vector<SelectionVector> answers(4);
    std::vector<std::thread> threads;
    for (SelectionVector &answer : answers)
        threads.emplace_back([&] {
            ExpressionExecutor executor(bound);
            auto batch = rows.all();
            EXPECT_TRUE(executor.select_all(batch, answer).ok());
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_FALSE(answers[0].empty());
    for (const SelectionVector &answer : answers)
        EXPECT_EQ(answer, answers[0]);
}

} // namespace
} // namespace orvane::expr::test
