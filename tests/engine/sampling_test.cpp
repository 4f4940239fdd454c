#include "library_spy.h"
#include "open_database.h"

namespace {

// The answer of "dbsample" to a field.
QVariantList sample(const OpenDatabase &open, int64_t table, int64_t field)
{
    const auto response = process(open.at(table, field).get(), "dbsample");
    EXPECT_FALSE(response->errorOccurred()) << response->errorString().toStdString();
    EXPECT_EQ(response->userType(), QMetaType::QVariantList);
    const QVariantList answer = response->toList();
    EXPECT_EQ(answer.value(0).userType(), QMetaType::Bool);
    EXPECT_EQ(answer.value(1).userType(), QMetaType::Int);
    return answer;
}

TEST(Sampling, TheWidthIsThatOfTheWidestTrimmedValue)
{
    const OpenDatabase open;
    EXPECT_EQ(sample(open, OriginTable, AuthField), (QVariantList{false, 14}));
    EXPECT_EQ(sample(open, OriginTable, TimeField), (QVariantList{false, 17}));
}

TEST(Sampling, TheWidthIsAtLeastThatOfTheNullValue)
{
    const OpenDatabase open;
    EXPECT_EQ(sample(open, OriginTable, DepthField), (QVariantList{false, 9}));
    EXPECT_EQ(sample(open, SiteTable, 2), (QVariantList{true, 2})); // offdate, all -1
}

TEST(Sampling, TheWidthCountsCharacters)
{
    const OpenDatabase open;
    EXPECT_EQ(sample(open, RemarkTable, 2), (QVariantList{false, 15})); // "Größe unbekannt"
}

TEST(Sampling, ATableWithoutRecordsIsAllNullAndAsWideAsTheField)
{
    const OpenDatabase open;
    EXPECT_EQ(sample(open, AssocTable, 3), (QVariantList{true, 8}));
    EXPECT_EQ(sample(open, ArrivalTable, 0), (QVariantList{true, 6}));
}

TEST(Sampling, OnlyTheHeadOfTheTableIsLookedAt)
{
    const OpenDatabase open;
    std::vector<TemporaryDatabase::Row> rows(50, {"-", "-", "-", "-", "7"});
    for (auto &row : rows)
        row = {"-999.0000", "-999.0000", "-999.0000", "-9999999999.99900", "7"};
    for (int i = 0; i < 1000; ++i)
        rows.push_back({"1.0000", "-999.0000", "-999.0000", "-9999999999.99900", "12345678"});
    open.files.addTable("origin", rows);
    EXPECT_EQ(sample(open, OriginTable, LatField), (QVariantList{true, 9}));
    EXPECT_EQ(sample(open, OriginTable, OridField), (QVariantList{false, 2}));

    rows[49][0] = "1.0000";
    open.files.addTable("origin", rows);
    EXPECT_EQ(sample(open, OriginTable, LatField), (QVariantList{false, 9}));
}

TEST(Sampling, ReadsABoundedNumberOfRecords)
{
    const OpenDatabase open;
    open.files.addTable("origin", std::vector<TemporaryDatabase::Row>(5000, {"1.0000"}));
    LibrarySpy spy;
    sample(open, OriginTable, LatField);
    EXPECT_GE(spy.reads, 50);
    EXPECT_LE(spy.reads, 500);
}

TEST(Sampling, AHandleOnNoFieldGetsAnAnswer)
{
    const OpenDatabase open;
    EXPECT_EQ(process(open.handle.get(), "dbsample")->toList(), (QVariantList{true, 0}));
    EXPECT_EQ(process(open.at(OriginTable).get(), "dbsample")->toList().size(), 2);
    elog_clear();
}

} // namespace
