// The hook of changes, dbtake_back and dbdo_again.
#include "told_changes.h"

#include <gtest/gtest.h>

#include <random>

namespace {

class TakingBack : public testing::Test
{
protected:
    TakingBack()
    {
        std::vector<TemporaryDatabase::Row> rows;
        for (int i = 0; i < 100; ++i)
            rows.push_back({std::to_string(i + 1), "7", "an author", "3.00000"});
        files.addTable("event", rows);
        ours = std::make_unique<Opened>(files.path(), "r+");
        theirs = std::make_unique<Opened>(files.path(), "r+");
        told.database = ours->pointer.database;
    }

    Dbptr at(int64_t number) const { return ours->record("event", number); }
    std::string value(int64_t number, const char *field) const
    {
        return trim(get(ours->field("event", field, number)));
    }
    // All but the timestamps.
    std::vector<Texts> state() const
    {
        const Opened reader(files.path());
        return {column_of(reader.table("event"), "evid"), column_of(reader.table("event"), "prefor"),
                column_of(reader.table("event"), "auth")};
    }
    int put_rows(const char *field, const std::string &text, const std::vector<DbRows> &rows) const
    {
        const DbValue put = text_value(text);
        return dbputv_rows(ours->table("event"), field, &put, rows.data(), rows.size(), nullptr);
    }
    int mark_rows(const std::vector<DbRows> &rows) const
    {
        return dbmark_rows(ours->table("event"), rows.data(), rows.size(), nullptr);
    }
    // Back to what was before, and again what was after.
    void goes_back_and_forth(const std::vector<Texts> &before) const
    {
        const auto after = state();
        ASSERT_NE(before, after);
        ASSERT_EQ(told.take_back(), 0) << take_log();
        EXPECT_EQ(state(), before);
        ASSERT_EQ(told.do_again(), 0) << take_log();
        EXPECT_EQ(state(), after);
        ASSERT_EQ(told.take_back(), 0) << take_log();
        EXPECT_EQ(state(), before);
    }

    TemporaryDatabase files;
    std::unique_ptr<Opened> ours;
    std::unique_ptr<Opened> theirs;
    ToldChanges told;
};

} // namespace

TEST_F(TakingBack, a_value)
{
    const auto before = state();
    ASSERT_EQ(put(at(12), "auth", "somebody"), 0);
    ASSERT_EQ(told.changes.size(), 1u);
    const ToldChange &change = told.changes[0];
    EXPECT_EQ(change.change.kind, dbCHANGED_VALUES);
    EXPECT_EQ(change.change.place.database, ours->pointer.database);
    EXPECT_EQ(change.change.place.table, ours->table("event").table);
    EXPECT_EQ(change.change.place.field, 2);
    EXPECT_EQ(change.records, std::vector<int64_t>{12});
    EXPECT_EQ(change.before, "an author      ");
    EXPECT_EQ(change.after, "somebody       ");
    goes_back_and_forth(before);
    EXPECT_GT(std::stod(value(12, "lddate")), 1.6e9) << "taking back is a change, too";
}

TEST_F(TakingBack, is_told_of_what_changed_only)
{
    ASSERT_EQ(put(at(3), "auth", "an author"), 0);
    ASSERT_EQ(put(at(3), "lddate", "5"), 0);
    ASSERT_EQ(put(at(dbSCRATCH), "auth", "scratch"), 0);
    EXPECT_LT(put(at(3), "evid", "0"), 0);
    const Dbptr view = dbsubset(ours->table("event"), "evid > 3", nullptr);
    Dbptr row = view;
    row.record = 0;
    ASSERT_EQ(dbmark(row), 0);
    ASSERT_EQ(dbcrunch(view), 0);
    ASSERT_EQ(dbcrunch(ours->table("event")), 0) << "nothing is marked";
    EXPECT_EQ(told.changes.size(), 0u);
    ASSERT_EQ(put_rows("auth", "an author", {{0, 100}}), 0);
    ASSERT_EQ(put_rows("lddate", "5", {{0, 100}}), 0);
    EXPECT_EQ(told.changes.size(), 0u);
    take_log();
}

TEST_F(TakingBack, a_value_put_through_a_view)
{
    const auto before = state();
    const Dbptr view = dbsubset(ours->table("event"), "evid > 50", nullptr);
    Dbptr row = view;
    row.record = 3;
    ASSERT_EQ(put(row, "auth", "viewed"), 0);
    ASSERT_EQ(told.changes.size(), 1u);
    EXPECT_EQ(told.changes[0].records, std::vector<int64_t>{53});
    EXPECT_EQ(told.changes[0].change.place.table, ours->table("event").table);
    goes_back_and_forth(before);
}

TEST_F(TakingBack, a_mark)
{
    const auto before = state();
    ASSERT_EQ(dbmark(at(7)), 0);
    ASSERT_EQ(dbmark(at(7)), 0);
    EXPECT_EQ(told.changes.size(), 1u) << "it was marked already";
    EXPECT_EQ(told.changes[0].change.kind, dbCHANGED_MARKS);
    goes_back_and_forth(before);
    ASSERT_EQ(told.do_again(), 0);
    ASSERT_EQ(dbcrunch(ours->table("event")), 0);
    EXPECT_EQ(integer(ours->table("event"), dbRECORD_COUNT), 99);
}

