// Locks that others hold, files that go away, signals that interrupt.
#include "edited.h"

#include "storage/file_locks.h"
#include "storage/posix_file_system.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <sys/time.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace orvane;

namespace {

class Locked : public testing::Test
{
protected:
    Locked()
    {
        files_.addTable("event", {{"1", "10", "me"}, {"2", "20", "you"}});
        elog_set_notice_hook([](const char *text,
                                void *notices) { static_cast<std::string *>(notices)->append(text) += "\n"; },
                             &notices_);
    }
    ~Locked() override
    {
        elog_set_notice_hook(nullptr, nullptr);
        dbset_progress_hook(nullptr, nullptr);
    }

    // What another program does that changes the table.
    std::unique_ptr<WritableFile> lock()
    {
        auto file = system_.open_to_write(files_.tablePath("event"), Creation::Never);
        EXPECT_TRUE(file.ok() && *(*file)->try_lock(LockKind::Exclusive, writers_lock));
        return std::move(*file);
    }
    std::string record(const char *id) const { return files_.record("event", {id}); }

    TemporaryDatabase files_;
    PosixFileSystem system_;
    std::string notices_;
};

} // namespace

TEST_F(Locked, changes_wait_until_the_lock_is_let_go)
{
    Opened opened(files_.path(), "r+");
    auto other = lock();
    std::thread letting_go([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(1300));
        other.reset();
    });
    EXPECT_EQ(dbadd(opened.table("event"), record("3").c_str()), 2);
    letting_go.join();
    EXPECT_EQ(take_log(), "");
    EXPECT_NE(notices_.find("quakes.event: is locked by this program itself (process " +
                            std::to_string(::getpid()) +
                            "), which has it open once more; waiting until it is free"),
              std::string::npos)
        << notices_;
}

TEST_F(Locked, hooks_are_told_who_holds_the_lock_that_is_waited_for)
{
    // Another program, which locks the table and waits to be killed.
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t other = ::fork();
    if (other == 0) {
        const auto held = lock();
        static_cast<void>(::write(ready[1], "x", 1) == 1);
        ::pause();
        ::_exit(0);
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    Opened opened(files_.path(), "r+");
    struct Told {
        int before = 0; // calls without a word of waiting
        std::string waiting;
    } told;
    dbset_progress_hook(
        [](double, void *data) {
            auto &seen = *static_cast<Told *>(data);
            if (!dbprogress_waiting()) {
                ++seen.before;
                return 0;
            }
            seen.waiting = dbprogress_waiting();
            return 1;
        },
        &told);
    EXPECT_EQ(put(opened.record("event", 0), "evid", "7"), dbERROR_CANCELLED);
    const std::string holder = "(process " + std::to_string(other) + ")";
    EXPECT_GT(told.before, 5) << "short waits are not worth a word";
    EXPECT_NE(told.waiting.find("quakes.event: is locked by editing_tests " + holder), std::string::npos)
        << told.waiting;
    EXPECT_NE(take_log().find("was locked by editing_tests " + holder), std::string::npos);
    EXPECT_EQ(dbprogress_waiting(), nullptr);
    ::kill(other, SIGKILL);
    ::waitpid(other, nullptr, 0);
    ::close(ready[0]);
    ::close(ready[1]);
    dbset_progress_hook(nullptr, nullptr);
    EXPECT_EQ(put(opened.record("event", 0), "evid", "7"), 0) << "a killed program holds no locks";
}

TEST_F(Locked, changes_are_given_up_by_the_hook)
{
    const std::string before = TemporaryDatabase::readFile(files_.tablePath("event"));
    Opened opened(files_.path(), "r+");
    const auto other = lock();
    int asked = 0;
    dbset_progress_hook([](double, void *data) { return ++*static_cast<int *>(data) >= 2 ? 1 : 0; }, &asked);
    EXPECT_EQ(dbadd(opened.table("event"), record("3").c_str()), dbERROR_CANCELLED);
    EXPECT_EQ(asked, 2);
    const std::string log = take_log();
    EXPECT_NE(log.find("dbadd: cancelled"), std::string::npos) << log;
    EXPECT_NE(log.find("quakes.event: was locked by this program itself"), std::string::npos) << log;
    EXPECT_EQ(dbaddchk(opened.table("event"), record("3").c_str()), dbERROR_CANCELLED);
    EXPECT_EQ(put(opened.record("event", 0), "evid", "7"), dbERROR_CANCELLED);
    EXPECT_EQ(dbmark(opened.record("event", 0)), dbERROR_CANCELLED);
    EXPECT_EQ(dbcrunch(opened.table("event")), dbERROR_CANCELLED);
    take_log();
    EXPECT_EQ(TemporaryDatabase::readFile(files_.tablePath("event")), before);
    // Readers don't mind.
    EXPECT_EQ(column_of(opened.table("event"), "evid"), (Texts{"1", "2"}));
}

TEST_F(Locked, is_nothing_where_nobody_locks)
{
    files_.writeFile("quakes", "schema: small\nlocks: none\n");
    Opened opened(files_.path(), "r+");
    const auto other = lock();
    EXPECT_EQ(dbadd(opened.table("event"), record("3").c_str()), 2);
    EXPECT_EQ(put(opened.record("event", 0), "evid", "7"), 0);
    EXPECT_EQ(dbmark(opened.record("event", 1)), 0);
    EXPECT_EQ(dbcrunch(opened.table("event")), 0);
    EXPECT_EQ(column_of(opened.table("event"), "evid"), (Texts{"7", "3"}));
    EXPECT_EQ(take_log(), "");
}

TEST_F(Locked, by_one_database_holds_off_another_of_the_same_program)
{
    Opened one(files_.path(), "r+");
    Opened other(files_.path(), "r+");
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(dbadd(one.table("event"), record("3").c_str()), 2 + 2 * i);
        EXPECT_EQ(dbadd(other.table("event"), record("4").c_str()), 3 + 2 * i);
    }
    EXPECT_EQ(take_log(), "");
}

