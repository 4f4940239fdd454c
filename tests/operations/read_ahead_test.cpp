// dbread_ahead: rows that lie anywhere in their files are read together, and are what they are.
#include "db/watched_file_system.h"
#include "operations/large_tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

using testing::HasSubstr;

namespace {

constexpr int record_size = 24;
constexpr int count = 300000; // 27 blocks

class ReadAhead : public testing::Test
{
protected:
    ReadAhead()
    {
        writeNarrowTable(files, "many", narrowRows(count, 5000, 1));
        writeNarrowTable(files, "more", narrowRows(5000, 5000, 2));
        makeOld();
        open = std::make_unique<Opened>(files.path(), "r+");
    }
    ~ReadAhead() override { open.reset(); }

    // The form of a file that changed lately is looked at again and again.
    void makeOld() const
    {
        for (const char *name : {"many", "more"}) {
            const std::filesystem::path file(files.tablePath(name));
            std::filesystem::last_write_time(file,
                                             std::filesystem::last_write_time(file) - std::chrono::hours(1));
        }
    }
    Dbptr sorted() const { return dbsort(open->table("many"), Names{"value", "id"}, 0, nullptr); }
    static std::string record(Dbptr rows, int64_t row)
    {
        rows.record = row;
        return get(rows);
    }
    static std::string field(Dbptr rows, int64_t row, const char *name)
    {
        Dbptr at = dblookup(rows, "", "", name, "");
        at.record = row;
        return get(at);
    }

