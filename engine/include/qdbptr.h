#ifndef QDBPTR_H
#define QDBPTR_H

#include <cstdint>
#include <memory>

#include <QHash>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <orvane/db.h>
#include <ovqt_export.h>

class QOvConnection;
class QOvResponse;

/* The forms of QDbptr::toString. */
enum QDbptrToStringMode {
    QDbptrToStringMultiline = 0,  /* one index a line, with names */
    QDbptrToStringSingleLine = 1, /* the same on one line */
    QDbptrToStringIndexesOnly = 2 /* bare numbers; sends no request */
};

/* What a handle points to. */
enum QDbptrType {
    DbptrInvalid = 0,
    DbptrDatabase = 1,
    DbptrTable = 2,
    DbptrField = 3,
    DbptrRecord = 4,
    DbptrCell = 5
};

/* A database pointer on a connection: the one road from models and widgets to the data. Every question is a
 * named request through the connection.
 *
 * Lifetime: the connection is not owned; when it announces that its database is closed the handle becomes
 * invalid. Handles that methods return are new, have no parent and are the caller's.
 *
 * Failures are std::runtime_error: a failed request, a request without an open database, and, for every
 * method where nothing else is said, a call on a null handle ("QDbptr::METHOD: Attempted to call on null
 * object"). Calling a method on a null QDbptr* is allowed by contract; code that does so is compiled with
 * -fno-delete-null-pointer-checks, which the CMake target brings along.
 *
 * Integers are answered as int and saturate; where more is needed, request() gives the 64-bit value. */
class OVQT_EXPORT QDbptr : public QObject
{
    Q_OBJECT

public:
    /* An unbound handle: no connection, every index dbINVALID. */
    QDbptr();
    /* Throws when the connection is null. */
    QDbptr(QOvConnection *connection, Dbptr dbptr);
    ~QDbptr() override;

    /* True when the handle is not null, has a connection with an open database, and no index is dbINVALID.
     * It does not tell whether what the indexes name exists. */
    bool isValid() const;

    QOvConnection *getConnection() const;
    Dbptr getDbptr() const;
    int64_t getIndexDatabase() const;
    int64_t getIndexTable() const;
    int64_t getIndexField() const;
    int64_t getIndexRecord() const;

    /* Throws for a valid handle whose indexes fit no type. */
    QDbptrType getDbptrType();

    /* Name of the database, table or field pointed to; empty for an invalid handle and for a record. */
    QString getName();

    /* The text form, with the names of what the indexes point to. A name that can't be had is left out;
     * apart from the call on a null handle it never throws, so that an error text can always be built. */
    QString toString(QDbptrToStringMode mode = QDbptrToStringMultiline);

    /* Points an existing handle elsewhere in the same database, without a signal and without a check; for
     * code that visits many cells and does not want a handle for each. */
    void moveTo(const Dbptr &dbptr);

    /* Sends a request; the response is never an error. */
    std::shared_ptr<QOvResponse> request(QString name);
    std::shared_ptr<QOvResponse> request(QString name, QList<QVariant> args);

    QString getDatabaseFileName();
    QString getDatabaseFilename();
    QString getDatabaseName();
    QString getSchemaName();
    QString getTableName();
    QString getFieldName();
    QString getFieldNull();
    QString getSchemaDescription();
    QString getDatabaseDescription();
    QString getTableDescription();
    QString getFieldDescription();
    QString getSchemaDetail();
    QString getDatabaseDetail();
    QString getTableDetail();
    QString getFieldDetail();
    QString getFieldRange();
    QString getFieldFormat();
    QString getFieldUnits();
    QString getFieldBaseTable();
    QString getTableFilename();
    QString getTableDirname();
    QString getDatabaseAbspath();
    QString getDbPath();
    QString getTableCreation();
    QString getUniqueIdName();
    QString getTimedateName();
    QString getDbIdServer();
    QString getDbLocks();

    int getFieldType();
    int getTableCount();
    int getFieldCount();
    int getRecordCount();
    int getTableSize();  /* bytes */
    int getFieldSize();  /* bytes */
    int getRecordSize(); /* bytes, the line feed included */
    int getFieldIndex(); /* first byte of the field in its record */

    double getTableModTime(); /* epoch seconds; ORVANE_NULL_TIME without a file */

    bool tableIsPresent();
    bool tableIsView();
    bool tableIsWritable();

    QList<QString> getSchemaTables();
    QList<QString> getTableFields();
    QList<QString> getBaseTablesPresent();
    QList<QString> getBaseTablesAbsent();
    QList<QString> getViewsPresent();
    QList<QString> getViewTables();
    QList<QString> findJoinTables();
    QList<QString> getPrimaryKey();
    QList<QString> getAlternateKey();
    QList<QString> getForeignKeys();

    QHash<QString, QString> getLinkFieldTables(); /* id field to the table that defines it */
    QHash<QString, double> getTableModTimes();    /* base table to epoch seconds, as getTableModTime */

    /* Join table to [keys on this side, keys on the table's side]; only tables that have a file. */
    QMap<QString, QList<QStringList>> findJoinTablesPresent();

