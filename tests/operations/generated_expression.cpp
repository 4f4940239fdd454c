#include "operations/expression_generator.h"

GeneratedCondition anyCondition(std::mt19937_64 &random, const GeneratedWorld &world, const Side &left,
                                const Side *right)
{
    ExpressionGenerator generator(random, fieldsOf(world, left, "l"),
                                  right ? fieldsOf(world, *right, "r") : NamedFields());
    return generator.condition(below(random, 4));
}

GeneratedCondition anyJoinCondition(std::mt19937_64 &random, const GeneratedWorld &world, const Side &left,
                                    const Side &right)
{
    ExpressionGenerator generator(random, fieldsOf(world, left, "l"), fieldsOf(world, right, "r"));
    GeneratedCondition all = generator.between();
    for (int further = below(random, 4); further > 0; --further)
        all = ExpressionGenerator::both(
            all, below(random, 3) == 0 ? generator.condition(1) : generator.between(), "&&", "AND");
    return all;
}
