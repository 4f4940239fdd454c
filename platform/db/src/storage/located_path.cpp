#include "storage/located_path.h"

#include <orvane/util.h>

#include <cstdlib>
#include <memory>

namespace orvane {

namespace {

std::string absolute_form(const std::string &path)
{
    const std::unique_ptr<char, void (*)(void *)> text(abspath(path.c_str()), std::free);
    return text ? std::string(text.get()) : path;
}

} // namespace

LocatedPath LocatedPath::from(const std::string &path)
{
    return {path, absolute_form(path)};
}

LocatedPath LocatedPath::entry(const std::string &name) const
{
    if (name == ".")
        return *this;
    if (!name.empty() && name.front() == '/')
        return {name, absolute_form(name)};
    const std::string absolute_path = absolute_form(absolute + "/" + name);
    if (shown == ".")
        return {name, absolute_path};
    return {shown.ends_with('/') ? shown + name : shown + "/" + name, absolute_path};
}

LocatedPath LocatedPath::folder() const
{
    const auto parent = [](const std::string &path, const char *of_bare_name) {
        const auto slash = path.rfind('/');
        return slash == std::string::npos ? std::string(of_bare_name)
               : slash == 0               ? std::string("/")
                                          : path.substr(0, slash);
    };
    return {parent(shown, "."), parent(absolute, "/")};
}

std::string LocatedPath::name() const
{
    const auto slash = shown.rfind('/');
    return slash == std::string::npos ? shown : shown.substr(slash + 1);
}

} // namespace orvane
