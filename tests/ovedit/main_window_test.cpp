#include "main_window.h"

#include <filesystem>

#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>

#include <orvane/util.h>

#include <orvanedatabasemodel.h>

#include "notice_bar.h"
#include "running_program.h"
#include "start_page.h"

namespace {

TEST_F(RunningProgram, offersToOpenADatabaseWhenItHasNone)
{
    MainWindow &window = *program.showStartPage();
    EXPECT_FALSE(window.hasDatabase());
    EXPECT_NE(window.findChild<StartPage *>(), nullptr);
    EXPECT_EQ(window.windowTitle(), "ovedit");
    for (const char *name : {"schema", "lookForChanges", "nextTab", "previousTab", "closeTab", "pageTables",
                             "pageViews", "pageProducts", "problems"}) {
        EXPECT_FALSE(action(window, name).isEnabled()) << name;
    }
    EXPECT_TRUE(action(window, "open").isEnabled());
}

TEST_F(RunningProgram, opensADatabaseInPlaceOfTheStartPage)
{
    MainWindow *start = program.showStartPage();
    EXPECT_EQ(program.openDatabase(path(), "r", start), start);
    EXPECT_TRUE(start->hasDatabase());
    EXPECT_EQ(start->findChild<StartPage *>(), nullptr);
    EXPECT_EQ(start->page(0)->count(), 3);
    EXPECT_EQ(program.windows().size(), 1);
    EXPECT_EQ(settings.recentDatabases(), QStringList{path()});
    EXPECT_TRUE(action(*start, "schema").isEnabled());
    EXPECT_TRUE(action(*start, "nextTab").isEnabled());
    EXPECT_TRUE(action(*start, "pageTables").isChecked());
}

TEST_F(RunningProgram, namesDatabaseAndTableInTheTitle)
{
    MainWindow &window = opened();
    EXPECT_EQ(window.windowTitle(), QString::fromUtf8("quakes.site \u2013 ovedit"));
    action(window, "nextTab").trigger();
    EXPECT_EQ(window.windowTitle(), QString::fromUtf8("quakes.arrival \u2013 ovedit"));
}

TEST_F(RunningProgram, turnsTabsInARound)
{
    MainWindow &window = opened();
    for (const int expected : {1, 2, 0}) {
        action(window, "nextTab").trigger();
        EXPECT_EQ(window.view()->getCurrentTabIndex(), expected);
    }
    action(window, "previousTab").trigger();
    EXPECT_EQ(window.view()->getCurrentTabIndex(), 2);
}

TEST_F(RunningProgram, hasOneWindowForADatabaseThatIsOpenedAgain)
{
    MainWindow &window = opened();
    EXPECT_EQ(&opened(), &window);
    EXPECT_EQ(&opened("arrival"), &window);
    EXPECT_EQ(window.view()->getCurrentTableModel()->getTableName(), "arrival");
    EXPECT_EQ(program.windows().size(), 1);
    EXPECT_TRUE(window.model()->isOpen());
}

TEST_F(RunningProgram, hasAWindowForEachDatabase)
{
    const TemporaryDatabase second;
    second.addTable("remark", {{"1", "1", "hello"}});
    MainWindow &first = opened();
    MainWindow *other = program.openDatabase(QString::fromStdString(second.path()), "r", &first);
    ASSERT_NE(other, nullptr);
    EXPECT_NE(other, &first);
    EXPECT_EQ(program.windows(), (QList<MainWindow *>{&first, other}));
    first.close();
    settle();
    EXPECT_EQ(program.windows(), QList<MainWindow *>{other});
    EXPECT_TRUE(other->model()->isOpen());
    EXPECT_EQ(other->view()->getCurrentTableModel()->rowCount(), 1);
}

TEST_F(RunningProgram, opensADatabaseAgainAfterItsWindowWasClosed)
{
    const QPointer<OrvaneTableModel> table = opened().view()->getCurrentTableModel();
    program.windows().first()->close();
    settle();
    EXPECT_TRUE(program.windows().isEmpty());
    EXPECT_TRUE(table.isNull());
    EXPECT_EQ(opened().page(0)->count(), 3);
}

TEST_F(RunningProgram, focusesATableThatIsNamedAgain)
{
    MainWindow &window = opened("arrival");
    window.view()->setFocusTable("site");
    EXPECT_EQ(&opened("arrival"), &window);
    EXPECT_EQ(window.view()->getFocusTableName(), "arrival");
}

TEST_F(RunningProgram, saysThatADatabaseOpenForReadingStaysSo)
{
    MainWindow &window = opened();
    for (const QString &name : {path(), path("arrival")}) {
        const int before = boxes.texts().size();
        EXPECT_EQ(program.openDatabase(name, "r+", nullptr), &window);
        ASSERT_EQ(boxes.texts().size(), before + 1) << name.toStdString();
        EXPECT_TRUE(boxes.texts().last().contains(path())) << boxes.texts().last().toStdString();
        EXPECT_TRUE(boxes.texts().last().contains("reading only"));
        EXPECT_EQ(window.mode(), "r");
    }
    opened();
    EXPECT_EQ(boxes.texts().size(), 2) << "the mode is the one that was asked for";
}

TEST_F(RunningProgram, saysNothingWhenADatabaseOpenForWritingIsToBeRead)
{
    MainWindow *window = program.openDatabase(path(), "r+", nullptr);
    ASSERT_NE(window, nullptr) << boxes.texts().join("; ").toStdString();
    EXPECT_EQ(&opened(), window);
    EXPECT_EQ(window->mode(), "r+");
    EXPECT_TRUE(boxes.texts().isEmpty());
}

TEST_F(RunningProgram, keepsTheProblemsOfOneDatabaseWhenAnotherOpens)
{
    opened();
    const QString problem = path("site") + ": found meanwhile";
    elog_log("%s", qPrintable(problem));
    const TemporaryDatabase second;
    second.addTable("remark", {{"1", "1", "hello"}});
    ASSERT_NE(program.openDatabase(QString::fromStdString(second.path()), "r", nullptr), nullptr);
    EXPECT_TRUE(program.problems().problems().contains(problem));
}

TEST_F(RunningProgram, opensWhatItCanAndTellsWhetherThatWasAll)
{
    EXPECT_TRUE(program.openAll({path()}, "r"));
    EXPECT_FALSE(program.openAll({"/nowhere/at/all", path("arrival")}, "r"));
    EXPECT_EQ(boxes.texts().size(), 1);
    ASSERT_EQ(program.windows().size(), 1);
    EXPECT_EQ(program.windows().first()->view()->getFocusTableName(), "arrival");
}

TEST_F(RunningProgram, offersToOpenAnotherDatabaseWhenNoneCouldBeOpened)
{
    EXPECT_FALSE(program.openAll({"/nowhere/at/all"}, "r"));
    ASSERT_EQ(program.windows().size(), 1);
    EXPECT_FALSE(program.windows().first()->hasDatabase());
}

TEST_F(RunningProgram, opensTheStartPageWhenNothingIsNamed)
{
    EXPECT_TRUE(program.openAll({}, "r"));
    ASSERT_EQ(program.windows().size(), 1);
    EXPECT_FALSE(program.windows().first()->hasDatabase());
}

TEST_F(RunningProgram, beginsWithTheTableThatIsNamed)
{
    EXPECT_EQ(opened("event").view()->getFocusTableName(), "event");
}

TEST_F(RunningProgram, saysInOneBoxWhyADatabaseCantBeOpened)
{
    EXPECT_EQ(program.openDatabase("/nowhere/at/all", "r", nullptr), nullptr);
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts().first().contains("/nowhere/at/all"));
    EXPECT_FALSE(boxes.texts().first().contains("QDbptr")) << boxes.texts().first().toStdString();
    EXPECT_TRUE(program.windows().isEmpty());
    EXPECT_TRUE(settings.recentDatabases().isEmpty());
    EXPECT_TRUE(program.problems().problems().isEmpty());
}

