#include "expression/vector.h"

#include <algorithm>
#include <cstring>

namespace orvane::expr {

namespace {

constexpr std::uint8_t all_present = Present;
constexpr std::size_t every_bit = ~std::size_t{0};
constexpr std::size_t arena_block = std::size_t{1} << 16;

} // namespace

SelectionVector difference(Selection from, const SelectionVector &without)
{
    SelectionVector left;
    left.reserve(from.count - without.size());
    auto next = without.begin();
    for_each(from, [&](std::size_t position) {
        if (next != without.end() && *next == position)
            ++next;
        else
            left.push_back(static_cast<std::uint32_t>(position));
    });
    return left;
}

void BufferPool::Return::operator()(VectorBuffer *buffer) const
{
    std::unique_ptr<VectorBuffer> kept(buffer);
    if (pool->free_.size() < pool->free_.capacity())
        pool->free_.push_back(std::move(kept));
}

BufferPool::Lease BufferPool::lease(Storage storage, std::size_t size)
{
    if (free_.capacity() == 0)
        free_.reserve(64);
    std::unique_ptr<VectorBuffer> buffer;
    if (free_.empty()) {
        buffer = std::make_unique<VectorBuffer>();
    } else {
        buffer = std::move(free_.back());
        free_.pop_back();
    }
    const auto fit = [size](auto &values) {
        if (values.size() < size)
            values.resize(size);
    };
    switch (storage) {
    case Storage::Integer:
        fit(buffer->integers);
        break;
    case Storage::Real:
        fit(buffer->reals);
        break;
    case Storage::Text:
        fit(buffer->texts);
        break;
    }
    fit(buffer->presences);
    return Lease(buffer.release(), Return{this});
}

Vector Vector::of_integers(const std::int64_t *values, const std::uint8_t *presences)
{
    Vector vector;
    vector.integers_ = values;
    vector.presences_ = presences ? presences : &all_present;
    vector.mask_ = every_bit;
    vector.presence_mask_ = presences ? every_bit : 0;
    return vector;
}

Vector Vector::of_reals(const double *values, const std::uint8_t *presences)
{
    Vector vector = of_integers(nullptr, presences);
    vector.reals_ = values;
    return vector;
}

Vector Vector::single(const Value &constant, BufferPool &pool)
{
    Vector vector = empty(storage_of(constant.type), 1, pool);
    switch (storage_of(constant.type)) {
    case Storage::Integer:
        *vector.integers() = constant.integer;
        break;
    case Storage::Real:
        *vector.reals() = constant.real;
        break;
    case Storage::Text:
        *vector.texts() = constant.text;
        break;
    }
    *vector.presences() = constant.presence;
    vector.mask_ = 0;
    vector.presence_mask_ = 0;
    return vector;
}

Vector Vector::empty(Storage storage, std::size_t size, BufferPool &pool)
{
    Vector vector;
    vector.buffer_ = pool.lease(storage, std::max<std::size_t>(size, 1));
    vector.integers_ = vector.buffer_->integers.data();
    vector.reals_ = vector.buffer_->reals.data();
    vector.texts_ = vector.buffer_->texts.data();
    vector.presences_ = vector.buffer_->presences.data();
    vector.mask_ = every_bit;
    vector.presence_mask_ = every_bit;
    return vector;
}

template <>
Reader<std::int64_t>::Reader(const Vector &vector)
    : values_(vector.integers_), presences_(vector.presences_), mask_(vector.mask_),
      presence_mask_(vector.presence_mask_)
{
}

template <>
Reader<double>::Reader(const Vector &vector)
    : values_(vector.reals_), presences_(vector.presences_), mask_(vector.mask_),
      presence_mask_(vector.presence_mask_)
{
}

template <>
Reader<std::string_view>::Reader(const Vector &vector)
    : values_(vector.texts_), presences_(vector.presences_), mask_(vector.mask_),
      presence_mask_(vector.presence_mask_)
{
}

char *TextArena::room(std::size_t length)
{
    if (length > max_bytes - total_) {
        exhausted_ = true;
        return nullptr;
    }
    total_ += length;
    if (length > left_) {
        const std::size_t size = std::max(length, arena_block);
        blocks_.push_back(std::make_unique<char[]>(size));
        next_ = blocks_.back().get();
        left_ = size;
    }
    char *room = next_;
    next_ += length;
    left_ -= length;
    return room;
}

std::string_view TextArena::copy(std::string_view text)
{
    char *place = text.empty() ? nullptr : room(text.size());
    if (!place)
        return {};
    std::memcpy(place, text.data(), text.size());
    return {place, text.size()};
}

void TextArena::clear()
{
    // The first block is kept for the next batch, unless it was made for one long text.
    if (blocks_.size() > 1)
        blocks_.resize(1);
    next_ = blocks_.empty() ? nullptr : blocks_.front().get();
    left_ = blocks_.empty() ? 0 : arena_block;
    total_ = 0;
    exhausted_ = false;
}

} // namespace orvane::expr
