#include <gtest/gtest.h>

#include "expression/binding_scope.h"

namespace orvane::expr::test {
namespace {

const std::vector<ScopeField> fields = {{"sta", "arrival", ValueType::Text},
                                        {"time", "arrival", ValueType::Time},
                                        {"sta", "site", ValueType::Text},
                                        {"lat", "site", ValueType::Real}};

TEST(FieldListScope, takes_a_bare_name_for_the_first_member_that_has_it)
{
    const FieldListScope scope(fields);
    EXPECT_EQ(scope.find("", "sta"), 0u);
    EXPECT_EQ(scope.find("", "lat"), 3u);
    EXPECT_EQ(scope.find("", "depth"), std::nullopt);
}

TEST(FieldListScope, takes_a_qualified_name_for_that_member)
{
    const FieldListScope scope(fields);
    EXPECT_EQ(scope.find("site", "sta"), 2u);
    EXPECT_EQ(scope.find("arrival", "lat"), std::nullopt);
    EXPECT_EQ(scope.find("origin", "sta"), std::nullopt);
}

TEST(FieldListScope, keeps_the_field_that_the_pointer_stands_on)
{
    const FieldListScope scope(fields, "", 2);
    EXPECT_EQ(scope.find("", "sta"), 2u);
    EXPECT_EQ(scope.find("", "time"), 1u);
    EXPECT_EQ(scope.find("arrival", "sta"), 0u);
}

TEST(FieldListScope, takes_the_views_own_name_as_a_prefix)
{
    const FieldListScope scope(fields, "arrival_join1");
    EXPECT_EQ(scope.find("arrival_join1", "sta"), 0u);
    EXPECT_EQ(scope.find("arrival_join1", "lat"), 3u);
    EXPECT_EQ(scope.find("other", "lat"), std::nullopt);
}

} // namespace
} // namespace orvane::expr::test
