#include "orvanedatabasemodel.h"

#include <QVariantMap>
#include <limits>
#include <stdexcept>

#include "answered.h"
#include "keep.h"
#include "orvanedatabasemodel_p.h"
#include "orvanetablemodel.h"
#include <orvane/util.h>
#include <ovconfig.h>

QMap<QString, OrvaneDatabaseModel *> OrvaneDatabaseModel::s_openDatabases;

namespace {

// What a handle says; the default of the type when it is invalid or the request fails.
template <class Answer>
Answer asked(QDbptr *handle, Answer (QDbptr::*question)())
{
    return handle->isValid() ? answered(Answer(), [&] { return (handle->*question)(); }) : Answer();
}

} // namespace

OrvaneDatabaseModel *OrvaneDatabaseModel::uniqueOrvaneDatabaseModel(OvConfig &config,
                                                                    const QString &databaseName,
                                                                    const QString &openMode)
{
    if (OrvaneDatabaseModel *registered = s_openDatabases.value(databaseName))
        return registered;
    return new OrvaneDatabaseModel(config, databaseName, openMode);
}

OrvaneDatabaseModel::OrvaneDatabaseModel(OvConfig &config, const QString &databaseName,
                                         const QString &openMode)
    : d(std::make_unique<Private>(config, databaseName, openMode))
{
    qRegisterMetaType<OrvaneTableModel *>("OrvaneTableModel*");
    config.configureIfUnset(QStringLiteral("auto_open"), true);
    config.configureIfUnset(QStringLiteral("show_empty_columns"), false);
    config.configureIfUnset(QStringLiteral("default_table"), QVariantMap());

    // Before layoutChanged(), so that nobody draws by the old settings.
    connect(&config, SIGNAL(configurationChanged()), this, SLOT(dropSettings()));
    connect(&config, SIGNAL(configurationChanged()), this, SIGNAL(layoutChanged()));
    connect(&config, SIGNAL(configurationChanged()), this, SLOT(reconfigure()));
    d->timer = new QTimer(this);
    connect(d->timer, SIGNAL(timeout()), this, SLOT(checkForUpdates()));

    if (!databaseName.isEmpty() && config[QStringLiteral("auto_open")].toBool())
        open();
}

OrvaneDatabaseModel::~OrvaneDatabaseModel()
{
    close();
    d->removeFromRegistry(this);
    d->abandon();
}

bool OrvaneDatabaseModel::open()
{
    if (d->name.isEmpty()) {
        throw std::runtime_error(
            "OrvaneDatabaseModel::open: Unable to open database, database name passed to "
            "constructor is empty");
    }
    close();
    d->abandon();
    std::unique_ptr<QDbptr> allTables;
    try {
        d->connectToDatabase();
        checkForUpdates();
        allTables.reset(d->handle->lookupTable(QStringLiteral("dbALL")));
    } catch (const std::exception &error) {
        d->openError = QString::fromUtf8(error.what());
        close();
        d->abandon();
        d->removeFromRegistry(this);
        return false;
    }
    emit modelAboutToBeReset();
    beginResetModel();
    d->handle = std::move(allTables);
    d->handles.push_back(std::make_unique<HandlePool>(std::numeric_limits<std::size_t>::max()));
    s_openDatabases.insert(d->name, this);
    endResetModel();
    emit modelReset();
    if (d->config[QStringLiteral("update_interval_sec")].toDouble() > 0)
        reconfigure();
    return true;
}

void OrvaneDatabaseModel::Private::connectToDatabase()
{
    openError.clear();
    initialTable.clear();
    connection = std::make_unique<QOvConnection>(QStringLiteral("/"));
    handle.reset(connection->openDatabase(name, openMode));
    if (handle->getIndexTable() >= 0)
        initialTable = handle->getTableName();
}

void OrvaneDatabaseModel::close()
{
    if (!isOpen())
        return;
    d->timer->stop();
    emit modelAboutToBeReset();
    beginResetModel();
    answered(false, [&] {
        d->handle->closeDatabase();
        return true;
    });
    endResetModel();
    emit modelReset();
}

void OrvaneDatabaseModel::Private::abandon()
{
    keepForever(handle.release());
    keepForever(connection.release());
    for (OrvaneTableModel *model : qAsConst(tableModels))
        keepForever(model);
    tableModels.clear();
    modificationTimes.clear();
}

void OrvaneDatabaseModel::Private::removeFromRegistry(OrvaneDatabaseModel *model)
{
    if (s_openDatabases.value(name) == model)
        s_openDatabases.remove(name);
}

bool OrvaneDatabaseModel::isOpen() const
{
    const QDbptr *handle = d->handle.get();
    return handle->isValid(); // also of null
}

QString OrvaneDatabaseModel::openError() const
{
    return d->openError;
}

void OrvaneDatabaseModel::reconfigure()
{
    const double milliseconds = 1000 * d->config[QStringLiteral("update_interval_sec")].toDouble();
    if (milliseconds > 0)
        d->timer->start(static_cast<int>(qMin<double>(milliseconds, std::numeric_limits<int>::max())));
    else
        d->timer->stop();
}

void OrvaneDatabaseModel::dropSettings()
{
    d->keptSettings.reset();
}

const DisplaySettings &OrvaneDatabaseModel::Private::settings()
{
    if (!keptSettings)
        keptSettings.emplace(config);
    return *keptSettings;
}

