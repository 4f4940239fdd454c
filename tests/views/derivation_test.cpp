// The commands that derive views, driven through the dialogs that they open.
#include <orvanedatabaseview.h>

#include <algorithm>
#include <filesystem>

#include <QAction>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QInputDialog>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <orvanetableview.h>
#include <qdbptr.h>
#include <qlistchooserdialog.h>

#include "database_window.h"
#include "support/message_boxes.h"
#include "support/user.h"

namespace {

using Names = QStringList;
using Window = OrvaneDatabaseView;

// Stations AAK, KONO, ANTO; arrivals of AAK (twice), KONO and TUC, of which no station is known.
class Deriving : public DatabaseWindow
{
protected:
    Deriving()
    {
        database.files.addTable("site",
                                {{"AAK", "2008001", "-1", "42.6390", "74.4940", "1.6800", "Ala Archa"},
                                 {"KONO", "2001001", "-1", "59.6491", "9.5982", "0.2160", "Kongsberg"},
                                 {"ANTO", "2001001", "-1", "39.8680", "32.7934", "1.0900", "Ankara"}});
        database.files.addTable("arrival", {{"KONO", "1517875300.50000", "2", "2018037", "P"},
                                            {"AAK", "1517875201.50000", "1", "2018037", "P"},
                                            {"AAK", "1517875260.25000", "3", "2018037", "S"},
                                            {"TUC", "1517875400.00000", "4", "2018037", "P"}});
        database.config.configure("request_view_names", false);
        window.setModel(&database.open());
    }

    Names shown(const QString &field) { return shownValues(*window.getCurrentTableModel(), field); }

    void runWith(void (Window::*command)(QAction *), const QString &table)
    {
        QAction action;
        action.setData(table);
        (window.*command)(&action);
    }

    // Makes a view with the model alone, empty or not, and brings its tab to the front.
    void show(OrvaneTableModel *view) { window.setFocusTable(view->getTableName()); }

    // What is to be seen and found, to be compared before and after a command that must change nothing.
    struct State {
        Names tables;
        Names views;
        QList<QString> databaseViews;
        int page;
        int tab;
        QString focus;
        QString rows;
        bool operator==(const State &) const = default;
    };
    State state()
    {
        return {tabTexts(tables()),
                tabTexts(views()),
                database.model->getViewNames(),
                window.getCurrentStackIndex(),
                window.getCurrentTabIndex(),
                window.getFocusTableName(),
                rowCount()};
    }

    MessageBoxes boxes;
};

// Chooses fields with Enter in the list of those on offer, checks the named boxes, and accepts.
std::function<void(QListChooserDialog &)> choosing(const Names &fields, const Names &options = {})
{
    return [=](QListChooserDialog &dialog) {
        auto *offered = dialog.findChild<QListWidget *>("fields");
        for (const QString &field : fields) {
            const QList<QListWidgetItem *> items = offered->findItems(field, Qt::MatchExactly);
            ASSERT_EQ(items.size(), 1) << field.toStdString();
            offered->setCurrentItem(items.first());
            QTest::keyClick(offered, Qt::Key_Return);
        }
        for (const QString &option : options) {
            QTest::keyClick(dialog.findChild<QCheckBox *>(option), Qt::Key_Space);
        }
        auto *ok = dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
        QTest::mouseClick(ok, Qt::LeftButton);
    };
}

// ---- The dialogs
// -------------------------------------------------------------------------------------------------

TEST_F(Deriving, asksForAnExpressionInALineOfItsOwn)
{
    User user;
    user.meets<QInputDialog>([this](QInputDialog &dialog) {
        EXPECT_EQ(dialog.parentWidget(), &window);
        EXPECT_EQ(dialog.inputMode(), QInputDialog::TextInput);
        EXPECT_EQ(dialog.labelText(), "What:");
        EXPECT_EQ(dialog.textValue(), "");
        EXPECT_EQ(dialog.size(), QSize(500, 100).expandedTo(dialog.minimumSizeHint()));
        EXPECT_TRUE(dialog.findChild<QLineEdit *>()->hasFocus());
        QTest::keyClicks(dialog.focusWidget(), " lat > 1 ");
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
    });
    EXPECT_EQ(window.getExpression("What"), " lat > 1 ");
    EXPECT_TRUE(window.findChildren<QInputDialog *>().isEmpty());

    user.meets<QInputDialog>([](QInputDialog &dialog) {
        QTest::keyClicks(dialog.focusWidget(), "lat");
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Escape);
    });
    EXPECT_EQ(window.getExpression("What"), "");
    EXPECT_TRUE(window.findChildren<QInputDialog *>().isEmpty());
}

