#include "schema/field_format.h"

#include <gtest/gtest.h>

using namespace orvane;

TEST(FieldFormat, takes_a_conversion_apart)
{
    const auto format = parse_field_format("%-+09.4f");
    ASSERT_TRUE(format);
    EXPECT_EQ(format->flags, "-+0");
    EXPECT_EQ(format->width, 9);
    EXPECT_EQ(format->precision, 4);
    EXPECT_EQ(format->conversion, 'f');
    EXPECT_EQ(format->c_format(), "%-+09.4f");
    EXPECT_EQ(parse_field_format("%d")->c_format(), "%lld");
    EXPECT_EQ(parse_field_format("%-8s")->c_format(), "%-8s");
}

TEST(FieldFormat, refuses_all_but_one_conversion_of_the_known_ones)
{
    for (const char *bad : {"",     "%",       "d",      "%d ",      " %d",
                            "%ld",  "%lld",    "%hf",    "%x",       "%n",
                            "%*d",  "%.*f",    "%9.f",   "%9.4",     "%d%d",
                            "%%",   "%--d",    "%1000d", "%9.1000f", "%99999999999999999999d",
                            "%1$d", "%9.4\xff"})
        EXPECT_FALSE(parse_field_format(bad)) << bad;
}

TEST(FieldFormat, prints_as_c_does)
{
    EXPECT_EQ(print_integer(*parse_field_format("%8d"), -42), "     -42");
    EXPECT_EQ(print_integer(*parse_field_format("%08d"), 42), "00000042");
    EXPECT_EQ(print_real(*parse_field_format("%9.4f"), -999), "-999.0000");
    EXPECT_EQ(print_real(*parse_field_format("%10.2e"), 12345), "  1.23e+04");
    EXPECT_EQ(print_real(*parse_field_format("%g"), 0.5), "0.5");
    EXPECT_EQ(print_real(*parse_field_format("%f"), 1e300).size(), 308u);
}
