#include "derive_menu.h"

#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QTabWidget>

#include <orvane/db.h>
#include <orvanedatabasemodel.h>
#include <qlistchooserdialog.h>

#include "notice_bar.h"
#include "progress_dialog.h"
#include "running_program.h"
#include "support/user.h"

namespace {

class Derive : public RunningProgram
{
protected:
    Derive()
    {
        files.addTable("site", {{"AAK", "2008001", "-1", "42.6390", "74.4940"},
                                {"KONO", "2001001", "-1", "59.6491", "9.5982"},
                                {"ANTO", "2001001", "-1", "39.8680", "32.7934"}});
        files.addTable("arrival", {{"KONO", "1517875300.50000", "2", "2018037", "P"},
                                   {"AAK", "1517875201.50000", "1", "2018037", "P"},
                                   {"AAK", "1517875260.25000", "3", "2018037", "S"},
                                   {"TUC", "1517875400.00000", "4", "2018037", "P"}});
        files.addTable("assoc", {{"1", "10", "AAK", "P"}, {"2", "10", "KONO", "P"}, {"9", "11", "AAK", "S"}});
        program.config().configure("request_view_names", false);
    }

    // The entries of a list, as when the user opens the menu.
    static QList<QAction *> entries(MainWindow &window, const char *list)
    {
        emit window.findChild<QMenu *>("deriveMenu")->aboutToShow();
        return window.findChild<QMenu *>(list)->actions();
    }

    static QStringList offered(MainWindow &window, const char *list)
    {
        QStringList names;
        for (const QAction *entry : entries(window, list)) {
            names.append(entry->data().toString());
        }
        return names;
    }

    static bool isOffered(MainWindow &window, const char *list)
    {
        emit window.findChild<QMenu *>("deriveMenu")->aboutToShow();
        return window.findChild<QMenu *>(list)->menuAction()->isEnabled();
    }

    static void choose(MainWindow &window, const char *list, const QString &name)
    {
        for (QAction *entry : entries(window, list)) {
            if (entry->data().toString() == name) {
                entry->trigger();
                return;
            }
        }
        FAIL() << list << " doesn't offer " << name.toStdString();
    }

    static QString shown(MainWindow &window) { return window.view()->getCurrentTableModel()->getTableName(); }
    static int rows(MainWindow &window) { return window.view()->getCurrentTableModel()->rowCount(); }

