// Changes on a real disk that is full, and on one that is read-only: each fails with its reason, the table is
// as it was, and succeeds once there is room.
#include "edited.h"
#include "support/small_disk.h"

#include <orvane/db_create.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <set>

namespace {

class RealDisk : public testing::Test
{
protected:
    static constexpr int events = 400;

    void SetUp() override
    {
        disk_ = std::make_unique<SmallDisk>();
        if (!disk_->isThere())
            GTEST_SKIP() << disk_->whyNot();
        files_ = disk_->database();
        std::vector<TemporaryDatabase::Row> rows;
        for (int event = 1; event <= events; ++event)
            rows.push_back({std::to_string(event), std::to_string(event)});
        files_->addTable("event", rows);
        before_ = content();
        open();
    }
    void TearDown() override
    {
        opened_.reset();
        if (disk_->isThere())
            disk_->setReadOnly(false);
        files_.reset();
        disk_.reset();
    }

    void open() { opened_ = std::make_unique<Opened>(files_->path(), "r+"); }
    Dbptr table() const { return opened_->table("event"); }
    std::string content() const { return TemporaryDatabase::readFile(files_->tablePath("event")); }
    std::set<std::string> names() const
    {
        std::set<std::string> found;
        for (const auto &entry : std::filesystem::directory_iterator(files_->folder()))
            found.insert(entry.path().filename().string());
        return found;
    }
    size_t length() const { return before_.size() / events; }
    // The number of the first record that lies on two pages, where a kill could cut its writing.
    int64_t record_on_two_pages() const { return static_cast<int64_t>(4096 / length()); }

    // A change that fails for this reason and leaves everything as it was.
    void expect_refused(const std::function<int64_t()> &change, const char *reason)
    {
        const std::string content_before = content();
        const auto names_before = names();
        EXPECT_LT(change(), 0);
        const std::string log = take_log();
        EXPECT_NE(log.find(reason), std::string::npos) << log;
        EXPECT_NE(log.find(disk_->path()), std::string::npos) << "no file is named: " << log;
        EXPECT_TRUE(content() == content_before);
        EXPECT_EQ(names(), names_before);
    }
    void expect_done(const std::function<int64_t()> &change) { EXPECT_GE(change(), 0) << take_log(); }

    int64_t add(int64_t number) const
    {
        return dbadd(table(), files_->record("event", {std::to_string(number)}).c_str());
    }
    int change_all() const
    {
        const std::string text = "7";
        const DbValue value = text_value(text);
        const DbRows rows{0, events};
        return dbputv_rows(table(), "prefor", &value, &rows, 1, nullptr);
    }
    int make_database() const
    {
        return dbcreate_database((files_->folder() + "/new").c_str(), "small", "a new one", nullptr);
    }
    int make_view_file() const
    {
        const Dbptr view = dbsubset(table(), "evid > 10", "some");
        const int saved = dbsave_view(view);
        dbfree(view);
        return saved;
    }

    std::unique_ptr<SmallDisk> disk_;
    std::unique_ptr<TemporaryDatabase> files_;
    std::unique_ptr<Opened> opened_;
    std::string before_;
};

constexpr char full[] = "No space left on device";
constexpr char read_only[] = "Read-only file system";

} // namespace

TEST_F(RealDisk, full_takes_no_more_records_and_then_goes_on)
{
    disk_->fill();
    int64_t number = events;
    while (number < events + 200 && add(number + 1) == number)
        ++number; // into what is left of the last page
    ASSERT_LT(number, events + 200);
    EXPECT_NE(take_log().find(full), std::string::npos);
    expect_refused([&] { return add(number + 1); }, full);
    EXPECT_EQ(content().size(), static_cast<size_t>(number) * length()) << "whole records, and all of them";
    EXPECT_EQ(integer(table(), dbRECORD_COUNT), number);
    expect_refused([&] { return dbaddchk(table(), files_->record("event", {"9000"}).c_str()); }, full);
    disk_->makeRoom();
    EXPECT_EQ(add(number + 1), number) << take_log();
    EXPECT_EQ(integer(Opened(files_->path()).table("event"), dbRECORD_COUNT), number + 1);
}

