#include "operations/expression_generator.h"

#include <ctime>

namespace {

constexpr long long beginOf2008 = 1199145600;

GeneratedValue computed(std::string ours, std::string sql, bool whole = false)
{
    return {std::move(ours), sql, sql, whole};
}

std::string asReal(const GeneratedValue &value)
{
    return value.whole ? "CAST(" + value.present + " AS REAL)" : value.present;
}

std::string chosen(const GeneratedCondition &by, const std::string &yes, const std::string &no)
{
    return "(CASE WHEN " + by.sql + " THEN " + yes + " ELSE " + no + " END)";
}

std::string oursChosen(const GeneratedCondition &by, const GeneratedValue &yes, const GeneratedValue &no)
{
    return "(" + by.ours + " ? " + yes.ours + " : " + no.ours + ")";
}

} // namespace

bool ExpressionGenerator::isNumber(Kind kind)
{
    return kind == Kind::Integer || kind == Kind::Boolean || kind == Kind::Real;
}

GeneratedValue ExpressionGenerator::value(const NamedField &field)
{
    const std::string null = nullTextOf(field.kind);
    return {field.ours, field.sql,
            "NULLIF(" + field.sql + "," + (field.kind == Kind::Text ? "'" + null + "'" : null) + ")",
            field.kind == Kind::Integer || field.kind == Kind::Boolean || field.kind == Kind::Yearday};
}

const NamedField *ExpressionGenerator::anyOf(const NamedFields &fields, std::initializer_list<Kind> kinds)
{
    for (int attempt = 0; attempt < 12; ++attempt) {
        const NamedField &field = any(fields);
        for (const Kind kind : kinds)
            if (field.kind == kind)
                return &field;
    }
    return nullptr;
}

// ---- Numbers -------------------------------------------------------------------------------------

GeneratedValue ExpressionGenerator::numberLeaf(const NamedFields &fields)
{
    if (below(3) > 0)
        if (const NamedField *field = anyOf(fields, {Kind::Integer, Kind::Boolean, Kind::Real}))
            return value(*field);
    const std::string digits = std::to_string(below(9));
    switch (below(4)) {
    case 0:
        return computed(digits + ".25", digits + ".25");
    case 1:
        return computed("(-" + digits + ")", "(-" + digits + ")", true);
    case 2:
        return computed("-" + digits + ".5e0", "(-" + digits + ".5)");
    default:
        return computed(digits, digits, true);
    }
}

GeneratedValue ExpressionGenerator::number(const NamedFields &fields, int depth)
{
    if (depth <= 0 || below(4) == 0)
        return numberLeaf(fields);
    switch (below(8)) {
    case 0: {
        const GeneratedValue x = number(fields, depth - 1);
        return computed("-(" + x.ours + ")", "(-(" + x.present + "))", x.whole);
    }
    case 1:
    case 2:
        return numberCall(fields, depth);
    case 3: {
        const GeneratedCondition by = condition(fields, depth - 1);
        const GeneratedValue yes = number(fields, depth - 1);
        const GeneratedValue no = number(fields, depth - 1);
        const bool whole = yes.whole && no.whole;
        const std::string ours = oursChosen(by, yes, no);
        // What is chosen of two fields is stored still.
        if (whole)
            return {ours, chosen(by, yes.stored, no.stored), chosen(by, yes.present, no.present), true};
        return {ours, chosen(by, "CAST(" + yes.stored + " AS REAL)", "CAST(" + no.stored + " AS REAL)"),
                chosen(by, asReal(yes), asReal(no)), false};
    }
    case 4: {
        const GeneratedCondition truth = condition(fields, depth - 1);
        return computed("(" + truth.ours + ")", "(" + truth.sql + ")", true);
    }
    case 5:
        return numberOfTime(fields, depth);
    default:
        return arithmetic(fields, depth);
    }
}

GeneratedValue ExpressionGenerator::arithmetic(const NamedFields &fields, int depth)
{
    const GeneratedValue a = number(fields, depth - 1);
    const GeneratedValue b = number(fields, depth - 1);
    const bool whole = a.whole && b.whole;
    static const char *const operators[] = {"+", "-", "*", "/", "**", "%"};
    const std::string op = operators[below(whole ? 6 : 5)];
    const std::string ours = "(" + a.ours + " " + op + " " + b.ours + ")";
    if (op == "**") // the sign of what is raised would be that of the power
        return computed("((" + a.ours + ") ** " + b.ours + ")", "o_pow(" + a.present + "," + b.present + ")");
    const std::string sql = "((" + a.present + ") " + op + " (" + b.present + "))";
    return computed(ours, whole ? sql : "o_finite" + sql, whole);
}

