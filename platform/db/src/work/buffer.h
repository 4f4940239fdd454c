// Arrays of numbers that are not cleared before they are filled: at millions of rows that would cost as much
// as filling them.
#pragma once

#include "work/large_memory.h"

#include <cstdint>
#include <limits>
#include <new>
#include <utility>
#include <vector>

namespace orvane {

template <typename T>
class UnclearedAllocator
{
public:
    using value_type = T;

    UnclearedAllocator() = default;
    template <typename U>
    UnclearedAllocator(const UnclearedAllocator<U> &) noexcept
    {
    }

    T *allocate(std::size_t count)
    {
        if (count > std::numeric_limits<std::size_t>::max() / 2 / sizeof(T))
            throw std::bad_array_new_length();
        const std::size_t bytes = count * sizeof(T);
        return static_cast<T *>(is_large(bytes) ? take_large_memory(bytes) : ::operator new(bytes));
    }
    void deallocate(T *place, std::size_t count) noexcept
    {
        const std::size_t bytes = count * sizeof(T);
        if (is_large(bytes))
            give_large_memory(place, bytes);
        else
            ::operator delete(place);
    }

    template <typename U>
    void construct(U *place) noexcept
    {
        ::new (static_cast<void *>(place)) U;
    }
    template <typename U, typename... Arguments>
    void construct(U *place, Arguments &&...arguments)
    {
        ::new (static_cast<void *>(place)) U(std::forward<Arguments>(arguments)...);
    }

    bool operator==(const UnclearedAllocator &) const = default;

private:
    static constexpr bool is_large([[maybe_unused]] std::size_t bytes)
    {
#ifdef __SANITIZE_ADDRESS__
        return false; // so that what is done outside of an array is noticed
#else
        return bytes >= large_memory;
#endif
    }
};

// What a buffer holds after it grew is not defined until it is written.
template <typename T>
using Buffer = std::vector<T, UnclearedAllocator<T>>;

} // namespace orvane
