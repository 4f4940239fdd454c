#include "random_expression.h"

namespace orvane::expr::test {

namespace {

Twin computed(std::string text, std::string sql, bool whole = false)
{
    return {std::move(text), sql, sql, whole};
}

Twin field(const std::string &name, const std::string &null, bool whole)
{
    return {name, name, "nullif(" + name + ", " + null + ")", whole};
}

/* An integer where a real number is wanted. */
Twin asReal(Twin twin)
{
    if (twin.whole) {
        twin.stored = "cast(" + twin.stored + " as real)";
        twin.nulled = "cast(" + twin.nulled + " as real)";
    }
    return twin;
}

std::string truth(const Twin &number)
{
    return "coalesce((" + number.nulled + ") <> 0, 0)";
}

Twin chosen(const Twin &condition, const Twin &yes, const Twin &no)
{
    const auto sql = [&](const std::string &a, const std::string &b) {
        return "(case when " + condition.stored + " then " + a + " else " + b + " end)";
    };
    return {"(" + condition.text + " ? " + yes.text + " : " + no.text + ")", sql(yes.stored, no.stored),
            sql(yes.nulled, no.nulled), yes.whole && no.whole};
}

} // namespace

std::string RandomExpression::pick(std::initializer_list<const char *> list)
{
    return *(list.begin() + below(static_cast<int>(list.size())));
}

Twin RandomExpression::numberLeaf()
{
    switch (below(6)) {
    case 0: {
        const std::string digits = std::to_string(below(10));
        return computed(digits, digits, true);
    }
    case 1: {
        const std::string digits = std::to_string(below(40)) + pick({".0", ".25", ".5", ".75"});
        return computed(digits, digits);
    }
    case 2:
        return field(pick({"i1", "i2"}), "-1", true);
    case 3:
        return field("r1", "-999.0", false);
    case 4:
        return field("r2", "-999.0", false);
    default: {
        const std::string digits = "(-" + std::to_string(below(9) + 1) + ")";
        return computed(digits, digits, true);
    }
    }
}

Twin RandomExpression::number(int depth)
{
    if (depth <= 0)
        return numberLeaf();
    switch (below(8)) {
    case 0:
        return numberLeaf();
    case 1: {
        const Twin operand = number(depth - 1);
        return computed("-(" + operand.text + ")", "(-(" + operand.nulled + "))", operand.whole);
    }
    case 2:
        return numberCall(depth);
    case 3:
        return numberChoice(depth);
    case 4: {
        const Twin operand = condition(depth - 1);
        return computed("(" + operand.text + ")", "(" + operand.stored + ")", true);
    }
    default:
        return arithmetic(depth);
    }
}

Twin RandomExpression::arithmetic(int depth)
{
    const Twin a = number(depth - 1);
    const Twin b = number(depth - 1);
    const bool whole = a.whole && b.whole;
    const std::string op = whole ? pick({"+", "-", "*", "/", "%"}) : pick({"+", "-", "*", "/"});
    return computed("(" + a.text + " " + op + " " + b.text + ")",
                    "((" + a.nulled + ") " + op + " (" + b.nulled + "))", whole);
}

Twin RandomExpression::numberCall(int depth)
{
    switch (below(6)) {
    case 0: {
        const Twin s = text(depth - 1);
        return computed("length(" + s.text + ")", "length(rtrim(" + s.nulled + ", ' '))", true);
    }
    case 1: {
        const Twin x = number(depth - 1);
        return computed("abs(" + x.text + ")", "abs(" + x.nulled + ")", x.whole);
    }
    case 2: {
        const Twin x = number(depth - 1);
        const std::string name = pick({"floor", "ceil"});
        return computed(name + "(" + x.text + ")", name + "(" + x.nulled + ")", x.whole);
    }
    case 3: {
        const Twin x = number(depth - 1);
        return computed("sqrt(" + x.text + ")", "sqrt(" + x.nulled + ")");
    }
    default: {
        const std::string name = pick({"min", "max"});
        Twin a = number(depth - 1);
        Twin b = number(depth - 1);
        const bool whole = a.whole && b.whole;
        if (!whole) {
            a = asReal(std::move(a));
            b = asReal(std::move(b));
        }
        return computed(name + "(" + a.text + ", " + b.text + ")",
                        name + "(" + a.nulled + ", " + b.nulled + ")", whole);
    }
    }
}

Twin RandomExpression::numberChoice(int depth)
{
    const Twin by = condition(depth - 1);
    Twin yes = number(depth - 1);
    Twin no = number(depth - 1);
    if (!(yes.whole && no.whole)) {
        yes = asReal(std::move(yes));
        no = asReal(std::move(no));
    }
    Twin twin = chosen(by, yes, no);
    twin.whole = yes.whole && no.whole;
    return twin;
}

Twin RandomExpression::textLeaf()
{
    if (below(3) > 0)
        return field(pick({"t1", "t2"}), "'-'", false);
    const std::string literal =
        pick({"'AAK'", "'BHZ '", "''", "' x'", "'it''s'", "'a'", "'-'", "'Köln'", "'12'"});
    return computed(literal, literal);
}

Twin RandomExpression::text(int depth)
{
    if (depth <= 0 || below(3) == 0)
        return textLeaf();
    if (below(4) == 0)
        return chosen(condition(depth - 1), text(depth - 1), text(depth - 1));
    return textCall(depth);
}

Twin RandomExpression::textCall(int depth)
{
    const Twin s = text(depth - 1);
    switch (below(3)) {
    case 0: {
        const std::string name = pick({"upper", "lower", "trim"});
        return computed(name + "(" + s.text + ")", name + "(" + s.nulled + ")");
    }
    case 1: {
        const std::string rest =
            ", " + std::to_string(below(9) - 4) + (below(2) ? ", " + std::to_string(below(4)) : "") + ")";
        return computed("substr(" + s.text + rest, "substr(" + s.nulled + rest);
    }
    default: {
        const Twin other = text(depth - 1);
        return computed("strcat(" + s.text + ", " + other.text + ")",
                        "((" + s.nulled + ") || (" + other.nulled + "))");
    }
    }
}

Twin RandomExpression::comparison(int depth)
{
    const bool texts = below(3) == 0;
    const Twin a = texts ? text(depth - 1) : number(depth - 1);
    const Twin b = texts ? text(depth - 1) : number(depth - 1);
    const std::string op = pick({"==", "!=", "<", "<=", ">", ">="});
    const bool equality = op == "==" || op == "!=";
    const auto side = [&](const Twin &twin) {
        const std::string sql = equality ? twin.stored : twin.nulled;
        return texts ? "rtrim(" + sql + ", ' ')" : "(" + sql + ")";
    };
    const std::string sqlOp = equality ? "=" : op;
    std::string sql = "coalesce(" + side(a) + " " + sqlOp + " " + side(b) + ", 0)";
    if (op == "!=")
        sql = "(not " + sql + ")";
    return computed("(" + a.text + " " + op + " " + b.text + ")", sql);
}

Twin RandomExpression::match(int depth)
{
    const Twin s = text(depth - 1);
    const std::string letters = pick({"A", "K", "x", "ö", "BH", "'", ""});
    const std::string quoted = letters == "'" ? "''" : letters;
    const std::string subject = "rtrim(" + s.stored + ", ' ')";
    const bool atStart = below(2) == 0;
    const std::string found = atStart
                                  ? "substr(" + subject + ", 1, length('" + quoted + "')) = '" + quoted + "'"
                                  : "instr(" + subject + ", '" + quoted + "') > 0";
    const bool wanted = below(3) > 0;
    const std::string held = "coalesce(" + found + ", 0)";
    return computed("(" + s.text + (wanted ? " =~ '" : " !~ '") + (atStart ? "^" : "") + quoted + "')",
                    wanted ? held : "(not " + held + ")");
}

Twin RandomExpression::condition(int depth)
{
    if (depth <= 0)
        return comparison(1);
    switch (below(8)) {
    case 0: {
        const Twin operand = condition(depth - 1);
        return computed("!(" + operand.text + ")", "(not " + operand.stored + ")");
    }
    case 1: {
        const Twin operand = below(2) ? number(depth - 1) : text(depth - 1);
        return computed("isnull(" + operand.text + ")", "((" + operand.nulled + ") is null)");
    }
    case 2: {
        const Twin operand = number(depth - 1);
        return computed("!(" + operand.text + ")", "(not " + truth(operand) + ")");
    }
    case 3:
    case 4: {
        const std::string op = pick({"&&", "||"});
        std::string written;
        std::string sql;
        for (int i = 0, count = 2 + below(2); i < count; ++i) {
            const Twin operand = condition(depth - 1);
            written += (i ? " " + op + " " : "") + operand.text;
            sql += (i ? (op == "&&" ? " and " : " or ") : "") + operand.stored;
        }
        return computed("(" + written + ")", "(" + sql + ")");
    }
    case 5:
        return match(depth);
    default:
        return comparison(depth);
    }
}

} // namespace orvane::expr::test
