// Reading beside programs that change records in place.
#include "storage/settled_file.h"
#include "storage/undo_note.h"

#include "storage/posix_file_system.h"
#include "support/temporary_database.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

using namespace orvane;

namespace {

class SettledFileTest : public testing::Test
{
protected:
    std::string path() const { return folder_.folder() + "/table"; }
    std::string note_path() const { return undo_note_path(path()); }

    std::unique_ptr<WritableFile> open_to_write()
    {
        auto file = files_.open_to_write(path(), Creation::IfMissing);
        EXPECT_TRUE(file.ok()) << file.status().message();
        return std::move(*file);
    }
    std::unique_ptr<SettledFile> open(FilePolicy policy = {})
    {
        auto file = files_.open(path());
        EXPECT_TRUE(file.ok()) << file.status().message();
        return std::make_unique<SettledFile>(files_, std::move(*file), policy, note_path());
    }
    static std::string read(SettledFile &file, std::int64_t offset, std::size_t length)
    {
        std::string text(length, '?');
        const auto got = file.read_at(offset, std::span<char>(text));
        EXPECT_TRUE(got.ok());
        text.resize(got.ok() ? *got : 0);
        return text;
    }
    void write_note(std::int64_t offset, const std::string &bytes, const FileState &about)
    {
        folder_.writeFile(".table.undo", written(UndoNote{about, offset, bytes}));
    }

    TemporaryDatabase folder_;
    PosixFileSystem files_;
};

} // namespace

TEST(UndoNote, is_read_as_it_was_written)
{
    UndoNote note;
    note.file.device = 7;
    note.file.inode = ~std::uint64_t{0};
    note.file.birth_time = 1234567890123456789;
    note.offset = 4090;
    note.bytes = std::string("a\nb\0c", 5);
    const auto read = read_undo_note(written(note));
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->is_about(note.file));
    EXPECT_EQ(read->offset, note.offset);
    EXPECT_EQ(read->bytes, note.bytes);
}

TEST(UndoNote, is_none_while_it_is_not_written_whole)
{
    const std::string text = written(UndoNote{FileState{}, 12, "what was there"});
    for (std::size_t length = 0; length < text.size(); ++length)
        EXPECT_FALSE(read_undo_note(text.substr(0, length))) << length;
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::string other = text;
        other[at] ^= 1;
        EXPECT_FALSE(read_undo_note(other)) << at;
    }
    EXPECT_FALSE(read_undo_note(text + "x"));
}

TEST(UndoNote, lies_hidden_beside_its_table)
{
    EXPECT_EQ(undo_note_path("/data/quakes.origin"), "/data/.quakes.origin.undo");
    EXPECT_EQ(undo_note_path("quakes.origin"), ".quakes.origin.undo");
}

TEST_F(SettledFileTest, shows_what_was_there_while_a_change_is_not_done)
{
    folder_.writeFile("table", "0123456789");
    write_note(4, "abc", *files_.state(path()));
    const auto file = open();
    EXPECT_EQ(read(*file, 0, 10), "0123abc789");
    EXPECT_EQ(read(*file, 0, 4), "0123");
    EXPECT_EQ(read(*file, 5, 1), "b");
    EXPECT_EQ(read(*file, 6, 9), "c789");
    EXPECT_EQ(read(*file, 7, 3), "789");
    std::filesystem::remove(note_path());
    EXPECT_EQ(read(*file, 0, 10), "0123456789");
}

TEST_F(SettledFileTest, leaves_alone_what_a_note_says_of_another_file)
{
    folder_.writeFile("table", "0123456789");
    FileState other = *files_.state(path());
    ++other.inode;
    write_note(4, "abc", other);
    EXPECT_EQ(read(*open(), 0, 10), "0123456789");
}

TEST_F(SettledFileTest, waits_for_a_change_in_place)
{
    folder_.writeFile("table", std::string(10, 'a'));
    const auto writer = open_to_write();
    const auto file = open();
    ASSERT_TRUE(*writer->try_lock(LockKind::Exclusive, content_lock));
    ASSERT_TRUE(write_all(*writer, 0, std::string(5, 'b')).ok());
    std::thread rest([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        ASSERT_TRUE(write_all(*writer, 5, std::string(5, 'b')).ok());
        ASSERT_TRUE(writer->unlock(content_lock).ok());
    });
    EXPECT_EQ(read(*file, 0, 10), std::string(10, 'b'));
    rest.join();
}

