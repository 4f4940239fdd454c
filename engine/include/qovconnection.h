#ifndef QOVCONNECTION_H
#define QOVCONNECTION_H

#include <memory>

#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>

#include <orvane/db.h>
#include <ovqt_export.h>

class QDbptr;
class QOvResponse;
class QOvServer;

/* The one door between handles and the dispatcher. It owns the dispatcher, knows the one database that is
 * open through it, and turns error responses into std::runtime_error. GUI thread only. */
class OVQT_EXPORT QOvConnection : public QObject
{
    Q_OBJECT

public:
    /* Opens nothing. Throws when the server name is not "/". */
    explicit QOvConnection(QString serverName);

    /* Opens a database at once; throws what openDatabase throws. */
    QOvConnection(QString serverName, QString launchDbName, QString permissions);

    /* Closes the database, without asking whether one is open, and lets no exception out: destroying a
     * connection that holds no open database ends the program. Owners destroy a connection only while its
     * database is open. */
    ~QOvConnection() override;

    /* Opens a database and returns a new handle on it, the caller's. Throws when one is open already, which
     * then stays open, and when the request fails. */
    QDbptr *openDatabase(QString databaseName, QString permissions);

    /* A new handle, the caller's: on the open database, or an unbound one when none is open. */
    QDbptr *getQDbptr();

    QString getServerName() const;
    /* The name last given to open a database; empty before the first. */
    QString getLaunchDbName() const;

    /* Sends a request. The response is never an error: an error response is thrown as std::runtime_error
     * with its whole text. */
    std::shared_ptr<QOvResponse> request(QDbptr *handle, QString name, QList<QVariant> args);
    std::shared_ptr<QOvResponse> request(QDbptr *handle, QString name);

    bool databaseIsOpen() const { return m_dbptr.database >= 0; }

    /* Closes the database and announces it; throws when the request fails, for one when none is open. */
    void closeDatabase();

signals:
    /* Every handle of this connection has become invalid when its receivers have returned. */
    void databaseClosed();

private:
    QString m_serverName;
    QString m_launchDbName;
    Dbptr m_dbptr;
    std::unique_ptr<QOvServer> m_server;
};

#endif