TEST_F(TakingBack, an_added_record_leaves_an_empty_one)
{
    for (const bool checked : {false, true}) {
        const std::string record = files.record("event", {checked ? "901" : "900", "1", "new"});
        const int64_t number = checked ? dbaddchk(ours->table("event"), record.c_str())
                                       : dbadd(ours->table("event"), record.c_str());
        ASSERT_EQ(number, checked ? 101 : 100);
    }
    EXPECT_EQ(dbaddchk(ours->table("event"), files.record("event", {"901", "1", "new"}).c_str()), 101);
    ASSERT_EQ(told.changes.size(), 2u) << "a record that was there is not added";
    EXPECT_EQ(told.changes[1].change.kind, dbCHANGED_ADDED);
    const auto after = state();
    ASSERT_EQ(told.take_back(), 0) << take_log();
    EXPECT_EQ(integer(ours->table("event"), dbRECORD_COUNT), 102) << "numbers stay";
    ASSERT_EQ(dbaddchk(ours->table("event"), files.record("event", {"5", "1", "x"}).c_str()), 4);
    ASSERT_EQ(told.do_again(), 0) << take_log();
    EXPECT_EQ(state(), after);
    ASSERT_EQ(told.take_back(), 0) << take_log();
    ASSERT_EQ(dbcrunch(ours->table("event")), 0);
    EXPECT_EQ(integer(ours->table("event"), dbRECORD_COUNT), 100);
}

// The timestamp of a record differs after each change; that is no reason to leave it.
TEST_F(TakingBack, several_changes_of_one_record_in_turn)
{
    const auto before = state();
    ASSERT_EQ(put(at(5), "auth", "a"), 0);
    ASSERT_EQ(put(at(5), "auth", "b"), 0);
    ASSERT_EQ(put(at(5), "prefor", "3"), 0);
    ASSERT_EQ(dbmark(at(5)), 0);
    ASSERT_EQ(put(at(5), "auth", "c"), 0); // it is no longer marked
    goes_back_and_forth(before);
    ASSERT_EQ(told.do_again(), 0);
    const DbChange last = told.changes.back().borrowed();
    ASSERT_EQ(dbtake_back(&last, nullptr), 0);
    ASSERT_EQ(dbcrunch(ours->table("event")), 0) << "marked again";
    EXPECT_EQ(integer(ours->table("event"), dbRECORD_COUNT), 99);
}

TEST_F(TakingBack, many_values_and_marks)
{
    const auto before = state();
    ASSERT_EQ(mark_rows({{90, 95}}), 0);
    ASSERT_EQ(put_rows("auth", "everybody", {{10, 20}, {50, 100}}), 0);
    ASSERT_EQ(mark_rows({{15, 25}}), 0);
    ASSERT_EQ(put_rows("prefor", "9", {{0, 100}}), 0);
    goes_back_and_forth(before);
}

TEST_F(TakingBack, leaves_what_others_changed_since)
{
    ASSERT_EQ(put_rows("auth", "ours", {{0, 10}}), 0);
    ASSERT_EQ(put(theirs->record("event", 3), "auth", "theirs"), 0);
    ASSERT_EQ(put(theirs->record("event", 4), "prefor", "5"), 0);
    ASSERT_EQ(dbmark(theirs->record("event", 5)), 0);
    EXPECT_EQ(told.take_back(), 2);
    EXPECT_EQ(value(3, "auth"), "theirs");
    EXPECT_EQ(value(4, "auth") + value(4, "prefor"), "an author5") << "another field is no matter";
    EXPECT_EQ(value(5, "auth"), "-");
    EXPECT_EQ(value(6, "auth"), "an author");
    EXPECT_EQ(told.do_again(), 2);
    EXPECT_EQ(value(3, "auth"), "theirs");
    EXPECT_EQ(value(6, "auth"), "ours");
}

TEST_F(TakingBack, leaves_a_marked_or_added_record_that_others_filled)
{
    ASSERT_EQ(dbmark(at(7)), 0);
    ASSERT_EQ(put(theirs->record("event", 7), "auth", "theirs"), 0);
    ASSERT_GE(dbadd(ours->table("event"), files.record("event", {"900", "1", "new"}).c_str()), 0);
    ASSERT_EQ(put(theirs->record("event", 100), "auth", "theirs"), 0);
    const auto before = state();
    EXPECT_EQ(told.take_back(), 2);
    EXPECT_EQ(state(), before);
}

TEST_F(TakingBack, ends_with_a_crunch)
{
    ASSERT_EQ(put(at(50), "auth", "ours"), 0);
    const DbChange change = told.changes[0].borrowed();
    EXPECT_EQ(integer(ours->table("event"), dbTABLE_NUMBERING), change.numbering);
    ASSERT_EQ(dbmark(at(7)), 0);
    ASSERT_EQ(dbcrunch(ours->table("event")), 0);
    EXPECT_EQ(told.changes.back().change.kind, dbCHANGED_NUMBERS);
    EXPECT_EQ(told.changes.back().change.place.table, change.place.table);
    EXPECT_NE(integer(ours->table("event"), dbTABLE_NUMBERING), change.numbering);
    const auto before = state();
    EXPECT_EQ(dbtake_back(&change, nullptr), dbERROR_STALE);
    EXPECT_EQ(dbdo_again(&change, nullptr), dbERROR_STALE);
    EXPECT_EQ(state(), before);
    take_log();
}

