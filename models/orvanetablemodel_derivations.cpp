// Views made of a table by way of its database model, and the sorted view shown in its place.

#include <stdexcept>

#include "answered.h"
#include "orvanetablemodel_p.h"

OrvaneDatabaseModel &OrvaneTableModel::Private::database(const char *method) const
{
    if (!parent)
        throw std::runtime_error(std::string("OrvaneTableModel::") + method + ": The database is gone");
    return *parent;
}

OrvaneTableModel *OrvaneTableModel::subset(const QString &expression, const QString &viewName)
{
    return d->database("subset").getSubset(getTableName(), expression, viewName);
}

OrvaneTableModel *OrvaneTableModel::sort(const QList<QString> &keys, bool reverse, bool unique,
                                         const QString &viewName)
{
    return d->database("sort").getSort(getTableName(), keys, reverse, unique, viewName, nullptr);
}

OrvaneTableModel *OrvaneTableModel::group(const QList<QString> &keys, const QString &viewName)
{
    return d->database("group").getGroup(getTableName(), keys, viewName);
}

OrvaneTableModel *OrvaneTableModel::ungroup(const QString &viewName)
{
    return d->database("ungroup").getUngroup(getTableName(), viewName);
}

OrvaneTableModel *OrvaneTableModel::joinTo(const QString &otherTable, const QString &viewName)
{
    return d->database("joinTo").getJoin(getTableName(), otherTable, viewName);
}

OrvaneTableModel *OrvaneTableModel::outerJoinTo(const QString &otherTable, const QString &viewName)
{
    return d->database("outerJoinTo").getOuterJoin(getTableName(), otherTable, viewName);
}

OrvaneTableModel *OrvaneTableModel::leftJoinTo(const QString &otherTable, const QString &viewName)
{
    return d->database("leftJoinTo").getLeftJoin(getTableName(), otherTable, viewName);
}

OrvaneTableModel *OrvaneTableModel::noJoinTo(const QString &otherTable, const QString &viewName)
{
    return d->database("noJoinTo").getNoJoin(getTableName(), otherTable, viewName);
}

OrvaneTableModel *OrvaneTableModel::thetaJoinTo(const QString &otherTable, const QString &expression,
                                                const QString &viewName)
{
    return d->database("thetaJoinTo").getThetaJoin(getTableName(), otherTable, expression, viewName);
}

OrvaneTableModel *OrvaneTableModel::sever(const QString &table, const QString &viewName)
{
    return d->database("sever").getSever(getTableName(), table, viewName);
}

OrvaneTableModel *OrvaneTableModel::separate(const QString &table, const QString &viewName)
{
    return d->database("separate").getSeparate(getTableName(), table, viewName);
}

QString OrvaneTableModel::Private::sortKey(int number)
{
    const TableColumn *wanted = column(number);
    if (!wanted)
        return {};
    // The bare name means the first field that has it; any other one is named with its table.
    for (int other = 1; other < number; ++other) {
        const TableColumn *before = column(other);
        if (before && before->name == wanted->name)
            return columns().names().at(number - 1);
    }
    return wanted->name;
}

void OrvaneTableModel::Private::show(QDbptr *handle)
{
    display = handle;
    forgetTable();
}

void OrvaneTableModel::Private::dropFacade(OrvaneTableModel *model)
{
    show(own);
    if (!facade)
        return;
    OrvaneTableModel *const dropped = facade;
    facade.clear();
    QObject::disconnect(dropped, nullptr, model, nullptr);
    if (parent && dropped->tableIsView())
        parent->deleteView(dropped->getTableName());
}

void OrvaneTableModel::facadeDestroyed()
{
    // Somebody deleted the view; its rows went with it.
    d->show(d->own);
    d->ownState = QDbptr::TableState();
    emit modelReset();
}

QVector<qint64> OrvaneTableModel::Private::sameRows(QDbptr *from, QDbptr *to, const QVector<qint64> &rows)
{
    if (from == to)
        return rows;
    // Records that are gone are nowhere, which is no problem.
    return answeredOrNone(QVector<qint64>(rows.size(), -1),
                          [&] { return from->findRows(to->getTableName(), rows); });
}
