#include "door/text_lists.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace orvane {

namespace {

char *new_text(std::string_view text)
{
    char *copy = static_cast<char *>(std::malloc(text.size() + 1));
    if (!copy)
        throw std::bad_alloc();
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

struct ListRelease {
    void operator()(Tbl *list) const { freetbl(list, std::free); }
};
struct ArrayRelease {
    void operator()(Arr *array) const { freearr(array, std::free); }
};

} // namespace

Tbl *new_text_list(const std::vector<std::string_view> &texts)
{
    std::unique_ptr<Tbl, ListRelease> list(newtbl(static_cast<std::int64_t>(texts.size())));
    if (!list)
        throw std::bad_alloc();
    for (std::string_view text : texts) {
        char *copy = new_text(text);
        if (pushtbl(list.get(), copy) < 0) {
            std::free(copy);
            throw std::bad_alloc();
        }
    }
    return list.release();
}

Arr *new_text_array(const std::map<std::string, std::string> &texts)
{
    std::unique_ptr<Arr, ArrayRelease> array(newarr());
    if (!array)
        throw std::bad_alloc();
    for (const auto &[key, text] : texts)
        setarr(array.get(), key.c_str(), new_text(text));
    return array.release();
}

} // namespace orvane