    /* The names of fields that hold a value in the sampled head of the table, in schema order. */
    QList<QString> getNonNullTableFields();

    /* Of a field handle, judged from a sample: each call samples anew. */
    bool columnIsProbablyNull();
    int columnApproxWidthChars();

    /* False for anything but a cell, without a request. */
    bool cellIsNull();
    /* False for an invalid, database or table handle. */
    bool fieldIsPrimary();

    /* The text of the record or cell as it stands in the file; with `scratch` the record is copied to the
     * table's scratch record instead, and the text is empty. */
    QString dbGet(bool scratch);
    /* Values by field name. */
    QHash<QString, QVariant> dbGetv(QList<QString> fields);
    /* The value of the cell; an invalid variant when the handle is not one. */
    QVariant dbGetv();

    /* The number of the next record after the handle's, backwards the next before it, for which the
     * expression is true; from a table the first, backwards the last. Negative when there is none and when
     * the search fails. */
    int dbFind(QString expression, bool backwards);
    /* What tells whether the handle's table is as it was. */
    struct TableState {
        qint64 numbering = -1; /* another one when record numbers stand for other records */
        qint64 version = -1;   /* another one when another program may have changed records */
    };
    TableState getTableState();
    /* Where the records are now that had these numbers at a numbering, -1 for those that are gone. Empty when
     * nobody knows: another program put another file in the table's place. */
    QVector<qint64> movedRecords(qint64 numbering, const QVector<qint64> &records);
    /* The rows of another table or view that have the same records as these rows of the handle's table; -1
     * where there is none. Throws when the two are not made of the same member tables. */
    QVector<qint64> findRows(QString table, const QVector<qint64> &rows);

    /* What changes data, each emitting dataChanged() after its request. */

    /* Writes a value, given as text, into the field of the record pointed to; "NULL" stands for the null
     * value. The handle is of the cell itself: the value is converted by the type of the field that it points
     * to. */
    void dbPutv(QString field, QVariant value);
    /* Adds a record, given as its text or, by an empty one, the scratch record. Answers its number. dbAddchk
     * adds none where a record has the same primary key, and answers that one's number. */
    int dbAdd(QString row);
    int dbAddchk(QString row);
    /* Marks the record pointed to, of a view the row, as one to be removed by dbCrunch(). */
    void dbMark();
    void dbCrunch();

    /* The same for many rows of the table pointed to, in one request, which calls the progress hook. */
    struct RowRange {
        qint64 first;
        qint64 last;
    };
    struct RowsChanged {
        qint64 changed = 0; /* records that were changed, or rows of a view that were marked */
        QString failure;    /* why not all; empty when all were */
        bool cancelled = false;
    };
    /* As dbPutv(): the handle is of the field. Throws when nothing was changed, unless that was cancelled. */
    RowsChanged putRows(QString field, QVariant value, const QVector<RowRange> &rows);
    RowsChanged markRows(const QVector<RowRange> &rows);

    /* Lets go of the view pointed to: every handle on it goes stale. */
    void dbFree();

    /* New views of the table pointed to. An empty view name leaves the choice of a name to the library. */

    /* Each row beside its matches in a table, on the keys of both; outerJoinTable keeps rows without a match.
     * leftJoinTable is joinTable with the sides exchanged: the named table comes first. noJoinTable gives the
     * rows without a match. */
    QDbptr *joinTable(QString table, QString viewName);
    QDbptr *outerJoinTable(QString table, QString viewName);
    QDbptr *leftJoinTable(QString table, QString viewName);
    QDbptr *noJoinTable(QString table, QString viewName);
    QDbptr *thetaJoinTable(QString table, QString expression, QString viewName);
    /* The view without one of its tables. */
    QDbptr *severTable(QString table, QString viewName);
    /* The records of one of the view's tables. The library names the view: the name is not used. */
    QDbptr *separateTable(QString table, QString viewName);
    /* sort, group and ungroup throw nothing when the library can't make the view: the handle is invalid
     * then. */
    QDbptr *sort(QList<QString> fields, QString viewName, bool reverse, bool unique);
    QDbptr *sort(QString field, QString viewName, bool reverse, bool unique);
    QDbptr *group(QList<QString> fields, QString viewName);
    QDbptr *ungroup(QString viewName);
    QDbptr *subset(QString expression, QString viewName);

    QDbptr *lookupTable(QString name);
    QDbptr *lookupTable(int index);
    QDbptr *lookupField(QString name);
    QDbptr *lookupField(int index);
    QDbptr *lookupRecord(int index);

    static QList<QString> QVariantListToQStringList(QList<QVariant> list);

signals:
    /* A call through this handle has changed data. */
    void dataChanged();
    /* The handle has become invalid. */
    void invalidated();

public slots:
    void invalidate();
    /* Asks the connection to close its database; does nothing on a null or unbound handle. Throws what the
     * connection throws: a signal may only be connected to it by a receiver that catches. */
    void closeDatabase();

private:
    QOvConnection *m_connection;
    Dbptr m_dbptr;
};

#endif