    static const char *const lists[7];
};

const char *const Derive::lists[7] = {"joinMenu",      "outerJoinMenu", "leftJoinMenu", "noJoinMenu",
                                      "thetaJoinMenu", "severMenu",     "separateMenu"};

TEST_F(Derive, canDoNothingWithoutATable)
{
    MainWindow &window = *program.showStartPage();
    for (const char *name : {"subset", "sort", "group", "ungroup", "arrange", "goToRow", "closeTab"}) {
        EXPECT_FALSE(action(window, name).isEnabled()) << name;
    }
    for (const char *list : lists) {
        EXPECT_FALSE(isOffered(window, list)) << list;
    }
    opened();
    MainWindow &other = *program.windows().last();
    other.page(2)->addTab(new QWidget, "map");
    other.view()->showStackItem(2);
    EXPECT_FALSE(action(other, "subset").isEnabled()) << "a product is no table";
    EXPECT_FALSE(isOffered(other, "joinMenu"));
}

TEST_F(Derive, offersWhatTheTableShownJoinsTo)
{
    MainWindow &window = opened("arrival");
    EXPECT_EQ(offered(window, "joinMenu"), (QStringList{"site", "assoc", "event"}))
        << "in the order of the schema";
    EXPECT_EQ(offered(window, "outerJoinMenu"), offered(window, "joinMenu"));
    EXPECT_EQ(offered(window, "noJoinMenu"), offered(window, "joinMenu"));
    EXPECT_EQ(entries(window, "joinMenu")[1]->text(), "assoc\tarid") << "and by which keys";
    EXPECT_EQ(entries(window, "joinMenu")[1]->toolTip(),
              "The rows of arrival beside those of assoc that belong to them, by arid");
    EXPECT_EQ(offered(window, "thetaJoinMenu"), (QStringList{"site", "assoc", "event"}))
        << "anything but itself";
    EXPECT_FALSE(isOffered(window, "severMenu"));
    EXPECT_FALSE(isOffered(window, "separateMenu"));
}

TEST_F(Derive, joinsInEveryWay)
{
    const std::pair<const char *, int> joins[] = {
        {"joinMenu", 3}, {"outerJoinMenu", 4}, {"leftJoinMenu", 3}, {"noJoinMenu", 1}};
    MainWindow &window = opened("arrival");
    int views = 0;
    for (const auto &[list, expected] : joins) {
        window.view()->setFocusTable("arrival");
        choose(window, list, "site");
        EXPECT_EQ(boxes.texts(), QStringList()) << list;
        EXPECT_EQ(window.page(1)->count(), ++views) << list;
        EXPECT_EQ(window.view()->getCurrentStackIndex(), 1) << list;
        EXPECT_EQ(rows(window), expected) << list;
    }
}

TEST_F(Derive, takesJoinsApart)
{
    MainWindow &window = opened("arrival");
    choose(window, "joinMenu", "site");
    const QString joined = shown(window);
    EXPECT_EQ(offered(window, "severMenu"), (QStringList{"arrival", "site"}));
    EXPECT_EQ(offered(window, "separateMenu"), (QStringList{"arrival", "site"}));
    EXPECT_EQ(offered(window, "joinMenu"), (QStringList{"assoc", "event"})) << "no table twice";
    choose(window, "severMenu", "arrival");
    EXPECT_EQ(rows(window), 2);
    EXPECT_FALSE(isOffered(window, "severMenu")) << "nothing would be left";
    EXPECT_EQ(offered(window, "separateMenu"), QStringList{"site"});
    window.view()->setFocusTable(joined);
    choose(window, "separateMenu", "arrival");
    EXPECT_EQ(rows(window), 3);
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(Derive, joinsToViews)
{
    MainWindow &window = opened("assoc");
    {
        User user;
        user.types("orid == 10");
        action(window, "subset").trigger();
    }
    const QString few = shown(window);
    EXPECT_EQ(rows(window), 2);
    window.view()->setFocusTable("arrival");
    EXPECT_EQ(offered(window, "joinMenu"), (QStringList{"site", "assoc", "event", few}));
    choose(window, "joinMenu", few);
    EXPECT_EQ(boxes.texts(), QStringList());
    EXPECT_EQ(rows(window), 2);
}

TEST_F(Derive, subsetsSortsGroupsAndUngroups)
{
    MainWindow &window = opened("arrival");
    User user;
    EXPECT_FALSE(action(window, "ungroup").isEnabled());
    user.types("phase == 'P'");
    action(window, "subset").trigger();
    EXPECT_EQ(rows(window), 3);
    const auto chooses = [](const QString &field) {
        return [field](QListChooserDialog &dialog) {
            auto *fields = dialog.findChild<QListWidget *>("fields");
            auto *found = fields->findItems(field, Qt::MatchEndsWith).value(0);
            ASSERT_NE(found, nullptr);
            emit fields->itemDoubleClicked(found);
            dialog.accept();
        };
    };
    user.meets<QListChooserDialog>(chooses("sta"));
    action(window, "sort").trigger();
    EXPECT_EQ(rows(window), 3);
    user.meets<QListChooserDialog>(chooses("sta"));
    action(window, "group").trigger();
    EXPECT_EQ(rows(window), 3);
    EXPECT_TRUE(action(window, "ungroup").isEnabled());
    action(window, "ungroup").trigger();
    EXPECT_EQ(rows(window), 3);
    EXPECT_FALSE(action(window, "ungroup").isEnabled());
    EXPECT_EQ(window.page(1)->count(), 4);
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(Derive, thetaJoinsOnAnExpression)
{
    MainWindow &window = opened("arrival");
    User user;
    user.types("arrival.sta != site.sta && lat > 50");
    choose(window, "thetaJoinMenu", "site");
    EXPECT_EQ(boxes.texts(), QStringList());
    EXPECT_EQ(rows(window), 3);
}

TEST_F(Derive, asksForNamesWhileTheSwitchIsOn)
{
    MainWindow &window = opened("arrival");
    EXPECT_FALSE(action(window, "request_view_names").isChecked());
    action(window, "request_view_names").trigger();
    User user;
    user.types("mine");
    choose(window, "joinMenu", "site");
    EXPECT_EQ(shown(window), "mine");
    window.view()->setFocusTable("arrival");
    user.types("mine");
    choose(window, "joinMenu", "assoc");
    ASSERT_EQ(boxes.texts().size(), 1) << "the name is taken";
    EXPECT_TRUE(boxes.texts().first().contains("mine")) << boxes.texts().first().toStdString();
    EXPECT_EQ(shown(window), "arrival");
    EXPECT_EQ(window.page(1)->count(), 1);
}

TEST_F(Derive, closesViews)
{
    MainWindow &window = opened("arrival");
    EXPECT_FALSE(action(window, "closeTab").isEnabled()) << "tables stay";
    choose(window, "joinMenu", "site");
    const QString joined = shown(window);
    EXPECT_TRUE(action(window, "closeTab").isEnabled());
    action(window, "closeTab").trigger();
    settle();
    EXPECT_EQ(window.view()->getCurrentStackIndex(), 0);
    EXPECT_FALSE(window.model()->getViewNames().contains(joined));
    EXPECT_FALSE(action(window, "closeTab").isEnabled());
}

TEST_F(Derive, arrangesColumnsAndGoesToRows)
{
    MainWindow &window = opened("arrival");
    User user;
    user.meets<QListChooserDialog>([](QListChooserDialog &dialog) {
        dialog.clearAll();
        auto *fields = dialog.findChild<QListWidget *>("fields");
        for (const char *name : {"phase", "sta"}) {
            emit fields->itemDoubleClicked(fields->findItems(name, Qt::MatchExactly).value(0));
        }
        dialog.accept();
    });
    action(window, "arrange").trigger();
    OrvaneTableView *table = window.view()->getCurrentTableView();
    EXPECT_EQ(table->getFieldNamesVisible(), (QList<QString>{"phase", "sta"}));
    user.meets<QInputDialog>([](QInputDialog &dialog) {
        EXPECT_EQ(dialog.intMaximum(), 3);
        dialog.setIntValue(2);
        dialog.accept();
    });
    action(window, "goToRow").trigger();
    EXPECT_EQ(boxes.texts(), QStringList());
}

TEST_F(Derive, keepsTheHistoryOfExpressions)
{
    MainWindow &window = opened("arrival");
    User user;
    user.types("phase == 'S'");
    action(window, "subset").trigger();
    Application later(settings);
    EXPECT_EQ(later.config()["expression_history"].toStringList(), QStringList{"phase == 'S'"});
}

// The window as it was, a sentence above the tables, and no box.
TEST_F(Derive, canBeCancelled)
{
    std::vector<TemporaryDatabase::Row> many;
    for (int i = 0; i < 40000; ++i) {
        many.push_back({"S" + std::to_string(i % 1000), std::to_string(i) + ".5", std::to_string(i)});
    }
    files.addTable("arrival", many);
    many.clear();
    for (int i = 0; i < 40000; ++i) {
        many.push_back({"S" + std::to_string(i % 1000), "2001001", "-1", std::to_string(i % 90)});
    }
    files.addTable("site", many);
    struct Cancelling : QObject {
        bool eventFilter(QObject *watched, QEvent *event) override
        {
            auto *dialog = qobject_cast<ProgressDialog *>(watched);
            if (dialog != nullptr && event->type() == QEvent::Show) {
                QMetaObject::invokeMethod(dialog, "reject", Qt::QueuedConnection);
            }
            auto *box = qobject_cast<QMessageBox *>(watched);
            if (box != nullptr && event->type() == QEvent::Show) {
                boxesSeen += box->testAttribute(Qt::WA_DontShowOnScreen) ? 0 : 1;
            }
            return false;
        }
        int boxesSeen = 0;
    } cancelling;
    MainWindow &window = opened("arrival");
    qApp->installEventFilter(&cancelling);
    User user;
    user.types("sin(time * lat) == 7");
    choose(window, "thetaJoinMenu", "site");
    settle();
    EXPECT_EQ(cancelling.boxesSeen, 0);
    EXPECT_EQ(shown(window), "arrival");
    EXPECT_EQ(window.page(1)->count(), 0);
    EXPECT_EQ(window.model()->getViewNames(), QList<QString>());
    EXPECT_EQ(window.findChild<QLabel *>("noticeText")->text(), "The theta join of arrival was cancelled.");
    program.problems().collect();
    EXPECT_EQ(program.problems().problems(), QStringList());
}

} // namespace
