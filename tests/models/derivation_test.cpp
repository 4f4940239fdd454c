// Views that the models make: every operation by both models, and what is left when one fails.

#include "quake_database.h"

#include <QPointer>
#include <QSignalSpy>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

struct Operation {
    const char *name;
    const char *table;
    // The view named so, by the database model and by the table's model.
    std::function<OrvaneTableModel *(OrvaneDatabaseModel &, const QString &view)> ofDatabase;
    std::function<OrvaneTableModel *(OrvaneTableModel &, const QString &view)> ofTable;
    const char *field; // of the view, with what it shows
    const char *values;
    const char *automaticName;
    const char *creation; // the last line of it
    // With something wrong about it, and what is said of it.
    std::function<OrvaneTableModel *(OrvaneTableModel &, const QString &view)> failing;
    const char *reason;
};

void PrintTo(const Operation &operation, std::ostream *out)
{
    *out << operation.name;
}

using Database = OrvaneDatabaseModel;
using Table = OrvaneTableModel;

const Operation operations[] = {
    {"Subset", "origin", [](Database &d, const QString &v) { return d.getSubset("origin", "evid == 8", v); },
     [](Table &t, const QString &v) { return t.subset("evid == 8", v); }, "origin.orid", "1 3",
     "origin_subset1", "dbsubset evid == 8",
     [](Table &t, const QString &v) { return t.subset("evit == 8", v); }, "evit"},
    {"Sort", "origin",
     [](Database &d, const QString &v) { return d.getSort("origin", {"lat"}, false, false, v, nullptr); },
     [](Table &t, const QString &v) { return t.sort({"lat"}, false, false, v); }, "origin.orid", "2 1 3",
     "origin_sort1", "dbsort lat",
     [](Table &t, const QString &v) {
         return t.sort({"lat", "latt"}, false, false, v);
     },
     "latt"},
    {"SortReversed", "origin",
     [](Database &d, const QString &v) {
         return d.getSort("origin", {"evid", "lat"}, true, false, v, nullptr);
     },
     [](Table &t, const QString &v) {
         return t.sort({"evid", "lat"}, true, false, v);
     },
     "origin.orid", "2 3 1", "origin_sort1", "dbsort -reverse evid lat",
     [](Table &t, const QString &v) { return t.sort({}, true, false, v); }, "No fields listed"},
    {"SortUnique", "origin",
     [](Database &d, const QString &v) { return d.getSort("origin", {"evid"}, false, true, v, nullptr); },
     [](Table &t, const QString &v) { return t.sort({"evid"}, false, true, v); }, "origin.orid", "1 2",
     "origin_sort1", "dbsort -unique evid",
     [](Table &t, const QString &v) { return t.sort({"site.lat"}, false, true, v); }, "site.lat"},
    {"Group", "origin", [](Database &d, const QString &v) { return d.getGroup("origin", {"evid"}, v); },
     [](Table &t, const QString &v) { return t.group({"evid"}, v); }, "VIEW.evid", "8 9", "origin_group1",
     "dbgroup evid", [](Table &t, const QString &v) { return t.group({"orit"}, v); }, "orit"},
    {"Ungroup", "bundles", [](Database &d, const QString &v) { return d.getUngroup("bundles", v); },
     [](Table &t, const QString &v) { return t.ungroup(v); }, "origin.orid", "1 3 2", "origin_ungroup1",
     "dbungroup", nullptr, nullptr},
    {"Separate", "associated",
     [](Database &d, const QString &v) { return d.getSeparate("associated", "arrival", v); },
     [](Table &t, const QString &v) { return t.separate("arrival", v); }, "arrival.arid", "12 13 14",
     "arrival_separate1", "dbseparate arrival",
     [](Table &t, const QString &v) { return t.separate("site", v); }, "site"},
    {"Join", "arrival", [](Database &d, const QString &v) { return d.getJoin("arrival", "assoc", v); },
     [](Table &t, const QString &v) { return t.joinTo("assoc", v); }, "assoc.arid", "12 13 14",
     "arrival_assoc_join1", "dbjoin arid", [](Table &t, const QString &v) { return t.joinTo("arrival", v); },
     "arrival"},
    {"OuterJoin", "arrival",
     [](Database &d, const QString &v) { return d.getOuterJoin("arrival", "assoc", v); },
     [](Table &t, const QString &v) { return t.outerJoinTo("assoc", v); }, "assoc.arid", " 12 13 14",
     "arrival_assoc_outer1", "dbjoin -outer arid",
     [](Table &t, const QString &v) { return t.outerJoinTo("nowhere", v); }, "nowhere"},
    {"LeftJoin", "arrival",
     [](Database &d, const QString &v) { return d.getLeftJoin("arrival", "assoc", v); },
     [](Table &t, const QString &v) { return t.leftJoinTo("assoc", v); }, "arrival.arid", "12 13 14",
     "assoc_arrival_join1", "dbjoin arid", [](Table &t, const QString &v) { return t.leftJoinTo("", v); },
     "Failed to lookup table ''"},
    {"NoJoin", "arrival", [](Database &d, const QString &v) { return d.getNoJoin("arrival", "assoc", v); },
     [](Table &t, const QString &v) { return t.noJoinTo("assoc", v); }, "arrival.arid", "11",
     "arrival_assoc_nojoin1", "dbnojoin arid",
     [](Table &t, const QString &v) { return t.noJoinTo("nowhere", v); }, "nowhere"},
    {"ThetaJoin", "arrival",
     [](Database &d, const QString &v) {
         return d.getThetaJoin("arrival", "origin", "arrival.time > origin.time && phase == 'S'", v);
     },
     [](Table &t, const QString &v) {
         return t.thetaJoinTo("origin", "arrival.time > origin.time && phase == 'S'", v);
     },
     "origin.orid", "1", "arrival_origin_theta1", "dbtheta arrival.time > origin.time && phase == 'S'",
     [](Table &t, const QString &v) { return t.thetaJoinTo("origin", "phase ==", v); }, "phase =="},
    {"Sever", "associated",
     [](Database &d, const QString &v) { return d.getSever("associated", "arrival", v); },
     [](Table &t, const QString &v) { return t.sever("arrival", v); }, "assoc.orid", "1 1 2",
     "arrival_assoc_sever1", "dbsever arrival", [](Table &t, const QString &v) { return t.sever("site", v); },
     "site"},
};

