#include "table/record_file.h"

#include "temporary_database.h"
#include "watched_file_system.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <sys/stat.h>
#include <thread>

using namespace orvane;

namespace {

// Records of this file are nine digits and a line feed.
constexpr int64_t record_size = 10;

std::string line(int64_t number)
{
    std::string digits = std::to_string(number);
    return std::string(9 - digits.size(), '0') + digits + "\n";
}

std::string lines(int64_t first, int64_t end)
{
    std::string text;
    for (int64_t i = first; i < end; ++i)
        text += line(i);
    return text;
}

// Longer than readers go without looking at the file.
void wait_for_a_look()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(130));
}

class RecordFileTest : public testing::Test
{
protected:
    // Blocks of three records and room for two of them, so that short files show what long ones do.
    RecordFileTest() : storage_(files_, StorageLimits{60, 2, 30}) {}

    std::unique_ptr<RecordFile> open(std::vector<std::string> names = {"table"})
    {
        std::vector<LocatedPath> places;
        for (const std::string &name : names)
            places.push_back(LocatedPath::from(path(name)));
        return std::make_unique<RecordFile>(storage_, places, record_size, "table t of schema s");
    }
    std::string path(const std::string &name = "table") const { return folder_.folder() + "/" + name; }
    void write(const std::string &bytes, const std::string &name = "table")
    {
        folder_.writeFile(name, bytes);
    }
    void append(const std::string &bytes)
    {
        std::ofstream(path(), std::ios::binary | std::ios::app) << bytes;
    }

    static std::string text(RecordFile &file, int64_t number)
    {
        const auto record = file.record(number);
        return record.ok() ? std::string(*record) : "(" + std::string(record.status().message()) + ")";
    }
    static std::string expected(int64_t number) { return line(number).substr(0, 9); }
    static std::string refusal(RecordFile &file)
    {
        EXPECT_EQ(file.count_records(), 0);
        return std::string(file.refusal().message());
    }

    TemporaryDatabase folder_;
    WatchedFileSystem files_;
    Storage storage_;
};

} // namespace

TEST_F(RecordFileTest, answers_records_of_any_block_in_any_order)
{
    write(lines(0, 100));
    const auto file = open();
    EXPECT_EQ(file->count_records(), 100);
    std::mt19937 random(7);
    for (int i = 0; i < 2000; ++i) {
        const int64_t number = static_cast<int64_t>(random() % 100);
        ASSERT_EQ(text(*file, number), expected(number));
    }
    EXPECT_LE(storage_.blocks.used_bytes(), 60u);
}

TEST_F(RecordFileTest, looks_at_no_file_until_it_is_asked)
{
    write(lines(0, 3));
    const auto file = open();
    EXPECT_EQ(files_.all_states(), 0);
    EXPECT_TRUE(file->look().ok());
    EXPECT_TRUE(file->present());
    EXPECT_EQ(files_.opens("table"), 0);
}

TEST_F(RecordFileTest, counts_with_two_small_reads_whatever_the_size)
{
    write(lines(0, 100000));
    wait_for_a_look(); // a file changed just now is not trusted to have its final time
    const auto file = open();
    EXPECT_EQ(file->count_records(), 100000);
    EXPECT_EQ(file->count_records(), 100000);
    EXPECT_EQ(files_.reads("table"), 2);
    EXPECT_LE(files_.bytes_read("table"), 2 * record_size);
}

TEST_F(RecordFileTest, reads_a_block_once_and_looks_at_the_file_now_and_then_only)
{
    write(lines(0, 3));
    wait_for_a_look();
    const auto file = open();
    ASSERT_EQ(text(*file, 0), expected(0));
    files_.forget();
    for (int i = 0; i < 3000; ++i)
        ASSERT_EQ(text(*file, i % 3), expected(i % 3));
    EXPECT_EQ(files_.reads("table"), 0);
    EXPECT_LE(files_.all_states(), 3);
}

TEST_F(RecordFileTest, has_no_records_without_a_file_and_with_an_empty_one)
{
    const auto file = open();
    EXPECT_EQ(file->count_records(), 0);
    EXPECT_FALSE(file->present());
    EXPECT_TRUE(file->refusal().ok());
    EXPECT_EQ(text(*file, 0), "(" + path() + ": record 0 is not there: there is no such file)");
    write("");
    EXPECT_EQ(file->count_records(), 0);
    EXPECT_TRUE(file->present());
    EXPECT_TRUE(file->refusal().ok());
    EXPECT_EQ(text(*file, 0), "(" + path() + ": record 0 is not there: the file has 0 records)");
}

