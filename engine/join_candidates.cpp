#include "queries.h"
#include "request_call.h"
#include "request_handlers.h"

namespace {

OwnedList joinTablesOrError(const RequestCall &call)
{
    Tbl *tables = nullptr;
    if (dbfind_join_tables(call.input, &tables) < 0) {
        call.fail(QStringLiteral("Failed to find join tables"), LibraryLog::With);
        return {};
    }
    return OwnedList(tables);
}

QList<QVariant> keyNames(const Tbl *keys)
{
    QList<QVariant> names;
    forEachName(keys, [&](const char *key) {
        names.append(key ? shownText(key) : QStringLiteral("Unexpected null key from dbfind_join_keys"));
    });
    return names;
}

// [keys of the left table, keys of the right one]
QList<QVariant> joinKeys(Dbptr left, Dbptr right)
{
    Tbl *leftList = nullptr;
    Tbl *rightList = nullptr;
    dbfind_join_keys(left, right, &leftList, &rightList);
    const OwnedList leftKeys(leftList);
    const OwnedList rightKeys(rightList);
    return {QVariant(keyNames(leftKeys.get())), QVariant(keyNames(rightKeys.get()))};
}

} // namespace

namespace requests {

void findJoinTables(const RequestCall &call)
{
    if (const OwnedList tables = joinTablesOrError(call))
        call.response->setValue(namesOf(tables.get()));
}

void findJoinTablesPresent(const RequestCall &call)
{
    const OwnedList tables = joinTablesOrError(call);
    if (!tables)
        return;
    QMap<QString, QVariant> keysByTable;
    forEachName(tables.get(), [&](const char *name) {
        const Dbptr table = dblookup(call.input, "", name, "", "");
        if (queriedNumber(table, dbTABLE_PRESENT) != 0)
            keysByTable.insert(shownText(name), joinKeys(call.input, table));
    });
    call.response->setValue(keysByTable);
}

} // namespace requests
