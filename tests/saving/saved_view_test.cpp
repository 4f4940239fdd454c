#include "saving/saved.h"

#include "catalog/database_registry.h"
#include "db/watched_file_system.h"
#include "saving/failing_file_system.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

class SavedViews : public testing::Test
{
protected:
    SavedViews()
    {
        files.addTable("site", {{"AAK", "2008001", "-1", "42.6390", "74.4940"},
                                {"KIV", "2008001", "2010001", "43.9550", "42.6860"}});
        files.addTable("arrival", {{"KIV", "100.5", "1", "-1", "P"},
                                   {"AAK", "99.0", "2", "-1", "S"},
                                   {"KIV", "90.0", "3", "-1", "P"},
                                   {"AAK", "100.5", "4", "-1", "P"}});
        files.addTable("assoc", {{"2", "10", "AAK", "S"}, {"3", "10", "KIV", "P"}, {"9", "11", "KIV", "P"}});
    }

    // Saves what a test derives, and answers what it is like.
    template <typename Derive>
    std::string save(Derive derive)
    {
        const Opened open(files.path());
        const Dbptr view = derive(open);
        EXPECT_GE(view.table, 0) << take_log();
        const std::string before = described(view);
        EXPECT_EQ(dbsave_view(view), 0) << take_log();
        EXPECT_EQ(take_log(), "");
        return before;
    }

    std::string path(const std::string &name) const { return files.path() + "." + name; }

    TemporaryDatabase files;
    Notices notices;
};

Dbptr late(const Opened &open)
{
    return dbsubset(open.table("arrival"), "time > 95", "late");
}

TEST_F(SavedViews, StandBehindTheTablesWhenTheDatabaseIsOpenedAgain)
{
    const std::string before = save(late);
    const Opened open(files.path());
    EXPECT_THAT(list(open.pointer, dbSCHEMA_TABLES),
                ElementsAre("site", "origin", "arrival", "assoc", "event", "remark", "kinds", "late"));
    const Dbptr view = open.table("late");
    EXPECT_EQ(described(view), before);
    EXPECT_EQ(integer(view, dbTABLE_IS_VIEW), 1);
    EXPECT_EQ(integer(view, dbTABLE_PRESENT), 1);
    EXPECT_EQ(text(view, dbTABLE_CREATION), "dbopen arrival\ndbsubset time > 95");
    EXPECT_THAT(list(view, dbVIEW_TABLES), ElementsAre("arrival"));
    EXPECT_EQ(notices.text, "");
    EXPECT_EQ(take_log(), "");
}

TEST_F(SavedViews, AreOfWhatFurtherViewsAreMade)
{
    save(late);
    const Opened open(files.path());
    const Dbptr p = dbsubset(open.table("late"), "phase == 'P'", nullptr);
    EXPECT_THAT(column(p, "arid"), ElementsAre("1", "4"));
    EXPECT_EQ(text(p, dbTABLE_CREATION), "dbopen arrival\ndbsubset time > 95\ndbsubset phase == 'P'");
    const Dbptr joined =
        dbjoin(open.table("late"), open.table("site"), Names({"sta"}), nullptr, 0, nullptr, nullptr);
    EXPECT_THAT(column(joined, "staname"), testing::SizeIs(3));
}

TEST_F(SavedViews, OfJoinsKeepNullRecords)
{
    const std::string before = save([](const Opened &open) {
        return dbjoin(open.table("assoc"), open.table("arrival"), Names({"arid"}), nullptr, 1, nullptr,
                      "outer");
    });
    EXPECT_THAT(before, HasSubstr("9       11 KIV    P"));
    const Opened open(files.path());
    EXPECT_EQ(described(open.table("outer")), before);
}

TEST_F(SavedViews, OfGroupsKeepTheirBundles)
{
    const std::string before =
        save([](const Opened &open) { return dbgroup(open.table("arrival"), Names({"sta"}), "bysta", 1); });
    EXPECT_THAT(before, HasSubstr("    KIV"));
    const Opened open(files.path());
    EXPECT_EQ(described(open.table("bysta")), before);
    EXPECT_EQ(bundle(open.table("bysta"), 1), "2-4");
    EXPECT_THAT(column(dbungroup(open.table("bysta"), nullptr), "arid"), ElementsAre("2", "4", "1", "3"));
}

TEST_F(SavedViews, OfSubsetsOfGroupsAndGroupsOfGroupsComeBack)
{
    const std::string one = save([](const Opened &open) {
        const Dbptr groups = dbgroup(open.table("arrival"), Names({"sta", "phase"}), "inner", 1);
        return dbsubset(groups, "phase == 'P'", "chosen");
    });
    const std::string two = save([](const Opened &open) {
        const Dbptr groups = dbgroup(open.table("arrival"), Names({"sta", "phase"}), "other", 1);
        return dbgroup(groups, Names({"sta"}), "outer", 1);
    });
    const Opened open(files.path());
    EXPECT_EQ(described(open.table("chosen")), one);
    EXPECT_EQ(described(open.table("outer")), two);
    EXPECT_EQ(notices.text, "");
}

