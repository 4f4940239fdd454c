// Fields of rows as numbers that sort as the fields do.
#pragma once

#include "operation/operand.h"

#include <bit>
#include <cstdint>
#include <vector>

namespace orvane {

// The unsigned number that stands among others as the value does.
inline std::uint64_t ordered_bits(std::int64_t value)
{
    return static_cast<std::uint64_t>(value) ^ (std::uint64_t{1} << 63);
}
inline std::uint64_t ordered_bits(double value)
{
    const auto bits = std::bit_cast<std::uint64_t>(value + 0.0); // -0 is 0
    return bits >> 63 ? ~bits : bits | (std::uint64_t{1} << 63);
}

// A key per row in as few words as it takes: the fields' numbers, each less the least of its field, one
// behind the other from the highest bits on. Of two rows the one whose words, compared in order, are less
// comes first.
struct SortKeys {
    struct Word {
        int bits = 0; // that are used, from the lowest on
        Buffer<std::uint64_t> keys;
    };
    std::vector<Word> words; // the first weighs most
    std::int64_t count = 0;
    bool in_order = true; // no row comes before the one above it

    bool equal(RowNumber a, RowNumber b) const
    {
        for (const Word &word : words)
            if (word.keys[a] != word.keys[b])
                return false;
        return true;
    }
};

// The keys of all rows. `reverse` turns the order round. The fields have to be loaded.
Result<SortKeys> sort_keys(const Operand &operand, const std::vector<int> &fields, bool reverse, Work &work);

} // namespace orvane