TEST_F(TakingBack, ends_with_a_crunch_of_another_program)
{
    ASSERT_EQ(put(at(50), "auth", "ours"), 0);
    const DbChange change = told.changes[0].borrowed();
    ASSERT_EQ(dbmark(theirs->record("event", 7)), 0);
    ASSERT_EQ(dbcrunch(theirs->table("event")), 0);
    const auto before = state();
    EXPECT_EQ(dbtake_back(&change, nullptr), dbERROR_STALE);
    EXPECT_EQ(state(), before);
    take_log();
}

TEST_F(TakingBack, tells_which_changes_are_one_step)
{
    ASSERT_EQ(put(at(1), "auth", "a"), 0);
    dbbegin_step();
    ASSERT_EQ(put(at(2), "auth", "a"), 0);
    dbbegin_step();
    ASSERT_EQ(dbmark(at(3)), 0);
    dbend_step();
    ASSERT_EQ(put(at(4), "auth", "a"), 0);
    dbend_step();
    ASSERT_EQ(put(at(5), "auth", "a"), 0);
    std::vector<uint64_t> steps;
    for (const ToldChange &change : told.changes)
        steps.push_back(change.change.step);
    ASSERT_EQ(steps.size(), 5u);
    EXPECT_EQ(steps[1], steps[2]);
    EXPECT_EQ(steps[2], steps[3]);
    EXPECT_LT(steps[0], steps[1]);
    EXPECT_LT(steps[3], steps[4]);
    dbend_step(); // one too many does no harm
}

TEST_F(TakingBack, refuses_what_was_never_told)
{
    ASSERT_EQ(put(at(1), "auth", "a"), 0);
    const DbChange good = told.changes[0].borrowed();
    const auto refuses = [](DbChange bad) {
        const int code = dbtake_back(&bad, nullptr);
        take_log();
        return code;
    };
    const auto before = state();
    DbChange bad = good;
    bad.kind = dbCHANGED_NUMBERS;
    EXPECT_EQ(refuses(bad), dbERROR_ARGUMENT);
    bad = good;
    bad.length = 3;
    EXPECT_EQ(refuses(bad), dbERROR_ARGUMENT);
    bad = good;
    bad.place.field = 99;
    EXPECT_EQ(refuses(bad), dbERROR_ARGUMENT);
    bad = good;
    bad.before = nullptr;
    EXPECT_EQ(refuses(bad), dbERROR_ARGUMENT);
    bad = good;
    bad.place.table = dbsubset(ours->table("event"), "evid > 0", nullptr).table;
    EXPECT_EQ(refuses(bad), dbERROR_ARGUMENT);
    bad = good;
    bad.place.database = 999;
    EXPECT_EQ(refuses(bad), dbERROR_STALE);
    EXPECT_EQ(dbtake_back(nullptr, nullptr), dbERROR_ARGUMENT);
    EXPECT_EQ(state(), before);
    take_log();
}

// Random changes by us and by another program; taken back, all that is ours is gone and all that is theirs
// is there.
TEST_F(TakingBack, leaves_nothing_of_ours_and_all_of_theirs)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        std::mt19937 random(seed);
        told.changes.clear();
        const auto before = state();
        std::vector<int64_t> touched; // by them, in records of their own
        for (int step = 0; step < 60; ++step) {
            const auto first = static_cast<int64_t>(random() % 50);
            const auto end = first + static_cast<int64_t>(random() % 10);
            const std::string text = "w" + std::to_string(random() % 5);
            switch (random() % 6) {
            case 0:
                ASSERT_EQ(put(at(first), "auth", text), 0);
                break;
            case 1:
                ASSERT_EQ(put_rows("auth", text, {{first, end}}), 0);
                break;
            case 2:
                ASSERT_EQ(mark_rows({{first, end}}), 0);
                break;
            case 3:
                ASSERT_EQ(put_rows("prefor", std::to_string(random() % 9 + 1), {{first, end}}), 0);
                break;
            case 4:
                ASSERT_EQ(dbmark(at(first)), 0);
                break;
            default:
                touched.push_back(60 + static_cast<int64_t>(random() % 30));
                ASSERT_EQ(put(theirs->record("event", touched.back()), "auth", "theirs"), 0);
            }
        }
        auto expected = before;
        for (const int64_t number : touched)
            expected[2][static_cast<size_t>(number)] = "theirs";
        const auto after = state();
        ASSERT_EQ(told.take_back(), 0) << take_log();
        ASSERT_EQ(state(), expected) << seed;
        ASSERT_EQ(told.do_again(), 0) << take_log();
        ASSERT_EQ(state(), after) << seed;
        ASSERT_EQ(told.take_back(), 0);
    }
}
