#include <qovserver.h>

#include <orvane/util.h>
#include <qdbptr.h>
#include <qovresponse.h>

#include "library_memory.h"
#include "request_call.h"
#include "request_vocabulary.h"

namespace {

// The library's log as it goes into an error text. Taking it empties it.
QString takenLibraryLog()
{
    const OwnedText log(elog_string(0));
    elog_clear();
    return QStringLiteral(":\n\n") + shownText(log.get());
}

// The handle's text form looks names up; that some can't be had is no news, so where the log was empty
// before it is empty afterwards.
QString describe(QDbptr *handle)
{
    if (!handle)
        return QStringLiteral("NULL QDbptr");
    const bool logWasEmpty = elog_count() == 0;
    QString text = handle->toString();
    if (logWasEmpty)
        elog_clear();
    return text;
}

} // namespace

std::shared_ptr<QOvResponse> QOvServer::process(QDbptr *handle, QString request, QList<QVariant> args)
{
    auto response = std::make_shared<QOvResponse>();
    const auto refuse = [&](const QString &message) {
        setProcessError(response, handle, request, message, false);
        return response;
    };

    const RequestRow *row = findRequest(request);
    Dbptr input = dbinvalid();
    if (!row || row->level != PointerLevel::NoHandle) {
        if (!handle)
            return refuse(QStringLiteral("Request attempted on null QDbptr"));
        if (!handle->isValid())
            return refuse(QStringLiteral("Request attempted on invalid QDbptr"));
        input = handle->getDbptr();
        response->setDbptr(input);
    }
    if (!row)
        return refuse(QStringLiteral("Unsupported request type '%1'").arg(request));

    const RequestCall call{*this, handle, request, args, *row, input, response};
    if (call.meetsConditions())
        row->handler(call);
    return response;
}

void QOvServer::setProcessError(std::shared_ptr<QOvResponse> response, QDbptr *handle, QString request,
                                QString message, bool withLibraryLog)
{
    QString text = std::move(message);
    if (withLibraryLog)
        text += takenLibraryLog();
    text += QStringLiteral("\n\n") + QStringLiteral("QOvServer::process: request '%1': input ").arg(request);
    text += describe(handle);
    response->setError(std::move(text));
}
