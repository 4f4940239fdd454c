// ovdb expr: help on the functions of expressions.
#include "commands.h"
#include "library.h"
#include "near_name.h"

#include <algorithm>
#include <cstdio>

namespace ovdb {

namespace {

constexpr std::size_t line_width = 79;

// The sentences in lines, each behind an indent.
void print_wrapped(std::string_view text)
{
    std::size_t column = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const bool fits = column > 0 && column + 1 + end <= line_width;
        if (column > 0 && !fits)
            std::printf("\n");
        std::printf("%s%.*s", fits ? " " : "    ", static_cast<int>(end), text.data());
        column = (fits ? column + 1 : 4) + end;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    std::printf("\n");
}

std::vector<DbFunction> functions()
{
    std::vector<DbFunction> found;
    DbFunction function;
    while (dbexpr_function(static_cast<std::int64_t>(found.size()), &function) == 0)
        found.push_back(function);
    return found;
}

void print_help(const std::string &name, const std::vector<DbFunction> &all)
{
    bool any = false;
    for (const DbFunction &function : all)
        if (name == function.name) {
            std::printf("%s%s\n", any ? "\n" : "", function.signature);
            print_wrapped(function.help);
            any = true;
        }
    if (any)
        return;
    std::vector<std::string_view> names;
    for (const DbFunction &function : all)
        names.emplace_back(function.name);
    throw Failure(ExitCode::Failed, "expr " + name + ": there is no such function" +
                                        near_name_hint(name, names) + "\n'ovdb expr' lists the functions");
}

void print_list(const std::vector<DbFunction> &all)
{
    std::string_view group;
    for (const DbFunction &function : all) {
        if (group != function.group)
            std::printf("%s%s\n", group.empty() ? "" : "\n", function.group);
        group = function.group;
        std::printf("  %s\n", function.signature);
    }
}

} // namespace

void run_expr(const Request &request)
{
    const auto all = functions();
    if (request.operands.empty())
        print_list(all);
    for (std::size_t i = 0; i < request.operands.size(); ++i) {
        if (i > 0)
            std::printf("\n");
        print_help(request.operands[i], all);
    }
}

} // namespace ovdb
