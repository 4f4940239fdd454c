#include "saving/saved.h"

#include "saving/failing_file_system.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <utility>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class NewDatabases : public testing::Test
{
protected:
    NewDatabases()
    {
        files.addTable("arrival", {{"KIV", "100.5", "1", "-1", "P"},
                                   {"AAK", "99.0", "2", "-1", "S"},
                                   {"KIV", "90.0", "3", "-1", "P"},
                                   {"AAK", "100.5", "4", "-1", "P"}});
        files.addTable("assoc", {{"3", "10", "KIV", "P"},
                                 {"2", "10", "AAK", "S"},
                                 {"2", "11", "AAK", "P"},
                                 {"9", "11", "KIV", "P"}});
        open = std::make_unique<Opened>(files.path());
        std::filesystem::create_directory(files.folder() + "/new");
        path = files.folder() + "/new/copy";
    }

    Dbptr joined(int outer) const
    {
        return dbjoin(open->table("assoc"), open->table("arrival"), Names({"arid"}), nullptr, outer, nullptr,
                      nullptr);
    }

    TemporaryDatabase files;
    std::unique_ptr<Opened> open;
    std::string path;
};

TEST_F(NewDatabases, HaveTheDistinctRecordsOfEveryMemberInRecordOrder)
{
    ASSERT_EQ(dbunjoin(joined(1), path.c_str(), 0), 0) << take_log();
    EXPECT_EQ(take_log(), "");
    EXPECT_EQ(TemporaryDatabase::readFile(path + ".assoc"),
              TemporaryDatabase::readFile(files.tablePath("assoc")));
    const Opened copy(path);
    EXPECT_THAT(column(copy.table("arrival"), "arid"), ElementsAre("2", "3"));
    EXPECT_EQ(text(copy.pointer, dbSCHEMA_NAME), "small");
    EXPECT_EQ(text(copy.pointer, dbDATABASE_DESCRIPTION), "a small database");
    EXPECT_EQ(integer(copy.table("origin"), dbTABLE_PRESENT), 0);
    EXPECT_THAT(names_in(files.folder() + "/new"),
                ElementsAre("copy", "copy.arrival", "copy.assoc", "small.yaml"));
    // The same join of the copy is the same.
    const Dbptr again =
        dbjoin(copy.table("assoc"), copy.table("arrival"), Names({"arid"}), nullptr, 1, nullptr, nullptr);
    EXPECT_EQ(described(again), described(joined(1)));
}

TEST_F(NewDatabases, OfAWholeTableEqualIt)
{
    ASSERT_EQ(dbunjoin(open->table("arrival"), path.c_str(), 0), 0) << take_log();
    EXPECT_EQ(TemporaryDatabase::readFile(path + ".arrival"),
              TemporaryDatabase::readFile(files.tablePath("arrival")));
}

TEST_F(NewDatabases, OfGroupsHaveTheRecordsOfTheBundles)
{
    const Dbptr groups = dbgroup(joined(0), Names({"orid"}), "g", 1);
    const Dbptr chosen = dbsubset(groups, "orid == 11", nullptr);
    ASSERT_EQ(dbunjoin(chosen, path.c_str(), 0), 0) << take_log();
    const Opened copy(path);
    EXPECT_THAT(column(copy.table("assoc"), "orid"), ElementsAre("11"));
    EXPECT_THAT(column(copy.table("arrival"), "arid"), ElementsAre("2"));
}

TEST_F(NewDatabases, BesideTheirSourceUseItsSchema)
{
    ASSERT_EQ(dbunjoin(joined(0), (files.folder() + "/other").c_str(), 0), 0) << take_log();
    EXPECT_THAT(names_in(files.folder()),
                ElementsAre("new", "other", "other.arrival", "other.assoc", "quakes", "quakes.arrival",
                            "quakes.assoc", "small.yaml"));
}

TEST_F(NewDatabases, TakeNoPlaceOfAnotherOne)
{
    EXPECT_EQ(dbunjoin(joined(0), files.path().c_str(), 0), dbERROR_ARGUMENT);
    EXPECT_THAT(take_log(), HasSubstr("quakes: is there already; a new database needs a name of its own"));
    std::filesystem::remove(files.path());
    EXPECT_EQ(dbunjoin(joined(0), files.path().c_str(), 0), dbERROR_ARGUMENT); // table files make one, too
    EXPECT_THAT(take_log(), HasSubstr("quakes.arrival: is there already"));
    EXPECT_EQ(dbunjoin(joined(0), (files.folder() + "/new").c_str(), 0), dbERROR_ARGUMENT);
    EXPECT_EQ(dbunjoin(joined(0), "", 0), dbERROR_ARGUMENT);
    EXPECT_EQ(dbunjoin(joined(0), nullptr, 0), dbERROR_ARGUMENT);
    EXPECT_EQ(dbunjoin(joined(0), path.c_str(), 1), dbERROR_ARGUMENT);
    EXPECT_LT(dbunjoin(joined(0), "/nowhere/copy", 0), 0);
    EXPECT_THAT(take_log(), HasSubstr("/nowhere/"));
    EXPECT_THAT(names_in(files.folder() + "/new"), ElementsAre());
}

