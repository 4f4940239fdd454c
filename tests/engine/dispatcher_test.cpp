#include "library_spy.h"
#include "open_database.h"

namespace {

const char *const NotATable = "Invalid request -- database pointer does not point to a table";
const char *const NotAField = "Invalid request -- database pointer does not point to a field";

// Every request but "open_database".
const char *const allRequests[] = {"database_name",
                                   "database_filename",
                                   "table_name",
                                   "table_present",
                                   "table_is_view",
                                   "table_is_writable",
                                   "field_null",
                                   "field_type",
                                   "field_name",
                                   "field_base_table",
                                   "schema_name",
                                   "schema_description",
                                   "database_description",
                                   "table_description",
                                   "field_description",
                                   "schema_detail",
                                   "database_detail",
                                   "table_detail",
                                   "field_detail",
                                   "field_range",
                                   "field_format",
                                   "field_units",
                                   "table_filename",
                                   "table_dirname",
                                   "dbpath",
                                   "table_creation",
                                   "unique_id_name",
                                   "timedate_name",
                                   "dbidserver",
                                   "dblocks",
                                   "database_abspath",
                                   "table_count",
                                   "table_modtime",
                                   "table_modtimes",
                                   "field_count",
                                   "record_count",
                                   "table_size",
                                   "field_size",
                                   "record_size",
                                   "field_index",
                                   "lookup_table",
                                   "lookup_field",
                                   "lookup_record",
                                   "dbsample",
                                   "schema_tables",
                                   "view_tables",
                                   "table_fields",
                                   "base_tables_present",
                                   "base_tables_absent",
                                   "views_present",
                                   "find_join_tables",
                                   "find_join_tables_present",
                                   "link_fields",
                                   "primary_key",
                                   "alternate_key",
                                   "foreign_keys",
                                   "sort",
                                   "group",
                                   "ungroup",
                                   "subset",
                                   "join_table",
                                   "outer_join_table",
                                   "left_join_table",
                                   "no_join_table",
                                   "theta_join_table",
                                   "sever_table",
                                   "separate_table",
                                   "dbget",
                                   "dbgetv",
                                   "dbfind",
                                   "find_rows",
                                   "moved_records",
                                   "put_rows",
                                   "mark_rows",
                                   "table_state",
                                   "dbfree",
                                   "close_database",
                                   "no_such_request"};

class EveryRequest : public testing::TestWithParam<const char *>
{
};

TEST_P(EveryRequest, IsRefusedOnANullHandle)
{
    expectError(nullptr, GetParam(), {}, "Request attempted on null QDbptr");
}

TEST_P(EveryRequest, IsRefusedOnAnInvalidHandle)
{
    QDbptr unbound;
    expectError(&unbound, GetParam(), {}, "Request attempted on invalid QDbptr");

    const OpenDatabase open;
    const auto noField = open.at(OriginTable, dbINVALID, 0);
    expectError(noField.get(), GetParam(), {}, "Request attempted on invalid QDbptr");
}

TEST_P(EveryRequest, LeavesTheInputHandleAsItWas)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.onClose = [](Dbptr) { return dbERROR_IO; }; // the connection must be able to close
    const auto cell = open.at(OriginTable, OridField, 1);
    process(cell.get(), GetParam(), {"nothing"});
    process(cell.get(), GetParam(), {});
    EXPECT_EQ(cell->getIndexTable(), OriginTable);
    EXPECT_EQ(cell->getIndexField(), OridField);
    EXPECT_EQ(cell->getIndexRecord(), 1);
}

