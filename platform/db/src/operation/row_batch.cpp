#include "operation/row_batch.h"

#include "base/concat.h"
#include "table/value_type.h"

namespace orvane {

namespace {

void add_fields(const Table &table, std::vector<expr::ScopeField> &fields)
{
    for (const TableField &field : table.fields())
        fields.push_back(expr::ScopeField{field.attribute->name, field.relation->name,
                                          value_type(field.attribute->type), field.attribute->null,
                                          static_cast<std::size_t>(field.attribute->width)});
}

} // namespace

expr::FieldListScope scope_of(const Table &table, int standing_on)
{
    std::vector<expr::ScopeField> fields;
    add_fields(table, fields);
    return expr::FieldListScope(std::move(fields), table.name(),
                                standing_on < 0 ? std::nullopt
                                                : std::optional(static_cast<std::size_t>(standing_on)));
}

TwoTableScope::TwoTableScope(const Table &left, const Table &right) : left_(left), right_(right)
{
    add_fields(left, fields_);
    add_fields(right, fields_);
}

std::optional<std::size_t> TwoTableScope::find(std::string_view table, std::string_view name) const
{
    const std::string full = table.empty() ? std::string(name) : concat(table, '.', name);
    if (const int field = left_.field_index(full, -1); field >= 0)
        return static_cast<std::size_t>(field);
    if (const int field = right_.field_index(full, -1); field >= 0)
        return left_.fields().size() + static_cast<std::size_t>(field);
    return std::nullopt;
}

void RowBatch::set_range(std::int64_t first, std::size_t count)
{
    first_ = first;
    rows_[0] = rows_[1] = nullptr;
    size_ = count;
}

void RowBatch::set_rows(const RowNumber *left, const RowNumber *right, std::size_t count)
{
    rows_[0] = left;
    rows_[1] = right;
    size_ = count;
}

template <typename T>
const T *RowBatch::values(const RowColumn &from, const Buffer<T> &all, std::vector<T> &scratch) const
{
    const RowNumber *rows = rows_[side_];
    if (!rows && !from.rows)
        return all.data() + first_;
    scratch.resize(size_);
    if (rows)
        for (std::size_t i = 0; i < size_; ++i)
            scratch[i] = all[from.at(rows[i])];
    else
        for (std::size_t i = 0; i < size_; ++i)
            scratch[i] = all[from.at(static_cast<std::size_t>(first_) + i)];
    return scratch.data();
}

template <typename T>
const std::uint8_t *RowBatch::nulls(const RowColumn &from, const T *values, T null, Scratch &scratch) const
{
    if (!from.has_nulls)
        return nullptr;
    scratch.nulls.resize(size_);
    for (std::size_t i = 0; i < size_; ++i)
        scratch.nulls[i] = values[i] == null ? 1 : 0;
    return scratch.nulls.data();
}

expr::ColumnView view_of_records(const Column &column, std::size_t count, std::vector<std::uint8_t> &nulls)
{
    nulls.resize(count);
    const auto mark = [&](const auto *values, auto null) {
        for (std::size_t i = 0; i < count; ++i)
            nulls[i] = values[i] == null ? 1 : 0;
    };
    expr::ColumnView view;
    view.nulls = nulls.data();
    switch (column.storage()) {
    case ColumnStorage::Integer:
        view.integers = column.integers.data();
        mark(view.integers, column.null_integer);
        break;
    case ColumnStorage::Real:
        view.reals = column.reals.data();
        mark(view.reals, column.null_real);
        break;
    case ColumnStorage::Text:
        view.codes = column.codes.data();
        view.dictionary = column.texts.get();
        mark(view.codes, column.null_code);
        break;
    }
    return view;
}

Result<expr::ColumnView> RowBatch::column(std::size_t column)
{
    const std::size_t of_left = operands_[0]->table().fields().size();
    side_ = column < of_left ? 0 : 1;
    const RowColumn from = operands_[side_]->column(static_cast<int>(side_ == 0 ? column : column - of_left));
    if (scratch_.size() <= column)
        scratch_.resize(column + 1);
    Scratch &scratch = scratch_[column];
    expr::ColumnView view;
    switch (from.column->storage()) {
    case ColumnStorage::Integer:
        view.integers = values(from, from.column->integers, scratch.integers);
        view.nulls = nulls(from, view.integers, from.column->null_integer, scratch);
        break;
    case ColumnStorage::Real:
        view.reals = values(from, from.column->reals, scratch.reals);
        view.nulls = nulls(from, view.reals, from.column->null_real, scratch);
        break;
    case ColumnStorage::Text:
        view.codes = values(from, from.column->codes, scratch.codes);
        view.nulls = nulls(from, view.codes, from.column->null_code, scratch);
        view.dictionary = from.column->texts.get();
        break;
    }
    return view;
}

} // namespace orvane
