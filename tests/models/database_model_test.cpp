#include "open_database.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <orvane/util.h>

namespace {

using ::testing::HasSubstr;

QTimer &timerOf(OrvaneDatabaseModel &model)
{
    const QList<QTimer *> timers = model.findChildren<QTimer *>();
    if (timers.size() != 1)
        throw std::runtime_error("not one timer");
    return *timers.first();
}

OvConfig &withoutAutoOpen(OvConfig &config)
{
    config.configure("auto_open", false);
    return config;
}

TEST(DatabaseModelRegistry, GivesTheSameModelOnceItIsOpen)
{
    Sites files;
    OvConfig config;
    std::unique_ptr<OrvaneDatabaseModel> first(
        OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(config, files.name(), "r"));
    ASSERT_TRUE(first->isOpen());
    EXPECT_EQ(OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(config, files.name(), "r+"), first.get());
}

TEST(DatabaseModelRegistry, GivesANewModelWhileNoneIsOpen)
{
    Sites files;
    OvConfig config;
    withoutAutoOpen(config);
    std::unique_ptr<OrvaneDatabaseModel> first(
        OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(config, files.name(), "r"));
    std::unique_ptr<OrvaneDatabaseModel> second(
        OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(config, files.name(), "r"));
    EXPECT_FALSE(first->isOpen());
    EXPECT_NE(first, second);
    first->open();
    EXPECT_EQ(OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(config, files.name(), "r"), first.get());
}

TEST(DatabaseModelRegistry, KeepsAClosedModelAndForgetsADestroyedOne)
{
    Sites files;
    OvConfig config;
    auto first = std::make_unique<OrvaneDatabaseModel>(config, files.name(), "r");
    first->close();
    EXPECT_EQ(OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(config, files.name(), "r"), first.get());
    first.reset();
    withoutAutoOpen(config);
    std::unique_ptr<OrvaneDatabaseModel> second(
        OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(config, files.name(), "r"));
    EXPECT_FALSE(second->isOpen());
}

TEST(DatabaseModelRegistry, LosesOnlyTheEntryOfTheModelThatIsDestroyed)
{
    Sites files;
    OvConfig config;
    auto first = std::make_unique<OrvaneDatabaseModel>(config, files.name(), "r");
    OrvaneDatabaseModel second(config, files.name(), "r"); // takes the entry over
    first.reset();
    EXPECT_EQ(OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(config, files.name(), "r"), &second);
}

TEST(DatabaseModelOpening, SetsItsDefaultsAndLeavesTheHostsAlone)
{
    OvConfig config;
    config.configure("show_empty_columns", true);
    OrvaneDatabaseModel model(config, "", "r");
    EXPECT_EQ(config["auto_open"], QVariant(true));
    EXPECT_EQ(config["show_empty_columns"], QVariant(true));
    EXPECT_EQ(config["default_table"], QVariant(QVariantMap()));
}

TEST(DatabaseModelOpening, WithoutANameThrows)
{
    OvConfig config;
    OrvaneDatabaseModel model(config, "", "r");
    try {
        model.open();
        FAIL() << "opened a database without a name";
    } catch (const std::runtime_error &error) {
        EXPECT_STREQ(error.what(),
                     "OrvaneDatabaseModel::open: Unable to open database, database name passed to "
                     "constructor is empty");
    }
}

TEST(DatabaseModelOpening, OfAMissingDatabaseLeavesTheModelClosedWithTheReason)
{
    Sites files;
    OvConfig config;
    const QString name = files.name() + "-missing";
    OrvaneDatabaseModel model(config, name, "r");
    EXPECT_FALSE(model.isOpen());
    EXPECT_FALSE(model.open());
    EXPECT_THAT(model.openError().toStdString(), HasSubstr("Failed to open database '" + name.toStdString()));
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_EQ(model.getTableModel("site"), nullptr);
    EXPECT_TRUE(model.getDatabaseName().isEmpty());
    EXPECT_TRUE(model.getTableNames().isEmpty());
    EXPECT_TRUE(model.getViewNamesSkipFacades().isEmpty());
    EXPECT_LT(model.getDbptr().database, 0);

    withoutAutoOpen(config);
    std::unique_ptr<OrvaneDatabaseModel> other(
        OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(config, name, "r"));
    EXPECT_NE(other.get(), &model);
}

TEST(DatabaseModelOpening, OfAnUnusableDescriptorGivesAReason)
{
    Sites files;
    files.writeFile("quakes", "schema: [unclosed");
    OvConfig config;
    OrvaneDatabaseModel model(config, files.name(), "r");
    EXPECT_FALSE(model.isOpen());
    EXPECT_THAT(model.openError().toStdString(), HasSubstr("quakes"));
}

TEST(DatabaseModelOpening, PointsAtAllTables)
{
    OpenSites sites;
    const Dbptr all = sites.model->getDbptr();
    EXPECT_GE(all.database, 0);
    EXPECT_EQ(all.table, dbALL);
    EXPECT_EQ(all.field, dbALL);
    EXPECT_EQ(all.record, dbALL);
    EXPECT_EQ(sites.model->getQDbptr()->getDbptrType(), DbptrDatabase);
    EXPECT_EQ(sites.model->getInitialTableName(), "");
    EXPECT_EQ(sites.model->openError(), "");
}

TEST(DatabaseModelOpening, OfATableKeepsItsNameAsTheInitialTable)
{
    Sites files;
    OvConfig config;
    OrvaneDatabaseModel model(config, files.name() + ".site", "r");
    EXPECT_EQ(model.getInitialTableName(), "site");
    EXPECT_EQ(model.getQDbptr()->getDbptrType(), DbptrDatabase);
}

TEST(DatabaseModelOpening, TellsOwnAndInheritedSignals)
{
    Sites files;
    OvConfig config;
    OrvaneDatabaseModel model(withoutAutoOpen(config), files.name(), "r");
    QSignalSpy before(&model, SIGNAL(modelAboutToBeReset()));
    QSignalSpy after(&model, SIGNAL(modelReset()));
    QSignalSpy inheritedBefore(&model, &QAbstractItemModel::modelAboutToBeReset);
    QSignalSpy inheritedAfter(&model, &QAbstractItemModel::modelReset);
    model.open();
    for (const QSignalSpy *spy : {&before, &after, &inheritedBefore, &inheritedAfter})
        EXPECT_EQ(spy->count(), 1);
    model.close();
    for (const QSignalSpy *spy : {&before, &after, &inheritedBefore, &inheritedAfter})
        EXPECT_EQ(spy->count(), 2);
    model.close();
    EXPECT_EQ(after.count(), 2);
}

TEST(DatabaseModelOpening, AgainAfterClosingGivesNewTableModels)
{
    OpenSites sites;
    OrvaneTableModel *old = sites.table();
    sites.model->close();
    EXPECT_EQ(old->rowCount(), 0);
    EXPECT_EQ(sites.table(), nullptr);
    ASSERT_TRUE(sites.model->open());
    EXPECT_NE(sites.table(), old);
    EXPECT_EQ(sites.table()->rowCount(), 3);
    EXPECT_EQ(old->rowCount(), 0);
}

TEST(DatabaseModelOpening, FailingLaterUnregistersTheModel)
{
    OpenSites sites;
    sites.files.writeFile("quakes", "schema: nowhere");
    EXPECT_FALSE(sites.model->open());
    EXPECT_FALSE(sites.model->isOpen());
    EXPECT_FALSE(sites.model->openError().isEmpty());
    withoutAutoOpen(sites.config);
    std::unique_ptr<OrvaneDatabaseModel> other(
        OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(sites.config, sites.files.name(), "r"));
    EXPECT_NE(other, sites.model);
}

TEST(DatabaseModelClosing, ByDestructionLeavesTableModelsAliveAndEmpty)
{
    OpenSites sites;
    const QPointer<OrvaneTableModel> table = sites.table();
    const QPointer<QDbptr> handle = sites.model->getQDbptr();
    const QModelIndex sta = table->indexForCell(0, "sta");
    const QPointer<QDbptr> cell = static_cast<QDbptr *>(sta.internalPointer());
    ASSERT_TRUE(cell->isValid());
    sites.model.reset();
    ASSERT_TRUE(table);
    EXPECT_EQ(table->rowCount(), 0);
    EXPECT_EQ(table->columnCount(), 0);
    EXPECT_EQ(table->getParent(), nullptr);
    EXPECT_FALSE(table->data(sta).isValid());
    EXPECT_FALSE(table->headerData(1, Qt::Horizontal).isValid());
    ASSERT_TRUE(handle);
    EXPECT_FALSE(handle->isValid());
    ASSERT_TRUE(cell);
    EXPECT_FALSE(cell->isValid());
}

TEST(DatabaseModelNames, AreThoseOfTheHandle)
{
    OpenSites sites;
    EXPECT_EQ(sites.model->getDatabaseName(), sites.files.name());
    EXPECT_EQ(sites.model->getDatabaseFileName(), sites.files.name());
    EXPECT_EQ(sites.model->getSchemaName(), "small");
    EXPECT_EQ(sites.model->getTableNames(), QList<QString>{"site"});
    EXPECT_EQ(sites.model->getEmptyTableNames(),
              (QList<QString>{"origin", "arrival", "assoc", "event", "remark", "kinds"}));
    EXPECT_TRUE(sites.model->getViewNames().isEmpty());
    EXPECT_TRUE(sites.model->getViewNamesSkipFacades().isEmpty());
}

TEST(DatabaseModelTables, AreMadeOnceAndAnnounced)
{
    OpenSites sites;
    QSignalSpy added(sites.model.get(), SIGNAL(tableAdded(OrvaneTableModel *)));
    OrvaneTableModel *site = sites.model->getTableModel("site");
    ASSERT_TRUE(site);
    ASSERT_EQ(added.count(), 1);
    EXPECT_EQ(added[0][0].value<OrvaneTableModel *>(), site);
    EXPECT_EQ(sites.model->getTableModel("site"), site);
    EXPECT_EQ(added.count(), 1);
    EXPECT_EQ(site->parent(), static_cast<QObject *>(nullptr));
}

TEST(DatabaseModelTables, OfAnUnknownNameAreNull)
{
    OpenSites sites;
    elog_clear();
    EXPECT_EQ(sites.model->getTableModel("nosuchtable"), nullptr);
    EXPECT_EQ(sites.model->getTableModel("dbALL"), nullptr);
    EXPECT_EQ(elog_count(), 0);
}

TEST(DatabaseModelTables, OfTheEmptyNameIsOneModelWithoutRows)
{
    OpenSites sites;
    QSignalSpy added(sites.model.get(), SIGNAL(tableAdded(OrvaneTableModel *)));
    OrvaneTableModel *none = sites.model->getTableModel("");
    ASSERT_TRUE(none);
    EXPECT_EQ(sites.model->getTableModel(""), none);
    EXPECT_EQ(none->rowCount(), 0);
    EXPECT_EQ(none->columnCount(), 0);
    EXPECT_EQ(added.count(), 0);
}

TEST(DatabaseModelTables, HearOfLayoutChangesAndOfTheConfiguration)
{
    OpenSites sites;
    QSignalSpy changed(sites.table(), SIGNAL(layoutChanged()));
    emit sites.model->layoutChanged();
    EXPECT_EQ(changed.count(), 1);
    sites.config.configure("show_raw_nulls", true);
    EXPECT_GT(changed.count(), 1);
}

TEST(DatabaseModelTables, DeleteViewLeavesBaseTablesAlone)
{
    OpenSites sites;
    const QPointer<OrvaneTableModel> site = sites.table();
    sites.model->deleteView("site");
    sites.model->deleteView("nosuchtable");
    EXPECT_TRUE(site);
    EXPECT_EQ(sites.table(), site);
}

TEST(DatabaseModelPolling, SaysNothingTheFirstTimeAndDatabaseCheckedAfterwards)
{
    Sites files;
    OvConfig config;
    OrvaneDatabaseModel model(withoutAutoOpen(config), files.name(), "r");
    QSignalSpy checked(&model, SIGNAL(databaseChecked()));
    QSignalSpy changed(&model, SIGNAL(tableChanged(OrvaneTableModel *)));
    model.checkForUpdates();
    EXPECT_EQ(checked.count(), 0);
    model.open();
    EXPECT_EQ(checked.count(), 0);
    model.checkForUpdates();
    EXPECT_EQ(checked.count(), 1);
    EXPECT_EQ(changed.count(), 0);
}

struct Polling : testing::Test {
    OpenSites sites;
    QSignalSpy added{sites.model.get(), SIGNAL(tableAdded(OrvaneTableModel *))};
    QSignalSpy changed{sites.model.get(), SIGNAL(tableChanged(OrvaneTableModel *))};
    QSignalSpy removed{sites.model.get(), SIGNAL(tableRemoved(QString))};

