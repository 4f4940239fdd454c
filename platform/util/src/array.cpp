#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "guard.h"

// std::string compares as unsigned bytes, which is the order that keysarr promises.
struct Arr {
    std::map<std::string, void *, std::less<>> values;
};

using orvane::util::guarded;

Arr *newarr(void)
{
    return guarded<Arr *>("newarr", nullptr, [] { return std::make_unique<Arr>().release(); });
}

void *setarr(Arr *array, const char *key, void *value)
{
    if (!array || !key) {
        elog_log("setarr: expected %s, got a null pointer", array ? "a key" : "an array");
        return nullptr;
    }
    return guarded<void *>("setarr", nullptr, [&]() -> void * {
        const auto place = array->values.find(std::string_view(key));
        if (place != array->values.end())
            return std::exchange(place->second, value);
        array->values.emplace(key, value);
        return nullptr;
    });
}

void *getarr(const Arr *array, const char *key)
{
    if (!array || !key)
        return nullptr;
    const auto place = array->values.find(std::string_view(key));
    return place == array->values.end() ? nullptr : place->second;
}

Tbl *keysarr(const Arr *array)
{
    if (!array) {
        elog_log("keysarr: expected an array, got a null pointer");
        return nullptr;
    }
    Tbl *keys = newtbl(static_cast<int64_t>(array->values.size()));
    if (!keys)
        return nullptr;
    for (const auto &[key, value] : array->values) {
        if (pushtbl(keys, const_cast<char *>(key.c_str())) < 0) {
            freetbl(keys, nullptr);
            return nullptr;
        }
    }
    return keys;
}

void freearr(Arr *array, void (*release)(void *))
{
    if (array && release) {
        for (const auto &[key, value] : array->values)
            release(value);
    }
    delete array;
}
