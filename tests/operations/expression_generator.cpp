#include "operations/expression_generator.h"

namespace {

std::string mirrored(const std::string &op)
{
    if (op[0] == '<')
        return ">" + op.substr(1);
    if (op[0] == '>')
        return "<" + op.substr(1);
    return op;
}

std::string holds(const std::string &sql)
{
    return "COALESCE(" + sql + ",0)";
}

} // namespace

NamedFields fieldsOf(const GeneratedWorld &world, const Side &side, const char *sqlName)
{
    NamedFields fields;
    for (const int member : side.members) {
        const GeneratedTable &table = world.tables()[static_cast<size_t>(member)];
        for (const GeneratedField &field : table.fields)
            fields.push_back({table.name + "." + field.name,
                              std::string(sqlName) + "." + table.name + "_" + field.name, field.kind});
    }
    return fields;
}

ExpressionGenerator::ExpressionGenerator(std::mt19937_64 &random, NamedFields left, NamedFields right)
    : random_(random), left_(std::move(left)), right_(std::move(right)), all_(left_)
{
    all_.insert(all_.end(), right_.begin(), right_.end());
}

GeneratedCondition ExpressionGenerator::both(const GeneratedCondition &a, const GeneratedCondition &b,
                                             const char *ours, const char *sql)
{
    return {"(" + a.ours + " " + ours + " " + b.ours + ")", "(" + a.sql + " " + sql + " " + b.sql + ")"};
}

GeneratedCondition ExpressionGenerator::condition(const NamedFields &fields, int depth)
{
    if (depth <= 0)
        return comparison(fields, fields, 0);
    switch (below(9)) {
    case 0:
        return both(condition(fields, depth - 1), condition(fields, depth - 1), "&&", "AND");
    case 1:
        return both(condition(fields, depth - 1), condition(fields, depth - 1), "||", "OR");
    case 2: {
        const GeneratedCondition inner = condition(fields, depth - 1);
        return {"!(" + inner.ours + ")", "(NOT " + inner.sql + ")"};
    }
    case 3: {
        const GeneratedValue of = below(2) == 0   ? value(any(fields))
                                  : below(2) == 0 ? number(fields, depth - 1)
                                                  : text(fields, depth - 1);
        return {"isnull(" + of.ours + ")", "(" + of.present + " IS NULL)"};
    }
    case 4:
        return match(text(fields, depth - 1));
    case 5: { // a number is true where it is not 0
        const GeneratedValue x = number(fields, depth - 1);
        return {"!(" + x.ours + ")", "(NOT " + holds(x.present + " <> 0") + ")"};
    }
    default:
        return comparison(fields, fields, depth - 1);
    }
}

GeneratedCondition ExpressionGenerator::between()
{
    if (below(12) == 0) { // a distance and what is near it
        const GeneratedValue angle = geography(left_, right_);
        return compared(angle, {"3000", "3000", "3000", true});
    }
    if (below(2) == 0)
        return comparison(left_, right_, below(3));
    return comparison(right_, left_, below(3));
}

GeneratedCondition ExpressionGenerator::comparison(const NamedFields &a, const NamedFields &b, int depth)
{
    switch (below(8)) {
    case 0: {
        const NamedField *day = anyOf(b, {Kind::Yearday});
        return inSpan(time(a, depth), day && below(3) > 0 ? dayOf(*day) : span());
    }
    case 1:
        return compared(time(a, depth), time(b, depth));
    case 2:
        if (const NamedField *day = anyOf(a, {Kind::Yearday})) {
            if (const NamedField *other = below(2) == 0 ? anyOf(b, {Kind::Yearday}) : nullptr)
                return compared(value(*day), value(*other));
            if (below(3) == 0) {
                const GeneratedValue t = time(b, depth);
                const std::string sql = "o_part(" + t.present + ",'yearday')";
                return compared(value(*day), {"yearday(" + t.ours + ")", sql, sql, true});
            }
            const std::string month_day = std::to_string(1 + below(5));
            const std::string number = "200800" + month_day;
            const std::string ours = below(2) == 0 ? "'2008-01-0" + month_day + "'" : number;
            return compared(value(*day), {ours, number, number, true});
        }
        [[fallthrough]];
    case 3:
        return comparedTexts(text(a, depth), text(b, depth));
    case 4:
        return comparedAsNumbers(number(a, depth), text(b, 0));
    default: {
        // Fields as they stand can be looked up, which is to be tried more often than chance would.
        const NamedField *field =
            below(2) == 0 ? anyOf(a, {Kind::Integer, Kind::Boolean, Kind::Real}) : nullptr;
        return compared(field ? value(*field) : number(a, depth), number(b, depth));
    }
    }
}