TEST_F(Deriving, asksForTheNameOfAViewAndTakesItAsTyped)
{
    User user;
    user.meets<QInputDialog>([this](QInputDialog &dialog) {
        EXPECT_EQ(dialog.parentWidget(), &window);
        EXPECT_EQ(dialog.windowTitle(), "Get View Name");
        EXPECT_GT(dialog.width(), dialog.fontMetrics().horizontalAdvance(dialog.windowTitle() + "mmmmm"))
            << "the title is to be read whole";
        EXPECT_EQ(dialog.labelText(), "View name:");
        EXPECT_EQ(dialog.textValue(), "");
        EXPECT_EQ(dialog.textEchoMode(), QLineEdit::Normal);
        QTest::keyClicks(dialog.focusWidget(), " far ");
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
    });
    EXPECT_EQ(window.getNewViewName(), " far ");
    user.cancels();
    EXPECT_EQ(window.getNewViewName(), "");
}

// ---- Names
// -------------------------------------------------------------------------------------------------------

TEST_F(Deriving, givesTheViewTheNameThatTheUserTyped)
{
    database.config.configure("request_view_names", true);
    User user;
    user.types("lat > 40").types("north");
    window.showSubset();
    EXPECT_EQ(tabTexts(views()), Names{"north"});
    EXPECT_EQ(window.getFocusTableName(), "north");
    EXPECT_EQ(shown("sta"), (Names{"AAK", "KONO"}));
}

TEST_F(Deriving, asksForNoNameWhenNoneIsWanted)
{
    User user;
    user.types("lat > 40");
    window.showSubset();
    EXPECT_EQ(tabTexts(views()), Names(database.model->getViewNames()));
    EXPECT_EQ(views().count(), 1);
    EXPECT_TRUE(views().tabText(0).startsWith("site"));
}

TEST_F(Deriving, derivesAlsoWhenTheNameIsCancelled)
{
    database.config.configure("request_view_names", true);
    User user;
    user.types("lat > 40").cancels();
    window.showSubset();
    EXPECT_EQ(views().count(), 1);
    EXPECT_FALSE(views().tabText(0).isEmpty());
    EXPECT_EQ(shown("sta"), (Names{"AAK", "KONO"}));
}

TEST_F(Deriving, refusesANameThatIsTakenOrCantBeOne)
{
    database.config.configure("request_view_names", true);
    User user;
    user.types("lat > 40").types("north");
    window.showSubset();
    window.setFocusTable("site");
    const State before = state();
    int refused = 0;
    for (const char *name : {"north", "site", "event", "no/rth"}) {
        user.types("lat > 0").types(name);
        window.showSubset();
        EXPECT_EQ(boxes.texts().size(), ++refused) << name;
        EXPECT_TRUE(boxes.texts().last().contains(name)) << boxes.texts().last().toStdString();
        EXPECT_TRUE(state() == before) << name;
    }
}

// ---- What is shown of a new view
// ---------------------------------------------------------------------------------

TEST_F(Deriving, bringsTheViewToTheFrontOfTheViewsPage)
{
    QSignalSpy focus(&window, &Window::focusTableChanged);
    window.showContextSubset("sta", "AAK");
    EXPECT_EQ(window.getCurrentStackIndex(), 1);
    EXPECT_EQ(views().currentIndex(), 0);
    EXPECT_EQ(window.getFocusTableName(), views().tabText(0));
    ASSERT_FALSE(focus.isEmpty());
    EXPECT_EQ(focus.last().first().toString(), views().tabText(0));
    EXPECT_EQ(rowCount(), "1 Row");
    EXPECT_EQ(modification(), "");
    EXPECT_EQ(tabTexts(tables()), (Names{"site", "arrival", "event"}));
}

