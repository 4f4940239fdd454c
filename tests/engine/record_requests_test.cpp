#include "library_spy.h"
#include "open_database.h"

namespace {

QString text(QDbptr *handle)
{
    const auto response = process(handle, "dbget", {false});
    EXPECT_FALSE(response->errorOccurred()) << response->errorString().toStdString();
    EXPECT_EQ(response->userType(), QMetaType::QString);
    return response->toString();
}

TEST(Dbget, AnswersACellAsItStandsInTheFile)
{
    const OpenDatabase open;
    EXPECT_EQ(text(open.at(OriginTable, OridField, 2).get()), QString("      33"));
    EXPECT_EQ(text(open.at(OriginTable, AuthField, 0).get()), QString("USGS           "));
    EXPECT_EQ(text(open.at(OriginTable, DepthField, 1).get()), QString("-999.0000"));
}

TEST(Dbget, AnswersARecordWithoutItsLineFeed)
{
    const OpenDatabase open;
    const std::string line = TemporaryDatabase::readFile(open.files.tablePath("origin")).substr(117, 116);
    EXPECT_EQ(text(open.at(OriginTable, dbALL, 1).get()).toStdString(), line);
}

TEST(Dbget, AnswersTheNullRecord)
{
    const OpenDatabase open;
    EXPECT_EQ(text(open.at(OriginTable, LatField, dbNULL).get()), QString("-999.0000"));
    EXPECT_EQ(text(open.at(OriginTable, dbALL, dbNULL).get()).toStdString(), open.files.record("origin", {}));
}

TEST(Dbget, ShowsTextAsUtf8WithReplacementCharacters)
{
    const OpenDatabase open;
    EXPECT_EQ(text(open.at(RemarkTable, 2, 0).get()).trimmed(), QString::fromUtf8("Gr\xc3\xb6\xc3\x9f"
                                                                                  "e unbekannt"));
    EXPECT_EQ(text(open.at(RemarkTable, 2, 1).get()).trimmed(), QString::fromUtf8("byte \xef\xbf\xbd here"));
}

TEST(Dbget, ReadsARecordLongerThanTheUsualBuffer)
{
    const TemporaryDatabase files("wide", R"(name: wide
attributes:
  a: {type: string, width: 900, format: "%-900s", null: "-"}
  b: {type: string, width: 900, format: "%-900s", null: "-"}
relations:
  words: {fields: [a, b]}
)");
    const std::string longText(900, 'x');
    files.addTable("words", {{longText, longText}});
    QOvConnection connection("/", QString::fromStdString(files.path()), "r");
    const std::unique_ptr<QDbptr> database(connection.getQDbptr());
    QDbptr record(&connection, {database->getIndexDatabase(), 0, dbALL, 0});
    EXPECT_EQ(text(&record).toStdString(), longText + " " + longText);
}

TEST(Dbget, FailsForARecordThatDoesNotExist)
{
    const OpenDatabase open;
    const std::string log =
        expectErrorWithLog(open.at(OriginTable, OridField, 3).get(), "dbget", {false}, "dbget error");
    EXPECT_NE(log.find("origin"), std::string::npos) << log;
    expectErrorWithLog(open.at(ArrivalTable, 0, 0).get(), "dbget", {false}, "dbget error");
    expectErrorWithLog(open.at(OriginTable, OridField, 3).get(), "dbget", {true}, "dbget error");
}

TEST(Dbget, FailsForARecordThatWasCutOff)
{
    const OpenDatabase open;
    const auto last = open.at(OriginTable, dbALL, 2);
    EXPECT_FALSE(text(last.get()).isEmpty());
    open.files.addTable("origin", {{"1.0000"}});
    EXPECT_EQ(open.at(OriginTable)->getRecordCount(), 1);
    expectErrorWithLog(last.get(), "dbget", {false}, "dbget error");
}

TEST(Dbget, CopiesTheRecordToTheScratchRecord)
{
    const OpenDatabase open;
    const auto response = process(open.at(OriginTable, dbALL, 2).get(), "dbget", {true});
    ASSERT_FALSE(response->errorOccurred()) << response->errorString().toStdString();
    EXPECT_FALSE(response->isValid());
    EXPECT_EQ(text(open.at(OriginTable, OridField, dbSCRATCH).get()), QString("      33"));
    process(open.at(OriginTable, OridField, 0).get(), "dbget", {true});
    EXPECT_EQ(text(open.at(OriginTable, AuthField, dbSCRATCH).get()), QString("USGS           "));
}

TEST(Dbget, TheScratchFlagIsReadAsABoolean)
{
    const OpenDatabase open;
    EXPECT_EQ(process(open.at(OriginTable, OridField, 2).get(), "dbget", {0})->toString(),
              QString("      33"));
    EXPECT_FALSE(process(open.at(OriginTable, OridField, 2).get(), "dbget", {1})->isValid());
}

constexpr int64_t BundleField = 6;

TEST(DbgetOfABundle, AnswersTheRangeOfItsRecords)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.onGetv = [](Dbptr, DbValue *value) {
        *value = {};
        value->type = dbDBPTR;
        value->dbptr = {0, 9, dbALL, dbALL};
        return 0;
    };
    spy.onRange = [](Dbptr db, int64_t *first, int64_t *end) {
        EXPECT_EQ(db.table, 9);
        *first = 12;
        *end = 9876543210;
        return 0;
    };
    EXPECT_EQ(text(open.at(KindsTable, BundleField, 0).get()), QString("12-9876543210"));
    EXPECT_EQ(spy.reads, 0);
    // Any other field, and a whole record, are text.
    EXPECT_EQ(text(open.at(KindsTable, 0, 0).get()), QString(" 1"));
    text(open.at(KindsTable, dbALL, 0).get());
    EXPECT_EQ(spy.reads, 2);
}

