#ifndef LIBRARY_MEMORY_H
#define LIBRARY_MEMORY_H

#include <cstdlib>
#include <memory>

#include <orvane/util.h>

/* Owners of what the C libraries hand over. */

struct FreeMemory {
    void operator()(void *memory) const { std::free(memory); }
};

/* A list whose elements were handed over with it. */
struct FreeListWithElements {
    void operator()(Tbl *list) const { freetbl(list, std::free); }
};

/* A list whose elements belong to somebody else. */
struct FreeList {
    void operator()(Tbl *list) const { freetbl(list, nullptr); }
};

struct FreeArrayWithValues {
    void operator()(Arr *array) const { freearr(array, std::free); }
};

using OwnedText = std::unique_ptr<char, FreeMemory>;
using OwnedList = std::unique_ptr<Tbl, FreeListWithElements>;
using BorrowingList = std::unique_ptr<Tbl, FreeList>;
using OwnedArray = std::unique_ptr<Arr, FreeArrayWithValues>;

#endif