// A handle on nothing that exists: whatever the answer, there is one.
TEST_P(EveryRequest, SurvivesIndexesBeyondEveryEnd)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.onClose = [](Dbptr) { return dbERROR_IO; };
    for (const Dbptr dbptr : {Dbptr{open.handle->getIndexDatabase(), 1000, 1000, 1000}, Dbptr{1000, 0, 0, 0},
                              Dbptr{open.handle->getIndexDatabase(), OriginTable, 1000, 1000000},
                              Dbptr{open.handle->getIndexDatabase(), -7, -8, -9}}) {
        QDbptr handle(open.connection.get(), dbptr);
        EXPECT_NE(process(&handle, GetParam(), {}), nullptr);
        EXPECT_NE(process(&handle, GetParam(), {QVariant(QVariantList{"lat"})}), nullptr);
        EXPECT_NE(process(&handle, GetParam(), {false}), nullptr);
        EXPECT_NE(process(&handle, GetParam(), {"origin", "name"}), nullptr);
        EXPECT_NE(process(&handle, GetParam(), {"origin", "true", "name"}), nullptr);
        EXPECT_NE(process(&handle, GetParam(), {QVariant(QVariantList{"lat"}), true, true, "name"}), nullptr);
    }
}

INSTANTIATE_TEST_SUITE_P(Requests, EveryRequest, testing::ValuesIn(allRequests));

TEST(Dispatcher, AnUnknownRequestIsNamed)
{
    const OpenDatabase open;
    expectError(open.handle.get(), "no_such%1request", {}, "Unsupported request type 'no_such%1request'");
    expectError(open.handle.get(), "", {}, "Unsupported request type ''");
    expectError(open.handle.get(), "TABLE_NAME", {}, "Unsupported request type 'TABLE_NAME'");
}

TEST(Dispatcher, AnErrorTextEndsWithTheHandlesText)
{
    const OpenDatabase open;
    const auto cell = open.at(OriginTable, OridField, 2);
    EXPECT_EQ(
        process(cell.get(), "nonsense")->errorString().toStdString(),
        "Unsupported request type 'nonsense'\n\nQOvServer::process: request 'nonsense': input QDbptr: [\n\t" +
            open.databaseLabel() + ",\n\t1 = 'origin',\n\t4 = 'orid',\n\t2\n]");
}

TEST(Dispatcher, AnErrorTextOfANullHandleSaysSo)
{
    EXPECT_EQ(
        process(nullptr, "table_name")->errorString(),
        QString("Request attempted on null QDbptr\n\nQOvServer::process: request 'table_name': input NULL "
                "QDbptr"));
}

TEST(Dispatcher, SetProcessErrorTakesTheLibrarysLogAndEmptiesIt)
{
    elog_clear();
    elog_log("first %%1");
    elog_log("second");
    const auto response = std::make_shared<QOvResponse>();
    QOvServer().setProcessError(response, nullptr, "request", "message %1", true);
    EXPECT_EQ(response->errorString(),
              QString("message %1:\n\nfirst %1\nsecond\n\nQOvServer::process: request "
                      "'request': input NULL QDbptr"));
    EXPECT_EQ(elog_count(), 0);
}

TEST(Dispatcher, SetProcessErrorCanLeaveTheLibrarysLog)
{
    elog_clear();
    elog_log("first");
    const auto response = std::make_shared<QOvResponse>();
    QOvServer().setProcessError(response, nullptr, "request", "message", false);
    EXPECT_EQ(response->errorString(),
              QString("message\n\nQOvServer::process: request 'request': input NULL QDbptr"));
    EXPECT_EQ(elog_count(), 1);
    elog_clear();
}

// The look-ups of names that the handle's text needs may fail; that belongs into no error text.
TEST(Dispatcher, BuildingAnErrorTextLeavesNothingInTheLog)
{
    const OpenDatabase open;
    const auto nowhere = open.at(1000, 1000, 0);
    elog_clear();
    process(nowhere.get(), "nonsense");
    EXPECT_EQ(elog_count(), 0);
}

struct Count {
    const char *request;
    int count;
    const char *inWords;
};

void PrintTo(const Count &count, std::ostream *out)
{
    *out << count.request;
}

class CountedArguments : public testing::TestWithParam<Count>
{
};

