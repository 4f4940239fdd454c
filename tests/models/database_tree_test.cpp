#include "open_database.h"

#include <QBrush>
#include <QColor>
#include <gtest/gtest.h>
#include <orvane/util.h>

#include <qovutil.h>

namespace {

const QStringList schemaTables = {"site", "origin", "arrival", "assoc", "event", "remark", "kinds"};

struct DatabaseTree : testing::Test {
    OpenSites sites;
    OrvaneDatabaseModel &model = *sites.model;
    const QModelIndex site = model.index(0, 0);

    QModelIndex at(const QString &table) const { return model.index(schemaTables.indexOf(table), 0); }
};

TEST_F(DatabaseTree, ListsTheTablesOfTheSchemaInTheirOrder)
{
    ASSERT_EQ(model.rowCount(), schemaTables.size());
    EXPECT_EQ(model.columnCount(), 1);
    QStringList shown;
    for (int row = 0; row < model.rowCount(); ++row)
        shown.append(model.data(model.index(row, 0)).toString());
    EXPECT_EQ(shown, schemaTables);
}

TEST_F(DatabaseTree, HasATableUnderEachIndex)
{
    QDbptr *table = model.indexToQDbptr(site);
    EXPECT_EQ(table->getDbptrType(), DbptrTable);
    EXPECT_EQ(table->getTableName(), "site");
    EXPECT_EQ(model.indexToQDbptr(model.index(0, 0)), table);
    const std::unique_ptr<QDbptr> none(model.indexToQDbptr(QModelIndex()));
    EXPECT_FALSE(none->isValid());
}

TEST_F(DatabaseTree, CountsTheFieldsOfATable)
{
    EXPECT_EQ(model.rowCount(site), 8);
    EXPECT_TRUE(model.hasChildren());
    EXPECT_TRUE(model.hasChildren(site));
}

TEST_F(DatabaseTree, HasNoIndexOutsideItsRowsAndColumn)
{
    EXPECT_FALSE(model.index(0, 1).isValid());
    EXPECT_FALSE(model.index(-1, 0).isValid());
    EXPECT_FALSE(model.index(schemaTables.size(), 0).isValid());
}

// The fields of a table are looked up through the database, which has none of its own.
TEST_F(DatabaseTree, GivesNoIndexForAField)
{
    EXPECT_FALSE(model.index(0, 0, site).isValid());
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(DatabaseTree, GivesATableItsOwnPlaceAsParent)
{
    const QModelIndex assoc = at("assoc");
    const QModelIndex parent = model.parent(assoc);
    EXPECT_EQ(parent.row(), 3);
    EXPECT_EQ(parent.internalPointer(), assoc.internalPointer());
    EXPECT_FALSE(model.parent(QModelIndex()).isValid());
}

TEST_F(DatabaseTree, ColoursTablesWithoutAFileWhileNullsAreColoured)
{
    sites.table(); // sets the defaults of the colours
    EXPECT_FALSE(model.data(site, Qt::BackgroundRole).isValid());
    EXPECT_EQ(model.data(at("origin"), Qt::BackgroundRole).value<QBrush>(),
              QBrush(QColor("lightgray"), Qt::SolidPattern));
    sites.config.configure("background_null_color", QString("red"));
    EXPECT_EQ(model.data(at("origin"), Qt::BackgroundRole).value<QBrush>().color(), QColor(Qt::red));
    sites.config.configure("show_nulls_background_colored", false);
    const QVariant plain = model.data(at("origin"), Qt::BackgroundRole);
    ASSERT_TRUE(plain.isValid());
    EXPECT_EQ(plain.value<QBrush>(), QBrush());
    EXPECT_TRUE(model.data(site, Qt::BackgroundRole).isValid());
}

TEST_F(DatabaseTree, ShowsTooltipsWhenTheyAreSwitchedOn)
{
    sites.config.configure("show_tooltips", true);
    EXPECT_EQ(model.data(site, Qt::ToolTipRole).toString(),
              qovutil_getToolTipString(model.indexToQDbptr(site), nullptr));
    EXPECT_EQ(model.headerData(0, Qt::Horizontal, Qt::ToolTipRole).toString(),
              qovutil_getToolTipString(model.getQDbptr(), nullptr));
    sites.config.configure("show_tooltips", false);
    EXPECT_FALSE(model.data(site, Qt::ToolTipRole).isValid());
    EXPECT_FALSE(model.headerData(0, Qt::Horizontal, Qt::ToolTipRole).isValid());
}

TEST_F(DatabaseTree, AnswersNoOtherRoles)
{
    for (int role : {Qt::DecorationRole, Qt::EditRole, Qt::CheckStateRole, Qt::FontRole, Qt::UserRole})
        EXPECT_FALSE(model.data(site, role).isValid()) << role;
}

TEST_F(DatabaseTree, IsHeadedByTheDatabaseName)
{
    EXPECT_EQ(model.headerData(0, Qt::Horizontal).toString(), sites.files.name());
    EXPECT_FALSE(model.headerData(1, Qt::Horizontal).isValid());
    EXPECT_FALSE(model.headerData(0, Qt::Vertical).isValid());
    EXPECT_FALSE(model.headerData(0, Qt::Horizontal, Qt::SizeHintRole).isValid());
}

TEST_F(DatabaseTree, IsEmptyOnceTheDatabaseIsClosed)
{
    QDbptr *table = model.indexToQDbptr(site);
    model.close();
    EXPECT_FALSE(table->isValid());
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_EQ(model.rowCount(site), 0);
    EXPECT_FALSE(model.hasChildren());
    EXPECT_FALSE(model.index(0, 0).isValid());
    EXPECT_FALSE(model.parent(site).isValid());
    EXPECT_FALSE(model.data(site).isValid());
    EXPECT_FALSE(model.headerData(0, Qt::Horizontal).isValid());
}

} // namespace
