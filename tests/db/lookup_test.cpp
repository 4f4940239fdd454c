#include "opened.h"
#include "temporary_database.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class LookupTest : public testing::Test
{
protected:
    LookupTest()
    {
        files_.addTable("site", {{"AAK"}, {"NIL"}, {"KBL"}});
        db_ = std::make_unique<Opened>(files_.path());
    }
    ~LookupTest() override { elog_clear(); }

    Dbptr root() const { return db_->pointer; }
    std::string failure(Dbptr db, const char *database, const char *table, const char *field,
                        const char *record) const
    {
        elog_clear();
        const Dbptr found = dblookup(db, database, table, field, record);
        EXPECT_TRUE(found.database == dbINVALID && found.table == dbINVALID && found.field == dbINVALID &&
                    found.record == dbINVALID);
        return take_log();
    }
    void expect(Dbptr found, int64_t table, int64_t field, int64_t record) const
    {
        EXPECT_EQ(found.database, root().database);
        EXPECT_EQ(found.table, table);
        EXPECT_EQ(found.field, field);
        EXPECT_EQ(found.record, record);
        EXPECT_EQ(take_log(), "");
    }

    TemporaryDatabase files_;
    std::unique_ptr<Opened> db_;
};

} // namespace

TEST_F(LookupTest, finds_tables_fields_and_records)
{
    expect(dblookup(root(), "", "origin", "dbALL", "dbALL"), 1, dbALL, dbALL);
    expect(dblookup(root(), "", "site", "lat", "2"), 0, 3, 2);
    expect(dblookup(root(), nullptr, "site", nullptr, nullptr), 0, dbALL, dbALL);
}

TEST_F(LookupTest, keeps_what_is_not_named)
{
    const Dbptr cell = dblookup(root(), "", "site", "lat", "2");
    expect(dblookup(cell, "", "", "", ""), 0, 3, 2);
    expect(dblookup(cell, "", "", "lon", ""), 0, 4, 2);
    expect(dblookup(cell, "", "", "", "1"), 0, 3, 1);
    expect(dblookup(cell, "", "", "dbALL", ""), 0, dbALL, 2);
}

TEST_F(LookupTest, drops_field_and_record_with_a_new_table)
{
    const Dbptr cell = dblookup(root(), "", "site", "lat", "2");
    expect(dblookup(cell, "", "origin", "", ""), 1, dbALL, dbALL);
    expect(dblookup(cell, "", "origin", "lat", ""), 1, 0, dbALL);
    expect(dblookup(cell, "", "dbALL", "", ""), dbALL, dbALL, dbALL);
}

TEST_F(LookupTest, takes_the_special_records_by_name)
{
    expect(dblookup(root(), "", "site", "lat", "dbSCRATCH"), 0, 3, dbSCRATCH);
    expect(dblookup(root(), "", "site", "lat", "dbNULL"), 0, 3, dbNULL);
    expect(dblookup(root(), "", "site", "lat", "dbALL"), 0, 3, dbALL);
}

TEST_F(LookupTest, takes_a_field_with_its_table)
{
    const Dbptr site = dblookup(root(), "", "site", "", "");
    expect(dblookup(site, "", "", "site.lat", ""), 0, 3, dbALL);
    expect(dblookup(root(), "", "", "origin.lat", ""), 1, 0, dbALL);
    EXPECT_EQ(failure(site, "", "", "origin.lat", ""), "dblookup: no field 'origin.lat' in table site");
}

TEST_F(LookupTest, finds_an_open_database_by_its_name)
{
    TemporaryDatabase other;
    const Opened second(other.path());
    const Dbptr found = dblookup(root(), other.path().c_str(), "", "", "");
    EXPECT_EQ(found.database, second.pointer.database);
    EXPECT_EQ(found.table, dbALL);
    EXPECT_EQ(dblookup(dbinvalid(), other.path().c_str(), "site", "", "").table, 0);
    EXPECT_EQ(failure(root(), "/nowhere", "", "", ""), "dblookup: no database '/nowhere' is open");
}

TEST_F(LookupTest, tells_unknown_names_with_the_nearest)
{
    EXPECT_EQ(failure(root(), "", "orgin", "", ""),
              "dblookup: no table 'orgin' in " + files_.path() + "; near it: origin");
    EXPECT_EQ(failure(root(), "", "zzz", "", ""), "dblookup: no table 'zzz' in " + files_.path());
    EXPECT_EQ(failure(root(), "", "site", "latt", ""),
              "dblookup: no field 'latt' in table site; near it: lat");
    EXPECT_EQ(failure(root(), "", "site", "depth", ""), "dblookup: no field 'depth' in table site");
}

TEST_F(LookupTest, tells_records_that_are_not_there)
{
    EXPECT_EQ(failure(root(), "", "site", "", "3"), "dblookup: no record 3 in table site, which has 3");
    for (const char *bad : {"-1", "one", "1.5", "99999999999999999999", "dbInvalid"})
        EXPECT_EQ(failure(root(), "", "site", "", bad), std::string("dblookup: '") + bad +
                                                            "' is not a record of table site: a number from "
                                                            "0 on, dbALL, dbSCRATCH or dbNULL was expected");
    files_.writeFile("quakes.origin", "too short\n");
    EXPECT_NE(failure(root(), "", "origin", "", "0").find("quakes.origin:1: a record is 9 bytes wide"),
              std::string::npos);
}

TEST_F(LookupTest, needs_a_table_to_find_a_field_or_record_in)
{
    EXPECT_NE(failure(root(), "", "", "lat", "").find("does not point to a table of " + files_.path()),
              std::string::npos);
    EXPECT_NE(failure(root(), "", "", "", "1").find("does not point to a table of " + files_.path()),
              std::string::npos);
}

TEST_F(LookupTest, fails_on_a_stale_pointer)
{
    EXPECT_EQ(failure(dbinvalid(), "", "site", "", ""),
              "dblookup: the pointer [-102, -102, -102, -102] points to no open database");
}
