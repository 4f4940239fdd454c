#include "work/machine_memory.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <limits>
#include <optional>
#include <string>
#include <unistd.h>

namespace orvane {

namespace {

constexpr std::size_t no_limit = std::numeric_limits<std::size_t>::max();

// The first number in a file; nothing where there is no file, or where it says "max".
std::optional<std::size_t> number_in(const std::string &path)
{
    std::ifstream file(path);
    std::size_t number = 0;
    return file >> number ? std::optional(number) : std::nullopt;
}

// The number behind a name, in a file of lines of a name and a number.
std::optional<std::size_t> number_of(const std::string &path, const std::string &wanted)
{
    std::ifstream file(path);
    std::string name, rest;
    for (std::size_t number = 0; file >> name >> number; std::getline(file, rest))
        if (name == wanted)
            return number;
    return std::nullopt;
}

// What the two generations of control groups call the same.
struct GroupFiles {
    const char *folder;
    const char *limit;
    const char *usage;
    const char *files_kept; // in memory.stat
};
constexpr GroupFiles unified{"/sys/fs/cgroup", "/memory.max", "/memory.current", "inactive_file"};
constexpr GroupFiles separate{"/sys/fs/cgroup/memory", "/memory.limit_in_bytes", "/memory.usage_in_bytes",
                              "total_inactive_file"};

// Calls `visit` with the folder of each control group that the process is in, from its own to the outermost.
template <typename Visit>
void for_groups(Visit visit)
{
    std::ifstream file("/proc/self/cgroup");
    for (std::string line; std::getline(file, line);) {
        const auto first = line.find(':');
        const auto second = line.find(':', first + 1);
        if (second == std::string::npos)
            continue;
        const std::string controllers = line.substr(first + 1, second - first - 1);
        if (!controllers.empty() && controllers != "memory")
            continue;
        const GroupFiles &files = controllers.empty() ? unified : separate;
        for (std::string path = line.substr(second + 1);; path.resize(path.rfind('/'))) {
            visit(files, files.folder + (path == "/" ? std::string() : path));
            if (path.empty() || path == "/" || path.rfind('/') == std::string::npos)
                break;
        }
    }
}

std::size_t physical_memory()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long page = sysconf(_SC_PAGE_SIZE);
    return pages > 0 && page > 0 ? static_cast<std::size_t>(pages) * static_cast<std::size_t>(page)
                                 : no_limit;
}

} // namespace

std::size_t machine_memory()
{
    std::size_t memory = physical_memory();
    for_groups([&](const GroupFiles &files, const std::string &folder) {
        if (const auto limit = number_in(folder + files.limit))
            memory = std::min(memory, *limit);
    });
    return memory;
}

std::size_t available_memory()
{
    const auto kilobytes = number_of("/proc/meminfo", "MemAvailable:");
    std::size_t available = kilobytes ? *kilobytes * 1024 : no_limit;
    for_groups([&](const GroupFiles &files, const std::string &folder) {
        const auto limit = number_in(folder + files.limit);
        const auto usage = limit ? number_in(folder + files.usage) : std::nullopt;
        if (!usage)
            return;
        const std::size_t kept = number_of(folder + "/memory.stat", files.files_kept).value_or(0);
        const std::size_t used = *usage - std::min(*usage, kept);
        available = std::min(available, *limit - std::min(*limit, used));
    });
    return available;
}

} // namespace orvane
