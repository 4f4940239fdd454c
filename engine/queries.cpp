#include "queries.h"

#include "request_vocabulary.h"

OwnedList queriedListOrError(const RequestCall &call)
{
    OwnedList list = queriedList(call.input, call.row.queryCode);
    if (!list)
        call.fail(QLatin1String(call.row.failure), LibraryLog::With);
    return list;
}

QList<QVariant> namesOf(const Tbl *list)
{
    QList<QVariant> names;
    names.reserve(static_cast<int>(maxtbl(list)));
    forEachName(list, [&](const char *name) { names.append(shownText(name)); });
    return names;
}
