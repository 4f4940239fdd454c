#ifndef QOVSERVER_H
#define QOVSERVER_H

#include <memory>

#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>

#include <ovqt_export.h>

class QDbptr;
class QOvResponse;

/* The request dispatcher: turns a named request on a handle into calls of the database library. It keeps
 * nothing between calls. The names it knows, with their checks, stand in engine/request_vocabulary.cpp. */
class OVQT_EXPORT QOvServer : public QObject
{
    Q_OBJECT

public:
    /* Answers a request. Never null, and never throws for a bad request: what is wrong is told by the
     * response. `handle` may be null for "open_database" only. */
    std::shared_ptr<QOvResponse> process(QDbptr *handle, QString request, QList<QVariant> args);

    /* Makes `response` an error: the message, the library's error log (which is emptied) when
     * `withLibraryLog`, the request's name and the handle's text form. `handle` may be null. */
    void setProcessError(std::shared_ptr<QOvResponse> response, QDbptr *handle, QString request,
                         QString message, bool withLibraryLog);
};

#endif
