#include <filesystem>

#include "library_spy.h"
#include "open_database.h"

namespace {

using Names = QList<QVariant>;

struct Answer {
    const char *request;
    int64_t table;
    int64_t field;
    QVariant expected;
};

void PrintTo(const Answer &answer, std::ostream *out)
{
    *out << answer.request << " " << answer.table << " " << answer.field;
}

// FOLDER and PATH in an expected text stand for the database's.
QVariant withPlaces(const QVariant &expected, const TemporaryDatabase &files)
{
    if (expected.userType() != QMetaType::QString)
        return expected;
    QString text = expected.toString();
    text.replace("FOLDER", QString::fromStdString(files.folder()));
    text.replace("PATH", QString::fromStdString(files.path()));
    return text;
}

class MetadataRequest : public testing::TestWithParam<Answer>
{
};

TEST_P(MetadataRequest, AnswersValueAndType)
{
    const OpenDatabase open;
    const Answer &answer = GetParam();
    const auto response = process(open.at(answer.table, answer.field).get(), answer.request);
    ASSERT_FALSE(response->errorOccurred()) << response->errorString().toStdString();
    const QVariant expected = withPlaces(answer.expected, open.files);
    EXPECT_STREQ(response->typeName(), expected.typeName());
    EXPECT_EQ(static_cast<const QVariant &>(*response), expected) << response->toString().toStdString();
    EXPECT_EQ(elog_count(), 0) << elog_string(0);
}

QVariant number(long value)
{
    return QVariant::fromValue(value);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, MetadataRequest,
    testing::Values(
        Answer{"database_name", dbALL, dbALL, "PATH"}, Answer{"database_filename", dbALL, dbALL, "PATH"},
        Answer{"database_abspath", dbALL, dbALL, "PATH"},
        Answer{"database_description", dbALL, dbALL, "a small database"},
        Answer{"database_detail", dbALL, dbALL, "made by a test"}, Answer{"dbpath", dbALL, dbALL, "."},
        Answer{"dbidserver", dbALL, dbALL, ""}, Answer{"dblocks", dbALL, dbALL, "local"},
        Answer{"schema_name", dbALL, dbALL, "small"},
        Answer{"schema_description", dbALL, dbALL, "a small schema"},
        Answer{"schema_detail", dbALL, dbALL, "Made for tests:\nevery type, every kind of key.\n"},
        Answer{"timedate_name", dbALL, dbALL, "lddate"}, Answer{"table_name", OriginTable, dbALL, "origin"},
        Answer{"table_name", OriginTable, OridField, "origin"},
        Answer{"table_description", OriginTable, dbALL, "locations of events"},
        Answer{"table_detail", OriginTable, dbALL, "Where and when."},
        Answer{"table_filename", OriginTable, dbALL, "PATH.origin"},
        Answer{"table_filename", ArrivalTable, dbALL, "PATH.arrival"},
        Answer{"table_dirname", OriginTable, dbALL, "FOLDER"},
        Answer{"unique_id_name", OriginTable, dbALL, "orid"}, Answer{"unique_id_name", AssocTable, dbALL, ""},
        Answer{"field_name", OriginTable, OridField, "orid"},
        Answer{"field_null", OriginTable, OridField, "-1"},
        Answer{"field_null", OriginTable, LatField, "-999.0000"},
        Answer{"field_base_table", OriginTable, OridField, "origin"},
        Answer{"field_description", OriginTable, OridField, "origin id"},
        Answer{"field_detail", OriginTable, LatField, "Geographic latitude, north positive."},
        Answer{"field_range", OriginTable, LatField, "lat >= -90.0 && lat <= 90.0"},
        Answer{"field_format", OriginTable, LatField, "%9.4f"},
        Answer{"field_units", OriginTable, LatField, "degrees"}));

INSTANTIATE_TEST_SUITE_P(Numbers, MetadataRequest,
                         testing::Values(Answer{"table_count", dbALL, dbALL, number(7)},
                                         Answer{"field_count", OriginTable, dbALL, number(10)},
                                         Answer{"record_count", OriginTable, dbALL, number(3)},
                                         Answer{"record_count", AssocTable, dbALL, number(0)},
                                         Answer{"record_count", ArrivalTable, dbALL, number(0)},
                                         Answer{"record_size", OriginTable, dbALL, number(117)},
                                         Answer{"table_size", OriginTable, dbALL, number(3 * 117)},
                                         Answer{"table_size", AssocTable, dbALL, number(0)},
                                         Answer{"field_size", OriginTable, OridField, number(8)},
                                         Answer{"field_index", OriginTable, LatField, number(0)},
                                         Answer{"field_index", OriginTable, OridField, number(48)},
                                         Answer{"field_type", KindsTable, 0, number(dbBOOLEAN)},
                                         Answer{"field_type", KindsTable, 1, number(dbINTEGER)},
                                         Answer{"field_type", KindsTable, 2, number(dbREAL)},
                                         Answer{"field_type", KindsTable, 3, number(dbTIME)},
                                         Answer{"field_type", KindsTable, 4, number(dbYEARDAY)},
                                         Answer{"field_type", KindsTable, 5, number(dbSTRING)},
                                         Answer{"field_type", KindsTable, 6, number(dbDBPTR)}));

INSTANTIATE_TEST_SUITE_P(Flags, MetadataRequest,
                         testing::Values(Answer{"table_present", OriginTable, dbALL, true},
                                         Answer{"table_present", AssocTable, dbALL, true},
                                         Answer{"table_present", ArrivalTable, dbALL, false},
                                         Answer{"table_is_view", OriginTable, dbALL, false},
                                         Answer{"table_is_writable", OriginTable, dbALL, false}));

INSTANTIATE_TEST_SUITE_P(
    Lists, MetadataRequest,
    testing::Values(
        Answer{"schema_tables", dbALL, dbALL,
               Names{"site", "origin", "arrival", "assoc", "event", "remark", "kinds"}},
        Answer{"base_tables_present", dbALL, dbALL, Names{"site", "origin", "assoc", "remark", "kinds"}},
        Answer{"base_tables_absent", dbALL, dbALL, Names{"arrival", "event"}},
        Answer{"views_present", dbALL, dbALL, Names{}},
        Answer{"view_tables", OriginTable, dbALL, Names{"origin"}},
        Answer{"table_fields", AssocTable, dbALL, Names{"arid", "orid", "sta", "phase", "delta", "lddate"}},
        Answer{"primary_key", OriginTable, dbALL, Names{"lat", "lon", "depth", "time"}},
        Answer{"primary_key", SiteTable, dbALL, Names{"sta", "ondate::offdate"}},
        Answer{"alternate_key", OriginTable, dbALL, Names{"orid"}},
        Answer{"alternate_key", SiteTable, dbALL, Names{}},
        Answer{"foreign_keys", OriginTable, dbALL, Names{"evid", "commid"}},
        Answer{
            "link_fields", dbALL, dbALL,
            QVariantMap{{"orid", "origin"}, {"arid", "arrival"}, {"evid", "event"}, {"commid", "remark"}}}));

TEST(MetadataRequests, AWritableDatabaseHasWritableTables)
{
    const TemporaryDatabase files;
    fill(files);
    QOvConnection connection("/", QString::fromStdString(files.path()), "r+");
    const std::unique_ptr<QDbptr> database(connection.getQDbptr());
    const std::unique_ptr<QDbptr> origin(database->lookupTable("origin"));
    EXPECT_EQ(process(origin.get(), "table_is_writable")->toBool(), true);
}

TEST(MetadataRequests, ModificationTimesAreThoseOfTheFiles)
{
    const OpenDatabase open;
    const auto response = process(open.at(OriginTable).get(), "table_modtime");
    EXPECT_EQ(response->userType(), QMetaType::Double);
    EXPECT_EQ(response->toDouble(), dfiletime(open.files.tablePath("origin").c_str()));
    EXPECT_EQ(process(open.at(ArrivalTable).get(), "table_modtime")->toDouble(), ORVANE_NULL_TIME);

    const auto all = process(open.handle.get(), "table_modtimes");
    EXPECT_EQ(all->userType(), QMetaType::QVariantHash);
    const QVariantHash times = all->toHash();
    EXPECT_EQ(times.size(), 7);
    EXPECT_EQ(times["origin"], QVariant(dfiletime(open.files.tablePath("origin").c_str())));
    EXPECT_EQ(times["arrival"], QVariant(-9999999999.999));
    EXPECT_EQ(times["event"], QVariant(-9999999999.999));
}

TEST(MetadataRequests, ModificationTimesOfATableWithoutAFileNameAreNull)
{
    const OpenDatabase open;
    const auto response = process(open.handle.get(), "table_modtime");
    EXPECT_FALSE(response->errorOccurred());
    EXPECT_EQ(response->toDouble(), ORVANE_NULL_TIME);
}

TEST(MetadataRequests, AViewHasNoPlaceInTheModificationTimes)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.answerQueries(dbTABLE_IS_VIEW, 1);
    const auto response = process(open.handle.get(), "table_modtimes");
    EXPECT_EQ(response->userType(), QMetaType::QVariantHash);
    EXPECT_TRUE(response->toHash().isEmpty());
}

