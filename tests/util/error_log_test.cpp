#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "c_text.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class ErrorLog : public testing::Test
{
protected:
    void SetUp() override { elog_clear(); }
    void TearDown() override
    {
        elog_clear();
        elog_set_notice_hook(nullptr, nullptr);
    }
};

TEST_F(ErrorLog, KeepsLinesInOrder)
{
    EXPECT_EQ(log_text(), "");
    elog_log("first %d", 1);
    elog_log("%s", "second\n");
    EXPECT_EQ(log_text(), "first 1\nsecond");
    EXPECT_EQ(elog_count(), 2);
    elog_clear();
    EXPECT_EQ(log_text(), "");
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(ErrorLog, KeepsEqualLinesInARowOnce)
{
    for (int i = 0; i < 1000; ++i)
        elog_log("again");
    elog_log("other");
    elog_log("again");
    EXPECT_EQ(log_text(), "again (repeated 1000 times)\nother\nagain");
    EXPECT_EQ(elog_count(), 1002);
}

TEST_F(ErrorLog, GivesTheLinesFromANumberOn)
{
    elog_log("a");
    elog_log("b");
    elog_log("b");
    const int64_t before = elog_count();
    EXPECT_EQ(taken(elog_string(before)), "");
    elog_log("b");
    elog_log("c");
    EXPECT_EQ(taken(elog_string(before)), "b\nc");
    EXPECT_EQ(taken(elog_string(1)), "b (repeated 3 times)\nc");
    EXPECT_EQ(taken(elog_string(-5)), "a\nb (repeated 3 times)\nc");
}

TEST_F(ErrorLog, DropsTheOldestLinesAndSaysHowMany)
{
    for (int i = 0; i < 512; ++i)
        elog_log("line %d", i);
    const std::string text = log_text();
    EXPECT_THAT(text, StartsWith("(12 earlier lines were dropped)\nline 12\nline 13\n"));
    EXPECT_THAT(text, testing::EndsWith("\nline 511"));
    EXPECT_EQ(elog_count(), 512);
    EXPECT_EQ(taken(elog_string(511)), "line 511");
    EXPECT_THAT(taken(elog_string(11)), StartsWith("(1 earlier line was dropped)\nline 12\n"));
    elog_clear();
    elog_log("new");
    EXPECT_EQ(log_text(), "new");
}

TEST_F(ErrorLog, CountsTheLinesOfADroppedRun)
{
    elog_log("x");
    elog_log("x");
    elog_log("x");
    for (int i = 0; i < 500; ++i)
        elog_log("line %d", i);
    EXPECT_THAT(log_text(), StartsWith("(3 earlier lines were dropped)\nline 0\n"));
}

TEST_F(ErrorLog, StaysWithinItsBytes)
{
    const std::string kilobytes(4000, 'x');
    for (int i = 0; i < 100; ++i)
        elog_log("%d%s", i, kilobytes.c_str());
    const std::string text = log_text();
    EXPECT_LE(text.size(), 64u * 1024u + 100u);
    EXPECT_GT(text.size(), 60u * 1024u);
    EXPECT_THAT(text, StartsWith("(84 earlier lines were dropped)\n84x"));
}

TEST_F(ErrorLog, CutsALongLineBetweenCharacters)
{
    std::string long_line;
    for (int i = 0; i < 50000; ++i)
        long_line += "\xC3\xA9";
    elog_log("x%s", long_line.c_str());
    const std::string text = log_text();
    EXPECT_THAT(text, testing::EndsWith("\xC3\xA9 ... (83618 bytes more)"));
    EXPECT_LT(text.size(), 17000u);
}

TEST_F(ErrorLog, KeepsEmptyLines)
{
    elog_log("%s", "");
    elog_log("a");
    EXPECT_EQ(log_text(), "\na");
    elog_log(nullptr);
    EXPECT_EQ(elog_count(), 2);
}

TEST_F(ErrorLog, TakesLinesFromSeveralThreads)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([thread] {
            for (int i = 0; i < 2000; ++i) {
                elog_log("thread %d line %d", thread, i);
                if (i % 100 == 0) {
                    EXPECT_FALSE(taken(elog_string(0)).empty());
                }
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(elog_count(), 8000);
    EXPECT_THAT(log_text(), StartsWith("(7500 earlier lines were dropped)\nthread "));
}

void remember(const char *text, void *context)
{
    static_cast<std::vector<std::string> *>(context)->emplace_back(text);
}

TEST_F(ErrorLog, GivesNoticesToTheHookAndKeepsThemOut)
{
    std::vector<std::string> heard;
    elog_set_notice_hook(remember, &heard);
    elog_notice("%d rows are gone", 3);
    elog_notice(nullptr);
    EXPECT_THAT(heard, ElementsAre("3 rows are gone"));
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(ErrorLog, WritesNoticesToStandardErrorWithoutAHook)
{
    testing::internal::CaptureStderr();
    elog_notice("%s", "look here");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "look here\n");
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(ErrorLog, LetsTheHookUseTheLog)
{
    elog_set_notice_hook(
        [](const char *text, void *) {
            elog_log("heard %s", text);
            elog_set_notice_hook(nullptr, nullptr);
        },
        nullptr);
    elog_notice("it");
    EXPECT_EQ(log_text(), "heard it");
}

} // namespace
