// Rows of one or two operands, as expressions read them.
#pragma once

#include "expression/binding_scope.h"
#include "expression/column_batch.h"
#include "expression/expression_executor.h"
#include "operation/operand.h"

#include <vector>

namespace orvane {

// The fields of a table as names in an expression. `standing_on` keeps a bare name; -1: none.
expr::FieldListScope scope_of(const Table &table, int standing_on);
// The fields of two, one after the other; a name is the left one's where both have it. Borrows the tables.
class TwoTableScope : public expr::BindingScope
{
public:
    TwoTableScope(const Table &left, const Table &right);

    std::optional<std::size_t> find(std::string_view table, std::string_view name) const override;
    const expr::ScopeField &field(std::size_t column) const override { return fields_[column]; }
    std::size_t field_count() const override { return fields_.size(); }

private:
    const Table &left_;
    const Table &right_;
    std::vector<expr::ScopeField> fields_;
};

// The first `count` values of a column, one after the other; `nulls` gets what the view borrows.
expr::ColumnView view_of_records(const Column &column, std::size_t count, std::vector<std::uint8_t> &nulls);

// One thread at a time. The columns that are asked for have to be loaded in the operands.
class RowBatch : public expr::ColumnBatch
{
public:
    explicit RowBatch(const Operand &operand) : operands_{&operand, nullptr} {}
    // Fields of the right operand come behind those of the left.
    RowBatch(const Operand &left, const Operand &right) : operands_{&left, &right} {}

    // The rows [first, first + count) of a single operand.
    void set_range(std::int64_t first, std::size_t count);
    // Chosen rows: of each operand as many, borrowed.
    void set_rows(const RowNumber *left, const RowNumber *right, std::size_t count);

    std::size_t size() const override { return size_; }
    Result<expr::ColumnView> column(std::size_t column) override;

private:
    // What values are copied to where they don't lie one after the other.
    struct Scratch {
        std::vector<std::int64_t> integers;
        std::vector<double> reals;
        std::vector<std::uint32_t> codes;
        std::vector<std::uint8_t> nulls;
    };

    template <typename T>
    const T *values(const RowColumn &from, const Buffer<T> &all, std::vector<T> &scratch) const;
    template <typename T>
    const std::uint8_t *nulls(const RowColumn &from, const T *values, T null, Scratch &scratch) const;

    const Operand *operands_[2];
    std::int64_t first_ = 0;
    const RowNumber *rows_[2] = {nullptr, nullptr}; // of each operand; null: a range
    int side_ = 0;                                  // of the column that is being made
    std::size_t size_ = 0;
    std::vector<Scratch> scratch_; // by column
};

} // namespace orvane
