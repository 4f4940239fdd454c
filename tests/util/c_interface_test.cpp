#include <gtest/gtest.h>

#include "c_caller.h"

namespace {

TEST(CInterface, IsUsableFromC)
{
    EXPECT_EQ(call_from_c(), 0) << "the line of c_caller.c whose check fails";
}

} // namespace
