// Finding rows by an expression.
#include "finding.h"

#include <QLabel>

#include "notice_bar.h"
#include "running_program.h"
#include "support/user.h"

namespace {

class FindingRows : public RunningProgram
{
protected:
    FindingRows()
    {
        files.addTable("site", {{"AAK", "2008001", "-1", "42.6390", "74.4940"},
                                {"KONO", "2001001", "-1", "59.6491", "9.5982"},
                                {"ANTO", "2001001", "-1", "39.8680", "32.7934"},
                                {"AAK", "1990001", "2007366", "42.6390", "74.4940"}});
        window = program.openDatabase(path("site"), "r", nullptr);
        if (window == nullptr) {
            throw std::runtime_error("the database was not opened");
        }
    }

    OrvaneTableView &view() { return *window->view()->getCurrentTableView(); }
    int row() { return view().currentIndex().row(); }
    void goTo(int row) { view().setCurrentIndex(view().model()->index(row, 2)); }

    void find(const QString &expression)
    {
        User user;
        user.types(expression);
        action(*window, "find").trigger();
    }

    // What stands above the tables.
    QString told()
    {
        const auto *bar = window->findChild<NoticeBar *>();
        QStringList texts;
        for (const QLabel *label : bar->findChildren<QLabel *>()) {
            if (label->isVisible() && !label->text().isEmpty()) {
                texts.append(label->text());
            }
        }
        return texts.join(" ");
    }

    MainWindow *window = nullptr;
};

TEST_F(FindingRows, beginsAtTheCurrentRowAndGoesOnFromThere)
{
    goTo(0);
    find("sta == 'AAK'");
    EXPECT_EQ(row(), 0) << "where one is counts";
    EXPECT_TRUE(view().selectionModel()->isSelected(view().currentIndex()));
    EXPECT_EQ(view().currentIndex().column(), 2) << "the column stays";
    action(*window, "findNext").trigger();
    EXPECT_EQ(row(), 3);
    EXPECT_EQ(told(), "");
    action(*window, "findPrevious").trigger();
    EXPECT_EQ(row(), 0);
}

TEST_F(FindingRows, goesRoundTheEndsAndSaysSo)
{
    goTo(2);
    find("lat > 50");
    EXPECT_EQ(row(), 1);
    EXPECT_TRUE(told().contains("from the first row")) << told().toStdString();
    goTo(0);
    action(*window, "findPrevious").trigger();
    EXPECT_EQ(row(), 1);
    EXPECT_TRUE(told().contains("from the last row")) << told().toStdString();
    action(*window, "findNext").trigger();
    EXPECT_EQ(row(), 1) << "the only one";
}

TEST_F(FindingRows, staysWhereItIsWhenThereIsNone)
{
    goTo(2);
    find("lat > 80");
    EXPECT_EQ(row(), 2);
    EXPECT_TRUE(told().contains("lat > 80")) << told().toStdString();
}

TEST_F(FindingRows, tellsWhatIsWrongWithAnExpression)
{
    goTo(2);
    find("latt > 80");
    EXPECT_EQ(row(), 2);
    ASSERT_EQ(boxes.texts().size(), 1);
    EXPECT_TRUE(boxes.texts().first().contains("nknown field")) << boxes.texts().first().toStdString();
    EXPECT_TRUE(boxes.texts().first().contains("'latt > 80'"));
    EXPECT_FALSE(boxes.texts().first().contains("<p>")) << "the box shows what it is given as it stands";
    User user;
    user.types("lat > 50");
    action(*window, "findNext").trigger();
    EXPECT_EQ(row(), 1) << "asked for anew";
}

TEST_F(FindingRows, worksInASortedTable)
{
    view().model()->sort(1, Qt::AscendingOrder); // AAK, AAK, ANTO, KONO
    goTo(0);
    find("sta == 'ANTO'");
    EXPECT_EQ(row(), 2);
    find("sta == 'AAK' && ondate == 2008001");
    EXPECT_LT(row(), 2);
    EXPECT_EQ(view().model()->index(row(), 2).data().toString(), "2008001") << "ondate";
}

TEST_F(FindingRows, asksAtFirstForTheNextOne)
{
    goTo(0);
    User user;
    user.types("lat < 40");
    action(*window, "findNext").trigger();
    EXPECT_EQ(row(), 2);
}

} // namespace
