#ifndef QUERIES_H
#define QUERIES_H

#include <QList>
#include <QVariant>

#include <orvane/db.h>

#include "library_memory.h"
#include "request_call.h"

/* The list that a query answers; null when it fails. */
inline OwnedList queriedList(Dbptr db, int code)
{
    Tbl *list = nullptr;
    return dbquery(db, code, &list) < 0 ? OwnedList() : OwnedList(list);
}

/* The list of the call's own query; null, with the row's message as the error, when it fails. */
OwnedList queriedListOrError(const RequestCall &call);

/* Calls visit(const char *) for every text of a list. */
template <class Visit>
void forEachName(const Tbl *list, Visit visit)
{
    for (int64_t i = 0, count = maxtbl(list); i < count; ++i)
        visit(static_cast<const char *>(gettbl(list, i)));
}

/* The texts of a list as variants, in order. */
QList<QVariant> namesOf(const Tbl *list);

/* The answer to a query for a number; 0 when it fails. */
inline int64_t queriedNumber(Dbptr db, int code)
{
    int64_t number = 0;
    return dbquery(db, code, &number) < 0 ? 0 : number;
}

/* The answer to a query for a text, borrowed; null when it fails. */
inline const char *queriedText(Dbptr db, int code)
{
    const char *text = nullptr;
    return dbquery(db, code, &text) < 0 ? nullptr : text;
}

#endif
