// The ways that operations take where data allow it: each gives what the general way gives.
#include "operations/large_tables.h"

#include "catalog/database_registry.h"
#include "column/fixed_number.h"
#include "column/wide_number.h"
#include "operation/rows_by_id.h"
#include "table/field_value.h"
#include "view/view.h"
#include "work/large_memory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <optional>
#include <set>

namespace {

using orvane::RowNumber;
using orvane::RowNumbers;

orvane::Attribute attributeOf(orvane::FieldType type, const char *format)
{
    orvane::Attribute attribute;
    attribute.type = type;
    attribute.format = format;
    attribute.parsed_format = *orvane::parse_field_format(format);
    attribute.width = attribute.parsed_format.width;
    return attribute;
}

template <typename T>
bool isRead(const orvane::FixedNumber &number, const char *at, T &value)
{
    return number.read(at, value);
}
template <typename T>
bool isRead(const orvane::WideNumber &number, const char *at, T &value)
{
    return number.read(at, 0, 1, &value) == 1;
}

// Whether it was read at all; what was read has to be what the field holds.
template <typename T, typename Number>
bool readRightly(const Number &number, const std::string &field)
{
    // What stands around a field doesn't count.
    const std::string record = "0123456789abcde-" + field + "987654321";
    T value{};
    if (!isRead(number, record.data() + 16, value))
        return false;
    if constexpr (std::is_same_v<T, double>) {
        const auto expected = orvane::decode_real(field);
        EXPECT_TRUE(expected) << '"' << field << '"';
        EXPECT_EQ(value, expected.value_or(0)) << '"' << field << '"';
        EXPECT_EQ(std::signbit(value), std::signbit(expected.value_or(0))) << '"' << field << '"';
    } else {
        const auto expected = orvane::decode_integer(field);
        EXPECT_TRUE(expected) << '"' << field << '"';
        EXPECT_EQ(value, expected.value_or(0)) << '"' << field << '"';
    }
    return true;
}

TEST(FixedNumber, ReadsWhatTheFormatPrints)
{
    std::mt19937_64 random(7);
    for (const char *format :
         {"%9.4f", "%17.5f", "%6.3f", "%7.2f", "%10.1f", "%4.2f", "%16.3f", "%12.8f", "%5.0f"}) {
        const orvane::Attribute attribute = attributeOf(orvane::FieldType::Real, format);
        const orvane::FixedNumber fixed(attribute);
        ASSERT_TRUE(fixed.usable()) << format;
        int read = 0;
        for (int i = 0; i < 20000; ++i) {
            const double value = static_cast<double>(static_cast<int64_t>(random())) /
                                 std::pow(10.0, static_cast<double>(random() % 25));
            char text[400];
            const int length = std::snprintf(text, sizeof text, format, value);
            if (length != attribute.width)
                continue;
            EXPECT_TRUE(readRightly<double>(fixed, text) || value > 1e9) << text;
            ++read;
        }
        EXPECT_GT(read, 1000) << format;
    }
    for (const char *format : {"%8d", "%1d", "%16d", "%9d", "%3d"}) {
        const orvane::Attribute attribute = attributeOf(orvane::FieldType::Integer, format);
        const orvane::FixedNumber fixed(attribute);
        ASSERT_TRUE(fixed.usable()) << format;
        for (int i = 0; i < 20000; ++i) {
            char text[400];
            const int length = std::snprintf(text, sizeof text, format,
                                             static_cast<int>(random() >> (33 + random() % 30)) *
                                                 (random() % 2 == 0 ? 1 : -1));
            if (length != attribute.width)
                continue;
            EXPECT_TRUE(readRightly<int64_t>(fixed, text)) << text;
        }
    }
}

TEST(FixedNumber, ReadsNothingElseOtherwise)
{
    std::mt19937_64 random(8);
    constexpr std::string_view characters = "0123456789 -+./:eE\t\xb0";
    for (const char *format : {"%9.4f", "%17.5f", "%7.2f", "%12.8f"}) {
        const orvane::FixedNumber fixed(attributeOf(orvane::FieldType::Time, format));
        int read = 0;
        for (int i = 0; i < 200000; ++i) {
            char text[400];
            std::snprintf(text, sizeof text, format, static_cast<double>(random() % 7500) / 7 - 99);
            std::string field = text; // none is wider than the format
            for (auto changes = random() % 3; changes > 0; --changes)
                field[random() % field.size()] = characters[random() % characters.size()];
            read += readRightly<double>(fixed, field) ? 1 : 0;
        }
        EXPECT_GT(read, 10000) << format;
    }
    const orvane::FixedNumber fixed(attributeOf(orvane::FieldType::Integer, "%9d"));
    for (int i = 0; i < 200000; ++i) {
        char text[400];
        std::snprintf(text, sizeof text, "%9d", static_cast<int>(random() % 200000000) - 1000000);
        std::string field = text;
        for (auto changes = random() % 3; changes > 0; --changes)
            field[random() % field.size()] = characters[random() % characters.size()];
        readRightly<int64_t>(fixed, field);
    }
}

TEST(FixedNumber, LeavesOtherFormatsAlone)
{
    EXPECT_FALSE(orvane::FixedNumber(attributeOf(orvane::FieldType::Real, "%9.4e")).usable());
    EXPECT_FALSE(orvane::FixedNumber(attributeOf(orvane::FieldType::Real, "%24.4f")).usable());
    EXPECT_FALSE(orvane::FixedNumber(attributeOf(orvane::FieldType::Real, "%20.12f")).usable());
    EXPECT_FALSE(orvane::FixedNumber(attributeOf(orvane::FieldType::String, "%9s")).usable());
}

// Read alone, and as one of several: what FixedNumber reads, unless it is wider than what is looked at.
template <typename T>
void compareWithFixed(const orvane::Attribute &attribute, std::string_view characters, unsigned seed)
{
    const orvane::FixedNumber fixed(attribute);
    const orvane::WideNumber wide(attribute);
    if (!wide.usable())
        GTEST_SKIP() << "this processor has no wide registers";
    std::mt19937_64 random(seed);
    int read = 0;
    for (int i = 0; i < 50000; ++i) {
        const auto magnitude = static_cast<int>(random() % 14);
        const double value =
            std::floor(static_cast<double>(static_cast<int64_t>(random())) / std::pow(10.0, 5 + magnitude)) /
            8;
        char text[400];
        const int length = std::is_same_v<T, double>
                               ? std::snprintf(text, sizeof text, attribute.format.c_str(), value)
                               : std::snprintf(text, sizeof text, "%*lld", static_cast<int>(attribute.width),
                                               static_cast<long long>(value));
        if (length != attribute.width)
            continue;
        std::string field = text;
        for (auto changes = characters.empty() ? 0 : random() % 3; changes > 0; --changes)
            field[random() % field.size()] = characters[random() % characters.size()];
        const bool wideRead = readRightly<T>(wide, field);
        const bool tooWide = field.size() > 16 && field[0] != ' ';
        EXPECT_EQ(wideRead, readRightly<T>(fixed, field) && !tooWide) << '"' << field << '"';
        read += wideRead ? 1 : 0;
    }
    EXPECT_GT(read, 1000);
}

TEST(WideNumber, ReadsWhatIsReadOneByOne)
{
    constexpr std::string_view disturbing = "0123456789 -+./:eE\t\xb0";
    for (const std::string_view characters : {std::string_view(), disturbing}) {
        for (const char *format :
             {"%9.4f", "%17.5f", "%6.3f", "%7.2f", "%10.1f", "%16.3f", "%12.8f", "%8.0f"}) {
            SCOPED_TRACE(format);
            compareWithFixed<double>(attributeOf(orvane::FieldType::Real, format), characters, 3);
        }
        for (const char *format : {"%8d", "%16d", "%9d", "%4d"}) {
            SCOPED_TRACE(format);
            compareWithFixed<int64_t>(attributeOf(orvane::FieldType::Integer, format), characters, 4);
        }
    }
}

TEST(WideNumber, StopsAtTheFirstOfAnotherForm)
{
    const orvane::WideNumber wide(attributeOf(orvane::FieldType::Integer, "%4d"));
    if (!wide.usable())
        GTEST_SKIP() << "this processor has no wide registers";
    const std::string records = "----------------  12|  -7|1e3 |  15|";
    std::array<int64_t, 4> values{};
    EXPECT_EQ(wide.read(records.data() + 16, 5, 4, values.data()), 2);
    EXPECT_EQ(values[0], 12);
    EXPECT_EQ(values[1], -7);
    EXPECT_EQ(wide.read(records.data() + 31, 5, 1, values.data()), 1);
    EXPECT_EQ(values[0], 15);
    EXPECT_EQ(wide.read(records.data() + 16, 5, 0, values.data()), 0);
}

TEST(WideNumber, LeavesOtherFormatsAlone)
{
    EXPECT_FALSE(orvane::WideNumber(attributeOf(orvane::FieldType::Real, "%9.4e")).usable());
    EXPECT_FALSE(orvane::WideNumber(attributeOf(orvane::FieldType::Real, "%18.5f")).usable());
    EXPECT_FALSE(orvane::WideNumber(attributeOf(orvane::FieldType::Integer, "%17d")).usable());
    EXPECT_FALSE(orvane::WideNumber(attributeOf(orvane::FieldType::Boolean, "%1d")).usable());
    EXPECT_FALSE(orvane::WideNumber(attributeOf(orvane::FieldType::String, "%9s")).usable());
}

// ---- Rows by id ----------------------------------------------------------------------------------

RowNumbers idsOf(size_t count, std::uint32_t domain, bool distinct, unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<RowNumber> all(domain);
    for (std::uint32_t id = 0; id < domain; ++id)
        all[id] = id;
    std::shuffle(all.begin(), all.end(), random);
    RowNumbers ids(count);
    for (size_t row = 0; row < count; ++row)
        ids[row] = random() % 10 == 0 ? orvane::null_row : distinct ? all[row] : random() % domain;
    return ids;
}

TEST(RowsById, AreTheRowsOfEachId)
{
    for (const auto &[count, domain] :
         {std::pair<size_t, std::uint32_t>{300000, 400000}, {1000, 1000}, {1, 1}, {0, 1}})
        for (const bool distinct : {true, false}) {
            orvane::Work work("test", {});
            const RowNumbers ids = idsOf(count, domain, distinct, 3);
            std::map<RowNumber, std::vector<RowNumber>> expected;
            for (size_t row = 0; row < count; ++row)
                if (ids[row] != orvane::null_row)
                    expected[ids[row]].push_back(static_cast<RowNumber>(row));
            const auto buckets = orvane::row_buckets(ids, domain, work);
            const auto only = orvane::only_rows(ids, domain, work);
            const auto set = orvane::id_set(ids, domain, work);
            ASSERT_TRUE(buckets.ok() && only.ok() && set.ok());
            const bool several = std::any_of(expected.begin(), expected.end(),
                                             [](const auto &rows) { return rows.second.size() > 1; });
            EXPECT_EQ(only->empty(), several);
            EXPECT_FALSE(set->has(orvane::null_row));
            for (RowNumber id = 0; id < domain; ++id) {
                const auto found = expected.find(id);
                const std::vector<RowNumber> rows =
                    found == expected.end() ? std::vector<RowNumber>() : found->second;
                ASSERT_EQ(std::vector<RowNumber>(buckets->rows.begin() + buckets->begins[id],
                                                 buckets->rows.begin() + buckets->begins[id + 1]),
                          rows);
                ASSERT_EQ(set->has(id), !rows.empty());
                if (!several) {
                    ASSERT_EQ((*only)[id], rows.empty() ? orvane::null_row : rows.front());
                }
            }
        }
}

// ---- Operations ----------------------------------------------------------------------------------

std::vector<RowNumber> recordsOf(Dbptr view, size_t member = 0)
{
    const auto *table = dynamic_cast<orvane::View *>(
        orvane::DatabaseRegistry::of_process().database(view.database)->table(view.table));
    if (!table)
        return {};
    const auto &rows = table->member_tables()[member].rows;
    return {rows.begin(), rows.end()};
}

// More rows than a part, a block and a group of them; each id once on the right.
class FastWays : public testing::Test
{
protected:
    FastWays() : many(narrowRows(600000, 60000, 1)), more(narrowRows(150000, 60000, 2))
    {
        int next = 0;
        for (NarrowRow &row : more)
            row.id = row.id == -1 ? -1 : static_cast<int>(static_cast<int64_t>(next++) * 7919 % 200003);
        writeNarrowTable(files, "many", many);
        writeNarrowTable(files, "more", more);
        open = std::make_unique<Opened>(files.path());
    }

