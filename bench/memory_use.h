// The memory of the process that asks.
#ifndef ORVANE_BENCH_MEMORY_USE_H
#define ORVANE_BENCH_MEMORY_USE_H

#include <fstream>
#include <string>

// KiB at its highest, by the system's file of the process. What getrusage() says is no less than what the
// parent process had in memory when it began this one, which may be more.
inline long peakKibibytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (long kibibytes = 0; word == "VmHWM:" && status >> kibibytes)
            return kibibytes;
    return 0;
}

#endif
