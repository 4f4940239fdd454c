#include "operations/large_tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using testing::HasSubstr;

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

// Notes when the hook is called, and says to stop at a certain call.
struct Watcher {
    std::vector<Clock::time_point> calls;
    std::vector<double> fractions;
    std::vector<std::thread::id> threads;
    std::string operation;
    size_t stopAt = ~size_t{0};
    std::function<void()> also;

    static int hook(double fraction, void *data)
    {
        auto &watcher = *static_cast<Watcher *>(data);
        watcher.calls.push_back(Clock::now());
        watcher.fractions.push_back(fraction);
        watcher.threads.push_back(std::this_thread::get_id());
        watcher.operation = dbprogress_operation();
        if (watcher.also)
            watcher.also();
        return watcher.calls.size() >= watcher.stopAt ? 1 : 0;
    }
};

class Progress : public testing::Test
{
protected:
    Progress()
    {
        writeNarrowTable(files, "many", narrowRows(1000000, 50000, 1));
        writeNarrowTable(files, "more", narrowRows(1000000, 50000, 2));
        open = std::make_unique<Opened>(files.path());
        dbset_progress_hook(&Watcher::hook, &watcher);
    }
    ~Progress() override { dbset_progress_hook(nullptr, nullptr); }

    // A million times a million pairs, each of which has to be tried.
    Dbptr longTheta()
    {
        return dbtheta(open->table("many"), open->table("more"), "many.value * more.value == 7.03", "long");
    }

    TemporaryDatabase files{"narrow", narrowSchemaText()};
    Watcher watcher;
    std::unique_ptr<Opened> open;
};

TEST_F(Progress, OfALongThetaJoinIsToldAndStopsItHalfWay)
{
    watcher.stopAt = 5;
    const Dbptr made = longTheta();
    EXPECT_LT(secondsSince(watcher.calls.back()), 0.5); // a tenth, on a machine that does nothing else
    EXPECT_EQ(made.table, dbINVALID);
    EXPECT_EQ(take_log(), "dbtheta: cancelled");
    EXPECT_EQ(integer(open->pointer, dbTABLE_COUNT), 2);
    EXPECT_LT(dblookup(open->pointer, "", "long", "", "").table, 0);
    EXPECT_EQ(watcher.calls.size(), 5u);
    EXPECT_EQ(watcher.operation, "dbtheta");
    EXPECT_EQ(dbprogress_operation(), nullptr);
    for (size_t i = 1; i < watcher.calls.size(); ++i) {
        EXPECT_GE(std::chrono::duration<double>(watcher.calls[i] - watcher.calls[i - 1]).count(), 0.099);
        EXPECT_GE(watcher.fractions[i], watcher.fractions[i - 1]);
    }
    for (const std::thread::id thread : watcher.threads)
        EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_GE(watcher.fractions.front(), 0.0);
    EXPECT_LE(watcher.fractions.back(), 1.0);
    // What was cancelled doesn't stand in the way of what comes next.
    watcher.stopAt = ~size_t{0};
    EXPECT_GE(dbsubset(open->table("many"), "id == 7", "long").table, 0);
}

TEST_F(Progress, OfAJoinWithTooManyRowsIsNotNeeded)
{
    const auto begin = Clock::now();
    EXPECT_EQ(dbtheta(open->table("many"), open->table("more"), "1 == 1", nullptr).table, dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("dbtheta: out of memory: the join has at least 1000000000000 rows"));
    EXPECT_EQ(
        dbjoin(open->table("many"), open->table("more"), Names{"word"}, nullptr, 0, nullptr, nullptr).table,
        dbINVALID);
    EXPECT_THAT(take_log(), HasSubstr("dbjoin: out of memory: the join has at least"));
    EXPECT_LT(secondsSince(begin), 10);
    EXPECT_EQ(integer(open->pointer, dbTABLE_COUNT), 2);
}

TEST_F(Progress, IsNotAskedByShortOperations)
{
    writeNarrowTable(files, "many", narrowRows(10, 5, 1));
    EXPECT_GE(dbsort(open->table("many"), Names{"value"}, 0, nullptr).table, 0);
    EXPECT_TRUE(watcher.calls.empty());
}

TEST_F(Progress, HooksCanReadButNotDeriveFreeOrClose)
{
    const Dbptr view = dbsubset(open->table("many"), "id == 7", nullptr);
    watcher.calls.clear();
    watcher.stopAt = 1;
    std::string cell, log;
    Dbptr derived{}, other{};
    int freed = 0, closed = 0;
    int64_t found = 0;
    watcher.also = [&] {
        cell = get(dblookup(view, "", "", "id", "0"));
        other = dblookup(open->pointer, "", "more", "", "");
        derived = dbsubset(other, "other == 7", nullptr);
        freed = dbfree(view);
        closed = OVdbclose(open->pointer);
        found = dbfind(other, "other == 7", 0, nullptr);
        log = take_log();
    };
    EXPECT_LT(longTheta().table, 0);
    EXPECT_EQ(cell, "       7");
    EXPECT_LT(derived.table, 0);
    EXPECT_LT(freed, 0);
    EXPECT_LT(closed, 0);
    EXPECT_LT(found, 0);
    EXPECT_THAT(log, HasSubstr("dbsubset: another operation is running"));
    EXPECT_THAT(log, HasSubstr("OVdbclose: an operation is running"));
    EXPECT_EQ(integer(view, dbRECORD_COUNT), static_cast<int64_t>(column(view, "id").size()));
}

TEST_F(Progress, OfFindingHasAHookOfItsOwn)
{
    static int calls;
    calls = 0;
    const auto stop = [](double, void *data) {
        EXPECT_EQ(data, nullptr);
        ++calls;
        return 1;
    };
    // Nothing matches, and all rows take long.
    std::string slow = "value == 7.03";
    for (int i = 0; i < 60; ++i)
        slow += " || sin(value + " + std::to_string(i) + ") > 2";
    EXPECT_EQ(dbfind(open->table("many"), slow.c_str(), 0, stop), dbERROR_CANCELLED);
    EXPECT_EQ(take_log(), "dbfind: cancelled");
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(watcher.calls.empty());
}

} // namespace
