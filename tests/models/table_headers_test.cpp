#include "open_database.h"

#include <QFont>
#include <QFontMetrics>
#include <QSize>
#include <gtest/gtest.h>
#include <orvane/util.h>

#include <qovutil.h>

namespace {

struct TableHeaders : testing::Test {
    OpenSites sites;
    OrvaneTableModel &site = *sites.table();

    QVariant column(int section, int role = Qt::DisplayRole) const
    {
        return site.headerData(section, Qt::Horizontal, role);
    }
    QVariant row(int section, int role = Qt::DisplayRole) const
    {
        return site.headerData(section, Qt::Vertical, role);
    }
};

QSize sizeOf(const QString &text, const QFont &font)
{
    const QFontMetrics metrics(font);
    return {metrics.horizontalAdvance(text), metrics.height()};
}

TEST_F(TableHeaders, NameTheColumns)
{
    EXPECT_EQ(column(0), QVariant("recno"));
    EXPECT_EQ(column(1), QVariant("sta"));
    EXPECT_EQ(column(8), QVariant("lddate"));
    EXPECT_FALSE(column(9).isValid());
    EXPECT_FALSE(column(-1).isValid());
    EXPECT_EQ(column(4, Qt::UserRole), QVariant("lat"));
}

TEST_F(TableHeaders, OfTheRecordNumberAnswerOnlyItsName)
{
    for (int role : {Qt::ToolTipRole, Qt::SizeHintRole, Qt::UserRole, Qt::FontRole})
        EXPECT_FALSE(column(0, role).isValid()) << role;
}

TEST_F(TableHeaders, NumberTheRowsFromZero)
{
    EXPECT_EQ(row(0), QVariant(0));
    EXPECT_EQ(row(2), QVariant(2));
    EXPECT_EQ(row(0).type(), QVariant::Int);
}

TEST_F(TableHeaders, AnswerNoOtherRoles)
{
    for (int role : {Qt::FontRole, Qt::BackgroundRole, Qt::DecorationRole, Qt::TextAlignmentRole}) {
        EXPECT_FALSE(column(1, role).isValid()) << role;
        EXPECT_FALSE(row(1, role).isValid()) << role;
    }
    EXPECT_FALSE(row(1, Qt::UserRole).isValid());
}

TEST_F(TableHeaders, ShowTooltipsWhileTheyAreSwitchedOn)
{
    QDbptr *field = static_cast<QDbptr *>(site.indexForColumn("lat").internalPointer());
    EXPECT_EQ(column(4, Qt::ToolTipRole).toString(), qovutil_getToolTipString(field, nullptr));
    QDbptr *record = static_cast<QDbptr *>(site.indexForRow(1).internalPointer());
    EXPECT_EQ(row(1, Qt::ToolTipRole).toString(), qovutil_getToolTipString(record, &sites.config));
    // Rows are shown by the configuration, so their times read as in the cells.
    EXPECT_TRUE(row(0, Qt::ToolTipRole).toString().contains("02/07/2018 (038)"));
    sites.config.configure("show_tooltips", false);
    EXPECT_FALSE(column(4, Qt::ToolTipRole).isValid());
    EXPECT_FALSE(row(1, Qt::ToolTipRole).isValid());
}

TEST_F(TableHeaders, OfARecordThatIsGoneHaveNoTooltip)
{
    EXPECT_FALSE(row(3, Qt::ToolTipRole).isValid());
    EXPECT_FALSE(row(dbNULL, Qt::ToolTipRole).isValid());
}

TEST_F(TableHeaders, SizeColumnsByTheirValuesAndNames)
{
    EXPECT_EQ(site.approxColumnWidthChars(0), 6);
    EXPECT_EQ(site.approxColumnWidthChars(1), 5);  // "sta" and two more; the values are shorter
    EXPECT_EQ(site.approxColumnWidthChars(5), 9);  // "-152.5835"
    EXPECT_EQ(site.approxColumnWidthChars(7), 28); // "Albuquerque, New Mexico, USA"
    EXPECT_EQ(site.approxColumnWidthChars(99), 0);
    EXPECT_EQ(column(7, Qt::SizeHintRole).toSize(), sizeOf(QString(31, 'X'), QFont()));
}

TEST_F(TableHeaders, SizeTimesByTheFormatInTheLocalZone)
{
    EXPECT_EQ(site.approxColumnWidthChars(8), QString("01/01/1970 (001) 00:00:00.000000 UTC").length());
    sites.config.configure("time_string_format", QString("%Y %Z"));
    EXPECT_EQ(site.approxColumnWidthChars(8), QString("1970 UTC").length());
    sites.config.configure("local_time_zone", QString("Europe/Berlin"));
    EXPECT_EQ(site.approxColumnWidthChars(8), QString("1970 CET").length());
    sites.config.configure("time_string_format", QString("%y"));
    EXPECT_EQ(site.approxColumnWidthChars(8), QString("lddate").length() + 2);
}

TEST_F(TableHeaders, SizeRowsByTheirCount)
{
    EXPECT_EQ(row(0, Qt::SizeHintRole).toSize(), sizeOf("3XXX", QFont()));
}

TEST_F(TableHeaders, AreMeasuredInTheConfiguredFont)
{
    QFont large;
    large.setPointSize(40);
    EXPECT_NE(row(0, Qt::SizeHintRole).toSize(), sizeOf("3XXX", large));
    sites.config.configure("font", large);
    EXPECT_EQ(row(0, Qt::SizeHintRole).toSize(), sizeOf("3XXX", large));
    EXPECT_EQ(column(1, Qt::SizeHintRole).toSize(), sizeOf("XXXXXXXX", large));
}

TEST_F(TableHeaders, SampleAColumnAgainAfterAReset)
{
    std::vector<TemporaryDatabase::Row> longer = siteRows();
    longer[2].resize(7);
    longer[2][6] = std::string(45, 'x');
    EXPECT_EQ(site.approxColumnWidthChars(7), 28);
    sites.files.addTable("site", longer);
    emit site.modelReset();
    EXPECT_EQ(site.approxColumnWidthChars(7), 45);
}

TEST_F(TableHeaders, OfAnEmptyTableAreAsWideAsTheField)
{
    OrvaneTableModel &origin = *sites.table("origin");
    EXPECT_EQ(origin.approxColumnWidthChars(1), 9);
    EXPECT_EQ(origin.headerData(0, Qt::Vertical, Qt::SizeHintRole).toSize(), sizeOf("0XXX", QFont()));
}

} // namespace