TEST_P(CountedArguments, AreCountedInTheMessage)
{
    const OpenDatabase open;
    const auto &[request, count, inWords] = GetParam();
    QList<QVariant> arguments;
    for (int given = 0; given < 6; ++given, arguments.append("x")) {
        if (given == count)
            continue;
        expectError(open.at(OriginTable, OridField, 0).get(), request, arguments,
                    "Got " + std::to_string(given) + (given == 1 ? " argument" : " arguments") +
                        ", expected " + inWords);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Requests, CountedArguments,
    testing::Values(Count{"open_database", 2, "two (databaseName, permissions)"},
                    Count{"lookup_table", 1, "one (table name or number)"},
                    Count{"lookup_field", 1, "one (field name or number)"},
                    Count{"lookup_record", 1, "one (record name or number)"},
                    Count{"dbget", 1, "one (scratch-flag)"},
                    Count{"dbgetv", 1, "one (list of fields to get)"},
                    Count{"dbfind", 2, "two (expression, backwards-flag)"},
                    Count{"put_rows", 3, "three (field, value, list of first and last rows)"},
                    Count{"mark_rows", 1, "one (list of first and last rows)"},
                    Count{"moved_records", 2, "two (numbering, list of record numbers)"},
                    Count{"find_rows", 2, "two (name of table to find them in, list of row numbers)"}));

INSTANTIATE_TEST_SUITE_P(
    Derivations, CountedArguments,
    testing::Values(Count{"sort", 4, "four (list of fields, reverse flag, unique flag, view name)"},
                    Count{"group", 2, "two (list of fields, view name)"},
                    Count{"ungroup", 1, "one (view name)"},
                    Count{"subset", 2, "two (subset expression, view name)"},
                    Count{"join_table", 2, "two (name of table to join, view name)"},
                    Count{"outer_join_table", 2, "two (name of table to outer-join, view name)"},
                    Count{"left_join_table", 2, "two (name of table to join, view name)"},
                    Count{"no_join_table", 2, "two (name of table to join, view name)"},
                    Count{"theta_join_table", 3, "three (name of table to join, join expression, view name)"},
                    Count{"sever_table", 2, "two (name of table to sever, view name)"},
                    Count{"separate_table", 2, "two (name of table to separate, view name)"}));

TEST(Dispatcher, TheNumberOfArgumentsIsTestedBeforeThePointer)
{
    const OpenDatabase open;
    expectError(open.handle.get(), "lookup_field", {},
                "Got 0 arguments, expected one (field name or number)");
    expectError(open.handle.get(), "lookup_record", {1, 2},
                "Got 2 arguments, expected one (record name or number)");
    expectError(open.handle.get(), "lookup_field", {1}, NotATable);
    expectError(open.handle.get(), "lookup_record", {1}, NotATable);
    expectError(open.handle.get(), "dbfind", {},
                "Got 0 arguments, expected two (expression, backwards-flag)");
    expectError(open.handle.get(), "dbfind", {"true", false}, NotATable);
}

TEST(Dispatcher, SomeDerivationsTestThePointerFirst)
{
    const OpenDatabase open;
    for (const char *request : {"sort", "group", "ungroup", "subset"}) {
        SCOPED_TRACE(request);
        expectError(open.handle.get(), request, {}, NotATable);
    }
    expectError(open.handle.get(), "sort", {QVariantList(), false, false, ""}, NotATable);
    expectError(open.handle.get(), "group", {QVariantList(), ""}, NotATable);
    expectError(open.handle.get(), "ungroup", {""}, NotATable);
    expectError(open.handle.get(), "subset", {"true", ""}, NotATable);
}

TEST(Dispatcher, OtherDerivationsTestTheNumberOfArgumentsFirst)
{
    const OpenDatabase open;
    for (const char *request : {"join_table", "outer_join_table", "left_join_table", "no_join_table",
                                "theta_join_table", "sever_table", "separate_table"}) {
        SCOPED_TRACE(request);
        EXPECT_TRUE(process(open.handle.get(), request)->errorString().startsWith("Got 0 arguments, "));
        QList<QVariant> arguments{"nowhere", ""};
        if (qstrcmp(request, "theta_join_table") == 0)
            arguments.append("");
        expectError(open.handle.get(), request, arguments, NotATable);
    }
}

TEST(Dispatcher, ArgumentsOfARequestWithoutAnyAreNotRead)
{
    const OpenDatabase open;
    const auto response = process(open.handle.get(), "schema_name", {1, 2, 3});
    EXPECT_FALSE(response->errorOccurred());
    EXPECT_EQ(response->toString(), QString("small"));
}

TEST(Dispatcher, RequestsAboutATableNeedOne)
{
    const OpenDatabase open;
    for (const char *request : {"table_name", "table_present", "table_is_view", "table_is_writable",
                                "field_count", "record_count", "table_size", "record_size", "field_index"}) {
        SCOPED_TRACE(request);
        expectError(open.handle.get(), request, {}, NotATable);
        expectError(open.at(dbALL, OridField, 0).get(), request, {}, NotATable);
        EXPECT_FALSE(process(open.at(OriginTable, OridField, 0).get(), request)->errorOccurred());
    }
}

TEST(Dispatcher, RequestsAboutAFieldNeedOne)
{
    const OpenDatabase open;
    for (const char *request : {"field_null", "field_type", "field_name", "field_base_table", "field_size"}) {
        SCOPED_TRACE(request);
        expectError(open.handle.get(), request, {}, NotAField);
        expectError(open.at(OriginTable, dbALL).get(), request, {}, NotAField);
        expectError(open.at(OriginTable, dbALL, 0).get(), request, {}, NotAField);
        EXPECT_FALSE(process(open.at(OriginTable, OridField).get(), request)->errorOccurred());
    }
}

TEST(Dispatcher, OpensADatabaseWithANullHandle)
{
    const TemporaryDatabase files;
    const auto response = process(nullptr, "open_database", {QString::fromStdString(files.path()), "r"});
    ASSERT_FALSE(response->errorOccurred()) << response->errorString().toStdString();
    EXPECT_EQ(response->getOvResponseType(), 3);
    EXPECT_FALSE(response->isValid());
    const Dbptr db = response->getDbptr();
    EXPECT_GE(db.database, 0);
    EXPECT_EQ(db.table, dbALL);
    EXPECT_EQ(db.field, dbALL);
    EXPECT_EQ(db.record, dbALL);
    EXPECT_EQ(OVdbclose(db), 0);
}

TEST(Dispatcher, AFailedOpeningNamesDatabaseAndPermissions)
{
    const std::string log = expectErrorWithLog(nullptr, "open_database", {"/no/%1/such", "r"},
                                               "Failed to open database '/no/%1/such' with permissions 'r'");
    EXPECT_NE(log.find("/no/%1/such"), std::string::npos) << log;

    const TemporaryDatabase files;
    expectErrorWithLog(nullptr, "open_database", {QString::fromStdString(files.path()), "rw"},
                       "Failed to open database '" + files.path() + "' with permissions 'rw'");
}

TEST(Dispatcher, ClosesADatabase)
{
    const TemporaryDatabase files;
    const Dbptr db =
        process(nullptr, "open_database", {QString::fromStdString(files.path()), "r"})->getDbptr();
    const OpenDatabase open;
    QDbptr handle(open.connection.get(), db);
    const auto response = process(&handle, "close_database");
    EXPECT_FALSE(response->errorOccurred());
    EXPECT_FALSE(response->isValid());
    expectErrorWithLog(&handle, "close_database", {}, "dbclose error");
}

TEST(Dispatcher, AGoodResponseCarriesTheInputPointer)
{
    const OpenDatabase open;
    const auto response = process(open.at(OriginTable, OridField, 2).get(), "field_name");
    EXPECT_EQ(response->getOvResponseType(), 3);
    EXPECT_EQ(response->getDbptr().table, OriginTable);
    EXPECT_EQ(response->getDbptr().field, OridField);
    EXPECT_EQ(response->getDbptr().record, 2);
}

} // namespace