TEST_F(Deriving, putsEachViewBehindTheOthersAndDerivesFromTheOneShown)
{
    window.showContextSubset("elev", "1.0900");
    window.setFocusTable("arrival");
    window.showContextSubset("phase", "P");
    const QString second = views().tabText(1);
    EXPECT_EQ(window.getFocusTableName(), second);
    window.showContextSubset("sta", "AAK");
    ASSERT_EQ(views().count(), 3);
    EXPECT_EQ(views().currentIndex(), 2);
    EXPECT_EQ(shown("arid"), Names{"1"});
    window.closeViewsTab(1); // what was derived from it lives on
    EXPECT_EQ(shown("arid"), Names{"1"});
}

TEST_F(Deriving, tellsTheHistoryOfAViewInTheTooltipOfItsTab)
{
    window.showContextSubset("sta", "AAK");
    EXPECT_TRUE(views().tabToolTip(0).contains("dbsubset")) << views().tabToolTip(0).toStdString();
    EXPECT_TRUE(views().tabToolTip(0).contains("sta == 'AAK'") ||
                views().tabToolTip(0).contains(QString("sta == 'AAK'").toHtmlEscaped()));
    database.config.configure("show_tooltips", false);
    EXPECT_EQ(views().tabToolTip(0), "");
    database.config.configure("show_tooltips", true);
    EXPECT_TRUE(views().tabToolTip(0).contains("dbsubset"));
}

TEST_F(Deriving, givesEveryWindowOfTheDatabaseATab)
{
    Window other(database.config);
    other.setModel(database.model.get());
    window.showContextSubset("sta", "AAK");
    auto &otherViews = *other.findChild<QTabWidget *>("viewsTabs");
    EXPECT_EQ(tabTexts(otherViews), tabTexts(views()));
    EXPECT_EQ(other.getCurrentStackIndex(), 0);
    window.closeViewsTab(0);
    EXPECT_EQ(otherViews.count(), 0);
}

TEST_F(Deriving, showsTheViewsOfADatabaseThatIsSetAgain)
{
    window.showContextSubset("sta", "AAK");
    window.setFocusTable("site");
    window.getCurrentTableModel()->sort(1, Qt::DescendingOrder);
    ASSERT_EQ(database.model->getViewNames().size(), 2);
    const Names before = tabTexts(views());
    window.setModel(database.model.get());
    EXPECT_EQ(tabTexts(views()), before) << "and not the view shown in place of the sorted table";
}

TEST_F(Deriving, freesTheViewOfATabThatIsClosed)
{
    window.showContextSubset("sta", "AAK");
    const QString name = views().tabText(0);
    window.closeViewsTab(0);
    settle();
    EXPECT_TRUE(database.model->getViewNames().isEmpty());
    EXPECT_EQ(database.model->getTableModel(name), nullptr);
    EXPECT_EQ(window.getCurrentStackIndex(), 0);
    EXPECT_EQ(window.findChildren<OrvaneTableView *>().size(), 3);
}

TEST_F(Deriving, dropsTheTabOfAViewThatTheDatabaseModelDeletes)
{
    window.showContextSubset("sta", "AAK");
    database.model->deleteView(views().tabText(0));
    EXPECT_EQ(views().count(), 0);
    EXPECT_EQ(window.getCurrentStackIndex(), 0);
    EXPECT_TRUE(boxes.texts().isEmpty());
}

TEST_F(Deriving, givesTheRequestedFieldsToTheViewThatIsFocusedNext)
{
    database.config.configure("fields", "site.lon,site.sta"); // as the fields of views are named
    window.showContextSubset("sta", "AAK");
    EXPECT_EQ(window.getCurrentTableView()->getFieldNamesVisible(), (QList<QString>{"site.lon", "site.sta"}));
}

// ---- Subset
// ------------------------------------------------------------------------------------------------------

TEST_F(Deriving, subsetsByTheCellThatAskedForIt)
{
    emit window.getCurrentTableView()->subsetRequested("sta", "AAK");
    EXPECT_EQ(shown("staname"), Names{"Ala Archa"});
    EXPECT_TRUE(window.getCurrentTableModel()->getQDbptr()->getTableCreation().contains("sta == 'AAK'"));
}

TEST_F(Deriving, subsetsByTheCellOfAView)
{
    window.setFocusTable("arrival");
    window.showContextSubset("sta", "AAK");
    emit window.getCurrentTableView()->subsetRequested("phase", "S");
    EXPECT_EQ(shown("arid"), Names{"3"});
}

