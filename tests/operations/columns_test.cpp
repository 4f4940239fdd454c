// Decoded columns: the same values as fields have, within a budget, as true as the file.
#include "operations/derived.h"

#include "column/column_cache.h"
#include "column/column_decoder.h"
#include "column/number_decoding.h"
#include "db/watched_file_system.h"
#include "storage/storage.h"
#include "table/base_table.h"
#include "table/field_value.h"
#include "work/machine_memory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <random>
#include <thread>
#include <unistd.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

// Fields as files from elsewhere have them, and some that are no numbers.
const char *const written_numbers[] = {
    "1",
    " 1",
    "1 ",
    "   -1  ",
    "+5",
    "+-5",
    "-+5",
    "007",
    "-0",
    "-0.0000",
    "12.5",
    "12.",
    ".5",
    ".",
    "-",
    "",
    "  ",
    "1e3",
    "1E-3",
    "1e400",
    "nan",
    "inf",
    "1 2",
    "1\t",
    "\t1",
    "0x10",
    "1,5",
    "9007199254740993",
    "9007199254740992.5",
    "123456789012345678",
    "1234567890123456789",
    "12345678901234567890",
    "-9223372036854775808",
    "9223372036854775807",
    "9223372036854775808",
    "0.1",
    "0.30000000000000004",
    "179.99999999999997",
    "1202256000.12345",
    "-9999999999.99900",
    "-9999999999.999",
    "999999999999999999",
    "0.000000000000000001",
    "2008/02/06",
    "2014-03-03T110706",
    "2008038",
    "abc",
    "12a",
    "1-",
    "--1",
};

TEST(NumberDecoding, AgreesWithTheValuesOfFields)
{
    for (const std::string text : written_numbers) {
        int64_t integer = 0;
        double real = 0;
        const char *begin = text.data();
        if (orvane::decode_plain_integer(begin, begin + text.size(), integer)) {
            ASSERT_TRUE(orvane::decode_integer(text)) << text;
            EXPECT_EQ(integer, *orvane::decode_integer(text)) << text;
        }
        if (orvane::decode_plain_real(begin, begin + text.size(), real)) {
            ASSERT_TRUE(orvane::decode_real(text)) << text;
            EXPECT_EQ(real, *orvane::decode_real(text)) << text;
            EXPECT_EQ(std::signbit(real), std::signbit(*orvane::decode_real(text))) << text;
        }
    }
    std::mt19937_64 random(5);
    for (int i = 0; i < 200000; ++i) {
        char text[64];
        std::snprintf(text, sizeof text, "%*.*f", static_cast<int>(random() % 20),
                      static_cast<int>(random() % 8),
                      static_cast<double>(static_cast<int64_t>(random())) /
                          std::pow(10.0, static_cast<double>(random() % 25)));
        double real = 0;
        const size_t length = std::strlen(text);
        if (!orvane::decode_plain_real(text, text + length, real))
            continue;
        ASSERT_EQ(real, *orvane::decode_real(text)) << text;
    }
}

class Columns : public testing::Test
{
protected:
    Columns()
    {
        elog_set_notice_hook(
            [](const char *text, void *list) {
                static_cast<std::vector<std::string> *>(list)->emplace_back(text);
            },
            &notices);
    }
    ~Columns() override { elog_set_notice_hook(nullptr, nullptr); }

    TemporaryDatabase files;
    std::vector<std::string> notices;
};

