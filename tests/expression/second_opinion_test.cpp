#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include <sqlite3.h>

#include "expression/expression_executor.h"
#include "expression/number_text.h"
#include "memory_rows.h"
#include "random_expression.h"

/* SQLite over the same rows is the second opinion on random expressions.
 * ORVANE_EXPRESSION_CASES sets another number of them, ORVANE_EXPRESSION_SEED
 * another seed. */
namespace orvane::expr::test {
namespace {

int setting(const char *name, int fallback)
{
    const char *text = std::getenv(name);
    return text ? std::atoi(text) : fallback;
}

class SqliteRows
{
public:
    SqliteRows()
    {
        sqlite3 *opened = nullptr;
        sqlite3_open(":memory:", &opened);
        database_.reset(opened);
    }

    void run(const std::string &sql)
    {
        char *reason = nullptr;
        if (sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, &reason) != SQLITE_OK)
            throw std::runtime_error(sql + ": " + reason);
    }

    /* The value of an SQL expression for each row, written as shown() writes
     * them; "null" for NULL. */
    std::vector<std::string> values(const std::string &expression)
    {
        const std::string sql = "select " + expression + " from data order by row";
        sqlite3_stmt *prepared = nullptr;
        if (sqlite3_prepare_v2(database_.get(), sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK)
            throw std::runtime_error(sql + ": " + sqlite3_errmsg(database_.get()));
        const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)> statement(prepared, sqlite3_finalize);
        std::vector<std::string> values;
        while (sqlite3_step(prepared) == SQLITE_ROW)
            values.push_back(value(prepared));
        return values;
    }

private:
    static std::string value(sqlite3_stmt *row)
    {
        switch (sqlite3_column_type(row, 0)) {
        case SQLITE_INTEGER:
            return std::to_string(sqlite3_column_int64(row, 0));
        case SQLITE_FLOAT:
            return "real " + number_text(sqlite3_column_double(row, 0) + 0.0);
        case SQLITE_TEXT:
            return "'" + std::string(reinterpret_cast<const char *>(sqlite3_column_text(row, 0))) + "'";
        default:
            return "null";
        }
    }

    std::unique_ptr<sqlite3, int (*)(sqlite3 *)> database_{nullptr, sqlite3_close};
};

std::string sqlQuoted(const std::string &text)
{
    std::string out = "'";
    for (const char c : text)
        out += c == '\'' ? std::string("''") : std::string(1, c);
    return out + "'";
}

class SecondOpinion : public testing::Test
{
protected:
    SecondOpinion()
        : rows_({{"i1", "", ValueType::Integer, "-1"},
                 {"i2", "", ValueType::Integer, "-1"},
                 {"r1", "", ValueType::Real, "-999.0"},
                 {"r2", "", ValueType::Real, "-999.0"},
                 {"t1", "", ValueType::Text, "-"},
                 {"t2", "", ValueType::Text, "-"}})
    {
        sqlite_.run("create table data(row integer primary key, i1 integer, i2 "
                    "integer, r1 real, r2 real, "
                    "t1 text, t2 text)");
        std::mt19937 random(7);
        const auto below = [&](int count) {
            return std::uniform_int_distribution<int>(0, count - 1)(random);
        };
        const std::vector<std::string> texts = {"AAK", "BHZ", "a", "x", "Köln", "it's",
                                                "12",  " x",  "",  "-", "AAKöx"};
        for (int row = 0; row < 41; ++row) {
            const auto integer = [&] { return std::to_string(below(5) == 0 ? -1 : below(19) - 9); };
            const auto real = [&] {
                return below(5) == 0 ? "-999.0" : number_text((below(161) - 80) * 0.25);
            };
            const auto text = [&] {
                return texts[static_cast<std::size_t>(below(static_cast<int>(texts.size())))];
            };
            const std::vector<std::string> values = {integer(), integer(), real(), real(), text(), text()};
            rows_.add(values);
            sqlite_.run("insert into data values(" + std::to_string(row) + "," + values[0] + "," + values[1] +
                        "," + values[2] + "," + values[3] + "," + sqlQuoted(values[4]) + "," +
                        sqlQuoted(values[5]) + ")");
        }
    }