    TemporaryDatabase files{"narrow", narrowSchemaText()};
    WatchedFileSystem watched;
    const orvane::ScopedFileSystem use{watched};
    std::unique_ptr<Opened> open;
};

TEST_F(ReadAhead, AnswersTheSameTexts)
{
    const Opened other(files.path()); // reads one by one
    const Dbptr plain = dbsort(other.table("many"), Names{"value", "id"}, 0, nullptr);
    const Dbptr rows = sorted();
    for (const int64_t first : {0, 1000, 123456, count - 700}) {
        ASSERT_EQ(dbread_ahead(dbrow_range(rows, first, first + 512)), 0);
        // Others between them, and behind.
        for (int64_t row = first; row < first + 700; ++row) {
            ASSERT_EQ(record(rows, row), record(plain, row));
            ASSERT_EQ(field(rows, row, "value"), field(plain, row, "value"));
            if (row % 50 == 0) {
                ASSERT_EQ(record(rows, count - 1 - row), record(plain, count - 1 - row));
            }
        }
    }
    const auto join = [](const Opened &in) {
        return dbjoin(in.table("many"), in.table("more"), Names{"id"}, Names{"other"}, 1, nullptr, nullptr);
    };
    const Dbptr joined = join(*open);
    const Dbptr joined_plain = join(other);
    const int64_t last = integer(joined, dbRECORD_COUNT);
    for (const int64_t first : {int64_t{0}, last / 2, last - 300}) {
        ASSERT_EQ(dbread_ahead(dbrow_range(joined, first, first + 512)), 0); // also beyond the end
        for (int64_t row = first; row < std::min(last, first + 512); ++row)
            ASSERT_EQ(record(joined, row), record(joined_plain, row)) << row;
    }
    EXPECT_EQ(take_log(), "");
}

TEST_F(ReadAhead, ReadsTheRecordsAlone)
{
    const Dbptr rows = sorted();
    watched.forget();
    ASSERT_EQ(dbread_ahead(dbrow_range(rows, 100000, 100512)), 0);
    const int64_t read = watched.bytes_read(".many");
    EXPECT_GT(read, 0);
    EXPECT_LE(read, 512 * record_size + 4096); // the form may be looked at
    for (int64_t row = 100000; row < 100512; ++row)
        ASSERT_NE(record(rows, row), "");
    EXPECT_EQ(watched.bytes_read(".many"), read);
    // Nor are they read again when they are asked for again.
    ASSERT_EQ(dbread_ahead(dbrow_range(rows, 100100, 100400)), 0);
    EXPECT_EQ(watched.bytes_read(".many"), read);
}

TEST_F(ReadAhead, LeavesRowsAloneThatLieTogether)
{
    watched.forget();
    ASSERT_EQ(dbread_ahead(dbrow_range(open->table("many"), 1000, 1512)), 0);
    const Dbptr some = dbsubset(open->table("many"), "id >= 0", nullptr);
    watched.forget();
    ASSERT_EQ(dbread_ahead(dbrow_range(some, 1000, 5000)), 0);
    EXPECT_LE(watched.bytes_read(".many"), 4096);
    EXPECT_NE(record(some, 1000), "");
}

TEST_F(ReadAhead, ShowsWhatIsChangedAfterIt)
{
    const Dbptr rows = sorted();
    ASSERT_EQ(dbread_ahead(dbrow_range(rows, 5000, 5512)), 0);
    // By the program itself.
    Dbptr cell = dblookup(rows, "", "", "word", "");
    cell.record = 5100;
    char word[] = "abcd";
    DbValue value{};
    value.type = dbSTRING;
    value.text = word;
    ASSERT_EQ(dbputv(cell, nullptr, &value), 0) << take_log();
    EXPECT_EQ(field(rows, 5100, "word"), "abcd");
    // By another one.
    ASSERT_EQ(dbread_ahead(dbrow_range(rows, 5000, 5512)), 0);
    EXPECT_EQ(field(rows, 5100, "word"), "abcd");
    {
        std::string text = TemporaryDatabase::readFile(files.tablePath("many"));
        for (size_t at = 19; at < text.size(); at += record_size)
            text.replace(at, 4, "wxyz");
        files.writeFile("quakes.many", text);
    }
    usleep(150000); // the file is looked at every tenth of a second
    EXPECT_EQ(field(rows, 5100, "word"), "wxyz");
}

TEST_F(ReadAhead, LeavesFailuresToWhoAsks)
{
    const Dbptr rows = sorted();
    std::string text = TemporaryDatabase::readFile(files.tablePath("many"));
    const std::string good = record(rows, 7000);
    const auto bad = text.find(good + "\n") / record_size;
    text[bad * record_size + 3] = '\n';
    files.writeFile("quakes.many", text);
    makeOld();
    usleep(150000);
    EXPECT_EQ(dbread_ahead(dbrow_range(rows, 6900, 7100)), 0);
    EXPECT_EQ(take_log(), "");
    EXPECT_NE(record(rows, 6999), "");
    Dbptr at = rows;
    at.record = 7000;
    char room[64];
    // Rows with the same texts may have another order; one of them is the bad one.
    int failures = 0;
    for (at.record = 6900; at.record < 7100; ++at.record)
        failures += dbget(at, room, sizeof room) < 0 ? 1 : 0;
    EXPECT_EQ(failures, 1);
    EXPECT_THAT(take_log(), HasSubstr("has a line feed at byte"));

    watched.failing_reads[".many"] = EIO;
    EXPECT_EQ(dbread_ahead(dbrow_range(rows, 20000, 20512)), 0);
    EXPECT_EQ(take_log(), "");
    at.record = 20000;
    EXPECT_EQ(dbget(at, room, sizeof room), dbERROR_IO);
    EXPECT_THAT(take_log(), HasSubstr("Input/output error"));
    watched.failing_reads.clear();
    EXPECT_GT(dbget(at, room, sizeof room), 0);

    std::filesystem::resize_file(files.tablePath("many"), record_size * 10);
    EXPECT_EQ(dbread_ahead(dbrow_range(rows, 30000, 30512)), 0);
    at.record = 30000;
    EXPECT_LT(dbget(at, room, sizeof room), 0);
    EXPECT_NE(take_log(), "");
}

TEST_F(ReadAhead, RefusesWhatIsNoRow)
{
    EXPECT_EQ(dbread_ahead(open->table("many")), dbERROR_ARGUMENT); // of all rows
    EXPECT_THAT(take_log(), HasSubstr("dbread_ahead"));
    EXPECT_LT(dbread_ahead(dbinvalid()), 0);
    EXPECT_NE(take_log(), "");
}

} // namespace
