// Views over a grouped view that was freed: what they need of it stays, and every question has its answer.
#include "open_database.h"

#include <chrono>
#include <filesystem>

namespace {

using Handle = std::unique_ptr<QDbptr>;

/* The trimmed texts of a field, row by row, joined by blanks. */
QString texts(QDbptr &view, const QString &field)
{
    QStringList found;
    const Handle cells(view.lookupField(field));
    for (int row = 0, rows = view.getRecordCount(); row < rows; ++row) {
        const Handle cell(cells->lookupRecord(row));
        found.append(cell->dbGet(false).trimmed());
    }
    return found.join(' ');
}

/* How a view is made of the origins grouped by event, and what it shows then. */
struct Made {
    const char *name;
    QDbptr *(*make)(QDbptr &groups);
    const char *events;
    const char *bundles;
    QStringList tables;
};

void PrintTo(const Made &made, std::ostream *out)
{
    *out << made.name;
}

struct FreedGroup : testing::TestWithParam<Made> {
    OpenDatabase open;
    Handle view;

    FreedGroup()
    {
        open.files.addTable("event", {{"8", "2", "us"}, {"7", "1", "us"}});
        // A file written a moment ago is taken for changed at every look.
        const std::filesystem::path origin = open.files.tablePath("origin");
        std::filesystem::last_write_time(origin,
                                         std::filesystem::last_write_time(origin) - std::chrono::hours(1));
        const Handle groups(open.at(OriginTable)->group({"evid"}, "by_evid"));
        view.reset(GetParam().make(*groups));
        groups->dbFree();
    }
};

TEST_P(FreedGroup, HasItsFields)
{
    const QList<QString> fields = view->getTableFields();
    EXPECT_TRUE(fields.contains("by_evid.evid"));
    EXPECT_TRUE(fields.contains("by_evid.bundle"));
    EXPECT_EQ(view->getViewTables(), GetParam().tables);
    EXPECT_EQ(view->getFieldCount(), fields.size());
    for (const QString &name : fields) {
        const Handle field(view->lookupField(name));
        EXPECT_EQ(field->getDbptrType(), DbptrField) << name.toStdString();
        EXPECT_EQ(field->getFieldBaseTable() + "." + field->getFieldName(), name);
        EXPECT_GT(field->getFieldType(), 0);
        EXPECT_GT(field->getFieldSize(), 0);
        EXPECT_FALSE(field->getFieldNull().isEmpty());
        EXPECT_NO_THROW(field->columnIsProbablyNull()) << name.toStdString();
    }
    EXPECT_EQ(elog_count(), 0);
}

TEST_P(FreedGroup, HasItsRows)
{
    EXPECT_EQ(texts(*view, "by_evid.evid"), GetParam().events);
    EXPECT_EQ(texts(*view, "evid"), GetParam().events);
    EXPECT_EQ(texts(*view, "bundle"), GetParam().bundles);
    const Handle row(view->lookupRecord(0));
    EXPECT_FALSE(row->dbGet(false).isEmpty());
    const QHash<QString, QVariant> values = row->dbGetv({"evid", "bundle"});
    EXPECT_EQ(values["evid"].toString(), QString(GetParam().events).section(' ', 0, 0));
    EXPECT_EQ(values["bundle"].toString(), QString(GetParam().bundles).section(' ', 0, 0));
    EXPECT_EQ(elog_count(), 0);
}

// Every request that a view of an open grouped view answers is answered when it is freed, and alike.
TEST_P(FreedGroup, AnswersEveryQuestionAsIfTheGroupWereThere)
{
    OpenDatabase whole;
    whole.files.addTable("event", {{"8", "2", "us"}, {"7", "1", "us"}});
    const Handle groups(whole.at(OriginTable)->group({"evid"}, "by_evid"));
    const Handle same(GetParam().make(*groups));
    for (const char *question : {"table_name",        "table_present",
                                 "table_is_view",     "table_is_writable",
                                 "table_description", "table_detail",
                                 "table_filename",    "table_dirname",
                                 "table_creation",    "unique_id_name",
                                 "field_count",       "record_count",
                                 "table_size",        "record_size",
                                 "view_tables",       "table_fields",
                                 "primary_key",       "alternate_key",
                                 "foreign_keys",      "link_fields",
                                 "find_join_tables",  "find_join_tables_present",
                                 "table_modtime"}) {
        const auto expected = process(same.get(), question);
        const auto got = process(view.get(), question);
        EXPECT_FALSE(got->errorOccurred()) << question << ": " << got->errorString().toStdString();
        EXPECT_EQ(static_cast<const QVariant &>(*got), static_cast<const QVariant &>(*expected)) << question;
    }
    EXPECT_NO_THROW(view->toString());
    EXPECT_EQ(elog_count(), 0);
}

TEST_P(FreedGroup, MakesFurtherViews)
{
    const Handle some(view->subset("evid == 8", ""));
    EXPECT_EQ(texts(*some, "by_evid.evid"), "8");
    const Handle down(view->sort("evid", "", true, false));
    EXPECT_EQ(texts(*down, "evid"), "8 7");
    EXPECT_EQ(down->getTableFields(), view->getTableFields());
    const Handle joined(view->joinTable("origin", ""));
    EXPECT_EQ(joined->getRecordCount(), 3);
    const Handle again(view->group(QList<QString>{"by_evid.evid"}, ""));
    EXPECT_EQ(texts(*again, "evid"), "7 8");
    if (GetParam().tables.size() > 1) {
        const Handle without(view->severTable("event", ""));
        EXPECT_EQ(without->getViewTables(), QStringList{"by_evid"});
        EXPECT_EQ(texts(*without, "evid"), GetParam().events);
        const Handle alone(view->separateTable("by_evid", ""));
        EXPECT_EQ(texts(*alone, "evid"), "7 8");
    }
    EXPECT_EQ(elog_count(), 0);
}

TEST_P(FreedGroup, KeepsItsNameFromOthers)
{
    EXPECT_FALSE(open.handle->getViewsPresent().contains("by_evid"));
    EXPECT_THROW(open.at(OriginTable)->subset("evid == 8", "by_evid"), std::runtime_error);
    view->dbFree();
    const Handle other(open.at(OriginTable)->subset("evid == 8", "by_evid"));
    EXPECT_EQ(other->getTableName(), "by_evid");
}

INSTANTIATE_TEST_SUITE_P(
    Views, FreedGroup,
    testing::Values(Made{"Sorted",
                         [](QDbptr &groups) { return groups.sort("evid", "sorted", true, false); },
                         "8 7",
                         "1-3 0-1",
                         {"by_evid"}},
                    Made{"Subset",
                         [](QDbptr &groups) { return groups.subset("evid > 0", "positive"); },
                         "7 8",
                         "0-1 1-3",
                         {"by_evid"}},
                    Made{"Joined",
                         [](QDbptr &groups) { return groups.joinTable("event", "joined"); },
                         "7 8",
                         "0-1 1-3",
                         {"by_evid", "event"}},
                    Made{"JoinedFromTheLeft",
                         [](QDbptr &groups) { return groups.leftJoinTable("event", "joined"); },
                         "8 7",
                         "1-3 0-1",
                         {"event", "by_evid"}}),
    [](const auto &tested) { return std::string(tested.param.name); });

} // namespace