    TemporaryDatabase files{"narrow", narrowSchemaText()};
    std::unique_ptr<Opened> open;
    std::vector<NarrowRow> many;
    std::vector<NarrowRow> more;
};

TEST_F(FastWays, JoinIdsThatOneRowHas)
{
    std::map<int, RowNumber> byId;
    for (size_t row = 0; row < more.size(); ++row)
        if (more[row].id != -1) {
            ASSERT_TRUE(byId.emplace(more[row].id, static_cast<RowNumber>(row)).second);
        }
    std::vector<RowNumber> left, right, beside, without;
    for (size_t row = 0; row < many.size(); ++row) {
        const auto found = byId.find(many[row].id);
        beside.push_back(found == byId.end() ? orvane::null_row : found->second);
        (found == byId.end() ? without : left).push_back(static_cast<RowNumber>(row));
        if (found != byId.end())
            right.push_back(found->second);
    }
    const auto join = [&](int outer) {
        return dbjoin(open->table("many"), open->table("more"), Names{"id"}, Names{"other"}, outer, nullptr,
                      nullptr);
    };
    const Dbptr inner = join(0);
    EXPECT_EQ(recordsOf(inner, 0), left);
    EXPECT_EQ(recordsOf(inner, 1), right);
    const Dbptr outer = join(1);
    EXPECT_EQ(recordsOf(outer, 0).size(), many.size());
    EXPECT_EQ(recordsOf(outer, 1), beside);
    EXPECT_EQ(
        recordsOf(dbnojoin(open->table("many"), open->table("more"), Names{"id"}, Names{"other"}, nullptr)),
        without);
    // The rows of views are looked up through their records.
    const Dbptr sorted = dbsort(open->table("many"), Names{"value"}, 0, nullptr);
    const std::vector<RowNumber> order = recordsOf(sorted);
    std::vector<RowNumber> expected;
    for (const RowNumber row : order)
        if (beside[row] != orvane::null_row)
            expected.push_back(beside[row]);
    EXPECT_EQ(
        recordsOf(dbjoin(sorted, open->table("more"), Names{"id"}, Names{"other"}, 0, nullptr, nullptr), 1),
        expected);
}

// Six words on the right, each with some intervals from a value on: with one, some and many of a word.
TEST_F(FastWays, JoinFewRowsByARange)
{
    for (const std::ptrdiff_t count : {3, 9, 20, 60, 150}) {
        std::vector<NarrowRow> few(more.begin(), more.begin() + count);
        writeNarrowTable(files, "more", few);
        open = std::make_unique<Opened>(files.path());
        std::vector<RowNumber> left, right;
        for (size_t a = 0; a < many.size(); ++a)
            for (size_t b = 0; b < few.size(); ++b)
                if (many[a].word == few[b].word && many[a].value != -999.0 && few[b].value != -999.0 &&
                    many[a].value >= few[b].value && many[a].value < few[b].value + 5000) {
                    left.push_back(static_cast<RowNumber>(a));
                    right.push_back(static_cast<RowNumber>(b));
                }
        ASSERT_GT(left.size(), 5000u) << count;
        const Dbptr theta = dbtheta(open->table("many"), open->table("more"),
                                    "many.word == more.word && many.value >= more.value && "
                                    "many.value < more.value + 5000",
                                    nullptr);
        EXPECT_EQ(recordsOf(theta, 0), left) << count;
        EXPECT_EQ(recordsOf(theta, 1), right) << count;
    }
}

// One word holds, several do, none does; with nulls among the words and without.
TEST_F(FastWays, FindRowsByATextWithFewValues)
{
    for (NarrowRow &row : more)
        row.word = row.word == "-" ? "TIXI" : row.word;
    writeNarrowTable(files, "more", more);
    open = std::make_unique<Opened>(files.path());
    const std::vector<std::pair<const char *, std::set<std::string>>> conditions{
        {"word == 'KIV'", {"KIV"}},
        {"word =~ '.*K.*'", {"AAK", "KIV", "ABKT"}},
        {"word == 'NONE'", {}},
        {"word == 'B' || word == 'b'", {"B", "b"}},
        {"word != 'KIV' && word =~ '.*[A-Z].*'", {"AAK", "ABKT", "B", "TIXI"}},
        {"length(word) == 3", {"AAK", "KIV"}},
    };
    for (const auto &[condition, words] : conditions)
        for (const auto &[name, rows] : {std::pair("many", &many), std::pair("more", &more)}) {
            std::vector<RowNumber> expected;
            for (size_t row = 0; row < rows->size(); ++row)
                if (words.contains((*rows)[row].word))
                    expected.push_back(static_cast<RowNumber>(row));
            EXPECT_EQ(recordsOf(dbsubset(open->table(name), condition, nullptr)), expected)
                << name << ": " << condition;
        }
}

TEST_F(FastWays, SortAndGroupByATextWithFewValues)
{
    std::vector<RowNumber> order(many.size());
    for (size_t row = 0; row < order.size(); ++row)
        order[row] = static_cast<RowNumber>(row);
    auto reverse = order;
    std::stable_sort(order.begin(), order.end(), [&](auto a, auto b) { return many[a].word < many[b].word; });
    std::stable_sort(reverse.begin(), reverse.end(),
                     [&](auto a, auto b) { return many[a].word > many[b].word; });
    const Dbptr table = open->table("many");
    EXPECT_EQ(recordsOf(dbsort(table, Names{"word"}, 0, nullptr)), order);
    EXPECT_EQ(recordsOf(dbsort(table, Names{"word"}, dbSORT_REVERSE, nullptr)), reverse);
    std::vector<RowNumber> firsts, starts;
    for (size_t i = 0; i < order.size(); ++i)
        if (i == 0 || many[order[i - 1]].word != many[order[i]].word) {
            firsts.push_back(order[i]);
            starts.push_back(static_cast<RowNumber>(i));
        }
    EXPECT_EQ(recordsOf(dbsort(table, Names{"word"}, dbSORT_UNIQUE, nullptr)), firsts);
    const Dbptr groups = dbgroup(table, Names{"word"}, nullptr, 1);
    ASSERT_EQ(integer(groups, dbRECORD_COUNT), static_cast<int64_t>(starts.size()));
    starts.push_back(static_cast<RowNumber>(order.size()));
    for (size_t i = 0; i + 1 < starts.size(); ++i)
        EXPECT_EQ(bundle(groups, static_cast<int64_t>(i)),
                  std::to_string(starts[i]) + "-" + std::to_string(starts[i + 1]));
    // What is in order stays the view that it is.
    const Dbptr sorted = dbsort(table, Names{"word"}, 0, "sorted");
    const Dbptr again = dbgroup(sorted, Names{"word"}, nullptr, 1);
    EXPECT_EQ(recordsOf(dbungroup(again, nullptr)), order);
    // Through rows that are no records, some of them null.
    const Dbptr outer = dbjoin(table, open->table("more"), Names{"id"}, Names{"other"}, 1, nullptr, nullptr);
    const auto beside = recordsOf(outer, 1);
    std::vector<RowNumber> rows(beside.size());
    for (size_t row = 0; row < rows.size(); ++row)
        rows[row] = static_cast<RowNumber>(row);
    const auto word = [&](RowNumber row) {
        return beside[row] == orvane::null_row ? std::string("-") : more[beside[row]].word;
    };
    std::stable_sort(rows.begin(), rows.end(), [&](auto a, auto b) { return word(a) < word(b); });
    EXPECT_EQ(recordsOf(dbsort(outer, Names{"more.word"}, 0, nullptr), 0), rows);
}

TEST(LargeMemory, IsUsedAgain)
{
    constexpr size_t bytes = orvane::large_memory + 12345;
    char *first = static_cast<char *>(orvane::take_large_memory(bytes));
    std::memset(first, 1, bytes);
    char *second = static_cast<char *>(orvane::take_large_memory(bytes));
    std::memset(second, 2, bytes);
    EXPECT_EQ(first[bytes - 1], 1);
    orvane::give_large_memory(first, bytes);
    // A little less than what was given back, too; a little more isn't there.
    char *third = static_cast<char *>(orvane::take_large_memory(bytes - (1 << 20)));
    EXPECT_EQ(third, first);
    std::memset(third, 3, bytes - (1 << 20));
    orvane::give_large_memory(third, bytes - (1 << 20));
    char *fourth = static_cast<char *>(orvane::take_large_memory(bytes));
    std::memset(fourth, 4, bytes);
    EXPECT_EQ(second[0], 2);
    EXPECT_EQ(second[bytes - 1], 2);
    orvane::give_large_memory(second, bytes);
    orvane::give_large_memory(fourth, bytes);
}

} // namespace
