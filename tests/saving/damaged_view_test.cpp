// Saved views that were damaged: refused with their place, never wrong, never a crash.
#include "saving/saved.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

class DamagedViews : public testing::Test
{
protected:
    DamagedViews()
    {
        files.addTable("arrival", {{"KIV", "100.5", "1", "-1", "P"},
                                   {"AAK", "99.0", "2", "-1", "S"},
                                   {"KIV", "90.0", "3", "-1", "P"}});
        files.addTable("assoc", {{"2", "10", "AAK", "S"}, {"3", "10", "KIV", "P"}, {"9", "11", "KIV", "P"}});
        const Opened open(files.path());
        const Dbptr joined = dbjoin(open.table("assoc"), open.table("arrival"), Names({"arid"}), nullptr, 1,
                                    nullptr, "joined");
        const Dbptr groups = dbgroup(joined, Names({"orid"}), "groups", 1);
        before = described(groups);
        Stream stream;
        EXPECT_EQ(dbwrite_view(groups, stream), 0) << take_log();
        whole = stream.text();
    }

    // What the library says of a text as a view, by way of a file and of a stream; empty where it takes it.
    std::string complaint(const std::string &text)
    {
        files.writeFile("quakes.damaged", text);
        std::string said;
        {
            const Notices notices;
            const Opened open(files.path());
            const Dbptr view = open.table("damaged");
            if (view.table < 0) {
                said = take_log();
                EXPECT_THAT(notices.text, HasSubstr("quakes.damaged:")) << text;
            } else if (integer(view, dbRECORD_COUNT) == 0) {
                said = take_log();
                EXPECT_EQ(dbungroup(view, nullptr).table < 0, true) << text;
                take_log();
            } else {
                EXPECT_EQ(described(view), before) << text;
            }
            EXPECT_EQ(take_log(), "");
        }
        const Opened open(files.path());
        elog_clear();
        const bool is_taken = dbread_view(open.pointer, Stream(text), "read").table >= 0;
        EXPECT_EQ(is_taken, said.empty()) << text;
        EXPECT_EQ(take_log().empty(), is_taken);
        return said;
    }

    std::string changed(const std::string &from, const std::string &to) const
    {
        std::string text = whole;
        text.replace(text.find(from), from.size(), to);
        return text;
    }

    TemporaryDatabase files;
    std::string whole;
    std::string before;
};

TEST_F(DamagedViews, AreToldFromWholeOnes)
{
    EXPECT_EQ(complaint(whole), "");
}

TEST_F(DamagedViews, AreRefusedWithTheirPlace)
{
    EXPECT_THAT(complaint(changed("saved-view: 1", "saved-view: 2")),
                HasSubstr("quakes.damaged:1:13: saved-view: form 2"));
    EXPECT_THAT(complaint(changed("schema: \"small\"", "schema: \"large\"")),
                HasSubstr("quakes.damaged:3:9: schema: the view is of"));
    EXPECT_THAT(complaint(changed("table: \"assoc\"", "table: \"asoc\"")),
                HasSubstr("has no table 'asoc'; near it: assoc"));
    EXPECT_THAT(complaint(changed("records: 3", "records: -3")),
                HasSubstr("records: '-3' is not a number below"));
    EXPECT_THAT(complaint(changed("members: [0, 1]", "members: [0, 2]")),
                HasSubstr("'2' is no part before this one"));
    EXPECT_THAT(complaint(changed("members: [0, 1]", "members: [0, 0]")),
                HasSubstr("members: 0 is there twice"));
    EXPECT_THAT(complaint(changed("of: 2", "of: 0")), HasSubstr("of: the number of a view was expected"));
    EXPECT_THAT(complaint(changed("keys: [\"assoc.orid\"]", "keys: [\"assoc.or\"]")),
                HasSubstr("has no field 'assoc.or'"));
    EXPECT_THAT(complaint(changed("parts:", "part:")), HasSubstr("unknown key 'part'"));
    EXPECT_THAT(complaint(changed("schema:", "schema: [")), HasSubstr("quakes.damaged:"));
    EXPECT_THAT(complaint(changed("\n0 1\n", "\n0 7\n")),
                HasSubstr(": a row of view joined was expected: the number of a "
                          "record, or -, of assoc below 3, arrival below 3"));
    EXPECT_THAT(complaint(changed("\n0 1\n", "\n01 1\n")), HasSubstr("a row of view joined was expected"));
    EXPECT_THAT(complaint(changed("\n0 1\n", "\n0 \n")), HasSubstr("a row of view joined was expected"));
    EXPECT_THAT(complaint(changed("\n0 1\n", "\n0 2\n")), HasSubstr("the checksum is not that of the text"));
    EXPECT_THAT(complaint(changed("\n0 2\n2 3\n", "\n0 2\n1 3\n")),
                HasSubstr("bundle 1 of groups was expected: two numbers, 2 and"));
    EXPECT_THAT(complaint(whole + "more\n"), HasSubstr("the end of the file was expected behind this line"));
    EXPECT_THAT(complaint(whole.substr(0, whole.size() - 1)), HasSubstr("the line has no end"));
    EXPECT_THAT(complaint(whole.substr(0, whole.find("\nend") + 1)),
                HasSubstr("the text ends where the line 'end'"));
}

// One byte changed anywhere is noticed, as the checksum is of all that stands before it.
TEST_F(DamagedViews, AreNoticedWhereverAByteIsAnother)
{
    std::mt19937_64 random(20);
    for (size_t at = std::string("saved-view: ").size(); at < whole.size(); ++at) {
        std::string text = whole;
        text[at] = static_cast<char>(text[at] ^ static_cast<char>(1 + random() % 255));
        const std::string said = complaint(text);
        EXPECT_NE(said, "") << "byte " << at << "\n" << text;
        EXPECT_THAT(said, HasSubstr("quakes.damaged:")) << text;
    }
}

TEST_F(DamagedViews, AreNoticedWhereTheyAreCutShort)
{
    for (size_t size = std::string("saved-view: ").size(); size < whole.size(); ++size)
        EXPECT_NE(complaint(whole.substr(0, size)), "") << size;
}

TEST_F(DamagedViews, NeverCrashTheReader)
{
    std::mt19937_64 random(21);
    for (int round = 0; round < 300; ++round) {
        std::string text = whole;
        for (int change = 0; change < 4; ++change) {
            const size_t at = 12 + random() % (text.size() - 12);
            const size_t length = std::min<size_t>(random() % 20, text.size() - at);
            switch (random() % 3) {
            case 0:
                text.erase(at, length);
                break;
            case 1:
                text.insert(at, text.substr(12 + random() % (text.size() - 12), length));
                break;
            default:
                text[at] = static_cast<char>(random());
            }
        }
        if (text != whole) {
            EXPECT_NE(complaint(text), "") << text;
        }
    }
}

} // namespace
