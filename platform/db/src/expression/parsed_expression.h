// An expression as it is written: a tree of names, literals, operators and calls, in which no name has a
// meaning yet. Binding gives them one.
//
// From loosest to tightest: ?: · || · && · == != < <= > >= =~ !~ · + - · * / % · unary ! - · ** (right to
// left).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "expression/expression_error.h"
#include "expression/operators.h"

namespace orvane::expr {

constexpr std::size_t max_expression_bytes = std::size_t{1} << 20;
constexpr std::size_t max_expression_depth = 1000; // of the tree, so that all that walks it may recurse
constexpr std::size_t max_arguments = 100;         // of one call

struct ParsedNode {
    enum class Kind : std::uint8_t {
        Integer,
        Real,
        Text,
        Name,        // text, and table when it is qualified
        Unary,       // op, one child
        Binary,      // op, two children
        Logical,     // op is And or Or; two or more children, in order: a && b && c is one node
        Conditional, // condition, value where it is true, value where it is false
        Call,        // text is the function's name; the children are the arguments
    };

    Kind kind = Kind::Integer;
    Operator op = Operator::Or;
    std::uint32_t height = 1;
    Place place;  // what an error about this node points at: the operator, the name, the literal
    Place extent; // all of it
    std::int64_t integer = 0;
    double real = 0;
    std::string text;
    std::string table;
    std::vector<std::unique_ptr<ParsedNode>> children;
};

class ParsedExpression
{
public:
    // Parses the whole text. A failure's message holds the text with a caret under the place; *error, if
    // given, has the parts of it.
    static Result<ParsedExpression> parse(std::string_view text, ExpressionError *error = nullptr);

    const ParsedNode &root() const { return *root_; }
    const std::string &text() const { return text_; }

private:
    ParsedExpression(std::string text, std::unique_ptr<ParsedNode> root)
        : text_(std::move(text)), root_(std::move(root))
    {
    }

    std::string text_;
    std::unique_ptr<ParsedNode> root_;
};

} // namespace orvane::expr