    void check()
    {
        for (QSignalSpy *spy : {&added, &changed, &removed})
            spy->clear();
        sites.model->checkForUpdates();
    }
};

TEST_F(Polling, TellsOfATableThatAppears)
{
    OrvaneTableModel *origin = sites.table("origin");
    EXPECT_EQ(origin->rowCount(), 0);
    sites.files.addTable("origin", {{"42.0", "74.0", "10.0", "1517961600.0", "1"}});
    check();
    ASSERT_EQ(added.count(), 1);
    EXPECT_EQ(added[0][0].value<OrvaneTableModel *>(), origin);
    EXPECT_EQ(changed.count() + removed.count(), 0);
    EXPECT_EQ(origin->rowCount(), 1);
}

TEST_F(Polling, TellsTwiceOfATableThatNobodyAskedForBefore)
{
    sites.files.addTable("origin", {});
    check();
    EXPECT_EQ(added.count(), 2);
}

TEST_F(Polling, TellsOfALaterTimeAndNotOfAnEarlierOne)
{
    sites.files.setModificationTime("site", 1000000000.25);
    check();
    EXPECT_EQ(changed.count(), 0);
    sites.files.setModificationTime("site", 1000000000.75);
    check();
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed[0][0].value<OrvaneTableModel *>(), sites.table());
    EXPECT_EQ(removed.count(), 0);
    check();
    EXPECT_EQ(changed.count(), 0);
}

