// What the models leave in the error log when a request fails under them.

#include "open_database.h"

#include <QStringList>
#include <cstdlib>
#include <gtest/gtest.h>

namespace {

QString logged()
{
    const std::unique_ptr<char, decltype(&std::free)> text(elog_string(0), &std::free);
    return QString::fromUtf8(text.get());
}

struct FailureLog : testing::Test {
    OpenSites sites;
    OrvaneTableModel &site = *sites.table();

    FailureLog() { elog_clear(); }
    ~FailureLog() override { elog_clear(); }

    QString gone(int record) const
    {
        return QString("%1.site: record %2 is not there: the file has 3 records")
            .arg(sites.files.name())
            .arg(record);
    }
};

TEST_F(FailureLog, HasTheReasonOfACellThatCannotBeRead)
{
    EXPECT_FALSE(site.data(site.indexForCell(3, "sta")).isValid());
    EXPECT_EQ(logged(), gone(3));
}

TEST_F(FailureLog, HasEachReasonOnceHoweverOftenACellIsDrawn)
{
    for (int time = 0; time < 50; ++time)
        for (int row : {3, 4})
            site.data(site.indexForCell(row, "sta"));
    EXPECT_EQ(logged(), gone(3) + "\n" + gone(4));
}

TEST_F(FailureLog, KeepsWhatStoodInItBefore)
{
    elog_log("100%% of something else: %s", "%s");
    site.data(site.indexForCell(3, "sta"));
    EXPECT_EQ(logged(), "100% of something else: %s\n" + gone(3));
}

TEST_F(FailureLog, HasNothingOfARequestThatTheLibraryNeverSaw)
{
    const QModelIndex first = site.index(0, 1);
    ASSERT_TRUE(first.isValid());
    sites.model->close();
    EXPECT_FALSE(site.data(first).isValid());
    EXPECT_TRUE(site.getTableName().isEmpty());
    EXPECT_EQ(logged(), "");
}

TEST_F(FailureLog, StaysAsItWasWhenATableIsAskedForThatIsNot)
{
    EXPECT_EQ(sites.table("nosuchtable"), nullptr);
    EXPECT_EQ(logged(), "");
    elog_log("something else");
    EXPECT_EQ(sites.table("nosuchtable"), nullptr);
    const QModelIndex siteItem = sites.model->index(0, 0);
    EXPECT_FALSE(sites.model->index(0, 0, siteItem).isValid()); // a field, which is no table
    EXPECT_EQ(logged(), "something else");
}

TEST_F(FailureLog, HasTheReasonOfATableThatIsRefused)
{
    sites.files.writeFile("quakes.site", "no whole record");
    emit site.modelReset();
    elog_clear();
    EXPECT_FALSE(site.data(site.indexForCell(0, "sta")).isValid());
    EXPECT_TRUE(logged().contains(sites.files.name() + ".site")) << logged().toStdString();
}

} // namespace
