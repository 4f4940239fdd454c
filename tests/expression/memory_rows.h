#ifndef ORVANE_TESTS_EXPRESSION_MEMORY_ROWS_H
#define ORVANE_TESTS_EXPRESSION_MEMORY_ROWS_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "expression/binding_scope.h"
#include "expression/column_batch.h"

namespace orvane::expr::test {

class MemoryDictionary : public TextDictionary
{
public:
    MemoryDictionary();

    std::uint32_t code(const std::string &text);

    std::uint64_t identity() const override { return identity_; }
    std::size_t size() const override { return texts_.size(); }
    std::string_view text(std::uint32_t code) const override
    {
        ++reads;
        return texts_[code];
    }

    mutable std::size_t reads = 0;

private:
    std::uint64_t identity_;
    std::vector<std::string> texts_;
    std::map<std::string, std::uint32_t> codes_;
};

/* Rows in memory, kept by columns as the executor wants them. */
class MemoryRows
{
public:
    explicit MemoryRows(std::vector<ScopeField> fields);

    /* One text per field, read by the field's type; the text of its null is null.
     */
    void add(const std::vector<std::string> &values);

    const std::vector<ScopeField> &fields() const { return fields_; }
    FieldListScope scope() const { return FieldListScope(fields_); }
    std::size_t size() const { return count_; }
    MemoryDictionary &dictionary(std::size_t column) { return columns_[column].dictionary; }

    /* A part of the rows. */
    class Batch : public ColumnBatch
    {
    public:
        Batch(const MemoryRows &rows, std::size_t first, std::size_t count)
            : rows_(rows), first_(first), count_(count)
        {
        }

        std::size_t size() const override { return count_; }
        Result<ColumnView> column(std::size_t column) override;

        /* How often each column was asked for. */
        std::map<std::size_t, int> asked;
        /* A column that can't be read. */
        std::size_t broken = ~std::size_t{0};

    private:
        const MemoryRows &rows_;
        std::size_t first_;
        std::size_t count_;
    };

    Batch batch(std::size_t first, std::size_t count) const { return Batch(*this, first, count); }
    Batch all() const { return Batch(*this, 0, count_); }

private:
    struct Column {
        std::vector<std::int64_t> integers;
        std::vector<double> reals;
        std::vector<std::uint32_t> codes;
        std::vector<std::uint8_t> nulls;
        MemoryDictionary dictionary;
    };

    std::vector<ScopeField> fields_;
    std::vector<Column> columns_;
    std::size_t count_ = 0;
};

/* A value as the case files write it: 3, 2.5, true, 'text', time 1517961600,
 * yearday 2018038, null. */
std::string shown(const Value &value);

} // namespace orvane::expr::test

#endif