TEST(MetadataRequests, TheFieldsOfAViewAreQualifiedByTheirTables)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.answerQueries(dbTABLE_IS_VIEW, 1);
    spy.answerQueries(dbVIEW_TABLES, {"event", "remark"});
    EXPECT_EQ(static_cast<const QVariant &>(*process(open.at(OriginTable).get(), "table_fields")),
              QVariant(Names{"event.evid", "event.prefor", "event.auth", "event.lddate", "remark.commid",
                             "remark.lineno", "remark.remark", "remark.lddate"}));
}

TEST(MetadataRequests, AFieldlessTableOfAViewFails)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.answerQueries(dbTABLE_IS_VIEW, 1);
    spy.answerQueries(dbVIEW_TABLES, {"event", "nowhere"});
    expectErrorWithLog(open.at(OriginTable).get(), "table_fields", {}, "dbquery failed for dbTABLE_FIELDS");
}

TEST(MetadataRequests, ViewsAreNeitherPresentNorAbsentBaseTables)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.answerQueries(dbTABLE_IS_VIEW, 1);
    EXPECT_TRUE(process(open.handle.get(), "base_tables_present")->toList().isEmpty());
    EXPECT_TRUE(process(open.handle.get(), "base_tables_absent")->toList().isEmpty());
    // Also those that have no file: presence isn't asked.
    EXPECT_EQ(process(open.handle.get(), "views_present")->toList().size(), 7);
    EXPECT_EQ(std::count(spy.queries.begin(), spy.queries.end(), dbTABLE_PRESENT), 2 * 7);
}

