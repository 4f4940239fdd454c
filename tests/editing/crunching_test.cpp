// dbmark, dbcrunch, and the views that follow.
#include "edited.h"
#include "operations/derived.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class Crunching : public testing::Test
{
protected:
    Crunching()
    {
        files_.addTable("event", {{"1", "10"}, {"2", "20"}, {"3", "10"}, {"4", "20"}, {"5", "10"}});
        files_.addTable("origin", {{"1.0", "2.0", "3.0", "4.0", "10"}, {"1.0", "2.0", "3.0", "5.0", "20"}});
    }
    void mark(int64_t number) { ASSERT_EQ(dbmark(opened_.record("event", number)), 0) << take_log(); }
    void crunch() { ASSERT_EQ(dbcrunch(opened_.table("event")), 0) << take_log(); }

    TemporaryDatabase files_;
    Opened opened_{files_.path(), "r+"};
};

} // namespace

TEST_F(Crunching, marks_records_by_nulls_and_removes_them)
{
    mark(1);
    mark(4);
    mark(4);
    EXPECT_EQ(integer(opened_.table("event"), dbRECORD_COUNT), 5);
    EXPECT_EQ(get(opened_.record("event", 1)), get(opened_.record("event", dbNULL)));
    crunch();
    EXPECT_EQ(column_of(opened_.table("event"), "evid"), (Texts{"1", "3", "4"}));
    EXPECT_EQ(take_log(), "");
    const auto inode = [&] {
        struct stat info;
        return ::stat(files_.tablePath("event").c_str(), &info) == 0 ? info.st_ino : 0;
    };
    const auto before = inode();
    crunch(); // nothing to do
    EXPECT_EQ(inode(), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(files_.folder()), {}),
              4); // nothing is left over
}

TEST_F(Crunching, ends_a_last_line_that_wants_nothing_but_its_end)
{
    mark(1);
    const std::string whole = TemporaryDatabase::readFile(files_.tablePath("event"));
    files_.writeFile("quakes.event", whole + files_.record("event", {"6"}));
    crunch();
    EXPECT_EQ(column_of(opened_.table("event"), "evid"), (Texts{"1", "3", "4", "5", "6"}));
    files_.writeFile("quakes.event", whole + files_.record("event", {})); // nothing but nulls
    crunch();
    EXPECT_EQ(column_of(opened_.table("event"), "evid"), (Texts{"1", "3", "4", "5"}));
}

TEST_F(Crunching, leaves_a_file_that_it_refuses_as_it_is)
{
    mark(1);
    std::string text = TemporaryDatabase::readFile(files_.tablePath("event"));
    text[text.size() / 2] = '\n'; // within a record
    for (const std::string &tail : {std::string("unfinished"), files_.record("event", {"6"})}) {
        files_.writeFile("quakes.event", text + tail);
        EXPECT_EQ(dbcrunch(opened_.table("event")), dbERROR_FORMAT);
        EXPECT_NE(take_log().find("record 2 has a line feed out of its place"), std::string::npos);
        EXPECT_EQ(TemporaryDatabase::readFile(files_.tablePath("event")), text + tail);
    }
}

TEST_F(Crunching, may_leave_nothing)
{
    for (int64_t number = 0; number < 5; ++number)
        mark(number);
    crunch();
    EXPECT_EQ(integer(opened_.table("event"), dbRECORD_COUNT), 0);
    EXPECT_EQ(integer(opened_.table("event"), dbTABLE_PRESENT), 1);
    EXPECT_EQ(dbadd(opened_.table("event"), files_.record("event", {"9"}).c_str()), 0);
}

TEST_F(Crunching, of_a_table_without_a_file_is_nothing)
{
    EXPECT_EQ(dbcrunch(opened_.table("arrival")), 0);
    EXPECT_FALSE(std::filesystem::exists(files_.tablePath("arrival")));
    EXPECT_EQ(dbmark(opened_.record("arrival", 0)), dbERROR_NOT_FOUND);
    take_log();
}

