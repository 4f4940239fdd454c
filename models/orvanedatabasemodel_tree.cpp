// The database as an item tree: its tables, and their fields.

#include <QBrush>

#include "answered.h"
#include "orvanedatabasemodel_p.h"
#include "qovutil.h"
#include <ovconfig.h>

namespace {

// The names of what an item holds: tables of a database, fields of a table.
QStringList childNames(QDbptr *item)
{
    switch (item->getDbptrType()) {
    case DbptrDatabase:
        return item->getSchemaTables();
    case DbptrTable:
        return item->getTableFields();
    default:
        return {};
    }
}

bool isField(QDbptr &item)
{
    const QDbptrType type = item.getDbptrType();
    return type == DbptrField || type == DbptrCell;
}

bool isEmptyTableOrField(QDbptr &item)
{
    if (item.getDbptrType() == DbptrTable)
        return !item.tableIsPresent();
    return isField(item) && item.columnIsProbablyNull();
}

} // namespace

QDbptr *OrvaneDatabaseModel::indexToQDbptr(const QModelIndex &index) const
{
    return index.isValid() ? Private::item(index) : new QDbptr;
}

QDbptr *OrvaneDatabaseModel::Private::tableHandle(const QString &tableName)
{
    return handles.back()->adopt(std::unique_ptr<QDbptr>(handle->lookupTable(tableName)));
}

int OrvaneDatabaseModel::columnCount(const QModelIndex &) const
{
    return 1;
}

int OrvaneDatabaseModel::rowCount(const QModelIndex &parent) const
{
    return answered(0, [&] {
        if (!parent.isValid())
            return isOpen() ? d->handle->getSchemaTables().size() : 0;
        return childNames(Private::item(parent)).size();
    });
}

QModelIndex OrvaneDatabaseModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column != 0 || !isOpen())
        return {};
    // A field's name is seldom that of a table too.
    return answeredOrNone(QModelIndex(), [&]() -> QModelIndex {
        QStringList names;
        const QDbptrType type = parent.isValid() ? Private::item(parent)->getDbptrType() : DbptrDatabase;
        // Both from the database handle, and both looked up as tables: meant, see the class.
        if (type == DbptrDatabase)
            names = d->handle->getSchemaTables();
        else if (type == DbptrTable)
            names = d->handle->getTableFields();
        return row < names.size() ? createIndex(row, 0, d->tableHandle(names[row])) : QModelIndex();
    });
}

QModelIndex OrvaneDatabaseModel::parent(const QModelIndex &child) const
{
    if (!child.isValid() || !isOpen())
        return {};
    return answered(QModelIndex(), [&]() -> QModelIndex {
        QDbptr *item = Private::item(child);
        int row = -1;
        if (item->getDbptrType() == DbptrTable)
            row = d->handle->getSchemaTables().indexOf(item->getTableName());
        else if (isField(*item))
            row = item->getTableFields().indexOf(item->getFieldName());
        // The child's own pointer: meant, see the class.
        return row >= 0 ? createIndex(row, 0, item) : QModelIndex();
    });
}

bool OrvaneDatabaseModel::hasChildren(const QModelIndex &parent) const
{
    if (!isOpen())
        return false;
    return answered(false, [&] {
        const bool isRoot = !parent.isValid() || !Private::item(parent)->isValid();
        return !(isRoot ? d->handle->getSchemaTables() : childNames(Private::item(parent))).isEmpty();
    });
}

QVariant OrvaneDatabaseModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || !isOpen() || !Private::item(index)->isValid())
        return {};
    QDbptr &item = *Private::item(index);
    return answered(QVariant(), [&]() -> QVariant {
        switch (role) {
        case Qt::DisplayRole:
            return item.getName();
        case Qt::ToolTipRole:
            return d->settings().showTooltips ? QVariant(qovutil_getToolTipString(&item, nullptr))
                                              : QVariant();
        case Qt::BackgroundRole:
            if (!d->settings().colourNulls)
                return QBrush();
            return isEmptyTableOrField(item) ? d->settings().nullBackground : QVariant();
        case Qt::CheckStateRole:
            return isField(item) ? QVariant(static_cast<int>(Qt::Checked)) : QVariant();
        default:
            return {};
        }
    });
}

QVariant OrvaneDatabaseModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (!isOpen() || orientation != Qt::Horizontal || section != 0)
        return {};
    return answered(QVariant(), [&]() -> QVariant {
        if (role == Qt::DisplayRole)
            return d->handle->getDatabaseName();
        if (role == Qt::ToolTipRole && d->settings().showTooltips)
            return qovutil_getToolTipString(d->handle.get(), nullptr);
        return {};
    });
}
