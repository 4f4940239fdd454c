#include <functional>

#include "open_database.h"

namespace {

// A null handle that the compiler does not know to be null.
QDbptr *nullHandle()
{
    static QDbptr *volatile handle = nullptr;
    return handle;
}

struct Method {
    std::string callText;
    std::string nameInMessage;
    std::function<void(QDbptr *)> call;
};

void PrintTo(const Method &method, std::ostream *out)
{
    *out << method.callText;
}

class NullHandle : public testing::TestWithParam<Method>
{
};

TEST_P(NullHandle, ThrowsNamingTheMethod)
{
    EXPECT_EQ(thrownBy([] { GetParam().call(nullHandle()); }),
              "QDbptr::" + GetParam().nameInMessage + ": Attempted to call on null object");
}

Method callOf(const std::string &name, const std::string &arguments, std::function<void(QDbptr *)> call)
{
    return {name + "(" + arguments + ")", name, std::move(call)};
}

#define CALL(NAME, ...) callOf(#NAME, #__VA_ARGS__, [](QDbptr *handle) { handle->NAME(__VA_ARGS__); })

INSTANTIATE_TEST_SUITE_P(
    Methods, NullHandle,
    testing::Values(CALL(getConnection), CALL(getDbptr), CALL(getIndexDatabase), CALL(getIndexTable),
                    CALL(getIndexField), CALL(getIndexRecord), CALL(getDbptrType), CALL(getName),
                    CALL(toString), CALL(toString, QDbptrToStringIndexesOnly), CALL(moveTo, Dbptr{}),
                    CALL(invalidate), CALL(request, "table_name"), CALL(request, "table_name", {1}),
                    CALL(dbGet, false), CALL(dbGetv), CALL(dbGetv, {"orid"}), CALL(lookupTable, "origin"),
                    CALL(lookupTable, 1), CALL(lookupField, "orid"), CALL(lookupField, 1),
                    CALL(lookupRecord, 1), CALL(fieldIsPrimary), CALL(columnIsProbablyNull),
                    CALL(columnApproxWidthChars), CALL(getNonNullTableFields), CALL(findJoinTablesPresent)));

INSTANTIATE_TEST_SUITE_P(Derivations, NullHandle,
                         testing::Values(CALL(joinTable, "origin", ""), CALL(outerJoinTable, "origin", ""),
                                         CALL(leftJoinTable, "origin", ""), CALL(noJoinTable, "origin", ""),
                                         CALL(thetaJoinTable, "origin", "true", ""),
                                         CALL(severTable, "origin", ""), CALL(separateTable, "origin", ""),
                                         CALL(sort, QList<QString>{"orid"}, "", false, false),
                                         CALL(sort, "orid", "", false, false), CALL(group, {"orid"}, ""),
                                         CALL(ungroup, ""), CALL(subset, "true", ""),
                                         CALL(dbFind, "true", false), CALL(findRows, "origin", {1}),
                                         CALL(getTableState), CALL(putRows, "orid", 1, {{0, 1}}),
                                         CALL(markRows, {{0, 1}}), CALL(movedRecords, 0, {1}), CALL(dbFree)));

INSTANTIATE_TEST_SUITE_P(TextGetters, NullHandle,
                         testing::Values(CALL(getDatabaseFileName), CALL(getDatabaseFilename),
                                         CALL(getDatabaseName), CALL(getSchemaName), CALL(getTableName),
                                         CALL(getFieldName), CALL(getFieldNull), CALL(getDatabaseDescription),
                                         CALL(getTableDescription), CALL(getFieldDescription),
                                         CALL(getSchemaDetail), CALL(getDatabaseDetail), CALL(getTableDetail),
                                         CALL(getFieldDetail), CALL(getFieldRange), CALL(getFieldFormat),
                                         CALL(getFieldUnits), CALL(getFieldBaseTable), CALL(getTableFilename),
                                         CALL(getTableDirname), CALL(getDatabaseAbspath), CALL(getDbPath),
                                         CALL(getTableCreation), CALL(getUniqueIdName), CALL(getTimedateName),
                                         CALL(getDbIdServer), CALL(getDbLocks)));

INSTANTIATE_TEST_SUITE_P(OtherGetters, NullHandle,
                         testing::Values(CALL(getFieldType), CALL(getTableCount), CALL(getFieldCount),
                                         CALL(getRecordCount), CALL(getTableSize), CALL(getFieldSize),
                                         CALL(getRecordSize), CALL(getFieldIndex), CALL(getTableModTime),
                                         CALL(tableIsPresent), CALL(tableIsView), CALL(tableIsWritable),
                                         CALL(getSchemaTables), CALL(getTableFields),
                                         CALL(getBaseTablesPresent), CALL(getBaseTablesAbsent),
                                         CALL(getViewsPresent), CALL(getViewTables), CALL(findJoinTables),
                                         CALL(getPrimaryKey), CALL(getAlternateKey), CALL(getForeignKeys),
                                         CALL(getLinkFieldTables), CALL(getTableModTimes)));

INSTANTIATE_TEST_SUITE_P(IrregularNames, NullHandle,
                         testing::Values(Method{"getSchemaDescription()", "getgetSchemaDescription",
                                                [](QDbptr *handle) { handle->getSchemaDescription(); }},
                                         Method{"cellIsNull()", "fieldIsNull",
                                                [](QDbptr *handle) { handle->cellIsNull(); }}));

TEST(NullHandle, IsNotValid)
{
    EXPECT_FALSE(nullHandle()->isValid());
}

TEST(NullHandle, ClosesNothing)
{
    EXPECT_NO_THROW(nullHandle()->closeDatabase());
}

} // namespace
