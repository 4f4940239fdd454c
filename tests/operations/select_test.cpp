// dbselect, dbselect_hdr, dbrow_range: rows as lines of text.
#include "db/watched_file_system.h"
#include "operations/large_tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

using testing::HasSubstr;

namespace {

// A stream into memory.
class Sink
{
public:
    Sink() : stream_(open_memstream(&text_, &size_)) {}
    ~Sink()
    {
        std::fclose(stream_);
        std::free(text_);
    }
    Sink(const Sink &) = delete;
    Sink &operator=(const Sink &) = delete;

    operator FILE *() const { return stream_; }
    std::string text() const
    {
        std::fflush(stream_);
        return {text_, size_};
    }

private:
    char *text_ = nullptr;
    size_t size_ = 0;
    FILE *stream_;
};

std::string selected(Dbptr db, const Tbl *fields, const char *separator, int flag)
{
    const Sink sink;
    const int code = dbselect(db, fields, sink, separator, flag);
    return code == 0 ? sink.text() : "(" + std::to_string(code) + ")";
}

std::string header(Dbptr db, const Tbl *fields, const char *separator, int flag)
{
    const Sink sink;
    const int code = dbselect_hdr(db, fields, sink, separator, flag);
    return code == 0 ? sink.text() : "(" + std::to_string(code) + ")";
}

Tbl *fieldsOf(Dbptr db)
{
    Tbl *fields = nullptr;
    dbquery(db, dbTABLE_FIELDS, &fields);
    return fields;
}

// What the records of a table are, one line each.
std::string records(Dbptr db)
{
    std::string lines;
    const int64_t count = integer(db, dbRECORD_COUNT);
    for (db.record = 0; db.record < count; ++db.record)
        lines += get(db) + "\n";
    return lines;
}

class Select : public testing::Test
{
protected:
    Select()
    {
        files.addTable("site",
                       {{"AAK", "2008001", "-1", "42.6390", "74.4940", "1.6450", "Ala-Archa, \"upper\""},
                        {"KIV", "2008001", "2010001", "43.9550", "42.6860", "-999.0000", "Kislovodsk"}});
        files.addTable("arrival", {{"KIV", "100.5", "1", "-1", "P"},
                                   {"AAK", "99.0", "2", "-1", "S"},
                                   {"KIV", "90.0", "3", "-1", "P"},
                                   {"XXX", "100.5", "4", "-1", "P"}});
        open = std::make_unique<Opened>(files.path());
    }

    Dbptr table(const char *name) const { return open->table(name); }
    Dbptr joined(int outer) const
    {
        return dbjoin(table("arrival"), table("site"), Names{"sta"}, Names{"sta"}, outer, nullptr, nullptr);
    }

    // The form of a file that changed lately is checked again before it is read.
    void makeOld(const char *name) const
    {
        const std::filesystem::path file(files.tablePath(name));
        std::filesystem::last_write_time(file,
                                         std::filesystem::last_write_time(file) - std::chrono::hours(1));
    }

