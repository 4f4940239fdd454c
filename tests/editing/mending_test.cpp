// Repairs while every call of the file system fails in turn, and checks with so little memory that tables are
// read several times.
#include "check/database_check.h"
#include "edited.h"
#include "faulty_file_system.h"

#include <orvane/db_check.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <sstream>

using namespace orvane;

namespace {

struct Damage {
    const char *name;
    std::string table; // the file
    std::string good;  // the file as it should be afterwards
    std::string aside;
};

std::string event(const TemporaryDatabase &files, int number)
{
    return files.record("event", {std::to_string(number), "7", "an author", "3.00000"}) + "\n";
}

std::vector<Damage> damages(const TemporaryDatabase &files)
{
    std::string records;
    for (int number = 1; number <= 50; ++number)
        records += event(files, number);
    const std::string next = event(files, 60);
    const std::string whole = next.substr(0, next.size() - 1);
    return {{"bad_lines", records + "x\n" + next + "yy\n" + whole, records + next + next, "x\nyy\n"},
            {"unfinished_line", records + whole.substr(0, 20), records, whole.substr(0, 20)},
            {"missing_line_feed", records + whole, records + next, ""}};
}

std::string kept(const TemporaryDatabase &files, const std::string &ending)
{
    std::string found;
    for (const auto &entry : std::filesystem::directory_iterator(files.folder()))
        if (entry.path().filename().string().find(ending) != std::string::npos)
            found += TemporaryDatabase::readFile(entry.path().string());
    return found;
}

int repair(const Opened &opened)
{
    const DbCheckOptions options{10, 2};
    return dbcheck(opened.table("event"), &options, nullptr, nullptr, nullptr);
}

using Fault = FaultyFileSystem::Fault;

class Mending : public testing::TestWithParam<std::pair<const char *, Fault>>
{
};

} // namespace

TEST_P(Mending, loses_nothing_when_a_call_fails)
{
    if (std::filesystem::is_directory("/dev/shm"))
        setenv("TMPDIR", "/dev/shm", 1);
    elog_set_notice_hook([](const char *, void *) {}, nullptr);
    const Fault fault = GetParam().second;
    const bool kills = fault == Fault::KilledHere || fault == Fault::KilledIn;
    const TemporaryDatabase shapes;
    int strikes = 0;
    for (const Damage &damage : damages(shapes)) {
        for (int call = 1;; ++call) {
            TemporaryDatabase files;
            files.writeFile("quakes.event", damage.table);
            FaultyFileSystem faulty;
            bool struck = false;
            std::string where;
            {
                const ScopedFileSystem scoped(faulty);
                Opened opened(files.path(), "r+");
                faulty.fail_at(call, fault, ENOSPC);
                repair(opened);
                struck = faulty.struck();
                where = std::string(damage.name) + " " + std::to_string(call) + ": " + faulty.where();
                if (kills)
                    OVdbclose(opened.pointer);
                faulty.fail_at(0, fault);
                take_log();
                const std::string after = TemporaryDatabase::readFile(files.tablePath("event"));
                ASSERT_TRUE(after == damage.table || after == damage.good) << where << "\n" << after;
                if (after == damage.good) {
                    EXPECT_EQ(kept(files, ".damaged-"), damage.aside) << where;
                }
                if (!kills && after == damage.table) {
                    EXPECT_EQ(kept(files, ".damaged-") + kept(files, ".before-"), "") << where;
                }
            }
            // The next one finishes it.
            Opened opened(files.path(), "r+");
            ASSERT_EQ(repair(opened), 0) << where << take_log();
            EXPECT_EQ(TemporaryDatabase::readFile(files.tablePath("event")), damage.good) << where;
            EXPECT_EQ(integer(opened.table("event"), dbRECORD_COUNT),
                      static_cast<int64_t>(damage.good.size() / event(files, 1).size()));
            if (!struck)
                break;
            ++strikes;
        }
    }
    elog_set_notice_hook(nullptr, nullptr);
    EXPECT_GT(strikes, 50);
}

INSTANTIATE_TEST_SUITE_P(Repairs, Mending,
                         testing::Values(std::pair("error", Fault::Error), std::pair("short", Fault::Short),
                                         std::pair("killed_before", Fault::KilledHere),
                                         std::pair("killed_within", Fault::KilledIn)),
                         [](const auto &mode) { return mode.param.first; });

namespace {

std::string all_findings(const std::string &path, const CheckLimits &limits)
{
    PosixFileSystem files;
    Storage storage(files);
    auto located = locate_database(files, path);
    if (!located.ok())
        return std::string(located.status().message());
    Database database(std::move(*located), false, storage);
    CheckOptions options;
    options.limit = -1;
    options.limits = limits;
    std::ostringstream text;
    CheckSummary summary;
    Work work("dbcheck");
    const Status checked = check_database(
        database, files, -1, options,
        [&](const Finding &finding) {
            text << row_of(finding.kind).name << ' ' << finding.table << ' ' << finding.line << ' '
                 << finding.record << ' ' << finding.offset << ' ' << finding.field << ' ' << finding.found
                 << ' ' << finding.message << '\n';
        },
        summary, work);
    text << checked.message() << summary.records << ' ' << summary.errors << ' ' << summary.notes;
    return text.str();
}

std::string sorted_lines(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    std::sort(lines.begin(), lines.end());
    std::string out;
    for (const std::string &line : lines)
        out += line + "\n";
    return out;
}

} // namespace

