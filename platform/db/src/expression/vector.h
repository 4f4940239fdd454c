// Values of one batch while an expression is worked out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "expression/value.h"

namespace orvane::expr {

// Positions of a batch, ascending: a list, or the first `count`.
struct Selection {
    const std::uint32_t *positions = nullptr; // null: 0, 1, … count - 1
    std::size_t count = 0;
};

using SelectionVector = std::vector<std::uint32_t>;

inline Selection selection_of(const SelectionVector &positions)
{
    return {positions.data(), positions.size()};
}
inline Selection first_positions(std::size_t count)
{
    return {nullptr, count};
}

template <typename Visit>
inline void for_each(Selection selection, Visit visit)
{
    if (selection.positions) {
        for (std::size_t i = 0; i < selection.count; ++i)
            visit(std::size_t{selection.positions[i]});
    } else {
        for (std::size_t position = 0; position < selection.count; ++position)
            visit(position);
    }
}

// The positions of `from` that are not in `without`, a part of it.
SelectionVector difference(Selection from, const SelectionVector &without);

// Memory for the values of a batch. Which array is used depends on the storage.
struct VectorBuffer {
    std::vector<std::int64_t> integers;
    std::vector<double> reals;
    std::vector<std::string_view> texts;
    std::vector<std::uint8_t> presences;
};

// Keeps buffers that are done with for the next vectors. Outlives all that it gave.
class BufferPool
{
public:
    struct Return {
        BufferPool *pool = nullptr;
        void operator()(VectorBuffer *buffer) const;
    };
    using Lease = std::unique_ptr<VectorBuffer, Return>;

    // With room for `size` values. What they are is not defined.
    Lease lease(Storage storage, std::size_t size);

private:
    std::vector<std::unique_ptr<VectorBuffer>> free_;
};

// One value per position of a batch, or (single) one for all positions. Values are defined at the positions
// of the selection for which the vector was made. The values are its own, or borrowed from a column.
class Vector
{
public:
    Vector() = default;

    static Vector of_integers(const std::int64_t *values, const std::uint8_t *presences);
    static Vector of_reals(const double *values, const std::uint8_t *presences);
    // The constant is borrowed.
    static Vector single(const Value &constant, BufferPool &pool);
    // To be filled by integers(), reals() or texts(), and presences().
    static Vector empty(Storage storage, std::size_t size, BufferPool &pool);

    // To fill an own vector.
    std::int64_t *integers() { return buffer_->integers.data(); }
    double *reals() { return buffer_->reals.data(); }
    std::string_view *texts() { return buffer_->texts.data(); }
    std::uint8_t *presences() { return buffer_->presences.data(); }

private:
    template <typename T>
    friend class Reader;

    BufferPool::Lease buffer_;
    const std::int64_t *integers_ = nullptr;
    const double *reals_ = nullptr;
    const std::string_view *texts_ = nullptr;
    const std::uint8_t *presences_ = nullptr;
    std::size_t mask_ = 0;          // 0 for a single value, else all bits
    std::size_t presence_mask_ = 0; // 0 where all positions share one presence
};

// Reads a vector of std::int64_t, double or std::string_view without asking at each position what kind it is
// of.
template <typename T>
class Reader
{
public:
    explicit Reader(const Vector &vector);

    T operator[](std::size_t position) const { return values_[position & mask_]; }
    std::uint8_t presence(std::size_t position) const { return presences_[position & presence_mask_]; }

    // One value for all positions; one presence for all.
    bool is_single() const { return mask_ == 0; }
    bool has_one_presence() const { return presence_mask_ == 0; }

private:
    const T *values_;
    const std::uint8_t *presences_;
    std::size_t mask_;
    std::size_t presence_mask_;
};

// Memory for texts that are computed; they live until clear().
class TextArena
{
public:
    // Longer texts than this are no value.
    static constexpr std::size_t max_text = std::size_t{1} << 16;
    static constexpr std::size_t max_bytes = std::size_t{1} << 28;

    // Room for `length` bytes; null, and exhausted(), once the arena has handed out max_bytes.
    char *room(std::size_t length);
    std::string_view copy(std::string_view text);
    bool exhausted() const { return exhausted_; }
    void clear();

private:
    std::vector<std::unique_ptr<char[]>> blocks_;
    char *next_ = nullptr;
    std::size_t left_ = 0;
    std::size_t total_ = 0;
    bool exhausted_ = false;
};

} // namespace orvane::expr
