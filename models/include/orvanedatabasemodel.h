#ifndef ORVANEDATABASEMODEL_H
#define ORVANEDATABASEMODEL_H

#include <QAbstractItemModel>
#include <QHash>
#include <QList>
#include <QMap>
#include <QString>
#include <memory>

#include <orvane/db.h>
#include <ovqt_export.h>

class OrvaneTableModel;
class OvConfig;
class QDbptr;

// One database: its tables as an item tree, a table model for each table that somebody asked for, and word of
// tables that appear, change or vanish.
//
// Ownership. Models are shared per database name through uniqueOrvaneDatabaseModel(); whoever made one
// deletes it. The model owns its table models until it is destroyed; then they, its connection and its handle
// stay alive and closed, for windows that still point to them.
//
// Failures. open() throws std::runtime_error when there is no database name, and the operations that make
// views throw it where no view is made. Nothing else throws: a closed model has no rows, empty names and
// lists, and null table models. What the database library says of a failed request stays in the error log.
//
// Items. One column. Every index carries a QDbptr as its internal pointer, which lives as long as the model.
// The pointer of a table's parent is the table's own, and the fields of a table are looked up in the
// database: a tree that is shown to people needs a proxy of its own.
class OVQT_EXPORT OrvaneDatabaseModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    // The model registered under the name, or a new one (which registers itself when it opens) for the caller
    // to own. Of a registered model the configuration and the open mode stay as they are.
    static OrvaneDatabaseModel *uniqueOrvaneDatabaseModel(OvConfig &config, const QString &databaseName,
                                                          const QString &openMode);

    // Opens at once when the name is not empty and `auto_open` is true; see isOpen() and openError(). The
    // configuration must outlive the model.
    OrvaneDatabaseModel(OvConfig &config, const QString &databaseName, const QString &openMode);
    ~OrvaneDatabaseModel() override;

    // Opens the database and registers the model under its name. A database that can't be opened leaves the
    // model closed and unregistered, and false is returned; openError() has the reason. An open model is
    // closed first. Throws std::runtime_error when the database name is empty.
    bool open();

    // Closes the database. Every handle and table model of it stays alive, and invalid. Does nothing when
    // closed.
    void close();

    bool isOpen() const;

    // Why the last open() failed, as text for people; empty when it succeeded.
    QString openError() const;

    QString getDatabaseName() const;
    QString getDatabaseFileName() const;
    QString getSchemaName() const;

    // The table that the database name addressed beside the database, or empty.
    QString getInitialTableName() const;

    Dbptr getDbptr() const;

    // The database handle, owned by the model; null before the first successful open().
    QDbptr *getQDbptr() const;

    QList<QString> getTableNames() const;      // base tables that have a file
    QList<QString> getEmptyTableNames() const; // base tables without one
    QList<QString> getViewNames() const;
    QList<QString> getViewNamesSkipFacades(); // without sorted views shown in place of their tables

    // The model of a table or view, made when it is first asked for and then announced by tableAdded(). Null
    // for an unknown name and when the database is closed. The empty name has a model of its own, without
    // rows and columns. The database model owns the result.
    OrvaneTableModel *getTableModel(const QString &name);

    // Deletes the table model of a view, and with it the view. A base table's model stays.
    void deleteView(const QString &name);

    // Make a view of a table or view, and its table model, announced by tableAdded(); an empty view name
    // leaves the naming to the database. The result is owned by the database model: deleteView() with its
    // name ends both. Throw std::runtime_error with the reason when there is no view: an unknown table, a
    // name that is taken, a wrong expression, an operation that was cancelled or found no memory, a closed
    // database. Nothing is left behind then, and nothing is announced.
    OrvaneTableModel *getJoin(const QString &tableName, const QString &otherTable, const QString &viewName);
    OrvaneTableModel *getOuterJoin(const QString &tableName, const QString &otherTable,
                                   const QString &viewName);
    OrvaneTableModel *getLeftJoin(const QString &tableName, const QString &otherTable,
                                  const QString &viewName);
    OrvaneTableModel *getNoJoin(const QString &tableName, const QString &otherTable, const QString &viewName);
    OrvaneTableModel *getThetaJoin(const QString &tableName, const QString &otherTable,
                                   const QString &expression, const QString &viewName);
    OrvaneTableModel *getSever(const QString &tableName, const QString &tableToSever,
                               const QString &viewName);
    OrvaneTableModel *getSeparate(const QString &tableName, const QString &tableToSeparate,
                                  const QString &viewName);
    OrvaneTableModel *getSubset(const QString &tableName, const QString &expression, const QString &viewName);
    // `facadeOf`, if not null, is the table in whose place the view is shown; it is marked as such before it
    // is announced.
    OrvaneTableModel *getSort(const QString &tableName, const QList<QString> &keys, bool reverse, bool unique,
                              const QString &viewName, OrvaneTableModel *facadeOf);
    OrvaneTableModel *getGroup(const QString &tableName, const QList<QString> &keys, const QString &viewName);
    OrvaneTableModel *getUngroup(const QString &tableName, const QString &viewName);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    bool hasChildren(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // The handle of an index, owned by the model. Of an invalid index: a new, invalid handle, owned by the
    // caller.
    QDbptr *indexToQDbptr(const QModelIndex &index) const;

signals:
    // The model's own, beside the inherited ones of the same names: connections made by text reach these,
    // connections made by function pointer to QAbstractItemModel's reach the inherited ones. Both are emitted
    // at every reset.
    void modelAboutToBeReset();
    void modelReset();

    void tableAdded(OrvaneTableModel *dtm);
    void tableChanged(OrvaneTableModel *dtm);
    void tableRemoved(QString tableName);
    void databaseChecked();

public slots:
    // Compares the modification times of the tables with those last seen and tells of every difference, then
    // databaseChecked(). The first time after open() the times are only stored.
    void checkForUpdates();

    // Starts or stops the timer of checkForUpdates() as `update_interval_sec` says.
    void reconfigure();

private slots:
    void dropSettings();

private:
    friend class OrvaneTableModel; // which tells its neighbours of its changes
    struct Private;
    std::unique_ptr<Private> d;
    static QMap<QString, OrvaneDatabaseModel *> s_openDatabases;
};

#endif