TEST_F(Crunching, keeps_permissions_and_links)
{
    const std::string path = files_.tablePath("event");
    const std::string real = files_.folder() + "/elsewhere";
    std::filesystem::rename(path, real);
    std::filesystem::create_symlink(real, path);
    ::chmod(real.c_str(), 0640);
    mark(0);
    crunch();
    EXPECT_TRUE(std::filesystem::is_symlink(path));
    struct stat info;
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    EXPECT_EQ(column_of(opened_.table("event"), "evid"), (Texts{"2", "3", "4", "5"}));
}

TEST_F(Crunching, does_not_take_other_nulls_for_marks)
{
    // A record whose values were taken out one by one has a timestamp still.
    EXPECT_EQ(put(opened_.record("event", 0), "prefor", "-1"), 0);
    EXPECT_EQ(put(opened_.record("event", 0), "evid", "-1"), 0);
    crunch();
    EXPECT_EQ(integer(opened_.table("event"), dbRECORD_COUNT), 5);
    // A marked one that gets a value is marked no longer.
    mark(1);
    EXPECT_EQ(put(opened_.record("event", 1), "evid", "22"), 0);
    crunch();
    EXPECT_EQ(column_of(opened_.table("event"), "evid"), (Texts{"-1", "22", "3", "4", "5"}));
}

TEST_F(Crunching, takes_the_rows_of_views_along)
{
    const Dbptr sorted = dbsort(opened_.table("event"), Names{"evid"}, dbSORT_REVERSE, nullptr);
    const Dbptr subset = dbsubset(opened_.table("event"), "prefor == 20", nullptr);
    const Dbptr joined = dbjoin(opened_.table("event"), opened_.table("origin"), Names{"prefor"},
                                Names{"orid"}, 0, nullptr, nullptr);
    const Dbptr grouped =
        dbgroup(dbsort(opened_.table("event"), Names{"prefor"}, 0, nullptr), Names{"prefor"}, nullptr, 1);
    const Dbptr kept = dbungroup(grouped, nullptr);
    mark(1);
    mark(2);
    EXPECT_EQ(integer(sorted, dbRECORD_COUNT), 5);
    crunch();
    EXPECT_EQ(column_of(sorted, "evid"), (Texts{"5", "4", "1"}));
    EXPECT_EQ(column_of(subset, "evid"), (Texts{"4"}));
    EXPECT_EQ(column_of(joined, "evid"), (Texts{"1", "4", "5"}));
    EXPECT_EQ(column_of(joined, "orid"), (Texts{"10", "20", "10"}));
    EXPECT_EQ(column_of(kept, "evid"), (Texts{"1", "5", "4"}));
    EXPECT_EQ(bundle(grouped, 0), "0-2");
    EXPECT_EQ(bundle(grouped, 1), "2-3");
    mark(1);
    crunch();
    EXPECT_EQ(integer(grouped, dbRECORD_COUNT), 1);
    EXPECT_EQ(bundle(grouped, 0), "0-2");
    EXPECT_EQ(integer(subset, dbRECORD_COUNT), 0);
    EXPECT_EQ(take_log(), "");
}