TEST_F(Deriving, stopsWhenNoExpressionIsGiven)
{
    const State before = state();
    User user;
    user.cancels();
    window.showSubset();
    user.types("");
    window.showSubset();
    EXPECT_TRUE(state() == before);
    EXPECT_TRUE(boxes.texts().isEmpty());
}

TEST_F(Deriving, showsTheReasonOfAnExpressionThatIsWrong)
{
    const State before = state();
    User user;
    int wrong = 0;
    for (const char *expression : {"latt > 1", "lat > ", "lat > 'north'", "staname =~ '('", "'AAK"}) {
        user.types(expression);
        window.showSubset();
        ASSERT_EQ(boxes.texts().size(), ++wrong) << expression;
        EXPECT_TRUE(boxes.texts().last().contains('^')) << boxes.texts().last().toStdString();
        EXPECT_TRUE(state() == before) << expression;
    }
    EXPECT_TRUE(boxes.texts().first().contains("lat"));
}

TEST_F(Deriving, leavesQuotesInsideAValueAsTheyAre)
{
    const State before = state();
    window.showContextSubset("staname", "it's");
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(state() == before);
}

// ---- Sort, group, ungroup
// ----------------------------------------------------------------------------------------

TEST_F(Deriving, sortsByTheFieldsInTheOrderOfTheirChoice)
{
    window.setFocusTable("arrival");
    User user;
    user.meets<QListChooserDialog>([this](QListChooserDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Sort fields");
        EXPECT_EQ(dialog.parentWidget(), &window);
        EXPECT_EQ(dialog.findChild<QListWidget *>("chosen")->count(), 0);
        EXPECT_EQ(dialog.findChild<QListWidget *>("fields")->count(), 8);
        EXPECT_EQ(dialog.findChildren<QCheckBox *>().size(), 2);
        choosing({"phase", "time"})(dialog);
    });
    window.showSort();
    EXPECT_EQ(shown("arid"), (Names{"1", "2", "4", "3"}));
}

TEST_F(Deriving, sortsBackwardsAndWithoutRepeats)
{
    window.setFocusTable("arrival");
    User user;
    user.meets<QListChooserDialog>(choosing({"sta"}, {"reverse"}));
    window.showSort();
    EXPECT_EQ(shown("sta"), (Names{"TUC", "KONO", "AAK", "AAK"}));
    EXPECT_EQ(shown("arid"), (Names{"4", "2", "1", "3"}));

    window.setFocusTable("arrival");
    user.meets<QListChooserDialog>(choosing({"sta"}, {"unique"}));
    window.showSort();
    EXPECT_EQ(shown("arid"), (Names{"1", "2", "4"}));

    window.setFocusTable("arrival");
    user.meets<QListChooserDialog>(choosing({"sta"}, {"reverse", "unique"}));
    window.showSort();
    EXPECT_EQ(shown("arid"), (Names{"4", "2", "1"}));
}

TEST_F(Deriving, doesNothingWhenNoFieldIsChosen)
{
    const State before = state();
    User user;
    const auto triesToAccept = [](QListChooserDialog &dialog) {
        QTest::keyClick(dialog.findChild<QListWidget *>("chosen"), Qt::Key_Return);
        EXPECT_TRUE(dialog.isVisible());
        dialog.accept(); // which the disabled button does not allow
    };
    user.meets<QListChooserDialog>(triesToAccept);
    window.showSort();
    user.meets<QListChooserDialog>(triesToAccept);
    window.showGroup();
    user.cancels();
    window.showSort();
    user.cancels();
    window.showGroup();
    EXPECT_TRUE(state() == before);
    EXPECT_TRUE(boxes.texts().isEmpty());
}

TEST_F(Deriving, groupsAndUngroups)
{
    window.setFocusTable("arrival");
    User user;
    user.meets<QListChooserDialog>([](QListChooserDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Group fields");
        EXPECT_TRUE(dialog.findChildren<QCheckBox *>().isEmpty());
        choosing({"sta"})(dialog);
    });
    window.showGroup();
    const QString name = window.getFocusTableName();
    EXPECT_EQ(window.getCurrentTableModel()->getTableFields(),
              (QList<QString>{name + ".sta", name + ".bundle"}));
    EXPECT_EQ(shown("sta"), (Names{"AAK", "KONO", "TUC"}));
    EXPECT_EQ(database.model->getViewNames().size(), views().count());

    window.showUngroup();
    EXPECT_EQ(shown("sta"), (Names{"AAK", "AAK", "KONO", "TUC"}));
}

