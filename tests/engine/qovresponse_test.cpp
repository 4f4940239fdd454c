#include <gtest/gtest.h>

#include <qovresponse.h>

namespace {

TEST(QOvResponse, IsPlainAndEmptyWhenNew)
{
    const QOvResponse response;
    EXPECT_EQ(response.getOvResponseType(), 0);
    EXPECT_FALSE(response.errorOccurred());
    EXPECT_EQ(response.errorString(), QString());
    EXPECT_FALSE(response.isValid());
    const Dbptr dbptr = response.getDbptr();
    EXPECT_EQ(dbptr.database, dbINVALID);
    EXPECT_EQ(dbptr.table, dbINVALID);
    EXPECT_EQ(dbptr.field, dbINVALID);
    EXPECT_EQ(dbptr.record, dbINVALID);
}

} // namespace