TEST_F(RunningProgram, tellsOfARefusedTableWithoutStandingInTheWay)
{
    files.writeFile("quakes.origin", "this is not a record\nof the right width\n");
    MainWindow &window = opened();
    EXPECT_TRUE(boxes.texts().isEmpty());
    auto *notice = window.findChild<NoticeBar *>();
    ASSERT_NE(notice, nullptr);
    EXPECT_FALSE(notice->isHidden());
    EXPECT_TRUE(action(window, "problems").isEnabled());
    EXPECT_TRUE(program.problems().problems().join('\n').contains("quakes.origin"));
    window.view()->setFocusTable("site");
    EXPECT_EQ(window.view()->getCurrentTableModel()->rowCount(), 2);
}

TEST_F(RunningProgram, tellsOfAProblemInTheWindowOfItsDatabaseOnly)
{
    TemporaryDatabase broken;
    broken.addTable("site", {{"AAK"}});
    broken.writeFile("quakes.origin", "this is not a record\n");
    MainWindow &well = opened();
    MainWindow *ill = program.openDatabase(QString::fromStdString(broken.path()), "r", nullptr);
    ASSERT_NE(ill, nullptr);
    EXPECT_TRUE(well.findChild<NoticeBar *>()->isHidden());
    EXPECT_FALSE(ill->findChild<NoticeBar *>()->isHidden());
    EXPECT_FALSE(action(well, "problems").isEnabled());
    EXPECT_TRUE(action(*ill, "problems").isEnabled());
}

