// The parser of expressions: recursive descent whose depth is counted, operators by binding level.
#include <algorithm>
#include <optional>

#include "base/concat.h"
#include "expression/lexer.h"
#include "expression/parsed_expression.h"

namespace orvane::expr {

namespace {

using Kind = ParsedNode::Kind;
using NodePtr = std::unique_ptr<ParsedNode>;

// Every method that answers a node answers null once something is wrong; the first error is kept.
class Parser
{
public:
    explicit Parser(std::string_view text) : text_(text), lexer_(text) { advance(); }

    NodePtr whole()
    {
        if (token_.kind == Token::Kind::End)
            return fail("the expression is empty; expected a value", token_.place);
        NodePtr node = conditional();
        if (node && token_.kind != Token::Kind::End)
            return fail(concat("expected an operator or the end, found ", found(), hint()), token_.place);
        return node;
    }

    const ExpressionError &error() const { return *error_; }

private:
    class Deeper
    {
    public:
        explicit Deeper(Parser &parser) : parser_(parser) { ++parser_.depth_; }
        ~Deeper() { --parser_.depth_; }
        Deeper(const Deeper &) = delete;
        Deeper &operator=(const Deeper &) = delete;

    private:
        Parser &parser_;
    };

    NodePtr conditional();
    NodePtr binary(int level);
    NodePtr unary();
    NodePtr power();
    NodePtr primary();
    NodePtr bracketed();
    NodePtr call(const Token &name);
    NodePtr literal(Kind kind);
    NodePtr combined(Operator op, Place place, NodePtr left, NodePtr right);
    NodePtr finished(NodePtr node);

    void advance() { token_ = lexer_.next(); }
    bool at(Token::Kind kind) const { return token_.kind == kind; }
    bool at(Operator op) const { return token_.kind == Token::Kind::Operator && token_.op == op; }
    bool too_deep() const { return depth_ >= max_expression_depth; }
    NodePtr deep(Place place)
    {
        return fail(concat("nested more than ", max_expression_depth, " deep"), place);
    }

    NodePtr fail(std::string reason, Place place)
    {
        if (!error_ && token_.kind == Token::Kind::Wrong)
            error_ = ExpressionError{token_.text, token_.place};
        if (!error_)
            error_ = ExpressionError{std::move(reason), place};
        return nullptr;
    }

    std::string found() const
    {
        return at(Token::Kind::End) ? "the end"
                                    : quoted(text_.substr(token_.place.offset, token_.place.length));
    }

