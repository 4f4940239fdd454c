// Views made of a table by way of its database model, and the sorted view shown in its place.

#include <QScopedValueRollback>
#include <algorithm>
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

namespace {

// The rows of indexes, each once and in order.
QVector<qint64> rowsOf(const QModelIndexList &indexes)
{
    QVector<qint64> rows;
    rows.reserve(indexes.size());
    for (const QModelIndex &index : indexes)
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

} // namespace

QVector<qint64> OrvaneTableModel::showOrder(const QString &key, bool reverse, QVector<qint64> rows)
{
    if (!rows.isEmpty())
        rows = d->sameRows(d->display, d->own, rows);
    d->dropFacade(this);
    // Without a view there is the own order.
    d->facade = answered<OrvaneTableModel *>(nullptr, [&] {
        return d->database("sort").getSort(getTableName(), {key}, reverse, false, QString(), this);
    });
    if (d->facade) {
        d->show(d->facade->getQDbptr());
        connect(d->facade, SIGNAL(destroyed()), this, SLOT(facadeDestroyed()));
        if (!rows.isEmpty())
            rows = d->sameRows(d->own, d->display, rows);
    }
    return rows;
}

void OrvaneTableModel::sort(int column, Qt::SortOrder order)
{
    if (d->sorting) // from within the sort's own progress
        return;
    emit layoutAboutToBeChanged({}, VerticalSortHint);
    const QString key = d->sortKey(column);
    if (!key.isEmpty()) {
        const QScopedValueRollback<bool> sorting(d->sorting, true);
        const QModelIndexList before = persistentIndexList();
        const QVector<qint64> rows = rowsOf(before);
        const QVector<qint64> rowsNow = showOrder(key, order == Qt::DescendingOrder, rows);
        const int rowsKnown = rowCount();
        QModelIndexList now;
        now.reserve(before.size());
        for (const QModelIndex &index : before) {
            const auto place = std::lower_bound(rows.begin(), rows.end(), index.row()) - rows.begin();
            const qint64 row = rowsNow.at(static_cast<int>(place));
            now.append(row >= 0 && row < rowsKnown ? createIndex(static_cast<int>(row), index.column())
                                                   : QModelIndex());
        }
        changePersistentIndexList(before, now);
    }
    emit layoutChanged({}, VerticalSortHint);
    if (d->resetAfterSorting)
        emit modelReset();
    else if (!key.isEmpty())
        announceRowCount();
}
