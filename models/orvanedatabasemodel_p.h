#ifndef ORVANEDATABASEMODEL_P_H
#define ORVANEDATABASEMODEL_P_H

#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "display_settings.h"
#include "handle_pool.h"
#include "orvanedatabasemodel.h"
#include <qdbptr.h>
#include <qovconnection.h>

struct OrvaneDatabaseModel::Private {
    Private(OvConfig &configuration, const QString &databaseName, const QString &databaseOpenMode)
        : config(configuration), name(databaseName), openMode(databaseOpenMode)
    {
    }

    OvConfig &config;
    std::unique_ptr<QOvConnection> connection; // never destroyed: see keep.h
    std::unique_ptr<QDbptr> handle;            // likewise
    QTimer *timer = nullptr;                   // a child of the model
    QString name;
    QString openMode;
    QString initialTable;
    QString openError;
    QHash<QString, OrvaneTableModel *> tableModels; // deleted by deleteView() only
    QHash<QString, double> modificationTimes;
    std::optional<DisplaySettings> keptSettings;

    // The handles of indexes. Each opening starts a pool of its own; those before stay, for their indexes.
    std::vector<std::unique_ptr<HandlePool>> handles;

    const DisplaySettings &settings();

    // The handle of an index for a table of the database. Throws when the request fails.
    QDbptr *tableHandle(const QString &tableName);

    // The handle of a valid index.
    static QDbptr *item(const QModelIndex &index) { return static_cast<QDbptr *>(index.internalPointer()); }

    // Opens `name` on a new connection; throws when it can't be opened.
    void connectToDatabase();

    // Leaves the connection, the handle and the table models to those who still point to them.
    void abandon();

    void removeFromRegistry(OrvaneDatabaseModel *model);

    // Puts a table model into the cache and connects it; only that of a table follows the configuration.
    enum class Follows { Database, DatabaseAndConfiguration };
    OrvaneTableModel *keep(OrvaneDatabaseModel *model, const QString &tableName,
                           std::unique_ptr<OrvaneTableModel> tableModel, Follows what);

    // The model of a table handle, in the cache and announced by tableAdded().
    OrvaneTableModel *addTable(OrvaneDatabaseModel *model, const QString &tableName,
                               std::unique_ptr<OrvaneTableModel> tableModel);

    // What every operation does that makes a view: `operation` asks the base table's handle for it. `method`
    // is for the text of what is thrown.
    using Operation = std::function<QDbptr *(QDbptr &base)>;
    OrvaneTableModel *derive(OrvaneDatabaseModel *model, const char *method, const QString &tableName,
                             const Operation &operation, OrvaneTableModel *facadeOf = nullptr);
};

#endif