TEST_F(RecordFileTest, takes_an_unfinished_last_line_for_no_record_yet)
{
    write(lines(0, 2) + "0000");
    const auto file = open();
    EXPECT_EQ(file->count_records(), 2);
    append("00002");
    EXPECT_EQ(file->count_records(), 2); // all there but the line feed
    append("\n");
    EXPECT_EQ(file->count_records(), 3);
    EXPECT_EQ(text(*file, 2), expected(2));
}

TEST_F(RecordFileTest, takes_an_unfinished_only_line_for_no_record_yet)
{
    write("0000");
    const auto file = open();
    EXPECT_EQ(file->count_records(), 0);
    EXPECT_TRUE(file->refusal().ok());
}

TEST_F(RecordFileTest, takes_the_file_of_the_first_folder_that_has_one)
{
    std::filesystem::create_directory(path("near"));
    std::filesystem::create_directory(path("far"));
    write(lines(5, 7), "far/table");
    const auto file = open({"near/table", "missing/table", "far/table"});
    EXPECT_EQ(file->count_records(), 2);
    EXPECT_EQ(file->path().shown, path("far/table"));
    write(lines(1, 2), "near/table");
    EXPECT_EQ(file->count_records(), 1);
    EXPECT_EQ(text(*file, 0), expected(1));
    std::filesystem::remove(path("near/table"));
    std::filesystem::remove(path("far/table"));
    EXPECT_EQ(file->count_records(), 0);
    EXPECT_EQ(file->path().shown, path("near/table")) << "a new file goes to the first folder";
}

TEST_F(RecordFileTest, refuses_a_file_of_another_width_naming_both)
{
    write("12345\n12345\n12345\n");
    const auto file = open();
    const std::string start = path() + ":1: a record is ";
    const std::string end =
        " bytes wide where table t of schema s expects 9 (and a line feed); open the file with "
        "the schema that it was written for, or mend it";
    EXPECT_EQ(refusal(*file), start + "5" + end);
    EXPECT_EQ(text(*file, 0), "(" + start + "5" + end + ")");
    write(std::string(30, 'x') + "\n");
    EXPECT_EQ(refusal(*file), start + "30" + end);
    write(std::string(30, 'x'));
    EXPECT_EQ(refusal(*file), start + "30" + end);
    write(std::string(100000, 'x'));
    EXPECT_EQ(refusal(*file), start + "more than 65536" + end);
    write("\n\n\n\n\n\n\n\n\n\n\n\n");
    EXPECT_EQ(refusal(*file), start + "0" + end);
    write(lines(0, 2));
    EXPECT_EQ(file->count_records(), 2) << "mended";
    EXPECT_TRUE(file->refusal().ok());
}

TEST_F(RecordFileTest, refuses_carriage_returns_by_their_name)
{
    write("123456789\r\n123456789\r\n");
    EXPECT_EQ(refusal(*open()), path() +
                                    ":1: lines end with a carriage return and a line feed, a line feed alone "
                                    "is expected; convert the line ends");
}

TEST_F(RecordFileTest, refuses_a_file_whose_last_record_does_not_end_where_it_should)
{
    write(lines(0, 5) + "12345\n" + lines(5, 9));
    EXPECT_EQ(refusal(*open()), path() +
                                    ": the first record is 9 bytes wide, as table t of schema s expects, but "
                                    "byte 89, where record 8 would end, is no line feed: a line before it is "
                                    "of another width; mend the file");
}

TEST_F(RecordFileTest, tells_a_single_record_whose_line_feed_is_out_of_place)
{
    write(lines(0, 4) + "1234\n1234\n" + "0000x0000x" + lines(6, 9));
    const auto file = open();
    EXPECT_EQ(file->count_records(), 9);
    EXPECT_EQ(text(*file, 3), expected(3));
    EXPECT_EQ(text(*file, 4), "(" + path() +
                                  ": record 4, bytes 40 to 49, has a line feed at byte 44, before its "
                                  "end; mend the file)");
    EXPECT_EQ(text(*file, 5),
              "(" + path() + ": record 5, bytes 50 to 59, has no line feed at its end; mend the file)");
    EXPECT_EQ(text(*file, 6), expected(6));
    EXPECT_EQ(text(*file, 8), expected(8));
}

