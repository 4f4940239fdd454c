#include "operations/generated_expression.h"

namespace {

struct NamedField {
    std::string ours; // "t0.i1"
    std::string sql;  // "l.t0_i1"
    Kind kind;
};

std::vector<NamedField> fieldsOf(const GeneratedWorld &world, const Side &side, const char *name)
{
    std::vector<NamedField> fields;
    for (const int member : side.members) {
        const GeneratedTable &table = world.tables()[static_cast<size_t>(member)];
        for (const GeneratedField &field : table.fields)
            fields.push_back({table.name + "." + field.name,
                              std::string(name) + "." + table.name + "_" + field.name, field.kind});
    }
    return fields;
}

// A value: what is stored, and the same with NULL for null.
struct Value {
    std::string ours;
    std::string stored;
    std::string present;
};

class Generator
{
public:
    Generator(std::mt19937_64 &random, std::vector<NamedField> left, std::vector<NamedField> right)
        : random_(random), left_(std::move(left)), right_(std::move(right)), all_(left_)
    {
        all_.insert(all_.end(), right_.begin(), right_.end());
    }

    GeneratedCondition condition(int depth)
    {
        const int choice = depth <= 0 ? 3 : below(random_, 6);
        if (choice == 0)
            return both(condition(depth - 1), condition(depth - 1), "&&", "AND");
        if (choice == 1)
            return both(condition(depth - 1), condition(depth - 1), "||", "OR");
        if (choice == 2) {
            const GeneratedCondition inner = condition(depth - 1);
            return {"!(" + inner.ours + ")", "(NOT " + inner.sql + ")"};
        }
        if (choice == 4 && below(random_, 2) == 0) {
            const NamedField &field = any(all_);
            return {"isnull(" + field.ours + ")", "(" + value(field).present + " IS NULL)"};
        }
        return comparison(any(all_), all_);
    }

    // A comparison of a field of the left side with one of the right.
    GeneratedCondition between()
    {
        for (int attempt = 0; attempt < 30; ++attempt) {
            const NamedField &left = any(left_);
            const NamedField &right = any(right_);
            if (!fit(left.kind, right.kind))
                continue;
            return below(random_, 2) == 0 ? compared(left, right) : compared(right, left);
        }
        return comparison(any(left_), left_);
    }

    static GeneratedCondition both(const GeneratedCondition &a, const GeneratedCondition &b, const char *ours,
                                   const char *sql)
    {
        return {"(" + a.ours + " " + ours + " " + b.ours + ")", "(" + a.sql + " " + sql + " " + b.sql + ")"};
    }

private:
    const NamedField &any(const std::vector<NamedField> &fields)
    {
        return fields[static_cast<size_t>(below(random_, fields.size()))];
    }

    static bool isNumber(Kind kind)
    {
        return kind == Kind::Integer || kind == Kind::Boolean || kind == Kind::Real;
    }
    static bool fit(Kind a, Kind b)
    {
        return a == b || (isNumber(a) && isNumber(b)) || (a == Kind::Time && b == Kind::Yearday) ||
               (a == Kind::Yearday && b == Kind::Time);
    }

    static Value value(const NamedField &field)
    {
        const std::string null = nullTextOf(field.kind);
        return {field.ours, field.sql,
                "NULLIF(" + field.sql + "," + (field.kind == Kind::Text ? "'" + null + "'" : null) + ")"};
    }

    Value constant(Kind kind)
    {
        std::string text;
        switch (kind) {
        case Kind::Text: {
            static const char *const texts[] = {"A", "AB", "B", "a", "-", "", "Q"};
            text = std::string("'") + texts[below(random_, std::size(texts))] + "'";
            break;
        }
        case Kind::Real:
            text = std::to_string(below(random_, 9)) + (below(random_, 2) == 0 ? ".25" : ".0");
            break;
        case Kind::Time:
            text = std::to_string(1199145600 + 43200 * below(random_, 10)) + ".0";
            break;
        case Kind::Yearday:
            text = std::to_string(2008001 + below(random_, 5));
            break;
        case Kind::Integer:
        case Kind::Boolean:
            text = std::to_string(below(random_, 8));
            break;
        }
        return {text, text, text};
    }

