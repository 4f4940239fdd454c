#include "opened.h"
#include "temporary_database.h"
#include "watched_file_system.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace orvane;

namespace {

// An environment variable that has its old value again afterwards.
class Environment
{
public:
    Environment(const char *name, const std::string &value) : name_(name)
    {
        if (const char *old = getenv(name)) {
            old_ = old;
            had_ = true;
        }
        setenv(name, value.c_str(), 1);
    }
    ~Environment()
    {
        if (had_)
            setenv(name_, old_.c_str(), 1);
        else
            unsetenv(name_);
    }
    Environment(const Environment &) = delete;
    Environment &operator=(const Environment &) = delete;

private:
    const char *name_;
    std::string old_;
    bool had_ = false;
};

struct Failure {
    int code = 0;
    std::string log;
};

// The code and the log of an opening that fails; the pointer has to be invalid then.
Failure failure_to_open(const std::string &path, const char *permissions = "r")
{
    elog_clear();
    Dbptr db{};
    Failure failure;
    failure.code = dbopen_database(path.c_str(), permissions, &db);
    if (failure.code == 0)
        OVdbclose(db);
    else
        EXPECT_TRUE(db.database == dbINVALID && db.table == dbINVALID && db.field == dbINVALID &&
                    db.record == dbINVALID);
    failure.log = take_log();
    return failure;
}

#define EXPECT_FAILURE(failure, expected_code, expected_log)                                                 \
    do {                                                                                                     \
        const Failure got = failure;                                                                         \
        EXPECT_EQ(got.code, expected_code);                                                                  \
        EXPECT_EQ(got.log, expected_log);                                                                    \
    } while (0)

class OpenDatabaseTest : public testing::Test
{
protected:
    std::string path(const std::string &name) const { return files_.folder() + "/" + name; }

    TemporaryDatabase files_;
    Environment default_schema_{"ORVANE_SCHEMA", "small"};
    Environment schema_path_{"ORVANE_SCHEMA_PATH", ""};
};

} // namespace

TEST_F(OpenDatabaseTest, opens_a_descriptor)
{
    files_.addTable("site", {{"AAK"}});
    const Opened db(files_.path());
    EXPECT_GE(db.pointer.database, 0);
    EXPECT_EQ(db.pointer.table, dbALL);
    EXPECT_EQ(db.pointer.field, dbALL);
    EXPECT_EQ(db.pointer.record, dbALL);
    EXPECT_EQ(text(db.pointer, dbDATABASE_NAME), files_.path());
    EXPECT_EQ(text(db.pointer, dbDATABASE_FILENAME), files_.path());
    EXPECT_EQ(integer(db.table("site"), dbRECORD_COUNT), 1);
    EXPECT_EQ(take_log(), "");
}

TEST_F(OpenDatabaseTest, points_at_the_table_behind_the_dot)
{
    files_.addTable("origin", {});
    for (const char *name : {"quakes.origin", "quakes.arrival"}) { // one has a file, the other none
        const Opened db(path(name));
        EXPECT_EQ(text(db.pointer, dbTABLE_NAME), std::string(name).substr(7));
        EXPECT_EQ(text(db.pointer, dbDATABASE_NAME), files_.path());
        EXPECT_EQ(db.pointer.field, dbALL);
        EXPECT_EQ(db.pointer.record, dbALL);
    }
}

TEST_F(OpenDatabaseTest, takes_a_descriptor_of_just_that_name_before_a_table)
{
    files_.writeFile("quakes.origin", "# another database\nschema: small\ndescription: other\n");
    const Opened db(path("quakes.origin"));
    EXPECT_EQ(db.pointer.table, dbALL);
    EXPECT_EQ(text(db.pointer, dbDATABASE_NAME), path("quakes.origin"));
    EXPECT_EQ(text(db.pointer, dbDATABASE_DESCRIPTION), "other");
}

