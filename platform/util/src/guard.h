/* The edge between C callers and C++: no exception crosses it. */
#ifndef ORVANE_UTIL_GUARD_H
#define ORVANE_UTIL_GUARD_H

#include <exception>
#include <new>
#include <utility>

#include <orvane/util.h>

namespace orvane::util {

/* Answers what `work` answers, or `fallback` with a line in the error log when it throws. */
template <typename Result, typename Work>
Result guarded(const char *call, Result fallback, Work &&work) noexcept
{
    try {
        return std::forward<Work>(work)();
    } catch (const std::bad_alloc &) {
        elog_log("%s: out of memory", call);
    } catch (const std::exception &error) {
        elog_log("%s: %s", call, error.what());
    } catch (...) {
        elog_log("%s: failed for an unknown reason", call);
    }
    return fallback;
}

} // namespace orvane::util

#endif