TEST_F(Crunching, writes_through_views)
{
    const Dbptr joined = dbjoin(opened_.table("event"), opened_.table("origin"), Names{"prefor"},
                                Names{"orid"}, 1, nullptr, nullptr);
    EXPECT_EQ(integer(joined, dbTABLE_IS_WRITABLE), 1);
    Dbptr row = joined;
    row.record = 2;
    EXPECT_EQ(put(row, "event.auth", "me"), 0);
    EXPECT_EQ(put(row, "origin.auth", "you"), 0);
    EXPECT_EQ(put(row, "auth", "him"), 0); // the first member's
    EXPECT_EQ(column_of(opened_.table("event"), "auth"), (Texts{"-", "-", "him", "-", "-"}));
    EXPECT_EQ(column_of(opened_.table("origin"), "auth"), (Texts{"you", "-"}));
    EXPECT_EQ(put(opened_.record("event", 0), "prefor", "99"), 0);
    const Dbptr outer = dbjoin(opened_.table("event"), opened_.table("origin"), Names{"prefor"},
                               Names{"orid"}, 1, nullptr, nullptr);
    row = outer;
    row.record = 0;
    EXPECT_EQ(put(row, "origin.auth", "nobody"), dbERROR_ARGUMENT);
    EXPECT_NE(take_log().find("row 0 has no record of table origin"), std::string::npos);
    const Dbptr grouped = dbgroup(opened_.table("event"), Names{"prefor"}, nullptr, 1);
    row = grouped;
    row.record = 0;
    EXPECT_EQ(put(row, "prefor", "1"), dbERROR_ARGUMENT);
    EXPECT_EQ(dbmark(row), dbERROR_ARGUMENT);
    EXPECT_EQ(dbcrunch(grouped), dbERROR_ARGUMENT);
    EXPECT_EQ(integer(grouped, dbTABLE_IS_WRITABLE), 0);
    row = joined;
    row.record = dbSCRATCH;
    EXPECT_EQ(put(row, "prefor", "1"), dbERROR_ARGUMENT);
    row.record = 77;
    EXPECT_EQ(put(row, "prefor", "1"), dbERROR_NOT_FOUND);
    EXPECT_EQ(dbmark(row), dbERROR_NOT_FOUND);
    take_log();
}

TEST_F(Crunching, flags_rows_of_views_and_removes_those_alone)
{
    const Dbptr sorted = dbsort(opened_.table("event"), Names{"prefor"}, 0, nullptr);
    const Dbptr grouped = dbgroup(sorted, Names{"prefor"}, nullptr, 1);
    Dbptr row = sorted;
    for (const int64_t number : {1, 3}) {
        row.record = number;
        ASSERT_EQ(dbmark(row), 0);
    }
    EXPECT_EQ(column_of(sorted, "evid"), (Texts{"1", "3", "5", "2", "4"}));
    ASSERT_EQ(dbcrunch(sorted), 0);
    EXPECT_EQ(column_of(sorted, "evid"), (Texts{"1", "5", "4"}));
    EXPECT_EQ(bundle(grouped, 0), "0-2");
    EXPECT_EQ(bundle(grouped, 1), "2-3");
    ASSERT_EQ(dbcrunch(sorted), 0);
    EXPECT_EQ(integer(sorted, dbRECORD_COUNT), 3);
    EXPECT_EQ(integer(opened_.table("event"), dbRECORD_COUNT), 5);
    // Flags follow their rows.
    row.record = 2;
    ASSERT_EQ(dbmark(row), 0);
    mark(0);
    crunch();
    EXPECT_EQ(column_of(sorted, "evid"), (Texts{"5", "4"}));
    ASSERT_EQ(dbcrunch(sorted), 0);
    EXPECT_EQ(column_of(sorted, "evid"), (Texts{"5"}));
}

TEST_F(Crunching, by_another_program_ends_what_is_known_by_number)
{
    const Dbptr sorted = dbsort(opened_.table("event"), Names{"evid"}, dbSORT_REVERSE, nullptr);
    Dbptr row = sorted;
    row.record = 0;
    ASSERT_EQ(column_of(opened_.table("event"), "evid").size(), 5u);
    Opened other(files_.path(), "r+");
    ASSERT_EQ(dbmark(other.record("event", 0)), 0);
    ASSERT_EQ(dbcrunch(other.table("event")), 0);
    EXPECT_EQ(put(opened_.record("event", 1), "auth", "me"), dbERROR_STALE);
    EXPECT_NE(take_log().find("look at the table again"), std::string::npos);
    EXPECT_EQ(put(row, "auth", "me"), dbERROR_STALE);
    EXPECT_EQ(column_of(opened_.table("event"), "auth"), (Texts{"-", "-", "-", "-"}));
    // It was looked at again.
    EXPECT_EQ(put(opened_.record("event", 1), "auth", "me"), 0);
    EXPECT_EQ(put(row, "auth", "me"), dbERROR_STALE);
    // Our own crunch doesn't bring the view back to life.
    take_log();
    mark(2);
    crunch();
    EXPECT_LT(dbget(row, nullptr, 0), 0);
    EXPECT_EQ(get(row), "(" + std::to_string(dbERROR_STALE) + ")");
    take_log();
}

