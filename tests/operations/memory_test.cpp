// Memory that runs out anywhere in an operation: an error, nothing left behind, and the next call works.
#include "operations/large_tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>

namespace {

// Of the allocations of at least so many bytes the one that fails, counted down; below 0 none does.
std::atomic<long> failing{-1};
constexpr size_t least_bytes = 512;

void *allocate(size_t bytes)
{
    if (bytes >= least_bytes && failing.load() >= 0 && failing.fetch_sub(1) == 0)
        return nullptr;
    return std::malloc(bytes == 0 ? 1 : bytes);
}

} // namespace

void *operator new(size_t bytes)
{
    if (void *memory = allocate(bytes))
        return memory;
    throw std::bad_alloc();
}
void *operator new[](size_t bytes)
{
    return operator new(bytes);
}
// Inlined into each other, the pair above and the ones below look to the compiler like two kinds of memory.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void operator delete(void *memory) noexcept
{
    std::free(memory);
}
void operator delete[](void *memory) noexcept
{
    std::free(memory);
}
void operator delete(void *memory, size_t) noexcept
{
    std::free(memory);
}
void operator delete[](void *memory, size_t) noexcept
{
    std::free(memory);
}

using testing::HasSubstr;

namespace {

class OutOfMemory : public testing::Test
{
protected:
    OutOfMemory()
    {
        writeNarrowTable(files, "many", narrowRows(20000, 2000, 1));
        writeNarrowTable(files, "more", narrowRows(6000, 2000, 2));
    }
    ~OutOfMemory() override { failing = -1; }

    TemporaryDatabase files{"narrow", narrowSchemaText()};
};

struct Operation {
    const char *name;
    std::function<Dbptr(const Opened &)> run;
};

TEST_F(OutOfMemory, AnywhereInAnOperationIsAnErrorThatLeavesNothing)
{
    const Operation operations[] = {
        {"subset", [](const Opened &open) { return dbsubset(open.table("many"), "word == 'KIV'", nullptr); }},
        {"sort",
         [](const Opened &open) {
             return dbsort(open.table("many"), Names{"word", "value"}, 2, nullptr);
         }},
        {"group", [](const Opened &open) { return dbgroup(open.table("many"), Names{"word"}, nullptr, 1); }},
        {"join",
         [](const Opened &open) {
             return dbjoin(open.table("many"), open.table("more"), Names{"id", "word"},
                           Names{"other", "word"}, 1, nullptr, nullptr);
         }},
        {"nojoin",
         [](const Opened &open) {
             return dbnojoin(open.table("many"), open.table("more"), Names{"id"}, Names{"other"}, nullptr);
         }},
        {"theta",
         [](const Opened &open) {
             return dbtheta(
                 open.table("many"), open.table("more"),
                 "id == other && more.value > many.value + 1 && strcat(many.word, more.word) != 'x'",
                 nullptr);
         }},
    };
    for (const Operation &operation : operations) {
        long failures = 0;
        for (long at = 0;; at += 1 + at / 6) {
            const Opened open(files.path()); // nothing is decoded yet
            failing = at;
            const Dbptr made = operation.run(open);
            const bool none_failed = failing.exchange(-1) >= 0;
            const std::string log = take_log();
            if (none_failed) {
                EXPECT_GE(made.table, 0) << operation.name << ": " << log;
                break;
            }
            ++failures;
            // An allocation that can do without (a cache) may fail without harm.
            EXPECT_EQ(integer(open.pointer, dbTABLE_COUNT), made.table < 0 ? 2 : 3)
                << operation.name << " " << at;
            if (made.table < 0) {
                EXPECT_THAT(log, HasSubstr("out of memory")) << operation.name << " " << at;
            }
            EXPECT_GE(operation.run(open).table, 0) << operation.name << " " << at << take_log();
            ASSERT_LT(failures, 1000);
        }
        EXPECT_GT(failures, 5) << operation.name;
    }
}

} // namespace