TEST_F(Deriving, showsTheReasonWhereNothingCanBeUngrouped)
{
    const State before = state();
    window.showUngroup();
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_FALSE(boxes.texts().first().contains("no records")) << boxes.texts().first().toStdString();
    EXPECT_TRUE(state() == before);
}

// ---- Joins, sever, separate
// --------------------------------------------------------------------------------------

TEST_F(Deriving, joins)
{
    window.setFocusTable("arrival");
    runWith(&Window::showJoin, "site");
    EXPECT_EQ(window.getCurrentTableModel()->getViewTables(), (QList<QString>{"arrival", "site"}));
    EXPECT_EQ(shown("arid"), (Names{"2", "1", "3"}));
    EXPECT_EQ(shown("staname"), (Names{"Kongsberg", "Ala Archa", "Ala Archa"}));
}

TEST_F(Deriving, joinsAndKeepsRowsWithoutAMatch)
{
    window.setFocusTable("arrival");
    runWith(&Window::showOuterJoin, "site");
    EXPECT_EQ(shown("arid"), (Names{"2", "1", "3", "4"}));
    EXPECT_EQ(shown("staname").last(), "");
}

TEST_F(Deriving, joinsWithTheOtherTableFirst)
{
    window.setFocusTable("arrival");
    runWith(&Window::showLeftJoin, "site");
    EXPECT_EQ(window.getCurrentTableModel()->getViewTables(), (QList<QString>{"site", "arrival"}));
    EXPECT_EQ(shown("arid"), (Names{"1", "3", "2"}));
}

TEST_F(Deriving, findsTheRowsWithoutAMatch)
{
    window.setFocusTable("arrival");
    runWith(&Window::showNoJoin, "site");
    EXPECT_EQ(shown("sta"), Names{"TUC"});
    EXPECT_EQ(window.getCurrentTableModel()->getViewTables(), QList<QString>{"arrival"});
}

TEST_F(Deriving, joinsByAnExpression)
{
    User user;
    user.meets<QInputDialog>([](QInputDialog &dialog) {
        EXPECT_EQ(dialog.labelText(), "Theta-join expression:");
        QTest::keyClicks(dialog.focusWidget(), "site.sta > arrival.sta && phase == 'S'");
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
    });
    runWith(&Window::showThetaJoin, "arrival");
    EXPECT_EQ(shown("staname"), (Names{"Kongsberg", "Ankara"}));
    EXPECT_EQ(shown("arid"), (Names{"3", "3"}));

    const State before = state();
    user.cancels();
    runWith(&Window::showThetaJoin, "arrival");
    EXPECT_TRUE(state() == before);
}

TEST_F(Deriving, severesAndSeparatesTheTablesOfAView)
{
    window.setFocusTable("arrival");
    runWith(&Window::showJoin, "site");
    const QString joined = window.getFocusTableName();

    runWith(&Window::showSever, "arrival");
    EXPECT_EQ(window.getCurrentTableModel()->getViewTables(), QList<QString>{"site"});
    EXPECT_EQ(shown("sta"), (Names{"KONO", "AAK"}));

    window.setFocusTable(joined);
    runWith(&Window::showSeparate, "site");
    EXPECT_EQ(shown("sta"), (Names{"AAK", "KONO"}));
    EXPECT_EQ(views().count(), 3);
    EXPECT_TRUE(boxes.texts().isEmpty()) << boxes.texts().join('\n').toStdString();
}

TEST_F(Deriving, showsTheReasonWhereTablesDontGoTogether)
{
    const State before = state();
    int wrong = 0;
    for (auto command : {&Window::showJoin, &Window::showOuterJoin, &Window::showLeftJoin,
                         &Window::showNoJoin, &Window::showSever, &Window::showSeparate}) {
        for (const char *table : {"event", "nonsense"}) {
            runWith(command, table);
            EXPECT_EQ(boxes.texts().size(), ++wrong);
            EXPECT_TRUE(state() == before);
        }
    }
    EXPECT_EQ(boxes.texts().filter("no records").size(), 0) << boxes.texts().join('\n').toStdString();
}

