#include "library_memory.h"
#include "request_call.h"
#include "request_handlers.h"

namespace requests {

void openDatabase(const RequestCall &call)
{
    const QString name = call.arguments[0].toString();
    const QString permissions = call.arguments[1].toString();
    Dbptr db = dbinvalid();
    const int result =
        dbopen_database(name.toLocal8Bit().constData(), permissions.toLocal8Bit().constData(), &db);
    if (result < 0 || db.database < 0) {
        call.fail(QStringLiteral("Failed to open database '%1' with permissions '%2'").arg(name, permissions),
                  LibraryLog::With);
        return;
    }
    call.response->setDbptr(db);
}

void closeDatabase(const RequestCall &call)
{
    if (OVdbclose(call.input) < 0)
        call.fail(QStringLiteral("dbclose error"), LibraryLog::With);
}

void databaseAbspath(const RequestCall &call)
{
    const char *fileName = nullptr;
    dbquery(call.input, dbDATABASE_FILENAME, &fileName);
    const OwnedText path(fileName ? abspath(fileName) : nullptr);
    call.response->setValue(shownText(path.get()));
}

} // namespace requests
