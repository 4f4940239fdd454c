#include <orvanedatabaseview.h>

#include <filesystem>

#include <QLabel>
#include <QPointer>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTabWidget>

#include <gtest/gtest.h>

#include <orvanetableview.h>

#include "database_window.h"
#include "support/message_boxes.h"

namespace {

using Names = QStringList;

// ---- Construction
// ------------------------------------------------------------------------------------------------

TEST(DatabaseWindowFont, isTheFixedPitchFontInTheConfiguredSize)
{
    for (const int size : {4, 10, 72}) {
        OvConfig config;
        config.configure("font_size_points", size);
        MessageBoxes boxes;
        const OrvaneDatabaseView window(config);
        EXPECT_TRUE(boxes.texts().isEmpty());
        EXPECT_EQ(config["font"].value<QFont>().pointSize(), size);
        EXPECT_EQ(config["font"].userType(), int(QMetaType::QFont));
    }
}

TEST(DatabaseWindowFont, isTenPointsWhenTheConfiguredSizeIsOutOfRange)
{
    for (const int size : {3, 73}) {
        OvConfig config;
        config.configure("font_size_points", size);
        MessageBoxes boxes;
        const OrvaneDatabaseView window(config);
        EXPECT_EQ(boxes.texts(), Names{QString("Font size must be an integer between 4 and 72 -- "
                                               "ignoring requested size of '%1' and setting to 10")
                                           .arg(size)});
        EXPECT_EQ(config["font_size_points"], QVariant(10));
        EXPECT_EQ(config["font"].value<QFont>().pointSize(), 10);
    }
}

TEST(DatabaseWindowFont, isNotLookedAtWhenTheHostHasSetOne)
{
    OvConfig config;
    QFont font("serif", 33);
    config.configure("font", font);
    config.configure("font_size_points", 3);
    MessageBoxes boxes;
    const OrvaneDatabaseView window(config);
    EXPECT_TRUE(boxes.texts().isEmpty());
    EXPECT_EQ(config["font"].value<QFont>(), font);
    EXPECT_EQ(config["font_size_points"], QVariant(3));
}

TEST(DatabaseWindowDefaults, areRegisteredAndLeaveWhatIsSet)
{
    OvConfig config;
    config.configure("show_tooltips", false);
    const OrvaneDatabaseView window(config);
    EXPECT_EQ(config["allow_edits"], QVariant(false));
    EXPECT_EQ(config["font_size_points"], QVariant(10));
    EXPECT_EQ(config["request_view_names"], QVariant(true));
    EXPECT_EQ(config["saveas_includes_headers"], QVariant(true));
    EXPECT_EQ(config["show_tooltips"], QVariant(false));
    EXPECT_EQ(config["show_empty_columns"], QVariant(false));
    EXPECT_EQ(config["background_null_color"], QVariant("light gray"));
    EXPECT_EQ(config["local_time_zone"], QVariant(QString()));
}

TEST_F(DatabaseWindow, hasThreeEmptyPagesBeforeItHasAModel)
{
    EXPECT_EQ(stack().count(), 3);
    for (QTabWidget *tabs : {&tables(), &views(), &products()}) {
        EXPECT_EQ(tabs->count(), 0);
        EXPECT_TRUE(tabs->isMovable());
        EXPECT_TRUE(tabs->usesScrollButtons());
        EXPECT_EQ(tabs->elideMode(), Qt::ElideNone);
    }
    EXPECT_FALSE(tables().tabsClosable());
    EXPECT_TRUE(views().tabsClosable());
    EXPECT_FALSE(products().tabsClosable());
    EXPECT_EQ(window.model(), nullptr);
    EXPECT_EQ(window.getCurrentTableView(), nullptr);
    EXPECT_EQ(window.getCurrentTableModel(), nullptr);
    EXPECT_EQ(window.getCurrentTabIndex(), -1);
    EXPECT_EQ(window.getFocusTableName(), "");
}

// ---- Showing a database
// ------------------------------------------------------------------------------------------

TEST_F(DatabaseWindow, hasATabForEachTableThatIsPresent)
{
    window.setModel(&database.open());
    EXPECT_EQ(tabTexts(tables()), (Names{"site", "arrival", "event"}));
    EXPECT_EQ(views().count(), 0);
    EXPECT_EQ(window.model(), database.model.get());
}

TEST_F(DatabaseWindow, staysEmptyWithAClosedModelOrNone)
{
    OrvaneDatabaseModel closed(database.config, "/nowhere/at/all", "r");
    window.setModel(&closed);
    EXPECT_EQ(tables().count(), 0);
    EXPECT_EQ(window.model(), &closed);
    window.setModel(nullptr);
    EXPECT_EQ(window.model(), nullptr);
}

TEST_F(DatabaseWindow, forgetsAClosedModelThatGoes)
{
    auto closed = std::make_unique<OrvaneDatabaseModel>(database.config, "/nowhere/at/all", "r");
    ASSERT_FALSE(closed->isOpen());
    window.setModel(closed.get());
    closed.reset();
    EXPECT_EQ(window.model(), nullptr);
    window.setModel(&database.open());
    EXPECT_EQ(tables().count(), 3);
}

TEST_F(DatabaseWindow, focusesTheTableThatTheDatabaseNameAddressed)
{
    database.config.configure("default_table", QVariantMap{{"small", "event"}});
    window.setModel(&database.open("arrival"));
    EXPECT_EQ(window.getFocusTableName(), "arrival");
    EXPECT_EQ(window.getCurrentTableModel()->getTableName(), "arrival");
}

TEST_F(DatabaseWindow, focusesTheDefaultTableOfTheSchema)
{
    database.config.configure("default_table", QVariantMap{{"small", "event"}, {"other", "site"}});
    window.setModel(&database.open());
    EXPECT_EQ(window.getFocusTableName(), "event");
    EXPECT_EQ(window.getCurrentTabIndex(), 2);
}

TEST_F(DatabaseWindow, focusesTheFirstTableOtherwise)
{
    database.config.configure("default_table", QVariantMap{{"other", "event"}});
    window.setModel(&database.open());
    EXPECT_EQ(window.getFocusTableName(), "site");
    EXPECT_EQ(window.getCurrentStackIndex(), 0);
}

TEST_F(DatabaseWindow, focusesNothingInADatabaseWithoutTables)
{
    for (const char *table : {"site", "arrival", "event"}) {
        std::filesystem::remove(database.files.tablePath(table));
    }
    window.setModel(&database.open());
    EXPECT_EQ(window.getFocusTableName(), "");
    EXPECT_EQ(tables().count(), 0);
}

TEST_F(DatabaseWindow, hasOneTabForATableThatIsAddedTwice)
{
    window.setModel(&database.open());
    window.addTable(&database.table("site"));
    window.addTable(nullptr);
    EXPECT_EQ(tabTexts(tables()), (Names{"site", "arrival", "event"}));
}

TEST_F(DatabaseWindow, followsTablesThatComeAndGo)
{
    window.setModel(&database.open());
    database.files.addTable("remark", {{"1", "1", "hello"}});
    std::filesystem::remove(database.files.tablePath("site"));
    database.model->checkForUpdates();
    EXPECT_EQ(tabTexts(tables()), (Names{"arrival", "event", "remark"}));

    database.files.addTable("site", {{"AAK"}});
    database.model->checkForUpdates();
    settle();
    EXPECT_EQ(tabTexts(tables()), (Names{"arrival", "event", "remark", "site"}));
    int shown = 0;
    for (OrvaneTableView *view : window.findChildren<OrvaneTableView *>()) {
        shown += view->model() == &database.table("site") ? 1 : 0;
    }
    EXPECT_EQ(shown, 1) << "the view of the earlier tab is still there";
}

TEST_F(DatabaseWindow, keepsTheWidgetOfATabThatIsRemoved)
{
    window.setModel(&database.open());
    const QPointer<QWidget> site = tables().widget(0);
    window.removeTable("site");
    window.removeTable("nonsense");
    settle();
    EXPECT_EQ(tabTexts(tables()), (Names{"arrival", "event"}));
    EXPECT_FALSE(site.isNull());
    EXPECT_FALSE(site->isVisible());
}

TEST_F(DatabaseWindow, emptiesItselfWhenItsModelGoes)
{
    window.setModel(&database.open());
    window.show();
    database.model.reset();
    settle();
    EXPECT_EQ(window.model(), nullptr);
    EXPECT_EQ(tables().count(), 0);
    EXPECT_TRUE(window.findChildren<OrvaneTableView *>().isEmpty());
}

TEST_F(DatabaseWindow, survivesADatabaseThatIsClosedUnderIt)
{
    MessageBoxes boxes;
    window.setModel(&database.open());
    window.show();
    settle();
    database.model->close();
    window.setCurrentTabIndex(1);
    database.config.configure("show_readable_times", false);
    database.config.configure("show_tooltips", true);
    window.clearTabs();
    settle();
    EXPECT_TRUE(boxes.texts().isEmpty()) << boxes.texts().join('\n').toStdString();
}

TEST_F(DatabaseWindow, showsAnotherDatabaseAndForgetsTheFirst)
{
    window.setModel(&database.open());
    ShownDatabase other;
    std::filesystem::remove(other.files.tablePath("arrival"));
    window.setModel(&other.open());
    settle();
    EXPECT_EQ(tabTexts(tables()), (Names{"site", "event"}));
    database.files.addTable("remark", {{"1", "1", "hello"}});
    database.model->checkForUpdates();
    EXPECT_EQ(tabTexts(tables()), (Names{"site", "event"}));
    database.model.reset();
    EXPECT_EQ(window.model(), other.model.get());
    window.setModel(nullptr);
}

// ---- Focus
// -------------------------------------------------------------------------------------------------------

TEST_F(DatabaseWindow, ignoresTheFocusOfAnUnknownTable)
{
    window.setModel(&database.open());
    QSignalSpy focus(&window, &OrvaneDatabaseView::focusTableChanged);
    QSignalSpy stackItem(&window, &OrvaneDatabaseView::stackItemChanged);
    window.setFocusTable("nonsense");
    EXPECT_EQ(focus.count(), 0);
    EXPECT_EQ(stackItem.count(), 0);
    EXPECT_EQ(window.getFocusTableName(), "site");
}

TEST_F(DatabaseWindow, bringsAFocusedTableToTheFrontAndTellsIt)
{
    window.setModel(&database.open());
    window.showStackItem(1);
    QSignalSpy focus(&window, &OrvaneDatabaseView::focusTableChanged);
    window.setFocusTable("event");
    EXPECT_EQ(window.getCurrentStackIndex(), 0);
    EXPECT_EQ(window.getCurrentTabIndex(), 2);
    EXPECT_EQ(window.getFocusTableName(), "event");
    ASSERT_FALSE(focus.isEmpty());
    EXPECT_EQ(focus.last().first().toString(), "event");
}

TEST_F(DatabaseWindow, keepsTheFocusNameWhenTabsAreTurned)
{
    window.setModel(&database.open());
    QSignalSpy focus(&window, &OrvaneDatabaseView::focusTableChanged);
    window.setCurrentTabIndex(1);
    ASSERT_EQ(focus.count(), 1);
    EXPECT_EQ(focus.first().first().toString(), "arrival");
    EXPECT_EQ(window.getFocusTableName(), "site");
}

TEST_F(DatabaseWindow, givesTheRequestedFieldsToTheFirstFocusedTableOnly)
{
    database.config.configure("fields", ",staname,,sta,");
    window.setModel(&database.open());
    EXPECT_EQ(window.getCurrentTableView()->getFieldNamesVisible(), (QList<QString>{"staname", "sta"}));
    EXPECT_EQ(database.config["fields"], QVariant(QString()));
    window.setFocusTable("arrival");
    EXPECT_EQ(window.getCurrentTableView()->getFieldNamesVisible(),
              (QList<QString>{"sta", "time", "arid", "jdate", "phase"}));
}

// ---- Pages
// -------------------------------------------------------------------------------------------------------

TEST_F(DatabaseWindow, tellsEveryTurnOfTheStackAlsoOneThatIsRefused)
{
    QSignalSpy stackItem(&window, &OrvaneDatabaseView::stackItemChanged);
    window.showStackItem(2);
    EXPECT_EQ(window.getCurrentStackIndex(), 2);
    window.showStackItem(3);
    window.showStackItem(-1);
    EXPECT_EQ(window.getCurrentStackIndex(), 2);
    window.setCurrentStackIndex(1);
    EXPECT_EQ(window.getCurrentStackIndex(), 1);
    QList<int> told;
    for (const QList<QVariant> &arguments : stackItem) {
        told.append(arguments.first().toInt());
    }
    EXPECT_EQ(told, (QList<int>{2, 3, -1, 1}));
}

TEST_F(DatabaseWindow, tellsAnEmptyNameForAPageWithoutTables)
{
    window.setModel(&database.open());
    QSignalSpy focus(&window, &OrvaneDatabaseView::focusTableChanged);
    window.showStackItem(1);
    ASSERT_EQ(focus.count(), 1);
    EXPECT_EQ(focus.last().first().toString(), "");
    products().addTab(new QLabel("map"), "map");
    window.showStackItem(2);
    EXPECT_EQ(focus.last().first().toString(), "");
    EXPECT_EQ(window.getCurrentTableModel(), nullptr);
    EXPECT_EQ(window.getCurrentTableView(), nullptr);
    window.showStackItem(0);
    EXPECT_EQ(focus.last().first().toString(), "site");
}

TEST_F(DatabaseWindow, returnsToTheTablesWhenTheLastProductIsClosed)
{
    const QPointer<QLabel> first = new QLabel("one");
    products().addTab(first, "one");
    products().addTab(new QLabel("two"), "two");
    window.showStackItem(2);
    window.closeProductsTab(7);
    EXPECT_EQ(products().count(), 2);
    window.closeProductsTab(0);
    EXPECT_TRUE(first.isNull());
    EXPECT_EQ(window.getCurrentStackIndex(), 2);
    window.closeProductsTab(0);
    EXPECT_EQ(window.getCurrentStackIndex(), 0);
}

// Stands for the tab of a derived view: the widget and the model are the same.
OrvaneTableView *addViewTab(QTabWidget &views, OvConfig &config, OrvaneTableModel *model, const QString &name)
{
    auto *view = new OrvaneTableView(config);
    view->setModel(model);
    views.addTab(view, name);
    return view;
}

TEST_F(DatabaseWindow, returnsToTheTablesWhenTheLastViewIsClosed)
{
    window.setModel(&database.open());
    const QPointer<OrvaneTableView> one =
        addViewTab(views(), database.config, &database.table("site"), "one");
    addViewTab(views(), database.config, &database.table("site"), "two");
    window.showStackItem(1);
    window.closeViewsTab(5);
    EXPECT_EQ(views().count(), 2);
    window.closeViewsTab(0);
    EXPECT_EQ(tabTexts(views()), Names{"two"});
    EXPECT_EQ(window.getCurrentStackIndex(), 1);
    settle();
    EXPECT_TRUE(one.isNull());
    window.closeViewsTab(0);
    EXPECT_EQ(window.getCurrentStackIndex(), 0);
}

TEST_F(DatabaseWindow, dropsTheTabOfAViewWhoseModelIsGone)
{
    window.setModel(&database.open());
    auto *model = new OrvaneTableModel(nullptr, nullptr, database.config);
    const QPointer<OrvaneTableView> view = addViewTab(views(), database.config, model, "gone");
    QObject::connect(view.data(), SIGNAL(modelUnset(OrvaneTableView *)), &window,
                     SLOT(tableModelUnset(OrvaneTableView *)));
    window.showStackItem(1);
    delete model;
    EXPECT_TRUE(view.isNull());
    EXPECT_EQ(views().count(), 0);
    EXPECT_EQ(window.getCurrentStackIndex(), 0);
}

TEST_F(DatabaseWindow, deletesAViewWhoseModelIsGoneAlsoWhenItHasNoTab)
{
    const QPointer<OrvaneTableView> stray = new OrvaneTableView(database.config);
    window.showStackItem(1);
    window.tableModelUnset(stray);
    EXPECT_TRUE(stray.isNull());
    EXPECT_EQ(window.getCurrentStackIndex(), 1);
}

// ---- Tooltips
// ----------------------------------------------------------------------------------------------------

TEST_F(DatabaseWindow, describesTablesInTheTooltipsOfTheirTabsWhileTooltipsAreWanted)
{
    window.setModel(&database.open());
    EXPECT_TRUE(tables().tabToolTip(0).contains("station locations"));
    database.config.configure("show_tooltips", false);
    EXPECT_EQ(tables().tabToolTip(0), "");
    database.config.configure("show_tooltips", true);
    EXPECT_TRUE(tables().tabToolTip(1).contains("arrivals of waves"));
}

TEST_F(DatabaseWindow, givesNewTabsNoTooltipWhenNoneAreWanted)
{
    database.config.configure("show_tooltips", false);
    window.setModel(&database.open());
    EXPECT_EQ(tables().tabToolTip(0), "");
}

} // namespace
