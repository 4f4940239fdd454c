#include <qdbptr.h>

#include "answer_conversion.h"

void QDbptr::dbPutv(QString field, QVariant value)
{
    requireHandle(this, "dbPutv");
    request(QStringLiteral("dbputv"), {QVariantMap{{std::move(field), std::move(value)}}});
    emit dataChanged();
}

// The two additions don't look whether the handle is null: request() does, with its own words.
int QDbptr::dbAdd(QString row)
{
    const int number = converted<int>(*request(QStringLiteral("dbadd"), {std::move(row)}));
    emit dataChanged();
    return number;
}

int QDbptr::dbAddchk(QString row)
{
    const int number = converted<int>(*request(QStringLiteral("dbaddchk"), {std::move(row)}));
    emit dataChanged();
    return number;
}

void QDbptr::dbMark()
{
    requireHandle(this, "dbMark");
    request(QStringLiteral("dbmark"));
    emit dataChanged();
}

void QDbptr::dbCrunch()
{
    requireHandle(this, "dbCrunch");
    request(QStringLiteral("dbcrunch"));
    emit dataChanged();
}

void QDbptr::dbFree()
{
    requireHandle(this, "dbFree");
    request(QStringLiteral("dbfree"));
    emit dataChanged();
}
