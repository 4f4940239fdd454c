// Work::for_parts: parts are made by any thread, and taken in order by the caller's.
#include "work/work.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using orvane::Code;
using orvane::Status;
using orvane::Work;

namespace {

void wait_a_little(std::int64_t begin)
{
    std::this_thread::sleep_for(std::chrono::microseconds((begin * 7919) % 700));
}

TEST(WorkParts, AreTakenInOrderByTheCaller)
{
    for (const std::int64_t count : {0, 1, 9, 10, 11, 100, 995}) {
        Work work("test", {});
        const auto caller = std::this_thread::get_id();
        std::vector<std::string> slots(Work::part_slots());
        std::vector<std::string> taken;
        const Status done = work.for_parts(
            count, 10, 1,
            [&](std::int64_t begin, std::int64_t end, unsigned slot) {
                wait_a_little(begin);
                EXPECT_EQ(slots[slot], ""); // it is nobody else's
                slots[slot] = std::to_string(begin) + "-" + std::to_string(end);
                return Status();
            },
            [&](std::int64_t begin, std::int64_t end, unsigned slot) {
                EXPECT_EQ(std::this_thread::get_id(), caller);
                EXPECT_EQ(slots[slot], std::to_string(begin) + "-" + std::to_string(end));
                taken.push_back(std::exchange(slots[slot], ""));
                return Status();
            });
        EXPECT_TRUE(done.ok());
        std::vector<std::string> expected;
        for (std::int64_t begin = 0; begin < count; begin += 10)
            expected.push_back(std::to_string(begin) + "-" + std::to_string(std::min(count, begin + 10)));
        EXPECT_EQ(taken, expected);
    }
}

TEST(WorkParts, AreNotMadeFarAhead)
{
    Work work("test", {});
    std::atomic<std::int64_t> made = 0;
    std::int64_t taken = 0;
    const Status done = work.for_parts(
        200, 1, 1,
        [&](std::int64_t, std::int64_t, unsigned) {
            ++made;
            return Status();
        },
        [&](std::int64_t, std::int64_t, unsigned) {
            wait_a_little(taken);
            EXPECT_LE(made, taken + static_cast<std::int64_t>(Work::part_slots()));
            ++taken;
            return Status();
        });
    EXPECT_TRUE(done.ok());
    EXPECT_EQ(taken, 200);
}

TEST(WorkParts, ThatCannotBeMadeEndItBehindThoseBefore)
{
    for (const std::int64_t bad : {0, 1, 57, 199}) {
        Work work("test", {});
        std::int64_t taken = 0;
        const auto make = [&](std::int64_t begin, std::int64_t, unsigned) {
            if (begin < bad)
                wait_a_little(begin); // so that the bad one is done first
            // A later one that is bad, too, is not the failure.
            return begin < bad ? Status() : Status(Code::Format, std::to_string(begin));
        };
        const auto take = [&](std::int64_t begin, std::int64_t, unsigned) {
            EXPECT_EQ(begin, taken++);
            return Status();
        };
        const Status done = work.for_parts(200, 1, 1, make, take);
        EXPECT_EQ(done.code(), Code::Format);
        EXPECT_EQ(done.message(), std::to_string(bad));
        EXPECT_EQ(taken, bad);
    }
}

TEST(WorkParts, ThatThrowDoSoInTheCallersThread)
{
    Work work("test", {});
    std::int64_t taken = 0;
    const auto count_one = [&](std::int64_t, std::int64_t, unsigned) {
        ++taken;
        return Status();
    };
    const auto nothing = [](std::int64_t, std::int64_t, unsigned) { return Status(); };
    const auto throw_late = [](std::int64_t begin, std::int64_t, unsigned) -> Status {
        if (begin >= 30)
            throw std::runtime_error("too much");
        return Status();
    };
    EXPECT_THROW(static_cast<void>(work.for_parts(100, 1, 1, throw_late, count_one)), std::runtime_error);
    EXPECT_EQ(taken, 30);
    EXPECT_THROW(static_cast<void>(work.for_parts(100, 1, 1, nothing, throw_late)), std::runtime_error);
}

TEST(WorkParts, ThatCannotBeTakenEndIt)
{
    Work work("test", {});
    std::int64_t taken = 0;
    const Status done = work.for_parts(
        1000, 1, 1, [](std::int64_t, std::int64_t, unsigned) { return Status(); },
        [&](std::int64_t, std::int64_t, unsigned) {
            return ++taken == 12 ? Status(Code::Io, "full") : Status();
        });
    EXPECT_EQ(done.message(), "full");
    EXPECT_EQ(taken, 12);
}

TEST(WorkParts, TellHowFarTheyAreAndAreStopped)
{
    struct Told {
        std::vector<double> fractions;
        static int hook(double fraction, void *data)
        {
            auto &told = *static_cast<Told *>(data);
            told.fractions.push_back(fraction);
            return told.fractions.size() == 3 ? 1 : 0;
        }
    } told;
    Work work("test", {&Told::hook, &told});
    const auto begin = std::chrono::steady_clock::now();
    // Slow ones: the hook is called while this thread waits for others, too.
    const Status done = work.for_parts(
        1000, 1, 0.5,
        [](std::int64_t, std::int64_t, unsigned) {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            return Status();
        },
        [](std::int64_t, std::int64_t, unsigned) { return Status(); });
    EXPECT_EQ(done.code(), Code::Cancelled);
    ASSERT_EQ(told.fractions.size(), 3u);
    EXPECT_LT(told.fractions[0], told.fractions[2]);
    EXPECT_LT(told.fractions[2], 0.5);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

} // namespace
