#include <qdbptr.h>

#include "answer_conversion.h"

using TextList = QList<QString>;
using TextByName = QHash<QString, QString>;
using RealByName = QHash<QString, double>;

// The typed getters: result, method, the method's name in the null-handle message, request.
#define FOR_EACH_TYPED_GETTER(GETTER)                                                                        \
    GETTER(QString, getDatabaseFileName, "getDatabaseFileName", "database_filename")                         \
    GETTER(QString, getDatabaseFilename, "getDatabaseFilename", "database_filename")                         \
    GETTER(QString, getDatabaseName, "getDatabaseName", "database_name")                                     \
    GETTER(QString, getSchemaName, "getSchemaName", "schema_name")                                           \
    GETTER(QString, getTableName, "getTableName", "table_name")                                              \
    GETTER(QString, getFieldName, "getFieldName", "field_name")                                              \
    GETTER(QString, getFieldNull, "getFieldNull", "field_null")                                              \
    /* The doubled "get" is what callers know. */                                                            \
    GETTER(QString, getSchemaDescription, "getgetSchemaDescription", "schema_description")                   \
    GETTER(QString, getDatabaseDescription, "getDatabaseDescription", "database_description")                \
    GETTER(QString, getTableDescription, "getTableDescription", "table_description")                         \
    GETTER(QString, getFieldDescription, "getFieldDescription", "field_description")                         \
    GETTER(QString, getSchemaDetail, "getSchemaDetail", "schema_detail")                                     \
    GETTER(QString, getDatabaseDetail, "getDatabaseDetail", "database_detail")                               \
    GETTER(QString, getTableDetail, "getTableDetail", "table_detail")                                        \
    GETTER(QString, getFieldDetail, "getFieldDetail", "field_detail")                                        \
    GETTER(QString, getFieldRange, "getFieldRange", "field_range")                                           \
    GETTER(QString, getFieldFormat, "getFieldFormat", "field_format")                                        \
    GETTER(QString, getFieldUnits, "getFieldUnits", "field_units")                                           \
    GETTER(QString, getFieldBaseTable, "getFieldBaseTable", "field_base_table")                              \
    GETTER(QString, getTableFilename, "getTableFilename", "table_filename")                                  \
    GETTER(QString, getTableDirname, "getTableDirname", "table_dirname")                                     \
    GETTER(QString, getDatabaseAbspath, "getDatabaseAbspath", "database_abspath")                            \
    GETTER(QString, getDbPath, "getDbPath", "dbpath")                                                        \
    GETTER(QString, getTableCreation, "getTableCreation", "table_creation")                                  \
    GETTER(QString, getUniqueIdName, "getUniqueIdName", "unique_id_name")                                    \
    GETTER(QString, getTimedateName, "getTimedateName", "timedate_name")                                     \
    GETTER(QString, getDbIdServer, "getDbIdServer", "dbidserver")                                            \
    GETTER(QString, getDbLocks, "getDbLocks", "dblocks")                                                     \
    GETTER(int, getFieldType, "getFieldType", "field_type")                                                  \
    GETTER(int, getTableCount, "getTableCount", "table_count")                                               \
    GETTER(int, getFieldCount, "getFieldCount", "field_count")                                               \
    GETTER(int, getRecordCount, "getRecordCount", "record_count")                                            \
    GETTER(int, getTableSize, "getTableSize", "table_size")                                                  \
    GETTER(int, getFieldSize, "getFieldSize", "field_size")                                                  \
    GETTER(int, getRecordSize, "getRecordSize", "record_size")                                               \
    GETTER(int, getFieldIndex, "getFieldIndex", "field_index")                                               \
    GETTER(double, getTableModTime, "getTableModTime", "table_modtime")                                      \
    GETTER(bool, tableIsPresent, "tableIsPresent", "table_present")                                          \
    GETTER(bool, tableIsView, "tableIsView", "table_is_view")                                                \
    GETTER(bool, tableIsWritable, "tableIsWritable", "table_is_writable")                                    \
    GETTER(TextList, getSchemaTables, "getSchemaTables", "schema_tables")                                    \
    GETTER(TextList, getTableFields, "getTableFields", "table_fields")                                       \
    GETTER(TextList, getBaseTablesPresent, "getBaseTablesPresent", "base_tables_present")                    \
    GETTER(TextList, getBaseTablesAbsent, "getBaseTablesAbsent", "base_tables_absent")                       \
    GETTER(TextList, getViewsPresent, "getViewsPresent", "views_present")                                    \
    GETTER(TextList, getViewTables, "getViewTables", "view_tables")                                          \
    GETTER(TextList, findJoinTables, "findJoinTables", "find_join_tables")                                   \
    GETTER(TextList, getPrimaryKey, "getPrimaryKey", "primary_key")                                          \
    GETTER(TextList, getAlternateKey, "getAlternateKey", "alternate_key")                                    \
    GETTER(TextList, getForeignKeys, "getForeignKeys", "foreign_keys")                                       \
    GETTER(TextByName, getLinkFieldTables, "getLinkFieldTables", "link_fields")                              \
    GETTER(RealByName, getTableModTimes, "getTableModTimes", "table_modtimes")

#define DEFINE_TYPED_GETTER(RESULT, METHOD, NAME_IN_MESSAGE, REQUEST)                                        \
    RESULT QDbptr::METHOD()                                                                                  \
    {                                                                                                        \
        return answerTo<RESULT>(this, NAME_IN_MESSAGE, QStringLiteral(REQUEST));                             \
    }

FOR_EACH_TYPED_GETTER(DEFINE_TYPED_GETTER)
