// Views over a table that this program and others add to, mark, crunch, replace and cut short at random: a
// row shows the record that it was made of, nulls once that is marked, or an error; never another record.
// $ORVANE_VIEW_ROUNDS is the number of worlds.
#include "edited.h"
#include "operations/derived.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>
#include <set>

namespace {

struct WatchedView {
    Dbptr view;
    std::string made_by;
    std::vector<int64_t> ids; // of the rows' records
    bool outdated = false;    // the records were numbered anew, by another program
};

class ChangingWorld
{
public:
    explicit ChangingWorld(unsigned seed) : random_(seed)
    {
        files_.addTable("event", rows(20));
        files_.addTable("origin", {{"1.0", "2.0", "3.0", "4.0", "1"}, {"1.0", "2.0", "3.0", "5.0", "2"}});
        ours_ = std::make_unique<Opened>(files_.path(), "r+");
        theirs_ = std::make_unique<Opened>(files_.path(), "r+");
    }

    void step()
    {
        switch (random_() % 16) {
        case 0:
        case 1:
        case 2:
            make_view();
            break;
        case 3:
        case 4:
            add(*ours_);
            break;
        case 5:
            add(*theirs_);
            break;
        case 6:
        case 7:
            mark(*ours_);
            break;
        case 8:
            mark(*theirs_);
            break;
        case 9:
        case 10:
            crunch_ours();
            break;
        case 11:
            crunch_theirs();
            break;
        case 12:
            if (random_() % 3 == 0)
                replace();
            break;
        case 13:
            if (random_() % 3 == 0)
                cut_short();
            break;
        case 14:
            crunch_rows_of_a_view();
            break;
        default:
            for (const WatchedView &view : views_)
                check(view);
        }
    }

    const std::string &history() const { return history_; }
    int rows_checked() const { return rows_checked_; }

private:
    std::vector<TemporaryDatabase::Row> rows(int count)
    {
        std::vector<TemporaryDatabase::Row> made;
        for (int i = 0; i < count; ++i) {
            made.push_back({std::to_string(next_id_), std::to_string(next_id_ % 3)});
            records_.push_back(next_id_++);
        }
        return made;
    }
    Dbptr events() const { return ours_->table("event"); }
    void note(const std::string &what) { history_ += what + "\n"; }
    void outdate()
    {
        for (WatchedView &view : views_)
            view.outdated = true;
    }

    void make_view()
    {
        // What is made now is made of what is there now.
        Dbptr view = dbinvalid();
        const char *made_by = "";
        switch (random_() % 5) {
        case 0:
            view = dbsubset(events(), "evid % 2 == 0 && evid > 0", nullptr);
            made_by = "subset";
            break;
        case 1:
            view = dbsort(events(), Names{"prefor", "evid"}, dbSORT_REVERSE, nullptr);
            made_by = "sort";
            break;
        case 2:
            view =
                dbjoin(events(), ours_->table("origin"), Names{"prefor"}, Names{"orid"}, 1, nullptr, nullptr);
            made_by = "join";
            break;
        case 3: {
            const Dbptr grouped = dbgroup(events(), Names{"prefor"}, nullptr, 1);
            view = dbungroup(grouped, nullptr);
            dbfree(grouped);
            made_by = "group, ungroup";
            break;
        }
        default:
            if (!views_.empty() && !views_.back().outdated) {
                view = dbsort(views_.back().view, Names{"evid"}, 0, nullptr);
                made_by = "sort of a view";
            }
        }
        if (view.table < 0) {
            take_log();
            return;
        }
        WatchedView watched{view, made_by, {}, false};
        Dbptr at = dblookup(view, "", "", "evid", "");
        const int64_t count = integer(view, dbRECORD_COUNT);
        for (at.record = 0; at.record < count; ++at.record)
            watched.ids.push_back(std::atoll(get(at).c_str()));
        note(std::string("view by ") + made_by);
        views_.push_back(watched);
        if (views_.size() > 8) {
            dbfree(views_.front().view);
            views_.erase(views_.begin());
        }
    }

    void add(const Opened &by)
    {
        const int64_t id = next_id_++;
        const int64_t number = dbadd(
            by.table("event"), files_.record("event", {std::to_string(id), std::to_string(id % 3)}).c_str());
        ASSERT_EQ(number, static_cast<int64_t>(records_.size())) << take_log();
        records_.push_back(id);
        note("add");
    }

    void mark(const Opened &by)
    {
        if (records_.empty())
            return;
        const auto number = random_() % records_.size();
        integer(by.table("event"), dbRECORD_COUNT); // so that it knows the table as it is
        ASSERT_EQ(dbmark(by.record("event", static_cast<int64_t>(number))), 0) << take_log();
        marked_.insert(records_[number]);
        records_[number] = 0;
        note("mark");
    }