    BoundExpression bound(const std::string &text, bool condition)
    {
        const auto parsed = ParsedExpression::parse(text);
        if (!parsed.ok())
            throw std::runtime_error(std::string(parsed.status().message()));
        const auto expression = condition ? BoundExpression::bind_condition(*parsed, rows_.scope())
                                          : BoundExpression::bind(*parsed, rows_.scope());
        if (!expression.ok())
            throw std::runtime_error(std::string(expression.status().message()));
        return *expression;
    }

    /* The rows at which a condition holds, by batches, as 1 and 0. */
    std::vector<std::string> held(const std::string &text, std::size_t batchSize)
    {
        ExpressionExecutor executor(bound(text, true));
        std::vector<std::string> answers(rows_.size(), "0");
        for (std::size_t first = 0; first < rows_.size(); first += batchSize) {
            auto batch = rows_.batch(first, std::min(batchSize, rows_.size() - first));
            SelectionVector positions;
            EXPECT_TRUE(executor.select_all(batch, positions).ok());
            for (const std::uint32_t position : positions)
                answers[first + position] = "1";
        }
        return answers;
    }

    std::vector<std::string> values(const std::string &text, std::size_t batchSize)
    {
        ExpressionExecutor executor(bound(text, false));
        std::vector<std::string> answers;
        for (std::size_t first = 0; first < rows_.size(); first += batchSize) {
            auto batch = rows_.batch(first, std::min(batchSize, rows_.size() - first));
            std::vector<Value> values;
            EXPECT_TRUE(executor.values(batch, values).ok());
            for (Value &value : values) {
                value.type = value.type == ValueType::Boolean ? ValueType::Integer : value.type;
                value.real += 0.0; // no negative zero
                answers.push_back(value.presence == Present ? shown(value) : "null");
            }
        }
        return answers;
    }

    MemoryRows rows_;
    SqliteRows sqlite_;
};

constexpr std::size_t batchSizes[] = {1, 7, 16, 41, 2048};

TEST_F(SecondOpinion, agrees_on_random_conditions)
{
    RandomExpression random(static_cast<unsigned>(setting("ORVANE_EXPRESSION_SEED", 20180207)));
    const int cases = setting("ORVANE_EXPRESSION_CASES", 16000);
    int mixed = 0;
    for (int i = 0; i < cases; ++i) {
        const Twin twin = random.condition(1 + random.below(4));
        const auto answers = held(twin.text, batchSizes[random.below(5)]);
        ASSERT_EQ(answers, sqlite_.values(twin.stored)) << "case " << i << ": " << twin.text << "\n"
                                                        << twin.stored;
        mixed += std::count(answers.begin(), answers.end(), "1") % static_cast<int>(rows_.size()) != 0;
    }
    EXPECT_GT(mixed, cases / 4) << "too few of the conditions tell rows apart";
}

TEST_F(SecondOpinion, agrees_on_random_numbers)
{
    RandomExpression random(static_cast<unsigned>(setting("ORVANE_EXPRESSION_SEED", 20180208)));
    const int cases = setting("ORVANE_EXPRESSION_CASES", 6000);
    for (int i = 0; i < cases; ++i) {
        const Twin twin = random.number(1 + random.below(4));
        ASSERT_EQ(values(twin.text, batchSizes[random.below(5)]), sqlite_.values(twin.nulled))
            << "case " << i << ": " << twin.text << "\n"
            << twin.nulled;
    }
}

TEST_F(SecondOpinion, agrees_on_random_texts)
{
    RandomExpression random(static_cast<unsigned>(setting("ORVANE_EXPRESSION_SEED", 20180209)));
    const int cases = setting("ORVANE_EXPRESSION_CASES", 3000);
    for (int i = 0; i < cases; ++i) {
        const Twin twin = random.text(1 + random.below(4));
        ASSERT_EQ(values(twin.text, batchSizes[random.below(5)]), sqlite_.values(twin.nulled))
            << "case " << i << ": " << twin.text << "\n"
            << twin.nulled;
    }
}

} // namespace
} // namespace orvane::expr::test
