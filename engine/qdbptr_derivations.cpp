#include <qdbptr.h>

#include "answer_conversion.h"

namespace {

// A variant that holds a list, where braces around the list would make a list of lists.
QVariant fieldsArgument(const QList<QString> &fields)
{
    QVariantList names;
    names.reserve(fields.size());
    for (const QString &field : fields)
        names.append(field);
    return names;
}

} // namespace

int QDbptr::dbFind(QString expression, bool backwards)
{
    return answerTo<int>(this, "dbFind", QStringLiteral("dbfind"), {std::move(expression), backwards});
}

QVector<qint64> QDbptr::findRows(QString table, const QVector<qint64> &rows)
{
    QVariantList numbers;
    numbers.reserve(rows.size());
    for (const qint64 row : rows)
        numbers.append(row);
    const auto places = answerTo<QVariantList>(this, "findRows", QStringLiteral("find_rows"),
                                               {std::move(table), QVariant(numbers)});
    QVector<qint64> found;
    found.reserve(places.size());
    for (const QVariant &place : places)
        found.append(place.toLongLong());
    return found;
}

QDbptr *QDbptr::joinTable(QString table, QString viewName)
{
    return handleFrom(this, "joinTable", QStringLiteral("join_table"),
                      {std::move(table), std::move(viewName)});
}

QDbptr *QDbptr::outerJoinTable(QString table, QString viewName)
{
    return handleFrom(this, "outerJoinTable", QStringLiteral("outer_join_table"),
                      {std::move(table), std::move(viewName)});
}

QDbptr *QDbptr::leftJoinTable(QString table, QString viewName)
{
    return handleFrom(this, "leftJoinTable", QStringLiteral("left_join_table"),
                      {std::move(table), std::move(viewName)});
}

QDbptr *QDbptr::noJoinTable(QString table, QString viewName)
{
    return handleFrom(this, "noJoinTable", QStringLiteral("no_join_table"),
                      {std::move(table), std::move(viewName)});
}

QDbptr *QDbptr::thetaJoinTable(QString table, QString expression, QString viewName)
{
    return handleFrom(this, "thetaJoinTable", QStringLiteral("theta_join_table"),
                      {std::move(table), std::move(expression), std::move(viewName)});
}

QDbptr *QDbptr::severTable(QString table, QString viewName)
{
    return handleFrom(this, "severTable", QStringLiteral("sever_table"),
                      {std::move(table), std::move(viewName)});
}

QDbptr *QDbptr::separateTable(QString table, QString viewName)
{
    return handleFrom(this, "separateTable", QStringLiteral("separate_table"),
                      {std::move(table), std::move(viewName)});
}

// The request takes the view name last.
QDbptr *QDbptr::sort(QList<QString> fields, QString viewName, bool reverse, bool unique)
{
    return handleFrom(this, "sort", QStringLiteral("sort"),
                      {fieldsArgument(fields), reverse, unique, std::move(viewName)});
}

QDbptr *QDbptr::sort(QString field, QString viewName, bool reverse, bool unique)
{
    return sort(QList<QString>{std::move(field)}, std::move(viewName), reverse, unique);
}

QDbptr *QDbptr::group(QList<QString> fields, QString viewName)
{
    return handleFrom(this, "group", QStringLiteral("group"), {fieldsArgument(fields), std::move(viewName)});
}

QDbptr *QDbptr::ungroup(QString viewName)
{
    return handleFrom(this, "ungroup", QStringLiteral("ungroup"), {std::move(viewName)});
}

QDbptr *QDbptr::subset(QString expression, QString viewName)
{
    return handleFrom(this, "subset", QStringLiteral("subset"), {std::move(expression), std::move(viewName)});
}
