// Tables that are large enough for several threads, several blocks and all passes of a sort.
#include "operations/large_tables.h"

#include "catalog/database_registry.h"
#include "view/view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace {

constexpr size_t manyRows = 400000;
constexpr size_t moreRows = 150000;

class LargeTables : public testing::Test
{
protected:
    LargeTables() : many_(narrowRows(manyRows, 50000, 1)), more_(narrowRows(moreRows, 50000, 2))
    {
        // An outlier, so that most keys share their highest bits.
        many_[1234].value = 99999.0;
        writeNarrowTable(files, "many", many_);
        writeNarrowTable(files, "more", more_);
        open = std::make_unique<Opened>(files.path());
    }

    // The record numbers of one member of a view.
    std::vector<orvane::RowNumber> records(Dbptr view, size_t member = 0) const
    {
        const auto *table = dynamic_cast<orvane::View *>(
            orvane::DatabaseRegistry::of_process().database(view.database)->table(view.table));
        if (!table)
            return {};
        const auto &rows = table->member_tables()[member].rows;
        return {rows.begin(), rows.end()};
    }

    template <typename Less>
    static std::vector<orvane::RowNumber> sorted(const std::vector<NarrowRow> &rows, Less less)
    {
        std::vector<orvane::RowNumber> order(rows.size());
        std::iota(order.begin(), order.end(), 0u);
        std::stable_sort(order.begin(), order.end(), [&](auto a, auto b) { return less(rows[a], rows[b]); });
        return order;
    }

    TemporaryDatabase files{"narrow", narrowSchemaText()};
    std::unique_ptr<Opened> open;
    std::vector<NarrowRow> many_;
    std::vector<NarrowRow> more_;
};

TEST_F(LargeTables, SortStably)
{
    const Dbptr many = open->table("many");
    EXPECT_EQ(records(dbsort(many, Names{"value"}, 0, nullptr)),
              sorted(many_, [](const NarrowRow &a, const NarrowRow &b) { return a.value < b.value; }));
    EXPECT_EQ(records(dbsort(many, Names{"value"}, dbSORT_REVERSE, nullptr)),
              sorted(many_, [](const NarrowRow &a, const NarrowRow &b) { return a.value > b.value; }));
    EXPECT_EQ(records(dbsort(many, Names{"word", "id", "value"}, 0, nullptr)),
              sorted(many_, [](const NarrowRow &a, const NarrowRow &b) {
                  return std::tie(a.word, a.id, a.value) < std::tie(b.word, b.id, b.value);
              }));
    EXPECT_EQ(records(dbsort(many, Names{"word"}, 0, nullptr)),
              sorted(many_, [](const NarrowRow &a, const NarrowRow &b) { return a.word < b.word; }));
}

TEST_F(LargeTables, SortWhatIsInOrderIntoItself)
{
    const Dbptr ordered = dbsort(open->table("many"), Names{"value"}, 0, nullptr);
    EXPECT_EQ(records(dbsort(ordered, Names{"value"}, 0, nullptr)), records(ordered));
    const Dbptr turned = dbsort(ordered, Names{"value"}, dbSORT_REVERSE, nullptr);
    EXPECT_EQ(records(dbsort(turned, Names{"value"}, 0, nullptr)).size(), manyRows);
    EXPECT_EQ(records(dbsort(turned, Names{"value", "id"}, dbSORT_REVERSE, nullptr)),
              records(dbsort(ordered, Names{"value", "id"}, dbSORT_REVERSE, nullptr)));
}

TEST_F(LargeTables, SubsetInOrder)
{
    std::vector<orvane::RowNumber> expected;
    for (size_t i = 0; i < many_.size(); ++i)
        if (many_[i].word == "KIV" && many_[i].value != -999.0 && many_[i].value < 1000)
            expected.push_back(static_cast<orvane::RowNumber>(i));
    EXPECT_EQ(records(dbsubset(open->table("many"), "word == 'KIV' && value < 1000", nullptr)), expected);
    const auto last = static_cast<int64_t>(expected.back());
    EXPECT_EQ(dbfind(open->table("many"), "word == 'KIV' && value < 1000", 1, nullptr), last);
    Dbptr from = open->table("many");
    from.record = expected.front();
    EXPECT_EQ(dbfind(from, "word == 'KIV' && value < 1000", 0, nullptr), expected[1]);
    from.record = last;
    EXPECT_EQ(dbfind(from, "word == 'KIV' && value < 1000", 0, nullptr), dbERROR_NOT_FOUND);
    EXPECT_EQ(take_log(), "");
}

