#include "open_database.h"

namespace {

void expectInvalid(Dbptr dbptr)
{
    EXPECT_EQ(dbptr.database, dbINVALID);
    EXPECT_EQ(dbptr.table, dbINVALID);
    EXPECT_EQ(dbptr.field, dbINVALID);
    EXPECT_EQ(dbptr.record, dbINVALID);
}

TEST(QOvResponse, IsPlainAndEmptyWhenNew)
{
    const QOvResponse response;
    EXPECT_EQ(response.getOvResponseType(), 0);
    EXPECT_FALSE(response.errorOccurred());
    EXPECT_EQ(response.errorString(), QString());
    EXPECT_FALSE(response.isValid());
    expectInvalid(response.getDbptr());
}

TEST(QOvResponse, HoldsATextOrAnInteger)
{
    const QOvResponse text(QString("origin"));
    EXPECT_EQ(text.getOvResponseType(), 2);
    EXPECT_EQ(text.toString(), QString("origin"));
    expectInvalid(text.getDbptr());

    const QOvResponse number(17);
    EXPECT_EQ(number.getOvResponseType(), 2);
    EXPECT_EQ(number.toInt(), 17);
    expectInvalid(number.getDbptr());
}

TEST(QOvResponse, AnErrorLeavesValueAndPointer)
{
    QOvResponse response;
    response.setDbptr({1, 2, 3, 4});
    response.setValue(QString("value"));
    response.setError("wrong");
    EXPECT_EQ(response.getOvResponseType(), 1);
    EXPECT_TRUE(response.errorOccurred());
    EXPECT_EQ(response.errorString(), QString("wrong"));
    EXPECT_EQ(response.toString(), QString("value"));
    EXPECT_EQ(response.getDbptr().record, 4);
}

TEST(QOvResponse, TheLastOfErrorAndPointerWinsAndTheErrorTextStays)
{
    QOvResponse response;
    response.setError("x");
    response.setDbptr({1, 2, 3, 4});
    EXPECT_EQ(response.getOvResponseType(), 3);
    EXPECT_FALSE(response.errorOccurred());
    EXPECT_EQ(response.errorString(), QString("x"));
    response.setError("y");
    EXPECT_EQ(response.getOvResponseType(), 1);
}

TEST(QOvResponse, MakesNoHandleWithoutAConnection)
{
    QOvResponse response;
    response.setDbptr({0, 1, dbALL, dbALL});
    EXPECT_EQ(thrownBy([&] { delete response.getQDbptr(); }),
              "QDbptr::QDbptr: Can't initialize QDbptr with NULL QOvConnection");
}

TEST(QOvResponse, MakesAHandleOnItsConnectionAndPointer)
{
    const OpenDatabase open;
    QOvResponse response;
    response.setConnection(open.connection.get());
    response.setDbptr({5, 6, 7, 8});
    const std::unique_ptr<QDbptr> handle(response.getQDbptr());
    EXPECT_EQ(handle->getConnection(), open.connection.get());
    EXPECT_EQ(handle->getIndexDatabase(), 5);
    EXPECT_EQ(handle->getIndexTable(), 6);
    EXPECT_EQ(handle->getIndexField(), 7);
    EXPECT_EQ(handle->getIndexRecord(), 8);
    EXPECT_EQ(handle->parent(), nullptr);
}

TEST(QOvResponse, OutlivesItsConnection)
{
    std::shared_ptr<QOvResponse> response;
    {
        const OpenDatabase open;
        response = open.connection->request(open.handle.get(), "schema_name");
    }
    EXPECT_EQ(response->toString(), QString("small"));
    EXPECT_EQ(response->getOvResponseType(), 3);
}

} // namespace