TEST_F(Deriving, needsTheNameOfATableInTheAction)
{
    const State before = state();
    QAction empty;
    for (auto command :
         {&Window::showJoin, &Window::showOuterJoin, &Window::showLeftJoin, &Window::showNoJoin,
          &Window::showThetaJoin, &Window::showSever, &Window::showSeparate}) {
        (window.*command)(&empty);
        (window.*command)(nullptr);
    }
    EXPECT_TRUE(state() == before);
    EXPECT_TRUE(boxes.texts().isEmpty());
}

// ---- Nothing comes of it
// -----------------------------------------------------------------------------------------

// Of everything that a user could notice nothing is left but the message.
class DerivingNothing : public Deriving
{
protected:
    void expectMessage(const QString &message, const std::function<void()> &command)
    {
        const State before = state();
        const Names messagesBefore = boxes.texts();
        QSignalSpy stackItem(&window, &Window::stackItemChanged);
        QSignalSpy focus(&window, &Window::focusTableChanged);
        command();
        EXPECT_EQ(boxes.texts(), messagesBefore + Names{message});
        EXPECT_TRUE(state() == before) << message.toStdString();
        EXPECT_EQ(stackItem.count() + focus.count(), 0);
    }

    // An empty view of two tables, in front.
    QString showEmptyJoin()
    {
        database.files.addTable("arrival", {{"TUC", "1517875400.00000", "4", "2018037", "P"}});
        database.model->checkForUpdates();
        OrvaneTableModel *joined = database.model->getJoin("arrival", "site", "");
        EXPECT_EQ(joined->rowCount(), 0);
        show(joined);
        return joined->getTableName();
    }
};

TEST_F(DerivingNothing, tellsOfASubset)
{
    User user;
    user.types("lat > 100");
    expectMessage("Subset of 'site' on expression 'lat > 100': result has no records",
                  [this] { window.showSubset(); });
    expectMessage("Subset of 'site' on expression 'sta == 'NONE'': result has no records",
                  [this] { window.showContextSubset("sta", "NONE"); });
}

TEST_F(DerivingNothing, putsMarksForPlacesInsideAnExpressionIntoTheMessageAsTheyAre)
{
    User user;
    user.types("sta == '%1 %2 %3'");
    expectMessage("Subset of 'site' on expression 'sta == '%1 %2 %3'': result has no records",
                  [this] { window.showSubset(); });
}

TEST_F(DerivingNothing, tellsOfASortWithItsFieldsBehindABlankInsideTheQuotes)
{
    window.setFocusTable("event");
    User user;
    user.meets<QListChooserDialog>(choosing({"prefor", "evid"}));
    expectMessage("Sort of 'event ' on fields'prefor', 'evid': result has no records",
                  [this] { window.showSort(); });
    user.meets<QListChooserDialog>(choosing({"evid"}));
    expectMessage("Sort of 'event ' on fields'evid': result has no records", [this] { window.showSort(); });
}

TEST_F(DerivingNothing, tellsOfAGroupLikewise)
{
    window.setFocusTable("event");
    User user;
    user.meets<QListChooserDialog>(choosing({"evid", "auth"}));
    expectMessage("Group of 'event ' on fields'evid', 'auth': result has no records",
                  [this] { window.showGroup(); });
}

TEST_F(DerivingNothing, tellsOfAnUngroup)
{
    OrvaneTableModel *grouped = database.model->getGroup("event", {"evid"}, "groups");
    show(grouped);
    EXPECT_EQ(window.getCurrentTableModel(), grouped);
    expectMessage("Ungroup of 'groups': result has no records", [this] { window.showUngroup(); });
}

TEST_F(DerivingNothing, tellsOfEachJoin)
{
    database.files.addTable("arrival", {{"TUC", "1517875400.00000", "4", "2018037", "P"}});
    database.model->checkForUpdates();
    expectMessage("Join of 'site' to 'arrival': result has no records",
                  [this] { runWith(&Window::showJoin, "arrival"); });
    expectMessage("Left-join of 'site' to 'arrival': result has no records",
                  [this] { runWith(&Window::showLeftJoin, "arrival"); });
    User user;
    user.types("site.sta == arrival.sta");
    expectMessage("Theta-join of 'site' to 'arrival' with expression 'site.sta == arrival.sta': "
                  "result has no records",
                  [this] { runWith(&Window::showThetaJoin, "arrival"); });

    database.files.addTable("arrival", {});
    database.model->checkForUpdates();
    window.setFocusTable("arrival");
    expectMessage("Outer-join of 'arrival' to 'site': result has no records",
                  [this] { runWith(&Window::showOuterJoin, "site"); });
    expectMessage("No-join of 'arrival' to 'site': result has no records",
                  [this] { runWith(&Window::showNoJoin, "site"); });
}

