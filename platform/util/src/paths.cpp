#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

#include "guard.h"
#include "owned_text.h"

namespace orvane::util {
namespace {

std::string without_dots(std::string_view path)
{
    std::vector<std::string_view> parts;
    while (!path.empty()) {
        const size_t slash = std::min(path.find('/'), path.size());
        const std::string_view part = path.substr(0, slash);
        path.remove_prefix(std::min(slash + 1, path.size()));
        if (part == "..") {
            if (!parts.empty())
                parts.pop_back();
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
    }
    std::string clean;
    for (const std::string_view part : parts)
        clean.append("/").append(part);
    return clean.empty() ? "/" : clean;
}

} // namespace
} // namespace orvane::util

using namespace orvane::util;

char *abspath(const char *path)
{
    if (!path) {
        elog_log("abspath: expected a path, got a null pointer");
        return nullptr;
    }
    return guarded<char *>("abspath", nullptr, [&] {
        if (path[0] == '/')
            return owned_text(without_dots(path));
        return owned_text(without_dots(std::filesystem::current_path().string() + "/" + path));
    });
}

double dfiletime(const char *path)
{
    struct stat status = {};
    if (!path || stat(path, &status) != 0)
        return ORVANE_NULL_TIME;
    return static_cast<double>(status.st_mtim.tv_sec) + static_cast<double>(status.st_mtim.tv_nsec) * 1e-9;
}

int is_present(const char *path)
{
    struct stat status = {};
    return path && stat(path, &status) == 0;
}
