#ifndef ORVANETABLEMODEL_P_H
#define ORVANETABLEMODEL_P_H

#include <QPointer>
#include <QVector>
#include <chrono>
#include <optional>

#include "cell_reader.h"
#include "display_settings.h"
#include "handle_pool.h"
#include "noted_records.h"
#include "orvanedatabasemodel.h"
#include "orvanetablemodel.h"
#include "table_columns.h"
#include <qdbptr.h>

struct OrvaneTableModel::Private {
    Private(OrvaneDatabaseModel *databaseModel, QDbptr *handle, OvConfig &configuration);

    OvConfig &config;
    QPointer<OrvaneDatabaseModel> parent;
    QPointer<OrvaneTableModel> facade;   // the sorted view shown in place of this table
    QPointer<OrvaneTableModel> facadeOf; // the table that this model is shown in place of
    QPointer<QDbptr> display;
    QPointer<QDbptr> own;

    // What is kept; see the class. Each is made when it is first needed.
    std::optional<DisplaySettings> keptSettings;
    std::optional<TableColumns> keptColumns;
    CellReader reader;
    HandlePool handles{16384};

    // The table as it was when it was last looked at.
    QDbptr::TableState ownState;
    QDbptr::TableState displayState;
    int ownRows = 0;                         // of the table, while a sorted view is shown in its place
    QHash<const void *, NotedRecords> noted; // by who wants to know
    bool outdated = false;
    QVector<int> keyColumns; // by which records are told apart
    QStringList members;     // the names of the tables that the records come from
    bool told = false;       // of a change, by the look that goes on

    QString orderKey; // of the sorted view
    bool orderReversed = false;
    std::chrono::steady_clock::time_point sortEnded{};
    std::chrono::steady_clock::duration sortTook{};
    bool refreshQueued = false;
    bool refreshing = false;

    bool sorting = false; // the row count and the records of rows change only when it is done
    bool resetAfterSorting = false;
    QString editError; // why setData() answered false last; empty where it did not

    int rows = 0; // as known to views
    std::chrono::steady_clock::time_point rowsAskedAt{};
    bool rowsAnnouncementQueued = false;

    const DisplaySettings &settings();

    // Those of the display table; none while its handle is invalid.
    TableColumns &columns();

    // The column of a section or an index column: 1 is the first. Null for column 0 and where there is no
    // such field.
    const TableColumn *column(int number);

    int askRowCount();

    void takeState();
    bool followMoves(QVector<qint64> &places);
    QString tellingExpression(int row);
    void findNoted(const QVector<qint64> &before, QVector<qint64> &places);
    bool mayResort() const;
    const QStringList &memberTables();
    bool sharesRecordsWith(Private &other);

    // Drops everything that was learned from the display table.
    void forgetTable();

    // Shows what `handle` points to. No signals.
    void show(QDbptr *handle);

    // Shows the table itself and deletes the sorted view that was shown in its place. No signals.
    void dropFacade(OrvaneTableModel *model);

    // Which row of `to` has the record of each of these rows of `from`; -1 where there is none.
    static QVector<qint64> sameRows(QDbptr *from, QDbptr *to, const QVector<qint64> &rows);

    // By what the table is sorted to be in the order of a column; empty where it can't be.
    QString sortKey(int number);

    // The database model. Throws when it is gone; `method` is for the text.
    OrvaneDatabaseModel &database(const char *method) const;

    // The place of the column `number` (0: of no field) at `record` (dbALL: of no record). None where there
    // is no such place.
    std::optional<Dbptr> place(int number, qint64 record);

    // The handle for that place, for an index. Null where there is no such place.
    QDbptr *handleFor(int number, qint64 record);

    // Throws when there is no such column or the request fails.
    const ColumnSample &sample(int number);

    QVariant columnHeader(int section, int role, const OrvaneTableModel &model);
    QVariant rowHeader(int section, int role, const OrvaneTableModel &model);
};

// Moves the persistent indexes of a model to where their records are.
struct OrvaneTableModel::Rearranging {
    explicit Rearranging(OrvaneTableModel &arranged);
    void apply(int rowCount); // indexes without a place among so many rows end

    OrvaneTableModel &model;
    const QModelIndexList before;
    const QVector<qint64> rows; // of the indexes, each once and in order
    QVector<qint64> places;     // of the records of these rows; -1: nowhere
};

#endif
