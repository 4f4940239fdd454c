#include "library_spy.h"
#include "open_database.h"

namespace {

using Names = QList<QString>;

std::string shown(const QString &text)
{
    return text.toStdString();
}

TEST(TypedGetters, OfADatabase)
{
    const OpenDatabase open;
    QDbptr &database = *open.handle;
    EXPECT_EQ(shown(database.getDatabaseFileName()), open.files.path());
    EXPECT_EQ(shown(database.getDatabaseFilename()), open.files.path());
    EXPECT_EQ(shown(database.getDatabaseName()), open.files.path());
    EXPECT_EQ(shown(database.getDatabaseAbspath()), open.files.path());
    EXPECT_EQ(shown(database.getDbPath()), ".");
    EXPECT_EQ(shown(database.getDatabaseDescription()), "a small database");
    EXPECT_EQ(shown(database.getDatabaseDetail()), "made by a test");
    EXPECT_EQ(shown(database.getSchemaName()), "small");
    EXPECT_EQ(shown(database.getSchemaDescription()), "a small schema");
    EXPECT_EQ(shown(database.getSchemaDetail()), "Made for tests:\nevery type, every kind of key.\n");
    EXPECT_EQ(shown(database.getTimedateName()), "lddate");
    EXPECT_EQ(shown(database.getDbIdServer()), "");
    EXPECT_EQ(shown(database.getDbLocks()), "local");
    EXPECT_EQ(database.getTableCount(), 7);
    EXPECT_EQ(database.getSchemaTables(),
              (Names{"site", "origin", "arrival", "assoc", "event", "remark", "kinds"}));
    EXPECT_EQ(database.getBaseTablesPresent(), (Names{"site", "origin", "assoc", "remark", "kinds"}));
    EXPECT_EQ(database.getBaseTablesAbsent(), (Names{"arrival", "event"}));
    EXPECT_EQ(database.getViewsPresent(), Names{});
    EXPECT_EQ(database.getLinkFieldTables(),
              (QHash<QString, QString>{
                  {"orid", "origin"}, {"arid", "arrival"}, {"evid", "event"}, {"commid", "remark"}}));
    const QHash<QString, double> times = database.getTableModTimes();
    EXPECT_EQ(times.size(), 7);
    EXPECT_EQ(times["origin"], dfiletime(open.files.tablePath("origin").c_str()));
    EXPECT_EQ(times["arrival"], ORVANE_NULL_TIME);
}

TEST(TypedGetters, OfATable)
{
    const OpenDatabase open;
    const auto origin = open.at(OriginTable);
    EXPECT_EQ(shown(origin->getTableName()), "origin");
    EXPECT_EQ(shown(origin->getTableDescription()), "locations of events");
    EXPECT_EQ(shown(origin->getTableDetail()), "Where and when.");
    EXPECT_EQ(shown(origin->getTableFilename()), open.files.tablePath("origin"));
    EXPECT_EQ(shown(origin->getTableDirname()), open.files.folder());
    EXPECT_EQ(shown(origin->getUniqueIdName()), "orid");
    EXPECT_EQ(origin->getTableCreation(), process(origin.get(), "table_creation")->toString());
    EXPECT_EQ(origin->getFieldCount(), 10);
    EXPECT_EQ(origin->getRecordCount(), 3);
    EXPECT_EQ(origin->getRecordSize(), 117);
    EXPECT_EQ(origin->getTableSize(), 3 * 117);
    EXPECT_EQ(origin->getTableModTime(), dfiletime(open.files.tablePath("origin").c_str()));
    EXPECT_TRUE(origin->tableIsPresent());
    EXPECT_FALSE(origin->tableIsView());
    EXPECT_FALSE(origin->tableIsWritable());
    EXPECT_EQ(origin->getTableFields(),
              (Names{"lat", "lon", "depth", "time", "orid", "evid", "mb", "auth", "commid", "lddate"}));
    EXPECT_EQ(origin->getViewTables(), Names{"origin"});
    EXPECT_EQ(origin->getPrimaryKey(), (Names{"lat", "lon", "depth", "time"}));
    EXPECT_EQ(origin->getAlternateKey(), Names{"orid"});
    EXPECT_EQ(origin->getForeignKeys(), (Names{"evid", "commid"}));
    EXPECT_TRUE(origin->findJoinTables().contains("assoc"));
}

TEST(TypedGetters, OfAField)
{
    const OpenDatabase open;
    const auto lat = open.at(OriginTable, LatField);
    EXPECT_EQ(shown(lat->getFieldName()), "lat");
    EXPECT_EQ(shown(lat->getFieldNull()), "-999.0000");
    EXPECT_EQ(shown(lat->getFieldDescription()), "latitude");
    EXPECT_EQ(shown(lat->getFieldDetail()), "Geographic latitude, north positive.");
    EXPECT_EQ(shown(lat->getFieldRange()), "lat >= -90.0 && lat <= 90.0");
    EXPECT_EQ(shown(lat->getFieldFormat()), "%9.4f");
    EXPECT_EQ(shown(lat->getFieldUnits()), "degrees");
    EXPECT_EQ(shown(lat->getFieldBaseTable()), "origin");
    EXPECT_EQ(lat->getFieldType(), 3);
    EXPECT_EQ(lat->getFieldSize(), 9);
    EXPECT_EQ(lat->getFieldIndex(), 0);
}

TEST(TypedGetters, IntegersSaturateWhileTheResponseHasThemWhole)
{
    const OpenDatabase open;
    const auto origin = open.at(OriginTable);
    LibrarySpy spy;
    spy.answerQueries(dbTABLE_SIZE, 2300000000);
    EXPECT_EQ(origin->getTableSize(), 2147483647);
    EXPECT_EQ(origin->request("table_size")->toLongLong(), 2300000000);
    spy.answerQueries(dbTABLE_SIZE, -2300000000);
    EXPECT_EQ(origin->getTableSize(), -2147483647 - 1);
    spy.answerQueries(dbTABLE_SIZE, 2147483647);
    EXPECT_EQ(origin->getTableSize(), 2147483647);
}

TEST(JoinTablesPresent, AreTwoListsOfKeys)
{
    const OpenDatabase open;
    const QMap<QString, QList<QStringList>> keys = open.at(AssocTable)->findJoinTablesPresent();
    EXPECT_EQ(keys["origin"], (QList<QStringList>{{"orid"}, {"orid"}}));
    EXPECT_FALSE(keys.contains("arrival"));
}

TEST(Cells, KnowWhetherTheyAreNull)
{
    const OpenDatabase open;
    EXPECT_TRUE(open.at(OriginTable, DepthField, 1)->cellIsNull());
    EXPECT_FALSE(open.at(OriginTable, DepthField, 0)->cellIsNull());
    EXPECT_TRUE(open.at(OriginTable, DepthField, dbNULL)->cellIsNull());
    EXPECT_TRUE(open.at(SiteTable, 2, 0)->cellIsNull());
}

TEST(Cells, AreNotNullWhenTheyAreNoCellsAndAskNothing)
{
    const OpenDatabase open;
    LibrarySpy spy;
    EXPECT_FALSE(open.handle->cellIsNull());
    EXPECT_FALSE(open.at(OriginTable)->cellIsNull());
    EXPECT_FALSE(open.at(OriginTable, DepthField)->cellIsNull());
    EXPECT_FALSE(open.at(OriginTable, dbALL, 1)->cellIsNull());
    QDbptr unbound;
    EXPECT_FALSE(unbound.cellIsNull());
    EXPECT_TRUE(spy.queries.empty());
    EXPECT_EQ(spy.reads, 0);
}

TEST(Cells, HaveATextAndAValue)
{
    const OpenDatabase open;
    const auto orid = open.at(OriginTable, OridField, 2);
    EXPECT_EQ(shown(orid->dbGet(false)), "      33");
    EXPECT_EQ(orid->dbGetv(), QVariant(33LL));
    EXPECT_EQ(open.at(OriginTable, TimeField, 0)->dbGetv(), QVariant(1262304000.12345));
    EXPECT_EQ(open.at(OriginTable, AuthField, 0)->dbGetv(), QVariant("USGS"));
    EXPECT_EQ(open.at(OriginTable, OridField, dbNULL)->dbGetv(), QVariant(-1LL));
}

TEST(Cells, HaveNoValueWhenTheyAreNoCells)
{
    const OpenDatabase open;
    EXPECT_FALSE(open.handle->dbGetv().isValid());
    EXPECT_FALSE(open.at(OriginTable, OridField)->dbGetv().isValid());
    EXPECT_FALSE(open.at(OriginTable, dbALL, 0)->dbGetv().isValid());
    QDbptr unbound;
    EXPECT_FALSE(unbound.dbGetv().isValid());
}

TEST(Records, HaveATextAndValuesByName)
{
    const OpenDatabase open;
    const auto record = open.at(OriginTable, dbALL, 0);
    EXPECT_EQ(shown(record->dbGet(false)),
              TemporaryDatabase::readFile(open.files.tablePath("origin")).substr(0, 116));
    EXPECT_EQ(record->dbGetv({"orid", "auth", "lat"}),
              (QHash<QString, QVariant>{{"orid", 1LL}, {"auth", "USGS"}, {"lat", 35.1}}));
    EXPECT_EQ(
        thrownBy([&] { record->dbGetv({"nowhere"}); })
            .find(
                "QOvConnection::request: 'process' request to server failed:\n\nFailed to retrieve value for "
                "field 'nowhere'\n\nQOvServer::process: request 'dbgetv': input QDbptr: ["),
        0U);
}

TEST(Records, AreCopiedToTheScratchRecord)
{
    const OpenDatabase open;
    EXPECT_EQ(open.at(OriginTable, dbALL, 2)->dbGet(true), QString());
    EXPECT_EQ(open.at(OriginTable, OridField, dbSCRATCH)->dbGetv(), QVariant(33LL));
}

TEST(Fields, KnowWhetherTheyAreInThePrimaryKey)
{
    const OpenDatabase open;
    EXPECT_TRUE(open.at(OriginTable, LatField)->fieldIsPrimary());
    EXPECT_TRUE(open.at(OriginTable, LatField, 0)->fieldIsPrimary());
    EXPECT_FALSE(open.at(OriginTable, OridField)->fieldIsPrimary());
    EXPECT_FALSE(open.at(OriginTable)->fieldIsPrimary());
    EXPECT_FALSE(open.handle->fieldIsPrimary());
    QDbptr unbound;
    EXPECT_FALSE(unbound.fieldIsPrimary());
    EXPECT_NE(thrownBy([&] { open.at(OriginTable, dbALL, 0)->fieldIsPrimary(); }), "(nothing thrown)");
}

TEST(Columns, AreJudgedFromASample)
{
    const OpenDatabase open;
    EXPECT_FALSE(open.at(OriginTable, OridField)->columnIsProbablyNull());
    EXPECT_EQ(open.at(OriginTable, AuthField)->columnApproxWidthChars(), 14);
    EXPECT_TRUE(open.at(SiteTable, 2)->columnIsProbablyNull());
    EXPECT_TRUE(open.at(AssocTable, 0)->columnIsProbablyNull());
    EXPECT_EQ(open.at(AssocTable, 0)->columnApproxWidthChars(), 8);
}

TEST(Columns, ThatHoldValuesAreListedInSchemaOrder)
{
    const OpenDatabase open;
    EXPECT_EQ(open.at(SiteTable)->getNonNullTableFields(),
              (Names{"sta", "ondate", "lat", "lon", "elev", "staname"}));
    EXPECT_EQ(open.at(AssocTable)->getNonNullTableFields(), Names{});
}

TEST(Lookups, ReturnNewHandlesOfTheCaller)
{
    const OpenDatabase open;
    const std::unique_ptr<QDbptr> origin(open.handle->lookupTable("origin"));
    EXPECT_EQ(origin->getDbptrType(), DbptrTable);
    EXPECT_EQ(origin->parent(), nullptr);
    EXPECT_EQ(origin->getConnection(), open.connection.get());
    const std::unique_ptr<QDbptr> byIndex(open.handle->lookupTable(OriginTable));
    EXPECT_EQ(shown(byIndex->getTableName()), "origin");
    const std::unique_ptr<QDbptr> all(origin->lookupTable(int(dbALL)));
    EXPECT_EQ(all->getDbptrType(), DbptrDatabase);
    const std::unique_ptr<QDbptr> orid(origin->lookupField("orid"));
    EXPECT_EQ(orid->getDbptrType(), DbptrField);
    const std::unique_ptr<QDbptr> evid(origin->lookupField(OridField + 1));
    EXPECT_EQ(shown(evid->getFieldName()), "evid");
    const std::unique_ptr<QDbptr> cell(orid->lookupRecord(2));
    EXPECT_EQ(cell->getDbptrType(), DbptrCell);
    EXPECT_EQ(shown(cell->dbGet(false)), "      33");
    EXPECT_NE(thrownBy([&] {
                  delete open.handle->lookupTable("nowhere");
              }).find("Lookup failed for table 'nowhere':\n\n"),
              std::string::npos);
}

TEST(Conversion, OfVariantsToTexts)
{
    EXPECT_EQ(QDbptr::QVariantListToQStringList({"a", 12, QVariant(), true}), (Names{"a", "12", "", "true"}));
    EXPECT_EQ(QDbptr::QVariantListToQStringList({}), Names{});
}

} // namespace
