#include "library_spy.h"
#include "open_database.h"

namespace {

TEST(JoinCandidates, AreNamedInSchemaOrder)
{
    const OpenDatabase open;
    const QVariantList tables = process(open.at(AssocTable).get(), "find_join_tables")->toList();
    EXPECT_TRUE(tables.contains("origin")) << tables.size();
    EXPECT_TRUE(tables.contains("arrival"));
    EXPECT_TRUE(tables.contains("site"));
    EXPECT_LT(tables.indexOf("site"), tables.indexOf("origin"));
    EXPECT_LT(tables.indexOf("origin"), tables.indexOf("arrival"));
}

TEST(JoinCandidates, ThatArePresentComeWithTheKeysOfBothSides)
{
    const OpenDatabase open;
    const auto response = process(open.at(AssocTable).get(), "find_join_tables_present");
    EXPECT_EQ(response->userType(), QMetaType::QVariantMap);
    const QVariantMap keys = response->toMap();
    EXPECT_TRUE(keys.contains("origin"));
    EXPECT_FALSE(keys.contains("arrival")); // has no file
    EXPECT_EQ(keys["origin"], QVariant(QVariantList{QVariantList{"orid"}, QVariantList{"orid"}}));
}

TEST(JoinCandidates, ANullKeyIsToldAsSuch)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.onJoinTables = [](Tbl **tables) {
        *tables = listOf({"origin"});
        return 0;
    };
    spy.onJoinKeys = [](Tbl **left, Tbl **right) {
        *left = listOf({"orid", nullptr});
        *right = listOf({nullptr, "time::endtime"});
        return 0;
    };
    EXPECT_EQ(process(open.at(AssocTable).get(), "find_join_tables_present")->toMap(),
              (QVariantMap{
                  {"origin", QVariantList{QVariantList{"orid", "Unexpected null key from dbfind_join_keys"},
                                          QVariantList{"Unexpected null key from dbfind_join_keys",
                                                       "time::endtime"}}}}));
}

TEST(JoinCandidates, FailWithTheLog)
{
    const OpenDatabase open;
    LibrarySpy spy;
    spy.onJoinTables = [](Tbl **tables) {
        *tables = nullptr;
        elog_log("no candidates");
        return dbERROR_STALE;
    };
    for (const char *request : {"find_join_tables", "find_join_tables_present"})
        EXPECT_EQ(expectErrorWithLog(open.at(AssocTable).get(), request, {}, "Failed to find join tables"),
                  "no candidates");
}

} // namespace
