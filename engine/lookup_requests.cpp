#include <limits>

#include "request_call.h"
#include "request_handlers.h"

namespace {

bool isText(const QVariant &argument)
{
    return argument.userType() == QMetaType::QString;
}

bool isInteger(const QVariant &argument)
{
    switch (argument.userType()) {
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return true;
    default:
        return false;
    }
}

// An unsigned number beyond the signed range names nothing, and must not become one of the special indexes.
int64_t indexFrom(const QVariant &argument)
{
    const bool isUnsigned =
        argument.userType() == QMetaType::ULongLong || argument.userType() == QMetaType::ULong;
    constexpr auto greatest = std::numeric_limits<int64_t>::max();
    if (isUnsigned && argument.toULongLong() > static_cast<qulonglong>(greatest))
        return greatest;
    return argument.toLongLong();
}

// What a lookup sets, and how the library looks a name of it up.
struct Lookup {
    const char *what;
    int64_t Dbptr::*index;
    Dbptr (*byName)(Dbptr input, const char *name);
};

const Lookup tableLookup{"table", &Dbptr::table,
                         [](Dbptr db, const char *name) { return dblookup(db, "", name, "dbALL", "dbALL"); }};
const Lookup fieldLookup{"field", &Dbptr::field,
                         [](Dbptr db, const char *name) { return dblookup(db, "", "", name, ""); }};
const Lookup recordLookup{"record", &Dbptr::record,
                          [](Dbptr db, const char *name) { return dblookup(db, "", "", "", name); }};

void lookUp(const RequestCall &call, const Lookup &lookup)
{
    const QVariant &argument = call.arguments.first();
    Dbptr result = call.input;
    if (isText(argument)) {
        result = lookup.byName(call.input, argument.toString().toUtf8().constData());
    } else if (isInteger(argument)) {
        result.*lookup.index = indexFrom(argument);
    } else {
        call.fail(QStringLiteral("Unsupported type '%1'").arg(QLatin1String(argument.typeName())),
                  LibraryLog::Without);
        return;
    }
    if (result.*lookup.index < 0)
        call.fail(
            QStringLiteral("Lookup failed for %1 '%2'").arg(QLatin1String(lookup.what), argument.toString()),
            LibraryLog::With);
    else
        call.response->setDbptr(result);
}

bool meansAllTables(const QVariant &argument)
{
    return isText(argument) ? argument.toString() == QLatin1String("dbALL")
                            : isInteger(argument) && indexFrom(argument) == dbALL;
}

} // namespace

namespace requests {

void lookupTable(const RequestCall &call)
{
    if (meansAllTables(call.arguments.first()))
        call.response->setDbptr({call.input.database, dbALL, dbALL, dbALL});
    else
        lookUp(call, tableLookup);
}

void lookupField(const RequestCall &call)
{
    lookUp(call, fieldLookup);
}

void lookupRecord(const RequestCall &call)
{
    lookUp(call, recordLookup);
}

} // namespace requests