GeneratedValue ExpressionGenerator::functionOfNumber(const GeneratedValue &x)
{
    static const char *const plain[] = {"exp",  "log",  "log10", "sin",    "cos",   "tan",
                                        "asin", "acos", "atan",  "deg2km", "km2deg"};
    switch (below(6)) {
    case 0:
        return computed("abs(" + x.ours + ")", "abs(" + x.present + ")", x.whole);
    case 1: {
        const std::string name = below(2) == 0 ? "floor" : "ceil";
        return computed(name + "(" + x.ours + ")", name + "(" + x.present + ")", x.whole);
    }
    case 2:
        return computed("sqrt(" + x.ours + ")", "sqrt(" + x.present + ")");
    case 3:
        return x.whole ? computed("round(" + x.ours + ")", x.present, true)
                       : computed("round(" + x.ours + ")", "round(" + x.present + ")");
    case 4:
        return computed("atan2(" + x.ours + ", 1.5)", "o_atan2(" + x.present + ",1.5)");
    default: {
        const std::string name = plain[below(std::size(plain))];
        return computed(name + "(" + x.ours + ")", "o_" + name + "(" + x.present + ")");
    }
    }
}

GeneratedValue ExpressionGenerator::numberCall(const NamedFields &fields, int depth)
{
    switch (below(6)) {
    case 0: {
        const GeneratedValue s = text(fields, depth - 1);
        return computed("length(" + s.ours + ")", "length(rtrim(" + s.present + ",' '))", true);
    }
    case 1: {
        const std::string name = below(2) == 0 ? "min" : "max";
        const GeneratedValue a = number(fields, depth - 1);
        const GeneratedValue b = number(fields, depth - 1);
        const bool whole = a.whole && b.whole;
        const std::string sql = whole ? a.present + "," + b.present : asReal(a) + "," + asReal(b);
        return computed(name + "(" + a.ours + ", " + b.ours + ")", name + "(" + sql + ")", whole);
    }
    case 2:
        return geography(fields, fields);
    case 3: {
        const GeneratedValue a = number(fields, depth - 1);
        const GeneratedValue b = number(fields, depth - 1);
        return computed("pow(" + a.ours + ", " + b.ours + ")", "o_pow(" + a.present + "," + b.present + ")");
    }
    default:
        return functionOfNumber(number(fields, depth - 1));
    }
}

GeneratedValue ExpressionGenerator::numberOfTime(const NamedFields &fields, int depth)
{
    switch (below(4)) {
    case 0:
        if (const NamedField *day = anyOf(fields, {Kind::Yearday})) {
            const GeneratedValue whole = value(*day);
            const std::string op = below(2) == 0 ? " / " : " % ";
            return computed("(" + whole.ours + op + "1000)", "(" + whole.present + op + "1000)", true);
        }
        [[fallthrough]];
    case 1: {
        const GeneratedValue a = time(fields, depth - 1);
        const GeneratedValue b = time(fields, depth - 1);
        return computed("(" + a.ours + " - " + b.ours + ")", "(" + a.present + " - " + b.present + ")");
    }
    default: {
        static const char *const parts[] = {"year", "month", "day", "hour", "minute", "second"};
        const std::string part = parts[below(std::size(parts))];
        const GeneratedValue t = time(fields, depth - 1);
        return computed(part + "(" + t.ours + ")", "o_part(" + t.present + ",'" + part + "')", true);
    }
    }
}

// Between two points: the angle, the direction.
GeneratedValue ExpressionGenerator::geography(const NamedFields &a, const NamedFields &b)
{
    std::string ours;
    std::string sql;
    for (int i = 0; i < 4; ++i) {
        const NamedField *field = below(5) == 0 ? nullptr : anyOf(i < 2 ? a : b, {Kind::Real});
        const GeneratedValue x = field ? value(*field) : computed("12.5", "12.5");
        ours += (i > 0 ? ", " : "") + x.ours;
        sql += (i > 0 ? "," : "") + x.present;
    }
    const std::string name = below(2) == 0 ? "distance" : "azimuth";
    // The formulas differ in the last places: whole thousandths of what lies between them are the same.
    return computed("floor((" + name + "(" + ours + ") + 0.00031) * 1000)",
                    "floor((o_" + name + "(" + sql + ") + 0.00031) * 1000)");
}

// ---- Texts ---------------------------------------------------------------------------------------

