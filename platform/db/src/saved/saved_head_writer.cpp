#include "saved/saved_head.h"

#include "base/concat.h"
#include "base/yaml_text.h"

#include <cstdio>

namespace orvane {

namespace {

constexpr std::int64_t second = 1'000'000'000;

// Seconds with all the digits that a disk keeps. Files from before 1970 have a negative time.
std::string time_text(std::int64_t nanoseconds)
{
    std::int64_t seconds = nanoseconds / second;
    std::int64_t rest = nanoseconds % second;
    const char *sign = nanoseconds < 0 ? "-" : "";
    char text[48];
    std::snprintf(text, sizeof text, "%s%lld.%09lld", sign,
                  static_cast<long long>(seconds < 0 ? -seconds : seconds),
                  static_cast<long long>(rest < 0 ? -rest : rest));
    return text;
}

template <typename List, typename TextOf>
std::string flow_list(const List &list, TextOf text_of)
{
    std::string text = "[";
    for (const auto &element : list)
        text.append(text.size() > 1 ? ", " : "").append(text_of(element));
    return text.append("]");
}

std::string quoted_list(const std::vector<std::string> &texts)
{
    return flow_list(texts, [](const std::string &text) { return yaml_quoted(text); });
}

std::string number_list(const std::vector<int> &numbers)
{
    return flow_list(numbers, [](int number) { return std::to_string(number); });
}

std::string creation_lines(std::string_view creation)
{
    std::string text = "    creation:\n";
    while (!creation.empty()) {
        const auto end = std::min(creation.find('\n'), creation.size());
        text.append("      - ").append(yaml_quoted(creation.substr(0, end))).append("\n");
        creation.remove_prefix(std::min(end + 1, creation.size()));
    }
    return text;
}

std::string part_text(const SavedHead &head, const SavedPart &part)
{
    switch (part.kind) {
    case PartKind::Table:
        return concat("  - table: ", yaml_quoted(part.name), "\n    records: ", part.count,
                      part.has_file ? concat("\n    modified: ", time_text(part.modified)) : std::string(),
                      "\n");
    case PartKind::Rows:
        return concat("  - view: ", yaml_quoted(part.name), "\n    rows: ", part.count,
                      "\n    members: ", number_list(part.members), "\n", creation_lines(part.creation));
    case PartKind::Bundles:
        break;
    }
    std::vector<std::string> keys;
    for (const int key : part.keys)
        keys.push_back(
            head.parts[static_cast<std::size_t>(part.source)].fields[static_cast<std::size_t>(key)]);
    return concat("  - groups: ", yaml_quoted(part.name), "\n    bundles: ", part.count,
                  "\n    of: ", part.source, "\n    keys: ", quoted_list(keys), "\n",
                  creation_lines(part.creation));
}

} // namespace

std::string saved_head_text(const SavedHead &head)
{
    std::string text = concat(saved_view_mark, "1\ndatabase: ", yaml_quoted(head.database),
                              "\nschema: ", yaml_quoted(head.schema),
                              "\nfields: ", quoted_list(head.view().fields), "\nparts:\n");
    for (const SavedPart &part : head.parts)
        text += part_text(head, part);
    return text.append(end_of_head).append("\n");
}

} // namespace orvane
