#include "open_database.h"

namespace {

// The requests that answer something about any table, and about any field, of a schema.
const char *const tableRequests[] = {"table_name",
                                     "table_present",
                                     "table_is_view",
                                     "table_is_writable",
                                     "table_description",
                                     "table_detail",
                                     "table_filename",
                                     "table_dirname",
                                     "table_creation",
                                     "unique_id_name",
                                     "table_modtime",
                                     "field_count",
                                     "record_count",
                                     "table_size",
                                     "record_size",
                                     "view_tables",
                                     "table_fields",
                                     "find_join_tables",
                                     "find_join_tables_present",
                                     "primary_key",
                                     "alternate_key",
                                     "foreign_keys"};
const char *const fieldRequests[] = {"field_null",        "field_type",   "field_name",  "field_base_table",
                                     "field_description", "field_detail", "field_range", "field_format",
                                     "field_units",       "field_size",   "field_index", "dbsample"};

void expectAnswers(QDbptr &handle, const char *request)
{
    const auto response = process(&handle, request);
    EXPECT_FALSE(response->errorOccurred()) << response->errorString().toStdString();
    EXPECT_TRUE(response->isValid()) << request;
    EXPECT_EQ(elog_count(), 0) << request << ": " << elog_string(0);
}

TEST(PublicStandard, AnswersEveryRequestOnEveryTableAndField)
{
    const auto files = TemporaryDatabase::ofPublicStandard();
    files->addTable("origin", {{"35.1000", "-120.5000"}, {"1.0000", "2.0000"}});
    elog_clear();
    QOvConnection connection("/", QString::fromStdString(files->path()), "r");
    const std::unique_ptr<QDbptr> database(connection.getQDbptr());
    const QList<QString> tables = database->getSchemaTables();
    EXPECT_GE(tables.size(), 15);
    EXPECT_TRUE(tables.contains("origin"));
    EXPECT_EQ(database->getBaseTablesPresent(), QList<QString>{"origin"});
    for (const QString &name : tables) {
        const std::unique_ptr<QDbptr> table(database->lookupTable(name));
        for (const char *request : tableRequests)
            expectAnswers(*table, request);
        EXPECT_EQ(table->getFieldCount(), table->getTableFields().size());
        for (int i = 0; i < table->getFieldCount(); ++i) {
            const std::unique_ptr<QDbptr> field(table->lookupField(i));
            for (const char *request : fieldRequests)
                expectAnswers(*field, request);
            EXPECT_FALSE(field->getFieldDescription().isEmpty()) << name.toStdString() << i;
        }
    }
    const std::unique_ptr<QDbptr> origin(database->lookupTable("origin"));
    EXPECT_EQ(origin->getRecordCount(), 2);
    EXPECT_EQ(origin->dbGetv(), QVariant());
}

} // namespace
