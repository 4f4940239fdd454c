// Expressions: parsed, bound and worked out over a few rows.
#include "check.h"
#include "expression/memory_rows.h"
#include "fuzzers.h"
#include "world.h"

#include "expression/bound_expression.h"
#include "expression/expression_executor.h"

#include <bit>
#include <cmath>
#include <string>
#include <vector>

namespace orvane::fuzz {

namespace {

using expr::BoundExpression;
using expr::ExpressionError;
using expr::ExpressionExecutor;
using expr::ParsedExpression;
using expr::SelectionVector;
using expr::Value;
using expr::ValueType;
using expr::test::MemoryRows;

constexpr double fixed_now = 1517961600.25;

const MemoryRows &rows()
{
    static const MemoryRows *const made = [] {
        auto *const filled = new MemoryRows({{"lat", "origin", ValueType::Real, "-999.0", 9},
                                             {"depth", "origin", ValueType::Real, "-999.0", 9},
                                             {"time", "origin", ValueType::Time, "-9999999999.999", 17},
                                             {"orid", "origin", ValueType::Integer, "-1", 8},
                                             {"sta", "arrival", ValueType::Text, "-", 6},
                                             {"chan", "arrival", ValueType::Text, "-", 8},
                                             {"time", "arrival", ValueType::Time, "-9999999999.999", 17},
                                             {"jdate", "arrival", ValueType::Yearday, "-1", 8},
                                             {"flag", "arrival", ValueType::Boolean, "-1", 2},
                                             {"rows", "", ValueType::Rows, "-", 16}});
        filled->add({"42.5", "10", "1517961600", "12", "AAK", "BHZ", "1517980333.125", "2018038", "1", ""});
        filled->add({"-90", "-999.0", "-9999999999.999", "-1", "-", "12", "0", "-1", "-1", ""});
        filled->add({"1e300", "1e-300", "-1e15", "9223372036854775807", "", "2018-02-07", "1517961599.999999",
                     "2016366", "0", ""});
        filled->add({"0", "-0.0", "1e18", "-9223372036854775808", "\xff\xfe", "1e3", "-9999999999.999",
                     "99999999", "1", ""});
        filled->add({"nan", "inf", "951782400", "0", "KIV", "a'b\"c\\d", "1e300", "-2018038", "0", ""});
        filled->add({"42.5", "10", "1517961600", "12", "AAK", "bhz", "1517980333.125", "2018039", "1", ""});
        return filled;
    }();
    return *made;
}

bool is_text(ValueType type)
{
    return expr::storage_of(type) == expr::Storage::Text;
}

bool equal(const Value &a, const Value &b)
{
    if (a.type != b.type || a.presence != b.presence)
        return false;
    if (a.presence == expr::Missing)
        return true;
    switch (expr::storage_of(a.type)) {
    case expr::Storage::Integer:
        return a.integer == b.integer;
    case expr::Storage::Real:
        return std::bit_cast<std::uint64_t>(a.real) == std::bit_cast<std::uint64_t>(b.real) ||
               (std::isnan(a.real) && std::isnan(b.real));
    case expr::Storage::Text:
        return a.text == b.text;
    }
    return false;
}

std::string listed(const std::vector<Value> &values)
{
    std::string text;
    for (const Value &value : values)
        text += is_text(value.type) ? "'" + value.text + "' " : expr::test::shown(value) + " ";
    return text;
}

void check_error(std::string_view text, const ExpressionError &error)
{
    FUZZ_CHECK(!error.reason.empty(), "");
    FUZZ_CHECK(error.reason.find('\n') == std::string::npos, error.reason);
    FUZZ_CHECK(error.place.offset <= text.size(), error.reason);
    FUZZ_CHECK(error.place.length <= text.size() - error.place.offset, error.reason);
}

// Every batch gives what the rows by themselves give.
std::vector<Value> values_by_row(const BoundExpression &bound, bool &failed)
{
    std::vector<Value> values;
    ExpressionExecutor executor(bound, fixed_now);
    for (std::size_t row = 0; row < rows().size(); ++row) {
        auto batch = rows().batch(row, 1);
        auto value = executor.value(batch, 0);
        failed |= !value.ok();
        if (failed)
            return values;
        values.push_back(*value);
    }
    return values;
}

void check_values(const BoundExpression &bound)
{
    bool failed = false;
    const std::vector<Value> single = values_by_row(bound, failed);
    ExpressionExecutor executor(bound, fixed_now);
    std::vector<Value> together;
    auto all = rows().all();
    const Status done = executor.values(all, together);
    if (failed || !done.ok()) { // texts that would fill the memory: a batch may need more than a row
        FUZZ_CHECK(!done.ok(), "one row fails, all together don't");
        FUZZ_CHECK(done.code() == Code::Memory, std::string(done.message()));
        return;
    }
    FUZZ_CHECK(together.size() == rows().size(), std::to_string(together.size()));
    for (std::size_t row = 0; row < rows().size(); ++row) {
        FUZZ_CHECK(together[row].type == bound.type(), listed(together));
        FUZZ_CHECK(equal(single[row], together[row]), listed(single) + "\n" + listed(together));
    }
    if (expr::is_constant(bound))
        for (const Value &value : together)
            FUZZ_CHECK(equal(value, together.front()), listed(together));
}

// A condition selects the rows in which it is true, whichever rows it is asked about.
void check_condition(const ParsedExpression &parsed)
{
    ExpressionError error;
    const auto bound = BoundExpression::bind_condition(parsed, rows().scope(), &error);
    if (!bound.ok()) {
        check_error(parsed.text(), error);
        return;
    }
    ExpressionExecutor executor(*bound, fixed_now);
    SelectionVector selected;
    auto all = rows().all();
    if (!executor.select_all(all, selected).ok())
        return;
    std::vector<bool> is_selected(rows().size());
    for (const std::uint32_t position : selected)
        is_selected.at(position) = true;
    for (std::uint32_t row = 0; row < rows().size(); ++row) {
        SelectionVector own;
        auto batch = rows().batch(row, 1);
        FUZZ_CHECK(executor.select_all(batch, own).ok(), "");
        FUZZ_CHECK(own.size() == (is_selected[row] ? 1u : 0u), "row " + std::to_string(row));
    }
    SelectionVector some{0, 3, 4};
    SelectionVector expected;
    for (const std::uint32_t row : some)
        if (is_selected[row])
            expected.push_back(row);
    FUZZ_CHECK(executor.select(all, some).ok(), "");
    FUZZ_CHECK(some == expected, "");

    // Its opposite selects the others.
    const auto opposite = ParsedExpression::parse("!(" + parsed.text() + "\n)");
    if (!opposite.ok())
        return; // too long or too deep
    const auto bound_opposite = BoundExpression::bind_condition(*opposite, rows().scope());
    if (!bound_opposite.ok())
        return;
    ExpressionExecutor other(*bound_opposite, fixed_now);
    SelectionVector others;
    if (other.select_all(all, others).ok())
        FUZZ_CHECK(others.size() + selected.size() == rows().size(), std::to_string(others.size()));
}

// ---- Joins ---------------------------------------------------------------------------------------

struct Pairs {
    Dbptr left;
    Dbptr right;
    Dbptr all; // every row of the one beside every row of the other
};

// Made once: opening a database takes longer than most expressions.
const Pairs &pairs()
{
    static const Pairs *const made = [] {
        auto *const world = new World;
        world->files.write(
            World::table_path("every"),
            record_text("every", "1|12|17|42.5|1.0|2.5|1517961600|2018038|AAK|NEIC") + "\n" +
                record_text("every", "") + "\n" +
                record_text("every", "0|13|-17|-90|1e-300|1e9|2018/02/07|2018039|KIV|12|0 1 2 3") + "\n");
        world->files.write(World::table_path("arrival"),
                           record_text("arrival", "AAK|1517980333.125|12|2018038") + "\n" +
                               record_text("arrival", "KIV") + "\n" +
                               record_text("arrival", "-|x 12|13|2018039") + "\n");
        static const Opened open(World::descriptor_path);
        const Pairs tables{open.table("every"), open.table("arrival"), {}};
        FUZZ_CHECK(integer(tables.left, dbRECORD_COUNT) == 3, take_log());
        FUZZ_CHECK(integer(tables.right, dbRECORD_COUNT) == 3, take_log());
        const Dbptr all = dbtheta(tables.left, tables.right, "1", "pairs");
        FUZZ_CHECK(integer(all, dbRECORD_COUNT) == 9, take_log());
        return new Pairs{tables.left, tables.right, all};
    }();
    return *made;
}

std::string rows_of(Dbptr view)
{
    std::string text;
    const int64_t count = integer(view, dbRECORD_COUNT);
    for (view.record = 0; view.record < count; ++view.record)
        text += whole_text(view) + "\n";
    return text;
}

// What a theta join looks up comes to the same as trying all pairs.
void check_theta(const std::string &text)
{
    if (text.find('\0') != std::string::npos)
        return; // a text for a call ends there
    const Dbptr none = dbinvalid();
    DbExpressionError error{};
    const bool takes = dbexpr_check(pairs().left, pairs().right, text.c_str(), &error) == 0;
    free(error.reason);
    FUZZ_CHECK(take_log().empty(), "checking an expression logs nothing");
    const Dbptr joined = dbtheta(pairs().left, pairs().right, text.c_str(), "joined");
    const Dbptr chosen = dbsubset(pairs().all, text.c_str(), "chosen");
    const std::string log = take_log();
    FUZZ_CHECK((joined.table >= 0) == (chosen.table >= 0), log);
    FUZZ_CHECK(takes || joined.table < 0, log);
    FUZZ_CHECK((joined.table != none.table && joined.table >= 0) || !log.empty(), "a failure says why");
    if (joined.table < 0)
        return;
    const std::string one = rows_of(joined);
    const std::string other = rows_of(chosen);
    FUZZ_CHECK(one == other, one + "\n" + other);
    FUZZ_CHECK(dbfree(joined) == 0 && dbfree(chosen) == 0, take_log());
}

} // namespace

void fuzz_expression(std::string_view input)
{
    ExpressionError error;
    const auto parsed = ParsedExpression::parse(input, &error);
    if (!parsed.ok()) {
        check_error(input, error);
        FUZZ_CHECK(parsed.status().message().size() < 2000, std::string(parsed.status().message()));
        return;
    }
    check_theta(parsed->text());
    const auto bound = BoundExpression::bind(*parsed, rows().scope(), &error);
    if (!bound.ok()) {
        check_error(input, error);
        FUZZ_CHECK(bound.status().message().size() < 2000, std::string(bound.status().message()));
        FUZZ_CHECK(!BoundExpression::bind_condition(*parsed, rows().scope()).ok(), "");
        return;
    }
    check_values(*bound);
    check_condition(*parsed);
}

} // namespace orvane::fuzz
