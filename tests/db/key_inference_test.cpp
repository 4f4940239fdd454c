#include "join/key_inference.h"

#include "opened.h"
#include "schema/schema_reader.h"
#include "temporary_database.h"

#include <gtest/gtest.h>

#include <memory>

using namespace orvane;

namespace {

std::string joined_keys(const JoinKeys &keys)
{
    std::string text;
    for (std::size_t i = 0; i < keys.left.size(); ++i)
        text += (i > 0 ? " " : "") + keys.left[i] +
                (keys.left[i] == keys.right[i] ? std::string() : "=" + keys.right[i]);
    return text;
}

// The keys between relations of a schema: "sta jdate=ondate::offdate".
class Inference
{
public:
    explicit Inference(const std::string &text)
    {
        auto read = read_schema(text, "schema.yaml");
        if (!read.ok())
            throw std::runtime_error(std::string(read.status().message()));
        schema_ = *read;
    }
    std::string keys(const std::vector<const char *> &left, const std::vector<const char *> &right) const
    {
        return joined_keys(infer_join_keys(*schema_, members(left), members(right)));
    }
    std::string keys(const char *left, const char *right) const
    {
        return keys(std::vector{left}, std::vector{right});
    }

private:
    std::vector<const Relation *> members(const std::vector<const char *> &names) const
    {
        std::vector<const Relation *> found;
        for (const char *name : names) {
            found.push_back(schema_->relation(name));
            if (!found.back())
                throw std::runtime_error(std::string("no relation ") + name);
        }
        return found;
    }
    std::shared_ptr<const Schema> schema_;
};

// Relations over fields a, b, c, …, each a whole number.
Inference made(const std::string &relations, const std::string &timestamp = "")
{
    std::string text = timestamp.empty() ? "" : "timestamp: " + timestamp + "\n";
    text += "attributes:\n";
    for (const char *name : {"a", "b", "c", "d", "from", "till", "moment", "lddate", "note"})
        text += std::string("  ") + name +
                ": {type: " + (std::string(name) == "lddate" ? "time" : "integer") +
                ", width: 17, format: \"" + (std::string(name) == "lddate" ? "%17.5f" : "%17d") +
                "\", null: \"-1\"}\n";
    return Inference(text + "relations:\n" + relations);
}

} // namespace

TEST(KeyInference, takes_the_right_tables_primary_key_first)
{
    const auto schema = made("  left: {fields: [a, b, c], primary: [c], alternate: [b]}\n"
                             "  right: {fields: [a, b, c], primary: [a, b], alternate: [c]}\n");
    EXPECT_EQ(schema.keys("left", "right"), "a b");
    EXPECT_EQ(schema.keys("right", "left"), "c");
}

TEST(KeyInference, takes_only_keys_that_fit_whole)
{
    const auto schema = made("  left: {fields: [b, c], primary: [b]}\n"
                             "  right: {fields: [a, b, c], primary: [a, b], alternate: [c]}\n");
    EXPECT_EQ(schema.keys("left", "right"), "c");
}

TEST(KeyInference, goes_on_to_the_left_tables_primary_and_alternate_key)
{
    const auto schema = made("  one: {fields: [b, c, d], primary: [b]}\n"
                             "  other: {fields: [c, d], primary: [d], alternate: [c]}\n"
                             "  right: {fields: [a, b, c], primary: [a], alternate: [a]}\n");
    EXPECT_EQ(schema.keys("one", "right"), "b");
    EXPECT_EQ(schema.keys("other", "right"), "c");
}

TEST(KeyInference, goes_on_to_the_id_that_either_defines)
{
    const auto schema = made("  left: {fields: [a, b, c], defines: b}\n"
                             "  right: {fields: [b, c, d], primary: [d], defines: c}\n"
                             "  third: {fields: [b, d]}\n");
    EXPECT_EQ(schema.keys("left", "right"), "c");
    EXPECT_EQ(schema.keys("third", "left"), "b");
    EXPECT_EQ(schema.keys("left", "third"), "b");
}

TEST(KeyInference, goes_on_to_the_first_foreign_key_that_fits)
{
    const auto schema = made("  left: {fields: [b, c, d], foreign: [d, b]}\n"
                             "  right: {fields: [a, b, c, d], primary: [a], foreign: [a, c]}\n");
    EXPECT_EQ(schema.keys("left", "right"), "c") << "the right side's come first";
    EXPECT_EQ(schema.keys("right", "left"), "d");
}