    // The field, or something computed from it and another one.
    Value term(const NamedField &field, const std::vector<NamedField> &others)
    {
        Value first = value(field);
        if (!(isNumber(field.kind) || field.kind == Kind::Time) || below(random_, 3) > 0)
            return first;
        static const char *const operators[] = {" + ", " - ", " * "};
        const char *op = operators[below(random_, field.kind == Kind::Time ? 2 : 3)];
        Value second = constant(below(random_, 2) == 0 ? Kind::Integer : Kind::Real);
        const NamedField &other = any(others);
        if (isNumber(other.kind) && below(random_, 2) == 0)
            second = value(other);
        const std::string sql = "(" + first.present + op + second.present + ")";
        return {"(" + first.ours + op + second.ours + ")", sql, sql};
    }

    GeneratedCondition comparison(const NamedField &field, const std::vector<NamedField> &others)
    {
        const Value left = term(field, others);
        for (int attempt = 0; attempt < 4; ++attempt) {
            const NamedField &other = any(others);
            if (below(random_, 2) == 0 && fit(field.kind, other.kind) && left.ours == field.ours)
                return compared(field, other);
        }
        return compared(left, constant(field.kind));
    }

    const char *anyOperator()
    {
        static const char *const operators[] = {"==", "==", "!=", "<", "<=", ">", ">="};
        return operators[below(random_, std::size(operators))];
    }

    GeneratedCondition compared(const NamedField &a, const NamedField &b)
    {
        if (a.kind == Kind::Time && b.kind == Kind::Yearday)
            return timeWithDay(a, b, anyOperator(), false);
        if (a.kind == Kind::Yearday && b.kind == Kind::Time)
            return timeWithDay(b, a, anyOperator(), true);
        return compared(isNumber(a.kind) && isNumber(b.kind) ? term(a, {a}) : value(a), value(b));
    }

    GeneratedCondition compared(const Value &a, const Value &b)
    {
        const std::string op = anyOperator();
        const std::string ours = "(" + a.ours + " " + op + " " + b.ours + ")";
        if (op == "==")
            return {ours, "COALESCE(" + a.stored + " = " + b.stored + ",0)"};
        if (op == "!=")
            return {ours, "(NOT COALESCE(" + a.stored + " = " + b.stored + ",0))"};
        return {ours, "COALESCE(" + a.present + " " + op + " " + b.present + ",0)"};
    }

    // A time is equal to a day that it lies on, less than one that begins after it.
    static GeneratedCondition timeWithDay(const NamedField &time, const NamedField &day,
                                          const std::string &op, bool turned)
    {
        const std::string t = value(time).present;
        const std::string begin = day.sql + "_b";
        const std::string end = day.sql + "_e";
        const std::string ours = turned ? "(" + day.ours + " " + mirrored(op) + " " + time.ours + ")"
                                        : "(" + time.ours + " " + op + " " + day.ours + ")";
        std::string sql;
        if (op == "<")
            sql = t + " < " + begin;
        else if (op == "<=")
            sql = t + " < " + end;
        else if (op == ">")
            sql = t + " >= " + end;
        else if (op == ">=")
            sql = t + " >= " + begin;
        else
            sql = t + " >= " + begin + " AND " + t + " < " + end;
        const std::string holds = "COALESCE(" + sql + ",0)";
        return {ours, op == "!=" ? "(NOT " + holds + ")" : holds};
    }

    static std::string mirrored(const std::string &op)
    {
        if (op[0] == '<')
            return ">" + op.substr(1);
        if (op[0] == '>')
            return "<" + op.substr(1);
        return op;
    }

    std::mt19937_64 &random_;
    std::vector<NamedField> left_;
    std::vector<NamedField> right_;
    std::vector<NamedField> all_;
};

} // namespace

GeneratedCondition anyCondition(std::mt19937_64 &random, const GeneratedWorld &world, const Side &left,
                                const Side *right)
{
    Generator generator(random, fieldsOf(world, left, "l"),
                        right ? fieldsOf(world, *right, "r") : std::vector<NamedField>());
    return generator.condition(below(random, 4));
}

GeneratedCondition anyJoinCondition(std::mt19937_64 &random, const GeneratedWorld &world, const Side &left,
                                    const Side &right)
{
    Generator generator(random, fieldsOf(world, left, "l"), fieldsOf(world, right, "r"));
    GeneratedCondition all = generator.between();
    for (int further = below(random, 4); further > 0; --further)
        all = Generator::both(all, below(random, 3) == 0 ? generator.condition(1) : generator.between(), "&&",
                              "AND");
    return all;
}