TEST_F(NewDatabases, WithAnotherSchemaOfThatNameThereAreRefused)
{
    files.writeFile("new/small.yaml",
                    "name: small\nattributes: {a: {type: integer, width: 8, format: \"%8d\", null: "
                    "\"-1\"}}\nrelations: {t: {fields: [a]}}\n");
    EXPECT_EQ(dbunjoin(joined(0), path.c_str(), 0), dbERROR_ARGUMENT);
    EXPECT_THAT(take_log(), HasSubstr("another schema small"));
    EXPECT_THAT(names_in(files.folder() + "/new"), ElementsAre("small.yaml"));
}

TEST_F(NewDatabases, ThatFailHalfWayLeaveNothing)
{
    for (int failing = 0; failing < 6; ++failing) {
        FailingFileSystem system;
        system.failing_rename = failing;
        const orvane::ScopedFileSystem scoped(system);
        const int code = dbunjoin(joined(0), path.c_str(), 0);
        if (system.renames <= failing) {
            EXPECT_EQ(code, 0);
            EXPECT_EQ(failing, 4); // a schema, two tables, a descriptor
            return;
        }
        EXPECT_EQ(code, dbERROR_IO);
        EXPECT_THAT(take_log(), HasSubstr("/new/"));
        EXPECT_THAT(names_in(files.folder() + "/new"), ElementsAre());
    }
    FAIL() << "every rename failed";
}

TEST_F(NewDatabases, ThatAreCancelledLeaveNothing)
{
    FailingFileSystem system;
    system.delay = std::chrono::milliseconds(150);
    const orvane::ScopedFileSystem scoped(system);
    dbset_progress_hook([](double, void *) { return 1; }, nullptr);
    EXPECT_EQ(dbunjoin(joined(0), path.c_str(), 0), dbERROR_CANCELLED);
    dbset_progress_hook(nullptr, nullptr);
    EXPECT_THAT(take_log(), HasSubstr("dbunjoin: cancelled"));
    EXPECT_THAT(names_in(files.folder() + "/new"), ElementsAre());
}

TEST_F(NewDatabases, ThatADiskHasNoRoomForLeaveNothing)
{
    for (int failing = 0; failing < 4; ++failing) {
        FailingFileSystem system;
        system.failing_write = failing * 3;
        const orvane::ScopedFileSystem scoped(system);
        EXPECT_EQ(dbunjoin(joined(0), path.c_str(), 0), dbERROR_IO);
        EXPECT_THAT(take_log(), HasSubstr("No space left on device"));
        EXPECT_THAT(names_in(files.folder() + "/new"), ElementsAre());
    }
}

// ---- More records than are read at a time --------------------------------------------------------

class NewLargeDatabases : public testing::Test
{
protected:
    static constexpr int count = 200000; // some 5 MB

    NewLargeDatabases()
    {
        std::mt19937 random(3);
        for (int i = 0; i < count; ++i) {
            char line[64];
            std::snprintf(line, sizeof line, "%8d %-16s\n", i, std::to_string(random()).c_str());
            records.emplace_back(line);
        }
        write();
        std::filesystem::create_directory(files.folder() + "/new");
    }
    ~NewLargeDatabases() override { dbset_progress_hook(nullptr, nullptr); }

    void write() const
    {
        std::string text;
        for (const std::string &record : records)
            text += record;
        files.writeFile("quakes.many", text);
    }
    int unjoin(const Opened &open, const char *condition) const
    {
        return dbunjoin(dbsubset(open.table("many"), condition, nullptr), path.c_str(), 0);
    }

    TemporaryDatabase files{"large", R"yaml(name: large
attributes:
  id: {type: integer, width: 8, format: "%8d", null: "-1"}
  word: {type: string, width: 16, format: "%-16s", null: "-"}
relations:
  many: {fields: [id, word]}
)yaml"};
    const std::string path = files.folder() + "/new/copy";
    std::vector<std::string> records;
};

