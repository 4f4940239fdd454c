// Memory for arrays of millions of numbers. It comes in huge pages where the system has them, and what is
// given back is kept for the next array: to have the system clear fresh pages costs as much as to fill them.
#pragma once

#include <cstddef>

namespace orvane {

// At least so many bytes come from here; fewer are better asked from the heap.
constexpr std::size_t large_memory = 4 << 20;

// Throws std::bad_alloc. Of any thread. What is in it is not defined.
void *take_large_memory(std::size_t bytes);
// `bytes` as it was asked for. What is kept is the system's to take while nobody has use for it.
void give_large_memory(void *memory, std::size_t bytes) noexcept;

} // namespace orvane