struct Failure {
    const char *request;
    int failingQuery;
    const char *message;
};

void PrintTo(const Failure &failure, std::ostream *out)
{
    *out << failure.request << " without " << failure.failingQuery;
}

class FailingQuery : public testing::TestWithParam<Failure>
{
};

TEST_P(FailingQuery, IsAnErrorWithTheLog)
{
    const OpenDatabase open;
    const auto &[request, code, message] = GetParam();
    LibrarySpy spy;
    spy.failQueries(code);
    // Names are left out of the handle's text: their queries may be the failing ones.
    const auto origin = open.at(OriginTable);
    elog_clear();
    const auto response = process(origin.get(), request);
    EXPECT_TRUE(response->errorOccurred());
    const std::string text = response->errorString().toStdString();
    const std::string start = std::string(message) +
                              ":\n\nthe disk is on fire\n\nQOvServer::process: request '" + request +
                              "': input QDbptr: [\n\t";
    EXPECT_TRUE(text.starts_with(start)) << text;
}

INSTANTIATE_TEST_SUITE_P(
    Requests, FailingQuery,
    testing::Values(Failure{"table_name", dbTABLE_NAME, "Dbquery failed"},
                    Failure{"schema_tables", dbSCHEMA_TABLES, "dbquery failed for dbSCHEMA_TABLES"},
                    Failure{"base_tables_present", dbSCHEMA_TABLES, "dbquery failed for dbSCHEMA_TABLES"},
                    Failure{"base_tables_absent", dbSCHEMA_TABLES, "dbquery failed for dbSCHEMA_TABLES"},
                    Failure{"views_present", dbSCHEMA_TABLES, "dbquery failed for dbSCHEMA_TABLES"},
                    Failure{"view_tables", dbVIEW_TABLES, "dbquery failed for dbVIEW_TABLES"},
                    Failure{"table_fields", dbTABLE_IS_VIEW, "dbquery failed for dbTABLE_IS_VIEW"},
                    Failure{"table_fields", dbTABLE_FIELDS, "dbquery failed for dbTABLE_FIELDS"},
                    Failure{"link_fields", dbLINK_FIELDS, "dbquery failed for dbLINK_FIELDS"},
                    Failure{"primary_key", dbPRIMARY_KEY, "dbquery failed for dbPRIMARY_KEY"},
                    Failure{"alternate_key", dbALTERNATE_KEY, "dbquery failed for dbALTERNATE_KEY"},
                    Failure{"foreign_keys", dbFOREIGN_KEYS, "dbquery failed for dbFOREIGN_KEYS"}));

