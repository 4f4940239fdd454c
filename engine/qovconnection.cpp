#include <qovconnection.h>

#include <stdexcept>
#include <string>

#include <qdbptr.h>
#include <qovresponse.h>
#include <qovserver.h>

namespace {

std::unique_ptr<QOvServer> dispatcherFor(const QString &serverName)
{
    if (serverName != QLatin1String("/"))
        throw std::runtime_error("QOvConnection::QOvConnection: Unknown server name\n\n\t'" +
                                 serverName.toLocal8Bit().toStdString() +
                                 "'\n\nin QOvConnection. Currently limited to '/'");
    return std::make_unique<QOvServer>();
}

} // namespace

QOvConnection::QOvConnection(QString serverName)
    : m_serverName(std::move(serverName)), m_dbptr(dbinvalid()), m_server(dispatcherFor(m_serverName))
{
}

// Not delegating: the destructor, which ends the program when no database is open, must not run when the
// opening fails.
QOvConnection::QOvConnection(QString serverName, QString launchDbName, QString permissions)
    : m_serverName(std::move(serverName)), m_launchDbName(launchDbName), m_dbptr(dbinvalid()),
      m_server(dispatcherFor(m_serverName))
{
    delete openDatabase(std::move(launchDbName), std::move(permissions));
}

QOvConnection::~QOvConnection()
{
    closeDatabase();
}

QDbptr *QOvConnection::openDatabase(QString databaseName, QString permissions)
{
    if (databaseIsOpen())
        throw std::runtime_error(
            "QOvConnection::openDatabase: QOvConnection currently supports only one open "
            "database at a time; attempt to open another ('" +
            databaseName.toStdString() + "') rejected");
    QDbptr unbound;
    const auto response = request(&unbound, QStringLiteral("open_database"), {databaseName, permissions});
    QDbptr *handle = response->getQDbptr();
    m_dbptr = handle->getDbptr();
    m_launchDbName = std::move(databaseName);
    return handle;
}

QDbptr *QOvConnection::getQDbptr()
{
    return databaseIsOpen() ? new QDbptr(this, m_dbptr) : new QDbptr;
}

QString QOvConnection::getServerName() const
{
    return m_serverName;
}

QString QOvConnection::getLaunchDbName() const
{
    return m_launchDbName;
}

std::shared_ptr<QOvResponse> QOvConnection::request(QDbptr *handle, QString name, QList<QVariant> args)
{
    if (!handle)
        throw std::runtime_error("QOvConnection::request: input QDbptr is null");
    auto response = m_server->process(handle, std::move(name), std::move(args));
    if (response->errorOccurred())
        throw std::runtime_error("QOvConnection::request: 'process' request to server failed:\n\n" +
                                 response->errorString().toStdString());
    response->setConnection(this);
    return response;
}

std::shared_ptr<QOvResponse> QOvConnection::request(QDbptr *handle, QString name)
{
    return request(handle, std::move(name), {});
}

void QOvConnection::closeDatabase()
{
    QDbptr handle(this, m_dbptr);
    request(&handle, QStringLiteral("close_database"));
    m_dbptr = dbinvalid();
    emit databaseClosed();
}
