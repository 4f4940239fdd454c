#include "library_spy.h"
#include "open_database.h"

namespace {

using Texts = std::vector<std::string>;

class BadInput : public testing::Test
{
protected:
    BadInput()
    {
        const auto joined = process(m_origin.get(), "join_table", {"remark", "remarked"});
        m_joined = std::make_unique<QDbptr>(m_open.connection.get(), joined->getDbptr());
        m_before = tables();
    }

    QStringList tables() const { return process(m_open.handle.get(), "schema_tables")->toStringList(); }

    /* All tables and views are as before, and the next view can be made. */
    void expectNothingLeft() const
    {
        EXPECT_EQ(tables(), m_before);
        const auto next = process(m_origin.get(), "subset", {"evid == 8", "next"});
        const QDbptr view(m_open.connection.get(), next->getDbptr());
        EXPECT_EQ(process(const_cast<QDbptr *>(&view), "record_count")->toInt(), 2);
        EXPECT_FALSE(process(const_cast<QDbptr *>(&view), "dbfree")->errorOccurred());
    }

    const OpenDatabase m_open;
    const std::unique_ptr<QDbptr> m_origin = m_open.at(OriginTable);
    std::unique_ptr<QDbptr> m_joined;
    QStringList m_before;
};

TEST_F(BadInput, ViewNamesThatCannotBeOnesLeaveNothing)
{
    const QString longest(300, 'x');
    for (const QString &name : {QString("site"), QString("remarked"), QString("a/b"), QString("two\nlines"),
                                QString("dbALL"), longest}) {
        SCOPED_TRACE(name.toStdString());
        expectErrorWithLog(m_origin.get(), "subset", {"evid == 8", name},
                           "Subset failed for expression 'evid == 8'");
        expectErrorWithLog(m_origin.get(), "join_table", {"remark", name}, "Join failed");
        expectErrorWithLog(m_origin.get(), "outer_join_table", {"remark", name}, "Outer-join failed");
        expectErrorWithLog(m_origin.get(), "left_join_table", {"remark", name}, "Left-join failed");
        expectErrorWithLog(m_origin.get(), "no_join_table", {"remark", name}, "Join failed");
        expectErrorWithLog(m_origin.get(), "theta_join_table", {"remark", "orid > lineno", name},
                           "Theta-join failed");
        expectErrorWithLog(m_joined.get(), "sever_table", {"remark", name}, "Sever failed");
        expectNothingLeft();
        // These never fail: what they answer is the library's invalid pointer.
        const QVariant fields = QStringList{"evid"};
        for (const auto &response : {process(m_origin.get(), "sort", {fields, false, false, name}),
                                     process(m_origin.get(), "group", {fields, name})}) {
            EXPECT_FALSE(response->errorOccurred());
            EXPECT_EQ(response->getDbptr().table, dbINVALID);
        }
        elog_clear();
        expectNothingLeft();
    }
}

TEST_F(BadInput, ExpressionsThatAreHostileLeaveNothing)
{
    const QString expressions[] = {
        QString(10 << 20, '1'), QString(100000, '(') + "1" + QString(100000, ')'),
        "auth == 'unbalanced",  "auth =~ '((((((((a{1,1000}){1,1000}){1,1000}){1,1000})))))'",
        "nowhere > 1",          "auth * 2 > 1",
    };
    for (const QString &expression : expressions) {
        SCOPED_TRACE(expression.left(40).toStdString());
        expectErrorWithLog(m_origin.get(), "subset", {expression, "wanted"},
                           "Subset failed for expression '" + expression.toStdString() + "'");
        expectErrorWithLog(m_origin.get(), "theta_join_table", {"remark", expression, "wanted"},
                           "Theta-join failed");
        const auto found = process(m_origin.get(), "dbfind", {expression, false});
        EXPECT_FALSE(found->errorOccurred());
        EXPECT_LT(found->toInt(), 0);
        elog_clear();
        expectNothingLeft();
    }
}

TEST_F(BadInput, JoinsOfTablesThatHaveNothingInCommonLeaveNothing)
{
    for (const auto &[request, failure] :
         {std::pair("join_table", "Join failed"), std::pair("outer_join_table", "Outer-join failed"),
          std::pair("left_join_table", "Left-join failed"), std::pair("no_join_table", "Join failed")}) {
        const std::string log =
            expectErrorWithLog(m_open.at(SiteTable).get(), request, {"event", "wanted"}, failure);
        EXPECT_NE(log.find("no keys"), std::string::npos) << log;
        expectNothingLeft();
    }
}

// What is no text is taken as its text.
TEST_F(BadInput, NamesAndFieldsOfOtherTypesAreConverted)
{
    LibrarySpy spy;
    process(m_origin.get(), "sort", {QVariantList{7, QByteArray("evid")}, "false", 1, 42});
    process(m_origin.get(), "subset", {1, QVariant()});
    process(m_joined.get(), "sever_table", {QByteArray("remark"), 5.5});
    ASSERT_EQ(spy.operations.size(), 3u);
    EXPECT_EQ(spy.operations[0].fields, (Texts{"7", "evid"}));
    EXPECT_EQ(spy.operations[0].number, 2);
    EXPECT_EQ(spy.operations[0].view, "42");
    EXPECT_EQ(spy.operations[1].text, "1");
    EXPECT_EQ(spy.operations[1].view, std::nullopt);
    EXPECT_EQ(spy.operations[2].text, "remark");
    EXPECT_EQ(spy.operations[2].view, "5.5");
    elog_clear();
}

} // namespace