GeneratedValue ExpressionGenerator::textConstant()
{
    static const char *const texts[][2] = {
        {"'A'", "'A'"},          {"\"AB\"", "'AB'"}, {"'B  '", "'B  '"}, {"'a'", "'a'"},
        {"'-'", "'-'"},          {"''", "''"},       {"'Q'", "'Q'"},     {"'it''s'", "'it''s'"},
        {"'it\\'s'", "'it''s'"}, {"\" x\"", "' x'"}, {"'A B'", "'A B'"}, {"'12'", "'12'"},
    };
    const auto &text = texts[below(std::size(texts))];
    return computed(text[0], text[1]);
}

GeneratedValue ExpressionGenerator::text(const NamedFields &fields, int depth)
{
    if (depth > 0 && below(3) == 0)
        return textCall(fields, depth);
    const NamedField *field = below(4) == 0 ? nullptr : anyOf(fields, {Kind::Text});
    return field ? value(*field) : textConstant();
}

GeneratedValue ExpressionGenerator::textCall(const NamedFields &fields, int depth)
{
    const GeneratedValue s = text(fields, depth - 1);
    switch (below(6)) {
    case 0: {
        const std::string rest =
            ", " + std::to_string(below(9) - 4) + (below(2) ? ", " + std::to_string(below(4)) : "") + ")";
        return computed("substr(" + s.ours + rest, "substr(" + s.present + rest);
    }
    case 1: {
        const GeneratedValue other = text(fields, depth - 1);
        return computed("strcat(" + s.ours + ", " + other.ours + ")",
                        "(" + s.present + " || " + other.present + ")");
    }
    case 2: {
        const GeneratedValue t = time(fields, depth - 1);
        return computed("strtime(" + t.ours + ", '%Y-%m-%d %H:%M')",
                        "o_strtime(" + t.present + ",'%Y-%m-%d %H:%M')");
    }
    case 3: {
        const GeneratedCondition by = condition(fields, depth - 1);
        const GeneratedValue other = text(fields, depth - 1);
        return {oursChosen(by, s, other), chosen(by, s.stored, other.stored),
                chosen(by, s.present, other.present)};
    }
    default: {
        static const char *const names[] = {"upper", "lower", "trim"};
        const std::string name = names[below(std::size(names))];
        return computed(name + "(" + s.ours + ")", name + "(" + s.present + ")");
    }
    }
}

// ---- Times ---------------------------------------------------------------------------------------

GeneratedValue ExpressionGenerator::time(const NamedFields &fields, int depth)
{
    if (depth > 0)
        switch (below(6)) {
        case 0: {
            const GeneratedValue t = time(fields, depth - 1);
            const GeneratedValue x = numberLeaf(fields);
            const std::string op = below(2) == 0 ? " + " : " - ";
            return computed("(" + t.ours + op + x.ours + ")", "(" + t.present + op + asReal(x) + ")");
        }
        case 1:
            if (const NamedField *day = anyOf(fields, {Kind::Yearday}))
                return computed("epoch(" + day->ours + ")", day->sql + "_b");
            break;
        case 2: {
            const std::string name = below(2) == 0 ? "min" : "max";
            const GeneratedValue a = time(fields, depth - 1);
            const GeneratedValue b = time(fields, depth - 1);
            return computed(name + "(" + a.ours + ", " + b.ours + ")",
                            name + "(" + a.present + "," + b.present + ")");
        }
        default:
            break;
        }
    if (const NamedField *field = below(8) == 0 ? nullptr : anyOf(fields, {Kind::Time}))
        return value(*field);
    const std::string seconds = std::to_string(beginOf2008 + 43200 * below(10)) + ".0";
    return computed("epoch(" + seconds + ")", seconds);
}

GeneratedSpan ExpressionGenerator::span()
{
    struct Form {
        const char *format;
        long long length;
    };
    static const Form forms[] = {
        {"%Y-%m-%d", 86400},    {"%Y%j", 86400},          {"%m/%d/%Y", 86400},  {"%Y-%m-%dT%H", 3600},
        {"%Y-%m-%d %H:%M", 60}, {"%Y-%m-%d %H:%M:%S", 1}, {"%Y%j:%H:%M:%S", 1},
    };
    const Form &form = forms[below(std::size(forms))];
    std::time_t begin = beginOf2008 + 900 * below(5 * 96 + 1);
    begin -= begin % form.length;
    std::tm parts{};
    gmtime_r(&begin, &parts);
    char written[40];
    std::strftime(written, sizeof written, form.format, &parts);
    return {"'" + std::string(written) + "'", std::to_string(begin) + ".0",
            std::to_string(begin + form.length) + ".0"};
}

GeneratedSpan ExpressionGenerator::dayOf(const NamedField &yearday)
{
    return {yearday.ours, yearday.sql + "_b", yearday.sql + "_e"};
}
