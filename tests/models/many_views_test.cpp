// Hours of work with views: nothing is left of those that are gone.

#include "quake_database.h"

#include <functional>
#include <gtest/gtest.h>
#include <malloc.h>

#include <qdbptr.h>
#include <qovconnection.h>

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer's own; its headers are not installed everywhere.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

std::size_t allocatedBytes()
{
#if defined(__SANITIZE_ADDRESS__)
    return __sanitizer_get_current_allocated_bytes();
#else
    return mallinfo2().uordblks;
#endif
}

struct Receivers : QObject {
    using QObject::receivers;
};

// One round of work that leaves no view behind.
struct Work {
    const char *name;
    std::function<void(Quakes &)> round;
};

void PrintTo(const Work &work, std::ostream *out)
{
    *out << work.name;
}

void sortByEveryColumn(OrvaneTableModel &table)
{
    for (int column = 0; column < table.columnCount(); ++column)
        table.sort(column, column % 2 == 0 ? Qt::AscendingOrder : Qt::DescendingOrder);
}

void look(const OrvaneTableModel &table)
{
    for (int row = 0; row < table.rowCount(); ++row)
        for (int column = 0; column < table.columnCount(); ++column)
            table.data(table.index(row, column));
}

// Throws are meant: what fails leaves nothing either.
template <class Fails>
void tried(Fails fails)
{
    try {
        fails();
        ADD_FAILURE() << "made a view";
    } catch (const std::exception &) {
        elog_clear();
    }
}

const Work works[] = {
    {"Sorting",
     [](Quakes &quakes) {
         OrvaneTableModel &origin = *quakes.table("origin");
         sortByEveryColumn(origin);
         look(origin);
         quakes.model->deleteView(origin.getFacadeTableName());
     }},
    {"SortingWithAPersistentIndex",
     [](Quakes &quakes) {
         OrvaneTableModel &origin = *quakes.table("origin");
         const QPersistentModelIndex kept = origin.index(1, 1);
         sortByEveryColumn(origin);
         EXPECT_TRUE(kept.isValid());
         quakes.model->deleteView(origin.getFacadeTableName());
     }},
    {"DerivingAndDeleting",
     [](Quakes &quakes) {
         OrvaneTableModel *arrival = quakes.table("arrival");
         QList<OrvaneTableModel *> views = {arrival->subset("sta == 'AAK'", "some"),
                                            arrival->sort({"time"}, true, true, ""),
                                            arrival->joinTo("assoc", ""),
                                            arrival->outerJoinTo("assoc", ""),
                                            arrival->leftJoinTo("assoc", ""),
                                            arrival->noJoinTo("assoc", ""),
                                            arrival->thetaJoinTo("origin", "arrival.time > origin.time", ""),
                                            arrival->group({"sta"}, "groups")};
         views.append(views.at(2)->sever("assoc", ""));
         views.append(views.at(2)->separate("assoc", ""));
         views.append(views.at(7)->ungroup(""));
         views.append(views.at(7)->sort({"sta"}, true, false, ""));
         for (OrvaneTableModel *view : qAsConst(views)) {
             look(*view);
             view->sort(1);
             quakes.model->deleteView(view->getTableName());
         }
     }},
    {"Failing",
     [](Quakes &quakes) {
         OrvaneTableModel *arrival = quakes.table("arrival");
         tried([&] { arrival->subset("sta == ", ""); });
         tried([&] { arrival->sort({"nothing"}, false, false, ""); });
         tried([&] { arrival->group({"nothing"}, ""); });
         tried([&] { arrival->ungroup(""); });
         tried([&] { arrival->joinTo("nowhere", ""); });
         tried([&] { arrival->subset("1", "arrival"); });
     }},
    {"LookingUpModels",
     [](Quakes &quakes) {
         delete quakes.table("site")->getQDbptr()->subset("lat < 50", "southern");
         look(*quakes.table("southern"));
         quakes.model->getViewNamesSkipFacades();
         quakes.model->deleteView("southern");
     }},
};

struct ManyViews : testing::TestWithParam<Work> {
};

TEST_P(ManyViews, LeaveNoMemoryNoHandlesAndNoNames)
{
    constexpr int rounds = 1000;
    Quakes quakes;
    const auto handles = [&] {
        return (quakes.model->getQDbptr()->getConnection()->*(&Receivers::receivers))(
            SIGNAL(databaseClosed()));
    };
    const auto work = [&](int count) {
        for (int round = 0; round < count; ++round)
            GetParam().round(quakes);
    };
    work(rounds / 5); // what is kept once is kept
    const std::size_t before = allocatedBytes();
    const int handlesBefore = handles();
    work(rounds);
    EXPECT_EQ(handles(), handlesBefore);
    EXPECT_TRUE(quakes.model->getViewNames().isEmpty());
    EXPECT_EQ(elog_count(), 0);
    // A view's number is not given again, for which the library keeps a word or two each.
    const double grown = (static_cast<double>(allocatedBytes()) - static_cast<double>(before)) / rounds;
    EXPECT_LT(grown, 1000.0) << "bytes a round";
}

INSTANTIATE_TEST_SUITE_P(Models, ManyViews, testing::ValuesIn(works),
                         [](const auto &tested) { return std::string(tested.param.name); });

} // namespace
