#include <cstring>

#include "library_memory.h"
#include "request_call.h"
#include "request_handlers.h"
#include "request_vocabulary.h"

namespace {

// The last argument of every derivation.
class ViewName
{
public:
    explicit ViewName(const RequestCall &call) : m_name(call.arguments.last().toString().toLocal8Bit()) {}

    // Null for an empty name: the library finds one.
    const char *get() const { return m_name.isEmpty() ? nullptr : m_name.constData(); }

private:
    QByteArray m_name;
};

// The first argument as a list of texts; null, with the error made, when it names no field.
OwnedList fieldsOrError(const RequestCall &call)
{
    const QVariantList names = call.arguments.first().toList();
    if (names.isEmpty()) {
        call.fail(QStringLiteral("No fields listed"), LibraryLog::Without);
        return {};
    }
    OwnedList fields(newtbl(names.size()));
    for (const QVariant &name : names)
        pushtbl(fields.get(), strdup(name.toString().toUtf8().constData()));
    return fields;
}

void answerView(const RequestCall &call, Dbptr view, const QString &failure)
{
    if (view.table < 0)
        call.fail(failure, LibraryLog::With);
    else
        call.response->setDbptr(view);
}

void answerView(const RequestCall &call, Dbptr view)
{
    answerView(call, view, QLatin1String(call.row.failure));
}

// Answers the view that join(input, table, view name) makes with the table that the first argument names.
template <class Join>
void answerJoin(const RequestCall &call, Join join)
{
    const QString name = call.arguments.first().toString();
    // From the whole database: an empty name must not stand for the input table.
    const Dbptr database{call.input.database, dbALL, dbALL, dbALL};
    const Dbptr table = dblookup(database, "", name.toUtf8().constData(), "", "");
    if (table.table < 0) {
        call.fail(QStringLiteral("Failed to lookup table '%1'").arg(name), LibraryLog::With);
        return;
    }
    answerView(call, join(call.input, table, ViewName(call).get()));
}

Dbptr joinedByKeys(Dbptr left, Dbptr right, int outer, const char *view)
{
    return dbjoin(left, right, nullptr, nullptr, outer, nullptr, view);
}

} // namespace

namespace requests {

// Sort, group and ungroup hand on what the library answers, an invalid pointer too.

void sortRows(const RequestCall &call)
{
    const OwnedList fields = fieldsOrError(call);
    if (!fields)
        return;
    int flags = 0;
    if (call.arguments[1].toBool())
        flags |= dbSORT_REVERSE;
    if (call.arguments[2].toBool())
        flags |= dbSORT_UNIQUE;
    call.response->setDbptr(dbsort(call.input, fields.get(), flags, ViewName(call).get()));
}

void groupRows(const RequestCall &call)
{
    if (const OwnedList fields = fieldsOrError(call))
        call.response->setDbptr(dbgroup(call.input, fields.get(), ViewName(call).get(), 1));
}

void ungroupRows(const RequestCall &call)
{
    call.response->setDbptr(dbungroup(call.input, ViewName(call).get()));
}

void subsetRows(const RequestCall &call)
{
    const QString expression = call.arguments[0].toString();
    answerView(call, dbsubset(call.input, expression.toUtf8().constData(), ViewName(call).get()),
               QStringLiteral("Subset failed for expression '%1'").arg(expression));
}

void joinTable(const RequestCall &call)
{
    answerJoin(
        call, [](Dbptr input, Dbptr table, const char *view) { return joinedByKeys(input, table, 0, view); });
}

void outerJoinTable(const RequestCall &call)
{
    answerJoin(
        call, [](Dbptr input, Dbptr table, const char *view) { return joinedByKeys(input, table, 1, view); });
}

// An inner join with the named table first; rows without a match are not kept, which is meant.
void leftJoinTable(const RequestCall &call)
{
    answerJoin(
        call, [](Dbptr input, Dbptr table, const char *view) { return joinedByKeys(table, input, 0, view); });
}

void noJoinTable(const RequestCall &call)
{
    answerJoin(call, [](Dbptr input, Dbptr table, const char *view) {
        return dbnojoin(input, table, nullptr, nullptr, view);
    });
}

void thetaJoinTable(const RequestCall &call)
{
    const QByteArray expression = call.arguments[1].toString().toUtf8();
    answerJoin(call, [&](Dbptr input, Dbptr table, const char *view) {
        return dbtheta(input, table, expression.constData(), view);
    });
}

void severTable(const RequestCall &call)
{
    const QByteArray table = call.arguments[0].toString().toUtf8();
    answerView(call, dbsever(call.input, table.constData(), ViewName(call).get()));
}

// The library names the view; the name among the arguments is not handed on, which is meant.
void separateTable(const RequestCall &call)
{
    const QByteArray table = call.arguments[0].toString().toUtf8();
    answerView(call, dbseparate(call.input, table.constData()));
}

} // namespace requests