TEST_F(RecordFileTest, refuses_a_directory_and_what_is_no_regular_file)
{
    std::filesystem::create_directory(path());
    EXPECT_EQ(refusal(*open()),
              path() + ": is a directory where the file of table t of schema s is expected; move "
                       "it away");
    std::filesystem::remove(path());
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    EXPECT_EQ(refusal(*open()), path() + ": is not a regular file, as that of table t of schema s has to be");
}

TEST_F(RecordFileTest, refuses_a_file_without_permission_and_takes_it_when_that_is_mended)
{
    write(lines(0, 3));
    files_.failing_opens["table"] = EACCES;
    const auto file = open();
    EXPECT_EQ(refusal(*file), path() + ": cannot be opened to read table t of schema s: " + path() +
                                  ": cannot open: Permission denied");
    EXPECT_EQ(file->refusal().code(), Code::Permission);
    EXPECT_TRUE(file->present());
    files_.failing_opens.clear();
    EXPECT_EQ(file->count_records(), 3);
}

TEST_F(RecordFileTest, tells_a_folder_that_cannot_be_searched)
{
    write(lines(0, 3));
    files_.failing_states["table"] = EACCES;
    const auto file = open();
    EXPECT_EQ(refusal(*file), path() + ": cannot look for the file of table t of schema s: " + path() +
                                  ": cannot look at: Permission denied");
    EXPECT_EQ(file->record(0).status().code(), Code::Permission);
    files_.failing_states.clear();
    EXPECT_EQ(text(*file, 2), expected(2));
}

TEST_F(RecordFileTest, tells_a_disk_that_fails_and_reads_on_when_it_works_again)
{
    write(lines(0, 30));
    const auto file = open();
    ASSERT_EQ(file->count_records(), 30);
    files_.failing_reads["table"] = EIO;
    EXPECT_EQ(text(*file, 10), "(" + path() + ": cannot read records 9 to 11: " + path() +
                                   ": cannot read: Input/output error)");
    files_.failing_reads.clear();
    EXPECT_EQ(text(*file, 10), expected(10));
}

TEST_F(RecordFileTest, notices_growth_when_records_are_counted_and_when_one_beyond_the_end_is_read)
{
    write(lines(0, 3));
    const auto file = open();
    EXPECT_EQ(file->count_records(), 3);
    append(lines(3, 7));
    EXPECT_EQ(text(*file, 6), expected(6));
    append(lines(7, 8));
    EXPECT_EQ(file->count_records(), 8);
    EXPECT_EQ(text(*file, 7), expected(7));
}

TEST_F(RecordFileTest, is_an_error_for_the_records_gone_when_cut_short)
{
    write(lines(0, 30));
    const auto file = open();
    ASSERT_EQ(text(*file, 25), expected(25));
    std::filesystem::resize_file(path(), 55);
    EXPECT_EQ(text(*file, 20), "(" + path() + ": record 20 is not there: the file has 5 records)");
    wait_for_a_look();
    EXPECT_EQ(text(*file, 25), "(" + path() + ": record 25 is not there: the file has 5 records)");
    EXPECT_EQ(text(*file, 4), expected(4));
    EXPECT_EQ(file->count_records(), 5);
}

TEST_F(RecordFileTest, survives_being_cut_short_between_look_and_read)
{
    write(lines(0, 30));
    const auto file = open();
    ASSERT_EQ(file->count_records(), 30);
    files_.before_read = [&](const std::string &read) { std::filesystem::resize_file(read, 35); };
    EXPECT_EQ(text(*file, 29), "(" + path() + ": record 29 is not there: the file has 3 records)");
    EXPECT_EQ(text(*file, 2), expected(2));
}

TEST_F(RecordFileTest, is_an_error_when_the_file_vanishes_and_goes_on_when_it_is_back)
{
    write(lines(0, 5));
    const auto file = open();
    ASSERT_EQ(text(*file, 4), expected(4));
    std::filesystem::remove(path());
    wait_for_a_look();
    EXPECT_EQ(text(*file, 4), "(" + path() + ": record 4 is not there: there is no such file)");
    EXPECT_EQ(file->count_records(), 0);
    EXPECT_FALSE(file->present());
    write(lines(10, 15));
    EXPECT_EQ(text(*file, 4), expected(14));
}