struct Derivation : testing::TestWithParam<Operation> {
    Quakes quakes;
    OrvaneDatabaseModel &model = *quakes.model;

    Derivation()
    {
        model.getGroup("origin", {"evid"}, "bundles");
        model.getJoin("arrival", "assoc", "associated");
    }

    // What the view shows; VIEW stands for its own name.
    QString valuesOf(const OrvaneTableModel &view) const
    {
        return shown(view, QString(GetParam().field).replace("VIEW", view.getTableName()));
    }
};

TEST_P(Derivation, MakesANamedViewAndItsModel)
{
    const Operation &operation = GetParam();
    QSignalSpy added(&model, SIGNAL(tableAdded(OrvaneTableModel *)));
    OrvaneTableModel *view = operation.ofDatabase(model, "mine");
    ASSERT_TRUE(view);
    const bool named = QByteArray(operation.creation) != "dbseparate arrival"; // the database names these
    const QString name = named ? "mine" : operation.automaticName;
    EXPECT_EQ(view->getTableName(), name);
    EXPECT_EQ(valuesOf(*view), operation.values);
    EXPECT_TRUE(view->tableIsView());
    EXPECT_FALSE(view->tableIsFacade());
    EXPECT_EQ(view->getParent(), &model);
    EXPECT_EQ(model.getTableModel(name), view);
    EXPECT_EQ(view->getQDbptr()->getTableCreation().section('\n', -1, -1, QString::SectionSkipEmpty),
              operation.creation);
    ASSERT_EQ(added.count(), 1);
    EXPECT_EQ(added.first().first().value<OrvaneTableModel *>(), view);
    EXPECT_EQ(elog_count(), 0);
}

TEST_P(Derivation, ByATableGivesTheSame)
{
    const Operation &operation = GetParam();
    if (!operation.ofTable)
        return;
    OrvaneTableModel *view = operation.ofTable(*quakes.table(operation.table), "");
    ASSERT_TRUE(view);
    EXPECT_EQ(view->getTableName(), operation.automaticName);
    EXPECT_EQ(valuesOf(*view), operation.values);
    EXPECT_EQ(model.getTableModel(operation.automaticName), view);
}