TEST_F(RunningProgram, tellsDatabasesApartWhoseNamesBeginAlike)
{
    files.writeFile("q", TemporaryDatabase::readFile(files.path()));
    files.writeFile("q.site", TemporaryDatabase::readFile(files.tablePath("site")));
    files.writeFile("quakes.origin", "this is not a record\n");
    MainWindow &ill = opened();
    MainWindow *well = program.openDatabase(QString::fromStdString(files.folder() + "/q"), "r", nullptr);
    ASSERT_NE(well, nullptr);
    EXPECT_FALSE(program.problemsFor(ill).isEmpty());
    EXPECT_TRUE(program.problemsFor(*well).isEmpty()) << program.problemsFor(*well).join('\n').toStdString();
    EXPECT_FALSE(ill.findChild<NoticeBar *>()->isHidden());
    EXPECT_TRUE(well->findChild<NoticeBar *>()->isHidden());
}

TEST_F(RunningProgram, tellsOfATableFileThatVanishesUntilItIsBack)
{
    MainWindow &window = opened();
    TemporaryDatabase second;
    second.addTable("site", {{"AAK"}});
    MainWindow *other = program.openDatabase(QString::fromStdString(second.path()), "r", nullptr);
    ASSERT_NE(other, nullptr);
    std::filesystem::rename(files.tablePath("arrival"), files.folder() + "/aside");
    action(window, "lookForChanges").trigger();
    EXPECT_EQ(window.page(0)->count(), 2);
    const QStringList told = program.problemsFor(window);
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.first().contains("table arrival is gone")) << told.first().toStdString();
    EXPECT_TRUE(told.first().contains(path("arrival"))) << told.first().toStdString();
    EXPECT_TRUE(told.first().contains("Put the file back"));
    EXPECT_FALSE(window.findChild<NoticeBar *>()->isHidden());
    EXPECT_TRUE(other->findChild<NoticeBar *>()->isHidden());

    std::filesystem::rename(files.folder() + "/aside", files.tablePath("arrival"));
    action(window, "lookForChanges").trigger();
    EXPECT_EQ(window.page(0)->count(), 3);
    EXPECT_TRUE(program.problemsFor(window).isEmpty());
    EXPECT_TRUE(window.findChild<NoticeBar *>()->isHidden());
}

TEST_F(RunningProgram, forgetsVanishedTablesWithTheirWindow)
{
    MainWindow &window = opened();
    std::filesystem::remove(files.tablePath("arrival"));
    action(window, "lookForChanges").trigger();
    EXPECT_EQ(program.problems().problems().size(), 1);
    window.close();
    settle();
    EXPECT_TRUE(program.problems().problems().isEmpty());
}

TEST_F(RunningProgram, deletesTheModelsOfAbsentAndVanishedTablesWithTheirWindow)
{
    MainWindow &window = opened();
    const QPointer<OrvaneTableModel> vanished = window.model()->getTableModel("arrival");
    const QPointer<OrvaneTableModel> absent = window.model()->getTableModel("origin");
    ASSERT_FALSE(vanished.isNull());
    ASSERT_FALSE(absent.isNull());
    std::filesystem::remove(files.tablePath("arrival"));
    window.model()->checkForUpdates();
    window.close();
    settle();
    EXPECT_TRUE(vanished.isNull());
    EXPECT_TRUE(absent.isNull());
}

TEST_F(RunningProgram, hasNoNoticeWhenAllIsWell)
{
    MainWindow &window = opened();
    EXPECT_TRUE(window.findChild<NoticeBar *>()->isHidden())
        << program.problems().problems().join('\n').toStdString();
    EXPECT_FALSE(action(window, "problems").isEnabled());
}

TEST_F(RunningProgram, flipsASwitchOfTheConfigurationAndRemembersIt)
{
    MainWindow &window = opened();
    QAction &readable = action(window, "show_readable_times");
    EXPECT_TRUE(readable.isChecked());
    readable.trigger();
    EXPECT_FALSE(readable.isChecked());
    EXPECT_EQ(program.config()["show_readable_times"], QVariant(false));
    OvConfig next;
    next.configure("show_readable_times", true);
    settings.restore(next);
    EXPECT_EQ(next["show_readable_times"], QVariant(false));
}

TEST_F(RunningProgram, checksASwitchThatIsFlippedElsewhere)
{
    MainWindow &window = opened();
    program.config().toggle("show_raw_nulls");
    EXPECT_TRUE(action(window, "show_raw_nulls").isChecked());
}

TEST_F(RunningProgram, showsAndHidesEmptyColumnsOfEveryTable)
{
    MainWindow &window = opened();
    auto *arrival = qobject_cast<OrvaneTableView *>(window.page(0)->widget(1));
    EXPECT_EQ(arrival->getFieldNamesVisible(), (QList<QString>{"sta", "time", "arid"}));
    action(window, "show_empty_columns").trigger();
    EXPECT_EQ(arrival->getFieldNamesVisible(), arrival->model()->getTableFields());
    action(window, "show_empty_columns").trigger();
    EXPECT_EQ(arrival->getFieldNamesVisible(), (QList<QString>{"sta", "time", "arid"}));
}