std::string ExpressionGenerator::anyOperator()
{
    static const char *const operators[] = {"==", "==", "!=", "<", "<=", ">", ">="};
    return operators[below(std::size(operators))];
}

GeneratedCondition ExpressionGenerator::compared(const GeneratedValue &a, const GeneratedValue &b)
{
    const std::string op = anyOperator();
    const std::string ours = "(" + a.ours + " " + op + " " + b.ours + ")";
    if (op == "==")
        return {ours, holds("(" + a.stored + ") = (" + b.stored + ")")};
    if (op == "!=")
        return {ours, "(NOT " + holds("(" + a.stored + ") = (" + b.stored + ")") + ")"};
    return {ours, holds("(" + a.present + ") " + op + " (" + b.present + ")")};
}

GeneratedCondition ExpressionGenerator::comparedTexts(const GeneratedValue &a, const GeneratedValue &b)
{
    const auto trimmed = [](const GeneratedValue &text) {
        return GeneratedValue{text.ours, "rtrim(" + text.stored + ",' ')", "rtrim(" + text.present + ",' ')"};
    };
    return compared(trimmed(a), trimmed(b));
}

GeneratedCondition ExpressionGenerator::comparedAsNumbers(const GeneratedValue &a, const GeneratedValue &text)
{
    const bool constant = text.ours[0] == '\'' || text.ours[0] == '"';
    GeneratedValue read{text.ours, "o_number(" + text.stored + ")", "o_number(" + text.present + ")"};
    if (constant) { // one that is no number is an error
        const std::string digits = std::to_string(below(9) - 2) + (below(2) == 0 ? ".5" : "");
        read = {"'" + digits + "'", digits, digits};
    }
    return below(2) == 0 ? compared(a, read) : compared(read, a);
}

GeneratedCondition ExpressionGenerator::inSpan(const GeneratedValue &time, const GeneratedSpan &span)
{
    const std::string op = anyOperator();
    const std::string &t = time.present;
    std::string sql;
    if (op == "<")
        sql = t + " < " + span.begin;
    else if (op == "<=")
        sql = t + " < " + span.end;
    else if (op == ">")
        sql = t + " >= " + span.end;
    else if (op == ">=")
        sql = t + " >= " + span.begin;
    else
        sql = t + " >= " + span.begin + " AND " + t + " < " + span.end;
    const std::string ours = below(2) == 0 ? "(" + time.ours + " " + op + " " + span.ours + ")"
                                           : "(" + span.ours + " " + mirrored(op) + " " + time.ours + ")";
    return {ours, op == "!=" ? "(NOT " + holds(sql) + ")" : holds(sql)};
}

GeneratedCondition ExpressionGenerator::match(const GeneratedValue &text)
{
    static const char *const patterns[] = {"A",        "^A",  "B$", "^.$",    "[A-C]{2}",
                                           "^(A|a|P)", "x|-", "^$", "[0-9]+", "A.?B"};
    const std::string pattern = patterns[below(std::size(patterns))];
    const std::string found = holds("o_found(" + text.stored + ",'" + pattern + "')");
    if (below(3) == 0)
        return {"(" + text.ours + " !~ '" + pattern + "')", "(NOT " + found + ")"};
    return {"(" + text.ours + " =~ '" + pattern + "')", found};
}
