// Models of views: who frees the view, and when.

#include "open_database.h"

#include <QPointer>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

struct ViewModel : testing::Test {
    OpenSites sites;
    OrvaneTableModel &site = *sites.table();

    // The model of a view of the sites.
    QPointer<OrvaneTableModel> southern() const
    {
        delete site.getQDbptr()->subset("lat < 50", "southern");
        return sites.table("southern");
    }
};

TEST_F(ViewModel, ShowsTheRecordsOfItsView)
{
    const auto view = southern();
    ASSERT_TRUE(view);
    EXPECT_TRUE(view->tableIsView());
    EXPECT_EQ(view->rowCount(), 2);
    EXPECT_EQ(view->getViewTables(), QList<QString>{"site"});
    EXPECT_EQ(view->columnCount(), site.columnCount());
    EXPECT_EQ(view->data(view->index(1, 1)), QVariant("ANMO"));
}

TEST_F(ViewModel, FreesTheViewWhenTheViewIsDeleted)
{
    const auto view = southern();
    delete site.getQDbptr()->sort("lat", "by_latitude", true, false);
    ASSERT_EQ(sites.model->getViewNames(), (QList<QString>{"southern", "by_latitude"}));
    sites.model->deleteView("southern");
    EXPECT_FALSE(view);
    EXPECT_EQ(sites.model->getViewNames(), QList<QString>{"by_latitude"});
    EXPECT_EQ(sites.table("southern"), nullptr);
    sites.model->deleteView("by_latitude"); // nobody has asked for its model
    EXPECT_TRUE(sites.model->getViewNames().isEmpty());
    EXPECT_EQ(sites.model->getTableNames(), QList<QString>{"site"});
    EXPECT_EQ(sites.table(), &site);
    EXPECT_EQ(site.rowCount(), 3);
}

TEST_F(ViewModel, LeavesAViewOfItsViewUsable)
{
    southern();
    delete sites.table("southern")->getQDbptr()->subset("lat > 40", "middle");
    OrvaneTableModel &middle = *sites.table("middle");
    sites.model->deleteView("southern");
    EXPECT_EQ(middle.rowCount(), 1);
    EXPECT_EQ(middle.data(middle.index(0, 1)), QVariant("AAK"));
}

TEST_F(ViewModel, LeavesAViewOfItsGroupsUsable)
{
    OrvaneTableModel &groups = *site.group({"offdate"}, "groups");
    ASSERT_EQ(groups.rowCount(), 2);
    OrvaneTableModel &sorted = *groups.sort({"offdate"}, true, false, "sorted");
    sites.model->deleteView("groups");
    EXPECT_EQ(sorted.getTableFields(), (QList<QString>{"groups.offdate", "groups.bundle"}));
    EXPECT_EQ(sorted.getViewTables(), QList<QString>{"groups"});
    EXPECT_EQ(sorted.columnCount(), 3);
    EXPECT_EQ(sorted.headerData(1, Qt::Horizontal), QVariant("offdate"));
    EXPECT_EQ(sorted.headerData(2, Qt::Horizontal, Qt::UserRole), QVariant("bundle"));
    EXPECT_FALSE(sorted.headerData(2, Qt::Horizontal, Qt::ToolTipRole).toString().isEmpty());
    EXPECT_FALSE(sorted.headerData(0, Qt::Vertical, Qt::ToolTipRole).toString().isEmpty());
    EXPECT_FALSE(sorted.getTableToolTipString().isEmpty());
    EXPECT_EQ(sorted.data(sorted.index(0, 1)), QVariant("2012366"));
    EXPECT_EQ(sorted.data(sorted.index(0, 2)), QVariant("2-3"));
    EXPECT_EQ(sorted.data(sorted.index(1, 2)), QVariant("0-2"));
    EXPECT_EQ(sorted.getColumnType(2), dbDBPTR);
    EXPECT_GT(sorted.approxColumnWidthChars(2), 0);
    EXPECT_EQ(sorted.getNonNullTableFields().size(), 2);
    EXPECT_EQ(sites.model->getViewNamesSkipFacades(), QList<QString>{"sorted"});
    EXPECT_EQ(sites.table("groups"), nullptr);
    sites.model->deleteView("groups");
    sorted.sort(1);
    EXPECT_EQ(sorted.data(sorted.index(1, 2)), QVariant("2-3"));
    EXPECT_EQ(sorted.subset("offdate > 0", "closed")->rowCount(), 1);
    EXPECT_EQ(elog_count(), 0);
    sites.model->deleteView("sorted");
    EXPECT_EQ(sites.table("closed")->data(sites.table("closed")->index(0, 2)), QVariant("2-3"));
}

TEST_F(ViewModel, AnnouncesNoResetWhenItGoes)
{
    const auto view = southern();
    QObject::connect(view->getQDbptr(), SIGNAL(dataChanged()), view, SIGNAL(modelReset()));
    QSignalSpy changed(view->getQDbptr(), &QDbptr::dataChanged);
    QSignalSpy own(view, SIGNAL(modelReset()));
    QSignalSpy inherited(view, &QAbstractItemModel::modelReset);
    sites.model->deleteView("southern");
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(own.count() + inherited.count(), 0);
}

TEST_F(ViewModel, GoesQuietlyWhenItsViewIsGoneAlready)
{
    const auto view = southern();
    auto another = std::make_unique<OrvaneTableModel>(
        sites.model.get(), sites.model->getQDbptr()->lookupTable("southern"), sites.config);
    sites.model->deleteView("southern");
    EXPECT_NO_THROW(another.reset());
    EXPECT_EQ(site.rowCount(), 3);
    elog_clear(); // the library says that the pointer is stale
}

TEST_F(ViewModel, OfAClosedDatabaseFreesNothing)
{
    auto another = std::make_unique<OrvaneTableModel>(
        sites.model.get(), site.getQDbptr()->subset("lat < 50", "southern"), sites.config);
    sites.model->close();
    elog_clear();
    EXPECT_NO_THROW(another.reset());
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(ViewModel, IsLeftOutOfTheNamesWithoutFacadesOnceItIsOne)
{
    const auto view = southern();
    EXPECT_EQ(sites.model->getViewNamesSkipFacades(), QList<QString>{"southern"});
    view->setIsFacadeOf(&site);
    EXPECT_TRUE(sites.model->getViewNamesSkipFacades().isEmpty());
    EXPECT_EQ(sites.model->getViewNames(), QList<QString>{"southern"});
}

} // namespace
