#include <algorithm>
#include <memory>
#include <vector>

#include "guard.h"

struct Tbl {
    std::vector<void *> elements;
};

using orvane::util::guarded;

Tbl *newtbl(int64_t capacity)
{
    // The capacity is a hint: a wild one must not cost memory before elements come.
    constexpr int64_t most_reserved = 1 << 20;
    return guarded<Tbl *>("newtbl", nullptr, [&] {
        auto list = std::make_unique<Tbl>();
        list->elements.reserve(static_cast<size_t>(std::clamp<int64_t>(capacity, 0, most_reserved)));
        return list.release();
    });
}

int64_t pushtbl(Tbl *list, void *element)
{
    if (!list) {
        elog_log("pushtbl: expected a list, got a null pointer");
        return -1;
    }
    return guarded<int64_t>("pushtbl", -1, [&] {
        list->elements.push_back(element);
        return static_cast<int64_t>(list->elements.size()) - 1;
    });
}

void *gettbl(const Tbl *list, int64_t index)
{
    return index >= 0 && index < maxtbl(list) ? list->elements[static_cast<size_t>(index)] : nullptr;
}

int64_t maxtbl(const Tbl *list)
{
    return list ? static_cast<int64_t>(list->elements.size()) : 0;
}

void freetbl(Tbl *list, void (*release)(void *))
{
    if (list && release)
        std::for_each(list->elements.begin(), list->elements.end(), release);
    delete list;
}