TEST_F(DerivingNothing, tellsOfSeverAndSeparateWithTheTableFirst)
{
    const QString joined = showEmptyJoin();
    expectMessage("Sever of table 'site' from '" + joined + "': result has no records",
                  [this] { runWith(&Window::showSever, "site"); });
    expectMessage("Separate table 'arrival' from '" + joined + "': result has no records",
                  [this] { runWith(&Window::showSeparate, "arrival"); });
}

TEST_F(DerivingNothing, staysOnAViewThatWasShown)
{
    window.setFocusTable("arrival");
    window.showContextSubset("sta", "AAK");
    const QString name = window.getFocusTableName();
    expectMessage("Subset of '" + name + "' on expression 'sta == 'KONO'': result has no records",
                  [this] { window.showContextSubset("sta", "KONO"); });
    EXPECT_EQ(window.getCurrentStackIndex(), 1);
}

TEST_F(DerivingNothing, letsTheNameBeUsedAgain)
{
    database.config.configure("request_view_names", true);
    User user;
    user.types("lat > 100").types("north");
    window.showSubset();
    EXPECT_EQ(boxes.texts().size(), 1);
    user.types("lat > 40").types("north");
    window.showSubset();
    EXPECT_EQ(boxes.texts().size(), 1);
    EXPECT_EQ(tabTexts(views()), Names{"north"});
}

// ---- Without a table
// ---------------------------------------------------------------------------------------------

// No dialog opens, no box is shown, nothing changes.
class DerivingFromNowhere : public Deriving
{
protected:
    void runEveryCommand()
    {
        const User nobody;
        for (auto command : {&Window::showSubset, &Window::showSort, &Window::showGroup, &Window::showUngroup,
                             &Window::arrange, &Window::goToRow}) {
            (window.*command)();
        }
        window.showContextSubset("sta", "AAK");
        for (auto command :
             {&Window::showJoin, &Window::showOuterJoin, &Window::showLeftJoin, &Window::showNoJoin,
              &Window::showThetaJoin, &Window::showSever, &Window::showSeparate}) {
            runWith(command, "arrival");
        }
        EXPECT_TRUE(boxes.texts().isEmpty()) << boxes.texts().join('\n').toStdString();
        EXPECT_EQ(views().count(), 0);
    }
};

TEST_F(DerivingFromNowhere, doesNothingWithoutADatabase)
{
    window.setModel(nullptr);
    runEveryCommand();
}

TEST_F(DerivingFromNowhere, doesNothingOnAPageWithoutTables)
{
    window.showStackItem(1);
    runEveryCommand();
    products().addTab(new QLabel("map"), "map");
    window.showStackItem(2);
    runEveryCommand();
}

TEST_F(DerivingFromNowhere, doesNothingInADatabaseThatWasClosed)
{
    database.model->close();
    runEveryCommand();
}

TEST_F(Deriving, stopsWhenItsTableGoesWhileTheUserIsAsked)
{
    window.setFocusTable("arrival");
    window.showContextSubset("phase", "P");
    const QString name = window.getFocusTableName();
    User user;
    user.meets<QInputDialog>([&](QInputDialog &dialog) {
        database.model->deleteView(name);
        QTest::keyClicks(dialog.focusWidget(), "arid > 0");
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
    });
    window.showSubset();
    EXPECT_TRUE(boxes.texts().isEmpty());
    EXPECT_EQ(views().count(), 0);
    EXPECT_TRUE(database.model->getViewNames().isEmpty());
}

TEST_F(Deriving, showsTheReasonWhenTheDatabaseIsClosedWhileTheUserIsAsked)
{
    User user;
    user.meets<QInputDialog>([&](QInputDialog &dialog) {
        database.model->close();
        QTest::keyClicks(dialog.focusWidget(), "lat > 40");
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
    });
    window.showSubset();
    EXPECT_EQ(boxes.texts().size(), 1);
    EXPECT_EQ(views().count(), 0);
}

// ---- What the table view shows
// -----------------------------------------------------------------------------------