TEST_F(RealDisk, full_lets_records_be_changed_where_no_note_is_needed)
{
    disk_->fill();
    expect_done([&] { return put(opened_->record("event", 0), "prefor", "77"); });
    EXPECT_EQ(trim(get(opened_->field("event", "prefor", 0))), "77");
    expect_done([&] { return dbmark(opened_->record("event", 1)); });
}

TEST_F(RealDisk, full_refuses_a_change_whose_note_finds_no_room)
{
    disk_->fill();
    const int64_t record = record_on_two_pages();
    const auto change = [&] { return put(opened_->record("event", record), "auth", "A. Seismologist"); };
    expect_refused(change, full);
    disk_->makeRoom();
    expect_done(change);
    EXPECT_EQ(trim(get(opened_->field("event", "auth", record))), "A. Seismologist");
    EXPECT_EQ(names(), (std::set<std::string>{"quakes", "quakes.event", "small.yaml"}))
        << "no note is left behind";
}

TEST_F(RealDisk, full_refuses_a_change_of_many_records)
{
    disk_->fill();
    expect_refused([this] { return change_all(); }, full);
    disk_->makeRoom();
    expect_done([this] { return change_all(); });
    EXPECT_EQ(column_of(table(), "prefor"), Texts(events, "7"));
}

TEST_F(RealDisk, full_refuses_to_crunch)
{
    expect_done([this] { return dbmark(opened_->record("event", 3)); });
    disk_->fill();
    expect_refused([this] { return dbcrunch(table()); }, full);
    EXPECT_EQ(integer(table(), dbRECORD_COUNT), events);
    disk_->makeRoom();
    expect_done([this] { return dbcrunch(table()); });
    EXPECT_EQ(integer(table(), dbRECORD_COUNT), events - 1);
    EXPECT_EQ(content().size(), before_.size() - length());
}

TEST_F(RealDisk, full_gets_no_new_database_table_or_view)
{
    disk_->fill();
    expect_refused([this] { return make_database(); }, full);
    expect_refused([this] { return dbadd(opened_->table("site"), files_->record("site", {"AAK"}).c_str()); },
                   full);
    expect_refused([this] { return make_view_file(); }, full);
    disk_->makeRoom();
    expect_done([this] { return make_database(); });
    expect_done([this] { return dbadd(opened_->table("site"), files_->record("site", {"AAK"}).c_str()); });
    expect_done([this] { return make_view_file(); });
}

TEST_F(RealDisk, read_only_is_not_changed)
{
    expect_done([this] { return dbmark(opened_->record("event", 3)); });
    opened_.reset();
    disk_->setReadOnly(true);
    open();
    EXPECT_EQ(integer(table(), dbTABLE_IS_WRITABLE), 0);
    expect_refused([this] { return put(opened_->record("event", 0), "prefor", "77"); }, read_only);
    expect_refused([this] { return change_all(); }, read_only);
    expect_refused([this] { return add(9000); }, read_only);
    expect_refused([this] { return dbaddchk(table(), files_->record("event", {"9000"}).c_str()); },
                   read_only);
    expect_refused([this] { return dbmark(opened_->record("event", 0)); }, read_only);
    expect_refused([this] { return dbcrunch(table()); }, read_only);
    expect_refused([this] { return dbadd(opened_->table("site"), files_->record("site", {"AAK"}).c_str()); },
                   read_only);
    expect_refused([this] { return make_database(); }, read_only);
    expect_refused([this] { return make_view_file(); }, read_only);
    EXPECT_EQ(trim(get(opened_->field("event", "prefor", 0))), "1") << "it is read all the same";
    disk_->setReadOnly(false);
    expect_done([this] { return put(opened_->record("event", 0), "prefor", "77"); });
    expect_done([this] { return add(9000); });
    expect_done([this] { return dbcrunch(table()); });
}
