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

namespace {

// Passed on as one argument, not as a list of arguments.
QVariant listOf(const QVector<qint64> &numbers)
{
    QVariantList list;
    list.reserve(numbers.size());
    for (const qint64 number : numbers)
        list.append(number);
    return list;
}

QVector<qint64> numbersOf(const QVariantList &list)
{
    QVector<qint64> numbers;
    numbers.reserve(list.size());
    for (const QVariant &number : list)
        numbers.append(number.toLongLong());
    return numbers;
}

} // namespace

QDbptr::TableState QDbptr::getTableState()
{
    const auto state = answerTo<QVariantList>(this, "getTableState", QStringLiteral("table_state"));
    return {state.value(0).toLongLong(), state.value(1).toLongLong()};
}

QVector<qint64> QDbptr::movedRecords(qint64 numbering, const QVector<qint64> &records)
{
    return numbersOf(answerTo<QVariantList>(this, "movedRecords", QStringLiteral("moved_records"),
                                            {numbering, listOf(records)}));
}

QVector<qint64> QDbptr::findRows(QString table, const QVector<qint64> &rows)
{
    return numbersOf(answerTo<QVariantList>(this, "findRows", QStringLiteral("find_rows"),
                                            {std::move(table), listOf(rows)}));
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
