#include "operation_progress.h"

#include <QAbstractButton>
#include <QElapsedTimer>
#include <QLabel>
#include <QPaintEvent>
#include <QProgressBar>
#include <QSignalSpy>
#include <QtTest>

#include <orvane/db.h>
#include <orvane/util.h>
#include <orvanedatabasemodel.h>
#include <qovutil.h>

#include "notice_bar.h"
#include "progress_dialog.h"
#include "running_program.h"

namespace {

// Does something as soon as the progress dialog is there, and counts what is painted while an operation runs.
class Hands : public QObject
{
public:
    using Action = std::function<void(ProgressDialog &)>;

    explicit Hands(OperationProgress &progress, Action action)
        : m_progress(progress), m_action(std::move(action))
    {
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Show) {
            if (auto *dialog = qobject_cast<ProgressDialog *>(watched)) {
                ++dialogs;
                // Not now: the dialog is not yet on the screen.
                QMetaObject::invokeMethod(
                    dialog, [this, dialog] { m_action(*dialog); }, Qt::QueuedConnection);
            }
        }
        if (event->type() == QEvent::Paint && m_progress.isRunning()) {
            painted.append(watched);
        }
        return false;
    }

    int dialogs = 0;
    QList<QObject *> painted;

private:
    OperationProgress &m_progress;
    Action m_action;
};

constexpr char slowExpression[] = "sin(time + lat) * cos(lat * time) == 7";

class Progress : public RunningProgram
{
protected:
    Progress()
    {
        std::vector<TemporaryDatabase::Row> sites, arrivals;
        for (int i = 0; i < 40000; ++i) {
            sites.push_back(
                {"S" + std::to_string(i % 1000), "2001001", "-1", std::to_string(i % 9000) + ".0000"});
            arrivals.push_back({"A" + std::to_string(i % 1000), std::to_string(i) + ".50000"});
        }
        files.addTable("site", sites);
        files.addTable("arrival", arrivals);
    }

    static Dbptr table(MainWindow &window, const char *name)
    {
        return dblookup(window.model()->getDbptr(), "", name, "dbALL", "dbALL");
    }

    // 1,600,000,000 pairs, each of which has to be tried: minutes. Returns how long it took, in milliseconds.
    qint64 longTheta(MainWindow &window)
    {
        elog_clear();
        QElapsedTimer clock;
        clock.start();
        made = dbtheta(table(window, "site"), table(window, "arrival"), slowExpression, nullptr);
        return clock.elapsed();
    }

    Dbptr made{};
};

TEST_F(Progress, isShownForWhatTakesLongAndCanBeCancelled)
{
    MainWindow &window = opened("site");
    const std::function<void(ProgressDialog &)> ways[] = {
        [](ProgressDialog &dialog) { dialog.findChild<QAbstractButton *>("cancel")->click(); },
        [](ProgressDialog &dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); },
        [](ProgressDialog &dialog) { dialog.close(); },
    };
    for (const auto &way : ways) {
        QElapsedTimer since;
        QString what;
        Hands hands(program.progress(), [&](ProgressDialog &dialog) {
            EXPECT_TRUE(dialog.isVisible());
            EXPECT_EQ(QApplication::activeModalWidget(), &dialog);
            what = dialog.findChild<QLabel *>("what")->text();
            since.start();
            way(dialog);
        });
        QSignalSpy cancelled(&program.progress(), &OperationProgress::cancelled);
        const qint64 took = longTheta(window);
        EXPECT_LT(since.elapsed(), 500) << "a tenth of a second, on a machine that does nothing else";
        EXPECT_GE(took, OperationProgress::showAfter);
        EXPECT_EQ(made.table, dbINVALID);
        EXPECT_EQ(takeErrorLog(), QStringList{"dbtheta: cancelled"});
        EXPECT_EQ(hands.dialogs, 1);
        EXPECT_EQ(what, "Testing pairs of rows of site");
        settle();
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        EXPECT_EQ(QApplication::overrideCursor(), nullptr);
        ASSERT_EQ(cancelled.count(), 1);
        auto *notice = window.findChild<NoticeBar *>();
        EXPECT_TRUE(notice->isVisibleTo(&window));
        EXPECT_EQ(notice->findChild<QLabel *>("noticeText")->text(), "The theta join of site was cancelled.");
    }
}

