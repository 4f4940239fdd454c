#include "edit/key_index.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace orvane {

namespace {

// Never 0, which stands for no key and no checksum.
std::uint64_t hash_of(std::string_view bytes)
{
    // The library's hash leaves low bits that are not mixed with the high ones to chance.
    return (static_cast<std::uint64_t>(std::hash<std::string_view>()(bytes)) * 0x9e3779b97f4a7c15u) | 1;
}

} // namespace

void KeyIndex::start(std::int64_t records, std::uint64_t generation)
{
    version_ = 0;
    generation_ = generation;
    used_ = 0;
    slots_.clear();
    hashes_.clear();
    sums_.clear();
    hashes_.reserve(static_cast<std::size_t>(records));
    grow(static_cast<std::size_t>(records) + 1);
}

bool KeyIndex::is_same_block(std::int64_t first, std::string_view lines)
{
    const auto block = static_cast<std::size_t>(first / block_records);
    if (block >= sums_.size())
        sums_.resize(block + 1);
    const std::uint64_t sum = hash_of(lines);
    return std::exchange(sums_[block], sum) == sum;
}

void KeyIndex::put(std::int64_t number, std::optional<std::string_view> record)
{
    const auto index = static_cast<std::size_t>(number);
    if (index >= hashes_.size())
        hashes_.resize(index + 1, no_key);
    const std::uint64_t hash = record ? hash_of(key_.of(*record)) : no_key;
    const std::uint64_t before = std::exchange(hashes_[index], hash);
    if (hash == before)
        return;
    if (before != no_key)
        remove(before, number);
    if (hash == no_key)
        return;
    if (4 * (used_ + 1) > 3 * slots_.size())
        grow(hashes_.size());
    insert(hash, number);
}

void KeyIndex::grow(std::size_t records)
{
    std::size_t size = 16;
    while (size < 2 * records)
        size *= 2;
    std::vector<Slot> old(size);
    old.swap(slots_);
    used_ = 0;
    for (const Slot &slot : old)
        if (slot.number >= 0)
            insert(slot.hash, slot.number);
}

void KeyIndex::insert(std::uint64_t hash, std::int64_t number)
{
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = (hash >> 20) & mask;
    while (slots_[at].number != empty)
        at = (at + 1) & mask;
    slots_[at] = Slot{hash, number};
    ++used_;
}

void KeyIndex::remove(std::uint64_t hash, std::int64_t number)
{
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = (hash >> 20) & mask; slots_[at].number != empty; at = (at + 1) & mask)
        if (slots_[at].number == number && slots_[at].hash == hash)
            slots_[at].number = removed;
}

std::vector<std::int64_t> KeyIndex::candidates(std::string_view key) const
{
    const std::uint64_t hash = hash_of(key);
    const std::size_t mask = slots_.size() - 1;
    std::vector<std::int64_t> numbers;
    for (std::size_t at = (hash >> 20) & mask; slots_[at].number != empty; at = (at + 1) & mask)
        if (slots_[at].hash == hash && slots_[at].number >= 0)
            numbers.push_back(slots_[at].number);
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

} // namespace orvane
