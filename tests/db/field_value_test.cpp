#include "table/field_value.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <random>

using namespace orvane;

namespace {

Attribute attribute(FieldType type, const char *null)
{
    Attribute made;
    made.name = "field";
    made.type = type;
    made.width = 17;
    made.null = null;
    if (is_integer(type))
        made.null_integer = *decode_integer(null);
    if (is_real(type))
        made.null_real = *decode_real(null);
    return made;
}

} // namespace

TEST(FieldValue, takes_whole_numbers_anywhere_in_their_field)
{
    EXPECT_EQ(decode_integer("      42"), 42);
    EXPECT_EQ(decode_integer("42      "), 42);
    EXPECT_EQ(decode_integer("   42   "), 42);
    EXPECT_EQ(decode_integer("-1"), -1);
    EXPECT_EQ(decode_integer("+7"), 7);
    EXPECT_EQ(decode_integer("0007"), 7);
    EXPECT_EQ(decode_integer("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
}

TEST(FieldValue, refuses_what_is_no_whole_number)
{
    for (const char *bad : {"", "    ", "4 2", "4.2", "42x", "x", "--1", "+-1", "+", "-", "0x10", "1e3",
                            "9223372036854775808", "4\n2", "\xff"})
        EXPECT_FALSE(decode_integer(bad)) << bad;
}

TEST(FieldValue, takes_numbers_with_fewer_decimals_and_exponents)
{
    EXPECT_EQ(decode_real("   42"), 42.0);
    EXPECT_EQ(decode_real("-999.0 "), -999.0);
    EXPECT_EQ(decode_real("  .5"), 0.5);
    EXPECT_EQ(decode_real("5."), 5.0);
    EXPECT_EQ(decode_real("+1.5e-3"), 0.0015);
    EXPECT_EQ(decode_real("-0"), 0.0);
}

TEST(FieldValue, refuses_what_is_no_finite_number)
{
    for (const char *bad :
         {"", "  ", "nan", "inf", "-inf", "1e999", "1.2.3", "1,5", "+-1", "0x1p3", "1 2", "-"})
        EXPECT_FALSE(decode_real(bad)) << bad;
}

TEST(FieldValue, reads_back_every_number_that_the_format_prints)
{
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> numbers(-1e6, 1e6);
    for (int i = 0; i < 10000; ++i) {
        char text[40];
        std::snprintf(text, sizeof text, "%24.17e", numbers(random));
        double back = 0;
        ASSERT_EQ(std::sscanf(text, "%lf", &back), 1);
        ASSERT_EQ(decode_real(text), back) << text;
    }
}

TEST(FieldValue, takes_times_as_seconds_and_as_dates_in_words)
{
    const Attribute time = attribute(FieldType::Time, "-9999999999.999");
    EXPECT_EQ(decode_field(time, "  1517363399.65000")->real, 1517363399.65);
    EXPECT_EQ(decode_field(time, "2011/01/31       ")->real, 1296432000.0);
    EXPECT_EQ(decode_field(time, "2014-03-03T110706")->real, 1393844826.0);
    EXPECT_FALSE(decode_field(time, "soon"));
    EXPECT_FALSE(decode_field(time, "                 "));
}

TEST(FieldValue, takes_zero_one_and_null_as_booleans)
{
    const Attribute flag = attribute(FieldType::Boolean, "-1");
    EXPECT_EQ(decode_field(flag, " 0")->integer, 0);
    EXPECT_EQ(decode_field(flag, " 1")->integer, 1);
    EXPECT_EQ(decode_field(flag, "-1")->integer, -1);
    EXPECT_FALSE(decode_field(flag, " 2"));
    EXPECT_FALSE(decode_field(flag, "t"));
}

TEST(FieldValue, leaves_text_as_it_is_but_for_blanks_at_its_end)
{
    const Attribute sta = attribute(FieldType::String, "-");
    EXPECT_EQ(decode_field(sta, "  AAK \xff  ")->text, "  AAK \xff");
    EXPECT_EQ(decode_field(sta, "      ")->text, "");
}

TEST(FieldValue, takes_a_pointer_as_four_numbers)
{
    const Attribute bundle = attribute(FieldType::Dbptr, "-");
    EXPECT_EQ(decode_field(bundle, "0 12 -501 3     ")->dbptr, (std::array<std::int64_t, 4>{0, 12, -501, 3}));
    EXPECT_EQ(decode_field(bundle, "-               ")->dbptr,
              (std::array<std::int64_t, 4>{-102, -102, -102, -102}));
    EXPECT_FALSE(decode_field(bundle, "0 12 -501"));
    EXPECT_FALSE(decode_field(bundle, "0 12 -501 3 4"));
}

TEST(FieldValue, compares_numbers_with_their_null_by_value_and_text_without_blanks)
{
    const Attribute lat = attribute(FieldType::Real, "-999.0000");
    EXPECT_TRUE(is_null_field(lat, "-999.0000"));
    EXPECT_TRUE(is_null_field(lat, "   -999.0"));
    EXPECT_TRUE(is_null_field(lat, "-999     "));
    EXPECT_FALSE(is_null_field(lat, "-999.0001"));
    EXPECT_FALSE(is_null_field(lat, "    -    "));
    const Attribute id = attribute(FieldType::Integer, "-1");
    EXPECT_TRUE(is_null_field(id, "      -1"));
    EXPECT_FALSE(is_null_field(id, "       1"));
    const Attribute sta = attribute(FieldType::String, "-");
    EXPECT_TRUE(is_null_field(sta, "-     "));
    EXPECT_FALSE(is_null_field(sta, " -    "));
}