TEST_F(Progress, isNotShownForWhatIsShort)
{
    MainWindow &window = opened("site");
    Hands hands(program.progress(), [](ProgressDialog &) {});
    EXPECT_GE(dbsubset(table(window, "site"), "ondate > 0", nullptr).table, 0);
    settle();
    EXPECT_EQ(hands.dialogs, 0);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(Progress, goesOnAfterHalfASecondAndEnds)
{
    MainWindow &window = opened("site");
    QList<int> steps;
    Hands hands(program.progress(), [&](ProgressDialog &dialog) {
        steps.clear(); // each operation has a dialog of its own
        QObject::connect(dialog.findChild<QProgressBar *>("fraction"), &QProgressBar::valueChanged,
                         [&](int value) { steps.append(value); });
    });
    QSignalSpy cancelled(&program.progress(), &OperationProgress::cancelled);
    // More and more pairs, until they take a second or two.
    for (int rows = 300; hands.dialogs == 0 || steps.size() < 3; rows *= 2) {
        ASSERT_LE(rows, 40000);
        steps.clear(); // each operation begins anew
        const QString first = QString("time < %1").arg(rows);
        const Dbptr part = dbsubset(table(window, "arrival"), qPrintable(first), nullptr);
        made = dbtheta(part, table(window, "site"), slowExpression, nullptr);
        EXPECT_TRUE(made.table >= 0) << takeErrorLog().join("; ").toStdString();
        settle();
    }
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
    EXPECT_EQ(cancelled.count(), 0);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(Progress, keepsWindowsPaintedAndTimersBack)
{
    MainWindow &window = opened("site");
    settle();
    OrvaneTableView *table = window.view()->getCurrentTableView();
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
    timer.start(1);
    Hands hands(program.progress(), [&](ProgressDialog &dialog) {
        table->viewport()->update();
        QMetaObject::invokeMethod(
            &dialog, [&dialog] { dialog.reject(); }, Qt::QueuedConnection);
    });
    longTheta(window);
    EXPECT_EQ(ticks, 0);
    EXPECT_TRUE(hands.painted.contains(table->viewport()));
    QTest::qWait(20);
    EXPECT_GT(ticks, 0) << "they go on afterwards";
}

TEST_F(Progress, letsNobodyCloseWindowsOrQuit)
{
    QPointer<MainWindow> window = &opened("site");
    Hands hands(program.progress(), [&](ProgressDialog &dialog) {
        EXPECT_FALSE(window->close());
        program.quit();
        EXPECT_TRUE(window->isVisible());
        dialog.reject();
    });
    longTheta(*window);
    EXPECT_EQ(hands.dialogs, 1);
    settle();
    ASSERT_FALSE(window.isNull());
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->close());
    settle();
    EXPECT_TRUE(window.isNull());
}

TEST_F(Progress, isNotCancelledByKeysThatWereTypedAhead)
{
    MainWindow &window = opened("site");
    int after = 0;
    Hands hands(program.progress(), [&](ProgressDialog &dialog) {
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Enter, Qt::Key_A}) {
            QTest::keyClick(&dialog, key);
            QWidget *focused = dialog.focusWidget();
            QTest::keyClick(focused == nullptr ? &dialog : focused, key);
        }
        after = dialog.isCancelled() ? -1 : 1;
        dialog.reject();
    });
    longTheta(window);
    EXPECT_EQ(after, 1);
}

TEST_F(Progress, keepsTheBoxBackThatTellsOfCancelling)
{
    MainWindow &window = opened("site");
    Hands hands(program.progress(), [&](ProgressDialog &dialog) { dialog.reject(); });
    longTheta(window);
    struct Seen : QObject {
        bool eventFilter(QObject *watched, QEvent *event) override
        {
            auto *box = qobject_cast<QMessageBox *>(watched);
            if (box != nullptr && event->type() == QEvent::Show) {
                shown.append(!box->testAttribute(Qt::WA_DontShowOnScreen));
            }
            return false;
        }
        QList<bool> shown;
    } seen;
    qApp->installEventFilter(&seen);
    qovutil_showError("QOvConnection::request: failed\n\ndbtheta: cancelled", nullptr);
    EXPECT_EQ(seen.shown, QList<bool>{false});
    settle();
    qovutil_showError("QOvConnection::request: failed\n\ndbtheta: cancelled", nullptr);
    EXPECT_EQ(seen.shown, (QList<bool>{false, true})) << "only what was just cancelled is kept back";
}

TEST(TimeLeft, isToldOnceItCanBeGuessed)
{
    TimeLeft left;
    EXPECT_EQ(left.text(), "");
    left.note(0.75, 500);
    left.note(0.75, 900);
    EXPECT_EQ(left.text(), "") << "nothing moves";
    left.note(0.76, 1500);
    EXPECT_EQ(left.text(), "") << "too soon";
    left.note(0.77, 2500);
    EXPECT_EQ(left.text(), "About 25 seconds left") << "0.23 at 0.01 a second";
}

TEST(TimeLeft, goesByTheLastSeconds)
{
    TimeLeft left;
    double fraction = 0;
    for (qint64 time = 0; time <= 20000; time += 100) {
        fraction += time < 10000 ? 0.005 : 0.0001; // a quick step, then a slow one
        left.note(fraction, time);
    }
    EXPECT_EQ(left.text(), "About 8 minutes left");
}

TEST(TimeLeft, isRoundedAsPeopleCount)
{
    EXPECT_EQ(timeLeftText(2.5), "A few seconds left");
    EXPECT_EQ(timeLeftText(7.5), "About 8 seconds left");
    EXPECT_EQ(timeLeftText(32), "About 35 seconds left");
    EXPECT_EQ(timeLeftText(60), "About a minute left");
    EXPECT_EQ(timeLeftText(180), "About 3 minutes left");
    EXPECT_EQ(timeLeftText(3600), "About an hour left");
    EXPECT_EQ(timeLeftText(5 * 3600), "About 5 hours left");
    EXPECT_EQ(timeLeftText(1e9), "More than a day left");
}

} // namespace
