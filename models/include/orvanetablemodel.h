#ifndef ORVANETABLEMODEL_H
#define ORVANETABLEMODEL_H

#include <QAbstractTableModel>
#include <QHash>
#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>
#include <chrono>
#include <memory>

#include <orvane/db.h>
#include <ovqt_export.h>

class OrvaneDatabaseModel;
class OvConfig;
class QDbptr;

// One table or view: a row per record, the record number in column 0 and the fields, in schema order, in
// columns 1 to n.
//
// Two handles. The own handle stands for this table (its name, kind, writability); the display handle stands
// for what is shown: rows, columns, cells, headers and keys. They are the same until a sorted view is shown
// in its place.
//
// Ownership. Table models are made and owned by their database model. They take over the handle given to
// them; the model of a view frees the view when it is destroyed, and every other handle on it goes stale.
//
// What is kept. Names, types and null texts of the fields, how wide they are, and the settings that cells are
// drawn by are asked once and kept until the model is reset, its handle ends or the configuration changes.
// Cells are always read. The row count known to views changes only with the signals that say so (see
// rowCount()).
//
// Index pointers. index() gives plain indexes; indexForRow(), indexForColumn(), indexForCell() and
// addQdbptrToIndex() give indexes whose internal pointer is a QDbptr owned by the model. The pointer of one
// place is the same each time it is asked for, and lives until 16384 other places have been asked for, or the
// model is destroyed. After the database is closed the pointers given out are still there, and invalid; new
// indexes have none. Who connects to such a handle connects uniquely.
//
// Failures. Nothing throws but getTableToolTipString() and the operations that make views. An invalid handle
// gives no rows and no columns; a record that is gone, a field that is unknown and a request that fails give
// invalid variants. What the database library says of a failed request stays in the error log.
class OVQT_EXPORT OrvaneTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    // `handle` may be null or invalid. The configuration must outlive the model.
    OrvaneTableModel(OrvaneDatabaseModel *parent, QDbptr *handle, OvConfig &config);
    ~OrvaneTableModel() override;

    OrvaneDatabaseModel *getParent() const; // null once the database model is destroyed
    Dbptr getDbptr() const;
    QDbptr *getQDbptr() const;
    QString getTableName() const;

    // The tooltip of the table. Throws std::runtime_error when a request fails.
    QString getTableToolTipString() const;

    bool tableIsPresent() const;
    bool tableIsWritable() const;
    bool tableIsView() const;
    bool tableIsStdinView() const; // the same as tableIsView()
    bool tableIsFacade() const;    // this is the sorted view shown in place of another table

    // Says that this model is the sorted view shown in place of `table`.
    void setIsFacadeOf(OrvaneTableModel *table);
    Dbptr getFacadeDbptr() const;       // what is shown
    QString getFacadeTableName() const; // of what is shown

    QList<QString> getTableFields() const;
    QList<QString> getPrimaryKey() const;
    QList<QString> getAlternateKey() const;
    QList<QString> getForeignKeys() const;
    QList<QString> getNonNullTableFields() const; // fields with a value in the records sampled
    QList<QString> findJoinTables() const;
    QMap<QString, QList<QStringList>> findJoinTablesPresent() const;
    QList<QString> getViewTables() const; // empty when the table is not a view

    int getColumnType(int column) const; // a field type of <orvane/db.h>; 0 when there is no such field
    QString fieldNameForColumnIndex(int column) const; // "recno" for column 0; empty outside the table
    int approxColumnWidthChars(int column) const;

    // The records of the table that is shown. While nobody listens for inserted rows the database is asked
    // each time; otherwise the answer is the count that listeners know, the database is asked at most every
    // 100 ms, and a difference is announced from the event loop: rowsInserted() when the table grew,
    // modelReset() when it shrank or another program put another file in its place.
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // What data() answers to Qt::DisplayRole, as texts, for the cells of some columns in the rows [first,
    // end): row by row, in the order of `columns`. A cell without a value has a null text, one that holds
    // nothing but blanks an empty one. For code that visits many cells: it reads each record once.
    QStringList displayedTexts(const QVector<int> &columns, int first, int end) const;
    // The cells of the rows [first, end) will be asked for: rows of a view may lie anywhere in their files,
    // and cost less when they are read together. A row that can't be read shows when it is asked for.
    void readAhead(int first, int end) const;

    // Shows the table in the order of a column, by way of a sorted view that goes with the next sort and with
    // the model. Column 0, and a column that is not there, leave the order as it is. A sort that is cancelled
    // or fails leaves the table in its own order and the reason in the error log. Selections and other
    // persistent indexes stay with their records.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    // Make a view of this table; see the operations of OrvaneDatabaseModel, which own and announce the result
    // and throw std::runtime_error when there is none. A sorted view that is shown in place of the table
    // plays no part in it.
    OrvaneTableModel *subset(const QString &expression, const QString &viewName);
    OrvaneTableModel *sort(const QList<QString> &keys, bool reverse, bool unique, const QString &viewName);
    OrvaneTableModel *group(const QList<QString> &keys, const QString &viewName);
    OrvaneTableModel *ungroup(const QString &viewName);
    OrvaneTableModel *joinTo(const QString &otherTable, const QString &viewName);
    OrvaneTableModel *outerJoinTo(const QString &otherTable, const QString &viewName);
    OrvaneTableModel *leftJoinTo(const QString &otherTable, const QString &viewName);
    OrvaneTableModel *noJoinTo(const QString &otherTable, const QString &viewName);
    OrvaneTableModel *thetaJoinTo(const QString &otherTable, const QString &expression,
                                  const QString &viewName);
    OrvaneTableModel *sever(const QString &table, const QString &viewName);
    OrvaneTableModel *separate(const QString &table, const QString &viewName);

    // Whether rows still stand for the records that they stood for when the model was last reset; false when
    // another program has put another file in the table's place since. Looks at the file.
    bool isCurrent() const;

    // Whether a change of layout that is announced is one that nobody asked for: a sorted table that changed
    // is sorted anew, a crunched one has other rows.
    bool isRefreshing() const;

    // Whether this is a view over a table that another program has replaced since: its rows stand for nothing
    // any more, and it is to be made again.
    bool isOutdated() const;

    // Notes for somebody which records stand in these rows (those selected, say). Persistent indexes on them
    // follow their records when another program puts another file in the place of the table; those on other
    // rows end then. Beyond 50 none are noted; no rows end the notes.
    void noteRows(const void *somebody, const QVector<int> &rows);

    // Stores a value, given as its text, in the record shown there ("NULL" stands for the null value), and
    // answers whether it is stored; editError() says why not. Whether editing is allowed is not looked at:
    // flags() tells that. `index` may be one of indexForCell() for the scratch record.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

    // Why setData() would not store a value there now; empty where it would. Changes nothing.
    QString refusal(const QModelIndex &index, const QVariant &value) const;

    // Why the last setData() stored nothing, as a sentence for the user; empty when it did.
    QString editError() const;

    // Changes of many rows in one, during which the progress hook of the process is called.
    using RowRanges = QVector<QPair<int, int>>; // the first and the last row of each
    struct RowsStored {
        qint64 stored = 0; // records or rows that were changed
        QString reason;    // why not all, as a sentence for the user; empty when all were
        bool cancelled = false;
    };
    // Stores a value in a column of many rows, as setData() does in one, but for the signals: there is one
    // dataChanged() for all.
    RowsStored setRowsData(const RowRanges &rows, int column, const QVariant &value);
    // The primary key of the base table of a column's field, where the field is a part of it; else empty.
    QStringList baseKey(int column) const;
    // How many different ones there are in the file, or would be if all records had one value in the column;
    // this takes a sort. Throws std::runtime_error where that fails or is cancelled.
    enum class Keys { AsTheyAre, WithOneValue };
    qint64 differentBaseKeys(int column, Keys keys) const;
    // Marks the records of many rows for crunch(), of a view the rows, and resets the model. Rows of a sorted
    // view that is shown in the table's place stand for those of the table.
    RowsStored markRows(const RowRanges &rows);

    // Adds the scratch record to the table, unless a record has the same primary key. Answers the number of
    // the new record, or of the one that is there. Throws std::runtime_error when the request fails.
    int addScratchRow();

    // Copies a record of this table (not of the sorted view shown in its place) or, for dbNULL, nulls to the
    // scratch record. Throws std::runtime_error when the request fails.
    void copyToScratchRow(int row);

    // Removes the marked records, of a view the marked rows. Throws std::runtime_error when the request
    // fails.
    void crunch();

    // Indexes with a handle. `row` may be dbSCRATCH or dbNULL: such an index is not valid, its pointer is.
    QModelIndex indexForRow(int row) const;
    QModelIndex indexForColumn(const QString &fieldName) const; // row 0; an unknown name gives column 0
    QModelIndex indexForCell(int row, const QString &fieldName) const;
    QModelIndex addQdbptrToIndex(const QModelIndex &index) const;

