#include <limits>

#include "open_database.h"

namespace {

struct Found {
    const char *request;
    Dbptr from; // the database index is that of the open database
    QVariant argument;
    Dbptr expected;
};

void PrintTo(const Found &found, std::ostream *out)
{
    *out << found.request << " " << found.argument.typeName() << " "
         << found.argument.toString().toStdString() << " from " << found.from.table << " " << found.from.field
         << " " << found.from.record;
}

class Lookup : public testing::TestWithParam<Found>
{
};

TEST_P(Lookup, AnswersAPointer)
{
    const OpenDatabase open;
    const Found &found = GetParam();
    const auto response = process(open.at(found.from.table, found.from.field, found.from.record).get(),
                                  found.request, {found.argument});
    ASSERT_FALSE(response->errorOccurred()) << response->errorString().toStdString();
    EXPECT_EQ(response->getOvResponseType(), 3);
    EXPECT_FALSE(response->isValid());
    EXPECT_EQ(response->getDbptr().database, open.handle->getIndexDatabase());
    EXPECT_EQ(response->getDbptr().table, found.expected.table);
    EXPECT_EQ(response->getDbptr().field, found.expected.field);
    EXPECT_EQ(response->getDbptr().record, found.expected.record);
}

constexpr Dbptr pointer(int64_t table, int64_t field = dbALL, int64_t record = dbALL)
{
    return {0, table, field, record};
}

INSTANTIATE_TEST_SUITE_P(
    Tables, Lookup,
    testing::Values(Found{"lookup_table", pointer(dbALL), "origin", pointer(OriginTable)},
                    Found{"lookup_table", pointer(SiteTable, 1, 1), "origin", pointer(OriginTable)},
                    Found{"lookup_table", pointer(dbALL), "dbALL", pointer(dbALL)},
                    Found{"lookup_table", pointer(SiteTable, 1, 1), "dbALL", pointer(dbALL)},
                    Found{"lookup_table", pointer(SiteTable, 1, 1), int(dbALL), pointer(dbALL)},
                    Found{"lookup_table", pointer(SiteTable, 1, 1), qlonglong(dbALL), pointer(dbALL)},
                    Found{"lookup_table", pointer(dbALL), 3, pointer(AssocTable)},
                    Found{"lookup_table", pointer(SiteTable, 1, 1), 3, pointer(AssocTable, 1, 1)},
                    Found{"lookup_table", pointer(dbALL), 3U, pointer(AssocTable)},
                    Found{"lookup_table", pointer(dbALL), QVariant::fromValue(3L), pointer(AssocTable)},
                    Found{"lookup_table", pointer(dbALL), 4000, pointer(4000)},
                    Found{"lookup_table", pointer(dbALL), std::numeric_limits<qulonglong>::max() - 500,
                          pointer(std::numeric_limits<int64_t>::max())}));

INSTANTIATE_TEST_SUITE_P(
    FieldsAndRecords, Lookup,
    testing::Values(
        Found{"lookup_field", pointer(OriginTable), "orid", pointer(OriginTable, OridField)},
        Found{"lookup_field", pointer(OriginTable), "origin.orid", pointer(OriginTable, OridField)},
        Found{"lookup_field", pointer(OriginTable, dbALL, 2), "orid", pointer(OriginTable, OridField, 2)},
        Found{"lookup_field", pointer(OriginTable, LatField, dbSCRATCH), "orid",
              pointer(OriginTable, OridField, dbSCRATCH)},
        Found{"lookup_field", pointer(OriginTable, dbALL, 2), 4, pointer(OriginTable, OridField, 2)},
        Found{"lookup_record", pointer(OriginTable, OridField), 2, pointer(OriginTable, OridField, 2)},
        Found{"lookup_record", pointer(OriginTable), 2, pointer(OriginTable, dbALL, 2)},
        Found{"lookup_record", pointer(OriginTable), "2", pointer(OriginTable, dbALL, 2)},
        Found{"lookup_record", pointer(OriginTable, OridField, 1), 0, pointer(OriginTable, OridField, 0)}));

struct NotFound {
    const char *request;
    QVariant argument;
    const char *message;
};

void PrintTo(const NotFound &notFound, std::ostream *out)
{
    *out << notFound.message;
}

class FailedLookup : public testing::TestWithParam<NotFound>
{
};

// What the library has to say is there only when it was asked, and failed.
TEST_P(FailedLookup, NamesTheArgument)
{
    const OpenDatabase open;
    const auto &[request, argument, message] = GetParam();
    const auto origin = open.at(OriginTable, OridField, 1);
    if (argument.userType() == QMetaType::QString && argument != "dbALL") {
        expectErrorWithLog(origin.get(), request, {argument}, message);
    } else {
        elog_clear();
        const auto response = process(origin.get(), request, {argument});
        EXPECT_EQ(response->errorString().toStdString(),
                  std::string(message) + ":\n\n" + inputPart(request, origin.get()));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Requests, FailedLookup,
    testing::Values(NotFound{"lookup_table", "nowhere", "Lookup failed for table 'nowhere'"},
                    NotFound{"lookup_table", "%1", "Lookup failed for table '%1'"},
                    NotFound{"lookup_table", -1, "Lookup failed for table '-1'"},
                    NotFound{"lookup_table", int(dbNULL), "Lookup failed for table '-505'"},
                    NotFound{"lookup_field", "nowhere", "Lookup failed for field 'nowhere'"},
                    NotFound{"lookup_field", "site.sta", "Lookup failed for field 'site.sta'"},
                    NotFound{"lookup_field", "dbALL", "Lookup failed for field 'dbALL'"},
                    NotFound{"lookup_field", -1, "Lookup failed for field '-1'"},
                    NotFound{"lookup_field", int(dbALL), "Lookup failed for field '-501'"},
                    NotFound{"lookup_record", "nowhere", "Lookup failed for record 'nowhere'"},
                    NotFound{"lookup_record", -1, "Lookup failed for record '-1'"},
                    NotFound{"lookup_record", int(dbSCRATCH), "Lookup failed for record '-504'"},
                    NotFound{"lookup_record", int(dbNULL), "Lookup failed for record '-505'"}));

TEST(FailedLookup, RefusesWhatIsNeitherTextNorInteger)
{
    const OpenDatabase open;
    const auto origin = open.at(OriginTable);
    for (const char *request : {"lookup_table", "lookup_field", "lookup_record"}) {
        expectError(origin.get(), request, {1.5}, "Unsupported type 'double'");
        expectError(origin.get(), request, {true}, "Unsupported type 'bool'");
        expectError(origin.get(), request, {QVariant(QVariantList{1})}, "Unsupported type 'QVariantList'");
        expectError(origin.get(), request, {QByteArray("origin")}, "Unsupported type 'QByteArray'");
        expectError(origin.get(), request, {QVariant()}, "Unsupported type ''");
    }
}

TEST(FailedLookup, AnEmptyNameIsNoTable)
{
    const OpenDatabase open;
    const auto response = process(open.handle.get(), "lookup_table", {""});
    EXPECT_TRUE(response->errorString().startsWith("Lookup failed for table ''"))
        << response->errorString().toStdString();
}

} // namespace
