// The names that an expression may use.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "expression/value.h"

namespace orvane::expr {

struct ScopeField {
    std::string name;
    std::string table; // that `table.field` names it by; may be empty
    ValueType type = ValueType::Text;
    std::string null_text = {}; // as in the schema
    std::size_t width = 0;      // bytes
};

// Fields are known by their column, an index that the columns of batches are asked for by.
class BindingScope
{
public:
    virtual ~BindingScope() = default;

    // The column that a name means; `table` is empty for a bare name.
    virtual std::optional<std::size_t> find(std::string_view table, std::string_view name) const = 0;
    // The field of a column that find() answered.
    virtual const ScopeField &field(std::size_t column) const = 0;
    // All that can be named, for messages; columns in order.
    virtual std::size_t field_count() const = 0;
};

// The fields of a table, or of a view's members in their order. A bare name is the preferred column's where
// that is of the name, else the first that has it; the alias is one more qualifier for bare names.
class FieldListScope : public BindingScope
{
public:
    explicit FieldListScope(std::vector<ScopeField> fields, std::string alias = {},
                            std::optional<std::size_t> preferred = std::nullopt)
        : fields_(std::move(fields)), alias_(std::move(alias)), preferred_(preferred)
    {
    }

    std::optional<std::size_t> find(std::string_view table, std::string_view name) const override;
    const ScopeField &field(std::size_t column) const override { return fields_[column]; }
    std::size_t field_count() const override { return fields_.size(); }

private:
    std::vector<ScopeField> fields_;
    std::string alias_;
    std::optional<std::size_t> preferred_;
};

} // namespace orvane::expr