TEST_F(SavedViews, KeepTheOrderOfASort)
{
    const std::string before = save([](const Opened &open) {
        return dbsort(open.table("arrival"), Names({"time", "arid"}), dbSORT_REVERSE, "sorted");
    });
    const Opened open(files.path());
    EXPECT_EQ(described(open.table("sorted")), before);
    EXPECT_THAT(column(open.table("sorted"), "arid"), ElementsAre("4", "1", "2", "3"));
}

TEST_F(SavedViews, MayBeEmpty)
{
    const std::string before =
        save([](const Opened &open) { return dbsubset(open.table("arrival"), "time > 1000", "none"); });
    const Opened open(files.path());
    EXPECT_EQ(described(open.table("none")), before);
    EXPECT_EQ(integer(open.table("none"), dbRECORD_COUNT), 0);
}

TEST_F(SavedViews, TakeThePlaceOfTheOneSavedBefore)
{
    save(late);
    save([](const Opened &open) {
        EXPECT_EQ(dbfree(open.table("late")), 0);
        return dbsubset(open.table("arrival"), "time < 95", "late");
    });
    const Opened open(files.path());
    EXPECT_THAT(column(open.table("late"), "arid"), ElementsAre("3"));
}

TEST_F(SavedViews, CanBeSavedAgainOverTheFileTheyComeFrom)
{
    const std::string before = save(late);
    {
        const Opened open(files.path());
        EXPECT_EQ(dbsave_view(open.table("late")), 0);
        EXPECT_EQ(described(open.table("late")), before);
    }
    const Opened open(files.path());
    EXPECT_EQ(described(open.table("late")), before);
}

TEST_F(SavedViews, OfABaseTableHaveAllItsRecordsAndAnotherName)
{
    const std::string table = TemporaryDatabase::readFile(path("arrival"));
    {
        const Opened open(files.path());
        EXPECT_EQ(dbsave_view(open.table("arrival")), 0) << take_log();
        EXPECT_EQ(dbsave_view(open.table("arrival")), 0) << take_log();
    }
    EXPECT_THAT(notices.text, HasSubstr("quakes.arrival_view1"));
    EXPECT_EQ(TemporaryDatabase::readFile(path("arrival")), table);
    const Opened open(files.path());
    EXPECT_THAT(column(open.table("arrival_view2"), "arid"), ElementsAre("1", "2", "3", "4"));
    EXPECT_EQ(integer(open.table("arrival_view1"), dbTABLE_IS_VIEW), 1);
}

TEST_F(SavedViews, NeverReplaceAnythingElse)
{
    files.writeFile("quakes.late", "my notes\n");
    {
        const Opened open(files.path());
        EXPECT_EQ(dbsave_view(late(open)), dbERROR_ARGUMENT);
        EXPECT_THAT(take_log(), HasSubstr("quakes.late: is there already and is no saved view"));
    }
    EXPECT_EQ(TemporaryDatabase::readFile(path("late")), "my notes\n");
}

TEST_F(SavedViews, ThatCannotBeWrittenLeaveWhatWasThere)
{
    save(late);
    const std::string before = TemporaryDatabase::readFile(path("late"));
    const auto names = names_in(files.folder());
    const Opened open(files.path());
    FailingFileSystem system;
    const orvane::ScopedFileSystem scoped(system);
    const auto failing = [&](int write, int rename) {
        system.failing_write = write;
        system.failing_rename = rename;
        system.writes = system.renames = 0;
        EXPECT_EQ(dbsave_view(open.table("late")), dbERROR_IO);
        EXPECT_THAT(take_log(), AllOf(HasSubstr("dbsave_view: " + path("late") + ": cannot be written"),
                                      HasSubstr("No space left on device")));
        EXPECT_EQ(TemporaryDatabase::readFile(path("late")), before);
        EXPECT_EQ(names_in(files.folder()), names);
    };
    failing(0, -1);
    failing(2, -1);
    failing(-1, 0);
    EXPECT_EQ(dbsave_view(open.table("late")), 0);
}

