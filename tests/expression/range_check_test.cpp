#include <gtest/gtest.h>

#include <memory>

#include <orvane/util.h>

#include "expression/range_check.h"

namespace orvane::expr::test {
namespace {

Value real(double number)
{
    Value value;
    value.type = ValueType::Real;
    value.real = number;
    return value;
}

Value text(std::string characters)
{
    Value value;
    value.type = ValueType::Text;
    value.text = std::move(characters);
    return value;
}

bool admits(RangeCheck &range, const Value &value)
{
    const auto answer = range.admits(value);
    EXPECT_TRUE(answer.ok());
    return answer.ok() && *answer;
}

TEST(RangeCheck, tells_values_in_the_range_from_those_out_of_it)
{
    const auto range = check_range("lat", ValueType::Real, "lat >= -90.0 && lat <= 90.0");
    ASSERT_TRUE(range.ok()) << range.status().message();
    RangeCheck check(*range);
    EXPECT_TRUE(admits(check, real(0)));
    EXPECT_TRUE(admits(check, real(-90)));
    EXPECT_FALSE(admits(check, real(90.0001)));
    EXPECT_FALSE(admits(check, real(-999)));
}

TEST(RangeCheck, admits_a_null)
{
    const auto range = check_range("lat", ValueType::Real, "lat >= -90.0 && lat <= 90.0");
    ASSERT_TRUE(range.ok());
    RangeCheck check(*range);
    Value null = real(-999);
    null.presence = StoredNull;
    EXPECT_TRUE(admits(check, null));
}

TEST(RangeCheck, takes_patterns_and_alternatives_of_texts)
{
    const auto pattern = check_range("fm", ValueType::Text, "fm =~ '^[cd.-][ur.-]?$'");
    ASSERT_TRUE(pattern.ok());
    RangeCheck check(*pattern);
    EXPECT_TRUE(admits(check, text("cu")));
    EXPECT_TRUE(admits(check, text("c ")));
    EXPECT_FALSE(admits(check, text("x")));
    const auto list = check_range("statype", ValueType::Text, "statype == 'ss' || statype == 'ar'");
    ASSERT_TRUE(list.ok());
    RangeCheck either(*list);
    EXPECT_TRUE(admits(either, text("ar")));
    EXPECT_FALSE(admits(either, text("ax")));
}

TEST(RangeCheck, takes_an_attribute_that_is_named_as_a_function)
{
    const auto range = check_range("azimuth", ValueType::Real, "azimuth >= 0.0 && azimuth <= 360.0");
    ASSERT_TRUE(range.ok()) << range.status().message();
    RangeCheck check(*range);
    EXPECT_TRUE(admits(check, real(12)));
    EXPECT_FALSE(admits(check, real(361)));
}

TEST(RangeCheck, shows_what_is_wrong_and_where)
{
    EXPECT_EQ(check_range("lat", ValueType::Real, "lat >= -90.0 && lta <= 90.0").status().message(),
              "unknown field `lta`; near it: lat\n  lat >= -90.0 && lta <= 90.0\n                  ^^^");
    EXPECT_EQ(check_range("sta", ValueType::Text, "sta").status().message(),
              "expected a condition, as a comparison; `sta` is text\n  sta\n  ^^^");
    EXPECT_FALSE(check_range("lat", ValueType::Real, "").ok());
}

/* The ranges of the schema that we ship are expressions of this language. */
TEST(RangeCheck, takes_every_range_of_the_shipped_schema)
{
    Pf *schema = nullptr;
    ASSERT_EQ(pfread(ORVANE_SOURCE_DIR "/schemas/css3.0.yaml", &schema), 0);
    const std::unique_ptr<Pf, void (*)(Pf *)> owner(schema, pffree);
    PfValue attributes{};
    ASSERT_EQ(pfget(schema, "attributes", &attributes), PFARRAY);
    const std::unique_ptr<Tbl, void (*)(Tbl *)> names(pfkeys(attributes.pf),
                                                      [](Tbl *list) { freetbl(list, nullptr); });
    int ranges = 0;
    for (int64_t i = 0; i < maxtbl(names.get()); ++i) {
        const char *name = static_cast<const char *>(gettbl(names.get(), i));
        PfValue attribute{};
        PfValue type{};
        PfValue range{};
        ASSERT_EQ(pfget(attributes.pf, name, &attribute), PFARRAY);
        ASSERT_EQ(pfget(attribute.pf, "type", &type), PFSTRING);
        if (pfget(attribute.pf, "range", &range) != PFSTRING || std::string(range.text).empty())
            continue;
        const std::string word = type.text;
        const ValueType valueType = word == "string"    ? ValueType::Text
                                    : word == "real"    ? ValueType::Real
                                    : word == "time"    ? ValueType::Time
                                    : word == "yearday" ? ValueType::Yearday
                                    : word == "boolean" ? ValueType::Boolean
                                                        : ValueType::Integer;
        const auto bound = check_range(name, valueType, range.text);
        EXPECT_TRUE(bound.ok()) << name << ": " << bound.status().message();
        ++ranges;
    }
    EXPECT_GT(ranges, 50);
}

} // namespace
} // namespace orvane::expr::test
