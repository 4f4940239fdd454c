#ifndef ORVANE_TESTS_EXPRESSION_RANDOM_EXPRESSION_H
#define ORVANE_TESTS_EXPRESSION_RANDOM_EXPRESSION_H

#include <random>
#include <string>

namespace orvane::expr::test {

/* An expression, and the same in SQL, twice: as it is stored, where a field's
 * null is the value that stands for it, and with NULL for every null. */
struct Twin {
    std::string text;
    std::string stored;
    std::string nulled;
    bool whole = false; // of numbers: an integer
};

/* Random trees in the part of the language that means the same in SQLite, over
 * the fields of twinFields(). Numbers stay small, so that no sum or product
 * leaves the integers. */
class RandomExpression
{
public:
    explicit RandomExpression(unsigned seed) : random_(seed) {}

    Twin number(int depth);
    Twin text(int depth);
    /* stored and nulled are the same: a condition is never null. */
    Twin condition(int depth);

    int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }

private:
    Twin numberLeaf();
    Twin arithmetic(int depth);
    Twin numberCall(int depth);
    Twin numberChoice(int depth);
    Twin textLeaf();
    Twin textCall(int depth);
    Twin comparison(int depth);
    Twin match(int depth);
    std::string pick(std::initializer_list<const char *> list);

    std::mt19937 random_;
};

} // namespace orvane::expr::test

#endif