TEST_F(NewLargeDatabases, HaveTheRecordsInOrder)
{
    const Opened open(files.path());
    const struct {
        const char *condition;
        std::function<bool(int)> wanted;
    } cases[] = {
        {"id % 3 == 0", [](int id) { return id % 3 == 0; }},
        {"id > 30000 && id < 150000", [](int id) { return id > 30000 && id < 150000; }}, // pieces left out
        {"id == 0 || id == 199999", [](int id) { return id == 0 || id == 199999; }},
        {"id >= 0", [](int) { return true; }},
    };
    for (const auto &[condition, wanted] : cases) {
        ASSERT_EQ(unjoin(open, condition), 0) << take_log();
        std::string expected;
        for (int id = 0; id < count; ++id)
            if (wanted(id))
                expected += records[static_cast<std::size_t>(id)];
        EXPECT_TRUE(TemporaryDatabase::readFile(path + ".many") == expected) << condition;
        std::filesystem::remove(path);
        std::filesystem::remove(path + ".many");
    }
}

TEST_F(NewLargeDatabases, OfABadRecordSayWhichAndLeaveNothing)
{
    // Of several the first; also where it is read by another thread than one behind it.
    records[180000][5] = '\n';
    for (const int bad : {150000, 100000, 45000, 10}) {
        records[static_cast<std::size_t>(bad)][5] = '\n';
        write();
        const Opened open(files.path());
        EXPECT_EQ(dbunjoin(open.table("many"), path.c_str(), 0), dbERROR_FORMAT);
        EXPECT_THAT(take_log(), HasSubstr("record " + std::to_string(bad)));
        EXPECT_THAT(names_in(files.folder() + "/new"), ElementsAre());
    }
}

TEST_F(NewLargeDatabases, ThatADiskHasNoRoomForOrThatAreCancelledLeaveNothing)
{
    const Opened open(files.path());
    for (const int failing : {3, 9, 17}) {
        FailingFileSystem system;
        system.failing_write = failing;
        const orvane::ScopedFileSystem scoped(system);
        EXPECT_EQ(dbunjoin(open.table("many"), path.c_str(), 0), dbERROR_IO);
        EXPECT_THAT(take_log(), HasSubstr("No space left on device"));
        EXPECT_THAT(names_in(files.folder() + "/new"), ElementsAre());
    }
    FailingFileSystem system;
    system.delay = std::chrono::milliseconds(20);
    const orvane::ScopedFileSystem scoped(system);
    std::vector<double> told;
    dbset_progress_hook(
        [](double fraction, void *data) {
            auto &fractions = *static_cast<std::vector<double> *>(data);
            fractions.push_back(fraction);
            return fractions.size() == 2 ? 1 : 0;
        },
        &told);
    EXPECT_EQ(dbunjoin(open.table("many"), path.c_str(), 0), dbERROR_CANCELLED);
    ASSERT_EQ(told.size(), 2u);
    EXPECT_LT(told[0], told[1]);
    EXPECT_THAT(take_log(), HasSubstr("dbunjoin: cancelled"));
    EXPECT_THAT(names_in(files.folder() + "/new"), ElementsAre());
}

// ---- Tables that change --------------------------------------------------------------------------

// Another program changes a table between the moments when its records are counted and when they are copied.
class ChangingTable : public FailingFileSystem
{
public:
    ChangingTable(std::function<void()> to_change, int times) : change_(std::move(to_change)), times_(times)
    {
    }

    orvane::Result<std::unique_ptr<orvane::WritableFile>> open_to_write(const std::string &path,
                                                                        orvane::Creation creation) override
    {
        if (path.find("copy.arrival") != std::string::npos && times_-- > 0)
            change_();
        return FailingFileSystem::open_to_write(path, creation);
    }

private:
    std::function<void()> change_;
    int times_;
};

TEST_F(NewDatabases, OfATableThatChangesMeanwhileAreBegunAnew)
{
    ChangingTable system(
        [&] {
            files.addTable("arrival", {{"KIV", "1.0", "7", "-1", "P"}, {"AAK", "2.0", "8", "-1", "S"}});
        },
        1);
    const orvane::ScopedFileSystem scoped(system);
    ASSERT_EQ(dbunjoin(open->table("arrival"), path.c_str(), 0), 0) << take_log();
    EXPECT_EQ(TemporaryDatabase::readFile(path + ".arrival"),
              TemporaryDatabase::readFile(files.tablePath("arrival")));
}

TEST_F(NewDatabases, OfATableThatNeverRestsSayThat)
{
    int change = 0;
    ChangingTable system(
        [&] {
            files.addTable("arrival", std::vector<TemporaryDatabase::Row>(
                                          static_cast<std::size_t>(++change % 3 + 1), {"KIV", "1.0", "7"}));
        },
        1000);
    const orvane::ScopedFileSystem scoped(system);
    EXPECT_LT(dbunjoin(open->table("arrival"), path.c_str(), 0), 0);
    EXPECT_THAT(take_log(), testing::AnyOf(HasSubstr("changed while it was read"), HasSubstr("cut short")));
    EXPECT_THAT(names_in(files.folder() + "/new"), ElementsAre());
}

} // namespace
