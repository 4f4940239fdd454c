#include "expression/expression_help.h"

#include <algorithm>

#include "base/concat.h"
#include "base/near_names.h"
#include "expression/expression_error.h"
#include "expression/function_table.h"

namespace orvane::expr {

namespace {

constexpr std::size_t help_width = 79;

std::string_view null_sentence(const Function &function)
{
    if (function.most == 0)
        return "";
    return function.null_rule == NullRule::Propagates ? "Null when an argument is null." : "Never null.";
}

// The words of a text in lines of at most help_width, each behind an indent.
std::string wrapped(std::string_view text)
{
    std::string out;
    std::size_t column = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (column > 0 && column + 1 + word.size() > help_width) {
            out += '\n';
            column = 0;
        }
        out += column == 0 ? "    " : " ";
        column += (column == 0 ? 4 : 1) + word.size();
        out += word;
    }
    return out + "\n";
}

// The null rule is said once for all functions above the tables; here, where one differs.
std::string reference_row(const Function &function)
{
    const bool differs = function.null_rule != NullRule::Propagates;
    return concat("| `", function.signature, "` | ", function.help, differs ? " Never null." : "", " |\n");
}

} // namespace

Result<std::string> function_help(std::string_view name)
{
    const auto rows = functions_named(name);
    if (rows.empty())
        return Status(Code::NotFound,
                      concat("unknown function ", quoted(name), near_names_hint(name, function_names())));
    std::string out;
    for (const Function &row : rows) {
        if (!out.empty())
            out += '\n';
        out += concat(row.signature, '\n', wrapped(row.help));
        if (!null_sentence(row).empty())
            out += wrapped(null_sentence(row));
    }
    return out;
}

std::string function_reference()
{
    std::string out;
    std::string_view group;
    for (const Function &row : functions()) {
        if (row.group != group) {
            group = row.group;
            out += concat(out.empty() ? "" : "\n", "### ", group,
                          "\n\n| function | what it gives |\n|---|---|\n");
        }
        out += reference_row(row);
    }
    return out;
}

} // namespace orvane::expr
