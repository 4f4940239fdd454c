#include "storage/block_cache.h"

#include <gtest/gtest.h>

using namespace orvane;

namespace {

std::shared_ptr<const Block> block_of(std::size_t bytes)
{
    auto block = std::make_shared<Block>();
    block->bytes.assign(bytes, 'x');
    return block;
}

} // namespace

TEST(BlockCache, hands_out_what_it_keeps)
{
    BlockCache cache(100);
    const auto block = block_of(10);
    const FileVersion version = cache.new_version();
    EXPECT_EQ(cache.find(version, 3), nullptr);
    cache.keep(version, 3, block);
    EXPECT_EQ(cache.find(version, 3), block);
    EXPECT_EQ(cache.find(version, 4), nullptr);
    EXPECT_EQ(cache.find(cache.new_version(), 3), nullptr);
    EXPECT_EQ(cache.used_bytes(), 10u);
}

TEST(BlockCache, lets_the_least_recently_used_go_within_its_budget)
{
    BlockCache cache(30);
    const FileVersion version = cache.new_version();
    for (int i = 0; i < 3; ++i)
        cache.keep(version, i, block_of(10));
    EXPECT_NE(cache.find(version, 0), nullptr); // now 1 is the oldest
    cache.keep(version, 3, block_of(10));
    EXPECT_EQ(cache.find(version, 1), nullptr);
    for (int i : {0, 2, 3})
        EXPECT_NE(cache.find(version, i), nullptr) << i;
    EXPECT_EQ(cache.used_bytes(), 30u);
}

TEST(BlockCache, keeps_one_block_that_is_beyond_the_budget_for_its_reader)
{
    BlockCache cache(5);
    const FileVersion version = cache.new_version();
    cache.keep(version, 0, block_of(10));
    EXPECT_NE(cache.find(version, 0), nullptr);
    cache.keep(version, 1, block_of(10));
    EXPECT_EQ(cache.find(version, 0), nullptr);
    EXPECT_EQ(cache.used_bytes(), 10u);
}

TEST(BlockCache, drops_the_blocks_of_one_version_only)
{
    BlockCache cache(100);
    const FileVersion one = cache.new_version(), other = cache.new_version();
    cache.keep(one, 0, block_of(10));
    cache.keep(other, 0, block_of(20));
    cache.keep(one, 1, block_of(10));
    cache.drop(one);
    EXPECT_EQ(cache.find(one, 0), nullptr);
    EXPECT_EQ(cache.find(one, 1), nullptr);
    EXPECT_NE(cache.find(other, 0), nullptr);
    EXPECT_EQ(cache.used_bytes(), 20u);
}

TEST(BlockCache, replaces_a_block_without_counting_it_twice)
{
    BlockCache cache(100);
    const FileVersion version = cache.new_version();
    cache.keep(version, 0, block_of(10));
    const auto newer = block_of(30);
    cache.keep(version, 0, newer);
    EXPECT_EQ(cache.find(version, 0), newer);
    EXPECT_EQ(cache.used_bytes(), 30u);
}

TEST(BlockCache, drops_one_block)
{
    BlockCache cache(100);
    const FileVersion version = cache.new_version();
    cache.keep(version, 0, block_of(10));
    cache.keep(version, 1, block_of(20));
    cache.drop(version, 0);
    cache.drop(version, 7);
    EXPECT_EQ(cache.find(version, 0), nullptr);
    EXPECT_NE(cache.find(version, 1), nullptr);
    EXPECT_EQ(cache.used_bytes(), 20u);
}

TEST(BlockCache, leaves_a_dropped_block_to_who_holds_it)
{
    BlockCache cache(100);
    const FileVersion version = cache.new_version();
    cache.keep(version, 0, block_of(10));
    const auto held = cache.find(version, 0);
    cache.drop(version);
    EXPECT_EQ(held->bytes, std::vector<char>(10, 'x'));
}