TEST_F(OpenDatabaseTest, opens_table_files_without_a_descriptor)
{
    std::filesystem::remove(files_.path());
    files_.addTable("site", {{"AAK"}, {"NIL"}});
    const Opened db(files_.path());
    EXPECT_EQ(text(db.pointer, dbSCHEMA_NAME), "small");
    EXPECT_EQ(text(db.pointer, dbDBPATH), ".");
    EXPECT_EQ(text(db.pointer, dbLOCKS), "local");
    EXPECT_EQ(integer(db.table("site"), dbRECORD_COUNT), 2);
    const Opened table(path("quakes.site"));
    EXPECT_EQ(text(table.pointer, dbTABLE_NAME), "site");
    EXPECT_EQ(text(table.pointer, dbDATABASE_NAME), files_.path());
    const Opened absent(path("quakes.origin"));
    EXPECT_EQ(text(absent.pointer, dbTABLE_NAME), "origin");
    EXPECT_EQ(integer(absent.pointer, dbTABLE_PRESENT), 0);
}

TEST_F(OpenDatabaseTest, opens_table_files_beside_a_folder_of_that_name)
{
    std::filesystem::remove(files_.path());
    std::filesystem::create_directory(files_.path());
    files_.addTable("site", {{"AAK"}});
    EXPECT_EQ(integer(Opened(files_.path()).table("site"), dbRECORD_COUNT), 1);
}

TEST_F(OpenDatabaseTest, takes_css3_0_for_the_default_schema)
{
    const Environment unset("ORVANE_SCHEMA", "");
    const Environment shipped("ORVANE_SCHEMA_PATH", ORVANE_TEST_SCHEMAS);
    files_.writeFile("mine.gregion", "");
    EXPECT_EQ(text(Opened(path("mine")).pointer, dbSCHEMA_NAME), "css3.0");
}

TEST_F(OpenDatabaseTest, takes_names_with_dots)
{
    files_.writeFile("quakes.2018.week", "schema: small\n");
    const Opened db(path("quakes.2018.week"));
    EXPECT_EQ(db.pointer.table, dbALL);
    EXPECT_EQ(text(Opened(path("quakes.2018.week.site")).pointer, dbTABLE_NAME), "site");
}

TEST_F(OpenDatabaseTest, keeps_the_form_of_a_relative_path_and_outlives_a_change_of_folder)
{
    files_.addTable("site", {{"AAK"}});
    const auto here = std::filesystem::current_path();
    std::filesystem::current_path(files_.folder());
    const Opened db("quakes");
    std::filesystem::current_path(here);
    EXPECT_EQ(text(db.pointer, dbDATABASE_NAME), "quakes");
    EXPECT_EQ(text(db.table("site"), dbTABLE_FILENAME), "quakes.site");
    EXPECT_EQ(text(db.table("site"), dbTABLE_DIRNAME), ".");
    EXPECT_EQ(integer(db.table("site"), dbRECORD_COUNT), 1);
}

TEST_F(OpenDatabaseTest, finds_tables_along_the_dbpath)
{
    std::filesystem::create_directory(path("ref"));
    files_.writeFile("quakes", "schema: small\ndbpath: [., ref]\n");
    files_.addTable("site", {{"AAK"}});
    std::filesystem::rename(path("quakes.site"), path("ref/quakes.site"));
    const Opened db(files_.path());
    EXPECT_EQ(text(db.table("site"), dbTABLE_FILENAME), path("ref/quakes.site"));
    EXPECT_EQ(text(db.table("site"), dbTABLE_DIRNAME), path("ref"));
    EXPECT_EQ(text(db.table("origin"), dbTABLE_FILENAME), path("quakes.origin"));
    EXPECT_EQ(text(db.table("origin"), dbTABLE_DIRNAME), files_.folder());
    EXPECT_EQ(text(db.pointer, dbDBPATH), ".:ref");
    files_.addTable("site", {});
    EXPECT_EQ(text(db.table("site"), dbTABLE_FILENAME), path("quakes.site"));
}

