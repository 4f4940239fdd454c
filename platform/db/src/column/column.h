// A field of all records of a table, decoded: what operations on millions of rows read instead of text.
#pragma once

#include "column/text_entries.h"
#include "schema/attribute.h"
#include "work/buffer.h"

#include <cstdint>
#include <memory>

namespace orvane {

enum class ColumnStorage { Integer, Real, Text };

// How the values of a type are kept: dbptrs as the text that they are.
constexpr ColumnStorage column_storage(FieldType type)
{
    return is_integer(type) ? ColumnStorage::Integer
           : is_real(type)  ? ColumnStorage::Real
                            : ColumnStorage::Text;
}

// Values by record number, and behind the last record one more: the attribute's null, which stands for the
// null record. A field whose text is not a value of its type counts as null. Immutable once it is made.
struct Column {
    FieldType type = FieldType::String;
    std::int64_t count = 0; // records; the arrays have one element more

    // One of these, by storage.
    Buffer<std::int64_t> integers;
    Buffer<double> reals;
    Buffer<std::uint32_t> codes;
    std::shared_ptr<const TextEntries> texts; // of the codes

    std::int64_t null_integer = 0;
    double null_real = 0;
    std::uint32_t null_code = 0;
    bool has_nulls = false; // among the records

    std::int64_t unreadable = 0; // fields whose text is no value

    ColumnStorage storage() const { return column_storage(type); }
    std::size_t bytes() const;
};

using ColumnPtr = std::shared_ptr<const Column>;

// A column of so many records with only the null behind them in place.
std::shared_ptr<Column> new_column(const Attribute &attribute, std::int64_t count);

} // namespace orvane
