#include <qdbptr.h>

#include <stdexcept>
#include <string>

#include <qovconnection.h>
#include <qovresponse.h>

#include "null_handle.h"

void throwNullHandle(const char *method)
{
    throw std::runtime_error(std::string("QDbptr::") + method + ": Attempted to call on null object");
}

QDbptr::QDbptr() : m_connection(nullptr), m_dbptr(dbinvalid()) {}

QDbptr::QDbptr(QOvConnection *connection, Dbptr dbptr) : m_connection(connection), m_dbptr(dbptr)
{
    if (!connection)
        throw std::runtime_error("QDbptr::QDbptr: Can't initialize QDbptr with NULL QOvConnection");
    connect(connection, SIGNAL(databaseClosed()), this, SLOT(invalidate()), Qt::DirectConnection);
}

QDbptr::~QDbptr() = default;

bool QDbptr::isValid() const
{
    const void *handle = this;
    return handle && m_connection && m_connection->databaseIsOpen() && m_dbptr.database != dbINVALID &&
           m_dbptr.table != dbINVALID && m_dbptr.field != dbINVALID && m_dbptr.record != dbINVALID;
}

QOvConnection *QDbptr::getConnection() const
{
    requireHandle(this, "getConnection");
    return m_connection;
}

Dbptr QDbptr::getDbptr() const
{
    requireHandle(this, "getDbptr");
    return m_dbptr;
}

int64_t QDbptr::getIndexDatabase() const
{
    requireHandle(this, "getIndexDatabase");
    return m_dbptr.database;
}

int64_t QDbptr::getIndexTable() const
{
    requireHandle(this, "getIndexTable");
    return m_dbptr.table;
}

int64_t QDbptr::getIndexField() const
{
    requireHandle(this, "getIndexField");
    return m_dbptr.field;
}

int64_t QDbptr::getIndexRecord() const
{
    requireHandle(this, "getIndexRecord");
    return m_dbptr.record;
}

QDbptrType QDbptr::getDbptrType()
{
    requireHandle(this, "getDbptrType");
    if (!isValid())
        return DbptrInvalid;
    const auto &[database, table, field, record] = m_dbptr;
    const bool noField = field == dbALL;
    const bool noRecord = record == dbALL;
    const bool oneRecord = record >= 0 || record == dbSCRATCH || record == dbNULL;
    if (database >= 0 && table == dbALL && noField && noRecord)
        return DbptrDatabase;
    if (database >= 0 && table >= 0) {
        if (noField && noRecord)
            return DbptrTable;
        if (field >= 0 && noRecord)
            return DbptrField;
        if (oneRecord)
            return field >= 0 ? DbptrCell : DbptrRecord;
    }
    throw std::runtime_error("QDbptr::getDbptrType: " + toString(QDbptrToStringMultiline).toStdString() +
                             ": Uncategorized Dbptr type in QDbptr::getDbptrType");
}

QString QDbptr::getName()
{
    requireHandle(this, "getName");
    switch (getDbptrType()) {
    case DbptrDatabase:
        return getDatabaseName();
    case DbptrTable:
        return getTableName();
    case DbptrField:
    case DbptrCell:
        return getFieldName();
    case DbptrInvalid:
    case DbptrRecord:
        break;
    }
    return {};
}

void QDbptr::moveTo(const Dbptr &dbptr)
{
    requireHandle(this, "moveTo");
    m_dbptr = dbptr;
}

std::shared_ptr<QOvResponse> QDbptr::request(QString name)
{
    return request(std::move(name), {});
}

std::shared_ptr<QOvResponse> QDbptr::request(QString name, QList<QVariant> args)
{
    requireHandle(this, "request");
    if (!m_connection || !m_connection->databaseIsOpen())
        throw std::runtime_error("QDbptr::request: No open database connection for request '" +
                                 name.toStdString() + "'");
    return m_connection->request(this, std::move(name), std::move(args));
}

void QDbptr::invalidate()
{
    requireHandle(this, "invalidate");
    m_connection = nullptr;
    m_dbptr = dbinvalid();
    emit invalidated();
}

void QDbptr::closeDatabase()
{
    const void *handle = this;
    if (handle && m_connection)
        m_connection->closeDatabase();
}