TEST_F(Columns, HaveTheValuesThatFieldsHave)
{
    // One record per text, in a field of each number type.
    std::string text;
    const auto field = [](std::string value, size_t width) {
        value.resize(width, ' ');
        return value;
    };
    size_t records = 0;
    for (const std::string value : written_numbers) {
        if (value.size() > 9)
            continue;
        text += field(value, 2) + " " + field(value, 8) + " " + field(value, 9) + " " + field(value, 17) +
                " " + field(value, 8) + " " + field(value, 6) + " " + field("-", 16) + " " +
                field("1.0", 17) + "\n";
        ++records;
    }
    files.writeFile("quakes.kinds", text);
    const Opened open(files.path());
    const Dbptr kinds = open.table("kinds");
    const Dbptr everything = dbsubset(kinds, "1 == 1", nullptr);
    ASSERT_EQ(integer(everything, dbRECORD_COUNT), static_cast<int64_t>(records)) << take_log();
    for (const char *name : {"flag", "orid", "lat", "time", "jdate"}) {
        // Every value that is one is found by itself; what is none counts as null.
        Dbptr at = dblookup(kinds, "", "", name, "");
        for (at.record = 0; at.record < static_cast<int64_t>(records); ++at.record) {
            DbValue value{};
            char expression[80];
            if (dbgetv(at, nullptr, &value) < 0)
                std::snprintf(expression, sizeof expression, "isnull(%s)", name);
            else if (value.type == dbREAL || value.type == dbTIME)
                std::snprintf(expression, sizeof expression, "%s == %.17g", name, value.real);
            else
                std::snprintf(expression, sizeof expression, "%s == %lld", name,
                              static_cast<long long>(value.integer));
            elog_clear();
            Dbptr from = kinds;
            from.record = at.record - 1;
            if (at.record == 0)
                from.record = dbALL;
            EXPECT_EQ(dbfind(from, expression, 0, nullptr), at.record)
                << expression << " in '" << get(at) << "' " << take_log();
        }
    }
}

TEST_F(Columns, TellOfValuesThatAreNone)
{
    files.addTable("arrival", {{"AAK", "abc", "1"}, {"KIV", "5.0", "x"}, {"KIV", "", "3"}});
    const Opened open(files.path());
    EXPECT_THAT(column(dbsubset(open.table("arrival"), "isnull(time)", nullptr), "sta"),
                ElementsAre("AAK", "KIV"));
    EXPECT_THAT(notices,
                ElementsAre(HasSubstr("field time: 2 values are not of type time and count as null")));
    EXPECT_EQ(take_log(), "");
    EXPECT_THAT(column(dbsort(open.table("arrival"), Names{"arid"}, 0, nullptr), "sta"),
                ElementsAre("KIV", "AAK", "KIV"));
}

TEST_F(Columns, OfARecordWithoutALineFeedAtItsEndAreRefused)
{
    files.addTable("event", {{"1", "1", "a"}, {"2", "2", "b"}, {"3", "3", "c"}});
    std::string text = TemporaryDatabase::readFile(files.tablePath("event"));
    const size_t size = text.size() / 3;
    text[2 * size - 1] = ' '; // the middle record's
    files.writeFile("quakes.event", text);
    const Opened open(files.path());
    EXPECT_LT(dbsort(open.table("event"), Names{"evid"}, 0, nullptr).table, 0);
    EXPECT_THAT(take_log(), HasSubstr("record 1, bytes"));
}

// As it is when its fields are asked for one by one.
TEST_F(Columns, OfARecordWithALineFeedWithinAreRefused)
{
    files.addTable("event", {{"1", "1", "a"}, {"2", "2", "b"}, {"3", "3", "c"}});
    std::string text = TemporaryDatabase::readFile(files.tablePath("event"));
    const size_t size = text.size() / 3;
    text[2 * size + 10] = '\n';
    files.writeFile("quakes.event", text);
    const auto complaint = HasSubstr("record 2, bytes " + std::to_string(2 * size) + " to " +
                                     std::to_string(3 * size - 1) + ", has a line feed at byte " +
                                     std::to_string(2 * size + 10) + ", before its end; mend the file");
    const Opened open(files.path());
    EXPECT_LT(dbsubset(open.table("event"), "evid > 5", nullptr).table, 0);
    EXPECT_THAT(take_log(), complaint);
    EXPECT_EQ(get(open.field("event", "evid", 2)), "(-4)");
    EXPECT_THAT(take_log(), complaint);
}

TEST_F(Columns, AreKeptAndReadOnce)
{
    WatchedFileSystem watched;
    const orvane::ScopedFileSystem scope(watched);
    files.addTable("event", {{"2", "1", "a"}, {"1", "2", "b"}});
    std::this_thread::sleep_for(std::chrono::milliseconds(80)); // the file's time tells of later changes
    const Opened open(files.path());
    EXPECT_GE(dbsort(open.table("event"), Names{"evid"}, 0, nullptr).table, 0);
    watched.forget();
    EXPECT_THAT(column(dbsort(open.table("event"), Names{"evid"}, dbSORT_REVERSE, nullptr), "auth"),
                ElementsAre("a", "b"));
    EXPECT_LE(watched.reads("quakes.event"), 1); // the cells that were looked at
    // Several fields are decoded in one reading.
    watched.forget();
    EXPECT_GE(dbsort(open.table("event"), Names{"prefor", "auth"}, 0, nullptr).table, 0);
    EXPECT_EQ(watched.reads("quakes.event"), 1);
}

