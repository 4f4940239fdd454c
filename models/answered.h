#ifndef OVQT_MODELS_ANSWERED_H
#define OVQT_MODELS_ANSWERED_H

#include <stdexcept>

#include "library_reason.h"

// What `ask` returns, or `otherwise` when a request in it fails: the models answer a failed request as they
// answer for an invalid handle, and no exception may leave data() and its like. The library's reason stays in
// the error log.
template <class Answer, class Ask>
Answer answered(Answer otherwise, Ask ask)
{
    try {
        return ask();
    } catch (const std::exception &error) {
        giveReasonBackToLog(error.what());
        return otherwise;
    }
}

// The same where "no" is one of the answers and no problem, as in asking whether a table is there. The error
// log stays as it was.
template <class Answer, class Ask>
Answer answeredOrNone(Answer otherwise, Ask ask)
{
    const QStringList logged = loggedLines();
    try {
        return ask();
    } catch (const std::exception &error) {
        if (!libraryReason(QString::fromUtf8(error.what())).isEmpty())
            giveBackToLog(logged);
        return otherwise;
    }
}

#endif
