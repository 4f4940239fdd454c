// The texts of many cells at once are those that data() answers one by one.
#include "quake_database.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

QVector<int> allColumns(const OrvaneTableModel &table)
{
    QVector<int> columns;
    for (int column = table.columnCount() - 1; column >= 0; --column)
        columns.append(column);
    return columns;
}

void expectSameAsOneByOne(const OrvaneTableModel &table)
{
    const QVector<int> columns = allColumns(table);
    const int rows = table.rowCount();
    const QStringList texts = table.displayedTexts(columns, 0, rows);
    ASSERT_EQ(texts.size(), columns.size() * rows);
    ASSERT_GT(texts.size(), 0);
    for (int i = 0; i < texts.size(); ++i) {
        const QModelIndex cell = table.index(i / columns.size(), columns[i % columns.size()]);
        const QVariant single = table.data(cell, Qt::DisplayRole);
        EXPECT_EQ(texts[i], single.toString()) << "row " << cell.row() << " column " << cell.column();
        EXPECT_EQ(texts[i].isNull(), !single.isValid())
            << "row " << cell.row() << " column " << cell.column();
    }
}

struct DisplayedTexts : testing::Test, Quakes {
    void expectSameWithAllSettings(const OrvaneTableModel &table)
    {
        for (const bool readable : {false, true}) {
            for (const bool raw : {false, true}) {
                config.configure("show_readable_times", readable);
                config.configure("show_raw_nulls", raw);
                expectSameAsOneByOne(table);
            }
        }
    }
};

TEST_F(DisplayedTexts, OfATable)
{
    files.writeFile("quakes.remark", files.record("remark", {"1", "1", "  Z\xC3\xBCrich, na\xC3\xAFve  "}) +
                                         "\n" + files.record("remark", {"2", "2", " "}) + "\n");
    OrvaneDatabaseModel fresh(config, QString::fromStdString(files.path()), "r");
    for (const char *name : {"site", "origin", "arrival", "assoc", "remark"}) {
        SCOPED_TRACE(name);
        expectSameWithAllSettings(*fresh.getTableModel(name));
    }
}

TEST_F(DisplayedTexts, OfASortedTable)
{
    OrvaneTableModel &arrival = *table("arrival");
    arrival.sort(3, Qt::DescendingOrder);
    ASSERT_EQ(arrival.displayedTexts({1}, 0, 2), (QStringList{"PFO", "AAK"}));
    expectSameWithAllSettings(arrival);
}

TEST_F(DisplayedTexts, OfAJoinWithNullRecords)
{
    OrvaneTableModel *joined = table("arrival")->outerJoinTo("assoc", "both");
    ASSERT_EQ(joined->rowCount(), 4);
    expectSameWithAllSettings(*joined);
}

TEST_F(DisplayedTexts, OfBundles)
{
    expectSameWithAllSettings(*table("arrival")->group({"sta"}, "stations"));
}

TEST_F(DisplayedTexts, OfRecordsThatAreGone)
{
    OrvaneTableModel &site = *table("site");
    const QStringList texts = site.displayedTexts({1, 4}, 2, 5);
    EXPECT_EQ(texts.size(), 6);
    EXPECT_FALSE(texts[0].isEmpty());
    EXPECT_TRUE(texts[2].isNull() && texts[5].isNull());
}

TEST_F(DisplayedTexts, AreTheSameOfRowsReadAhead)
{
    constexpr int rows = 20000; // of many blocks
    std::vector<std::vector<std::string>> origins;
    for (int i = 0; i < rows; ++i)
        origins.push_back({std::to_string(i * 7919 % 179 - 89) + ".0", std::to_string(i % 360 - 180) + ".0",
                           "10.0", std::to_string(1517961600 + i) + ".0", std::to_string(i + 1), "8"});
    files.addTable("origin", origins);
    const auto sorted = [&](OrvaneDatabaseModel &database) {
        OrvaneTableModel *origin = database.getTableModel("origin");
        origin->sort(1, Qt::AscendingOrder);
        return origin;
    };
    OrvaneDatabaseModel one(config, QString::fromStdString(files.path()), "r");
    OrvaneDatabaseModel other(config, QString::fromStdString(files.path()), "r");
    const OrvaneTableModel &ahead = *sorted(one), &alone = *sorted(other);
    ASSERT_EQ(ahead.rowCount(), rows);
    for (const int first : {rows - 30, 0, 9000, 9024, 3, -5}) {
        ahead.readAhead(first, first + 48); // also of rows that are not there
        for (int row = std::max(first, 0); row < std::min(first + 48, rows); ++row)
            for (int column = 1; column <= 6; ++column)
                ASSERT_EQ(ahead.data(ahead.index(row, column)), alone.data(alone.index(row, column)))
                    << "row " << row << " column " << column;
    }
    ahead.readAhead(7, 7);
    ahead.readAhead(0, std::numeric_limits<int>::max());
    EXPECT_EQ(ahead.data(ahead.index(0, 1)).toString(), "-89.0");
    EXPECT_EQ(elog_count(), 0) << "nothing to complain of";
}

