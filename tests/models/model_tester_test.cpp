#include "open_database.h"

#include <QAbstractItemModelTester>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

// QAbstractItemModelTester on both models. Where a model is meant to differ from what the tester wants, the
// objection is listed here with the reason, and nothing else may be objected to.

namespace {

using ::testing::AnyOf;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::vector<std::string> objections;

void collect(QtMsgType, const QMessageLogContext &context, const QString &message)
{
    if (context.category && QByteArray(context.category) == "qt.modeltest")
        objections.push_back(message.toStdString());
}

// What the tester says while `use` works with the model.
template <class Use>
std::vector<std::string> objectionsTo(QAbstractItemModel &model, Use use)
{
    objections.clear();
    const QtMessageHandler before = qInstallMessageHandler(collect);
    {
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Warning);
        use();
        QCoreApplication::processEvents();
    }
    qInstallMessageHandler(before);
    return objections;
}

// Column 0 answers every role with the record number, which is no size.
const auto recordNumberAsSize = HasSubstr("FAIL! variant.canConvert<QSize>()");
// The parent of a table is said to be at the table's own place.
const auto parentOfATable = HasSubstr("FAIL! !model->parent(topIndex).isValid()");
// The fields of a table are counted, and have no index.
const auto indexOfAField = HasSubstr("FAIL! secondLevelIndex.isValid()");

TEST(ModelTester, AcceptsTheTableModelButForItsRecordNumbers)
{
    OpenSites sites;
    OrvaneTableModel &site = *sites.table();
    const std::vector<std::string> found = objectionsTo(site, [&] {
        emit site.modelReset();
        sites.config.toggle("show_raw_nulls");
        sites.files.appendRows("site", {{"PFO", "2000001"}});
        emit site.modelReset();
        sites.model->close();
    });
    EXPECT_THAT(found, Each(recordNumberAsSize));
    EXPECT_EQ(site.rowCount(), 0);
}

TEST(ModelTester, AcceptsATableThatGrowsAndShrinksUnderIt)
{
    OpenSites sites;
    OrvaneTableModel &site = *sites.table();
    const auto waitFor = [&](int rows) {
        QElapsedTimer timer;
        timer.start();
        while (site.rowCount() != rows && timer.elapsed() < 5000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        EXPECT_EQ(site.rowCount(), rows);
    };
    const std::vector<std::string> found = objectionsTo(site, [&] {
        sites.files.appendRows("site", {{"PFO", "2000001"}, {"TLY", "2000001"}});
        waitFor(5);
        std::filesystem::resize_file(sites.files.tablePath("site"),
                                     sites.files.record("site", {}).size() + 1);
        waitFor(1);
        sites.files.addTable("site", {});
        waitFor(0);
    });
    EXPECT_THAT(found, Each(recordNumberAsSize));
}

TEST(ModelTester, AcceptsATableThatIsSorted)
{
    OpenSites sites;
    OrvaneTableModel &site = *sites.table();
    const std::vector<std::string> found = objectionsTo(site, [&] {
        site.sort(1);
        site.sort(4, Qt::DescendingOrder);
        sites.model->deleteView(site.getFacadeTableName());
        site.sort(4);
        site.sort(0);
        sites.files.appendRows("site", {{"PFO", "2000001"}, {"TLY", "2000001"}});
        site.sort(1);
        emit site.modelReset();
        std::filesystem::resize_file(sites.files.tablePath("site"),
                                     sites.files.record("site", {}).size() + 1);
        site.sort(1);
        sites.model->close();
    });
    EXPECT_THAT(found, Each(recordNumberAsSize));
    elog_clear();
}

TEST(ModelTester, AcceptsDerivedTables)
{
    OpenSites sites;
    for (OrvaneTableModel *derived :
         {sites.table()->subset("lat < 50", ""), sites.table()->subset("lat > 100", ""),
          sites.table()->group({"sta"}, ""), sites.table()->group({"sta"}, "")->ungroup("")}) {
        const std::vector<std::string> found = objectionsTo(*derived, [&] {
            derived->sort(1);
            sites.config.toggle("show_raw_nulls");
        });
        EXPECT_THAT(found, Each(recordNumberAsSize)) << derived->getTableName().toStdString();
    }
}

TEST(ModelTester, AcceptsATableWithoutRecords)
{
    OpenSites sites;
    OrvaneTableModel &origin = *sites.table("origin");
    EXPECT_THAT(objectionsTo(origin, [&] { emit origin.modelReset(); }), IsEmpty());
}

TEST(ModelTester, AcceptsTheDatabaseModelButForItsFieldsAndParents)
{
    OpenSites sites;
    const std::vector<std::string> found = objectionsTo(*sites.model, [&] {
        sites.config.toggle("show_tooltips");
        sites.model->close();
        sites.model->open();
    });
    EXPECT_THAT(found, Each(AnyOf(parentOfATable, indexOfAField)));
}

} // namespace