TEST_P(Derivation, FollowsItsDatabaseAndTheConfiguration)
{
    OrvaneTableModel *view = GetParam().ofDatabase(model, "");
    QSignalSpy before(view, SIGNAL(layoutAboutToBeChanged()));
    QSignalSpy after(view, SIGNAL(layoutChanged()));
    emit model.layoutAboutToBeChanged();
    emit model.layoutChanged();
    EXPECT_EQ(before.count(), 1);
    EXPECT_EQ(after.count(), 1);
    quakes.config.toggle("show_raw_nulls");
    EXPECT_GT(after.count(), 1);
}

TEST_P(Derivation, EndsWithItsModel)
{
    const QList<QString> views = model.getViewNames();
    const QPointer<OrvaneTableModel> view = GetParam().ofDatabase(model, "");
    const QString name = view->getTableName();
    ASSERT_EQ(model.getViewNames(), views + QList<QString>{name});
    model.deleteView(name);
    EXPECT_FALSE(view);
    EXPECT_EQ(model.getViewNames(), views);
    EXPECT_EQ(model.getTableModel(name), nullptr);
}

TEST_P(Derivation, ThatFailsThrowsTheReasonAndLeavesNothing)
{
    const Operation &operation = GetParam();
    if (!operation.failing)
        return;
    const QList<QString> views = model.getViewNames();
    OrvaneTableModel *table = quakes.table(operation.table);
    QSignalSpy added(&model, SIGNAL(tableAdded(OrvaneTableModel *)));
    elog_log("said before");
    try {
        operation.failing(*table, "wrong");
        FAIL() << "made a view";
    } catch (const std::exception &error) {
        EXPECT_THAT(error.what(), HasSubstr(operation.reason));
    }
    elog_clear();
    EXPECT_EQ(added.count(), 0);
    EXPECT_EQ(model.getViewNames(), views);
    EXPECT_EQ(model.getTableModel("wrong"), nullptr);
}

TEST_P(Derivation, OfANameThatIsTakenFails)
{
    const Operation &operation = GetParam();
    if (QByteArray(operation.creation) == "dbseparate arrival") // never takes a name
        return;
    const QList<QString> views = model.getViewNames();
    OrvaneTableModel *site = quakes.table("site");
    for (const char *name : {"site", "bundles", "a/b"}) {
        try {
            operation.ofDatabase(model, name);
            ADD_FAILURE() << "made a view named " << name;
        } catch (const std::exception &error) {
            EXPECT_THAT(error.what(), HasSubstr(name));
        }
    }
    EXPECT_EQ(model.getViewNames(), views);
    EXPECT_EQ(quakes.table("site"), site);
    EXPECT_EQ(site->rowCount(), 3);
}

TEST_P(Derivation, OfAClosedDatabaseThrows)
{
    const Operation &operation = GetParam();
    OrvaneTableModel *table = quakes.table(operation.table);
    model.close();
    EXPECT_THROW(operation.ofDatabase(model, ""), std::runtime_error);
    if (operation.ofTable) {
        EXPECT_THROW(operation.ofTable(*table, ""), std::runtime_error);
        quakes.model.reset();
        EXPECT_THROW(operation.ofTable(*table, ""), std::runtime_error);
    }
}

INSTANTIATE_TEST_SUITE_P(Models, Derivation, testing::ValuesIn(operations),
                         [](const auto &tested) { return std::string(tested.param.name); });

struct DerivedModel : testing::Test {
    Quakes quakes;
    OrvaneDatabaseModel &model = *quakes.model;
};

TEST_F(DerivedModel, OfAnUnknownTableThrows)
{
    EXPECT_THROW(model.getSubset("nowhere", "1", ""), std::runtime_error);
    EXPECT_THROW(model.getSort("", {"lat"}, false, false, "", nullptr), std::runtime_error);
    EXPECT_TRUE(model.getViewNames().isEmpty());
}

TEST_F(DerivedModel, OfADatabaseThatNeverOpenedThrows)
{
    OvConfig config;
    OrvaneDatabaseModel closed(config, "", "r");
    EXPECT_THROW(closed.getSubset("site", "1", ""), std::runtime_error);
}

TEST_F(DerivedModel, IsEmptyWhereNoRecordFits)
{
    OrvaneTableModel *none = model.getSubset("site", "lat > 100", "");
    EXPECT_EQ(none->rowCount(), 0);
    EXPECT_EQ(none->columnCount(), 9);
    model.deleteView(none->getTableName());
    EXPECT_TRUE(model.getViewNames().isEmpty());
}

