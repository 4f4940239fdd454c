#include <gtest/gtest.h>

#include <ovconfig.h>

namespace {

TEST(OvConfig, AnAbsentKeyReadsAsAnInvalidVariant)
{
    const OvConfig config;
    EXPECT_FALSE(config["nothing"].isValid());
    EXPECT_FALSE(config.hasKey("nothing"));
}

} // namespace