    TemporaryDatabase files;
    std::unique_ptr<Opened> open;
};

TEST_F(Select, CopiesABaseTableByteForByte)
{
    const std::string file = TemporaryDatabase::readFile(files.tablePath("arrival"));
    Tbl *fields = fieldsOf(table("arrival"));
    EXPECT_EQ(selected(table("arrival"), fields, " ", 0), file);
    EXPECT_EQ(selected(table("arrival"), nullptr, " ", 0), file);
    freetbl(fields, free);
    EXPECT_EQ(take_log(), "");
}

TEST_F(Select, WritesFieldsInFullWidthAndAnySeparator)
{
    const Names fields{"arid", "sta"};
    EXPECT_EQ(selected(table("arrival"), fields, "|", 0),
              "       1|KIV   \n       2|AAK   \n       3|KIV   \n       4|XXX   \n");
    EXPECT_EQ(selected(table("arrival"), Names{"sta", "sta"}, "", 0),
              "KIV   KIV   \nAAK   AAK   \nKIV   KIV   \nXXX   XXX   \n");
}

TEST_F(Select, TrimsAndQuotesWhereNeeded)
{
    EXPECT_EQ(selected(table("site"), Names{"sta", "elev", "staname"}, ",", 1),
              "AAK,1.6450,\"Ala-Archa, \"\"upper\"\"\"\nKIV,-999.0000,Kislovodsk\n");
    // A comma is nothing special between tabs; the quotes are.
    EXPECT_EQ(selected(table("site"), Names{"staname", "sta"}, "\t", 1),
              "\"Ala-Archa, \"\"upper\"\"\"\tAAK\nKislovodsk\tKIV\n");
    // Of a separator of several characters each one counts.
    EXPECT_EQ(selected(table("site"), Names{"staname", "sta"}, "-;", 1),
              "\"Ala-Archa, \"\"upper\"\"\"-;AAK\nKislovodsk-;KIV\n");
}

TEST_F(Select, QuotesEndsOfLinesAndAnEmptyTextThatIsAlone)
{
    // A line feed can't be in a record that is whole.
    files.addTable("event", {{"1", "-1", "a\rb"}, {"2", "-1", ""}});
    EXPECT_EQ(selected(table("event"), Names{"auth"}, ",", 1), "\"a\rb\"\n\"\"\n");
    EXPECT_EQ(selected(table("event"), Names{"evid", "auth"}, ",", 1), "1,\"a\rb\"\n2,\n");
}

TEST_F(Select, WritesNamesInTheSameForm)
{
    EXPECT_EQ(header(table("arrival"), Names{"arid", "sta", "time"}, " ", 0),
              "    arid sta                 time\n");
    EXPECT_EQ(header(table("arrival"), Names{"arid", "sta", "time"}, ",", 1), "arid,sta,time\n");
    EXPECT_EQ(header(table("kinds"), Names{"flag", "sta"}, " ", 0), "flag sta   \n"); // wider than the field
}

TEST_F(Select, WritesAllFieldsOfAView)
{
    const Dbptr view = joined(0);
    Tbl *fields = fieldsOf(view); // sta and lddate are in it twice
    EXPECT_EQ(selected(view, fields, " ", 0), records(view));
    EXPECT_THAT(selected(view, fields, ",", 1),
                HasSubstr("KIV,90.0,3,-1,P,-,-1,-9999999999.99900,KIV,2008001,"));
    EXPECT_EQ(header(view, fields, ",", 1), "sta,time,arid,jdate,phase,auth,commid,lddate,site.sta,ondate,"
                                            "offdate,lat,lon,elev,staname,site.lddate\n");
    EXPECT_EQ(header(view, Names{"site.sta", "sta"}, ",", 1), "site.sta,sta\n");
    freetbl(fields, free);
}

TEST_F(Select, WritesTheNullRecordBesideRowsWithoutAMatch)
{
    EXPECT_EQ(selected(joined(1), Names{"arid", "site.sta", "lat"}, ",", 1),
              "1,KIV,43.9550\n2,AAK,42.6390\n3,KIV,43.9550\n4,-,-999.0000\n");
    EXPECT_EQ(selected(joined(1), nullptr, " ", 0), records(joined(1)));
}

TEST_F(Select, WritesRowsInTheOrderOfTheView)
{
    const Dbptr view = dbsort(table("arrival"), Names{"time", "sta"}, dbSORT_REVERSE, nullptr);
    EXPECT_EQ(selected(view, Names{"arid"}, ",", 1), "4\n1\n2\n3\n");
    EXPECT_EQ(selected(view, nullptr, " ", 0), records(view));
}

TEST_F(Select, WritesBundlesAndTheirRows)
{
    const Dbptr groups = dbgroup(table("arrival"), Names{"phase"}, "phases", 1);
    EXPECT_EQ(selected(groups, nullptr, ",", 1), "P,0-3\nS,3-4\n");
    EXPECT_EQ(selected(groups, nullptr, " ", 0), records(groups));
    const Dbptr sorted = dbsort(groups, Names{"phase"}, dbSORT_REVERSE, nullptr);
    EXPECT_EQ(selected(sorted, Names{"bundle", "phase"}, ",", 1), "3-4,S\n0-3,P\n");
    Dbptr at = dblookup(groups, "", "", "bundle", "0");
    DbValue value{};
    ASSERT_EQ(dbgetv(at, nullptr, &value), 0);
    EXPECT_EQ(selected(value.dbptr, Names{"arid"}, ",", 1), "1\n3\n4\n");
}

TEST_F(Select, WritesTheRecordsThatAPointerStandsFor)
{
    Dbptr at = table("arrival");
    at.record = 2;
    EXPECT_EQ(selected(at, Names{"arid"}, ",", 1), "3\n");
    at = dbrow_range(table("arrival"), 1, 3);
    int64_t first = 0, end = 0;
    EXPECT_EQ(dbget_range(at, &first, &end), 0);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(end, 3);
    EXPECT_EQ(selected(at, Names{"arid"}, ",", 1), "2\n3\n");
    EXPECT_EQ(selected(dbrow_range(table("arrival"), 0, 1), Names{"arid"}, ",", 1), "1\n");
    EXPECT_EQ(take_log(), "");
    EXPECT_EQ(selected(dbrow_range(table("arrival"), 1, 5), nullptr, ",", 1),
              "(" + std::to_string(dbERROR_NOT_FOUND) + ")");
    EXPECT_EQ(take_log(), "dbselect: there are no records 1 to 4 in table arrival, which has 4");
    at = table("arrival");
    at.record = dbNULL;
    EXPECT_EQ(selected(at, nullptr, ",", 1), "(" + std::to_string(dbERROR_ARGUMENT) + ")");
}

TEST_F(Select, RefusesRangesThatAreNone)
{
    EXPECT_EQ(dbrow_range(table("arrival"), 2, 2).table, dbINVALID);
    EXPECT_EQ(take_log(), "dbrow_range: 2 to 2 is no range: the end lies behind the first row");
    EXPECT_EQ(dbrow_range(table("arrival"), -1, 2).table, dbINVALID);
    EXPECT_EQ(dbrow_range(open->pointer, 0, 2).table, dbINVALID);
    EXPECT_EQ(dbrow_range(dbinvalid(), 0, 2).table, dbINVALID);
}

TEST_F(Select, OfATableWithoutRecordsWritesNothing)
{
    EXPECT_EQ(selected(table("assoc"), nullptr, ",", 1), "");
    EXPECT_EQ(take_log(), "");
    files.writeFile("quakes.assoc", "not a record\n");
    EXPECT_EQ(selected(table("assoc"), nullptr, ",", 1), "");
    EXPECT_THAT(take_log(), HasSubstr("a record is 12 bytes wide where table assoc"));
}

TEST_F(Select, SaysWhatIsWrongWithItsArguments)
{
    struct Case {
        const char *separator;
        int flag;
        const char *reason;
    };
    const Case cases[] = {
        {nullptr, 0, "dbselect: the separator is null"},
        {",", 2, "dbselect: the flag is 2 where 0 or 1 is expected"},
        {"", 1, "dbselect: the separator is empty where trimmed fields have to be told apart"},
        {"a\"", 1, "dbselect: the separator holds a quote or an end of line"},
        {"\n", 1, "dbselect: the separator holds a quote or an end of line"},
    };
    for (const Case &wrong : cases) {
        EXPECT_EQ(selected(table("site"), nullptr, wrong.separator, wrong.flag),
                  "(" + std::to_string(dbERROR_ARGUMENT) + ")");
        EXPECT_THAT(take_log(), HasSubstr(wrong.reason));
    }
    EXPECT_EQ(selected(table("site"), Names{"sta", "latt"}, ",", 1),
              "(" + std::to_string(dbERROR_NOT_FOUND) + ")");
    EXPECT_EQ(take_log(), "dbselect: no field 'latt' in table site; near it: lat");
    EXPECT_EQ(selected(table("site"), Names{std::vector<std::string>()}, ",", 1),
              "(" + std::to_string(dbERROR_ARGUMENT) + ")");
    EXPECT_EQ(selected(dbinvalid(), nullptr, ",", 1), "(" + std::to_string(dbERROR_STALE) + ")");
    EXPECT_EQ(header(open->pointer, nullptr, ",", 1), "(" + std::to_string(dbERROR_ARGUMENT) + ")");
}

TEST_F(Select, WithoutAStreamSaysWhyThereIsNone)
{
    take_log();
    FILE *none = std::fopen("/no/such/folder/file", "w");
    EXPECT_EQ(dbselect_hdr(table("site"), nullptr, none, ",", 1), dbERROR_ARGUMENT);
    EXPECT_EQ(take_log(), "dbselect_hdr: there is no stream to write to: No such file or directory");
    EXPECT_EQ(dbselect(table("site"), nullptr, none, ",", 1), dbERROR_ARGUMENT);
    EXPECT_EQ(take_log(), "dbselect: there is no stream to write to: No such file or directory");
    errno = 0;
    EXPECT_EQ(dbselect(table("site"), nullptr, nullptr, ",", 1), dbERROR_ARGUMENT);
    EXPECT_EQ(take_log(), "dbselect: there is no stream to write to");
}

TEST_F(Select, SaysWhyAStreamCannotBeWritten)
{
    FILE *full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    EXPECT_EQ(dbselect_hdr(table("site"), nullptr, full, ",", 1), dbERROR_IO);
    EXPECT_EQ(take_log(), "dbselect_hdr: output: cannot write: No space left on device");
    EXPECT_EQ(dbselect(table("site"), nullptr, full, ",", 1), dbERROR_IO);
    EXPECT_EQ(take_log(), "dbselect: output: cannot write: No space left on device");
    std::fclose(full);
    FILE *reading = std::fopen(files.path().c_str(), "r");
    EXPECT_EQ(dbselect(table("site"), nullptr, reading, " ", 0), dbERROR_IO);
    EXPECT_EQ(take_log(), "dbselect: output: cannot write: Bad file descriptor");
    std::fclose(reading);
}

TEST_F(Select, ReadsATableAnewThatChangesWhileItIsOpened)
{
    WatchedFileSystem watched;
    const orvane::ScopedFileSystem use(watched);
    Opened other(files.path());
    bool grown = false;
    watched.before_open = [&](const std::string &path) {
        if (!grown && path.ends_with(".site")) {
            grown = true;
            files.appendRows("site", {{"TIXI", "2008001"}});
        }
    };
    const std::string text = selected(other.table("site"), Names{"sta"}, ",", 1);
    EXPECT_EQ(text, "AAK\nKIV\nTIXI\n");
    EXPECT_TRUE(grown);
    EXPECT_EQ(take_log(), "");
}

TEST_F(Select, OfATableThatIsCutShortMeanwhileFails)
{
    WatchedFileSystem watched;
    const orvane::ScopedFileSystem use(watched);
    makeOld("arrival");
    Opened other(files.path());
    EXPECT_EQ(integer(other.table("arrival"), dbRECORD_COUNT), 4);
    watched.before_read = [&](const std::string &path) {
        if (path.ends_with(".arrival"))
            std::filesystem::resize_file(path, 10);
    };
    EXPECT_EQ(selected(other.table("arrival"), nullptr, ",", 1),
              "(" + std::to_string(dbERROR_NOT_FOUND) + ")");
    EXPECT_THAT(take_log(), HasSubstr("quakes.arrival: became shorter while it was read"));
    watched.before_read = nullptr;
    // A view of records that are gone isn't begun.
    const Dbptr view = dbsubset(other.table("site"), "lat > 43", nullptr);
    files.addTable("site", {});
    EXPECT_NE(selected(view, nullptr, ",", 1), "");
    EXPECT_THAT(take_log(), HasSubstr("free the view and make it again"));
}

TEST_F(Select, OfAFileThatCannotBeReadSaysWhy)
{
    WatchedFileSystem watched;
    const orvane::ScopedFileSystem use(watched);
    makeOld("arrival");
    Opened other(files.path());
    EXPECT_EQ(integer(other.table("arrival"), dbRECORD_COUNT), 4);
    watched.failing_reads[".arrival"] = EIO;
    EXPECT_EQ(selected(other.table("arrival"), nullptr, ",", 1), "(" + std::to_string(dbERROR_IO) + ")");
    EXPECT_THAT(take_log(), HasSubstr("Input/output error"));
}

// ---- Many rows -----------------------------------------------------------------------------------

class SelectMany : public testing::Test
{
protected:
    SelectMany()
    {
        writeNarrowTable(files, "many", narrowRows(300000, 5000, 1));
        writeNarrowTable(files, "more", narrowRows(20000, 5000, 2));
        open = std::make_unique<Opened>(files.path());
    }
    ~SelectMany() override { dbset_progress_hook(nullptr, nullptr); }

