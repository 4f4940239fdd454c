#include "expression/lexer.h"

#include <array>
#include <charconv>
#include <cmath>

#include "base/concat.h"

namespace orvane::expr {

namespace {

bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}
bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}
bool starts_name(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}
bool continues_name(char c)
{
    return starts_name(c) || is_digit(c);
}

struct Mark {
    std::string_view text;
    Token::Kind kind;
    Operator op;
};

// Longer marks before those that they begin with.
constexpr std::array<Mark, 21> marks = {{
    {"||", Token::Kind::Operator, Operator::Or},
    {"&&", Token::Kind::Operator, Operator::And},
    {"==", Token::Kind::Operator, Operator::Equal},
    {"!=", Token::Kind::Operator, Operator::NotEqual},
    {"<=", Token::Kind::Operator, Operator::LessEqual},
    {">=", Token::Kind::Operator, Operator::GreaterEqual},
    {"=~", Token::Kind::Operator, Operator::Match},
    {"!~", Token::Kind::Operator, Operator::NotMatch},
    {"**", Token::Kind::Operator, Operator::Power},
    {"<", Token::Kind::Operator, Operator::Less},
    {">", Token::Kind::Operator, Operator::Greater},
    {"+", Token::Kind::Operator, Operator::Add},
    {"-", Token::Kind::Operator, Operator::Subtract},
    {"*", Token::Kind::Operator, Operator::Multiply},
    {"/", Token::Kind::Operator, Operator::Divide},
    {"%", Token::Kind::Operator, Operator::Remainder},
    {"!", Token::Kind::Operator, Operator::Not},
    {"(", Token::Kind::Open, Operator::Or},
    {")", Token::Kind::Close, Operator::Or},
    {",", Token::Kind::Comma, Operator::Or},
    {"?", Token::Kind::Question, Operator::Or},
}};

// What people write who know another language.
constexpr std::array<std::array<std::string_view, 2>, 4> remedies = {{
    {"=", "`=` is no operator; expected `==` to compare"},
    {"&", "`&` is no operator; expected `&&`"},
    {"|", "`|` is no operator; expected `||`"},
    {"~", "`~` is no operator; expected `=~` or `!~` to match"},
}};

} // namespace

Token Lexer::made(Token::Kind kind, std::size_t start) const
{
    Token token;
    token.kind = kind;
    token.place = {start, position_ - start};
    return token;
}

Token Lexer::wrong(std::string reason, std::size_t start, std::size_t length) const
{
    Token token;
    token.kind = Token::Kind::Wrong;
    token.place = {start, length};
    token.text = std::move(reason);
    return token;
}

Token Lexer::next()
{
    while (position_ < text_.size() && is_blank(text_[position_]))
        ++position_;
    if (position_ == text_.size())
        return made(Token::Kind::End, position_);
    const char c = text_[position_];
    if (is_digit(c) || (c == '.' && is_digit(at(position_ + 1))))
        return number();
    if (c == '\'' || c == '"')
        return quoted_text();
    if (starts_name(c))
        return name();
    return punctuation();
}

Token Lexer::number()
{
    const std::size_t start = position_;
    bool whole = true;
    const auto digits = [&] {
        while (is_digit(at(position_)))
            ++position_;
    };
    digits();
    if (at(position_) == '.') {
        whole = false;
        ++position_;
        digits();
    }
    if (at(position_) == 'e' || at(position_) == 'E') {
        const std::size_t sign = at(position_ + 1) == '+' || at(position_ + 1) == '-' ? 1 : 0;
        if (is_digit(at(position_ + 1 + sign))) {
            whole = false;
            position_ += 1 + sign;
            digits();
        }
    }
    if (continues_name(at(position_)) || at(position_) == '.') {
        while (continues_name(at(position_)) || at(position_) == '.')
            ++position_;
        return wrong(concat(quoted(text_.substr(start, position_ - start)), " is no number"), start,
                     position_ - start);
    }
    Token token = made(whole ? Token::Kind::Integer : Token::Kind::Real, start);
    const char *first = text_.data() + start;
    const char *last = text_.data() + position_;
    // A whole number that no 64-bit integer holds is taken as a real one.
    if (whole && std::from_chars(first, last, token.integer).ec == std::errc())
        return token;
    token.kind = Token::Kind::Real;
    const auto read = std::from_chars(first, last, token.real);
    if (read.ec == std::errc::result_out_of_range && (token.real == 0 || !std::isfinite(token.real)))
        return wrong(
            concat(quoted(text_.substr(start, position_ - start)), " is out of the range of numbers"), start,
            position_ - start);
    return token;
}

Token Lexer::quoted_text()
{
    const std::size_t start = position_;
    const char quote = text_[position_++];
    std::string value;
    while (position_ < text_.size()) {
        const char c = text_[position_++];
        const char following = at(position_);
        if (c == quote) {
            if (following != quote) {
                Token token = made(Token::Kind::Text, start);
                token.text = std::move(value);
                return token;
            }
            ++position_;
            value.push_back(quote);
        } else if (c == '\\' && (following == '\'' || following == '"' || following == '\\') &&
                   position_ < text_.size()) {
            ++position_;
            value.push_back(following);
        } else {
            value.push_back(c);
        }
    }
    return wrong(concat("the text that begins here does not end; expected a closing ", quote), start, 1);
}

std::string Lexer::name_part()
{
    const std::size_t start = position_;
    while (continues_name(at(position_)))
        ++position_;
    return std::string(text_.substr(start, position_ - start));
}

Token Lexer::name()
{
    const std::size_t start = position_;
    std::string table;
    std::string field = name_part();
    if (at(position_) == '.') {
        if (!starts_name(at(position_ + 1)))
            return wrong("expected a field's name after the table and the point", position_ + 1,
                         position_ + 1 < text_.size() ? 1 : 0);
        ++position_;
        table = std::move(field);
        field = name_part();
        if (at(position_) == '.')
            return wrong("expected a name as `field` or `table.field`", start, position_ + 1 - start);
    }
    Token token = made(Token::Kind::Name, start);
    token.text = std::move(field);
    token.table = std::move(table);
    return token;
}

Token Lexer::punctuation()
{
    const std::size_t start = position_;
    const std::string_view rest = text_.substr(position_);
    if (rest.front() == ':') {
        ++position_;
        return made(Token::Kind::Colon, start);
    }
    for (const Mark &mark : marks) {
        if (rest.starts_with(mark.text)) {
            position_ += mark.text.size();
            Token token = made(mark.kind, start);
            token.op = mark.op;
            return token;
        }
    }
    for (const auto &[mark, remedy] : remedies)
        if (rest.starts_with(mark))
            return wrong(std::string(remedy), start, 1);
    return wrong(concat(quoted(rest.substr(0, 1)), " has no place in an expression"), start, 1);
}

} // namespace orvane::expr