TEST_F(OpenDatabaseTest, looks_for_schemas_in_the_environment_before_the_descriptors_folder)
{
    std::filesystem::create_directory(path("schemas"));
    std::string schema = smallSchemaText();
    schema.replace(schema.find("a small schema"), 14, "another schema");
    files_.writeFile("schemas/small.yaml", schema);
    EXPECT_EQ(text(Opened(files_.path()).pointer, dbSCHEMA_DESCRIPTION), "a small schema");
    const Environment list("ORVANE_SCHEMA_PATH", "/nowhere:" + path("schemas"));
    EXPECT_EQ(text(Opened(files_.path()).pointer, dbSCHEMA_DESCRIPTION), "another schema");
}

TEST_F(OpenDatabaseTest, reads_a_schema_once_while_a_database_has_it_and_anew_when_it_changed)
{
    WatchedFileSystem files;
    const ScopedFileSystem scope(files);
    const Opened one(files_.path());
    const Opened two(files_.path());
    EXPECT_EQ(files.opens("small.yaml"), 1);
    EXPECT_NE(one.pointer.database, two.pointer.database);
    std::string schema = smallSchemaText();
    schema.replace(schema.find("a small schema"), 14, "another schema");
    files_.writeFile("small.yaml", schema + "# longer\n");
    EXPECT_EQ(text(Opened(files_.path()).pointer, dbSCHEMA_DESCRIPTION), "another schema");
    EXPECT_EQ(text(one.pointer, dbSCHEMA_DESCRIPTION), "a small schema");
}

TEST_F(OpenDatabaseTest, reads_no_table)
{
    for (const char *table : {"site", "origin", "arrival", "remark"})
        files_.addTable(table, {{}, {}});
    WatchedFileSystem files;
    const ScopedFileSystem scope(files);
    const Opened db(files_.path());
    for (const char *table : {"quakes.site", "quakes.origin", "quakes.arrival", "quakes.remark"}) {
        EXPECT_EQ(files.opens(table), 0) << table;
        EXPECT_EQ(files.states(table), 0) << table;
    }
    EXPECT_EQ(files.opens(""), 2) << "the descriptor and the schema";
}

TEST_F(OpenDatabaseTest, keeps_databases_apart_and_indexes_unused_after_closing)
{
    Dbptr first{}, second{};
    ASSERT_EQ(dbopen_database(files_.path().c_str(), "r", &first), 0);
    ASSERT_EQ(OVdbclose(first), 0);
    ASSERT_EQ(dbopen_database(files_.path().c_str(), "r", &second), 0);
    EXPECT_NE(first.database, second.database);
    elog_clear();
    EXPECT_EQ(text(first, dbDATABASE_NAME), "(failed)");
    EXPECT_EQ(take_log(), "dbquery: the pointer [" + std::to_string(first.database) +
                              ", -501, -501, -501] points to no open database (asked for its database name)");
    EXPECT_EQ(OVdbclose(first), dbERROR_STALE);
    EXPECT_EQ(OVdbclose(dbinvalid()), dbERROR_STALE);
    EXPECT_EQ(OVdbclose(second), 0);
    elog_clear();
}

// ---- Failures --------------------------------------------------------------------------------------

TEST_F(OpenDatabaseTest, refuses_permissions_but_r_and_r_plus)
{
    for (const char *bad : {"", "w", "rw", "a", "r ", "R", "r++"})
        EXPECT_FAILURE(failure_to_open(files_.path(), bad), dbERROR_ARGUMENT,
                       files_.path() + ": cannot be opened with permissions '" + bad +
                           "': use 'r' to read, 'r+' to read and write");
    EXPECT_EQ(failure_to_open(files_.path(), "r+").code, 0);
}

TEST_F(OpenDatabaseTest, refuses_null_arguments)
{
    elog_clear();
    Dbptr db{};
    EXPECT_EQ(dbopen_database(nullptr, "r", &db), dbERROR_ARGUMENT);
    EXPECT_EQ(db.database, dbINVALID);
    EXPECT_EQ(dbopen_database(files_.path().c_str(), nullptr, &db), dbERROR_ARGUMENT);
    EXPECT_EQ(dbopen_database(files_.path().c_str(), "r", nullptr), dbERROR_ARGUMENT);
    EXPECT_EQ(take_log(), "dbopen_database: the path or the permissions are null (repeated 2 times)\n"
                          "dbopen_database: the place for the pointer is null");
}

