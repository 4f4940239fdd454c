// Small numbers for keys: equal keys get equal numbers, counted from 0 in the order in which they are met.
#pragma once

#include "work/buffer.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

namespace orvane {

// Of 64-bit keys. One thread while it grows; looking up may be done by several.
class KeyIds
{
public:
    static constexpr std::uint32_t none = ~std::uint32_t{0};

    // Room for so many different keys is made at once; more grow it.
    explicit KeyIds(std::size_t expected = 0)
    {
        reset(std::bit_ceil(std::max<std::size_t>(expected * 2, 64)));
    }

    std::uint32_t id_of(std::uint64_t key)
    {
        std::size_t at = slot_of(key);
        if (ids_[at] != none)
            return ids_[at];
        if ((std::size_t{count_} + 1) * 2 > ids_.size()) {
            grow();
            at = slot_of(key);
        }
        keys_[at] = key;
        return ids_[at] = count_++;
    }
    // The key's number, or `none`.
    std::uint32_t find(std::uint64_t key) const { return ids_[slot_of(key)]; }
    // Where the key's slot begins, for fetching it ahead.
    const void *place_of(std::uint64_t key) const { return &keys_[home_of(key)]; }
    std::uint32_t count() const { return count_; }

private:
    std::size_t home_of(std::uint64_t key) const
    {
        return static_cast<std::size_t>(((key ^ (key >> 32)) * 0x9e3779b97f4a7c15u) >> shift_);
    }
    std::size_t slot_of(std::uint64_t key) const
    {
        const std::size_t mask = ids_.size() - 1;
        std::size_t at = home_of(key);
        while (ids_[at] != none && keys_[at] != key)
            at = (at + 1) & mask;
        return at;
    }
    void reset(std::size_t slots)
    {
        keys_.assign(slots, 0);
        ids_.assign(slots, none);
        shift_ = 64 - std::bit_width(slots - 1);
    }
    void grow()
    {
        std::vector<std::uint64_t> keys;
        std::vector<std::uint32_t> ids;
        keys.swap(keys_);
        ids.swap(ids_);
        reset(ids.size() * 2);
        for (std::size_t i = 0; i < ids.size(); ++i)
            if (ids[i] != none) {
                const std::size_t at = slot_of(keys[i]);
                keys_[at] = keys[i];
                ids_[at] = ids[i];
            }
    }

    std::vector<std::uint64_t> keys_;
    std::vector<std::uint32_t> ids_; // `none` where a slot is free; at most half are used
    int shift_ = 0;
    std::uint32_t count_ = 0;
};

// Of pairs of 32-bit numbers.
class PairIds
{
public:
    explicit PairIds(std::size_t expected = 0) : ids_(expected) {}
    std::uint32_t id_of(std::uint32_t a, std::uint32_t b) { return ids_.id_of(pair(a, b)); }
    std::uint32_t find(std::uint32_t a, std::uint32_t b) const { return ids_.find(pair(a, b)); }
    std::uint32_t count() const { return ids_.count(); }

private:
    static std::uint64_t pair(std::uint32_t a, std::uint32_t b) { return std::uint64_t{a} << 32 | b; }
    KeyIds ids_;
};

} // namespace orvane