TEST_F(SavedViews, ThatAreCancelledLeaveWhatWasThere)
{
    const std::vector<TemporaryDatabase::Row> rows(60000, {"KIV", "100.5", "1", "-1", "P"});
    files.appendRows("arrival", rows);
    save(late);
    const std::string before = TemporaryDatabase::readFile(path("late"));
    const auto names = names_in(files.folder());
    const Opened open(files.path());
    FailingFileSystem system;
    system.delay = std::chrono::milliseconds(150);
    const orvane::ScopedFileSystem scoped(system);
    dbset_progress_hook([](double, void *) { return 1; }, nullptr);
    EXPECT_EQ(dbsave_view(open.table("late")), dbERROR_CANCELLED);
    dbset_progress_hook(nullptr, nullptr);
    EXPECT_THAT(take_log(), HasSubstr("dbsave_view: cancelled"));
    EXPECT_EQ(TemporaryDatabase::readFile(path("late")), before);
    EXPECT_EQ(names_in(files.folder()), names);
}

// ---- Opening lazily ------------------------------------------------------------------------------

TEST_F(SavedViews, AreReadWhenTheirRowsAreAskedFor)
{
    save(late);
    WatchedFileSystem system;
    const orvane::ScopedFileSystem scoped(system);
    const Opened open(files.path());
    const Dbptr view = open.table("late");
    EXPECT_EQ(text(view, dbTABLE_NAME), "late");
    EXPECT_THAT(list(view, dbTABLE_FIELDS), Contains("phase"));
    EXPECT_EQ(system.opens("quakes.late"), 2); // the mark, the head
    EXPECT_EQ(system.opens("quakes.arrival"), 0);
    EXPECT_EQ(integer(view, dbRECORD_COUNT), 3);
    EXPECT_EQ(system.opens("quakes.late"), 3);
    EXPECT_EQ(integer(view, dbRECORD_COUNT), 3);
    EXPECT_EQ(system.opens("quakes.late"), 3);
}

TEST_F(SavedViews, ThatWereReplacedBeforeTheyWereReadAreRefused)
{
    save(late);
    const Opened open(files.path());
    files.writeFile("quakes.late", "gone\n");
    EXPECT_EQ(integer(open.table("late"), dbRECORD_COUNT), 0);
    EXPECT_THAT(take_log(), HasSubstr("quakes.late: the saved view was replaced or removed"));
    EXPECT_LT(dbsubset(open.table("late"), "time > 0", nullptr).table, 0);
    EXPECT_THAT(take_log(), HasSubstr("was replaced or removed"));
}

TEST_F(SavedViews, CanBeWhatAPathPointsAt)
{
    save(late);
    const Opened open(path("late"));
    EXPECT_EQ(text(open.pointer, dbTABLE_NAME), "late");
    EXPECT_EQ(text(open.pointer, dbDATABASE_NAME), files.path());
    EXPECT_EQ(integer(open.pointer, dbRECORD_COUNT), 3);
}

// ---- Members that changed ------------------------------------------------------------------------

TEST_F(SavedViews, TellThatAMemberHasGrown)
{
    const std::string before = save(late);
    files.appendRows("arrival", {{"AAK", "200.0", "5", "-1", "P"}});
    const Opened open(files.path());
    EXPECT_EQ(notices.text, ""); // nobody asked yet
    EXPECT_EQ(described(open.table("late")), before);
    EXPECT_THAT(notices.text,
                HasSubstr("quakes.late: table arrival has changed since the view was saved: it had 4 "
                          "records then and has 5 now"));
    EXPECT_EQ(take_log(), "");
}

TEST_F(SavedViews, TellThatAMemberWasChangedInPlace)
{
    save(late);
    std::filesystem::last_write_time(path("arrival"),
                                     std::filesystem::file_time_type::clock::now() + std::chrono::seconds(5));
    const Opened open(files.path());
    EXPECT_EQ(integer(open.table("late"), dbRECORD_COUNT), 3);
    EXPECT_THAT(notices.text, HasSubstr("table arrival has changed"));
}

TEST_F(SavedViews, LeaveOutRowsOfRecordsThatAreGone)
{
    save(late);
    files.addTable("arrival", {{"KIV", "100.5", "1", "-1", "P"}, {"AAK", "99.0", "2", "-1", "S"}});
    const Opened open(files.path());
    EXPECT_THAT(column(open.table("late"), "arid"), ElementsAre("1", "2"));
    EXPECT_THAT(notices.text, HasSubstr("1 rows stood for records that are gone and were left out"));
}

TEST_F(SavedViews, OfGroupsLeaveOutBundlesWithoutRows)
{
    save([](const Opened &open) {
        const Dbptr groups = dbgroup(open.table("arrival"), Names({"arid"}), "byarid", 1);
        return dbsort(groups, Names({"arid"}), dbSORT_REVERSE, "backwards");
    });
    save([](const Opened &open) { return dbgroup(open.table("arrival"), Names({"sta"}), "bysta", 1); });
    files.addTable("arrival", {{"KIV", "100.5", "1", "-1", "P"}, {"AAK", "99.0", "2", "-1", "S"}});
    const Opened open(files.path());
    EXPECT_THAT(column(open.table("backwards"), "arid"), ElementsAre("2", "1"));
    EXPECT_EQ(integer(open.table("bysta"), dbRECORD_COUNT), 2);
    EXPECT_EQ(bundle(open.table("bysta"), 0), "0-1");
    EXPECT_EQ(bundle(open.table("bysta"), 1), "1-2");
}