TEST_F(OpenDatabaseTest, tells_a_missing_database_from_a_missing_folder)
{
    EXPECT_FAILURE(failure_to_open(path("none")), dbERROR_NOT_FOUND,
                   path("none") +
                       ": no such database: there is neither a descriptor of that name nor a table file "
                       "none.TABLE of schema small in " +
                       files_.folder());
    EXPECT_FAILURE(failure_to_open(path("none.origin")), dbERROR_NOT_FOUND,
                   path("none.origin") +
                       ": no such database: there is neither a descriptor of that name nor a table "
                       "file none.origin.TABLE of schema small in " +
                       files_.folder() + ", nor a database none");
    EXPECT_FAILURE(failure_to_open(path("nowhere/quakes")), dbERROR_NOT_FOUND,
                   path("nowhere/quakes") + ": no such database: there is no folder " + path("nowhere"));
    EXPECT_FAILURE(failure_to_open(path("small.yaml/quakes")), dbERROR_NOT_FOUND,
                   path("small.yaml/quakes") + ": no such database: not a folder: " + path("small.yaml"));
    EXPECT_FAILURE(failure_to_open(""), dbERROR_ARGUMENT, "cannot open a database: the path is empty");
}

TEST_F(OpenDatabaseTest, tells_a_table_that_the_schema_does_not_have)
{
    EXPECT_FAILURE(failure_to_open(path("quakes.orgin")), dbERROR_NOT_FOUND,
                   path("quakes.orgin") + ": schema small has no table 'orgin'; near it: origin");
    EXPECT_FAILURE(failure_to_open(path("quakes.zzz")), dbERROR_NOT_FOUND,
                   path("quakes.zzz") + ": schema small has no table 'zzz'");
}

TEST_F(OpenDatabaseTest, tells_a_directory)
{
    EXPECT_FAILURE(failure_to_open(files_.folder()), dbERROR_FORMAT,
                   files_.folder() +
                       ": is a directory where a database descriptor is expected; give the path of the "
                       "descriptor in it");
}

TEST_F(OpenDatabaseTest, tells_a_missing_permission)
{
    WatchedFileSystem files;
    const ScopedFileSystem scope(files);
    files.failing_opens["/quakes"] = EACCES;
    EXPECT_FAILURE(failure_to_open(files_.path()), dbERROR_PERMISSION,
                   files_.path() + ": cannot open: Permission denied\n" + files_.path() +
                       ": cannot be read as a database descriptor");
    files.failing_states["/quakes"] = EACCES;
    EXPECT_FAILURE(failure_to_open(files_.path()), dbERROR_PERMISSION,
                   files_.path() + ": cannot look for a database: " + files_.path() +
                       ": cannot look at: Permission denied");
    files.failing_states.clear();
    files.failing_opens.clear();
    files.failing_opens["small.yaml"] = EACCES;
    EXPECT_FAILURE(failure_to_open(files_.path()), dbERROR_PERMISSION,
                   path("small.yaml") + ": cannot open: Permission denied\n" + files_.path() +
                       ": cannot be opened without its schema small");
}

TEST_F(OpenDatabaseTest, tells_a_disk_that_fails)
{
    WatchedFileSystem files;
    const ScopedFileSystem scope(files);
    files.failing_reads["/quakes"] = EIO;
    EXPECT_FAILURE(failure_to_open(files_.path()), dbERROR_IO,
                   files_.path() + ": cannot read: Input/output error\n" + files_.path() +
                       ": cannot be read as a database descriptor");
}

TEST_F(OpenDatabaseTest, tells_a_schema_that_is_nowhere_and_where_it_was_looked_for)
{
    files_.writeFile("quakes", "schema: other\n");
    const Environment list("ORVANE_SCHEMA_PATH", "/nowhere");
    const Failure failure = failure_to_open(files_.path());
    EXPECT_EQ(failure.code, dbERROR_NOT_FOUND);
    EXPECT_EQ(failure.log.find("schema other: not found; looked for /nowhere/other.yaml, " +
                               path("other.yaml") + ", "),
              0u)
        << failure.log;
    EXPECT_NE(failure.log.find(
                  "/orvane/schemas/other.yaml; put it there, or its folder into $ORVANE_SCHEMA_PATH\n" +
                  files_.path() + ": cannot be opened without its schema other"),
              std::string::npos)
        << failure.log;
}