TEST_F(Crunching, asks_the_hook_and_leaves_the_table_when_it_is_cancelled)
{
    // Enough to take longer than the hook's tenth of a second.
    std::string lines;
    for (int i = 0; i < 1000; ++i)
        lines += files_.record("event", {std::to_string(i + 1)}) + "\n";
    std::string all;
    for (int i = 0; i < 3000; ++i)
        all += lines;
    files_.writeFile("quakes.event", all);
    mark(7);
    const std::string before = TemporaryDatabase::readFile(files_.tablePath("event"));
    int asked = 0;
    dbset_progress_hook(
        [](double, void *data) {
            ++*static_cast<int *>(data);
            return 1;
        },
        &asked);
    const int code = dbcrunch(opened_.table("event"));
    dbset_progress_hook(nullptr, nullptr);
    ASSERT_EQ(asked, 1);
    EXPECT_EQ(code, dbERROR_CANCELLED);
    EXPECT_NE(take_log().find("cancelled"), std::string::npos);
    EXPECT_TRUE(TemporaryDatabase::readFile(files_.tablePath("event")) == before); // too long to be shown
    EXPECT_FALSE(std::filesystem::exists(files_.folder() + "/.quakes.event.new"));
}

// Columns that were decoded follow every change; SQLite's part is played by a map.
TEST_F(Crunching, keeps_decoded_columns_true)
{
    std::mt19937 random(4);
    std::vector<std::pair<int, std::string>> model; // evid and auth
    for (int evid = 1; evid <= 5; ++evid)
        model.emplace_back(evid, "-");
    const auto check = [&] {
        std::string expression = "auth == 'a" + std::to_string(random() % 20) + "'";
        const std::string author = expression.substr(9, expression.size() - 10);
        const Dbptr subset = dbsubset(opened_.table("event"), expression.c_str(), nullptr);
        Texts expected;
        for (const auto &[evid, auth] : model)
            if (auth == author)
                expected.push_back(std::to_string(evid));
        ASSERT_EQ(column_of(subset, "evid"), expected);
        dbfree(subset);
        const Dbptr sorted = dbsort(opened_.table("event"), Names{"auth", "evid"}, 0, nullptr);
        auto in_order = model;
        std::stable_sort(in_order.begin(), in_order.end(), [](const auto &a, const auto &b) {
            return a.second != b.second ? a.second < b.second : a.first < b.first;
        });
        Texts order;
        for (const auto &[evid, auth] : in_order)
            order.push_back(std::to_string(evid));
        ASSERT_EQ(column_of(sorted, "evid"), order);
        dbfree(sorted);
    };
    for (int step = 0; step < 400 && !HasFatalFailure(); ++step) {
        const auto number = static_cast<size_t>(random() % model.size());
        const std::string author = "a" + std::to_string(random() % 20);
        switch (random() % 8) {
        case 0:
        case 1:
            ASSERT_EQ(put(opened_.record("event", static_cast<int64_t>(number)), "auth", author), 0)
                << take_log();
            model[number].second = author;
            break;
        case 2: {
            const int evid = static_cast<int>(random() % 100000 + 1);
            ASSERT_EQ(
                put(opened_.record("event", static_cast<int64_t>(number)), "evid", std::to_string(evid)), 0);
            model[number].first = evid;
            break;
        }
        case 3:
        case 4: {
            const int evid = static_cast<int>(random() % 100000 + 1);
            ASSERT_EQ(dbadd(opened_.table("event"),
                            files_.record("event", {std::to_string(evid), "1", author}).c_str()),
                      static_cast<int64_t>(model.size()));
            model.emplace_back(evid, author);
            break;
        }
        case 5:
            if (model.size() > 1) {
                mark(static_cast<int64_t>(number));
                crunch();
                model.erase(model.begin() + static_cast<std::ptrdiff_t>(number));
            }
            break;
        default:
            check();
        }
    }
    check();
}