TEST(Check, finds_the_same_in_little_memory)
{
    std::mt19937 random(3);
    for (int round = 0; round < 30; ++round) {
        TemporaryDatabase files;
        const auto number = [&](int end) { return std::to_string(random() % static_cast<unsigned>(end)); };
        std::vector<TemporaryDatabase::Row> events;
        std::vector<TemporaryDatabase::Row> origins;
        for (int i = 0; i < 60; ++i)
            events.push_back({number(80), number(9), "a", "3.00000"});
        for (int i = 0; i < 90; ++i)
            origins.push_back({number(100), "2.0000", "3.0000", number(40), number(70), number(90)});
        files.addTable("event", events);
        files.addTable("origin", origins);
        std::string bytes = TemporaryDatabase::readFile(files.tablePath("origin"));
        for (int cuts = round % 3; cuts > 0; --cuts)
            bytes.erase(random() % bytes.size(), 1 + random() % 300);
        files.writeFile("quakes.origin", bytes);
        const std::string expected = all_findings(files.path(), {});
        EXPECT_NE(expected.find("key-double"), std::string::npos);
        EXPECT_NE(expected.find("dangling"), std::string::npos);
        EXPECT_EQ(all_findings(files.path(), {200, 1 << 20}), expected); // in pieces
        EXPECT_EQ(sorted_lines(all_findings(files.path(), {700, 7})), sorted_lines(expected));
    }
}

TEST(Check, ends_when_its_hook_says_so)
{
    TemporaryDatabase files;
    files.addTable("event", {{"x"}, {"y"}, {"z"}});
    Opened opened(files.path());
    int told = 0;
    const auto count = [](const DbFinding *, void *data) { return ++*static_cast<int *>(data) == 2 ? 1 : 0; };
    EXPECT_EQ(dbcheck(opened.pointer, nullptr, count, &told, nullptr), dbERROR_CANCELLED);
    EXPECT_EQ(told, 2);
    EXPECT_EQ(take_log(), "dbcheck: cancelled");
}

TEST(Check, refuses_what_it_cannot_do)
{
    TemporaryDatabase files;
    files.addTable("event", {{"1"}});
    Opened opened(files.path());
    const DbCheckOptions repairing{10, 2};
    EXPECT_EQ(dbcheck(opened.pointer, &repairing, nullptr, nullptr, nullptr), dbERROR_PERMISSION);
    EXPECT_NE(take_log().find("opened for reading only"), std::string::npos);
    const DbCheckOptions unknown{10, 3};
    EXPECT_EQ(dbcheck(opened.pointer, &unknown, nullptr, nullptr, nullptr), dbERROR_ARGUMENT);
    take_log();
    EXPECT_EQ(dbcheck(dbinvalid(), nullptr, nullptr, nullptr, nullptr), dbERROR_STALE);
    take_log();
    const Dbptr view = dbsubset(opened.table("event"), "evid > 0", nullptr);
    EXPECT_EQ(dbcheck(view, nullptr, nullptr, nullptr, nullptr), dbERROR_ARGUMENT);
    EXPECT_NE(take_log().find("is a view"), std::string::npos);
    int64_t kinds = 0;
    DbFindingKind kind{};
    for (; dbcheck_kind(kinds, &kind) == 0; ++kinds)
        EXPECT_NE(std::string(kind.meaning), "");
    EXPECT_EQ(kinds, static_cast<int64_t>(finding_kinds));
    EXPECT_EQ(take_log(), "");
}

TEST(Check, takes_back_a_change_that_was_left_half_done)
{
    TemporaryDatabase files;
    files.addTable("event", {{"1", "2", "me"}, {"2", "3", "me"}});
    {
        FaultyFileSystem faulty;
        const ScopedFileSystem scoped(faulty);
        std::vector<TemporaryDatabase::Row> rows;
        for (int i = 0; i < 100; ++i)
            rows.push_back({std::to_string(i + 1), "7", "an author", "3.00000"});
        files.addTable("event", rows);
        bool left = false;
        for (int call = 1; call < 60 && !left; ++call) {
            Opened opened(files.path(), "r+");
            faulty.fail_at(call, Fault::KilledIn, EIO);
            put(opened.record("event", 78), "auth", "another author " /* on two pages */);
            OVdbclose(opened.pointer);
            faulty.fail_at(0, Fault::Error);
            left = std::filesystem::exists(files.folder() + "/.quakes.event.undo");
            take_log();
        }
        ASSERT_TRUE(left);
    }
    Opened opened(files.path(), "r+");
    DbCheckSummary summary{};
    const DbCheckOptions planned{10, 1};
    EXPECT_EQ(dbcheck(opened.pointer, &planned, nullptr, nullptr, &summary), 0);
    EXPECT_EQ(summary.errors, 1);
    EXPECT_TRUE(std::filesystem::exists(files.folder() + "/.quakes.event.undo"));
    EXPECT_EQ(repair(opened), 0) << take_log();
    EXPECT_FALSE(std::filesystem::exists(files.folder() + "/.quakes.event.undo"));
    EXPECT_EQ(dbcheck(opened.pointer, nullptr, nullptr, nullptr, &summary), 0);
    EXPECT_EQ(summary.errors, 0);
}
