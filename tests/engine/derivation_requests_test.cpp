#include "library_spy.h"
#include "open_database.h"

namespace {

using Texts = std::vector<std::string>;

/* A handle on the view that a request answers. */
std::unique_ptr<QDbptr> viewFrom(const OpenDatabase &open, QDbptr *input, const char *request,
                                 const QList<QVariant> &arguments)
{
    const auto response = process(input, request, arguments);
    EXPECT_FALSE(response->errorOccurred()) << response->errorString().toStdString();
    EXPECT_EQ(response->getOvResponseType(), QOvResponse::DatabasePointer);
    EXPECT_FALSE(response->isValid());
    return std::make_unique<QDbptr>(open.connection.get(), response->getDbptr());
}

/* The trimmed texts of a field, row by row. */
Texts column(QDbptr *view, const char *field)
{
    Texts texts;
    const std::unique_ptr<QDbptr> cells(view->lookupField(QString(field)));
    for (int row = 0, rows = view->getRecordCount(); row < rows; ++row) {
        const std::unique_ptr<QDbptr> cell(cells->lookupRecord(row));
        texts.push_back(cell->dbGet(false).trimmed().toStdString());
    }
    return texts;
}

QVariant fields(const QStringList &names)
{
    return QVariant(names);
}

QStringList tablesOf(QDbptr *view)
{
    return process(view, "view_tables")->toStringList();
}

TEST(Subset, KeepsTheRowsForWhichTheExpressionIsTrue)
{
    const OpenDatabase open;
    const auto view = viewFrom(open, open.at(OriginTable).get(), "subset", {"evid == 8", "eights"});
    EXPECT_EQ(view->getDbptrType(), DbptrTable);
    EXPECT_TRUE(view->tableIsView());
    EXPECT_EQ(view->getTableName(), QString("eights"));
    EXPECT_EQ(column(view.get(), "orid"), (Texts{"2", "33"}));
}

TEST(Subset, MayBeEmpty)
{
    const OpenDatabase open;
    const auto view = viewFrom(open, open.at(OriginTable).get(), "subset", {"evid == 99", ""});
    EXPECT_EQ(view->getRecordCount(), 0);
}

TEST(Subset, FailsWithTheLogForAnExpressionThatIsNone)
{
    const OpenDatabase open;
    const int tables = open.handle->getTableCount();
    expectErrorWithLog(open.at(OriginTable).get(), "subset", {"evid == (%1", "v"},
                       "Subset failed for expression 'evid == (%1'");
    expectErrorWithLog(open.at(OriginTable).get(), "subset", {"", ""}, "Subset failed for expression ''");
    EXPECT_EQ(open.handle->getTableCount(), tables);
}

TEST(Subset, FailsForANameThatIsTaken)
{
    const OpenDatabase open;
    expectErrorWithLog(open.at(OriginTable).get(), "subset", {"evid == 8", "site"},
                       "Subset failed for expression 'evid == 8'");
}

TEST(Sort, OrdersTheRows)
{
    const OpenDatabase open;
    const auto origin = open.at(OriginTable);
    const auto up = viewFrom(open, origin.get(), "sort", {fields({"lat"}), false, false, "by_lat"});
    EXPECT_EQ(up->getTableName(), QString("by_lat"));
    EXPECT_EQ(column(up.get(), "orid"), (Texts{"2", "33", "1"}));
    const auto down = viewFrom(open, origin.get(), "sort", {fields({"lat"}), true, false, ""});
    EXPECT_EQ(column(down.get(), "orid"), (Texts{"1", "33", "2"}));
    const auto unique = viewFrom(open, origin.get(), "sort", {fields({"evid"}), false, true, ""});
    EXPECT_EQ(column(unique.get(), "orid"), (Texts{"1", "2"}));
    const auto both = viewFrom(open, origin.get(), "sort", {fields({"evid"}), true, true, ""});
    EXPECT_EQ(column(both.get(), "orid"), (Texts{"2", "1"}));
    const auto two = viewFrom(open, origin.get(), "sort", {fields({"evid", "lat"}), true, false, ""});
    EXPECT_EQ(column(two.get(), "orid"), (Texts{"33", "2", "1"}));
}

TEST(Sort, HandsFieldsAndFlagsOn)
{
    const OpenDatabase open;
    LibrarySpy spy;
    const auto origin = open.at(OriginTable);
    const QVariant names = QVariantList{"evid", "lat"};
    process(origin.get(), "sort", {names, false, false, "a"});
    process(origin.get(), "sort", {names, true, false, "b"});
    process(origin.get(), "sort", {names, false, true, ""});
    process(origin.get(), "sort", {names, 1, "true", ""});
    ASSERT_EQ(spy.operations.size(), 4u);
    for (int flags : {0, 1, 2, 3}) {
        const OperationCall &call = spy.operations[static_cast<size_t>(flags)];
        EXPECT_EQ(call.operation, "dbsort");
        EXPECT_EQ(call.left.table, OriginTable);
        EXPECT_EQ(call.fields, (Texts{"evid", "lat"}));
        EXPECT_EQ(call.number, flags);
    }
    EXPECT_EQ(spy.operations[1].view, "b");
    EXPECT_EQ(spy.operations[2].view, std::nullopt);
}

TEST(Sort, NeedsAField)
{
    const OpenDatabase open;
    LibrarySpy spy;
    for (const QVariant &none : {QVariant(QVariantList()), QVariant("orid"), QVariant()}) {
        expectError(open.at(OriginTable).get(), "sort", {none, false, false, "v"}, "No fields listed");
        expectError(open.at(OriginTable).get(), "group", {none, "v"}, "No fields listed");
    }
    EXPECT_TRUE(spy.operations.empty());
}

// These three hand on what the library answers.
TEST(SortGroupAndUngroup, NeverFail)
{
    const OpenDatabase open;
    const auto origin = open.at(OriginTable);
    const int tables = open.handle->getTableCount();
    for (const auto &response : {process(origin.get(), "sort", {fields({"nowhere"}), false, false, "v"}),
                                 process(origin.get(), "group", {fields({"nowhere"}), "v"}),
                                 process(origin.get(), "ungroup", {"v"})}) {
        EXPECT_EQ(response->getOvResponseType(), QOvResponse::DatabasePointer)
            << response->errorString().toStdString();
        EXPECT_EQ(response->getDbptr().table, dbINVALID);
        EXPECT_EQ(response->getDbptr().database, dbINVALID);
    }
    EXPECT_EQ(open.handle->getTableCount(), tables);
    elog_clear();
}

TEST(Group, MakesBundlesThatAreShownAsRanges)
{
    const OpenDatabase open;
    const auto groups = viewFrom(open, open.at(OriginTable).get(), "group", {fields({"evid"}), "by_evid"});
    EXPECT_EQ(groups->getTableName(), QString("by_evid"));
    EXPECT_EQ(column(groups.get(), "evid"), (Texts{"7", "8"}));
    EXPECT_EQ(column(groups.get(), "bundle"), (Texts{"0-1", "1-3"}));
    const std::unique_ptr<QDbptr> second(groups->lookupRecord(1));
    EXPECT_EQ(second->dbGetv({"evid", "bundle"}), (QVariantHash{{"evid", 8LL}, {"bundle", "1-3"}}));
}

TEST(Group, HandsFieldsAndTypeOneOn)
{
    const OpenDatabase open;
    LibrarySpy spy;
    process(open.at(OriginTable).get(), "group", {fields({"evid", "auth"}), ""});
    process(open.at(OriginTable).get(), "group", {fields({"evid"}), "v"});
    ASSERT_EQ(spy.operations.size(), 2u);
    EXPECT_EQ(spy.operations[0].operation, "dbgroup");
    EXPECT_EQ(spy.operations[0].fields, (Texts{"evid", "auth"}));
    EXPECT_EQ(spy.operations[0].number, 1);
    EXPECT_EQ(spy.operations[0].view, std::nullopt);
    EXPECT_EQ(spy.operations[1].view, "v");
}

TEST(Ungroup, GivesTheRowsBack)
{
    const OpenDatabase open;
    const auto groups = viewFrom(open, open.at(OriginTable).get(), "group", {fields({"evid"}), "by_evid"});
    const auto rows = viewFrom(open, groups.get(), "ungroup", {"rows"});
    EXPECT_EQ(rows->getTableName(), QString("rows"));
    EXPECT_EQ(column(rows.get(), "orid"), (Texts{"1", "2", "33"}));
}

TEST(Join, PairsTheRowsWithTheirMatches)
{
    const OpenDatabase open;
    const auto view = viewFrom(open, open.at(OriginTable).get(), "join_table", {"remark", "remarked"});
    EXPECT_EQ(view->getTableName(), QString("remarked"));
    EXPECT_EQ(tablesOf(view.get()), (QStringList{"origin", "remark"}));
    EXPECT_EQ(column(view.get(), "orid"), (Texts{"2", "2"}));
    EXPECT_EQ(column(view.get(), "lineno"), (Texts{"1", "2"}));
}

TEST(OuterJoin, KeepsRowsWithoutAMatch)
{
    const OpenDatabase open;
    const auto view = viewFrom(open, open.at(OriginTable).get(), "outer_join_table", {"remark", ""});
    EXPECT_EQ(column(view.get(), "orid"), (Texts{"1", "2", "2", "33"}));
    EXPECT_EQ(column(view.get(), "lineno"), (Texts{"-1", "1", "2", "-1"}));
}

TEST(LeftJoin, PutsTheNamedTableFirstAndKeepsNothingUnmatched)
{
    const OpenDatabase open;
    const auto view = viewFrom(open, open.at(OriginTable).get(), "left_join_table", {"remark", ""});
    EXPECT_EQ(tablesOf(view.get()), (QStringList{"remark", "origin"}));
    EXPECT_EQ(column(view.get(), "orid"), (Texts{"2", "2"}));
}

TEST(LeftJoin, OfAViewPutsTheTableFirst)
{
    const OpenDatabase open;
    const auto input = viewFrom(open, open.at(OriginTable).get(), "subset", {"evid == 8", "eights"});
    const auto view = viewFrom(open, input.get(), "left_join_table", {"remark", ""});
    EXPECT_EQ(tablesOf(view.get()), (QStringList{"remark", "origin"}));
    EXPECT_EQ(view->getRecordCount(), 2);
}

TEST(NoJoin, KeepsTheRowsWithoutAMatch)
{
    const OpenDatabase open;
    const auto view = viewFrom(open, open.at(OriginTable).get(), "no_join_table", {"remark", "unremarked"});
    EXPECT_EQ(tablesOf(view.get()), QStringList{"origin"});
    EXPECT_EQ(column(view.get(), "orid"), (Texts{"1", "33"}));
}

TEST(ThetaJoin, PairsTheRowsForWhichTheExpressionIsTrue)
{
    const OpenDatabase open;
    const auto view =
        viewFrom(open, open.at(OriginTable).get(), "theta_join_table", {"remark", "orid > lineno", ""});
    EXPECT_EQ(column(view.get(), "orid"), (Texts{"2", "33", "33"}));
    EXPECT_EQ(column(view.get(), "lineno"), (Texts{"1", "1", "2"}));
}

TEST(ThetaJoin, FailsWithTheLogForAnExpressionThatIsNone)
{
    const OpenDatabase open;
    expectErrorWithLog(open.at(OriginTable).get(), "theta_join_table", {"remark", "orid > (", ""},
                       "Theta-join failed");
}

TEST(Joins, WithAViewByName)
{
    const OpenDatabase open;
    viewFrom(open, open.at(RemarkTable).get(), "subset", {"lineno == 2", "second_lines"});
    const auto view = viewFrom(open, open.at(OriginTable).get(), "join_table", {"second_lines", ""});
    EXPECT_EQ(column(view.get(), "lineno"), Texts{"2"});
}

struct JoinCall {
    const char *request;
    const char *operation;
    bool namedTableFirst;
    int outer;
    const char *failure;
};

void PrintTo(const JoinCall &join, std::ostream *out)
{
    *out << join.request;
}

class EveryJoin : public testing::TestWithParam<JoinCall>
{
protected:
    std::shared_ptr<QOvResponse> join(const char *table, const char *view)
    {
        return process(m_input.get(), GetParam().request, arguments(table, view));
    }

