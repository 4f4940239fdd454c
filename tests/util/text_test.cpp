#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <thread>

#include "c_text.h"

namespace {

std::string trimmed(std::string text)
{
    char *const result = strtrim(text.data());
    EXPECT_EQ(result, text.data());
    return result;
}

TEST(Text, IsTrimmedInPlaceAtBothEnds)
{
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(trimmed("  \t\r\n\v\f "), "");
    EXPECT_EQ(trimmed("x"), "x");
    EXPECT_EQ(trimmed("  two words  "), "two words");
    EXPECT_EQ(trimmed("\n\xC3\xA9\n"), "\xC3\xA9");
    EXPECT_EQ(trimmed("\xC2\xA0x\x85"), "\xC2\xA0x\x85") << "bytes of other characters stay";
    EXPECT_EQ(strtrim(nullptr), nullptr);
}

TEST(Text, IsBlankWhenThereIsNothingButWhiteSpace)
{
    EXPECT_EQ(whitespace(nullptr), 1);
    EXPECT_EQ(whitespace(""), 1);
    EXPECT_EQ(whitespace(" \t\r\n\v\f"), 1);
    EXPECT_EQ(whitespace(" - "), 0);
    EXPECT_EQ(whitespace("\xC2\xA0"), 0);
}

TEST(Disordered, IsAFractionBelowOneSpreadEvenly)
{
    std::array<int, 10> tenths = {};
    for (int i = 0; i < 100000; ++i) {
        const double value = disordered();
        ASSERT_GE(value, 0.0);
        ASSERT_LT(value, 1.0);
        ++tenths[static_cast<size_t>(value * 10)];
    }
    // 10000 expected in each, with a standard deviation of 95.
    EXPECT_GT(*std::min_element(tenths.begin(), tenths.end()), 9300);
    EXPECT_LT(*std::max_element(tenths.begin(), tenths.end()), 10700);
}

TEST(Disordered, DiffersBetweenThreads)
{
    double other = 0;
    std::thread([&other] { other = disordered(); }).join();
    EXPECT_NE(disordered(), other);
}

} // namespace
