// An expression whose names and types are resolved: what can be run over rows.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "expression/binding_scope.h"
#include "expression/column_batch.h"
#include "expression/parsed_expression.h"
#include "expression/value.h"
#include "expression/vector.h"

namespace orvane::expr {

class Pattern;
struct BoundNode;
using BoundNodePtr = std::shared_ptr<const BoundNode>;

// What a kernel may use besides its arguments.
struct KernelContext {
    TextArena &arena;
    const BoundNode &node;
};

// Works out values at the selected positions and writes them to `out`, which has room for them.
using Kernel = void (*)(KernelContext &context, std::span<const Vector> arguments, Selection selection,
                        Vector &out);

// Writes the selected positions at which the test holds to `out`, in order, and returns their number.
using TestKernel = std::size_t (*)(const BoundNode &node, std::span<const Vector> arguments,
                                   Selection selection, std::uint32_t *out);

// Clears the bytes of `mask`, which are 0 or 1, at those of the first `count` positions of a batch at which
// the test does not hold of the column and the constant.
using MaskKernel = void (*)(const ColumnView &column, const Value &constant, std::size_t count,
                            std::uint8_t *mask);

struct BoundNode {
    enum class Kind : std::uint8_t {
        Constant,    // constant
        Field,       // column
        Now,         // the time of the run
        Call,        // kernel over the children
        Test,        // test over the children
        And,         // of children that are conditions; two or more
        Or,          // likewise
        Not,         // of one condition
        Conditional, // condition, value, value
    };

    // On which columns the value depends.
    enum class Dependence : std::uint8_t { None, OneText, Other };

    Kind kind = Kind::Constant;
    ValueType type = ValueType::Integer; // of conditions (Test, And, Or, Not): Boolean
    Dependence dependence = Dependence::None;
    Operator op = Operator::Or; // of a Test that is a comparison: which; the children are its sides
    bool comparison = false;
    bool day_span = false;  // of a comparison: children are a time and the begin and the end of a day
    std::size_t column = 0; // of Field; and the one of OneText
    Place place;
    Value constant;
    Kernel kernel = nullptr;
    TestKernel test = nullptr;
    MaskKernel mask = nullptr; // the same of a Test whose children are a Field and a Constant; may be null
    std::shared_ptr<const Pattern> pattern;
    std::vector<BoundNodePtr> children;
};

// Immutable; copies share the tree, and several threads may run it, each with an executor of its own.
class BoundExpression
{
public:
    // Any expression.
    static Result<BoundExpression> bind(const ParsedExpression &parsed, const BindingScope &scope,
                                        ExpressionError *error = nullptr);
    // An expression that is true or false of a row; a number is true when it is not 0 and not null.
    static Result<BoundExpression> bind_condition(const ParsedExpression &parsed, const BindingScope &scope,
                                                  ExpressionError *error = nullptr);

    explicit BoundExpression(BoundNodePtr root) : root_(std::move(root)) {}

    const BoundNodePtr &root() const { return root_; }
    ValueType type() const { return root_->type; }
    // The columns that it reads, ascending.
    std::vector<std::size_t> columns() const;

private:
    BoundNodePtr root_;
};

// The value of an expression that depends on no column, its now() apart: false when it does.
bool is_constant(const BoundExpression &expression);

} // namespace orvane::expr
