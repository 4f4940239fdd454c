#include "operations/derived.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

// "left keys / right keys", or what the log says.
std::string keysOf(const Opened &open, const char *left, const char *right)
{
    Tbl *ofLeft = nullptr;
    Tbl *ofRight = nullptr;
    if (dbfind_join_keys(open.table(left), open.table(right), &ofLeft, &ofRight) < 0)
        return take_log();
    std::string text;
    for (const std::string &key : texts_of(ofLeft))
        text += key + " ";
    text += "/";
    for (const std::string &key : texts_of(ofRight))
        text += " " + key;
    return text;
}

std::vector<std::string> candidates(Dbptr table)
{
    Tbl *tables = nullptr;
    return dbfind_join_tables(table, &tables) < 0 ? std::vector<std::string>{"(failed)"} : texts_of(tables);
}

class PublicStandard : public testing::Test
{
protected:
    std::unique_ptr<TemporaryDatabase> files = TemporaryDatabase::ofPublicStandard();
    Opened open{files->path()};
};

TEST_F(PublicStandard, JoinsAsASeismologistExpects)
{
    EXPECT_EQ(keysOf(open, "arrival", "assoc"), "arid / arid");
    EXPECT_EQ(keysOf(open, "assoc", "origin"), "orid / orid");
    EXPECT_EQ(keysOf(open, "origin", "event"), "evid / evid");
    EXPECT_EQ(keysOf(open, "arrival", "site"), "sta jdate / sta ondate::offdate");
    EXPECT_EQ(keysOf(open, "wfdisc", "arrival"), "sta chan time::endtime / sta chan time");
    EXPECT_EQ(keysOf(open, "arrival", "wfdisc"), "sta chan time / sta chan time::endtime");
    EXPECT_EQ(keysOf(open, "netmag", "origin"), "orid / orid");
    EXPECT_EQ(keysOf(open, "site", "sitechan"), "sta ondate::offdate / sta ondate::offdate");
    EXPECT_EQ(keysOf(open, "stassoc", "arrival"), "stassid / stassid");
    EXPECT_EQ(keysOf(open, "arrival", "remark"), "commid / commid");
}

TEST_F(PublicStandard, DoesNotJoinByCommentsOrByEqualDescriptions)
{
    EXPECT_THAT(keysOf(open, "arrival", "origin"), HasSubstr("no keys by which arrival joins origin"));
    EXPECT_THAT(keysOf(open, "origin", "site"), HasSubstr("no keys"));
    EXPECT_THAT(keysOf(open, "instrument", "wfdisc"), HasSubstr("no keys"));
    EXPECT_THAT(candidates(open.table("arrival")), Not(Contains("event")));
    EXPECT_THAT(candidates(open.table("lastid")), IsEmpty());
}

TEST_F(PublicStandard, OfAViewUsesTheKeysOfItsMembers)
{
    files->addTable("arrival", {});
    files->addTable("assoc", {});
    const Dbptr view =
        dbjoin(open.table("arrival"), open.table("assoc"), nullptr, nullptr, 0, nullptr, nullptr);
    ASSERT_GE(view.table, 0) << take_log();
    EXPECT_THAT(candidates(view),
                ElementsAre("affiliation", "moment", "netmag", "origerr", "origin", "remark", "sensor",
                            "site", "sitechan", "stamag", "stassoc", "wfdisc", "wftape"));
    EXPECT_THAT(list(view, dbPRIMARY_KEY), ElementsAre("sta", "time", "arid", "orid"));
    EXPECT_THAT(list(view, dbFOREIGN_KEYS), ElementsAre("stassid", "chanid", "commid", "arid", "orid"));
}

TEST(Schema, RefusesToLeaveOutOfJoinsWhatItDoesNotHave)
{
    const std::string schema = "name: s\nnot_joined: [lat, latt]\nattributes:\n"
                               "  lat: {type: real, width: 9, format: \"%9.4f\", null: \"-999.0\"}\n"
                               "relations:\n  site: {fields: [lat]}\n";
    TemporaryDatabase files("s", schema);
    Dbptr db = dbinvalid();
    EXPECT_LT(dbopen_database(files.path().c_str(), "r", &db), 0);
    EXPECT_THAT(take_log(),
                HasSubstr("s.yaml:2:19: not_joined: 'latt' is not an attribute of the schema; near it: lat"));
}

} // namespace