TEST_F(DisplayedTexts, OfNothing)
{
    EXPECT_EQ(table("site")->displayedTexts({1}, 1, 1), QStringList());
    EXPECT_EQ(table("site")->displayedTexts({}, 0, 2), QStringList());
    EXPECT_EQ(table("site")->displayedTexts({99}, 0, 1), QStringList{QString()});
}

// ---- What setData() would not store -------------------------------------------------------------------

struct Refusals : testing::Test {
    TemporaryDatabase files;
    OvConfig config;

    std::unique_ptr<OrvaneDatabaseModel> opened(const char *mode)
    {
        files.addTable("origin", {{"10.0", "20.0", "5.0", "1517961600.0", "1", "8"}});
        return std::make_unique<OrvaneDatabaseModel>(config, QString::fromStdString(files.path()), mode);
    }
};

TEST_F(Refusals, AreThoseOfSettingAndChangeNothing)
{
    const auto database = opened("r+");
    OrvaneTableModel &origin = *database->getTableModel("origin");
    const std::string before = TemporaryDatabase::readFile(files.tablePath("origin"));
    const struct {
        const char *field;
        const char *value;
        bool isTaken;
    } cases[] = {
        {"lat", "12.5", true},
        {"lat", "91", false},
        {"lat", "north", false},
        {"lat", "NULL", true},
        {"orid", "7", true},
        {"orid", "0", false},
        {"orid", "", false},
        {"auth", "me", true},
        {"auth", "a name that is too long for it", false},
        {"auth", "two\nlines", false},
        {"time", "2018-02-07", true},
        {"time", "noon", false},
    };
    for (const auto &[field, value, isTaken] : cases) {
        SCOPED_TRACE(std::string(field) + " " + value);
        const QModelIndex cell = origin.indexForCell(0, field);
        const QString reason = origin.refusal(cell, QString(value)).replace("dbcheckv:", "dbputv:");
        EXPECT_EQ(reason.isEmpty(), isTaken) << reason.toStdString();
        EXPECT_EQ(TemporaryDatabase::readFile(files.tablePath("origin")), before);
        EXPECT_EQ(origin.setData(cell, QString(value)), isTaken);
        EXPECT_EQ(reason.toStdString(), isTaken ? std::string() : origin.editError().toStdString());
        files.writeFile("quakes.origin", before);
    }
}

TEST_F(Refusals, AreForEveryCellThatCantBeChanged)
{
    const auto reading = opened("r");
    const OrvaneTableModel &origin = *reading->getTableModel("origin");
    EXPECT_TRUE(origin.refusal(origin.indexForCell(0, "lat"), "1").contains("opened for reading only"));
    EXPECT_FALSE(origin.refusal(origin.indexForCell(5, "lat"), "1").isEmpty());
    EXPECT_FALSE(origin.refusal(origin.index(0, 0), "1").isEmpty());
    EXPECT_FALSE(origin.refusal({}, "1").isEmpty());
}

TEST_F(Refusals, ReachThroughViewsToTheirTables)
{
    files.addTable("event", {{"8", "1"}, {"9", "2"}});
    const auto database = opened("r+");
    OrvaneTableModel *joined = database->getTableModel("event")->outerJoinTo("origin", "both");
    ASSERT_EQ(joined->rowCount(), 2);
    EXPECT_EQ(joined->refusal(joined->indexForCell(0, "origin.lat"), "1"), QString());
    EXPECT_TRUE(joined->refusal(joined->indexForCell(0, "origin.lat"), "91").contains("out of range"));
    EXPECT_TRUE(
        joined->refusal(joined->indexForCell(1, "origin.lat"), "1").contains("no record of table origin"));
    OrvaneTableModel *grouped = database->getTableModel("event")->group({"evid"}, "grouped");
    EXPECT_FALSE(grouped->refusal(grouped->indexForCell(0, "evid"), "1").isEmpty());
    EXPECT_FALSE(grouped->refusal(grouped->indexForCell(0, "bundle"), "1").isEmpty());
}

} // namespace