TEST_F(RecordFileTest, survives_a_file_that_vanishes_between_look_and_opening)
{
    write(lines(0, 5));
    files_.before_open = [&](const std::string &opened) { std::filesystem::remove(opened); };
    const auto file = open();
    EXPECT_EQ(file->count_records(), 0);
    EXPECT_EQ(text(*file, 0), "(" + path() + ": record 0 is not there: there is no such file)");
}

TEST_F(RecordFileTest, reads_the_new_file_when_it_is_replaced)
{
    write(lines(0, 5));
    const auto file = open();
    ASSERT_EQ(text(*file, 1), expected(1));
    const FileVersion before = file->version();
    write(lines(100, 105), "new");
    std::filesystem::last_write_time(path("new"), std::filesystem::last_write_time(path()));
    std::filesystem::rename(path("new"), path());
    wait_for_a_look();
    EXPECT_EQ(text(*file, 1), expected(101)) << "though size and time are those of the old one";
    EXPECT_NE(file->version(), before);
}

TEST_F(RecordFileTest, reads_the_new_file_when_it_is_replaced_between_look_and_opening)
{
    write(lines(0, 5));
    write(lines(100, 107), "new");
    bool replaced = false;
    files_.before_open = [&](const std::string &) {
        if (!replaced)
            std::filesystem::rename(path("new"), path());
        replaced = true;
    };
    const auto file = open();
    EXPECT_EQ(file->count_records(), 7);
    EXPECT_EQ(text(*file, 6), expected(106));
}

TEST_F(RecordFileTest, sees_edits_in_place_by_other_programs)
{
    write(lines(0, 30));
    const auto file = open();
    ASSERT_EQ(text(*file, 7), expected(7));
    for (int64_t edit = 0; edit < 3; ++edit) {
        std::fstream other(path(), std::ios::binary | std::ios::in | std::ios::out);
        other.seekp(7 * record_size);
        other << line(700 + edit);
        other.close();
        wait_for_a_look();
        ASSERT_EQ(text(*file, 7), expected(700 + edit));
    }
}

TEST_F(RecordFileTest, sees_an_edit_that_leaves_the_time_as_it_was)
{
    // Two edits within one tick of the file's clock have the same time; so does this one.
    write(lines(0, 30));
    const auto file = open();
    ASSERT_EQ(text(*file, 7), expected(7));
    const auto time = std::filesystem::last_write_time(path());
    std::fstream other(path(), std::ios::binary | std::ios::in | std::ios::out);
    other.seekp(7 * record_size);
    other << line(777);
    other.close();
    std::filesystem::last_write_time(path(), time);
    wait_for_a_look();
    EXPECT_EQ(text(*file, 7), expected(777));
}

TEST_F(RecordFileTest, keeps_reading_when_the_pool_has_closed_its_file)
{
    std::vector<std::unique_ptr<RecordFile>> many;
    for (int i = 0; i < 5; ++i) {
        const std::string name = "table" + std::to_string(i);
        write(lines(i * 100, i * 100 + 20), name);
        many.push_back(open({name}));
    }
    for (int round = 0; round < 20; ++round)
        for (int i = 0; i < 5; ++i)
            ASSERT_EQ(text(*many[static_cast<size_t>(i)], round), expected(i * 100 + round));
    EXPECT_LE(storage_.handles.open_count(), 2u);
}

TEST_F(RecordFileTest, takes_a_negative_number_for_no_record)
{
    write(lines(0, 3));
    EXPECT_EQ(text(*open(), -1), "(" + path() + ": record -1 is not there: the file has 3 records)");
}

TEST_F(RecordFileTest, takes_records_longer_than_a_block)
{
    folder_.writeFile("long", std::string(99, 'a') + "\n" + std::string(99, 'b') + "\n");
    RecordFile file(storage_, {LocatedPath::from(path("long"))}, 100, "table t of schema s");
    EXPECT_EQ(file.count_records(), 2);
    EXPECT_EQ(text(file, 1), std::string(99, 'b'));
    EXPECT_EQ(text(file, 0), std::string(99, 'a'));
}
