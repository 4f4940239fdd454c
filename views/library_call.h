// Calls of the database library that a window makes by itself, with the library's reason where one fails.
#ifndef OVQT_VIEWS_LIBRARY_CALL_H
#define OVQT_VIEWS_LIBRARY_CALL_H

#include <cstdlib>
#include <memory>
#include <stdexcept>

#include <QString>

#include <orvane/util.h>

// Throws std::runtime_error with `failure` and what the library has said, unless the call answers 0. What is
// told to the user by this is taken out of the error log.
template <typename Call>
void callLibrary(const QString &failure, Call &&call)
{
    using LoggedText = std::unique_ptr<char, decltype(&std::free)>;
    const LoggedText before(elog_string(0), &std::free);
    const int64_t count = elog_count();
    if (call() == 0) {
        return;
    }
    const LoggedText said(elog_string(count), &std::free);
    elog_clear();
    if (*before != '\0') {
        elog_log("%s", before.get());
    }
    throw std::runtime_error(
        (*said == '\0' ? failure : failure + QStringLiteral(":\n\n") + QString::fromUtf8(said.get()))
            .toStdString());
}

#endif
