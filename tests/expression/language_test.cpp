#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "case_file.h"
#include "expression/expression_executor.h"

namespace orvane::expr::test {
namespace {

constexpr double fixedNow = 1517980333.25; // 2018-02-07 05:12:13.25

/* What the case files call the outcome of an expression: its value, or its
 * error. */
std::string outcome(const std::string &expression, const MemoryRows &rows)
{
    const auto parsed = ParsedExpression::parse(expression);
    if (!parsed.ok())
        return std::string(parsed.status().message());
    const auto bound = BoundExpression::bind(*parsed, rows.scope());
    if (!bound.ok())
        return std::string(bound.status().message());
    ExpressionExecutor executor(*bound, fixedNow);
    auto batch = rows.all();
    const auto value = executor.value(batch, 0);
    return value.ok() ? shown(*value) : std::string(value.status().message());
}

std::vector<std::string> caseFiles()
{
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(ORVANE_SOURCE_DIR "/tests/expression/cases"))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

class Language : public testing::TestWithParam<std::string>
{
};

TEST_P(Language, means_what_the_case_file_says)
{
    const CaseFile file = readCases(ORVANE_SOURCE_DIR "/tests/expression/cases/" + GetParam());
    ASSERT_FALSE(file.cases.empty());
    for (const Case &statement : file.cases) {
        MemoryRows rows(file.fields);
        rows.add(statement.row);
        EXPECT_EQ(outcome(statement.expression, rows), statement.expected)
            << GetParam() << ":" << statement.line << ": " << statement.expression;
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, Language, testing::ValuesIn(caseFiles()), [](const auto &file) {
    std::string name = std::filesystem::path(file.param).stem().string();
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name;
});

} // namespace
} // namespace orvane::expr::test
