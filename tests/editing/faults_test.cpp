// Every call that a change makes of the file system fails once, in turn; and the program is killed in every
// one.
#include "edited.h"
#include "faulty_file_system.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <functional>

using namespace orvane;

namespace {

constexpr int records = 100;
// Its fields lie on both sides of the end of a page.
constexpr int64_t on_two_pages = 78;

struct Action {
    const char *name;
    bool has_file;
    const char *tail; // an unfinished last line
    std::function<int64_t(const Opened &, const TemporaryDatabase &)> act;
};

// Values that the fields had not had before, so that every byte may change.
int64_t change(const Opened &opened, int64_t number)
{
    return put(opened.record("event", number), "auth", "another author");
}

const Action actions[] = {
    {"put", true, "", [](const Opened &opened, const auto &) { return change(opened, 3); }},
    {"put_on_two_pages", true, "",
     [](const Opened &opened, const auto &) { return change(opened, on_two_pages); }},
    {"mark", true, "",
     [](const Opened &opened, const auto &) -> int64_t { return dbmark(opened.record("event", 5)); }},
    {"mark_on_two_pages", true, "",
     [](const Opened &opened, const auto &) -> int64_t {
         return dbmark(opened.record("event", on_two_pages));
     }},
    {"put_rows", true, "",
     [](const Opened &opened, const auto &) -> int64_t {
         const std::string author = "another author";
         const DbValue value = text_value(author);
         const DbRows rows[] = {{3, 60}, {70, 90}};
         return dbputv_rows(opened.table("event"), "auth", &value, rows, 2, nullptr);
     }},
    {"mark_rows", true, "",
     [](const Opened &opened, const auto &) -> int64_t {
         const DbRows rows[] = {{3, 60}, {70, 90}};
         return dbmark_rows(opened.table("event"), rows, 2, nullptr);
     }},
    {"add", true, "",
     [](const Opened &opened, const TemporaryDatabase &files) {
         return dbadd(opened.table("event"), files.record("event", {"900", "1", "new"}).c_str());
     }},
    {"add_behind_an_unfinished_line", true, "     901       ",
     [](const Opened &opened, const TemporaryDatabase &files) {
         return dbadd(opened.table("event"), files.record("event", {"900", "1", "new"}).c_str());
     }},
    {"add_to_no_file", false, "",
     [](const Opened &opened, const TemporaryDatabase &files) {
         return dbadd(opened.table("event"), files.record("event", {"900", "1", "new"}).c_str());
     }},
    {"add_checked", true, "",
     [](const Opened &opened, const TemporaryDatabase &files) {
         return dbaddchk(opened.table("event"), files.record("event", {"900", "1", "new"}).c_str());
     }},
    {"crunch", true, "",
     [](const Opened &opened, const auto &) -> int64_t { return dbcrunch(opened.table("event")); }},
};

struct Mode {
    const char *name;
    FaultyFileSystem::Fault fault;
    int error;
};
const Mode modes[] = {
    {"error", FaultyFileSystem::Fault::Error, EIO},
    {"forbidden", FaultyFileSystem::Fault::Error, EACCES},
    {"disk_full", FaultyFileSystem::Fault::Error, ENOSPC},
    {"short_write", FaultyFileSystem::Fault::Short, ENOSPC},
    {"killed_before", FaultyFileSystem::Fault::KilledHere, EIO},
    {"killed_within", FaultyFileSystem::Fault::KilledIn, EIO},
};

bool kills(const Mode &mode)
{
    return mode.fault == FaultyFileSystem::Fault::KilledHere ||
           mode.fault == FaultyFileSystem::Fault::KilledIn;
}

class Faults : public testing::TestWithParam<std::tuple<Action, Mode, const char *>>
{
protected:
    // A lock that is left would be waited for for ever.
    Faults()
    {
        // Thousands of small databases: in memory, where the machine has such a folder.
        if (std::filesystem::is_directory("/dev/shm"))
            setenv("TMPDIR", "/dev/shm", 1);
        elog_set_notice_hook([](const char *, void *) {}, nullptr);
        start_ = std_now();
        dbset_progress_hook(
            [](double, void *start) { return std_now() - *static_cast<double *>(start) > 3 ? 1 : 0; },
            &start_);
    }
    ~Faults() override
    {
        dbset_progress_hook(nullptr, nullptr);
        elog_set_notice_hook(nullptr, nullptr);
    }

    double start_ = 0;

    // A record with its timestamp, which lies on both sides of the end of a page in one of them, in words.
    static std::string shown(const std::string &record)
    {
        const std::string stamp = trim(record.substr(record.size() - 17));
        char *end = nullptr;
        const bool now = std::strtod(stamp.c_str(), &end) > 1.6e9 && *end == '\0' && stamp.size() == 16;
        return record.substr(0, record.size() - 17) + (now ? "now" : stamp);
    }

    static int hidden_files(const TemporaryDatabase &files)
    {
        int found = 0;
        for (const auto &entry : std::filesystem::directory_iterator(files.folder()))
            found += entry.path().filename().string()[0] == '.' ? 1 : 0;
        return found;
    }

