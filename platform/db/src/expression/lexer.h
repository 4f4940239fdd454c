// Cuts the text of an expression into tokens.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "expression/expression_error.h"
#include "expression/operators.h"

namespace orvane::expr {

struct Token {
    enum class Kind : std::uint8_t {
        End,
        Integer,
        Real,
        Text,
        Name,
        Operator,
        Open,
        Close,
        Comma,
        Question,
        Colon,
        Wrong
    };

    Kind kind = Kind::End;
    Operator op = Operator::Or; // of Operator; `-` is Subtract
    Place place;
    std::int64_t integer = 0;
    double real = 0;
    std::string text;  // of Text: its value; of Name: the name; of Wrong: what is wrong
    std::string table; // of Name: the table in `table.field`, or empty
};

class Lexer
{
public:
    // The text is borrowed.
    explicit Lexer(std::string_view text) : text_(text) {}

    // The next token; End again and again at the end. After Wrong, nothing more is to be asked.
    Token next();

private:
    Token number();
    Token quoted_text();
    Token name();
    Token punctuation();
    std::string name_part();
    Token made(Token::Kind kind, std::size_t start) const;
    Token wrong(std::string reason, std::size_t start, std::size_t length) const;
    char at(std::size_t offset) const { return offset < text_.size() ? text_[offset] : '\0'; }

    std::string_view text_;
    std::size_t position_ = 0;
};

} // namespace orvane::expr
