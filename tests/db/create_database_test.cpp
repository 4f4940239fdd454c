// New databases, and schemas to be looked at before.
#include "opened.h"
#include "temporary_database.h"

#include <orvane/db_create.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>

namespace {

std::set<std::string> files_in(const std::string &folder)
{
    std::set<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        names.insert(entry.path().filename().string());
    return names;
}

std::vector<std::string> schemas_of(const std::string &folder)
{
    Tbl *names = nullptr;
    EXPECT_EQ(dbfind_schemas(folder.c_str(), &names), 0);
    std::vector<std::string> found = texts_of(names);
    return found;
}

} // namespace

TEST(CreateDatabase, makes_one_that_opens_as_it_was_described)
{
    TemporaryDatabase files;
    const std::string path = files.folder() + "/new";
    ASSERT_EQ(dbcreate_database(path.c_str(), "small", "a \"new\" one: # é", "two\nlines"), 0) << take_log();
    Opened opened(path, "r+");
    EXPECT_EQ(text(opened.pointer, dbDATABASE_DESCRIPTION), "a \"new\" one: # é");
    EXPECT_EQ(text(opened.pointer, dbDATABASE_DETAIL), "two\nlines");
    EXPECT_EQ(text(opened.pointer, dbSCHEMA_NAME), "small");
    EXPECT_EQ(dbadd(opened.table("event"), files.record("event", {"1"}).c_str()), 0) << take_log();
    EXPECT_TRUE(std::filesystem::exists(path + ".event"));
}

TEST(CreateDatabase, takes_the_schema_from_a_file_along)
{
    TemporaryDatabase files;
    const std::string other = files.folder() + "/other";
    std::filesystem::create_directory(other);
    ASSERT_EQ(dbcreate_database((other + "/new").c_str(), (files.folder() + "/small.yaml").c_str(), nullptr,
                                nullptr),
              0)
        << take_log();
    EXPECT_EQ(files_in(other), (std::set<std::string>{"new", "small.yaml"}));
    EXPECT_EQ(TemporaryDatabase::readFile(other + "/small.yaml"),
              TemporaryDatabase::readFile(files.folder() + "/small.yaml"));
    Opened opened(other + "/new");
    EXPECT_EQ(text(opened.pointer, dbSCHEMA_NAME), "small");
    // A second one needs no other copy; a schema of the same name that is another one is refused.
    EXPECT_EQ(dbcreate_database((other + "/more").c_str(), (files.folder() + "/small.yaml").c_str(), nullptr,
                                nullptr),
              0);
    files.writeFile("small.yaml", smallSchemaText() + "# another\n");
    EXPECT_LT(dbcreate_database((other + "/third").c_str(), (files.folder() + "/small.yaml").c_str(), nullptr,
                                nullptr),
              0);
    EXPECT_NE(take_log().find("another schema small"), std::string::npos);
    EXPECT_EQ(files_in(other), (std::set<std::string>{"new", "more", "small.yaml"}));
}

TEST(CreateDatabase, leaves_nothing_behind_and_overwrites_nothing)
{
    TemporaryDatabase files;
    files.writeFile("broken.yaml", "name: broken\n");
    const std::set<std::string> before = files_in(files.folder());
    const std::string descriptor = TemporaryDatabase::readFile(files.path());
    const std::string place = files.folder() + "/new";
    const struct {
        std::string path;
        const char *schema;
        const char *reason;
    } cases[] = {{files.path(), "small", "there is a file already"},
                 {place, "nope", "schema nope: not found"},
                 {place, "broken", "broken.yaml"},
                 {place, "", "no schema"},
                 {place, "/nowhere/x.yaml", "/nowhere/x.yaml"},
                 {files.folder() + "/no/new", "small", "there is no folder"},
                 {files.folder() + "/", "small", "no name"},
                 {"", "small", "no name"}};
    for (const auto &one : cases) {
        EXPECT_LT(dbcreate_database(one.path.c_str(), one.schema, nullptr, nullptr), 0) << one.reason;
        EXPECT_NE(take_log().find(one.reason), std::string::npos) << one.reason;
    }
    EXPECT_EQ(dbcreate_database(place.c_str(), "small", "two\nlines", nullptr), dbERROR_ARGUMENT);
    EXPECT_EQ(dbcreate_database(nullptr, nullptr, nullptr, nullptr), dbERROR_ARGUMENT);
    take_log();
    EXPECT_EQ(files_in(files.folder()), before);
    EXPECT_EQ(TemporaryDatabase::readFile(files.path()), descriptor);
}

TEST(Schemas, are_found_where_a_descriptor_would_find_them)
{
    TemporaryDatabase files;
    files.writeFile("notes.yaml", "just: text\n");
    const auto names = schemas_of(files.folder());
    EXPECT_EQ(std::count(names.begin(), names.end(), "small"), 1);
    EXPECT_EQ(std::count(names.begin(), names.end(), "css3.0"), 1);
    EXPECT_EQ(std::count(names.begin(), names.end(), "notes"), 0);
    take_log();
    DbSchema schema{};
    ASSERT_EQ(dbread_schema(files.folder().c_str(), "small", &schema), 0) << take_log();
    EXPECT_STREQ(schema.name, "small");
    EXPECT_STREQ(schema.description, "a small schema");
    ASSERT_EQ(maxtbl(schema.tables), maxtbl(schema.fields));
    EXPECT_STREQ(static_cast<const char *>(gettbl(schema.tables, 4)), "event");
    EXPECT_STREQ(static_cast<const char *>(gettbl(schema.fields, 4)), "evid prefor auth lddate");
    dbfree_schema(&schema);
    EXPECT_EQ(schema.name, nullptr);
    EXPECT_LT(dbread_schema(files.folder().c_str(), "nope", &schema), 0);
    EXPECT_NE(take_log(), "");
    EXPECT_EQ(schema.tables, nullptr);
}
