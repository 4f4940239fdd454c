// Views made of the tables of a database, with their table models.

#include "orvanedatabasemodel.h"

#include <stdexcept>

#include "library_reason.h"
#include "orvanedatabasemodel_p.h"
#include "orvanetablemodel.h"

OrvaneTableModel *OrvaneDatabaseModel::Private::derive(OrvaneDatabaseModel *model, const char *method,
                                                       const QString &tableName, const Operation &operation,
                                                       OrvaneTableModel *facadeOf)
{
    const std::unique_ptr<QDbptr> base(handle->lookupTable(tableName));
    const LoggedSince logged;
    std::unique_ptr<QDbptr> view(operation(*base));
    // Sort, group and ungroup hand on an invalid pointer where others fail. Its name can't be asked for, and
    // the library's reason says more than that.
    if (!view->isValid())
        throw std::runtime_error(noViewText(method, tableName, logged.take()).toStdString());

    // Frees the view if anything fails from here on.
    auto tableModel = std::make_unique<OrvaneTableModel>(model, view.release(), config);
    const QString viewName = tableModel->getQDbptr()->getTableName();
    if (facadeOf)
        tableModel->setIsFacadeOf(facadeOf);
    return addTable(model, viewName, std::move(tableModel));
}

OrvaneTableModel *OrvaneDatabaseModel::getJoin(const QString &tableName, const QString &otherTable,
                                               const QString &viewName)
{
    return d->derive(this, "getJoin", tableName,
                     [&](QDbptr &base) { return base.joinTable(otherTable, viewName); });
}

OrvaneTableModel *OrvaneDatabaseModel::getOuterJoin(const QString &tableName, const QString &otherTable,
                                                    const QString &viewName)
{
    return d->derive(this, "getOuterJoin", tableName,
                     [&](QDbptr &base) { return base.outerJoinTable(otherTable, viewName); });
}

OrvaneTableModel *OrvaneDatabaseModel::getLeftJoin(const QString &tableName, const QString &otherTable,
                                                   const QString &viewName)
{
    return d->derive(this, "getLeftJoin", tableName,
                     [&](QDbptr &base) { return base.leftJoinTable(otherTable, viewName); });
}

OrvaneTableModel *OrvaneDatabaseModel::getNoJoin(const QString &tableName, const QString &otherTable,
                                                 const QString &viewName)
{
    return d->derive(this, "getNoJoin", tableName,
                     [&](QDbptr &base) { return base.noJoinTable(otherTable, viewName); });
}

OrvaneTableModel *OrvaneDatabaseModel::getThetaJoin(const QString &tableName, const QString &otherTable,
                                                    const QString &expression, const QString &viewName)
{
    return d->derive(this, "getThetaJoin", tableName,
                     [&](QDbptr &base) { return base.thetaJoinTable(otherTable, expression, viewName); });
}

OrvaneTableModel *OrvaneDatabaseModel::getSever(const QString &tableName, const QString &tableToSever,
                                                const QString &viewName)
{
    return d->derive(this, "getSever", tableName,
                     [&](QDbptr &base) { return base.severTable(tableToSever, viewName); });
}

OrvaneTableModel *OrvaneDatabaseModel::getSeparate(const QString &tableName, const QString &tableToSeparate,
                                                   const QString &viewName)
{
    return d->derive(this, "getSeparate", tableName,
                     [&](QDbptr &base) { return base.separateTable(tableToSeparate, viewName); });
}

OrvaneTableModel *OrvaneDatabaseModel::getSubset(const QString &tableName, const QString &expression,
                                                 const QString &viewName)
{
    return d->derive(this, "getSubset", tableName,
                     [&](QDbptr &base) { return base.subset(expression, viewName); });
}

OrvaneTableModel *OrvaneDatabaseModel::getSort(const QString &tableName, const QList<QString> &keys,
                                               bool reverse, bool unique, const QString &viewName,
                                               OrvaneTableModel *facadeOf)
{
    return d->derive(
        this, "getSort", tableName, [&](QDbptr &base) { return base.sort(keys, viewName, reverse, unique); },
        facadeOf);
}

OrvaneTableModel *OrvaneDatabaseModel::getGroup(const QString &tableName, const QList<QString> &keys,
                                                const QString &viewName)
{
    return d->derive(this, "getGroup", tableName, [&](QDbptr &base) { return base.group(keys, viewName); });
}

OrvaneTableModel *OrvaneDatabaseModel::getUngroup(const QString &tableName, const QString &viewName)
{
    return d->derive(this, "getUngroup", tableName, [&](QDbptr &base) { return base.ungroup(viewName); });
}