    bool forget_marked() { return std::erase(records_, 0) > 0; }

    void crunch_ours()
    {
        integer(events(), dbRECORD_COUNT);
        ASSERT_EQ(dbcrunch(events()), 0) << take_log();
        note("crunch");
        forget_marked();
        for (WatchedView &view : views_)
            if (!view.outdated)
                std::erase_if(view.ids, [&](int64_t id) { return id == -1 || marked_.count(id) > 0; });
    }

    void crunch_theirs()
    {
        ASSERT_EQ(dbcrunch(theirs_->table("event")), 0) << take_log();
        note("crunch by another");
        if (forget_marked())
            outdate();
    }

    void replace()
    {
        const auto count = static_cast<int>(random_() % 40);
        records_.clear();
        std::string lines;
        for (const auto &row : rows(count))
            lines += files_.record("event", row) + "\n";
        files_.writeFile("replacement", lines);
        std::filesystem::rename(files_.folder() + "/replacement", files_.tablePath("event"));
        note("replace by " + std::to_string(count));
        outdate();
    }

    void cut_short()
    {
        if (records_.empty())
            return;
        const std::size_t left = random_() % records_.size();
        const auto size = static_cast<std::size_t>(integer(events(), dbRECORD_SIZE));
        // A program that never saw the records which go has numbers that still hold.
        integer(events(), dbRECORD_COUNT);
        // Readers notice when they look; one that doesn't look before the table grew again can't.
        std::filesystem::resize_file(files_.tablePath("event"), left * size);
        integer(events(), dbRECORD_COUNT);
        integer(theirs_->table("event"), dbRECORD_COUNT);
        records_.resize(left);
        note("cut short to " + std::to_string(left));
        outdate();
    }

    void crunch_rows_of_a_view()
    {
        if (views_.empty() || views_.back().ids.empty())
            return;
        WatchedView &view = views_.back();
        Dbptr at = view.view;
        at.record = static_cast<int64_t>(random_() % view.ids.size());
        const int64_t count = integer(view.view, dbRECORD_COUNT);
        if (at.record >= count)
            return;
        ASSERT_EQ(dbmark(at), 0) << take_log();
        ASSERT_EQ(dbcrunch(view.view), 0) << take_log();
        view.ids.erase(view.ids.begin() + static_cast<std::ptrdiff_t>(at.record));
        note("row out of a view");
    }

    void check(const WatchedView &watched)
    {
        const int64_t count = integer(watched.view, dbRECORD_COUNT);
        ASSERT_EQ(count, static_cast<int64_t>(watched.ids.size())) << watched.made_by << "\n" << history_;
        Dbptr at = watched.view;
        for (at.record = 0; at.record < count; ++at.record) {
            const int64_t id = watched.ids[static_cast<std::size_t>(at.record)];
            DbValue shown{};
            if (dbgetv(at, "event.evid", &shown) < 0) {
                ASSERT_TRUE(watched.outdated) << watched.made_by << "\n" << take_log() << history_;
                take_log();
                continue;
            }
            ++rows_checked_;
            ASSERT_TRUE(shown.integer == id || shown.integer == -1)
                << watched.made_by << ", row " << at.record << " shows " << shown.integer << " instead of "
                << id << "\n"
                << history_;
            // Nulls are what was marked only.
            if (shown.integer == -1) {
                ASSERT_TRUE(id == -1 || marked_.count(id) > 0) << watched.made_by << "\n" << history_;
            }
        }
    }

    std::mt19937 random_;
    TemporaryDatabase files_;
    std::unique_ptr<Opened> ours_;
    std::unique_ptr<Opened> theirs_;
    int64_t next_id_ = 10;
    std::vector<int64_t> records_; // ids by number; 0: marked
    std::set<int64_t> marked_;     // ids that were
    std::vector<WatchedView> views_;
    std::string history_;
    int rows_checked_ = 0;
};

} // namespace

TEST(ViewsOfChangingTables, never_show_a_wrong_record)
{
    const char *setting = std::getenv("ORVANE_VIEW_ROUNDS");
    const int worlds = setting ? std::atoi(setting) : 60;
    int rows = 0;
    for (int world = 0; world < worlds && !HasFailure(); ++world) {
        SCOPED_TRACE("world " + std::to_string(world));
        ChangingWorld changing(static_cast<unsigned>(world));
        for (int step = 0; step < 120 && !HasFatalFailure(); ++step)
            changing.step();
        rows += changing.rows_checked();
    }
    EXPECT_GT(rows, 1000);
}