TEST(DbgetOfABundle, FailsWhenItCannotBeRead)
{
    const OpenDatabase open;
    LibrarySpy spy;
    const auto bundle = open.at(KindsTable, BundleField, 0);
    spy.onGetv = [](Dbptr, DbValue *) {
        elog_log("no value");
        return dbERROR_IO;
    };
    EXPECT_EQ(expectErrorWithLog(bundle.get(), "dbget", {false},
                                 "dbget error -- failed to retrieve 'bundle' value"),
              "no value");
    spy.onGetv = [](Dbptr, DbValue *value) {
        *value = {};
        value->type = dbDBPTR;
        return 0;
    };
    spy.onRange = [](Dbptr, int64_t *, int64_t *) {
        elog_log("no range");
        return dbERROR_STALE;
    };
    EXPECT_EQ(expectErrorWithLog(bundle.get(), "dbget", {false},
                                 "dbget error -- failed to retrieve 'bundle' value"),
              "no range");
}

QVariantHash values(QDbptr *handle, const QStringList &fields)
{
    const auto response = process(handle, "dbgetv", {fields});
    EXPECT_FALSE(response->errorOccurred()) << response->errorString().toStdString();
    EXPECT_EQ(response->userType(), QMetaType::QVariantHash);
    return response->toHash();
}

TEST(Dbgetv, AnswersEveryFieldByItsType)
{
    const OpenDatabase open;
    const QVariantHash found =
        values(open.at(KindsTable, dbALL, 0).get(), {"flag", "orid", "lat", "time", "jdate", "sta"});
    const QVariantHash expected{{"flag", 1LL},     {"orid", 3LL},        {"lat", 1.5},
                                {"time", 86400.5}, {"jdate", 2010001LL}, {"sta", "AAK"}};
    EXPECT_EQ(found, expected);
    EXPECT_EQ(found["flag"].userType(), QMetaType::LongLong);
    EXPECT_EQ(found["jdate"].userType(), QMetaType::LongLong);
    EXPECT_EQ(found["time"].userType(), QMetaType::Double);
    EXPECT_EQ(found["sta"].userType(), QMetaType::QString);
}

TEST(Dbgetv, AnswersADbptrAsTheRangeOfItsRecords)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.onGetv = [](Dbptr, DbValue *value) {
        *value = {};
        value->type = dbDBPTR;
        return 0;
    };
    spy.onRange = [](Dbptr, int64_t *first, int64_t *end) {
        *first = 3;
        *end = 8;
        return 0;
    };
    EXPECT_EQ(values(open.at(KindsTable, dbALL, 0).get(), {"bundle"}), (QVariantHash{{"bundle", "3-8"}}));
}

TEST(Dbgetv, TakesAVariantListOrNoFieldAtAll)
{
    const OpenDatabase open;
    const auto record = open.at(OriginTable, dbALL, 0);
    const auto response = process(record.get(), "dbgetv", {QVariant(QVariantList{"orid", "auth"})});
    EXPECT_EQ(response->toHash(), (QVariantHash{{"orid", 1LL}, {"auth", "USGS"}}));
    EXPECT_TRUE(values(record.get(), {}).isEmpty());
}

TEST(Dbgetv, FindsQualifiedNames)
{
    const OpenDatabase open;
    EXPECT_EQ(values(open.at(OriginTable, dbALL, 0).get(), {"origin.orid"}),
              (QVariantHash{{"origin.orid", 1LL}}));
}

