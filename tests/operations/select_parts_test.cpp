// dbselect of more rows than one part of the writing has: the same lines as made one by one, whoever made
// them.
#include "operations/derived.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <thread>

using testing::HasSubstr;

namespace {

// Fields that lie across and on the words in which records are looked at, and one that is wider than these.
constexpr const char *schema = R"yaml(name: wide
attributes:
  id: {type: integer, width: 8, format: "%8d", null: "-1"}
  value: {type: real, width: 17, format: "%17.5f", null: "-999.00000"}
  word: {type: string, width: 6, format: "%-6s", null: "-"}
  edge: {type: string, width: 64, format: "%-64s", null: "-"}
  remark: {type: string, width: 80, format: "%-80s", null: "-"}
  one: {type: string, width: 1, format: "%-1s", null: "-"}
  other: {type: integer, width: 8, format: "%8d", null: "-1"}
relations:
  many: {fields: [id, value, word, edge, remark, one]}
  more: {fields: [other, word, one]}
  few: {fields: [one]}
)yaml";

constexpr int widths_of_many[] = {8, 17, 6, 64, 80, 1};

std::string any_text(std::mt19937 &random, size_t width)
{
    static constexpr char often[] = "     abcdefgh";
    static constexpr char rarely[] = ",\"\t\r;|\x01\xff";
    std::string text(width, ' ');
    const bool is_plain = random() % 4 != 0;
    const size_t end = random() % (width + 1);
    for (size_t i = random() % 3; i < end; ++i)
        text[i] = is_plain || random() % 3 != 0 ? often[random() % (sizeof often - 1)]
                                                : rarely[random() % (sizeof rarely - 1)];
    return text;
}

std::string many_record(std::mt19937 &random, int id)
{
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, "%8d %17.5f", random() % 20 == 0 ? -1 : id,
                  random() % 20 == 0 ? -999.0 : static_cast<double>(random() % 100000) / 8);
    std::string record = numbers;
    for (size_t field = 2; field < std::size(widths_of_many); ++field)
        record += " " + any_text(random, static_cast<size_t>(widths_of_many[field]));
    return record + "\n";
}

// A stream that keeps what comes, and refuses what is more than a limit.
class Sink
{
public:
    explicit Sink(size_t limit = SIZE_MAX) : limit_(limit)
    {
        cookie_io_functions_t functions{};
        functions.write = [](void *self, const char *bytes, size_t size) -> ssize_t {
            auto &sink = *static_cast<Sink *>(self);
            std::this_thread::sleep_for(sink.delay);
            if (sink.text.size() + size > sink.limit_) {
                errno = ENOSPC;
                return 0;
            }
            sink.text.append(bytes, size);
            return static_cast<ssize_t>(size);
        };
        stream_ = fopencookie(this, "w", functions);
    }
    ~Sink() { std::fclose(stream_); }
    Sink(const Sink &) = delete;
    Sink &operator=(const Sink &) = delete;
    operator FILE *() const { return stream_; }

    std::string text;
    std::chrono::milliseconds delay{0};

private:
    size_t limit_;
    FILE *stream_;
};

std::vector<std::string> fields_of(Dbptr db)
{
    Tbl *list = nullptr;
    EXPECT_EQ(dbquery(db, dbTABLE_FIELDS, &list), 0);
    std::vector<std::string> names;
    for (int i = 0; i < maxtbl(list); ++i)
        names.emplace_back(static_cast<const char *>(gettbl(list, i)));
    freetbl(list, std::free);
    return names;
}

std::string quoted(const std::string &text, const std::string &separator, bool alone)
{
    if (text.find_first_of(separator + "\"\r\n") == std::string::npos && !(alone && text.empty()))
        return text;
    std::string out = "\"";
    for (const char c : text)
        out += c == '"' ? "\"\"" : std::string(1, c);
    return out + "\"";
}

// The lines by the records that dbget answers one by one; `fields`: their places and widths in them.
struct Place {
    size_t offset;
    size_t width;
};
std::string lines_of(Dbptr rows, int64_t first, int64_t end, const std::vector<Place> &places,
                     const std::string &separator, int flag)
{
    std::string lines;
    for (rows.record = first; rows.record < end; ++rows.record) {
        const std::string record = get(rows);
        for (size_t i = 0; i < places.size(); ++i) {
            std::string text = record.substr(places[i].offset, places[i].width);
            if (flag == 1) {
                const size_t begin = text.find_first_not_of(" \t");
                text = begin == std::string::npos
                           ? ""
                           : text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
                text = quoted(text, separator, places.size() == 1);
            }
            lines += (i > 0 ? separator : "") + text;
        }
        lines += '\n';
    }
    return lines;
}

