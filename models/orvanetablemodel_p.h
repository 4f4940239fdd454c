#ifndef ORVANETABLEMODEL_P_H
#define ORVANETABLEMODEL_P_H

#include <QPointer>
#include <QVector>
#include <chrono>
#include <optional>

#include "cell_reader.h"
#include "display_settings.h"
#include "handle_pool.h"
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

#endif