TEST_F(Polling, TellsOfATableThatVanishesAndComesBack)
{
    OrvaneTableModel *site = sites.table();
    std::filesystem::remove(sites.files.tablePath("site"));
    check();
    ASSERT_EQ(removed.count(), 1);
    EXPECT_EQ(removed[0][0].toString(), "site");
    EXPECT_EQ(changed.count() + added.count(), 0);
    sites.files.addTable("site", siteRows());
    check();
    ASSERT_EQ(added.count(), 1);
    EXPECT_EQ(added[0][0].value<OrvaneTableModel *>(), site);
}

TEST_F(Polling, MakesTheModelOfATableThatAppearsForgetThatItWasEmptyBeforeTellingOfIt)
{
    OrvaneTableModel *origin = sites.table("origin");
    ASSERT_TRUE(origin->getNonNullTableFields().isEmpty()); // what it says is kept
    QSignalSpy reset(origin, SIGNAL(modelReset()));
    QStringList told;
    QObject::connect(sites.model.get(), &OrvaneDatabaseModel::tableAdded,
                     [&](OrvaneTableModel *table) { told = table->getNonNullTableFields(); });
    sites.files.addTable("origin", {{"42.0", "74.0", "10.0", "1517961600.0", "1"}});
    check();
    EXPECT_EQ(told, (QStringList{"lat", "lon", "depth", "time", "orid"}));
    EXPECT_EQ(reset.count(), 1);
}