std::vector<Place> places_of(std::initializer_list<int> widths)
{
    std::vector<Place> places;
    size_t offset = 0;
    for (const int width : widths) {
        places.push_back({offset, static_cast<size_t>(width)});
        offset += static_cast<size_t>(width) + 1;
    }
    return places;
}

class SelectParts : public testing::Test
{
protected:
    static constexpr int record_size = 8 + 17 + 6 + 64 + 80 + 1 + 6; // 182
    // The first lines and some parts of 512 KiB, of which the last is not full.
    static constexpr int rows = 256 + 5 * ((512 << 10) / record_size) + 100;

    SelectParts()
    {
        std::mt19937 random(7);
        std::string text;
        for (int i = 0; i < rows; ++i)
            text += many_record(random, static_cast<int>(random() % 3000));
        files.writeFile("quakes.many", text);
        text.clear();
        for (int i = 0; i < 2000; ++i) {
            char number[16];
            std::snprintf(number, sizeof number, "%8d", static_cast<int>(random() % 4000));
            text += number + (" " + any_text(random, 6)) + " " + any_text(random, 1) + "\n";
        }
        files.writeFile("quakes.more", text);
        open = std::make_unique<Opened>(files.path());
    }
    ~SelectParts() override { dbset_progress_hook(nullptr, nullptr); }

    const std::vector<Place> all = places_of({8, 17, 6, 64, 80, 1});
    const std::vector<Place> all_joined = places_of({8, 17, 6, 64, 80, 1, 8, 6, 1});

    // What is written of all rows in some forms is what they are.
    void compare(Dbptr table, const std::vector<Place> &places) const
    {
        const int64_t count = integer(table, dbRECORD_COUNT);
        for (const auto &[separator, flag] :
             {std::pair(",", 1), {"\t", 1}, {" ", 1}, {"|;", 1}, {"||", 1}, {" ", 0}, {"", 0}, {", ", 0}}) {
            const Sink sink;
            ASSERT_EQ(dbselect(table, nullptr, sink, separator, flag), 0) << take_log();
            ASSERT_TRUE(sink.text == lines_of(table, 0, count, places, separator, flag))
                << "separator '" << separator << "', flag " << flag;
        }
        EXPECT_EQ(take_log(), "");
    }

    TemporaryDatabase files{"wide", schema};
    std::unique_ptr<Opened> open;
};

TEST_F(SelectParts, OfATableAreItsRecords)
{
    ASSERT_EQ(integer(open->table("many"), dbRECORD_COUNT), rows);
    compare(open->table("many"), all);
}

TEST_F(SelectParts, OfAViewAreItsRowsInTheirOrder)
{
    compare(dbsubset(open->table("many"), "id % 3 == 1", nullptr), all);
    compare(dbsort(open->table("many"), Names{"value", "word"}, dbSORT_REVERSE, nullptr), all);
}

TEST_F(SelectParts, OfAJoinAreThoseOfAllMembersWithNullRecords)
{
    // Rows without a match are there, too, and field lists that leave members out.
    const Dbptr joined =
        dbjoin(open->table("many"), open->table("more"), Names{"id"}, Names{"other"}, 1, nullptr, nullptr);
    ASSERT_GT(integer(joined, dbRECORD_COUNT), rows);
    compare(joined, all_joined);
    const int64_t count = integer(joined, dbRECORD_COUNT);
    const Sink sink;
    ASSERT_EQ(dbselect(joined, Names({"other", "remark", "more.one", "id", "other"}), sink, ",", 1), 0);
    EXPECT_TRUE(sink.text ==
                lines_of(joined, 0, count,
                         {all_joined[6], all_joined[4], all_joined[8], all_joined[0], all_joined[6]}, ",",
                         1));
}

TEST_F(SelectParts, EndWhereTheRowsDo)
{
    const int part = (512 << 10) / record_size;
    std::mt19937 random(11);
    for (const int count : {0, 1, 255, 256, 257, part - 1, part, part + 1, 256 + part - 1, 256 + part,
                            256 + part + 1, 256 + 2 * part, 256 + 4 * part + 1})
        for (const int first : {0, 1, static_cast<int>(random() % 3000)}) {
            if (count == 0 || first + count > rows)
                continue;
            const Sink sink;
            ASSERT_EQ(dbselect(dbrow_range(open->table("many"), first, first + count), nullptr, sink, ",", 1),
                      0);
            ASSERT_TRUE(sink.text == lines_of(open->table("many"), first, first + count, all, ",", 1))
                << count << " from " << first;
        }
}

