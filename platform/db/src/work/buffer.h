// Arrays of numbers that are not cleared before they are filled: at millions of rows that would cost as much
// as filling them.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace orvane {

template <typename T>
class UnclearedAllocator : public std::allocator<T>
{
public:
    template <typename U>
    struct rebind {
        using other = UnclearedAllocator<U>;
    };
    using std::allocator<T>::allocator;

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
};

// What a buffer holds after it grew is not defined until it is written.
template <typename T>
using Buffer = std::vector<T, UnclearedAllocator<T>>;

} // namespace orvane
