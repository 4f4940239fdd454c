#include "expression/comparison_masks.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "base/wide_vectors.h"

namespace orvane::expr {

namespace {

template <Operator op, typename T>
bool holds(T value, T constant)
{
    if constexpr (op == Operator::Less)
        return value < constant;
    else if constexpr (op == Operator::LessEqual)
        return value <= constant;
    else if constexpr (op == Operator::Greater)
        return value > constant;
    else if constexpr (op == Operator::GreaterEqual)
        return value >= constant;
    else if constexpr (op == Operator::Equal)
        return value == constant;
    else
        return value != constant;
}

// What counts is as comparison_tests.h says; a field always has a value.
template <Operator op, typename T>
ORVANE_WIDE_VECTORS void narrow(const ColumnView &column, const Value &constant, std::size_t count,
                                std::uint8_t *mask)
{
    constexpr bool equality = op == Operator::Equal || op == Operator::NotEqual;
    if (equality ? constant.presence == Missing : constant.presence != Present) {
        if (op != Operator::NotEqual)
            std::fill_n(mask, count, std::uint8_t{0});
        return;
    }
    // The mask could be a part of the column for all that a compiler knows.
    if (const std::uint8_t *const nulls = column.nulls; !equality && nulls)
        for (std::size_t i = 0; i < count; ++i)
            mask[i] = static_cast<std::uint8_t>(mask[i] & (nulls[i] ^ 1));
    const T *values = nullptr;
    T number{};
    if constexpr (std::is_same_v<T, double>) {
        values = column.reals;
        number = constant.real;
    } else {
        values = column.integers;
        number = constant.integer;
    }
    for (std::size_t i = 0; i < count; ++i)
        mask[i] = static_cast<std::uint8_t>(mask[i] & (holds<op>(values[i], number) ? 1 : 0));
}

template <typename T>
MaskKernel mask_of(Operator op)
{
    switch (op) {
    case Operator::Equal:
        return narrow<Operator::Equal, T>;
    case Operator::NotEqual:
        return narrow<Operator::NotEqual, T>;
    case Operator::Less:
        return narrow<Operator::Less, T>;
    case Operator::LessEqual:
        return narrow<Operator::LessEqual, T>;
    case Operator::Greater:
        return narrow<Operator::Greater, T>;
    case Operator::GreaterEqual:
        return narrow<Operator::GreaterEqual, T>;
    default:
        return nullptr;
    }
}

} // namespace

MaskKernel comparison_mask(Operator op, Storage storage)
{
    switch (storage) {
    case Storage::Integer:
        return mask_of<std::int64_t>(op);
    case Storage::Real:
        return mask_of<double>(op);
    default:
        return nullptr;
    }
}

namespace {

ORVANE_WIDE_VECTORS void mask_of_code(const std::uint32_t *codes, std::size_t count, std::uint32_t code,
                                      std::uint8_t *mask)
{
    for (std::size_t i = 0; i < count; ++i)
        mask[i] = codes[i] == code ? 1 : 0;
}

} // namespace

void mask_of_codes(const std::uint32_t *codes, std::size_t count, const std::vector<std::uint8_t> &holds,
                   bool all_count, std::uint8_t *mask)
{
    const std::uint8_t *const of_code = holds.data();
    const auto next_from = [&](std::size_t code) {
        const void *const found = std::memchr(of_code + code, 1, holds.size() - code);
        return found ? static_cast<std::size_t>(static_cast<const std::uint8_t *>(found) - of_code)
                     : holds.size();
    };
    const std::size_t first = all_count ? next_from(0) : 0;
    if (all_count && (first == holds.size() || next_from(first + 1) == holds.size())) {
        mask_of_code(codes, count, static_cast<std::uint32_t>(first), mask);
        return;
    }
    for (std::size_t i = 0; i < count; ++i)
        mask[i] = of_code[codes[i]];
}

std::size_t positions_of_mask(const std::uint8_t *mask, std::size_t count, std::uint32_t *out)
{
    constexpr std::size_t group = 8;
    std::size_t found = 0;
    std::size_t position = 0;
    for (; position + group <= count; position += group) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, mask + position, group);
        if (bytes == 0)
            continue;
        for (std::size_t i = 0; i < group; ++i) {
            out[found] = static_cast<std::uint32_t>(position + i);
            found += mask[position + i];
        }
    }
    for (; position < count; ++position) {
        out[found] = static_cast<std::uint32_t>(position);
        found += mask[position];
    }
    return found;
}

} // namespace orvane::expr
