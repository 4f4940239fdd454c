// The questions of dbquery, one row each.
#pragma once

#include "door/subject.h"

#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orvane {

// The answer to a question, and what is to be said in the error log although there is one: why a refused
// table looks empty.
struct Answer {
    Status remark;
};

using IntegerHandler = std::int64_t (*)(const Subject &, Answer &);
// Text that lives with the database: the library hands out the pointer itself.
using LastingTextHandler = const std::string &(*)(const Subject &);
// Text made for the question: kept until the same question is asked again.
using TextHandler = std::string (*)(const Subject &);
using ListHandler = std::vector<std::string> (*)(const Subject &);
using ArrayHandler = std::map<std::string, std::string> (*)(const Subject &);

struct QueryRow {
    int code;
    const char *name; // for messages: "field name"
    Level level;      // at which the pointer must be, or below
    std::variant<IntegerHandler, LastingTextHandler, TextHandler, ListHandler, ArrayHandler> handler;
};

// The row of a code, or null.
const QueryRow *find_query(int code);

} // namespace orvane