TEST_F(OpenDatabaseTest, tells_a_default_schema_that_is_nowhere)
{
    std::filesystem::remove(files_.path());
    files_.addTable("site", {{"AAK"}});
    const Environment other("ORVANE_SCHEMA", "other");
    const Failure failure = failure_to_open(files_.path());
    EXPECT_EQ(failure.code, dbERROR_NOT_FOUND);
    EXPECT_NE(failure.log.find("quakes.TABLE of schema other in "), std::string::npos) << failure.log;
    EXPECT_NE(failure.log.find("\nschema other: not found; looked for "), std::string::npos) << failure.log;
}

TEST_F(OpenDatabaseTest, tells_every_wrong_key_of_a_schema)
{
    files_.writeFile("small.yaml",
                     "name: small\nattributes:\n  a: {type: real, width: 9, format: \"%9d\", nul: x}\n"
                     "relations:\n  r: {fields: [a, b]}\n");
    const std::string start = path("small.yaml");
    EXPECT_FAILURE(
        failure_to_open(files_.path()), dbERROR_FORMAT,
        start + ":3:3: attribute a: 'null' is missing\n" + start +
            ":3:37: attribute a: format '%9d' does not print type real, whose conversion is e, f or g\n" +
            start + ":3:44: attribute a: unknown key 'nul'; near it: null\n" + start +
            ":5:19: relation r: field 'b' is not an attribute of the schema\n" + files_.path() +
            ": cannot be opened without its schema small");
}

TEST_F(OpenDatabaseTest, tells_a_descriptor_that_is_not_yaml)
{
    files_.writeFile("quakes", "schema: small\n\"\n");
    const Failure failure = failure_to_open(files_.path());
    EXPECT_EQ(failure.code, dbERROR_FORMAT);
    EXPECT_EQ(failure.log.find(files_.path() + ":"), 0u) << failure.log;
    EXPECT_TRUE(failure.log.ends_with(
        "\n" + files_.path() + ": is not a database descriptor; that is a text such as 'schema: css3.0'"))
        << failure.log;
}

TEST_F(OpenDatabaseTest, tells_a_binary_file)
{
    files_.writeFile("quakes", std::string_view("\x7f"
                                                "ELF\0\0\0",
                                                7));
    EXPECT_FAILURE(failure_to_open(files_.path()), dbERROR_FORMAT,
                   files_.path() + ": is binary: byte 4 is zero, text was expected\n" + files_.path() +
                       ": is not a database descriptor; that is a text such as 'schema: css3.0'");
}

TEST_F(OpenDatabaseTest, reads_no_huge_file_as_a_descriptor)
{
    std::filesystem::resize_file(files_.path(), 5000000000);
    const Failure failure = failure_to_open(files_.path());
    EXPECT_EQ(failure.code, dbERROR_FORMAT);
    EXPECT_EQ(failure.log, files_.path() +
                               ": has 5000000000 bytes, more than the 1048576 that such a file may have\n" +
                               files_.path() + ": cannot be read as a database descriptor");
}

TEST_F(OpenDatabaseTest, survives_every_cut_and_changed_byte_of_a_descriptor)
{
    const std::string good = TemporaryDatabase::readFile(files_.path());
    for (std::size_t at = 0; at < good.size(); ++at) {
        files_.writeFile("quakes", good.substr(0, at));
        failure_to_open(files_.path());
        for (char byte : {'\0', '\n', '[', '\xff'}) {
            std::string text = good;
            text[at] = byte;
            files_.writeFile("quakes", text);
            failure_to_open(files_.path());
        }
    }
    files_.writeFile("quakes", good);
    EXPECT_EQ(failure_to_open(files_.path()).code, 0);
}
