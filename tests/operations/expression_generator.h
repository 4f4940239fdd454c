// Random expressions over the fields of one or two sides, each in our language and in SQL.
#pragma once

#include "operations/generated_expression.h"

struct NamedField {
    std::string ours; // "t0.i1"
    std::string sql;  // "l.t0_i1"
    Kind kind;
};
using NamedFields = std::vector<NamedField>;

NamedFields fieldsOf(const GeneratedWorld &world, const Side &side, const char *sqlName);

// A value in our language; in SQL what is stored, and the same with NULL for null.
struct GeneratedValue {
    std::string ours;
    std::string stored;
    std::string present;
    bool whole = false; // an integer
};

// A span of time that a text names.
struct GeneratedSpan {
    std::string ours;
    std::string begin;
    std::string end; // not included
};

class ExpressionGenerator
{
public:
    ExpressionGenerator(std::mt19937_64 &random, NamedFields left, NamedFields right);

    GeneratedCondition condition(int depth) { return condition(all_, depth); }
    // A comparison of something of the left side with something of the right.
    GeneratedCondition between();

    static GeneratedCondition both(const GeneratedCondition &a, const GeneratedCondition &b, const char *ours,
                                   const char *sql);

private:
    // ---- Values
    int below(size_t end) { return ::below(random_, end); }
    const NamedField &any(const NamedFields &fields)
    {
        return fields[static_cast<size_t>(below(fields.size()))];
    }
    static bool isNumber(Kind kind);
    static GeneratedValue value(const NamedField &field);
    // A field of the kinds, or null where a few attempts find none.
    const NamedField *anyOf(const NamedFields &fields, std::initializer_list<Kind> kinds);

    GeneratedValue number(const NamedFields &fields, int depth);
    GeneratedValue numberLeaf(const NamedFields &fields);
    GeneratedValue arithmetic(const NamedFields &fields, int depth);
    GeneratedValue numberCall(const NamedFields &fields, int depth);
    GeneratedValue functionOfNumber(const GeneratedValue &x);
    GeneratedValue numberOfTime(const NamedFields &fields, int depth);
    GeneratedValue geography(const NamedFields &a, const NamedFields &b);
    GeneratedValue text(const NamedFields &fields, int depth);
    GeneratedValue textCall(const NamedFields &fields, int depth);
    GeneratedValue textConstant();
    GeneratedValue time(const NamedFields &fields, int depth);
    GeneratedSpan span();
    GeneratedSpan dayOf(const NamedField &yearday);

    // ---- Conditions
    GeneratedCondition condition(const NamedFields &fields, int depth);
    GeneratedCondition comparison(const NamedFields &a, const NamedFields &b, int depth);
    GeneratedCondition compared(const GeneratedValue &a, const GeneratedValue &b);
    GeneratedCondition comparedTexts(const GeneratedValue &a, const GeneratedValue &b);
    // A number with a text that is read as one.
    GeneratedCondition comparedAsNumbers(const GeneratedValue &a, const GeneratedValue &text);
    // A time is equal to a span that it lies in, less than one that begins after it.
    GeneratedCondition inSpan(const GeneratedValue &time, const GeneratedSpan &span);
    GeneratedCondition match(const GeneratedValue &text);
    std::string anyOperator();

    std::mt19937_64 &random_;
    NamedFields left_;
    NamedFields right_;
    NamedFields all_;
};
