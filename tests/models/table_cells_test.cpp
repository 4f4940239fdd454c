#include "open_database.h"

#include <QBrush>
#include <QColor>
#include <QDateTime>
#include <QElapsedTimer>
#include <gtest/gtest.h>
#include <orvane/util.h>

namespace {

struct TableCells : testing::Test {
    OpenSites sites;
    OrvaneTableModel &site = *sites.table();

    QVariant at(int row, const char *field, int role = Qt::DisplayRole) const
    {
        return site.data(site.indexForCell(row, field), role);
    }

    QBrush background(int row, const char *field) const
    {
        const QVariant value = at(row, field, Qt::BackgroundRole);
        EXPECT_TRUE(value.isValid());
        return value.value<QBrush>();
    }
};

const QBrush gray(QColor("lightgray"), Qt::SolidPattern);

TEST_F(TableCells, GiveTheRowNumberInColumn0WhateverTheRole)
{
    for (int role :
         {Qt::DisplayRole, Qt::BackgroundRole, Qt::TextAlignmentRole, Qt::ToolTipRole, Qt::UserRole}) {
        EXPECT_EQ(site.data(site.index(0, 0), role), QVariant(0)) << role;
        EXPECT_EQ(site.data(site.index(2, 0), role), QVariant(2)) << role;
    }
}

TEST_F(TableCells, ShowTheTextWithoutBlanksAtItsEnds)
{
    EXPECT_EQ(at(0, "sta"), QVariant("AAK"));
    EXPECT_EQ(at(0, "lat"), QVariant("42.6390"));
    EXPECT_EQ(at(1, "staname"), QVariant("Albuquerque, New Mexico, USA"));
    EXPECT_EQ(at(2, "offdate"), QVariant("2012366"));
}

TEST_F(TableCells, ShowNullsEmptyOrAsTheyAreStored)
{
    EXPECT_FALSE(at(0, "offdate").isValid());
    EXPECT_FALSE(at(2, "elev").isValid());
    EXPECT_FALSE(at(0, "offdate", Qt::UserRole).isValid());
    sites.config.configure("show_raw_nulls", true);
    EXPECT_EQ(at(0, "offdate"), QVariant("-1"));
    EXPECT_EQ(at(2, "elev"), QVariant("-999.0000"));
    EXPECT_EQ(at(2, "staname"), QVariant("-"));
    EXPECT_EQ(at(0, "offdate", Qt::UserRole).toInt(), -1);
}

TEST_F(TableCells, ShowTimesReadableInUtcOrTheLocalZoneOrRaw)
{
    EXPECT_EQ(at(0, "lddate"), QVariant("02/07/2018 (038) 00:00:00.000000 UTC"));
    sites.config.configure("time_string_format", QString("%Y-%m-%dT%H:%M %Z"));
    EXPECT_EQ(at(0, "lddate"), QVariant("2018-02-07T00:00 UTC"));
    sites.config.configure("local_time_zone", QString("Asia/Bishkek"));
    EXPECT_EQ(at(0, "lddate"), QVariant("2018-02-07T00:00 UTC"));
    sites.config.configure("show_times_in_local_zone", true);
    EXPECT_EQ(at(0, "lddate").toString().left(16), "2018-02-07T06:00");
    sites.config.configure("show_readable_times", false);
    EXPECT_EQ(at(0, "lddate"), QVariant("1517961600.00000"));
}

TEST_F(TableCells, ShowTimesInUtcWhereTheZoneIsUnknownAndSayItOnce)
{
    int notices = 0;
    elog_set_notice_hook([](const char *, void *count) { ++*static_cast<int *>(count); }, &notices);
    sites.config.configure("time_string_format", QString("%H:%M %Z"));
    sites.config.configure("local_time_zone", QString("Nowhere/Atall"));
    sites.config.configure("show_times_in_local_zone", true);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(at(0, "lddate"), QVariant("00:00 UTC"));
    elog_set_notice_hook(nullptr, nullptr);
    EXPECT_EQ(notices, 1);
}

TEST_F(TableCells, AlignNumbersRightAndTextAndTimesLeft)
{
    OrvaneTableModel &kinds = *sites.table("kinds");
    const QList<int> alignments = {Qt::AlignRight, Qt::AlignRight, Qt::AlignRight, Qt::AlignLeft,
                                   Qt::AlignRight, Qt::AlignLeft,  Qt::AlignLeft};
    sites.files.addTable("kinds", {{}});
    emit kinds.modelReset();
    for (int i = 0; i < alignments.size(); ++i)
        EXPECT_EQ(kinds.data(kinds.index(0, i + 1), Qt::TextAlignmentRole), QVariant(alignments[i])) << i;
}

TEST_F(TableCells, ColourNullsWhileThatIsSwitchedOn)
{
    EXPECT_EQ(background(0, "offdate"), gray);
    EXPECT_EQ(background(0, "sta"), QBrush());
    sites.config.configure("background_null_color", QString("#102030"));
    EXPECT_EQ(background(0, "offdate"), QBrush(QColor("#102030"), Qt::SolidPattern));
    sites.config.configure("show_nulls_background_colored", false);
    EXPECT_EQ(background(0, "offdate"), QBrush());
    sites.config.configure("show_raw_nulls", true);
    sites.config.configure("show_nulls_background_colored", true);
    EXPECT_EQ(background(0, "offdate").color(), QColor("#102030"));
}

TEST_F(TableCells, ColourBlanksFromTheSingularKey)
{
    sites.files.addTable("site", {{"", "2008001"}, {"AAK", "2008001"}});
    emit site.modelReset();
    EXPECT_EQ(background(0, "sta"), QBrush()); // nobody has set the colour
    sites.config.configure("background_blank_color", QString("light yellow"));
    sites.config.configure("background_blanks_color", QString("red"));
    EXPECT_EQ(background(0, "sta"), QBrush(QColor("lightyellow"), Qt::SolidPattern));
    EXPECT_EQ(background(1, "sta"), QBrush());
    sites.config.configure("show_blanks_background_colored", false);
    EXPECT_EQ(background(0, "sta"), QBrush());
}

TEST_F(TableCells, HaveNoBackgroundForAColourThatIsNone)
{
    sites.config.configure("background_null_color", QString("no colour at all"));
    EXPECT_EQ(background(0, "offdate"), QBrush());
}

TEST_F(TableCells, GiveTypedValues)
{
    EXPECT_EQ(at(0, "sta", Qt::UserRole), QVariant("AAK"));
    EXPECT_EQ(at(0, "ondate", Qt::UserRole).toInt(), 2008001);
    EXPECT_EQ(at(0, "ondate", Qt::UserRole).type(), QVariant::LongLong);
    EXPECT_EQ(at(0, "lat", Qt::UserRole), QVariant(42.639));
    const QDateTime utc(QDate(2018, 2, 7), QTime(0, 0), Qt::UTC);
    EXPECT_EQ(at(0, "lddate", Qt::UserRole).toDateTime(), utc);
    sites.config.configure("local_time_zone", QString("Asia/Bishkek"));
    sites.config.configure("show_times_in_local_zone", true);
    EXPECT_EQ(at(0, "lddate", Qt::UserRole).toDateTime(), utc.addSecs(6 * 3600));
    EXPECT_EQ(at(0, "lddate", Qt::UserRole).toDateTime().timeSpec(), Qt::UTC);
    sites.config.configure("show_readable_times", false);
    EXPECT_EQ(at(0, "lddate", Qt::UserRole), QVariant(1517961600.0));
}

TEST_F(TableCells, GiveTheNumberOfATimeThatNoClockReaches)
{
    const char *const times[] = {"1e300", "-1e300", "9.3e15", "-9.3e15"};
    std::vector<TemporaryDatabase::Row> rows;
    for (const char *time : times)
        rows.push_back({"AAK", "2008001", "-1", "1", "1", "1", "-", time});
    rows.push_back({"AAK", "2008001", "-1", "1", "1", "1", "-", "9.1e15"});
    sites.files.addTable("site", rows);
    emit site.modelReset();
    for (int row = 0; row < 4; ++row) {
        EXPECT_EQ(at(row, "lddate", Qt::UserRole).type(), QVariant::Double) << times[row];
        EXPECT_EQ(at(row, "lddate", Qt::UserRole).toDouble(), QString(times[row]).toDouble());
        EXPECT_TRUE(at(row, "lddate").isValid()) << times[row];
    }
    EXPECT_EQ(at(4, "lddate", Qt::UserRole).type(), QVariant::DateTime);
    EXPECT_EQ(at(4, "lddate", Qt::UserRole).toDateTime().toMSecsSinceEpoch(), 9100000000000000000);
}

TEST_F(TableCells, AnswerNoOtherRoles)
{
    for (int role : {Qt::ToolTipRole, Qt::EditRole, Qt::FontRole, Qt::ForegroundRole, Qt::DecorationRole,
                     Qt::CheckStateRole, Qt::SizeHintRole, Qt::StatusTipRole})
        EXPECT_FALSE(at(0, "sta", role).isValid()) << role;
}

TEST_F(TableCells, OutsideTheTableAreInvalid)
{
    EXPECT_FALSE(at(3, "sta").isValid());
    EXPECT_FALSE(at(-1, "sta").isValid());
    EXPECT_FALSE(at(1000000000, "sta", Qt::UserRole).isValid());
    EXPECT_FALSE(at(1000000000, "sta", Qt::BackgroundRole).isValid());
    EXPECT_FALSE(site.data(QModelIndex()).isValid());
    elog_clear(); // the library says of each record that it is not there
}

TEST_F(TableCells, FollowAChangeByAnotherProgramAtOnceWhenAskedAgain)
{
    ASSERT_EQ(at(0, "sta"), QVariant("AAK"));
    std::vector<TemporaryDatabase::Row> changed = siteRows();
    changed[0][0] = "AAL";
    sites.files.addTable("site", changed);
    QElapsedTimer timer;
    timer.start();
    // The library notices within a tenth of a second; the model adds nothing to that.
    while (at(0, "sta") != QVariant("AAL") && timer.elapsed() < 2000) {
    }
    EXPECT_LT(timer.elapsed(), 500);
    EXPECT_EQ(at(0, "sta"), QVariant("AAL"));
}

TEST_F(TableCells, AnswerBackgroundAndDisplayOfEachCellByItself)
{
    // Cells are remembered for a moment; another column, another row or another use must not be mixed up.
    EXPECT_EQ(at(0, "offdate", Qt::BackgroundRole).value<QBrush>(), gray);
    EXPECT_EQ(at(0, "ondate"), QVariant("2008001"));
    EXPECT_EQ(background(0, "ondate"), QBrush());
    EXPECT_EQ(at(2, "ondate"), QVariant("1997160"));
    EXPECT_EQ(at(2, "offdate"), QVariant("2012366"));
    EXPECT_EQ(background(2, "offdate"), QBrush());
    EXPECT_FALSE(at(1, "offdate").isValid());
}

TEST_F(TableCells, ShowBytesThatAreNotUtf8AndStayUsable)
{
    std::string bytes = TemporaryDatabase::readFile(sites.files.tablePath("site"));
    bytes[0] = '\xff';
    bytes[1] = '\xfe';
    sites.files.writeFile("quakes.site", bytes);
    emit site.modelReset();
    EXPECT_TRUE(at(0, "sta").isValid());
    EXPECT_TRUE(at(0, "sta").toString().endsWith("K"));
    EXPECT_EQ(at(1, "sta"), QVariant("ANMO"));
}

TEST_F(TableCells, ShowEveryFieldType)
{
    sites.files.addTable("kinds", {{"1", "17", "12.5", "1517961600.0", "2018038", "AAK"}});
    OrvaneTableModel &kinds = *sites.table("kinds");
    QStringList shown;
    for (int column = 1; column < kinds.columnCount(); ++column)
        shown.append(kinds.index(0, column).data().toString());
    EXPECT_EQ(shown, (QStringList{"1", "17", "12.5", "02/07/2018 (038) 00:00:00.000000 UTC", "2018038", "AAK",
                                  "", ""}));
}

} // namespace
