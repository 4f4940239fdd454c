#ifndef REQUEST_CALL_H
#define REQUEST_CALL_H

#include <memory>

#include <QList>
#include <QString>
#include <QVariant>

#include <orvane/db.h>
#include <qovresponse.h>
#include <qovserver.h>

struct RequestRow;

/* Whether the library's error log belongs into an error text. */
enum class LibraryLog { Without, With };

/* One request under way: what a handler reads, and where it puts its answer. Lives for the one call. */
struct RequestCall {
    QOvServer &server;
    QDbptr *handle;
    const QString &name;
    const QList<QVariant> &arguments;
    const RequestRow &row;
    Dbptr input; /* the pointer of the handle; invalid for a request that needs none */
    const std::shared_ptr<QOvResponse> &response;

    /* Makes the response an error. */
    void fail(const QString &message, LibraryLog log) const
    {
        server.setProcessError(response, handle, name, message, log == LibraryLog::With);
    }

    /* Tests the number of arguments and the pointer's level; what is wrong becomes the error. */
    bool meetsConditions() const;

private:
    bool hasArguments() const;
    bool pointsWhereItMust() const;
};

/* Text of the database as it is shown: UTF-8, with replacement characters for what is not. */
inline QString shownText(const char *text)
{
    return QString::fromUtf8(text);
}

#endif
