#include "problem_log.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <orvane/util.h>

#include "notice_bar.h"

namespace {

TEST(Problems, areTakenFromTheErrorLogOnce)
{
    elog_clear();
    ProblemLog log;
    QSignalSpy changed(&log, &ProblemLog::changed);
    log.collect();
    EXPECT_EQ(changed.count(), 0);
    elog_log("first");
    elog_log("second");
    log.collect();
    EXPECT_EQ(log.problems(), (QStringList{"first", "second"}));
    EXPECT_EQ(elog_count(), 0);
    EXPECT_EQ(changed.count(), 1);
    elog_log("first");
    log.collect();
    EXPECT_EQ(log.problems(), (QStringList{"first", "second"}));
    EXPECT_EQ(changed.count(), 1);
    log.remove({"first"});
    EXPECT_EQ(log.problems(), QStringList{"second"});
    EXPECT_EQ(changed.count(), 2);
}

TEST(Problems, areTheSameHoweverOftenTheyCameUp)
{
    elog_clear();
    ProblemLog log;
    elog_log("again");
    log.collect();
    for (int i = 0; i < 3; ++i) {
        elog_log("again");
    }
    log.collect();
    EXPECT_EQ(log.problems(), QStringList{"again"});
}

TEST(Problems, areCollectedWithoutBeingAsked)
{
    elog_clear();
    ProblemLog log;
    QSignalSpy changed(&log, &ProblemLog::changed);
    elog_log("by itself");
    EXPECT_TRUE(changed.wait(5000));
    EXPECT_EQ(log.problems(), QStringList{"by itself"});
}

TEST(Problems, areBounded)
{
    elog_clear();
    ProblemLog log;
    for (int i = 0; i < 2 * ProblemLog::mostProblems; ++i) {
        elog_log("problem %d", i);
        if (i % 50 == 0) {
            log.collect();
        }
    }
    log.collect();
    EXPECT_EQ(log.problems().size(), int(ProblemLog::mostProblems));
    EXPECT_EQ(elog_count(), 0);
}

TEST(Problems, areOfTheDatabaseWhoseFileTheyName)
{
    elog_clear();
    ProblemLog log;
    const QStringList ofQ = {"/data/q.origin: too short", "/data/q: no schema", "no lock for /data/q",
                             "the database '/data/q' is odd", "/data/quakes and /data/q differ"};
    const QStringList ofQuakes = {"/data/quakes.origin: too short", "/data/quakes: no schema"};
    for (const QString &problem : ofQ + ofQuakes + QStringList{"/old/data/q.origin: too long"}) {
        log.add(problem);
    }
    EXPECT_EQ(log.problemsOf("/data/q"), ofQ);
    EXPECT_EQ(log.problemsOf("/data/quakes"), QStringList{ofQ.last()} + ofQuakes);
    EXPECT_TRUE(log.problemsOf("/data/quake").isEmpty());
    EXPECT_TRUE(log.problemsOf(QString()).isEmpty());
}

TEST(Problems, areAddedByTheProgramOnceEach)
{
    elog_clear();
    ProblemLog log;
    QSignalSpy changed(&log, &ProblemLog::changed);
    log.add("noticed");
    log.add("noticed");
    EXPECT_EQ(log.problems(), QStringList{"noticed"});
    EXPECT_EQ(changed.count(), 1);
}

TEST(NoticeBar, isSeenOnlyWhileThereAreProblemsThatWereNotDismissed)
{
    NoticeBar bar;
    bar.setProblems(0);
    EXPECT_TRUE(bar.isHidden());
    bar.setProblems(2);
    EXPECT_FALSE(bar.isHidden());
    QMetaObject::invokeMethod(bar.findChild<QObject *>("noticeClose"), "click");
    EXPECT_TRUE(bar.isHidden());
    bar.setProblems(2);
    EXPECT_TRUE(bar.isHidden());
    bar.setProblems(3);
    EXPECT_FALSE(bar.isHidden());
    bar.setProblems(0);
    EXPECT_TRUE(bar.isHidden());
    bar.setProblems(1);
    EXPECT_FALSE(bar.isHidden());
}

} // namespace
