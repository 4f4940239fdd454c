#include "queries.h"
#include "request_call.h"
#include "request_handlers.h"
#include "request_vocabulary.h"

namespace requests {

void queryText(const RequestCall &call)
{
    const char *text = nullptr;
    if (dbquery(call.input, call.row.queryCode, &text) < 0 && call.row.failure)
        call.fail(QLatin1String(call.row.failure), LibraryLog::With);
    else
        call.response->setValue(shownText(text));
}

void queryFlag(const RequestCall &call)
{
    call.response->setValue(queriedNumber(call.input, call.row.queryCode) != 0);
}

void queryNumber(const RequestCall &call)
{
    call.response->setValue<long>(queriedNumber(call.input, call.row.queryCode));
}

void queryNames(const RequestCall &call)
{
    if (const OwnedList list = queriedListOrError(call))
        call.response->setValue(namesOf(list.get()));
}

void linkFields(const RequestCall &call)
{
    Arr *answer = nullptr;
    if (dbquery(call.input, call.row.queryCode, &answer) < 0) {
        call.fail(QLatin1String(call.row.failure), LibraryLog::With);
        return;
    }
    const OwnedArray tables(answer);
    const BorrowingList keys(keysarr(tables.get()));
    QMap<QString, QVariant> tableByField;
    forEachName(keys.get(), [&](const char *key) {
        tableByField.insert(shownText(key), shownText(static_cast<const char *>(getarr(tables.get(), key))));
    });
    call.response->setValue(tableByField);
}

} // namespace requests