    // For those who write words for operators.
    std::string hint() const
    {
        if (!at(Token::Kind::Name) || !token_.table.empty())
            return {};
        std::string word = token_.text;
        std::transform(word.begin(), word.end(), word.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
        return word == "and"                      ? "; write `&&`"
               : word == "or"                     ? "; write `||`"
               : word == "like" || word == "in"   ? "; write `=~` to match a pattern"
               : word == "is" || word == "equals" ? "; write `==`"
                                                  : "";
    }

    std::string_view text_;
    Lexer lexer_;
    Token token_;
    std::size_t depth_ = 0;
    std::optional<ExpressionError> error_;
};

NodePtr made(Kind kind, Place place)
{
    auto node = std::make_unique<ParsedNode>();
    node->kind = kind;
    node->place = place;
    node->extent = place;
    return node;
}

// Sets what follows from the children, and refuses a tree that is too high to walk.
NodePtr Parser::finished(NodePtr node)
{
    for (const NodePtr &child : node->children) {
        node->height = std::max(node->height, child->height + 1);
        node->extent = spanning(node->extent, child->extent);
    }
    if (node->height > max_expression_depth)
        return deep(node->place);
    return node;
}

NodePtr Parser::conditional()
{
    NodePtr condition = binary(1);
    if (!condition || !at(Token::Kind::Question))
        return condition;
    NodePtr node = made(Kind::Conditional, token_.place);
    if (too_deep())
        return deep(token_.place);
    const Deeper deeper(*this);
    advance();
    NodePtr yes = conditional();
    if (!yes)
        return nullptr;
    if (!at(Token::Kind::Colon))
        return fail(concat("expected `:` and the value where the condition is false, found ", found()),
                    token_.place);
    advance();
    NodePtr no = conditional();
    if (!no)
        return nullptr;
    node->children.push_back(std::move(condition));
    node->children.push_back(std::move(yes));
    node->children.push_back(std::move(no));
    return finished(std::move(node));
}

NodePtr Parser::combined(Operator op, Place place, NodePtr left, NodePtr right)
{
    const bool logical = op == Operator::And || op == Operator::Or;
    if (logical && left->kind == Kind::Logical && left->op == op) {
        // A long list of alternatives grows wide, not deep.
        left->height = std::max(left->height, right->height + 1);
        left->extent = spanning(left->extent, right->extent);
        left->children.push_back(std::move(right));
        return left->height > max_expression_depth ? deep(place) : std::move(left);
    }
    NodePtr node = made(logical ? Kind::Logical : Kind::Binary, place);
    node->op = op;
    node->children.push_back(std::move(left));
    node->children.push_back(std::move(right));
    return finished(std::move(node));
}

NodePtr Parser::binary(int level)
{
    NodePtr left = unary();
    while (left && at(Token::Kind::Operator) && binding_level(token_.op) >= level) {
        const Operator op = token_.op;
        const Place place = token_.place;
        advance();
        NodePtr right = binary(binding_level(op) + 1);
        if (!right)
            return nullptr;
        left = combined(op, place, std::move(left), std::move(right));
    }
    return left;
}

NodePtr Parser::unary()
{
    if (!at(Operator::Not) && !at(Operator::Subtract))
        return power();
    NodePtr node = made(Kind::Unary, token_.place);
    node->op = at(Operator::Not) ? Operator::Not : Operator::Negate;
    if (too_deep())
        return deep(token_.place);
    const Deeper deeper(*this);
    advance();
    NodePtr operand = unary();
    if (!operand)
        return nullptr;
    node->children.push_back(std::move(operand));
    return finished(std::move(node));
}

NodePtr Parser::power()
{
    NodePtr base = primary();
    if (!base || !at(Operator::Power))
        return base;
    const Place place = token_.place;
    if (too_deep())
        return deep(place);
    const Deeper deeper(*this);
    advance();
    NodePtr exponent = unary(); // right to left, and 2 ** -1 needs no brackets
    return exponent ? combined(Operator::Power, place, std::move(base), std::move(exponent)) : nullptr;
}

NodePtr Parser::literal(Kind kind)
{
    NodePtr node = made(kind, token_.place);
    node->integer = token_.integer;
    node->real = token_.real;
    node->text = std::move(token_.text);
    node->table = std::move(token_.table);
    advance();
    return node;
}

NodePtr Parser::bracketed()
{
    const Place open = token_.place;
    if (too_deep())
        return deep(open);
    const Deeper deeper(*this);
    advance();
    NodePtr node = conditional();
    if (!node)
        return nullptr;
    if (!at(Token::Kind::Close))
        return at(Token::Kind::End) ? fail("this bracket is not closed; expected `)`", open)
                                    : fail(concat("expected `)`, found ", found(), hint()), token_.place);
    node->extent = spanning(open, token_.place);
    advance();
    return node;
}

NodePtr Parser::call(const Token &name)
{
    NodePtr node = made(Kind::Call, name.place);
    node->text = name.text;
    const Place open = token_.place;
    if (!name.table.empty())
        return fail("a function has no table; expected an operator after the field", open);
    if (too_deep())
        return deep(open);
    const Deeper deeper(*this);
    advance();
    while (!at(Token::Kind::Close)) {
        if (node->children.size() == max_arguments)
            return fail(concat("a call has at most ", max_arguments, " arguments"), token_.place);
        NodePtr argument = conditional();
        if (!argument)
            return nullptr;
        node->children.push_back(std::move(argument));
        if (at(Token::Kind::Comma)) {
            advance();
            if (at(Token::Kind::Close))
                return fail("expected another argument after the comma, found `)`", token_.place);
        } else if (at(Token::Kind::End)) {
            return fail("this bracket is not closed; expected `,` or `)`", open);
        } else if (!at(Token::Kind::Close)) {
            return fail(concat("expected `,` or `)`, found ", found(), hint()), token_.place);
        }
    }
    node->extent = spanning(name.place, token_.place);
    advance();
    return finished(std::move(node));
}

NodePtr Parser::primary()
{
    switch (token_.kind) {
    case Token::Kind::Integer:
        return literal(Kind::Integer);
    case Token::Kind::Real:
        return literal(Kind::Real);
    case Token::Kind::Text:
        return literal(Kind::Text);
    case Token::Kind::Open:
        return bracketed();
    case Token::Kind::Name: {
        Token name = token_;
        advance();
        if (at(Token::Kind::Open))
            return call(name);
        NodePtr node = made(Kind::Name, name.place);
        node->text = std::move(name.text);
        node->table = std::move(name.table);
        return node;
    }
    default:
        return fail(concat("expected a value, a field, a function or `(`, found ", found()), token_.place);
    }
}

} // namespace

Result<ParsedExpression> ParsedExpression::parse(std::string_view text, ExpressionError *error)
{
    ExpressionError wrong;
    if (text.size() > max_expression_bytes) {
        wrong = {concat("the expression has ", text.size(), " bytes; at most ", max_expression_bytes,
                        " are taken"),
                 {max_expression_bytes, 1}};
    } else {
        Parser parser(text);
        if (NodePtr root = parser.whole())
            return ParsedExpression(std::string(text), std::move(root));
        wrong = parser.error();
    }
    if (error)
        *error = wrong;
    return error_status(text, wrong);
}

} // namespace orvane::expr