QString OrvaneDatabaseModel::getDatabaseName() const
{
    return asked(d->handle.get(), &QDbptr::getDatabaseName);
}

QString OrvaneDatabaseModel::getDatabaseFileName() const
{
    return asked(d->handle.get(), &QDbptr::getDatabaseFileName);
}

QString OrvaneDatabaseModel::getSchemaName() const
{
    return asked(d->handle.get(), &QDbptr::getSchemaName);
}

QString OrvaneDatabaseModel::getInitialTableName() const
{
    return d->initialTable;
}

Dbptr OrvaneDatabaseModel::getDbptr() const
{
    return d->handle ? d->handle->getDbptr() : dbinvalid();
}

QDbptr *OrvaneDatabaseModel::getQDbptr() const
{
    return d->handle.get();
}

QList<QString> OrvaneDatabaseModel::getTableNames() const
{
    return asked(d->handle.get(), &QDbptr::getBaseTablesPresent);
}

QList<QString> OrvaneDatabaseModel::getEmptyTableNames() const
{
    return asked(d->handle.get(), &QDbptr::getBaseTablesAbsent);
}

QList<QString> OrvaneDatabaseModel::getViewNames() const
{
    return asked(d->handle.get(), &QDbptr::getViewsPresent);
}

QList<QString> OrvaneDatabaseModel::getViewNamesSkipFacades()
{
    QList<QString> names;
    for (const QString &name : getViewNames()) {
        const OrvaneTableModel *view = getTableModel(name);
        if (!view || !view->tableIsFacade())
            names.append(name);
    }
    return names;
}

OrvaneTableModel *OrvaneDatabaseModel::getTableModel(const QString &name)
{
    if (!isOpen())
        return nullptr;
    OrvaneTableModel *known = d->tableModels.value(name);
    if (name.isEmpty()) {
        return known ? known
                     : d->keep(this, name, std::make_unique<OrvaneTableModel>(this, new QDbptr, d->config),
                               Private::Follows::Database);
    }
    std::unique_ptr<QDbptr> table(
        answeredOrNone<QDbptr *>(nullptr, [&] { return d->handle->lookupTable(name); }));
    if (!table || answered(DbptrInvalid, [&] { return table->getDbptrType(); }) != DbptrTable)
        return nullptr;
    // A view that was freed by its handle may have a successor of the same name.
    if (known && known->getDbptr().table == table->getIndexTable())
        return known;
    // The name of a freed view still names the fields of views over its groups; a table it is no longer.
    if (answered(false, [&] { return table->tableIsView(); }) && !getViewNames().contains(name))
        return nullptr;
    return d->addTable(this, name, std::make_unique<OrvaneTableModel>(this, table.release(), d->config));
}

OrvaneTableModel *OrvaneDatabaseModel::Private::keep(OrvaneDatabaseModel *model, const QString &tableName,
                                                     std::unique_ptr<OrvaneTableModel> tableModel,
                                                     Follows what)
{
    keepForever(tableModels.value(tableName)); // windows may point to it
    OrvaneTableModel *kept = tableModel.release();
    tableModels.insert(tableName, kept);
    connect(model, SIGNAL(layoutAboutToBeChanged()), kept, SIGNAL(layoutAboutToBeChanged()));
    connect(model, SIGNAL(layoutChanged()), kept, SIGNAL(layoutChanged()));
    if (what == Follows::DatabaseAndConfiguration)
        connect(&config, SIGNAL(configurationChanged()), kept, SIGNAL(layoutChanged()));
    return kept;
}

OrvaneTableModel *OrvaneDatabaseModel::Private::addTable(OrvaneDatabaseModel *model, const QString &tableName,
                                                         std::unique_ptr<OrvaneTableModel> tableModel)
{
    OrvaneTableModel *added =
        keep(model, tableName, std::move(tableModel), Follows::DatabaseAndConfiguration);
    emit model->tableAdded(added);
    return added;
}

void OrvaneDatabaseModel::deleteView(const QString &name)
{
    OrvaneTableModel *model = getTableModel(name);
    if (!model || !model->tableIsView())
        return;
    d->tableModels.remove(name);
    delete model;
}

void OrvaneDatabaseModel::checkForUpdates()
{
    if (!isOpen())
        return;
    const auto isNull = [](double time) { return time == ORVANE_NULL_TIME; };
    const QHash<QString, double> fresh = asked(d->handle.get(), &QDbptr::getTableModTimes);
    if (d->modificationTimes.isEmpty()) {
        d->modificationTimes = fresh;
        return;
    }
    for (auto it = fresh.begin(); it != fresh.end(); ++it) {
        // A table not seen before reads as 0 and is told as changed, not as added: meant.
        const double old = d->modificationTimes.value(it.key());
        if (isNull(it.value()) && !isNull(old)) {
            emit tableRemoved(it.key());
        } else if (!isNull(it.value()) && isNull(old)) {
            // What a model learned while there was no file is that every column is empty.
            if (OrvaneTableModel *known = d->tableModels.value(it.key()))
                known->announceChanged(known);
            emit tableAdded(getTableModel(it.key()));
        } else if (!isNull(it.value()) && it.value() > old) {
            emit tableChanged(getTableModel(it.key()));
        }
        d->modificationTimes.insert(it.key(), it.value());
    }
    emit databaseChecked();
}