    TemporaryDatabase files{"narrow", narrowSchemaText()};
    std::unique_ptr<Opened> open;
};

TEST_F(SelectMany, AreWhatTheRecordsAre)
{
    EXPECT_TRUE(selected(open->table("many"), nullptr, " ", 0) ==
                TemporaryDatabase::readFile(files.tablePath("many")));
    const Dbptr some = dbsubset(open->table("many"), "id % 7 == 3 && word != 'b'", nullptr);
    EXPECT_TRUE(selected(some, nullptr, " ", 0) == records(some));
    const Dbptr sorted = dbsort(open->table("many"), Names{"word", "value"}, dbSORT_REVERSE, nullptr);
    EXPECT_TRUE(selected(sorted, nullptr, " ", 0) == records(sorted));
    const Dbptr joined = dbtheta(open->table("many"), open->table("more"), "id == other", nullptr);
    ASSERT_GT(integer(joined, dbRECORD_COUNT), 1000000);
    const Dbptr part = dbrow_range(joined, 400001, 700000);
    std::string lines;
    Dbptr at = joined;
    for (at.record = 400001; at.record < 700000; ++at.record)
        lines += get(at) + "\n";
    EXPECT_TRUE(selected(part, nullptr, " ", 0) == lines);
    EXPECT_EQ(take_log(), "");
}

TEST_F(SelectMany, TellHowFarTheyAreAndCanBeCancelled)
{
    struct Watcher {
        int calls = 0;
        double last = 0;
        std::string operation;
        static int hook(double fraction, void *data)
        {
            auto &watcher = *static_cast<Watcher *>(data);
            EXPECT_GE(fraction, watcher.last);
            watcher.last = fraction;
            watcher.operation = dbprogress_operation();
            return ++watcher.calls >= 3 ? 1 : 0;
        }
    } watcher;
    const Dbptr joined = dbtheta(open->table("many"), open->table("more"), "id == other", nullptr);
    dbset_progress_hook(&Watcher::hook, &watcher);
    // A reader that is slow, so that the hook is called also on a fast machine.
    cookie_io_functions_t slow{};
    slow.write = [](void *, const char *, size_t size) -> ssize_t {
        usleep(20000);
        return static_cast<ssize_t>(size);
    };
    FILE *stream = fopencookie(nullptr, "w", slow);
    EXPECT_EQ(dbselect(joined, nullptr, stream, ",", 1), dbERROR_CANCELLED);
    std::fclose(stream);
    EXPECT_EQ(take_log(), "dbselect: cancelled");
    EXPECT_EQ(watcher.calls, 3);
    EXPECT_EQ(watcher.operation, "dbselect");
    EXPECT_GT(watcher.last, 0);
    EXPECT_LE(watcher.last, 1);
    dbset_progress_hook(nullptr, nullptr); // else a subset that takes long is cancelled, too
    EXPECT_GE(dbsubset(open->table("many"), "id == 7", nullptr).table, 0);
}

} // namespace
