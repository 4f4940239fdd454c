// A path in two forms: as the user gave it, for messages and answers, and absolute, for the system, so
// that a later change of the working folder does no harm.
#pragma once

#include <string>

namespace orvane {

struct LocatedPath {
    std::string shown;
    std::string absolute;

    static LocatedPath from(const std::string &path);
    // This folder's entry of that name; a name that is absolute stands for itself.
    LocatedPath entry(const std::string &name) const;
    // The folder that this path is in: "." where the path is a bare name.
    LocatedPath folder() const;
    // The path with a text put behind it.
    LocatedPath with_ending(const std::string &ending) const { return {shown + ending, absolute + ending}; }
    // The last part of the path.
    std::string name() const;
};

} // namespace orvane
