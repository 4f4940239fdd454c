#include <QSignalSpy>

#include "library_spy.h"
#include "open_database.h"

namespace {

TEST(QDbptr, IsInvalidWhenNew)
{
    QDbptr handle;
    EXPECT_FALSE(handle.isValid());
    EXPECT_EQ(handle.getConnection(), nullptr);
    EXPECT_EQ(handle.getIndexDatabase(), dbINVALID);
    EXPECT_EQ(handle.getIndexTable(), dbINVALID);
    EXPECT_EQ(handle.getIndexField(), dbINVALID);
    EXPECT_EQ(handle.getIndexRecord(), dbINVALID);
    EXPECT_EQ(handle.getDbptrType(), DbptrInvalid);
    EXPECT_EQ(handle.getName(), QString());
    EXPECT_EQ(thrownBy([&] { handle.getTableName(); }),
              "QDbptr::request: No open database connection for request 'table_name'");
}

TEST(QDbptr, NeedsAConnection)
{
    EXPECT_EQ(thrownBy([] { QDbptr handle(nullptr, dbinvalid()); }),
              "QDbptr::QDbptr: Can't initialize QDbptr with NULL QOvConnection");
}

TEST(QDbptr, IsInvalidWithAnyInvalidIndex)
{
    const OpenDatabase open;
    EXPECT_TRUE(open.handle->isValid());
    EXPECT_FALSE(open.at(dbINVALID, 0, 0)->isValid());
    EXPECT_FALSE(open.at(0, dbINVALID, 0)->isValid());
    EXPECT_FALSE(open.at(0, 0, dbINVALID)->isValid());
    EXPECT_FALSE(QDbptr(open.connection.get(), {dbINVALID, 0, 0, 0}).isValid());
    EXPECT_EQ(open.at(0, 0, dbINVALID)->getDbptrType(), 0);
}

TEST(QDbptr, KeepsItsIndexes)
{
    const OpenDatabase open;
    QDbptr handle(open.connection.get(), {1, 2, dbALL, 9876543210});
    EXPECT_EQ(handle.getConnection(), open.connection.get());
    EXPECT_EQ(handle.getIndexDatabase(), 1);
    EXPECT_EQ(handle.getIndexTable(), 2);
    EXPECT_EQ(handle.getIndexField(), -501);
    EXPECT_EQ(handle.getIndexRecord(), 9876543210);
    EXPECT_EQ(handle.getDbptr().record, 9876543210);
    EXPECT_EQ(handle.parent(), nullptr);
}

struct Categorised {
    int64_t table;
    int64_t field;
    int64_t record;
    QDbptrType type;
    const char *name;
};

void PrintTo(const Categorised &categorised, std::ostream *out)
{
    *out << categorised.table << " " << categorised.field << " " << categorised.record;
}

class DbptrCategory : public testing::TestWithParam<Categorised>
{
};

TEST_P(DbptrCategory, FollowsFromTheIndexes)
{
    const OpenDatabase open;
    const auto &[table, field, record, type, name] = GetParam();
    const auto handle = open.at(table, field, record);
    EXPECT_EQ(handle->getDbptrType(), type);
    if (type == DbptrDatabase)
        EXPECT_EQ(handle->getName().toStdString(), open.files.path());
    else
        EXPECT_EQ(handle->getName(), QString(name));
}

INSTANTIATE_TEST_SUITE_P(
    Pointers, DbptrCategory,
    testing::Values(Categorised{dbALL, dbALL, dbALL, DbptrDatabase, ""},
                    Categorised{1, dbALL, dbALL, DbptrTable, "origin"},
                    Categorised{1, 4, dbALL, DbptrField, "orid"}, Categorised{1, 4, 2, DbptrCell, "orid"},
                    Categorised{1, 5, dbSCRATCH, DbptrCell, "evid"},
                    Categorised{1, 4, dbNULL, DbptrCell, "orid"}, Categorised{1, dbALL, 2, DbptrRecord, ""},
                    Categorised{1, dbALL, dbSCRATCH, DbptrRecord, ""},
                    Categorised{1, dbALL, dbNULL, DbptrRecord, ""}, Categorised{1, -3, 7, DbptrRecord, ""},
                    Categorised{1, 4, dbINVALID, DbptrInvalid, ""}));

TEST(DbptrCategory, OfIndexesThatFitNoneIsAnError)
{
    const OpenDatabase open;
    for (const auto &handle : {open.at(dbALL, 3), open.at(dbALL, dbALL, 3), open.at(1, 4, -7), open.at(-9)})
        EXPECT_EQ(thrownBy([&] { handle->getDbptrType(); }),
                  "QDbptr::getDbptrType: " + handle->toString(QDbptrToStringMultiline).toStdString() +
                      ": Uncategorized Dbptr type in QDbptr::getDbptrType");
    EXPECT_EQ(thrownBy([&] { open.at(dbALL, 3)->getDbptrType(); }),
              "QDbptr::getDbptrType: QDbptr: [\n\t" + open.databaseLabel() +
                  ",\n\t-501 = <dbALL>,\n\t3,\n\t-501 = <dbALL>\n]: Uncategorized Dbptr type in "
                  "QDbptr::getDbptrType");
    elog_clear();
}

TEST(QDbptr, IsInvalidatedWhenItsDatabaseCloses)
{
    OpenDatabase open;
    const auto cell = open.at(OriginTable, OridField, 1);
    QSignalSpy invalidated(cell.get(), &QDbptr::invalidated);
    open.connection.reset();
    EXPECT_EQ(invalidated.count(), 1);
    EXPECT_FALSE(cell->isValid());
    EXPECT_EQ(cell->getConnection(), nullptr);
    EXPECT_EQ(cell->getIndexRecord(), dbINVALID);
    EXPECT_EQ(cell->getDbptrType(), 0);
    EXPECT_EQ(thrownBy([&] { cell->getTableName(); }),
              "QDbptr::request: No open database connection for request 'table_name'");
}

TEST(QDbptr, CloseDatabaseClosesThroughTheConnection)
{
    const TemporaryDatabase files;
    QOvConnection connection("/");
    const std::unique_ptr<QDbptr> handle(connection.openDatabase(QString::fromStdString(files.path()), "r"));
    handle->closeDatabase();
    EXPECT_FALSE(connection.databaseIsOpen());
    EXPECT_FALSE(handle->isValid());
    handle->closeDatabase(); // unbound now: nothing to close
    delete connection.openDatabase(QString::fromStdString(files.path()), "r");
}

TEST(QDbptr, MovesToAnotherPlaceSilently)
{
    const OpenDatabase open;
    const auto handle = open.at(OriginTable, OridField, 0);
    QSignalSpy changed(handle.get(), &QDbptr::dataChanged);
    QSignalSpy invalidated(handle.get(), &QDbptr::invalidated);
    handle->moveTo({open.handle->getIndexDatabase(), OriginTable, OridField, 2});
    EXPECT_EQ(handle->dbGet(false), QString("      33"));
    EXPECT_EQ(changed.count() + invalidated.count(), 0);
}

TEST(QDbptr, RequestsWithoutArgumentsAndWith)
{
    const OpenDatabase open;
    EXPECT_EQ(open.handle->request("schema_name")->toString(), QString("small"));
    EXPECT_EQ(open.handle->request("lookup_table", {"origin"})->getDbptr().table, OriginTable);
    EXPECT_TRUE(
        thrownBy([&] { open.handle->request("table_name"); })
            .starts_with("QOvConnection::request: 'process' request to server failed:\n\nInvalid request -- "
                         "database pointer does not point to a table\n\n"));
}

TEST(QDbptrText, HasThreeForms)
{
    const OpenDatabase open;
    const auto cell = open.at(OriginTable, OridField, 2);
    const std::string database = open.databaseLabel();
    EXPECT_EQ(cell->toString(QDbptrToStringMultiline).toStdString(),
              "QDbptr: [\n\t" + database + ",\n\t1 = 'origin',\n\t4 = 'orid',\n\t2\n]");
    EXPECT_EQ(cell->toString(), cell->toString(QDbptrToStringMultiline));
    EXPECT_EQ(cell->toString(QDbptrToStringSingleLine).toStdString(),
              "QDbptr: [" + database + ", 1 = 'origin', 4 = 'orid', 2]");
    EXPECT_EQ(cell->toString(QDbptrToStringIndexesOnly).toStdString(),
              "[" + std::to_string(open.handle->getIndexDatabase()) + ", 1, 4, 2]");
}

TEST(QDbptrText, MarksSpecialIndexes)
{
    const OpenDatabase open;
    const auto label = [](Dbptr dbptr) {
        QDbptr handle;
        handle.moveTo(dbptr);
        return handle.toString(QDbptrToStringSingleLine).toStdString();
    };
    EXPECT_EQ(label({dbINVALID, dbINVALID, dbINVALID, dbINVALID}),
              "QDbptr: [-102 = <dbINVALID>, -102 = <dbINVALID>, -102 = <dbINVALID>, -102 = <dbINVALID>]");
    EXPECT_EQ(label({dbALL, dbALL, dbALL, dbALL}),
              "QDbptr: [-501 = <Unknown>, -501 = <dbALL>, -501 = <dbALL>, -501 = <dbALL>]");
    EXPECT_EQ(label({dbSCRATCH, dbSCRATCH, dbSCRATCH, dbSCRATCH}),
              "QDbptr: [-504 = <Unknown>, -504 = <Unknown>, -504 = <Unknown>, -504 = <dbSCRATCH>]");
    EXPECT_EQ(label({dbNULL, dbNULL, dbNULL, dbNULL}),
              "QDbptr: [-505 = <Unknown>, -505 = <Unknown>, -505 = <Unknown>, -505 = <dbNULL>]");
    EXPECT_EQ(label({-1, -2, -3, -4}),
              "QDbptr: [-1 = <Unknown>, -2 = <Unknown>, -3 = <Unknown>, -4 = <Unknown>]");
    QDbptr unbound;
    EXPECT_EQ(unbound.toString(QDbptrToStringIndexesOnly), QString("[-102, -102, -102, -102]"));
}

TEST(QDbptrText, SendsOneRequestForEachName)
{
    const OpenDatabase open;
    const auto cell = open.at(OriginTable, OridField, 2);
    LibrarySpy spy;
    cell->toString(QDbptrToStringIndexesOnly);
    EXPECT_TRUE(spy.queries.empty());
    cell->toString(QDbptrToStringMultiline);
    EXPECT_EQ(spy.queries, (std::vector<int>{dbDATABASE_NAME, dbTABLE_NAME, dbFIELD_NAME}));
    spy.queries.clear();
    cell->toString(QDbptrToStringSingleLine);
    EXPECT_EQ(spy.queries, (std::vector<int>{dbDATABASE_NAME, dbTABLE_NAME, dbFIELD_NAME}));
    spy.queries.clear();
    open.handle->toString();
    EXPECT_EQ(spy.queries, (std::vector<int>{dbDATABASE_NAME}));
}

TEST(QDbptrText, LeavesOutNamesThatCannotBeHad)
{
    const OpenDatabase open;
    const std::string database = open.databaseLabel();
    EXPECT_EQ(open.at(1000, 1000, 0)->toString(QDbptrToStringSingleLine).toStdString(),
              "QDbptr: [" + database + ", 1000, 1000, 0]");
    EXPECT_EQ(QDbptr(open.connection.get(), {1000, 0, 0, 0}).toString(QDbptrToStringSingleLine),
              QString("QDbptr: [1000, 0, 0, 0]"));
    QDbptr unbound;
    unbound.moveTo({0, 1, 2, 3});
    EXPECT_EQ(unbound.toString(), QString("QDbptr: [\n\t0,\n\t1,\n\t2,\n\t3\n]"));
    elog_clear();
}

TEST(QDbptrText, TakesNamesAsTheyAre)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.onQuery = [](Dbptr, int code, void *answer) -> std::optional<int> {
        if (code != dbTABLE_NAME)
            return {};
        *static_cast<const char **>(answer) = "%1 %2";
        return 0;
    };
    EXPECT_EQ(open.at(OriginTable)->toString(QDbptrToStringSingleLine).toStdString(),
              "QDbptr: [" + open.databaseLabel() + ", 1 = '%1 %2', -501 = <dbALL>, -501 = <dbALL>]");
}

} // namespace
