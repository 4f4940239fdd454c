#include "storage/lock_holder.h"

#include "base/concat.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane {

namespace {

namespace fs = std::filesystem;

bool is_number(const std::string &name)
{
    return !name.empty() &&
           std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isdigit(c); });
}

// Whether an open file of a process, by its number there, has a lock. Locks of open files have no process of
// their own in the system's list; they are told with the open file alone.
bool has_lock(const fs::path &process, const std::string &open_file)
{
    std::ifstream info(process / "fdinfo" / open_file);
    for (std::string line; std::getline(info, line);)
        if (line.rfind("lock:", 0) == 0)
            return true;
    return false;
}

bool holds_lock(const fs::path &process, const FileState &state)
{
    std::error_code unreadable; // of another user, or ended meanwhile
    for (fs::directory_iterator open_files(process / "fd", unreadable), end; !unreadable && open_files != end;
         open_files.increment(unreadable)) {
        struct stat info;
        if (::stat(open_files->path().c_str(), &info) == 0 && info.st_dev == state.device &&
            info.st_ino == state.inode && has_lock(process, open_files->path().filename()))
            return true;
    }
    return false;
}

std::string name_of(const fs::path &process)
{
    std::string name;
    std::ifstream file(process / "comm");
    std::getline(file, name);
    return name.empty() ? "a program" : name;
}

} // namespace

std::string lock_holder(RandomAccessFile &file)
{
    const std::string unknown = "another program";
    const auto state = file.state();
    if (!state.ok())
        return unknown;
    std::error_code none;
    for (fs::directory_iterator processes("/proc", none), end; !none && processes != end;
         processes.increment(none)) {
        const std::string number = processes->path().filename();
        if (!is_number(number) || !holds_lock(processes->path(), *state))
            continue;
        if (number == std::to_string(::getpid()))
            return concat("this program itself (process ", number, "), which has it open once more");
        return concat(name_of(processes->path()), " (process ", number, ")");
    }
    return unknown;
}

} // namespace orvane
