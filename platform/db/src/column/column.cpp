#include "column/column.h"

#include "table/field_value.h"

namespace orvane {

std::size_t Column::bytes() const
{
    return integers.capacity() * sizeof(std::int64_t) + reals.capacity() * sizeof(double) +
           codes.capacity() * sizeof(std::uint32_t) + (texts ? texts->bytes() : 0) + sizeof(Column);
}

std::shared_ptr<Column> new_column(const Attribute &attribute, std::int64_t count)
{
    auto column = std::make_shared<Column>();
    column->type = attribute.type;
    column->count = count;
    column->null_integer = attribute.null_integer;
    column->null_real = attribute.null_real;
    const auto size = static_cast<std::size_t>(count) + 1;
    switch (column->storage()) {
    case ColumnStorage::Integer:
        column->integers.resize(size);
        column->integers.back() = column->null_integer;
        break;
    case ColumnStorage::Real:
        column->reals.resize(size);
        column->reals.back() = column->null_real;
        break;
    case ColumnStorage::Text: {
        auto texts = std::make_shared<TextEntries>();
        column->null_code = texts->code_of(trimmed_right(attribute.null));
        column->texts = std::move(texts);
        column->codes.resize(size);
        column->codes.back() = column->null_code;
        break;
    }
    }
    return column;
}

} // namespace orvane