signals:
    // The model's own, beside the inherited one of the same name. Emitting it (also by connecting another
    // signal to it) takes in what changed in the table, before any other listener hears of it: what the model
    // kept is asked anew, and the inherited signals tell which rows came, went or moved and that cells
    // changed, so that selections and other persistent indexes stay with their records. The inherited reset
    // is kept for the end of what is shown.
    void modelReset();

public slots:
    // Resets this model when `dtm` is this model.
    void announceChanged(OrvaneTableModel *dtm);

private slots:
    void startOver();
    void dropSettings();
    void announceRowCount();
    void facadeDestroyed();
    void catchUp();

private:
    // Shows the table in the order of a key. Answers where the records of `rows` are then; -1 for those that
    // are not found.
    QVector<qint64> showOrder(const QString &key, bool reverse, QVector<qint64> rows);

    // Takes in what changed; false where nothing of what is shown holds any more.
    bool refresh();
    void rearrange(bool displayMoved, bool resort);
    void setRows(int rows);
    void queueRefresh(std::chrono::steady_clock::duration delay);
    void noteAgain();
    void tellCellsChanged();

    // For the other models of the database that show records of this table.
    template <class Visit>
    void forOthers(Visit visit);
    void letOthersCatchUp();
    void letOthersShowChange();

    struct Private;
    struct Rearranging;
    std::unique_ptr<Private> d;
};

#endif
