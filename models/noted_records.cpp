#include "noted_records.h"

#include <algorithm>

#include <orvane/util.h>
#include <qdbptr.h>

#include "answered.h"

QString NotedRecords::isEqual(const QString &field, const QString &text)
{
    QString quoted = text;
    quoted.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('\''), QLatin1String("\\'"));
    return field + QLatin1String(" == '") + quoted + QLatin1Char('\'');
}

qint64 NotedRecords::find(QDbptr &table, const QString &expression, qint64 row)
{
    const LoggedSince logged;
    const qint64 failures = elog_count();
    const qint64 found = answered<qint64>(-1, [&]() -> qint64 {
        const qint64 rows = table.getRecordCount();
        Dbptr place = table.getDbptr();
        place.field = dbALL;
        place.record = row + 1 < rows ? row + 1 : qint64{dbALL};
        QDbptr from(table.getConnection(), place);
        const qint64 before = from.dbFind(expression, true);
        if (before >= 0 || place.record == dbALL)
            return before;
        place.record = std::max<qint64>(row, 0);
        from.moveTo(place);
        return from.dbFind(expression, false);
    });
    if (elog_count() != failures)
        logged.take(); // that a record is not found again is no problem
    return found;
}
