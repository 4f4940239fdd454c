// Where the executor finds the columns of a batch of rows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/status.h"
#include "expression/value.h"

namespace orvane::expr {

// The distinct texts of a column. An entry never changes and keeps its code; entries may be appended. What
// breaks that is a new dictionary with a new identity.
class TextDictionary
{
public:
    virtual ~TextDictionary() = default;

    // Unique among all dictionaries of the process, those that are gone included.
    virtual std::uint64_t identity() const = 0;
    virtual std::size_t size() const = 0;
    // Without blanks at its end. Lives as long as the dictionary.
    virtual std::string_view text(std::uint32_t code) const = 0;
};

// A column's values in a batch, one per position; borrowed for as long as the batch says. Which of the
// pointers is set depends on the storage of the column's type.
struct ColumnView {
    const std::int64_t *integers = nullptr; // Boolean, Integer, Yearday
    const double *reals = nullptr;          // Real, Time
    const std::uint32_t *codes = nullptr;   // Text
    const TextDictionary *dictionary = nullptr;
    // 1 where the value is the attribute's null (the value is there all the same), else 0; null pointer:
    // nowhere. Equal codes of a dictionary are null together.
    const std::uint8_t *nulls = nullptr;
};

// Some rows of a table, at positions from 0.
class ColumnBatch
{
public:
    virtual ~ColumnBatch() = default;

    virtual std::size_t size() const = 0;
    // The column by its index in the binding scope. Asked for only when rows are left that need it, and at
    // most once per run over the batch. What is answered stays until that run ends.
    virtual Result<ColumnView> column(std::size_t column) = 0;
};

} // namespace orvane::expr
