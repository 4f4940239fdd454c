#include "catalog/descriptor.h"

#include "opened.h"

#include <gtest/gtest.h>

using namespace orvane;

namespace {

std::string failure_of(const std::string &text)
{
    const auto read = read_descriptor(text, "dir/quakes");
    return read.ok() ? "(read)" : std::string(read.status().message());
}

} // namespace

TEST(Descriptor, is_read_whole)
{
    const auto read = read_descriptor(
        "schema: css3.0\ndbpath: [., /archive/ref]\nlocks: none\ndurability: disk\nidserver: there\n"
        "description: short\ndetail: |\n  long\n  text\n",
        "dir/quakes");
    ASSERT_TRUE(read.ok()) << read.status().message();
    EXPECT_EQ(read->schema, "css3.0");
    EXPECT_EQ(read->dbpath, (std::vector<std::string>{".", "/archive/ref"}));
    EXPECT_EQ(read->locks, Locks::None);
    EXPECT_EQ(read->durability, Durability::Disk);
    EXPECT_EQ(read->idserver, "there");
    EXPECT_EQ(read->description, "short");
    EXPECT_EQ(read->detail, "long\ntext\n");
}

TEST(Descriptor, needs_nothing_but_a_schema)
{
    const auto read = read_descriptor("schema: css3.0\n", "dir/quakes");
    ASSERT_TRUE(read.ok());
    EXPECT_EQ(read->dbpath, std::vector<std::string>{"."});
    EXPECT_EQ(read->locks, Locks::Local);
    EXPECT_EQ(read->durability, Durability::Process);
    EXPECT_EQ(read->idserver, "");
}

TEST(Descriptor, takes_one_text_as_dbpath_and_parts_it_at_colons)
{
    EXPECT_EQ(read_descriptor("schema: s\ndbpath: ref\n", "q")->dbpath, std::vector<std::string>{"ref"});
    EXPECT_EQ(read_descriptor("schema: s\ndbpath: .:/archive\n", "q")->dbpath,
              (std::vector<std::string>{".", "/archive"}));
    EXPECT_EQ(read_descriptor("schema: s\ndbpath: []\n", "q")->dbpath, std::vector<std::string>{"."});
}

TEST(Descriptor, is_refused_with_file_line_column_and_what_was_expected)
{
    EXPECT_EQ(failure_of("locks: local\n"), "dir/quakes:1:1: descriptor: 'schema' is missing");
    EXPECT_EQ(failure_of(""), "dir/quakes:1:1: descriptor: 'schema' is missing");
    EXPECT_EQ(failure_of("schema: css3.0\n\n  # a comment\nlock: none\n"),
              "dir/quakes:4:1: descriptor: unknown key 'lock'; near it: locks");
    EXPECT_EQ(failure_of("schema: css3.0\ncolour: red\n"),
              "dir/quakes:2:1: descriptor: unknown key 'colour'; known are: schema, dbpath, locks, "
              "durability, idserver, description, detail");
    EXPECT_EQ(failure_of("schema: css3.0\nlocks: nfs\n"),
              "dir/quakes:2:8: locks: 'nfs' where local or none was expected");
    EXPECT_EQ(failure_of("schema: css3.0\ndurability: always\n"),
              "dir/quakes:2:13: durability: 'always' where process or disk was expected");
    EXPECT_EQ(failure_of("schema: [css3.0]\n"),
              "dir/quakes:1:9: descriptor: 'schema' is a list where a text was expected");
    EXPECT_EQ(failure_of("schema: ../css3.0\n"), "dir/quakes:1:9: schema: '../css3.0' is not the name of a "
                                                 "schema, such as css3.0; the folders in which "
                                                 "it is looked for are set by $ORVANE_SCHEMA_PATH");
    EXPECT_EQ(failure_of("schema: css3.0\ndbpath: {a: b}\n"),
              "dir/quakes:2:9: descriptor: 'dbpath' is a mapping where a list was expected");
    EXPECT_EQ(failure_of("schema: css3.0\ndbpath: [., [a]]\n"),
              "dir/quakes:2:13: descriptor: an element of 'dbpath' is a list where a text was expected");
    EXPECT_EQ(failure_of("schema: css3.0\ndbpath: .::ref\n"),
              "dir/quakes:2:9: dbpath: a folder's name is empty");
    EXPECT_EQ(failure_of("lock: x\nlocks: y\n"),
              "dir/quakes:1:1: descriptor: unknown key 'lock'; near it: locks\n"
              "dir/quakes:1:1: descriptor: 'schema' is missing\n"
              "dir/quakes:2:8: locks: 'y' where local or none was expected");
}

TEST(Descriptor, that_is_not_yaml_is_refused_with_the_place_in_the_log)
{
    elog_clear();
    EXPECT_EQ(failure_of("schema: css3.0\n\t- x: [\n"),
              "dir/quakes: is not a parameter file (YAML mappings, lists and texts)\n"
              "dir/quakes: is not a database descriptor; that is a text such as 'schema: css3.0'");
    EXPECT_NE(take_log().find("dir/quakes:2:"), std::string::npos);
    EXPECT_EQ(failure_of(std::string("\x7f"
                                     "ELF\0\0",
                                     6)),
              "dir/quakes: is binary: byte 4 is zero, text was expected\n"
              "dir/quakes: is not a database descriptor; that is a text such as 'schema: css3.0'");
    elog_clear();
}

TEST(Descriptor, is_told_from_a_table_by_its_first_line)
{
    for (const char *head : {"schema: css3.0\n", "# c\n\n---\ndbpath: .\n", "{schema: x}", "\"schema\" : x",
                             "%YAML 1.1\n---\nlocks: none\n", "description:\n"})
        EXPECT_TRUE(looks_like_descriptor(head)) << head;
    for (const char *head :
         {"", "\n\n# only a comment", "AAK    2008001       -1   42.6390\n", "schema css3.0", "schemas: x",
          "46.2035 -122.1970 schema: x", "locks", "- schema: x"})
        EXPECT_FALSE(looks_like_descriptor(head)) << head;
}
