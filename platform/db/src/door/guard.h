// What every call of the C interface does with a failure: a code to the caller, lines to the error log, and
// nothing thrown.
#pragma once

#include "base/status.h"

#include <orvane/util.h>

#include <exception>
#include <new>
#include <string>

namespace orvane {

// One entry of the log for each line of the failure.
void log_failure(const Status &failure);

// Logs a failure and answers its code; 0 for a success.
inline int code_of(const Status &status)
{
    if (status.ok())
        return 0;
    log_failure(status);
    return static_cast<int>(status.code());
}

// Runs the body of a call, which answers a number, and turns what it throws into a code.
template <typename Body>
auto guarded(const char *call, Body body) noexcept -> decltype(body())
{
    try {
        return body();
    } catch (const std::bad_alloc &) {
        elog_log("%s: out of memory", call);
        return static_cast<int>(Code::Memory);
    } catch (const std::exception &error) {
        elog_log("%s: %s", call, error.what());
        return static_cast<int>(Code::Io);
    }
}

} // namespace orvane
