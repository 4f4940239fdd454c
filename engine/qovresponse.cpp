#include <qovresponse.h>

#include <qdbptr.h>

QOvResponse::QOvResponse() : m_dbptr(dbinvalid()), m_type(Plain) {}

QOvResponse::QOvResponse(const QString &text) : QVariant(text), m_dbptr(dbinvalid()), m_type(Value) {}

QOvResponse::QOvResponse(int number) : QVariant(number), m_dbptr(dbinvalid()), m_type(Value) {}

int QOvResponse::getOvResponseType() const
{
    return m_type;
}

void QOvResponse::setError(QString text)
{
    m_errorText = std::move(text);
    m_type = Error;
}

bool QOvResponse::errorOccurred() const
{
    return m_type == Error;
}

QString QOvResponse::errorString() const
{
    return m_errorText;
}

void QOvResponse::setConnection(QOvConnection *connection)
{
    m_connection = connection;
}

void QOvResponse::setDbptr(Dbptr dbptr)
{
    m_dbptr = dbptr;
    m_type = DatabasePointer;
}

Dbptr QOvResponse::getDbptr() const
{
    return m_dbptr;
}

QDbptr *QOvResponse::getQDbptr() const
{
    return new QDbptr(m_connection, m_dbptr);
}