TEST(MetadataRequests, TheTablesOfAViewThatCantBeHadAreAnError)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.failQueries(dbVIEW_TABLES);
    spy.answerQueries(dbTABLE_IS_VIEW, 1);
    const auto response = process(open.at(OriginTable).get(), "table_fields");
    EXPECT_TRUE(
        response->errorString().startsWith("dbquery failed for dbVIEW_TABLES:\n\nthe disk is on fire\n\n"))
        << response->errorString().toStdString();
}

struct EmptyAnswer {
    const char *request;
    int failingQuery;
    QVariant empty;
};

void PrintTo(const EmptyAnswer &emptyAnswer, std::ostream *out)
{
    *out << emptyAnswer.request;
}

class FailingPlainQuery : public testing::TestWithParam<EmptyAnswer>
{
};

TEST_P(FailingPlainQuery, IsAnEmptyAnswer)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.failQueries(GetParam().failingQuery);
    const auto response = process(open.at(OriginTable, OridField).get(), GetParam().request);
    EXPECT_FALSE(response->errorOccurred());
    EXPECT_EQ(static_cast<const QVariant &>(*response), GetParam().empty);
    elog_clear();
}

INSTANTIATE_TEST_SUITE_P(Requests, FailingPlainQuery,
                         testing::Values(EmptyAnswer{"field_name", dbFIELD_NAME, QString()},
                                         EmptyAnswer{"database_name", dbDATABASE_NAME, QString()},
                                         EmptyAnswer{"database_abspath", dbDATABASE_FILENAME, QString()},
                                         EmptyAnswer{"record_count", dbRECORD_COUNT, number(0)},
                                         EmptyAnswer{"table_present", dbTABLE_PRESENT, false},
                                         EmptyAnswer{"table_modtime", dbTABLE_FILENAME, ORVANE_NULL_TIME},
                                         EmptyAnswer{"table_modtimes", dbSCHEMA_TABLES, QVariantHash()}));

TEST(MetadataRequests, TextThatIsNotUtf8BecomesReplacementCharacters)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.onQuery = [](Dbptr, int code, void *answer) -> std::optional<int> {
        if (code != dbTABLE_DESCRIPTION)
            return {};
        *static_cast<const char **>(answer) = "gr\xc3\xb6\xc3\x9f"
                                              "er \xff";
        return 0;
    };
    EXPECT_EQ(process(open.at(OriginTable).get(), "table_description")->toString(),
              QString::fromUtf8("gr\xc3\xb6\xc3\x9f"
                                "er \xef\xbf\xbd"));
}

TEST(MetadataRequests, CountsOfRecordsFollowTheFile)
{
    const OpenDatabase open;
    const auto origin = open.at(OriginTable);
    EXPECT_EQ(process(origin.get(), "record_count")->toInt(), 3);
    open.files.appendRows("origin", {{"1.0000", "1.0000", "1.0000", "1.00000", "40"}});
    EXPECT_EQ(process(origin.get(), "record_count")->toInt(), 4);
    EXPECT_EQ(process(origin.get(), "table_size")->toInt(), 4 * 117);
}

} // namespace