    static QList<QVariant> arguments(const char *table, const char *view)
    {
        if (std::string(GetParam().request) == "theta_join_table")
            return {table, "orid > lineno", view};
        return {table, view};
    }

    const OpenDatabase m_open;
    const std::unique_ptr<QDbptr> m_input = m_open.at(OriginTable);
};

TEST_P(EveryJoin, HandsBothTablesOnWithoutKeys)
{
    LibrarySpy spy;
    join("remark", "named");
    join("remark", "");
    ASSERT_EQ(spy.operations.size(), 2u);
    const OperationCall &call = spy.operations[0];
    EXPECT_EQ(call.operation, GetParam().operation);
    EXPECT_EQ(call.left.table, GetParam().namedTableFirst ? RemarkTable : OriginTable);
    EXPECT_EQ(call.right.table, GetParam().namedTableFirst ? OriginTable : RemarkTable);
    EXPECT_EQ(call.number, GetParam().outer);
    EXPECT_FALSE(call.hasKeysOrHook);
    EXPECT_EQ(call.text, call.operation == "dbtheta" ? "orid > lineno" : "");
    EXPECT_EQ(call.view, "named");
    EXPECT_EQ(spy.operations[1].view, std::nullopt);
}

TEST_P(EveryJoin, FailsForATableThatCannotBeFound)
{
    LibrarySpy spy;
    expectErrorWithLog(m_input.get(), GetParam().request, arguments("nowhere", "v"),
                       "Failed to lookup table 'nowhere'");
    EXPECT_TRUE(spy.operations.empty());
}

// Nothing and everything are no table either, not even the one that the input points to.
TEST_P(EveryJoin, FailsForANameOfNoOneTable)
{
    LibrarySpy spy;
    elog_clear();
    for (const char *name : {"", "dbALL"})
        EXPECT_EQ(join(name, "v")->errorString().toStdString(),
                  "Failed to lookup table '" + std::string(name) + "':\n\n" +
                      inputPart(GetParam().request, m_input.get()));
    EXPECT_TRUE(spy.operations.empty());
}

TEST_P(EveryJoin, FailsWithTheLogWhenTheLibraryDoes)
{
    LibrarySpy spy;
    spy.failViews();
    EXPECT_EQ(
        expectErrorWithLog(m_input.get(), GetParam().request, arguments("remark", "v"), GetParam().failure),
        "no " + std::string(GetParam().operation) + " today");
}

// A table is a member of a view only once. A no-join doesn't take the named one as a member: what has no
// match in itself is the record whose depth, a part of the key, is null.
TEST_P(EveryJoin, FailsWithItselfUnlessItLeavesMatchesOut)
{
    if (std::string(GetParam().request) == "no_join_table") {
        const OpenDatabase open;
        const auto unmatched = viewFrom(open, open.at(OriginTable).get(), GetParam().request, {"origin", ""});
        EXPECT_EQ(column(unmatched.get(), "orid"), Texts{"2"});
        return;
    }
    expectErrorWithLog(m_input.get(), GetParam().request, arguments("origin", ""), GetParam().failure);
}

INSTANTIATE_TEST_SUITE_P(
    Requests, EveryJoin,
    testing::Values(JoinCall{"join_table", "dbjoin", false, 0, "Join failed"},
                    JoinCall{"outer_join_table", "dbjoin", false, 1, "Outer-join failed"},
                    JoinCall{"left_join_table", "dbjoin", true, 0, "Left-join failed"},
                    JoinCall{"no_join_table", "dbnojoin", false, 0, "Join failed"},
                    JoinCall{"theta_join_table", "dbtheta", false, 0, "Theta-join failed"}));

TEST(Sever, TakesATableOutOfAView)
{
    const OpenDatabase open;
    const auto joined = viewFrom(open, open.at(OriginTable).get(), "join_table", {"remark", ""});
    const auto view = viewFrom(open, joined.get(), "sever_table", {"remark", "severed"});
    EXPECT_EQ(view->getTableName(), QString("severed"));
    EXPECT_EQ(tablesOf(view.get()), QStringList{"origin"});
    EXPECT_EQ(column(view.get(), "orid"), Texts{"2"});
}

TEST(Separate, GivesTheRecordsOfOneTableUnderANameOfItsOwn)
{
    const OpenDatabase open;
    const auto joined = viewFrom(open, open.at(OriginTable).get(), "join_table", {"remark", ""});
    const auto view = viewFrom(open, joined.get(), "separate_table", {"remark", "separated"});
    EXPECT_NE(view->getTableName(), QString("separated"));
    EXPECT_EQ(tablesOf(view.get()), QStringList{"remark"});
    EXPECT_EQ(column(view.get(), "lineno"), (Texts{"1", "2"}));
}

TEST(SeverAndSeparate, FailWithTheLogForATableThatIsNoMember)
{
    const OpenDatabase open;
    const auto joined = viewFrom(open, open.at(OriginTable).get(), "join_table", {"remark", ""});
    for (const char *table : {"site", "nowhere", ""}) {
        expectErrorWithLog(joined.get(), "sever_table", {table, "v"}, "Sever failed");
        expectErrorWithLog(joined.get(), "separate_table", {table, "v"}, "Separate failed");
    }
}

TEST(SeverAndSeparate, HandTheTableOn)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.failViews();
    const auto origin = open.at(OriginTable);
    for (const char *name : {"named", ""}) {
        process(origin.get(), "sever_table", {"remark", name});
        process(origin.get(), "separate_table", {"remark", name});
    }
    ASSERT_EQ(spy.operations.size(), 4u);
    for (const OperationCall &call : spy.operations) {
        EXPECT_EQ(call.left.table, OriginTable);
        EXPECT_EQ(call.text, "remark");
    }
    EXPECT_EQ(spy.operations[0].operation, "dbsever");
    EXPECT_EQ(spy.operations[0].view, "named");
    EXPECT_EQ(spy.operations[2].view, std::nullopt);
    // With a view name or without: the same call.
    EXPECT_EQ(spy.operations[1].operation, "dbseparate");
    EXPECT_EQ(spy.operations[3].operation, "dbseparate");
}

