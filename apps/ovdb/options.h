// The options of all commands, one row each. Parsing and help are made from these rows; a new option is a new
// row.
#pragma once

#include "library.h"
#include "request.h"

#include <span>
#include <string_view>
#include <vector>

namespace ovdb {

// Commands that an option belongs to, to be added.
enum : unsigned {
    for_info = 1,
    for_tables = 2,
    for_fields = 4,
    for_select = 8,
    for_expr = 16,
    for_add = 32,
    for_set = 64,
    for_mark = 128,
    for_crunch = 256,
    for_create = 512,
    for_nextid = 1024,
    for_map = 2048,
    for_check = 4096,
    for_all = 8191,
};

struct Option {
    std::string_view name; // with its dashes
    std::string_view short_name;
    std::vector<std::string_view> arguments; // what they are called in the help
    unsigned commands;
    std::string_view help;
    // Either a setting of the request,
    void (*set)(Request &request, const std::vector<std::string> &arguments) = nullptr;
    // or an operation, which makes a view of a table and is put behind those before it.
    Dbptr (*derive)(const Database &database, Dbptr table, const Operation &operation) = nullptr;
    std::string_view remedy = {}; // what to do when the operation fails
};

std::span<const Option> options();

// The option of that name, among those of the commands. Null where there is none.
const Option *find_option(std::string_view name, unsigned commands);

} // namespace ovdb
