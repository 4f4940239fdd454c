#include "queries.h"
#include "request_call.h"
#include "request_handlers.h"

namespace {

bool isView(Dbptr table)
{
    return queriedNumber(table, dbTABLE_IS_VIEW) != 0;
}

bool isPresent(Dbptr table)
{
    return queriedNumber(table, dbTABLE_PRESENT) != 0;
}

double modificationTime(const char *fileName)
{
    return fileName && is_present(fileName) ? dfiletime(fileName) : ORVANE_NULL_TIME;
}

// The names of the schema's tables that pass a test, in schema order.
void answerTablesThat(const RequestCall &call, bool (*pass)(Dbptr table))
{
    const OwnedList tables = queriedListOrError(call);
    if (!tables)
        return;
    QList<QVariant> names;
    forEachName(tables.get(), [&](const char *name) {
        if (pass(dblookup(call.input, "", name, "", "")))
            names.append(shownText(name));
    });
    call.response->setValue(names);
}

// The fields of every table of a view as "table.field"; false when the library fails on one.
bool qualifiedFields(Dbptr view, const Tbl *tables, QList<QVariant> &fields)
{
    bool complete = true;
    forEachName(tables, [&](const char *table) {
        const OwnedList tableFields = queriedList(dblookup(view, "", table, "", ""), dbTABLE_FIELDS);
        complete = complete && tableFields;
        forEachName(tableFields.get(), [&](const char *field) {
            fields.append(QString(shownText(table) + QLatin1Char('.') + shownText(field)));
        });
    });
    return complete;
}

} // namespace

namespace requests {

void tableModTime(const RequestCall &call)
{
    call.response->setValue(modificationTime(queriedText(call.input, dbTABLE_FILENAME)));
}

void tableModTimes(const RequestCall &call)
{
    const OwnedList tables = queriedList(call.input, dbSCHEMA_TABLES);
    QHash<QString, QVariant> times;
    forEachName(tables.get(), [&](const char *name) {
        const Dbptr table = dblookup(call.input, "", name, "", "");
        if (!isView(table))
            times.insert(shownText(name), modificationTime(queriedText(table, dbTABLE_FILENAME)));
    });
    call.response->setValue(times);
}

void tableState(const RequestCall &call)
{
    int64_t numbering = 0;
    int64_t version = 0;
    if (dbquery(call.input, dbTABLE_NUMBERING, &numbering) < 0 ||
        dbquery(call.input, dbTABLE_VERSION, &version) < 0) {
        call.fail(QStringLiteral("dbquery failed for dbTABLE_VERSION"), LibraryLog::With);
        return;
    }
    call.response->setValue(QVariantList{static_cast<qlonglong>(numbering), static_cast<qlonglong>(version)});
}

void tableFields(const RequestCall &call)
{
    int64_t view = 0;
    if (dbquery(call.input, dbTABLE_IS_VIEW, &view) < 0) {
        call.fail(QStringLiteral("dbquery failed for dbTABLE_IS_VIEW"), LibraryLog::With);
        return;
    }
    const OwnedList list = queriedList(call.input, view ? dbVIEW_TABLES : dbTABLE_FIELDS);
    if (!list && view) {
        call.fail(QStringLiteral("dbquery failed for dbVIEW_TABLES"), LibraryLog::With);
        return;
    }
    QList<QVariant> fields;
    if (!list || (view && !qualifiedFields(call.input, list.get(), fields))) {
        call.fail(QStringLiteral("dbquery failed for dbTABLE_FIELDS"), LibraryLog::With);
        return;
    }
    call.response->setValue(view ? fields : namesOf(list.get()));
}

void baseTablesPresent(const RequestCall &call)
{
    answerTablesThat(call, [](Dbptr table) { return isPresent(table) && !isView(table); });
}

void baseTablesAbsent(const RequestCall &call)
{
    answerTablesThat(call, [](Dbptr table) { return !isPresent(table) && !isView(table); });
}

// Whether a view is present is not asked: a view always is.
void viewsPresent(const RequestCall &call)
{
    answerTablesThat(call, isView);
}

} // namespace requests
