/* A parameter file in memory: nodes owned by their parent, the root by the caller. */
#ifndef ORVANE_UTIL_PARAMETER_NODE_H
#define ORVANE_UTIL_PARAMETER_NODE_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <orvane/util.h>

/* A place in a file, counted from 1; columns count characters. */
struct PfPlace {
    int64_t line = 1;
    int64_t column = 1;
};

struct PfEntry {
    const std::string *key = nullptr; // in the array's index; null in a list
    PfPlace key_place;
    PfPlace place;
    std::string text;         // of a string
    std::unique_ptr<Pf> node; // of a list or an array
};

struct Pf {
    PfKind kind = PFARRAY;
    PfPlace place;
    std::vector<PfEntry> entries;                    // in file order
    std::map<std::string, size_t, std::less<>> keys; // of an array: which entry
    std::shared_ptr<const std::string> file;
    bool root = false;

    /* The entry under a key, or of a list at an index in decimal; null when there is none. */
    const PfEntry *find(std::string_view key) const;
};

#endif
