// Event handlers and slots let no exception out.
#pragma once

#include <exception>

#include <orvane/util.h>

// Runs `work`; what it throws becomes a line in the error log, and the answer false.
template <typename Work>
bool guarded(const char *where, Work work) noexcept
{
    try {
        work();
        return true;
    } catch (const std::exception &error) {
        elog_log("event map: %s: %s", where, error.what());
    } catch (...) {
        elog_log("event map: %s: failed for an unknown reason", where);
    }
    return false;
}