TEST_F(SettledFileTest, reads_pieces_under_one_lock)
{
    folder_.writeFile("table", "aaaabbbbccccdd");
    const auto file = open();
    const auto writer = open_to_write();
    std::string buffer(4, '?');
    std::string all;
    const auto take = [&](std::int64_t offset, std::span<const char> piece) {
        EXPECT_EQ(offset, static_cast<std::int64_t>(all.size()));
        all.append(piece.data(), piece.size());
        const auto locked = writer->try_lock(LockKind::Exclusive, content_lock);
        EXPECT_TRUE(locked.ok() && !*locked);
        return all.size() < 12 ? Status() : Status(Code::Format, "enough");
    };
    auto got = file->read_pieces(0, 8, buffer, take);
    ASSERT_TRUE(got.ok());
    EXPECT_EQ(*got, 8);
    EXPECT_EQ(all, "aaaabbbb");
    // A failure ends it, and the lock with it.
    got = file->read_pieces(8, 6, buffer, take);
    EXPECT_EQ(got.status().message(), "enough");
    const auto locked = writer->try_lock(LockKind::Exclusive, content_lock);
    EXPECT_TRUE(locked.ok() && *locked);
}

TEST_F(SettledFileTest, reads_pieces_up_to_the_end_of_the_file)
{
    folder_.writeFile("table", "aaaabbbbcc");
    for (const bool lock : {true, false}) {
        std::string buffer(4, '?');
        std::string all;
        const auto got = open(FilePolicy{.lock = lock})
                             ->read_pieces(0, 12, buffer, [&](std::int64_t, std::span<const char> piece) {
                                 all.append(piece.data(), piece.size());
                                 return Status();
                             });
        ASSERT_TRUE(got.ok());
        EXPECT_EQ(*got, 8);
        EXPECT_EQ(all, "aaaabbbb");
    }
}

TEST_F(SettledFileTest, shows_in_pieces_what_was_there_while_a_change_is_not_done)
{
    folder_.writeFile("table", "aaaaXXXXYYcc");
    write_note(4, "bbbbcc", *files_.state(path()));
    for (const bool held : {false, true}) {
        const auto writer = open_to_write();
        if (held) {
            EXPECT_TRUE(*writer->try_lock(LockKind::Exclusive, content_lock));
        }
        std::string buffer(4, '?');
        std::string all;
        const auto got = open()->read_pieces(0, 12, buffer, [&](std::int64_t, std::span<const char> piece) {
            all.append(piece.data(), piece.size());
            return Status();
        });
        ASSERT_TRUE(got.ok());
        EXPECT_EQ(all, "aaaabbbbcccc");
    }
}

TEST_F(SettledFileTest, reads_on_when_a_lock_is_not_let_go)
{
    folder_.writeFile("table", "0123456789");
    const auto writer = open_to_write();
    ASSERT_TRUE(*writer->try_lock(LockKind::Exclusive, content_lock));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(read(*open(), 0, 10), "0123456789");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(SettledFileTest, does_not_wait_for_appending_and_not_where_nobody_locks)
{
    folder_.writeFile("table", "0123456789");
    const auto writer = open_to_write();
    ASSERT_TRUE(*writer->try_lock(LockKind::Exclusive, writers_lock));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(read(*open(), 0, 10), "0123456789");
    ASSERT_TRUE(*writer->try_lock(LockKind::Exclusive, content_lock));
    EXPECT_EQ(read(*open(FilePolicy{false, false}), 0, 10), "0123456789");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(150));
}

// Every reading is all of one letter or the reading was not settled.
TEST_F(SettledFileTest, never_shows_a_change_half_done_to_any_of_its_threads)
{
    const std::size_t size = 64 << 10;
    folder_.writeFile("table", std::string(size, 'a'));
    const auto file = open();
    std::atomic<bool> stop = false;
    std::atomic<int> torn = 0;
    std::atomic<int> readings = 0;
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i)
        readers.emplace_back([&] {
            std::string text(size, '?');
            while (!stop) {
                const auto got = file->read_at(0, std::span<char>(text));
                torn += !got.ok() || text != std::string(size, text[0]) ? 1 : 0;
                ++readings;
            }
        });
    const auto writer = open_to_write();
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
    int writings = 0;
    while (std::chrono::steady_clock::now() < end) {
        Work work("a test");
        ASSERT_TRUE(wait_for_content_lock(*writer, path(), work).ok());
        EXPECT_TRUE(write_all(*writer, 0, std::string(size, static_cast<char>('a' + ++writings % 20))).ok());
        EXPECT_TRUE(writer->unlock(content_lock).ok());
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    stop = true;
    for (std::thread &reader : readers)
        reader.join();
    EXPECT_EQ(torn, 0);
    EXPECT_GT(readings, 10);
    EXPECT_GT(writings, 10);
}

TEST_F(SettledFileTest, is_of_another_birth_when_its_number_is_used_again)
{
    folder_.writeFile("table", "x");
    const FileState first = *files_.state(path());
    if (first.birth_time == 0)
        GTEST_SKIP() << "this disk doesn't tell when a file was made";
    std::filesystem::remove(path());
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    folder_.writeFile("table", "x");
    EXPECT_FALSE(first.same_file(*files_.state(path())));
}