TEST_F(Locked, calls_go_on_after_signals)
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    struct sigaction old_action = {};
    ASSERT_EQ(::sigaction(SIGALRM, &action, &old_action), 0); // without SA_RESTART
    const itimerval often{{0, 500}, {0, 500}};
    const itimerval never{};
    ASSERT_EQ(::setitimer(ITIMER_REAL, &often, nullptr), 0);
    {
        Opened opened(files_.path(), "r+");
        for (int i = 0; i < 300; ++i) {
            ASSERT_EQ(dbadd(opened.table("event"), record("3").c_str()), 2 + i) << take_log();
            ASSERT_EQ(put(opened.record("event", i), "auth", "a" + std::to_string(i)), 0) << take_log();
        }
        ASSERT_EQ(dbmark(opened.record("event", 0)), 0);
        ASSERT_EQ(dbcrunch(opened.table("event")), 0) << take_log();
        EXPECT_EQ(integer(opened.table("event"), dbRECORD_COUNT), 301);
    }
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &old_action, nullptr);
}

TEST_F(Locked, tables_that_vanish_are_an_error_and_are_made_anew)
{
    Opened opened(files_.path(), "r+");
    EXPECT_EQ(column_of(opened.table("event"), "evid"), (Texts{"1", "2"}));
    EXPECT_EQ(put(opened.record("event", 0), "evid", "5"), 0);
    std::filesystem::remove(files_.tablePath("event"));
    EXPECT_EQ(put(opened.record("event", 0), "evid", "7"), dbERROR_NOT_FOUND);
    EXPECT_NE(take_log().find("quakes.event: there is no such file"), std::string::npos);
    EXPECT_EQ(dbmark(opened.record("event", 0)), dbERROR_NOT_FOUND);
    take_log();
    EXPECT_FALSE(std::filesystem::exists(files_.tablePath("event")));
    EXPECT_EQ(dbadd(opened.table("event"), record("3").c_str()), 0);
    EXPECT_EQ(column_of(opened.table("event"), "evid"), (Texts{"3"}));
    std::filesystem::remove_all(files_.folder());
    EXPECT_LT(dbadd(opened.table("event"), record("3").c_str()), 0);
    EXPECT_NE(take_log().find("No such file or directory"), std::string::npos);
}

TEST_F(Locked, tables_of_a_wrong_form_are_not_changed)
{
    const std::string strange = "not a table\nof any width\n";
    files_.writeFile("quakes.event", strange);
    Opened opened(files_.path(), "r+");
    EXPECT_EQ(dbadd(opened.table("event"), record("3").c_str()), dbERROR_FORMAT);
    EXPECT_EQ(dbcrunch(opened.table("event")), dbERROR_FORMAT);
    EXPECT_EQ(put(opened.record("event", 0), "evid", "7"), dbERROR_FORMAT);
    EXPECT_NE(take_log().find("bytes wide where table event"), std::string::npos);
    EXPECT_EQ(TemporaryDatabase::readFile(files_.tablePath("event")), strange);
}