TEST(Derivations, GoOnFromViews)
{
    const OpenDatabase open;
    const auto eights = viewFrom(open, open.at(OriginTable).get(), "subset", {"evid == 8", ""});
    const auto sorted = viewFrom(open, eights.get(), "sort", {fields({"mb"}), true, false, ""});
    EXPECT_EQ(column(sorted.get(), "orid"), (Texts{"33", "2"}));
    EXPECT_NE(eights->getTableName(), sorted->getTableName());
    EXPECT_FALSE(eights->getTableName().isEmpty());
}

TEST(Derivations, TheFieldsOfAJoinAreQualifiedAndCanBeLookedUp)
{
    const OpenDatabase open;
    const auto view = viewFrom(open, open.at(OriginTable).get(), "join_table", {"remark", ""});
    const QStringList names = view->getTableFields();
    EXPECT_EQ(names.size(), 14);
    EXPECT_EQ(names.value(0), QString("origin.lat"));
    EXPECT_EQ(names.value(10), QString("remark.commid"));
    for (const QString &name : names) {
        const std::unique_ptr<QDbptr> field(view->lookupField(name));
        EXPECT_EQ(field->getFieldBaseTable() + "." + field->getFieldName(), name);
    }
}

TEST(Derivations, TheFieldsOfAGroupCanBeLookedUp)
{
    const OpenDatabase open;
    const auto groups = viewFrom(open, open.at(OriginTable).get(), "group", {fields({"evid"}), "grouped"});
    for (const QString &name : groups->getTableFields())
        EXPECT_NO_THROW(delete groups->lookupField(name)) << name.toStdString();
    EXPECT_EQ(groups->getTableFields(), (QList<QString>{"grouped.evid", "grouped.bundle"}));
    EXPECT_EQ(tablesOf(groups.get()), QStringList{"grouped"});
}

TEST(Derivations, AreTakenForViewsByTheRequestsThatListTables)
{
    const OpenDatabase open;
    viewFrom(open, open.at(OriginTable).get(), "subset", {"evid == 8", "eights"});
    viewFrom(open, open.at(OriginTable).get(), "sort", {fields({"lat"}), false, false, "by_lat"});
    EXPECT_EQ(process(open.handle.get(), "views_present")->toStringList(), (QStringList{"eights", "by_lat"}));
    for (const char *request : {"base_tables_present", "base_tables_absent"})
        EXPECT_FALSE(process(open.handle.get(), request)->toStringList().contains("eights")) << request;
    EXPECT_FALSE(process(open.handle.get(), "table_modtimes")->toHash().contains("eights"));
}

} // namespace