    // The table as any program would find it, or why it can't.
    static Texts contents(const std::string &path)
    {
        Opened reader(path, "r");
        Texts found;
        const int64_t count = integer(reader.table("event"), dbRECORD_COUNT);
        for (int64_t number = 0; number < count; ++number)
            found.push_back(shown(get(reader.record("event", number))));
        if (const std::string log = take_log(); !log.empty())
            found.push_back(log);
        return found;
    }

    static void prepare(const TemporaryDatabase &files, const Action &action, const char *durability)
    {
        files.writeFile("quakes", std::string("schema: small\ndurability: ") + durability + "\n");
        if (!action.has_file)
            return;
        std::vector<TemporaryDatabase::Row> rows;
        for (int i = 0; i < records; ++i)
            rows.push_back(i % 10 == 9
                               ? TemporaryDatabase::Row{}
                               : TemporaryDatabase::Row{std::to_string(i + 1), "7", "an author", "3.00000"});
        files.addTable("event", rows);
        files.writeFile("quakes.event", TemporaryDatabase::readFile(files.tablePath("event")) + action.tail);
    }

    static Texts after(const Action &action, const char *durability)
    {
        TemporaryDatabase files;
        prepare(files, action, durability);
        {
            Opened opened(files.path(), "r+");
            EXPECT_GE(action.act(opened, files), 0) << take_log();
        }
        return contents(files.path());
    }
};

} // namespace

TEST_P(Faults, leave_the_table_as_before_or_as_after)
{
    const auto &[action, mode, durability] = GetParam();
    const Texts expected = after(action, durability);
    int strikes = 0;
    for (int call = 1;; ++call) {
        TemporaryDatabase files;
        prepare(files, action, durability);
        const Texts before = contents(files.path());
        FaultyFileSystem faulty;
        const ScopedFileSystem scoped(faulty);
        Opened opened(files.path(), "r+");
        if (action.has_file) { // some of it was read and decoded already
            get(opened.record("event", on_two_pages));
            dbfree(dbsort(opened.table("event"), nullptr, 0, nullptr));
            take_log();
        }
        faulty.fail_at(call, mode.fault, mode.error);
        const int64_t code = action.act(opened, files);
        const std::string log = take_log();
        const bool struck = faulty.struck();
        const std::string where = std::to_string(call) + ": " + faulty.where();
        faulty.fail_at(0, mode.fault);
        if (kills(mode))
            OVdbclose(opened.pointer); // what the system does with a dead program's files
        {
            PosixFileSystem system;
            const ScopedFileSystem real(system);
            const Texts found = contents(files.path());
            if (code >= 0)
                ASSERT_EQ(found, expected) << where;
            else
                ASSERT_TRUE(found == before || found == expected) << where << "\n"
                                                                  << log << testing::PrintToString(found);
            if (code < 0) {
                ASSERT_NE(log.find(std::strerror(mode.error)), std::string::npos) << where << "\n" << log;
                ASSERT_NE(log.find("quakes.event"), std::string::npos) << where << "\n" << log;
            }
            // The next program works.
            Opened next(files.path(), "r+");
            ASSERT_EQ(dbadd(next.table("event"), files.record("event", {"77"}).c_str()),
                      static_cast<int64_t>(found.size()))
                << where << take_log();
            if (hidden_files(files) > 0) { // whoever crunches next needs them no more
                ASSERT_EQ(dbmark(next.record("event", 0)), 0) << where << take_log();
                ASSERT_EQ(dbcrunch(next.table("event")), 0) << where << take_log();
                ASSERT_EQ(hidden_files(files), 0) << where;
            }
        }
        // So does this one, when it lives, and shows what there is.
        if (!kills(mode)) {
            Texts shown_here;
            for (int64_t number = 0; number < integer(opened.table("event"), dbRECORD_COUNT); ++number)
                shown_here.push_back(shown(get(opened.record("event", number))));
            PosixFileSystem system;
            const ScopedFileSystem real(system);
            ASSERT_EQ(shown_here, contents(files.path())) << where;
        }
        if (!struck)
            break;
        ++strikes;
    }
    EXPECT_GT(strikes, 3);
}

namespace {

// Forcing takes its time; what it adds shows in some of the actions.
std::vector<std::tuple<Action, Mode, const char *>> all_cases()
{
    std::vector<std::tuple<Action, Mode, const char *>> cases;
    for (const Action &action : actions)
        for (const Mode &mode : modes) {
            cases.emplace_back(action, mode, "process");
            const std::string name = action.name;
            if (name == "put_on_two_pages" || name == "put_rows" || name == "add_to_no_file" ||
                name == "crunch")
                cases.emplace_back(action, mode, "disk");
        }
    return cases;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(EveryCall, Faults, testing::ValuesIn(all_cases()), [](const auto &each) {
    return std::string(std::get<0>(each.param).name) + "_" + std::get<1>(each.param).name + "_" +
           std::get<2>(each.param);
});
