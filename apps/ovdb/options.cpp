#include "options.h"

#include "derivations.h"
#include "formats.h"
#include "name_list.h"
#include "near_name.h"

#include <charconv>
#include <cmath>
#include <optional>
#include <utility>

namespace ovdb {

namespace {

using Arguments = std::vector<std::string>;

void set_fields(Request &request, const Arguments &arguments)
{
    request.fields = name_list(arguments[0], "--fields");
}

[[noreturn]] void fail_without_format(const std::string &given, const std::vector<std::string_view> &names)
{
    std::string message = "--format " + given + ": there is no such format; there are";
    for (const std::string_view name : names)
        message.append(" ").append(name);
    throw Failure(ExitCode::Usage, message);
}

void set_stream_format(Request &request, const Arguments &arguments)
{
    request.format = find_format(arguments[0]);
    if (!request.format || !request.format->is_stream())
        fail_without_format(arguments[0], stream_format_names());
}

void set_format(Request &request, const Arguments &arguments)
{
    request.format = find_format(arguments[0]);
    if (!request.format)
        fail_without_format(arguments[0], format_names());
}

void set_output(Request &request, const Arguments &arguments)
{
    if (arguments[0].empty())
        throw Failure(ExitCode::Usage, "--output: the name of the file is empty");
    request.output = arguments[0];
}
void set_force(Request &request, const Arguments &)
{
    request.force = true;
}

// ---- Maps ----------------------------------------------------------------------------------------

// Numbers with a separator between them, all of the text; none where it is anything else.
std::optional<std::pair<double, double>> two_numbers(const std::string &text, char separator)
{
    double first = 0, second = 0;
    const char *const end = text.data() + text.size();
    const auto before = std::from_chars(text.data(), end, first);
    if (before.ec != std::errc() || before.ptr == end || *before.ptr != separator)
        return std::nullopt;
    const auto behind = std::from_chars(before.ptr + 1, end, second);
    return behind.ec == std::errc() && behind.ptr == end ? std::optional(std::pair(first, second))
                                                         : std::nullopt;
}

std::optional<double> one_number(const std::string &text)
{
    double value = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && stop == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

void set_size(Request &request, const Arguments &arguments)
{
    const auto size = two_numbers(arguments[0], 'x');
    const auto is_length = [](double value) {
        return value >= 50 && value <= 20000 && value == std::floor(value);
    };
    if (!size || !is_length(size->first) || !is_length(size->second))
        throw Failure(ExitCode::Usage, "--size " + arguments[0] +
                                           ": WIDTHxHEIGHT is expected, 50 to 20000 each, such as 1200x800");
    request.map.width = static_cast<int>(size->first);
    request.map.height = static_cast<int>(size->second);
}

void set_ratio(Request &request, const Arguments &arguments)
{
    const auto ratio = one_number(arguments[0]);
    if (!ratio || !(*ratio >= 0.5 && *ratio <= 8))
        throw Failure(ExitCode::Usage, "--ratio " + arguments[0] + ": a number from 0.5 to 8 is expected");
    request.map.ratio = *ratio;
}

void set_centre(Request &request, const Arguments &arguments)
{
    const auto place = two_numbers(arguments[0], ',');
    if (!place || !(place->first >= -90 && place->first <= 90) ||
        !(place->second >= -180 && place->second <= 360))
        throw Failure(ExitCode::Usage, "--centre " + arguments[0] +
                                           ": LATITUDE,LONGITUDE is expected in degrees, such as 40,-100");
    request.map.latitude = place->first;
    request.map.longitude = place->second;
}

void set_range(Request &request, const Arguments &arguments)
{
    const auto range = one_number(arguments[0]);
    if (!range || !(*range > 0 && *range <= 180))
        throw Failure(ExitCode::Usage,
                      "--range " + arguments[0] + ": degrees of arc are expected, above 0 and up to 180");
    request.map.range = *range;
}

void set_no_legend(Request &request, const Arguments &)
{
    request.map.legend = false;
}
void set_dark(Request &request, const Arguments &)
{
    request.map.dark = true;
}

void set_limit(Request &request, const Arguments &arguments)
{
    const std::string &text = arguments[0];
    std::int64_t limit = -1;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), limit);
    if (error != std::errc() || stop != text.data() + text.size() || limit < 0)
        throw Failure(ExitCode::Usage, "--limit " + text + ": a number of rows is expected, from 0 on");
    request.limit = limit;
}

Operation &last_sort(Request &request, const char *option)
{
    if (request.operations.empty() || request.operations.back().option->name != "--sort")
        throw Failure(ExitCode::Usage, std::string(option) + " belongs to a sort; put it behind --sort F,F");
    return request.operations.back();
}

void set_reverse(Request &request, const Arguments &)
{
    last_sort(request, "--reverse").reverse = true;
}

void set_unique(Request &request, const Arguments &)
{
    last_sort(request, "--unique").unique = true;
}

void set_header(Request &request, const Arguments &)
{
    request.header = true;
}
void set_no_header(Request &request, const Arguments &)
{
    request.header = false;
}
void set_count(Request &request, const Arguments &)
{
    request.count = true;
}
void set_all(Request &request, const Arguments &)
{
    request.all = true;
}
void set_help(Request &request, const Arguments &)
{
    request.help = true;
}
void set_version(Request &request, const Arguments &)
{
    request.version = true;
}

void set_checked(Request &request, const Arguments &)
{
    request.checked = true;
}

void set_repair(Request &request, const Arguments &)
{
    request.repair = true;
}
void set_dry_run(Request &request, const Arguments &)
{
    request.dry_run = true;
}

void set_schema(Request &request, const Arguments &arguments)
{
    request.schema = arguments[0];
}
void set_description(Request &request, const Arguments &arguments)
{
    request.description = arguments[0];
}

constexpr unsigned for_rows = for_tables | for_fields | for_select;

constexpr std::string_view see_fields = "'ovdb fields DB.TABLE' lists the fields of a table";
constexpr std::string_view see_terms =
    "'ovdb fields DB.TABLE' lists the fields of a table, 'ovdb expr' the functions";
constexpr std::string_view see_info =
    "'ovdb info DB.TABLE' lists what a table can be joined to; --theta-join joins by any expression";
constexpr std::string_view see_members = "a table that was joined before can be named";
constexpr std::string_view see_group = "put it behind --group F,F";

// clang-format off
const Option table[] = {
    {"--subset", "", {"E"}, for_select, "keep the rows for which the expression E is true", nullptr, subset, see_terms},
    {"--sort", "", {"F,F"}, for_select, "sort by fields, the first of which weighs most", nullptr, sort, see_fields},
    {"--reverse", "", {}, for_select, "the sort before it: from high to low", set_reverse},
    {"--unique", "", {}, for_select, "the sort before it: of equal rows only the first", set_unique},
    {"--join", "", {"T"}, for_select, "each row beside its matches in table T", nullptr, join, see_info},
    {"--outer-join", "", {"T"}, for_select, "the same; rows without a match stay, beside nulls", nullptr, outer_join, see_info},
    {"--left-join", "", {"T"}, for_select, "--join with the sides swapped: T comes first", nullptr, left_join, see_info},
    {"--no-join", "", {"T"}, for_select, "keep the rows without a match in table T", nullptr, no_join, see_info},
    {"--theta-join", "", {"T", "E"}, for_select, "pairs with rows of table T for which E is true", nullptr, theta_join, see_terms},
    {"--group", "", {"F,F"}, for_select, "bundles of rows that are equal in the fields", nullptr, group, see_fields},
    {"--ungroup", "", {}, for_select, "the rows of the bundles", nullptr, ungroup, see_group},
    {"--sever", "", {"T"}, for_select, "drop the fields of table T, then equal rows", nullptr, sever, see_members},
    {"--separate", "", {"T"}, for_select, "the distinct records of table T alone", nullptr, separate, see_members},
    {"--fields", "", {"F,F"}, for_select, "write these fields, in this order, not all", set_fields},
    {"--format", "", {"FORMAT"}, for_tables | for_fields, "text (the default), csv, tsv or json", set_stream_format},
    {"--format", "", {"FORMAT"}, for_select, "text (the default), csv, tsv, json; xlsx, view, database", set_format},
    {"--output", "-o", {"FILE"}, for_select, "write to a new file, in the format of its extension", set_output},
    {"--force", "", {}, for_select | for_map, "replace a file that is there", set_force},
    {"--header", "", {}, for_rows, "begin with a line of names, whatever the format", set_header},
    {"--no-header", "", {}, for_rows, "leave the line of names out", set_no_header},
    {"--limit", "", {"N"}, for_select, "write the first N rows at most", set_limit},
    {"--count", "", {}, for_select, "write the number of rows instead of the rows", set_count},
    {"--fields", "", {"F,F"}, for_add, "the lines have these fields, whatever a line of names says", set_fields},
    {"--format", "", {"FORMAT"}, for_add, "of the lines: text (the default), csv, tsv or json", set_stream_format},
    {"--header", "", {}, for_add, "a line of names comes first (csv, tsv: usual)", set_header},
    {"--no-header", "", {}, for_add, "no line of names comes first (text: usual)", set_no_header},
    {"--checked", "", {}, for_add, "leave out what has the primary key of a record", set_checked},
    {"--where", "", {"E"}, for_set | for_mark, "the records for which the expression E is true", nullptr, subset, see_terms},
    {"--output", "-o", {"FILE"}, for_map, "the picture, a new file FILE.png", set_output},
    {"--size", "", {"WxH"}, for_map, "its width and height, 1200x800 unless given", set_size},
    {"--ratio", "", {"R"}, for_map, "pixels for each of these: 2 is twice as fine", set_ratio},
    {"--centre", "", {"LAT,LON"}, for_map, "the middle of the map, 40,-100 unless given", set_centre},
    {"--range", "", {"DEGREES"}, for_map, "its radius, 120 unless given; 180 is the world", set_range},
    {"--no-legend", "", {}, for_map, "without a legend", set_no_legend},
    {"--dark", "", {}, for_map, "light on dark", set_dark},
    {"--schema", "", {"NAME"}, for_create, "the schema of the database: its name, or a file FILE.yaml", set_schema},
    {"--description", "", {"TEXT"}, for_create, "what it is, one line", set_description},
    {"--all", "", {}, for_tables, "tables without a file, too", set_all},
    {"--repair", "", {}, for_check, "repair what can be repaired without losing anything", set_repair},
    {"--dry-run", "", {}, for_check, "tell what --repair would do, and do nothing", set_dry_run},
    {"--limit", "", {"N"}, for_check, "tell N findings of a kind in a field of a table (10)", set_limit},
    {"--all", "", {}, for_check, "tell all findings", set_all},
    {"--format", "", {"FORMAT"}, for_check, "text (the default), csv, tsv or json", set_format},
    {"--no-header", "", {}, for_check, "leave the line of names out (csv, tsv)", set_no_header},
    {"--help", "-h", {}, for_all, "show help and exit", set_help},
    {"--version", "-v", {}, for_all, "show the version and exit", set_version},
};
// clang-format on

} // namespace

std::span<const Option> options()
{
    return table;
}

const Option *find_option(std::string_view name, unsigned commands)
{
    for (const Option &option : table)
        if ((option.commands & commands) != 0 && (option.name == name || option.short_name == name))
            return &option;
    return nullptr;
}

} // namespace ovdb