TEST(Dbgetv, RefusesWhatIsNotAList)
{
    const OpenDatabase open;
    const auto record = open.at(OriginTable, dbALL, 0);
    for (const QVariant &argument :
         {QVariant("orid"), QVariant(4), QVariant(), QVariant(QVariantMap{{"orid", 1}})})
        expectError(record.get(), "dbgetv", {argument}, "First argument must be a fields list");
}

TEST(Dbgetv, FailsAtTheFirstFieldThatCannotBeRead)
{
    const OpenDatabase open;
    const auto record = open.at(OriginTable, dbALL, 0);
    expectError(record.get(), "dbgetv", {QStringList{"orid", "nowhere", "no%1"}},
                "Failed to retrieve value for field 'nowhere'");
    expectError(open.at(OriginTable, dbALL, 99).get(), "dbgetv", {QStringList{"orid"}},
                "Failed to retrieve value for field 'orid'");
    elog_clear();
}

TEST(Dbgetv, FailsForAFieldOfUnknownType)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.answerQueries(dbFIELD_TYPE, 99);
    const auto record = open.at(OriginTable, dbALL, 0);
    elog_clear();
    elog_log("something happened");
    const auto response = process(record.get(), "dbgetv", {QStringList{"orid"}});
    EXPECT_EQ(response->errorString().toStdString(),
              "Unknown field type -- field 'orid' reports type '99':\n\nsomething happened" +
                  inputPart("dbgetv", record.get()));
}

QVariant found(QDbptr *handle, const char *expression, bool backwards)
{
    const auto response = process(handle, "dbfind", {expression, backwards});
    EXPECT_FALSE(response->errorOccurred()) << response->errorString().toStdString();
    EXPECT_EQ(response->userType(), QMetaType::Long);
    return *response;
}

TEST(Dbfind, AnswersTheNextRecordOrTheOneBefore)
{
    const OpenDatabase open;
    const auto origin = open.at(OriginTable);
    EXPECT_EQ(found(origin.get(), "evid == 8", false), 1);
    EXPECT_EQ(found(origin.get(), "evid == 8", true), 2);
    EXPECT_EQ(found(open.at(OriginTable, dbALL, 1).get(), "evid == 8", false), 2);
    EXPECT_EQ(found(open.at(OriginTable, dbALL, 2).get(), "evid == 8", true), 1);
}

TEST(Dbfind, HandsOnExpressionAndFlagWithoutAHook)
{
    const OpenDatabase open;
    LibrarySpy spy;
    process(open.at(OriginTable).get(), "dbfind", {"orid > 1", 17});
    process(open.at(OriginTable).get(), "dbfind", {"orid > 1", false});
    ASSERT_EQ(spy.operations.size(), 2u);
    EXPECT_EQ(spy.operations[0].text, "orid > 1");
    EXPECT_EQ(spy.operations[0].number, 1);
    EXPECT_FALSE(spy.operations[0].hasKeysOrHook);
    EXPECT_EQ(spy.operations[1].number, 0);
}

TEST(Dbfind, AnswersANegativeNumberWhenNothingMatches)
{
    const OpenDatabase open;
    elog_clear();
    EXPECT_LT(found(open.at(OriginTable).get(), "evid == 99", false).toLongLong(), 0);
    EXPECT_LT(found(open.at(OriginTable, dbALL, 2).get(), "evid == 8", false).toLongLong(), 0);
    EXPECT_EQ(elog_count(), 0);
}

TEST(Dbfind, AnswersANegativeNumberWhenItFails)
{
    const OpenDatabase open;
    EXPECT_LT(found(open.at(OriginTable).get(), "no such (", false).toLongLong(), 0);
    EXPECT_GT(elog_count(), 0);
    elog_clear();
}

TEST(Dbfree, LetsGoOfAView)
{
    const OpenDatabase open;
    const auto origin = open.at(OriginTable);
    QDbptr view(open.connection.get(), process(origin.get(), "subset", {"evid == 8", "eights"})->getDbptr());
    ASSERT_TRUE(process(origin.get(), "views_present")->toList().contains("eights"));
    const auto response = process(&view, "dbfree", {"not", "read"});
    EXPECT_FALSE(response->errorOccurred()) << response->errorString().toStdString();
    EXPECT_FALSE(response->isValid());
    EXPECT_FALSE(process(origin.get(), "views_present")->toList().contains("eights"));
    expectErrorWithLog(&view, "dbfree", {}, "dbfree error");
}

TEST(Dbfree, FailsForWhatIsNoView)
{
    const OpenDatabase open;
    expectErrorWithLog(open.at(OriginTable).get(), "dbfree", {}, "dbfree error");
    expectErrorWithLog(open.handle.get(), "dbfree", {}, "dbfree error");
    EXPECT_EQ(open.at(OriginTable)->getRecordCount(), 3);
}

} // namespace
