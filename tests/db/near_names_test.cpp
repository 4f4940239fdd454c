#include "base/near_names.h"

#include <gtest/gtest.h>

using namespace orvane;

TEST(NearNames, are_those_that_differ_by_few_letters_nearest_first)
{
    const std::vector<std::string_view> known{"origin", "origerr", "arrival", "event", "orient"};
    EXPECT_EQ(near_names("orgin", known), (std::vector<std::string_view>{"origin"}));
    EXPECT_EQ(near_names("origen", known), (std::vector<std::string_view>{"origin", "origerr", "orient"}));
    EXPECT_EQ(near_names("ORIGIN", known), (std::vector<std::string_view>{"origin"}));
    EXPECT_EQ(near_names("orig", known), (std::vector<std::string_view>{"origin", "origerr"}));
    EXPECT_EQ(near_names("evnet", known), (std::vector<std::string_view>{"event"})); // neighbours swapped
    EXPECT_TRUE(near_names("evtne", known).empty());
    EXPECT_TRUE(near_names("zzz", known).empty());
    EXPECT_TRUE(near_names("", known).empty());
    EXPECT_TRUE(near_names(std::string(100000, 'o'), known).empty());
}

TEST(NearNames, become_the_end_of_a_message)
{
    EXPECT_EQ(near_names_hint("lat", {"lat", "lot"}), "; near it: lat, lot");
    EXPECT_EQ(near_names_hint("depth", {"lat", "lon"}), "");
}