TEST_F(RunningProgram, changesTheFontOfTheTables)
{
    MainWindow &window = opened();
    const auto points = [&] { return window.view()->getCurrentTableView()->font().pointSize(); };
    EXPECT_EQ(points(), 10);
    action(window, "fontLarger").trigger();
    EXPECT_EQ(points(), 11);
    action(window, "fontSmaller").trigger();
    action(window, "fontSmaller").trigger();
    EXPECT_EQ(points(), 9);
    action(window, "fontStandard").trigger();
    EXPECT_EQ(points(), 10);
}

TEST_F(RunningProgram, closesAProductFromTheMenu)
{
    MainWindow &window = opened();
    EXPECT_FALSE(action(window, "pageProducts").isEnabled());
    window.page(2)->addTab(new QWidget, "map");
    window.view()->showStackItem(2);
    EXPECT_TRUE(action(window, "pageProducts").isEnabled());
    EXPECT_TRUE(action(window, "closeTab").isEnabled());
    action(window, "closeTab").trigger();
    EXPECT_EQ(window.page(2)->count(), 0);
    EXPECT_EQ(window.view()->getCurrentStackIndex(), 0);
    EXPECT_FALSE(action(window, "closeTab").isEnabled());
}

TEST_F(RunningProgram, goesBetweenPagesByButtonsOnceThereAreSeveral)
{
    MainWindow &window = opened();
    auto &pages = *window.findChild<QWidget *>("pageSwitch");
    EXPECT_FALSE(pages.isVisible());
    window.page(2)->addTab(new QWidget, "map");
    window.view()->showStackItem(2);
    EXPECT_TRUE(pages.isVisible());

    const QList<QToolButton *> buttons = pages.findChildren<QToolButton *>();
    ASSERT_EQ(buttons.size(), 3);
    QCoreApplication::processEvents(); // the layout
    for (const QToolButton *button : buttons) {
        EXPECT_TRUE(window.menuBar()->rect().contains(
            QRect(button->mapTo(window.menuBar(), QPoint(0, 0)), button->size())));
        EXPECT_GE(button->width(), button->sizeHint().width()) << button->text().toStdString();
    }
    EXPECT_TRUE(buttons[2]->isChecked());
    EXPECT_FALSE(buttons[1]->isEnabled()) << "no view yet";
    QTest::mouseClick(buttons[0], Qt::LeftButton);
    EXPECT_EQ(window.view()->getCurrentStackIndex(), 0);
    EXPECT_TRUE(buttons[0]->isChecked());
    QTest::mouseClick(buttons[2], Qt::LeftButton);
    EXPECT_EQ(window.view()->getCurrentStackIndex(), 2);
    action(window, "closeTab").trigger();
    EXPECT_FALSE(pages.isVisible());
}

TEST_F(RunningProgram, listsTablesWindowsAndRecentDatabasesInItsMenus)
{
    MainWindow &window = opened();
    const auto entries = [&](const char *name) {
        auto *menu = window.findChild<QMenu *>(name);
        emit menu->aboutToShow();
        QStringList texts;
        for (QAction *entry : menu->actions()) {
            texts.append(entry->text());
        }
        return texts;
    };
    EXPECT_EQ(entries("tablesMenu"), (QStringList{"site", "arrival", "event"}));
    EXPECT_EQ(entries("windowsMenu").size(), 1);
    EXPECT_TRUE(entries("recentMenu").first().endsWith("quakes"));
    window.findChild<QMenu *>("tablesMenu")->actions().at(2)->trigger();
    EXPECT_EQ(window.view()->getFocusTableName(), "event");
}

TEST_F(RunningProgram, remembersTheGeometryOfAWindow)
{
    MainWindow &window = opened();
    window.resize(777, 555);
    window.close();
    settle();
    EXPECT_EQ(opened().size(), QSize(777, 555));
}

TEST_F(RunningProgram, closesAllWindowsWhenItQuits)
{
    opened();
    program.showStartPage();
    program.quit();
    settle();
    EXPECT_TRUE(program.windows().isEmpty());
}

TEST_F(RunningProgram, hasNoTwoCommandsWithTheSameShortcut)
{
    MainWindow &window = opened();
    QStringList keys;
    for (QAction *entry : window.findChildren<QAction *>()) {
        for (const QKeySequence &sequence : entry->shortcuts()) {
            keys.append(sequence.toString());
        }
    }
    QStringList once = keys;
    once.removeDuplicates();
    EXPECT_EQ(keys.size(), once.size()) << keys.join(", ").toStdString();
}

} // namespace