TEST_F(LargeTables, JoinEachRowWithItsMatchesInOrder)
{
    std::map<std::pair<int, std::string>, std::vector<orvane::RowNumber>> by_key;
    for (size_t i = 0; i < more_.size(); ++i)
        if (more_[i].id != -1 && more_[i].word != "-")
            by_key[{more_[i].id, more_[i].word}].push_back(static_cast<orvane::RowNumber>(i));
    std::vector<orvane::RowNumber> left, right, without;
    for (size_t i = 0; i < many_.size(); ++i) {
        const auto found = by_key.find({many_[i].id, many_[i].word});
        if (found == by_key.end())
            without.push_back(static_cast<orvane::RowNumber>(i));
        else
            for (const auto row : found->second) {
                left.push_back(static_cast<orvane::RowNumber>(i));
                right.push_back(row);
            }
    }
    const Dbptr joined = dbjoin(open->table("many"), open->table("more"), Names{"id", "word"},
                                Names{"other", "word"}, 0, nullptr, nullptr);
    EXPECT_EQ(records(joined, 0), left);
    EXPECT_EQ(records(joined, 1), right);
    EXPECT_EQ(records(dbnojoin(open->table("many"), open->table("more"), Names{"id", "word"},
                               Names{"other", "word"}, nullptr)),
              without);
    // The same said as a condition.
    const Dbptr theta =
        dbtheta(open->table("many"), open->table("more"),
                "id == other && many.word == more.word && id != -1 && many.word != '-'", nullptr);
    EXPECT_EQ(records(theta, 0), left);
    EXPECT_EQ(records(theta, 1), right);
    // Severed and separated.
    std::vector<orvane::RowNumber> distinct = right;
    std::sort(distinct.begin(), distinct.end());
    distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());
    EXPECT_EQ(records(dbseparate(joined, "more")), distinct);
    left.erase(std::unique(left.begin(), left.end()), left.end());
    EXPECT_EQ(records(dbsever(joined, "more", nullptr)), left);
}

TEST_F(LargeTables, LookRangesUpInsteadOfTryingAllPairs)
{
    // 400 000 times 150 000 pairs would take hours.
    const Dbptr theta =
        dbtheta(open->table("many"), open->table("more"),
                "more.value >= many.value && more.value < many.value + 1 && id % 100 == 0", nullptr);
    ASSERT_GE(theta.table, 0) << take_log();
    std::vector<std::pair<double, orvane::RowNumber>> by_value;
    for (size_t i = 0; i < more_.size(); ++i)
        if (more_[i].value != -999.0)
            by_value.emplace_back(more_[i].value, static_cast<orvane::RowNumber>(i));
    std::sort(by_value.begin(), by_value.end());
    std::vector<orvane::RowNumber> left, right;
    for (size_t i = 0; i < many_.size(); ++i) {
        if (many_[i].id < 0 || many_[i].id % 100 != 0 || many_[i].value == -999.0)
            continue;
        std::vector<orvane::RowNumber> found;
        for (auto at = std::lower_bound(by_value.begin(), by_value.end(), std::pair(many_[i].value, 0u));
             at != by_value.end() && at->first < many_[i].value + 1; ++at)
            found.push_back(at->second);
        std::sort(found.begin(), found.end());
        left.insert(left.end(), found.size(), static_cast<orvane::RowNumber>(i));
        right.insert(right.end(), found.begin(), found.end());
    }
    EXPECT_GT(left.size(), 5000u);
    EXPECT_EQ(records(theta, 0), left);
    EXPECT_EQ(records(theta, 1), right);
}

TEST_F(LargeTables, GroupIntoRunsOfEquals)
{
    const auto order = sorted(many_, [](const NarrowRow &a, const NarrowRow &b) { return a.id < b.id; });
    std::vector<size_t> firsts;
    for (size_t i = 0; i < order.size(); ++i)
        if (i == 0 || many_[order[i - 1]].id != many_[order[i]].id)
            firsts.push_back(i);
    const Dbptr groups = dbgroup(open->table("many"), Names{"id"}, nullptr, 1);
    ASSERT_EQ(integer(groups, dbRECORD_COUNT), static_cast<int64_t>(firsts.size()));
    for (size_t i = 0; i + 1 < firsts.size(); i += 977)
        EXPECT_EQ(bundle(groups, static_cast<int64_t>(i)),
                  std::to_string(firsts[i]) + "-" + std::to_string(firsts[i + 1]));
    EXPECT_EQ(records(dbungroup(groups, nullptr)), order);
}

} // namespace
