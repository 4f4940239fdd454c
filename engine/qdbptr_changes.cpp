#include <qdbptr.h>

#include "answer_conversion.h"

void QDbptr::dbPutv(QString field, QVariant value)
{
    requireHandle(this, "dbPutv");
    request(QStringLiteral("dbputv"), {QVariantMap{{std::move(field), std::move(value)}}});
    emit dataChanged();
}

namespace {

QVariant asArgument(const QVector<QDbptr::RowRange> &rows)
{
    QVariantList numbers;
    numbers.reserve(2 * rows.size());
    for (const QDbptr::RowRange &range : rows)
        numbers << range.first << range.last;
    return numbers;
}

QDbptr::RowsChanged rowsChanged(const QVariantList &answer)
{
    return {answer.value(0).toLongLong(), answer.value(1).toString(), answer.value(2).toBool()};
}

} // namespace

QDbptr::RowsChanged QDbptr::putRows(QString field, QVariant value, const QVector<RowRange> &rows)
{
    const auto answer = answerTo<QVariantList>(this, "putRows", QStringLiteral("put_rows"),
                                               {std::move(field), std::move(value), asArgument(rows)});
    emit dataChanged();
    return rowsChanged(answer);
}

QDbptr::RowsChanged QDbptr::markRows(const QVector<RowRange> &rows)
{
    const auto answer =
        answerTo<QVariantList>(this, "markRows", QStringLiteral("mark_rows"), {asArgument(rows)});
    emit dataChanged();
    return rowsChanged(answer);
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