TEST_F(SavedViews, WhoseTableIsGoneAreEmpty)
{
    save(late);
    std::filesystem::remove(path("arrival"));
    const Opened open(files.path());
    EXPECT_EQ(integer(open.table("late"), dbRECORD_COUNT), 0);
    EXPECT_THAT(notices.text, HasSubstr("3 rows stood for records that are gone"));
}

TEST_F(SavedViews, FollowWhenRecordsAreNumberedAnewBeforeTheyWereRead)
{
    save(late);
    const Opened open(files.path());
    const Dbptr view = open.table("late");
    orvane::Database &database = *orvane::DatabaseRegistry::of_process().database(open.pointer.database);
    // As after a crunch that took record 0 away.
    files.addTable(
        "arrival",
        {{"AAK", "99.0", "2", "-1", "S"}, {"KIV", "90.0", "3", "-1", "P"}, {"AAK", "100.5", "4", "-1", "P"}});
    auto &arrival = dynamic_cast<orvane::RecordTable &>(*database.table(open.table("arrival").table));
    const std::vector<orvane::RowNumber> renumbered{orvane::null_row, 0, 1, 2};
    database.renumber(arrival, arrival.generation(), renumbered);
    EXPECT_THAT(column(view, "arid"), ElementsAre("2", "4"));
}

// ---- Streams -------------------------------------------------------------------------------------

TEST_F(SavedViews, GoThroughStreams)
{
    Stream stream;
    std::string before;
    {
        const Opened open(files.path());
        const Dbptr view = late(open);
        before = described(view);
        EXPECT_EQ(dbwrite_view(view, stream), 0);
    }
    EXPECT_THAT(stream.text(),
                StartsWith("saved-view: 1\ndatabase: \"" + files.path() + "\"\nschema: \"small\"\n"));
    const Opened open(files.path());
    const Dbptr view = dbread_view(open.pointer, stream, "named");
    ASSERT_GE(view.table, 0) << take_log();
    EXPECT_EQ(text(view, dbTABLE_NAME), "named");
    EXPECT_EQ(described(view), before);
    std::rewind(stream);
    EXPECT_EQ(text(dbread_view(open.pointer, stream, nullptr), dbTABLE_NAME), "late");
    std::rewind(stream);
    EXPECT_EQ(text(dbread_view(open.pointer, stream, nullptr), dbTABLE_NAME), "late_view1");
    std::rewind(stream);
    EXPECT_LT(dbread_view(open.pointer, stream, "late").table, 0);
    EXPECT_THAT(take_log(), HasSubstr("a table or view of that name is there already"));
}

TEST_F(SavedViews, InStreamsOpenTheirDatabase)
{
    Stream stream;
    {
        const Opened open(files.path());
        EXPECT_EQ(dbwrite_view(open.table("arrival"), stream), 0);
    }
    std::rewind(stream);
    const Dbptr view = dbread_view(dbinvalid(), stream, nullptr);
    ASSERT_GE(view.table, 0) << take_log();
    EXPECT_EQ(text(view, dbDATABASE_NAME), files.path());
    EXPECT_EQ(text(view, dbTABLE_NAME), "arrival_view1");
    EXPECT_EQ(integer(view, dbRECORD_COUNT), 4);
    EXPECT_EQ(OVdbclose(view), 0);
}

TEST_F(SavedViews, OfStreamsThatAreNoneAreErrors)
{
    const Opened open(files.path());
    errno = ENOENT;
    EXPECT_EQ(dbwrite_view(open.table("arrival"), nullptr), dbERROR_ARGUMENT);
    EXPECT_THAT(take_log(), HasSubstr("dbwrite_view: there is no stream: No such file or directory"));
    EXPECT_LT(dbread_view(open.pointer, nullptr, nullptr).table, 0);
    EXPECT_THAT(take_log(), HasSubstr("dbread_view: there is no stream"));
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> full(std::fopen("/dev/full", "w"), &std::fclose);
    EXPECT_EQ(dbwrite_view(open.table("arrival"), full.get()), dbERROR_IO);
    EXPECT_THAT(take_log(), HasSubstr("No space left on device"));
    EXPECT_LT(dbread_view(open.pointer, Stream("hello\n"), nullptr).table, 0);
    EXPECT_THAT(take_log(), HasSubstr("saved view:1: is no saved view"));
    EXPECT_LT(dbread_view(open.pointer, Stream(), nullptr).table, 0);
    EXPECT_THAT(take_log(),
                HasSubstr("saved view:1: the text ends where the head of a saved view was expected"));
}

} // namespace