TEST(KeyInference, takes_common_fields_at_last_without_timestamp_and_remarks)
{
    const auto schema = made("  left: {fields: [a, c, b, note, lddate]}\n"
                             "  right: {fields: [b, c, d, note, lddate]}\n"
                             "  bare: {fields: [d, note, lddate]}\n"
                             "  remark: {fields: [note, lddate], primary: [note]}\n",
                             "lddate");
    EXPECT_EQ(schema.keys("left", "right"), "c b");
    EXPECT_EQ(schema.keys("left", "bare"), "");
    EXPECT_EQ(schema.keys("left", "remark"), "note") << "with remarks themselves their key counts";
}

TEST(KeyInference, fits_a_range_to_the_same_range_and_to_a_field_that_it_covers)
{
    const auto schema = made(
        "  sites: {fields: [a, from, till], primary: [a, {range: \"from::till\", covers: [moment, b]}]}\n"
        "  channels: {fields: [a, b, from, till], primary: [a, b, \"from::till\"]}\n"
        "  moments: {fields: [a, b, moment], primary: [moment]}\n"
        "  days: {fields: [a, b], primary: [b]}\n");
    EXPECT_EQ(schema.keys("channels", "sites"), "a from::till");
    EXPECT_EQ(schema.keys("sites", "channels"), "a from::till");
    EXPECT_EQ(schema.keys("moments", "sites"), "a moment=from::till") << "the first field that it covers";
    EXPECT_EQ(schema.keys("days", "sites"), "a b=from::till");
    EXPECT_EQ(schema.keys("sites", "days"), "a from::till=b");
}

TEST(KeyInference, fits_no_plain_element_to_the_begin_or_end_of_a_range)
{
    const auto schema =
        made("  spans: {fields: [a, from, till], primary: [a, {range: \"from::till\", covers: [from]}]}\n"
             "  starts: {fields: [a, from], primary: [a, from]}\n"
             "  ends: {fields: [d, till], primary: [till]}\n");
    EXPECT_EQ(schema.keys("spans", "starts"), "a from::till=from") << "within, not equal";
    EXPECT_EQ(schema.keys("starts", "spans"), "a from=from::till");
    EXPECT_EQ(schema.keys("ends", "spans"), "") << "not among the common fields either";
    EXPECT_EQ(schema.keys("spans", "ends"), "");
}

TEST(KeyInference, takes_any_member_of_a_side_made_of_several)
{
    const auto schema = made("  one: {fields: [a, b], primary: [a]}\n"
                             "  other: {fields: [b, c], primary: [c]}\n"
                             "  right: {fields: [c, d], primary: [d]}\n"
                             "  wide: {fields: [a, c], primary: [a, c]}\n");
    EXPECT_EQ(schema.keys({"one", "other"}, {"right"}), "c");
    EXPECT_EQ(schema.keys({"right"}, {"one", "other"}), "c");
    EXPECT_EQ(schema.keys({"one", "other"}, {"wide"}), "a c") << "fields of several members together";
}

TEST(KeyInference, finds_nothing_where_nothing_is_common)
{
    const auto schema = made("  one: {fields: [a], primary: [a]}\n"
                             "  other: {fields: [b], primary: [b]}\n");
    EXPECT_EQ(schema.keys("one", "other"), "");
    EXPECT_TRUE(infer_join_keys(
                    **read_schema("attributes: {a: {type: string, width: 1, format: \"%s\", null: \"-\"}}\n"
                                  "relations: {r: {fields: [a]}}\n",
                                  "s"),
                    {}, {})
                    .empty());
}

