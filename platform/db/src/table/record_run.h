// Runs of record or row numbers.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace orvane {

// The numbers [first, end).
struct RecordRun {
    std::int64_t first = 0;
    std::int64_t end = 0;
};

inline std::int64_t count_of(std::span<const RecordRun> runs)
{
    std::int64_t count = 0;
    for (const RecordRun &run : runs)
        count += run.end - run.first;
    return count;
}

// Adds a number behind ascending runs, to the last one where it continues that.
inline void append_number(std::vector<RecordRun> &runs, std::int64_t number)
{
    if (!runs.empty() && runs.back().end == number)
        ++runs.back().end;
    else
        runs.push_back({number, number + 1});
}

// The same numbers in ascending runs that don't touch one another.
std::vector<RecordRun> in_order(std::span<const RecordRun> runs);

} // namespace orvane
