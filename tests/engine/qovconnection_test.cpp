#include <QSignalSpy>

#include "library_spy.h"
#include "open_database.h"

namespace {

// A connection that holds no open database may not be destroyed: opens one, so that it may.
void makeDestroyable(QOvConnection &connection, const TemporaryDatabase &files)
{
    delete connection.openDatabase(QString::fromStdString(files.path()), "r");
}

TEST(QOvConnection, RefusesAnyOtherServerName)
{
    EXPECT_EQ(thrownBy([] { QOvConnection connection("/x"); }),
              "QOvConnection::QOvConnection: Unknown server name\n\n\t'/x'\n\nin QOvConnection. Currently "
              "limited to "
              "'/'");
    EXPECT_EQ(
        thrownBy([] { QOvConnection connection("", "quakes", "r"); }),
        "QOvConnection::QOvConnection: Unknown server name\n\n\t''\n\nin QOvConnection. Currently limited to "
        "'/'");
}

TEST(QOvConnection, OpensNothingByItself)
{
    const TemporaryDatabase files;
    QOvConnection connection("/");
    EXPECT_FALSE(connection.databaseIsOpen());
    EXPECT_EQ(connection.getServerName(), QString("/"));
    EXPECT_EQ(connection.getLaunchDbName(), QString());
    const std::unique_ptr<QDbptr> handle(connection.getQDbptr());
    EXPECT_EQ(handle->getConnection(), nullptr);
    EXPECT_FALSE(handle->isValid());
    makeDestroyable(connection, files);
}

TEST(QOvConnection, OpensADatabaseAndReturnsAHandleOnIt)
{
    const OpenDatabase open;
    EXPECT_TRUE(open.connection->databaseIsOpen());
    EXPECT_EQ(open.connection->getLaunchDbName().toStdString(), open.files.path());
    EXPECT_TRUE(open.handle->isValid());
    EXPECT_EQ(open.handle->getConnection(), open.connection.get());
    EXPECT_EQ(open.handle->getDbptrType(), DbptrDatabase);
    const std::unique_ptr<QDbptr> another(open.connection->getQDbptr());
    EXPECT_EQ(another->getDbptrType(), DbptrDatabase);
    EXPECT_EQ(another->getIndexDatabase(), open.handle->getIndexDatabase());
}

TEST(QOvConnection, OpensATableOfADatabase)
{
    const TemporaryDatabase files;
    fill(files);
    QOvConnection connection("/");
    const std::unique_ptr<QDbptr> handle(
        connection.openDatabase(QString::fromStdString(files.tablePath("origin")), "r"));
    EXPECT_EQ(handle->getDbptrType(), DbptrTable);
    EXPECT_EQ(handle->getTableName(), QString("origin"));
}

TEST(QOvConnection, OpensADatabaseAsItIsMade)
{
    const TemporaryDatabase files;
    const QOvConnection connection("/", QString::fromStdString(files.path()), "r");
    EXPECT_TRUE(connection.databaseIsOpen());
    EXPECT_EQ(connection.getLaunchDbName().toStdString(), files.path());
}

TEST(QOvConnection, ThrowsWhenTheDatabaseItIsMadeWithDoesNotOpen)
{
    const std::string text = thrownBy([] { QOvConnection connection("/", "/no/such/place", "r"); });
    EXPECT_TRUE(
        text.starts_with("QOvConnection::request: 'process' request to server failed:\n\nFailed to open "
                         "database '/no/such/place' with permissions 'r':\n\n"))
        << text;
}

TEST(QOvConnection, RefusesASecondDatabaseAndKeepsTheFirst)
{
    const OpenDatabase open;
    EXPECT_EQ(
        thrownBy([&] { delete open.connection->openDatabase("other%1", "r"); }),
        "QOvConnection::openDatabase: QOvConnection currently supports only one open database at a time; "
        "attempt to open another ('other%1') rejected");
    EXPECT_TRUE(open.connection->databaseIsOpen());
    EXPECT_EQ(open.handle->getSchemaName(), QString("small"));
    EXPECT_EQ(open.connection->getLaunchDbName().toStdString(), open.files.path());
}

TEST(QOvConnection, AFailedOpeningLeavesItUsable)
{
    const TemporaryDatabase files;
    QOvConnection connection("/");
    EXPECT_NE(thrownBy([&] { delete connection.openDatabase("/no/such/place", "r"); }), "(nothing thrown)");
    EXPECT_FALSE(connection.databaseIsOpen());
    EXPECT_EQ(connection.getLaunchDbName(), QString());
    makeDestroyable(connection, files);
    EXPECT_TRUE(connection.databaseIsOpen());
}

TEST(QOvConnection, ThrowsForANullHandleWithoutAskingTheDispatcher)
{
    const OpenDatabase open;
    LibrarySpy spy;
    EXPECT_EQ(thrownBy([&] { open.connection->request(nullptr, "table_count"); }),
              "QOvConnection::request: input QDbptr is null");
    EXPECT_TRUE(spy.queries.empty());
}

TEST(QOvConnection, ThrowsTheWholeTextOfAnErrorResponse)
{
    const OpenDatabase open;
    EXPECT_EQ(thrownBy([&] { open.connection->request(open.handle.get(), "nonsense"); }),
              "QOvConnection::request: 'process' request to server failed:\n\nUnsupported request type "
              "'nonsense'\n\n"
              "QOvServer::process: request 'nonsense': input QDbptr: [\n\t" +
                  open.databaseLabel() + ",\n\t-501 = <dbALL>,\n\t-501 = <dbALL>,\n\t-501 = <dbALL>\n]");
}

TEST(QOvConnection, StampsItselfIntoAGoodResponse)
{
    const OpenDatabase open;
    const auto response = open.connection->request(open.handle.get(), "lookup_table", {"origin"});
    const std::unique_ptr<QDbptr> handle(response->getQDbptr());
    EXPECT_EQ(handle->getConnection(), open.connection.get());
}

TEST(QOvConnection, ClosingInvalidatesEveryHandleAndAnnouncesIt)
{
    const TemporaryDatabase files;
    QOvConnection connection("/");
    const std::unique_ptr<QDbptr> first(connection.openDatabase(QString::fromStdString(files.path()), "r"));
    const std::unique_ptr<QDbptr> second(connection.getQDbptr());
    const std::unique_ptr<QDbptr> third(first->lookupTable("origin"));
    QSignalSpy closed(&connection, &QOvConnection::databaseClosed);
    connection.closeDatabase();
    EXPECT_EQ(closed.count(), 1);
    EXPECT_FALSE(connection.databaseIsOpen());
    for (const auto *handle : {&first, &second, &third}) {
        EXPECT_FALSE((*handle)->isValid());
        EXPECT_EQ((*handle)->getConnection(), nullptr);
        EXPECT_EQ((*handle)->getIndexDatabase(), dbINVALID);
    }
    makeDestroyable(connection, files);
}

TEST(QOvConnection, OpensAgainAfterClosing)
{
    const TemporaryDatabase files;
    fill(files);
    QOvConnection connection("/");
    makeDestroyable(connection, files);
    connection.closeDatabase();
    const std::unique_ptr<QDbptr> handle(connection.openDatabase(QString::fromStdString(files.path()), "r"));
    EXPECT_EQ(std::unique_ptr<QDbptr>(handle->lookupTable("origin"))->getRecordCount(), 3);
}

TEST(QOvConnection, ClosingWithoutAnOpenDatabaseThrows)
{
    const TemporaryDatabase files;
    QOvConnection connection("/");
    QSignalSpy closed(&connection, &QOvConnection::databaseClosed);
    const std::string text = thrownBy([&] { connection.closeDatabase(); });
    EXPECT_TRUE(text.starts_with(
        "QOvConnection::request: 'process' request to server failed:\n\nRequest attempted on "
        "invalid QDbptr\n\nQOvServer::process: request 'close_database': input QDbptr: [\n\t"
        "-102 = <dbINVALID>"))
        << text;
    EXPECT_EQ(closed.count(), 0);
    makeDestroyable(connection, files);
}

TEST(QOvConnection, AFailedClosingLeavesTheDatabaseOpen)
{
    const OpenDatabase open;
    QSignalSpy closed(open.connection.get(), &QOvConnection::databaseClosed);
    {
        LibrarySpy spy;
        spy.onClose = [](Dbptr) { return dbERROR_IO; };
        EXPECT_NE(thrownBy([&] { open.connection->closeDatabase(); }), "(nothing thrown)");
    }
    EXPECT_EQ(closed.count(), 0);
    EXPECT_TRUE(open.connection->databaseIsOpen());
    EXPECT_TRUE(open.handle->isValid());
}

TEST(QOvConnection, DestroyingItClosesTheDatabase)
{
    OpenDatabase open;
    QSignalSpy invalidated(open.handle.get(), &QDbptr::invalidated);
    open.connection.reset();
    EXPECT_EQ(invalidated.count(), 1);
    EXPECT_FALSE(open.handle->isValid());
}

TEST(QOvConnectionDeathTest, DestroyingItWithoutAnOpenDatabaseEndsTheProgram)
{
    EXPECT_DEATH({ QOvConnection connection("/"); }, "Request attempted on invalid QDbptr");
}

TEST(QOvConnectionDeathTest, DestroyingItAfterClosingEndsTheProgram)
{
    const TemporaryDatabase files;
    EXPECT_DEATH(
        {
            QOvConnection connection("/", QString::fromStdString(files.path()), "r");
            connection.closeDatabase();
        },
        "Request attempted on invalid QDbptr");
}

TEST(QOvConnection, TwoConnectionsHoldTwoDatabases)
{
    const OpenDatabase first;
    {
        const OpenDatabase second;
        EXPECT_NE(first.handle->getIndexDatabase(), second.handle->getIndexDatabase());
        EXPECT_NE(first.handle->getDatabaseName(), second.handle->getDatabaseName());
    }
    EXPECT_TRUE(first.handle->isValid());
    EXPECT_EQ(first.at(OriginTable)->getRecordCount(), 3);
}

} // namespace