TEST_F(SelectParts, OfOneFieldQuoteWhatIsEmpty)
{
    for (const size_t field : {2, 3, 4, 5}) {
        const std::string name = fields_of(open->table("many"))[field];
        const Sink sink;
        ASSERT_EQ(dbselect(open->table("many"), Names{name.c_str()}, sink, ",", 1), 0);
        EXPECT_TRUE(sink.text == lines_of(open->table("many"), 0, rows, {all[field]}, ",", 1));
        EXPECT_THAT(sink.text, HasSubstr("\"\"\n"));
    }
}

// ---- What goes wrong on the way ------------------------------------------------------------------

TEST_F(SelectParts, BeforeOneThatCannotBeReadAreWritten)
{
    // The line feed of a record in the fourth part is out of place.
    const int64_t bad = 256 + 3 * ((512 << 10) / record_size) + 17;
    std::string text = TemporaryDatabase::readFile(files.tablePath("many"));
    const std::string good = lines_of(open->table("many"), 0, bad, all, ",", 1);
    text[static_cast<size_t>(bad) * record_size + 5] = '\n';
    files.writeFile("quakes.many", text);
    Opened other(files.path());
    const Sink sink;
    EXPECT_EQ(dbselect(other.table("many"), nullptr, sink, ",", 1), dbERROR_FORMAT);
    EXPECT_THAT(take_log(), HasSubstr("record " + std::to_string(bad)));
    EXPECT_TRUE(good.starts_with(sink.text));
    EXPECT_GE(sink.text.size(), good.size() * 3 / 4); // the parts before
    EXPECT_LT(sink.text.size(), good.size());
}

TEST_F(SelectParts, ThatADiskHasNoRoomForSaySo)
{
    const std::string whole = lines_of(open->table("many"), 0, rows, all, ",", 1);
    for (const size_t limit : {size_t{0}, size_t{100000}, whole.size() / 2, whole.size() - 1}) {
        const Sink sink(limit);
        EXPECT_EQ(dbselect(open->table("many"), nullptr, sink, ",", 1), dbERROR_IO);
        EXPECT_EQ(take_log(), "dbselect: output: cannot write: No space left on device");
        EXPECT_TRUE(whole.starts_with(sink.text));
    }
    const Sink sink(whole.size());
    EXPECT_EQ(dbselect(open->table("many"), nullptr, sink, ",", 1), 0);
    EXPECT_TRUE(sink.text == whole);
}

struct Hook {
    const std::thread::id caller = std::this_thread::get_id();
    int calls = 0;
    int stop_at = 0; // 0: never
    double last = 0;

    static int call(double fraction, void *data)
    {
        auto &hook = *static_cast<Hook *>(data);
        EXPECT_EQ(std::this_thread::get_id(), hook.caller);
        EXPECT_GE(fraction, hook.last);
        hook.last = fraction;
        return ++hook.calls == hook.stop_at ? 1 : 0;
    }
};

TEST_F(SelectParts, TellHowFarTheyAreInTheCallersThread)
{
    Hook hook;
    dbset_progress_hook(&Hook::call, &hook);
    for (const bool sorted : {false, true}) {
        Sink sink;
        sink.delay = std::chrono::milliseconds(120);
        const Dbptr table =
            sorted ? dbsort(open->table("many"), Names{"value"}, 0, nullptr) : open->table("many");
        hook.calls = 0;
        hook.last = 0;
        EXPECT_EQ(dbselect(table, nullptr, sink, ",", 1), 0) << take_log();
        EXPECT_GE(hook.calls, 5);
        EXPECT_GT(hook.last, 0.5);
    }
}

TEST_F(SelectParts, ThatAreCancelledEndAtOnce)
{
    const std::string whole = lines_of(open->table("many"), 0, rows, all, ",", 1);
    for (const int stop_at : {1, 3}) {
        Hook hook;
        hook.stop_at = stop_at;
        dbset_progress_hook(&Hook::call, &hook);
        Sink sink;
        sink.delay = std::chrono::milliseconds(120);
        EXPECT_EQ(dbselect(open->table("many"), nullptr, sink, ",", 1), dbERROR_CANCELLED);
        EXPECT_EQ(take_log(), "dbselect: cancelled");
        EXPECT_EQ(hook.calls, stop_at); // nor is it asked again
        EXPECT_TRUE(whole.starts_with(sink.text));
        EXPECT_LT(sink.text.size(), whole.size());
    }
}

} // namespace
