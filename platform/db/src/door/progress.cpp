// dbset_progress_hook, dbprogress_operation, dbprogress_waiting and dbreport_progress.
#include "work/work.h"

#include <orvane/db.h>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace orvane;

void dbset_progress_hook(dbprogress_hook hook, void *data)
{
    process_progress_hook() = ProgressHook{hook, data};
}

const char *dbprogress_operation(void)
{
    return operation_told_of();
}

const char *dbprogress_waiting(void)
{
    return waited_for();
}

int dbreport_progress(const char *operation, double fraction)
{
    using Clock = std::chrono::steady_clock;
    static Clock::time_point last_asked = Clock::now();
    const ProgressHook hook = process_progress_hook();
    if (!hook.call || Clock::now() - last_asked < Work::hook_interval)
        return 0;
    const char *const before = std::exchange(operation_told_of(), operation);
    const int answer = hook.call(std::clamp(fraction, 0.0, 1.0), hook.data);
    operation_told_of() = before;
    last_asked = Clock::now();
    return answer == 0 ? 0 : dbERROR_CANCELLED;
}