TEST_F(Columns, FollowAFileThatGrowsIsReplacedOrChangedInPlace)
{
    files.addTable("event", {{"2", "1", "a"}, {"1", "2", "b"}});
    const Opened open(files.path());
    const auto ordered = [&] {
        return column(dbsort(open.table("event"), Names{"evid"}, 0, nullptr), "auth");
    };
    EXPECT_THAT(ordered(), ElementsAre("b", "a"));
    files.appendRows("event", {{"0", "3", "c"}});
    EXPECT_THAT(ordered(), ElementsAre("c", "b", "a"));
    std::filesystem::rename(files.tablePath("event"), files.tablePath("event") + ".old");
    files.addTable("event", {{"7", "1", "x"}, {"6", "1", "y"}, {"5", "1", "z"}});
    EXPECT_THAT(ordered(), ElementsAre("z", "y", "x"));
    files.addTable("event", {{"5", "1", "x"}, {"6", "1", "y"}, {"7", "1", "z"}});
    EXPECT_THAT(ordered(), ElementsAre("x", "y", "z"));
    std::filesystem::remove(files.tablePath("event"));
    EXPECT_THAT(ordered(), IsEmpty());
}

TEST_F(Columns, OfAFileThatIsCutShortWhileItIsReadAreReadAnew)
{
    WatchedFileSystem watched;
    const orvane::ScopedFileSystem scope(watched);
    files.addTable("event", {{"2", "1", "a"}, {"1", "2", "b"}, {"0", "2", "c"}});
    const Opened open(files.path());
    const int64_t size = integer(open.table("event"), dbRECORD_SIZE);
    integer(open.table("event"), dbRECORD_COUNT);
    bool cut = false;
    watched.before_read = [&](const std::string &path) {
        if (!cut && path.ends_with("quakes.event")) {
            cut = true;
            std::filesystem::resize_file(path, static_cast<uintmax_t>(2 * size));
        }
    };
    const Dbptr view = dbsort(open.table("event"), Names{"evid"}, 0, nullptr);
    watched.before_read = nullptr;
    ASSERT_GE(view.table, 0) << take_log();
    EXPECT_THAT(column(view, "auth"), ElementsAre("b", "a"));
}

TEST_F(Columns, OfAFileThatCannotBeReadAreAnErrorWithItsReason)
{
    WatchedFileSystem watched;
    const orvane::ScopedFileSystem scope(watched);
    files.addTable("event", {{"2", "1", "a"}});
    std::this_thread::sleep_for(std::chrono::milliseconds(80));
    const Opened open(files.path());
    EXPECT_EQ(integer(open.table("event"), dbRECORD_COUNT), 1); // its form is known from here on
    watched.failing_reads["quakes.event"] = EIO;
    EXPECT_LT(dbsort(open.table("event"), Names{"evid"}, 0, nullptr).table, 0);
    EXPECT_THAT(take_log(), HasSubstr("Input/output error"));
    EXPECT_EQ(integer(open.pointer, dbTABLE_COUNT), 7);
    watched.failing_reads.clear();
    EXPECT_GE(dbsort(open.table("event"), Names{"evid"}, 0, nullptr).table, 0);
}

TEST(ColumnCache, KeepsTheMostRecentlyUsedWithinItsBudget)
{
    orvane::Attribute attribute;
    attribute.type = orvane::FieldType::Integer;
    const auto column = [&](int64_t count) { return orvane::new_column(attribute, count); };
    const size_t one = column(1000)->bytes();
    orvane::ColumnCache cache(2 * one + one / 2);
    cache.keep(1, 0, column(1000));
    cache.keep(1, 1, column(1000));
    EXPECT_TRUE(cache.find(1, 0));
    cache.keep(2, 0, column(1000));
    EXPECT_FALSE(cache.find(1, 1));
    EXPECT_TRUE(cache.find(1, 0));
    EXPECT_TRUE(cache.find(2, 0));
    EXPECT_EQ(cache.used_bytes(), 2 * one);
    cache.keep(3, 0, column(100000)); // larger than all of it
    EXPECT_FALSE(cache.find(3, 0));
    EXPECT_TRUE(cache.find(1, 0));
    cache.drop(1);
    EXPECT_FALSE(cache.find(1, 0));
    EXPECT_TRUE(cache.find(2, 0));
    cache.drop(2);
    EXPECT_EQ(cache.used_bytes(), 0u);
}

