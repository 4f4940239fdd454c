#include <cstdlib>
#include <filesystem>
#include <memory>

#include <sys/time.h>

#include <QRegularExpression>
#include <QTextDocument>

#include <orvane/util.h>
#include <qdbptr.h>

#include "database_window.h"

namespace {

class StatusLabels : public DatabaseWindow
{
protected:
    void addSites(int count)
    {
        ShownDatabase::Rows rows(count, {"AAK", "2008001"});
        database.files.addTable("site", rows);
    }

    // Gives the table site a modification time, in epoch seconds.
    void setSiteTime(time_t seconds)
    {
        const timeval times[2] = {{seconds, 0}, {seconds, 0}};
        ASSERT_EQ(utimes(database.files.tablePath("site").c_str(), times), 0);
    }

    static QString seen(const QString &richText)
    {
        QTextDocument document;
        document.setHtml(richText);
        return document.toPlainText();
    }
};

TEST_F(StatusLabels, areEmptyWithoutATable)
{
    EXPECT_EQ(rowCount(), "");
    EXPECT_EQ(modification(), "");
    EXPECT_EQ(update(), "");
}

TEST_F(StatusLabels, countOneRow)
{
    addSites(1);
    window.setModel(&database.open());
    EXPECT_EQ(rowCount(), "1 Row");
}

TEST_F(StatusLabels, countNoRows)
{
    window.setModel(&database.open("event"));
    EXPECT_EQ(rowCount(), "0 Rows");
}

TEST_F(StatusLabels, countManyRowsInGroupsOfThree)
{
    addSites(1234);
    window.setModel(&database.open());
    EXPECT_EQ(rowCount(), "1,234 Rows");
    addSites(12345);
    database.model->checkForUpdates();
    EXPECT_EQ(rowCount(), "12,345 Rows");
}

TEST_F(StatusLabels, tellWhenTheTableWasUpdated)
{
    setSiteTime(1517875201);
    window.setModel(&database.open());
    EXPECT_EQ(modification(), "Table 'site' updated: 02/06/2018 (037) 00:00:01.000000 UTC");
}

TEST_F(StatusLabels, tellHowLongAgoWhileUpdatesAreTracked)
{
    setSiteTime(1517875201);
    database.config.configure("update_interval_sec", 2.5);
    window.setModel(&database.open());
    const QRegularExpression form(
        "^Table 'site' updated: 02/06/2018 \\(037\\) 00:00:01\\.000000 UTC \\((\\S.*\\S) ago\\)$");
    EXPECT_TRUE(form.match(modification()).hasMatch()) << modification().toStdString();
}

TEST_F(StatusLabels, tellTimesInTheLocalZone)
{
    setSiteTime(1517875201);
    database.config.configure("local_time_zone", "Asia/Tokyo");
    database.config.configure("show_times_in_local_zone", true);
    window.setModel(&database.open());
    EXPECT_EQ(modification(), "Table 'site' updated: 02/06/2018 (037) 09:00:01.000000 JST");
    database.config.configure("show_times_in_local_zone", false);
    EXPECT_EQ(modification(), "Table 'site' updated: 02/06/2018 (037) 00:00:01.000000 UTC");
}

TEST_F(StatusLabels, tellEpochSecondsWhenTimesNeedNotBeReadable)
{
    setSiteTime(1517875201);
    database.config.configure("show_readable_times", false);
    window.setModel(&database.open());
    EXPECT_EQ(modification(), "Table 'site' updated: 1517875201.00000");
}

TEST_F(StatusLabels, sayInItalicsThatUpdatesAreNotTracked)
{
    database.config.configure("update_interval_sec", 0.0);
    window.setModel(&database.open());
    EXPECT_EQ(label("updateLabel").textFormat(), Qt::RichText);
    EXPECT_EQ(seen(update()), "<Update tracking disabled>");
    EXPECT_TRUE(update().startsWith("<i>") && update().endsWith("</i>"));
    EXPECT_FALSE(modification().contains("ago"));
}

TEST_F(StatusLabels, tellTheTimeOfTheLastLookBehindALeadingBlank)
{
    database.config.configure("update_interval_sec", 1000.0);
    database.config.configure("show_readable_times", false);
    const double before = std_now();
    window.setModel(&database.open());
    EXPECT_EQ(label("updateLabel").textFormat(), Qt::PlainText);
    const QRegularExpressionMatch match = QRegularExpression("^ updated: (\\d+\\.\\d{5})$").match(update());
    ASSERT_TRUE(match.hasMatch()) << update().toStdString();
    EXPECT_GE(match.captured(1).toDouble(), before - 0.001);
    EXPECT_LE(match.captured(1).toDouble(), std_now() + 0.001);
}

TEST_F(StatusLabels, followTheTableThatIsShown)
{
    window.setModel(&database.open());
    EXPECT_EQ(rowCount(), "2 Rows");
    window.setCurrentTabIndex(1);
    EXPECT_EQ(rowCount(), "1 Row");
    EXPECT_TRUE(modification().startsWith("Table 'arrival' updated: "));
}

TEST_F(StatusLabels, followTheResetOfAFocusedTable)
{
    window.setModel(&database.open());
    addSites(7);
    database.table("site").announceChanged(&database.table("site"));
    EXPECT_EQ(rowCount(), "7 Rows");
}

TEST_F(StatusLabels, leaveOnlyTheRowCountEmptyOnAProductsPage)
{
    window.setModel(&database.open());
    const QString before = modification();
    const QString lookBefore = update();
    window.showStackItem(2);
    EXPECT_EQ(rowCount(), "");
    EXPECT_EQ(modification(), before);
    EXPECT_EQ(update(), lookBefore);
}

TEST_F(StatusLabels, keepTheirTextOnAnEmptyViewsPage)
{
    window.setModel(&database.open());
    const QString before = modification();
    window.showStackItem(1);
    EXPECT_EQ(rowCount(), "2 Rows");
    EXPECT_EQ(modification(), before);
}

TEST_F(StatusLabels, surviveATableThatVanishes)
{
    window.setModel(&database.open());
    std::filesystem::remove(database.files.tablePath("site"));
    window.updateStatusLabels();
    database.model->checkForUpdates();
    EXPECT_EQ(tabTexts(tables()), (QStringList{"arrival", "event"}));
    EXPECT_EQ(rowCount(), "1 Row");
}

} // namespace
