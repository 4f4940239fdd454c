#include "table/record_run.h"

#include <algorithm>

namespace orvane {

std::vector<RecordRun> in_order(std::span<const RecordRun> runs)
{
    std::vector<RecordRun> sorted(runs.begin(), runs.end());
    std::sort(sorted.begin(), sorted.end(),
              [](const RecordRun &a, const RecordRun &b) { return a.first < b.first; });
    std::vector<RecordRun> joined;
    for (const RecordRun &run : sorted) {
        if (run.first >= run.end)
            continue;
        if (!joined.empty() && run.first <= joined.back().end)
            joined.back().end = std::max(joined.back().end, run.end);
        else
            joined.push_back(run);
    }
    return joined;
}

} // namespace orvane