std::size_t memoryLeft = 0;

TEST(ColumnCache, LetsGoOfColumnsWhenTheMachineIsShortOfMemory)
{
    orvane::Attribute attribute;
    attribute.type = orvane::FieldType::Integer;
    const auto column = [&] { return orvane::new_column(attribute, 1 << 20); };
    const size_t one = column()->bytes();
    orvane::ColumnCache cache(10 * one, [] { return memoryLeft; });
    memoryLeft = 100 * one;
    EXPECT_TRUE(cache.has_room_for(9 * one));
    EXPECT_FALSE(cache.has_room_for(11 * one)); // the budget
    cache.keep(1, 0, column());
    cache.keep(1, 1, column());
    EXPECT_TRUE(cache.find(1, 0) && cache.find(1, 1));
    memoryLeft = 2 * one;
    EXPECT_FALSE(cache.has_room_for(9 * one));
    EXPECT_TRUE(cache.has_room_for(2 * one)); // in the place of those that are kept
    EXPECT_TRUE(cache.has_room_for(1000));
    cache.keep(1, 2, column());
    EXPECT_FALSE(cache.find(1, 0) || cache.find(1, 1));
    EXPECT_TRUE(cache.find(1, 2));
    EXPECT_EQ(cache.used_bytes(), one);
}

TEST(MachineMemory, IsNoMoreThanTheMachineHas)
{
    EXPECT_GT(orvane::machine_memory(), 64u << 20);
    EXPECT_LE(orvane::machine_memory(),
              static_cast<size_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<size_t>(sysconf(_SC_PAGE_SIZE)));
    EXPECT_GT(orvane::available_memory(), 0u);
    EXPECT_LE(orvane::available_memory(), orvane::machine_memory());
}

TEST(ColumnBudget, IsWhatTheEnvironmentSays)
{
    const char *before = std::getenv("ORVANE_COLUMN_BUDGET");
    const std::string kept = before ? before : "";
    const auto budget = [](const char *setting) {
        setenv("ORVANE_COLUMN_BUDGET", setting, 1);
        return orvane::column_budget();
    };
    EXPECT_EQ(budget("1000"), 1000u);
    EXPECT_EQ(budget("2K"), 2048u);
    EXPECT_EQ(budget("3M"), 3u << 20);
    EXPECT_EQ(budget("1G"), 1u << 30);
    const size_t usual = budget("");
    EXPECT_GT(usual, 16u << 20);
    for (const char *wrong : {"much", "5X", "-1", "2KB", "99999999999999999999G"})
        EXPECT_EQ(budget(wrong), usual) << wrong;
    if (before)
        setenv("ORVANE_COLUMN_BUDGET", kept.c_str(), 1);
    else
        unsetenv("ORVANE_COLUMN_BUDGET");
}

TEST(TextEntries, GiveEachTextOneCode)
{
    orvane::TextEntries entries;
    std::vector<std::string> texts;
    for (int i = 0; i < 20000; ++i)
        texts.push_back("text " + std::to_string(i * 7919) + std::string(static_cast<size_t>(i % 40), 'x'));
    texts.emplace_back();
    texts.push_back(std::string(100000, 'y'));
    for (const std::string &text : texts)
        EXPECT_EQ(entries.find(text), orvane::TextEntries::none);
    std::vector<std::string_view> first_views;
    for (size_t i = 0; i < texts.size(); ++i) {
        ASSERT_EQ(entries.code_of(texts[i]), i);
        first_views.push_back(entries.text(static_cast<uint32_t>(i)));
    }
    for (size_t i = 0; i < texts.size(); ++i) {
        ASSERT_EQ(entries.code_of(texts[i]), i);
        ASSERT_EQ(entries.find(texts[i]), i);
        ASSERT_EQ(first_views[i], texts[i]);
        ASSERT_EQ(first_views[i].data(), entries.text(static_cast<uint32_t>(i)).data());
    }
    const auto &ranks = entries.ranks();
    std::vector<std::string> ordered = texts;
    std::sort(ordered.begin(), ordered.end());
    for (size_t i = 0; i < texts.size(); ++i)
        ASSERT_EQ(ordered[ranks[i]], texts[i]);
}

} // namespace
