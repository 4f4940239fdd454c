// Generated conditions, each in our language and in SQL.
#pragma once

#include "operations/generated_world.h"

struct GeneratedCondition {
    std::string ours;
    std::string sql;
};

// A condition over the fields of one or two sides. In SQL the sides are named `l` and `r`.
GeneratedCondition anyCondition(std::mt19937_64 &random, const GeneratedWorld &world, const Side &left,
                                const Side *right);
// One that holds comparisons between the sides, as joins have them.
GeneratedCondition anyJoinCondition(std::mt19937_64 &random, const GeneratedWorld &world, const Side &left,
                                    const Side &right);
