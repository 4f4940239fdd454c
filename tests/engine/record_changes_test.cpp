// The requests and the methods that change records.

#include <QSignalSpy>

#include "open_database.h"

namespace {

enum SiteField { StaField = 0, OndateField = 1, SiteLatField = 3 };
enum KindsField {
    FlagField = 0,
    WholeField = 1,
    RealField = 2,
    KindsTimeField = 3,
    YeardayField = 4,
    TextField = 5
};

class RecordChanges : public testing::Test
{
protected:
    QString text(int64_t table, int64_t field, int64_t record) const
    {
        return open.at(table, field, record)->dbGet(false).trimmed();
    }

    int count(int64_t table) const { return open.at(table)->getRecordCount(); }

    const OpenDatabase open{"r+"};
};

QVariant fieldsOf(const QVariantMap &values)
{
    return values;
}

TEST_F(RecordChanges, CountTheirArguments)
{
    const auto site = open.at(SiteTable);
    expectError(site.get(), "dbputv", {}, "Got 0 arguments, expected one (hash of fields to add)");
    expectError(site.get(), "dbcheckv", {}, "Got 0 arguments, expected one (hash of fields to check)");
    expectError(site.get(), "dbadd", {1, 2}, "Got 2 arguments, expected one (row)");
    expectError(site.get(), "dbaddchk", {}, "Got 0 arguments, expected one (row)");
}

TEST_F(RecordChanges, DbputvTakesAMap)
{
    const auto cell = open.at(SiteTable, StaField, 0);
    expectError(cell.get(), "dbputv", {QString("AAK")}, "First argument must be a fields->values map");
    expectError(cell.get(), "dbputv", {1}, "First argument must be a fields->values map");
}

TEST_F(RecordChanges, DbputvWritesEachTypeOfField)
{
    const QList<QString> names = open.at(KindsTable)->getTableFields();
    for (int64_t field = 0; field < names.size(); ++field) {
        const int type = open.at(KindsTable, field)->getFieldType();
        const QVariant value = type == dbTIME      ? QVariant("2010-01-02T00:00:00")
                               : type == dbREAL    ? QVariant(2.5)
                               : type == dbSTRING  ? QVariant("KONO")
                               : type == dbDBPTR   ? QVariant()
                               : type == dbYEARDAY ? QVariant(2010002)
                                                   : QVariant(1);
        if (!value.isValid() || names[static_cast<int>(field)] == "lddate")
            continue;
        const auto cell = open.at(KindsTable, field, 1);
        cell->dbPutv(names[static_cast<int>(field)], value);
        const QString stored = text(KindsTable, field, 1);
        if (type == dbTIME)
            EXPECT_EQ(stored, "1262390400.00000");
        else if (type == dbSTRING)
            EXPECT_EQ(stored, "KONO");
        else
            EXPECT_EQ(stored.toDouble(), value.toDouble()) << names[static_cast<int>(field)].toStdString();
    }
}

TEST_F(RecordChanges, DbputvRefusesWhatIsNoValueOfTheType)
{
    expectError(open.at(OriginTable, OridField, 0).get(), "dbputv", {fieldsOf({{"orid", "abc"}})},
                "Field 'orid' value 'abc' doesn't convert to an integer");
    expectError(open.at(OriginTable, LatField, 0).get(), "dbputv", {fieldsOf({{"lat", "north"}})},
                "Field 'lat' value 'north' doesn't convert to a double-precision number");
    const auto response =
        process(open.at(OriginTable, TimeField, 0).get(), "dbputv", {fieldsOf({{"time", "some day"}})});
    EXPECT_TRUE(response->errorString().startsWith(
        "Field 'time' value 'some day' doesn't appear to be an epoch string"))
        << response->errorString().toStdString();
    EXPECT_EQ(text(OriginTable, OridField, 0), "1");
    EXPECT_EQ(text(OriginTable, TimeField, 0), "1262304000.12345");
}

TEST_F(RecordChanges, DbputvTellsTheFieldTypeThatItDoesNotKnow)
{
    const auto response = process(open.at(SiteTable, dbALL, 0).get(), "dbputv", {fieldsOf({{"sta", "BFO"}})});
    EXPECT_TRUE(response->errorString().startsWith("Unknown field type -- field 'sta' reports type '0'"))
        << response->errorString().toStdString();
    EXPECT_EQ(text(SiteTable, StaField, 0), "AAK");
}

// The type and the null value are those of the field pointed to, whatever field is named.
TEST_F(RecordChanges, DbputvWritesTheNullOfTheFieldPointedTo)
{
    open.at(SiteTable, StaField, 0)->dbPutv("staname", "NULL");
    EXPECT_EQ(text(SiteTable, 6, 0), "-");
    open.at(OriginTable, DepthField, 0)->dbPutv("depth", "NULL");
    EXPECT_EQ(text(OriginTable, DepthField, 0), "-999.0000");
    open.at(OriginTable, DepthField, 1)->dbPutv("mb", "NULL");
    EXPECT_EQ(text(OriginTable, 6, 1), "-999.00");
}

TEST_F(RecordChanges, DbputvStopsAtAValueThatDoesNotConvert)
{
    expectError(open.at(OriginTable, LatField, 0).get(), "dbputv",
                {fieldsOf({{"depth", "20"}, {"lat", "abc"}, {"lon", "1"}})},
                "Field 'lat' value 'abc' doesn't convert to a double-precision number");
    EXPECT_EQ(text(OriginTable, DepthField, 0), "20.0000"); // before it, in the order of the names
    EXPECT_EQ(text(OriginTable, 1, 0), "-120.5000");
}

TEST_F(RecordChanges, DbputvGoesOnAfterAValueThatTheLibraryRefuses)
{
    const std::string log = expectErrorWithLog(open.at(OriginTable, LatField, 0).get(), "dbputv",
                                               {fieldsOf({{"lat", "91"}, {"lon", "1"}})}, "dbputv failed");
    EXPECT_NE(log.find("lat"), std::string::npos) << log;
    EXPECT_EQ(text(OriginTable, LatField, 0), "35.1000");
    EXPECT_EQ(text(OriginTable, 1, 0), "1.0000");
}

TEST_F(RecordChanges, NoTextIsCutAtAZeroByte)
{
    const QString cut = QString("AB") + QChar(0) + "CD";
    expectErrorWithLog(open.at(SiteTable, StaField, 0).get(), "dbputv", {fieldsOf({{"sta", cut}})},
                       "dbputv failed");
    expectErrorWithLog(open.at(SiteTable).get(), "dbadd", {cut}, "dbadd failed");
    EXPECT_EQ(text(SiteTable, StaField, 0), "AAK");
    EXPECT_EQ(count(SiteTable), 2);
}

TEST_F(RecordChanges, DbaddAppendsTheScratchRecordOrARow)
{
    const auto site = open.at(SiteTable);
    open.at(SiteTable, dbALL, 1)->dbGet(true);
    open.at(SiteTable, StaField, dbSCRATCH)->dbPutv("sta", "BFO");
    EXPECT_EQ(site->dbAdd(""), 2);
    EXPECT_EQ(text(SiteTable, StaField, 2), "BFO");
    EXPECT_EQ(site->dbAdd(QString::fromStdString(open.files.record("site", {"KONO", "2001001"}))), 3);
    EXPECT_EQ(text(SiteTable, StaField, 3), "KONO");
    EXPECT_EQ(count(SiteTable), 4);
    expectErrorWithLog(site.get(), "dbadd", {QString("nonsense")}, "dbadd failed");
    EXPECT_EQ(count(SiteTable), 4);
}

TEST_F(RecordChanges, DbaddchkAnswersTheRecordThatIsThere)
{
    const auto site = open.at(SiteTable);
    open.at(SiteTable, dbALL, 1)->dbGet(true);
    EXPECT_EQ(site->dbAddchk(""), 1);
    EXPECT_EQ(count(SiteTable), 2);
    open.at(SiteTable, OndateField, dbSCRATCH)->dbPutv("ondate", 2020001);
    EXPECT_EQ(site->dbAddchk(""), 2);
    EXPECT_EQ(count(SiteTable), 3);
}

TEST_F(RecordChanges, MarkedRecordsGoWhenTheTableIsCrunched)
{
    open.at(OriginTable, dbALL, 1)->dbMark();
    EXPECT_EQ(text(OriginTable, OridField, 1), "-1");
    EXPECT_EQ(count(OriginTable), 3);
    open.at(OriginTable)->dbCrunch();
    EXPECT_EQ(count(OriginTable), 2);
    EXPECT_EQ(text(OriginTable, OridField, 1), "33");
}

TEST_F(RecordChanges, RowsOfAViewGoAndItsRecordsStay)
{
    const std::unique_ptr<QDbptr> view(open.at(OriginTable)->subset("orid > 0", "some"));
    QDbptr(open.connection.get(), {view->getIndexDatabase(), view->getIndexTable(), dbALL, 0}).dbMark();
    view->dbCrunch();
    EXPECT_EQ(view->getRecordCount(), 2);
    EXPECT_EQ(count(OriginTable), 3);
    EXPECT_EQ(text(OriginTable, OridField, 0), "1");
}

TEST_F(RecordChanges, AnnounceThatDataChanged)
{
    const auto cell = open.at(SiteTable, StaField, 0);
    const QSignalSpy changed(cell.get(), SIGNAL(dataChanged()));
    cell->dbPutv("sta", "BFO");
    EXPECT_EQ(changed.count(), 1);
    EXPECT_THROW(cell->dbPutv("sta", "longer than six"), std::runtime_error);
    EXPECT_EQ(changed.count(), 1);
    cell->dbMark();
    EXPECT_EQ(changed.count(), 2);
    cell->dbCrunch();
    EXPECT_EQ(changed.count(), 3);
}

TEST_F(RecordChanges, OfManyRowsAreOneRequest)
{
    const auto field = open.at(SiteTable, StaField);
    const int rows = count(SiteTable);
    const QSignalSpy changed(field.get(), SIGNAL(dataChanged()));
    QDbptr::RowsChanged done = field->putRows("sta", "BFO", {{0, 0}, {1, rows - 1}});
    EXPECT_EQ(done.changed, rows);
    EXPECT_EQ(done.failure, "");
    EXPECT_EQ(changed.count(), 1);
    for (int row = 0; row < rows; ++row)
        EXPECT_EQ(text(SiteTable, StaField, row), "BFO");
    done = open.at(SiteTable, SiteLatField)->putRows("lat", "NULL", {{0, 0}});
    EXPECT_EQ(text(SiteTable, SiteLatField, 0), "-999.0000");

    EXPECT_THROW(field->putRows("sta", "KIV", {{0, 0}, {rows, rows}}), std::runtime_error);
    EXPECT_EQ(text(SiteTable, StaField, 0), "BFO") << "neighbouring rows are changed together or not at all";

    expectErrorWithLog(field.get(), "put_rows", {"sta", "longer than six", QVariantList{0, 0}},
                       "dbputv_rows failed");
    const auto lat = open.at(SiteTable, SiteLatField);
    expectError(lat.get(), "put_rows", {"lat", "north", QVariantList{0, 0}},
                "Field 'lat' value 'north' doesn't convert to a double-precision number");

    done = open.at(SiteTable)->markRows({{0, rows - 1}});
    EXPECT_EQ(done.changed, rows);
    open.at(SiteTable)->dbCrunch();
    EXPECT_EQ(count(SiteTable), 0);
}

TEST_F(RecordChanges, FailWhereTheDatabaseIsOpenToBeRead)
{
    const OpenDatabase reading;
    const auto cell = reading.at(SiteTable, StaField, 0);
    expectErrorWithLog(cell.get(), "dbputv", {fieldsOf({{"sta", "BFO"}})}, "dbputv failed");
    expectErrorWithLog(reading.at(SiteTable).get(), "dbadd",
                       {QString::fromStdString(reading.files.record("site", {"BFO", "2001001"}))},
                       "dbadd failed");
    expectErrorWithLog(reading.at(SiteTable, dbALL, 0).get(), "dbmark", {}, "dbmark error");
    expectErrorWithLog(reading.at(SiteTable).get(), "dbcrunch", {}, "dbcrunch error");
}

TEST(RecordChangesOnNull, ThrowWithTheMethodsName)
{
    QDbptr *const null = nullptr;
    EXPECT_EQ(thrownBy([&] { null->dbPutv("a", 1); }), "QDbptr::dbPutv: Attempted to call on null object");
    EXPECT_EQ(thrownBy([&] { null->dbMark(); }), "QDbptr::dbMark: Attempted to call on null object");
    EXPECT_EQ(thrownBy([&] { null->dbCrunch(); }), "QDbptr::dbCrunch: Attempted to call on null object");
    // These two leave the check to what they call.
    EXPECT_EQ(thrownBy([&] { null->dbAdd(""); }), "QDbptr::request: Attempted to call on null object");
    EXPECT_EQ(thrownBy([&] { null->dbAddchk(""); }), "QDbptr::request: Attempted to call on null object");
}

} // namespace
