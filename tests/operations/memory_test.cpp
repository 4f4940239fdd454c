// Memory that runs out anywhere in an operation: an error, nothing left behind, and the next call works.
#include "operations/large_tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <new>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

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
// The standard library's sorts ask by these, and give back by the common ones.
void *operator new(size_t bytes, const std::nothrow_t &) noexcept
{
    return allocate(bytes);
}
void *operator new[](size_t bytes, const std::nothrow_t &) noexcept
{
    return allocate(bytes);
}
// Inlined into each other, the pairs above and the ones below look to the compiler like two kinds of memory.
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

// Sanitizers take address space as they like.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

// The address space that the process has now and so many bytes more.
void limitAddressSpace(size_t more)
{
    size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t bytes = pages * static_cast<size_t>(sysconf(_SC_PAGESIZE)) + more;
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_AS, &limit);
}

// What is wrong after a join for which the process has no room; empty where all is well.
std::string joinWithoutRoom(const Opened &open)
{
    limitAddressSpace(48 << 20);
    // Some 17 million rows.
    const Dbptr made =
        dbjoin(open.table("many"), open.table("more"), Names{"word"}, nullptr, 0, nullptr, "wanted");
    const std::string log = take_log();
    if (made.table >= 0)
        return "the join was made";
    if (log.find("dbjoin: out of memory") == std::string::npos)
        return "the log says: " + log;
    if (integer(open.pointer, dbTABLE_COUNT) != 2)
        return "something was left behind";
    if (dbsubset(open.table("many"), "id == 7", "wanted").table < 0)
        return "the next operation fails: " + take_log();
    return "";
}

TEST_F(OutOfMemory, OfTheWholeProcessIsAnErrorOfAJoin)
{
    const Opened open(files.path());
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const std::string wrong = joinWithoutRoom(open);
        std::fputs(wrong.c_str(), stderr);
        std::fflush(stderr);
        _exit(wrong.empty() ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

#endif

} // namespace