TEST_F(DerivedModel, OfATableThatIsNotGroupedCannotBeUngrouped)
{
    try {
        quakes.table("arrival")->ungroup("");
        FAIL() << "ungrouped arrivals";
    } catch (const std::exception &error) {
        EXPECT_THAT(error.what(),
                    HasSubstr("OrvaneDatabaseModel::getUngroup: No view of 'arrival' was made:\n\n"));
    }
    EXPECT_TRUE(model.getViewNames().isEmpty());
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(DerivedModel, OfATableWithoutAFileIsEmpty)
{
    EXPECT_EQ(quakes.table("event")->subset("evid > 0", "")->rowCount(), 0);
    EXPECT_EQ(quakes.table("event")->sort({"evid"}, false, false, "")->rowCount(), 0);
    EXPECT_EQ(quakes.table("event")->group({"evid"}, "")->rowCount(), 0);
}

TEST_F(DerivedModel, OfAViewIsMadeOfItsRows)
{
    OrvaneTableModel *southern = quakes.table("site")->subset("lat < 50", "southern");
    OrvaneTableModel *sorted = southern->sort({"lat"}, false, false, "");
    EXPECT_EQ(sorted->getTableName(), "site_sort1");
    EXPECT_EQ(shown(*sorted, "site.sta"), "ANMO AAK");
    EXPECT_EQ(shown(*sorted->joinTo("arrival", ""), "arrival.arid"), "12 13");
}

TEST_F(DerivedModel, TakesTheReasonOfItsFailureFromTheLogAndNoOtherLine)
{
    elog_log("said before");
    try {
        quakes.table("origin")->sort({"latt"}, false, false, "");
        FAIL() << "made a view";
    } catch (const std::exception &error) {
        EXPECT_THAT(error.what(),
                    AllOf(HasSubstr("OrvaneDatabaseModel::getSort: No view of 'origin' was made:\n\n"),
                          HasSubstr("latt"), Not(HasSubstr("said before"))));
    }
    const std::unique_ptr<char, decltype(&free)> log(elog_string(0), &free);
    EXPECT_STREQ(log.get(), "said before");
    elog_clear();
}

TEST_F(DerivedModel, MarksAFacadeBeforeItIsAnnounced)
{
    OrvaneTableModel *origin = quakes.table("origin");
    bool wasFacade = false;
    const QObject listener; // ends before what it writes to
    QObject::connect(&model, &OrvaneDatabaseModel::tableAdded, &listener,
                     [&](OrvaneTableModel *added) { wasFacade = added->tableIsFacade(); });
    OrvaneTableModel *sorted = model.getSort("origin", {"lat"}, false, false, "by_lat", origin);
    EXPECT_TRUE(wasFacade);
    EXPECT_TRUE(sorted->tableIsFacade());
    EXPECT_EQ(model.getViewNames(), QList<QString>{"by_lat"});
    EXPECT_TRUE(model.getViewNamesSkipFacades().isEmpty());
    EXPECT_FALSE(model.getSort("origin", {"lat"}, false, false, "", nullptr)->tableIsFacade());
    EXPECT_FALSE(wasFacade);
}

TEST_F(DerivedModel, TakesThePlaceOfOneWhoseViewWasFreedByItsHandle)
{
    const QPointer<OrvaneTableModel> first = model.getSubset("site", "lat < 50", "southern");
    first->getQDbptr()->dbFree();
    EXPECT_EQ(model.getTableModel("southern"), nullptr);
    OrvaneTableModel *second = model.getSubset("site", "lat > 50", "southern");
    EXPECT_NE(second, first);
    EXPECT_EQ(model.getTableModel("southern"), second);
    EXPECT_EQ(shown(*second, "site.sta"), "KDAK");
    EXPECT_TRUE(first); // a window may still show it
    second->getQDbptr()->dbFree();
    delete quakes.table("site")->getQDbptr()->subset("lat < 35", "southern");
    OrvaneTableModel *third = model.getTableModel("southern");
    ASSERT_NE(third, second);
    EXPECT_EQ(shown(*third, "site.sta"), "ANMO");
    model.deleteView("southern");
    EXPECT_TRUE(model.getViewNames().isEmpty());
    elog_clear();
}

} // namespace