TEST_F(Polling, ResetsTheTableModelThatChanged)
{
    QSignalSpy siteReset(sites.table(), SIGNAL(modelReset()));
    QSignalSpy originReset(sites.table("origin"), SIGNAL(modelReset()));
    sites.files.appendRows("site", {{"PFO", "2000001"}});
    sites.files.setModificationTime("site", std_now() + 10);
    check();
    EXPECT_EQ(siteReset.count(), 1);
    EXPECT_EQ(originReset.count(), 0);
    EXPECT_EQ(sites.table()->rowCount(), 4);
}

TEST(DatabaseModelTimer, FollowsTheInterval)
{
    OpenSites sites;
    QTimer &timer = timerOf(*sites.model);
    EXPECT_FALSE(timer.isActive());
    sites.config.configure("update_interval_sec", 2.5);
    EXPECT_TRUE(timer.isActive());
    EXPECT_EQ(timer.interval(), 2500);
    sites.config.configure("update_interval_sec", 0.0);
    EXPECT_FALSE(timer.isActive());
    sites.config.configure("update_interval_sec", 1e12);
    EXPECT_TRUE(timer.isActive());
    EXPECT_GT(timer.interval(), 0);
    sites.config.configure("update_interval_sec", -1.0);
    EXPECT_FALSE(timer.isActive());
}

TEST(DatabaseModelTimer, StartsWithTheDatabaseAndStopsWithIt)
{
    Sites files;
    OvConfig config;
    config.configure("update_interval_sec", QString("0.02"));
    OrvaneDatabaseModel model(config, files.name(), "r");
    QTimer &timer = timerOf(model);
    EXPECT_EQ(timer.interval(), 20);
    QSignalSpy checked(&model, SIGNAL(databaseChecked()));
    EXPECT_TRUE(checked.wait(5000));
    model.close();
    EXPECT_FALSE(timer.isActive());
}

} // namespace