TEST(KeyInference, joins_the_tables_of_the_public_standard)
{
    const Inference css(TemporaryDatabase::readFile(ORVANE_TEST_SCHEMAS "/css3.0.yaml"));
    struct Row {
        const char *left, *right, *keys, *keys_of_right_and_left;
    };
    for (const Row &row : {
             Row{"arrival", "assoc", "arid", "arid"},
             Row{"assoc", "origin", "orid", "orid"},
             Row{"origin", "event", "evid", "evid"},
             Row{"origin", "origerr", "orid", "orid"},
             Row{"netmag", "origin", "orid", "orid"},
             Row{"netmag", "stamag", "magid", "magid"},
             Row{"netmag", "event", "evid", "evid"},
             Row{"stamag", "assoc", "arid orid", "arid orid"},
             Row{"arrival", "site", "sta jdate=ondate::offdate", "sta ondate::offdate=jdate"},
             Row{"arrival", "sitechan", "sta chan jdate=ondate::offdate", "sta chan ondate::offdate=jdate"},
             Row{"site", "sitechan", "sta ondate::offdate", "sta ondate::offdate"},
             Row{"wfdisc", "arrival", "sta chan time::endtime=time", "sta chan time=time::endtime"},
             Row{"wfdisc", "sensor", "sta chan time::endtime", "sta chan time::endtime"},
             Row{"wfdisc", "wftag", "wfid", "wfid"},
             Row{"site", "affiliation", "sta", "sta"},
             Row{"affiliation", "network", "net", "net"},
             Row{"origin", "remark", "commid", "commid"},
             Row{"instrument", "sensor", "inid", "inid"},
             Row{"event", "site", "", ""},
             Row{"lastid", "origin", "", ""},
         }) {
        EXPECT_EQ(css.keys(row.left, row.right), row.keys) << row.left << " " << row.right;
        EXPECT_EQ(css.keys(row.right, row.left), row.keys_of_right_and_left) << row.right << " " << row.left;
    }
}

// ---- Through the C interface -----------------------------------------------------------------------

namespace {

class FindJoinTest : public testing::Test
{
protected:
    ~FindJoinTest() override { elog_clear(); }
    TemporaryDatabase files_;
    Opened db_{files_.path()};
};

} // namespace

TEST_F(FindJoinTest, lists_the_tables_for_which_there_are_keys_in_schema_order)
{
    Tbl *tables = nullptr;
    ASSERT_EQ(dbfind_join_tables(db_.table("origin"), &tables), 0);
    EXPECT_EQ(texts_of(tables),
              (std::vector<std::string>{"site", "arrival", "assoc", "event", "remark", "kinds"}));
    ASSERT_EQ(dbfind_join_tables(db_.table("event"), &tables), 0);
    EXPECT_EQ(texts_of(tables), (std::vector<std::string>{"origin", "arrival"}));
    EXPECT_EQ(take_log(), "");
}

TEST_F(FindJoinTest, gives_the_keys_of_both_sides)
{
    Tbl *left = nullptr, *right = nullptr;
    ASSERT_EQ(dbfind_join_keys(db_.table("arrival"), db_.table("site"), &left, &right), 0);
    EXPECT_EQ(texts_of(left), (std::vector<std::string>{"sta", "jdate"}));
    EXPECT_EQ(texts_of(right), (std::vector<std::string>{"sta", "ondate::offdate"}));
}

TEST_F(FindJoinTest, fails_with_nothing_where_there_are_no_keys)
{
    Tbl *left = nullptr, *right = nullptr;
    elog_clear();
    EXPECT_EQ(dbfind_join_keys(db_.table("event"), db_.table("site"), &left, &right), dbERROR_NOT_FOUND);
    EXPECT_EQ(left, nullptr);
    EXPECT_EQ(right, nullptr);
    EXPECT_EQ(take_log(), "dbfind_join_keys: there are no keys by which event joins site");
}

TEST_F(FindJoinTest, fails_on_pointers_that_point_to_no_table)
{
    Tbl *left = nullptr, *right = nullptr;
    EXPECT_EQ(dbfind_join_tables(db_.pointer, &left), dbERROR_ARGUMENT);
    EXPECT_EQ(left, nullptr);
    EXPECT_EQ(dbfind_join_tables(dbinvalid(), &left), dbERROR_STALE);
    EXPECT_EQ(dbfind_join_tables(db_.table("site"), nullptr), dbERROR_ARGUMENT);
    EXPECT_EQ(dbfind_join_keys(db_.pointer, db_.table("site"), &left, &right), dbERROR_ARGUMENT);
    EXPECT_EQ(dbfind_join_keys(db_.table("site"), dbinvalid(), &left, &right), dbERROR_STALE);
    EXPECT_EQ(dbfind_join_keys(db_.table("site"), db_.table("site"), nullptr, &right), dbERROR_ARGUMENT);
    TemporaryDatabase other;
    const Opened second(other.path());
    elog_clear();
    EXPECT_EQ(dbfind_join_keys(db_.table("site"), second.table("site"), &left, &right), dbERROR_ARGUMENT);
    EXPECT_EQ(take_log(), "dbfind_join_keys: the tables are of different databases");
}