TEST_F(Deriving, arrangesTheColumns)
{
    User user;
    user.meets<QListChooserDialog>([this](QListChooserDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Show fields");
        EXPECT_EQ(dialog.parentWidget(), &window);
        EXPECT_EQ(dialog.findChild<QListWidget *>("fields")->count(), 8);
        auto *chosen = dialog.findChild<QListWidget *>("chosen");
        EXPECT_EQ(chosen->count(), 6) << "the columns in sight";
        EXPECT_TRUE(dialog.findChildren<QCheckBox *>().isEmpty());
        QTest::mouseClick(dialog.findChild<QPushButton *>("clearAll"), Qt::LeftButton);
        choosing({"lon", "sta", "offdate"})(dialog);
    });
    window.arrange();
    EXPECT_EQ(window.getCurrentTableView()->getFieldNamesVisible(),
              (QList<QString>{"lon", "sta", "offdate"}));

    user.meets<QListChooserDialog>([](QListChooserDialog &dialog) {
        EXPECT_EQ(dialog.findChild<QListWidget *>("chosen")->item(0)->text(), "lon");
        QTest::mouseClick(dialog.findChild<QPushButton *>("chooseAll"), Qt::LeftButton);
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    window.arrange();
    EXPECT_EQ(window.getCurrentTableView()->getFieldNamesVisible(),
              (QList<QString>{"lon", "sta", "offdate"}));
}

TEST_F(Deriving, takesAColumnOutOfSight)
{
    User user;
    user.meets<QListChooserDialog>([](QListChooserDialog &dialog) {
        auto *chosen = dialog.findChild<QListWidget *>("chosen");
        chosen->setCurrentRow(1);
        QTest::keyClick(chosen, Qt::Key_Delete);
        QTest::keyClick(chosen, Qt::Key_Return);
    });
    window.arrange();
    EXPECT_EQ(window.getCurrentTableView()->getFieldNamesVisible(),
              (QList<QString>{"sta", "lat", "lon", "elev", "staname"}));
}

TEST_F(Deriving, goesToARow)
{
    ShownDatabase::Rows rows;
    for (int row = 0; row < 1000; ++row) {
        rows.push_back({"S" + std::to_string(row)});
    }
    database.files.addTable("site", rows);
    database.model->checkForUpdates();
    window.resize(400, 300);
    window.show();
    settle();
    OrvaneTableView &site = *window.getCurrentTableView();
    const auto inSight = [&site](int row) {
        return site.viewport()->rect().intersects(site.visualRect(site.model()->indexForCell(row, "sta")));
    };
    ASSERT_FALSE(inSight(765));
    User user;
    user.meets<QInputDialog>([this](QInputDialog &dialog) {
        EXPECT_EQ(dialog.parentWidget(), &window);
        EXPECT_EQ(dialog.windowTitle(), "Row Number");
        EXPECT_EQ(dialog.labelText(), "Row Number:");
        EXPECT_EQ(dialog.intValue(), 0);
        EXPECT_EQ(dialog.intMinimum(), 0);
        EXPECT_EQ(dialog.intMaximum(), 999);
        EXPECT_EQ(dialog.intStep(), 1);
        QTest::keyClicks(dialog.focusWidget(), "765"); // over the 0, which is selected
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
    });
    window.goToRow();
    EXPECT_TRUE(inSight(765));
    user.meets<QInputDialog>([](QInputDialog &dialog) {
        QTest::keyClicks(dialog.focusWidget(), "5");
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Escape);
    });
    window.goToRow();
    EXPECT_TRUE(inSight(765));
    EXPECT_FALSE(inSight(5));
}

TEST_F(Deriving, offersTenRowsAsZeroToNine)
{
    database.files.addTable("event", ShownDatabase::Rows(10, {"1"}));
    database.model->checkForUpdates();
    window.setFocusTable("event");
    User user;
    user.meets<QInputDialog>([](QInputDialog &dialog) {
        EXPECT_EQ(dialog.intMinimum(), 0);
        EXPECT_EQ(dialog.intMaximum(), 9);
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    window.goToRow();
}

TEST_F(Deriving, survivesTheWayToARowOfATableWithoutAny)
{
    window.setFocusTable("event");
    User user;
    user.types("0");
    window.goToRow();
    EXPECT_TRUE(boxes.texts().isEmpty());
}

} // namespace
