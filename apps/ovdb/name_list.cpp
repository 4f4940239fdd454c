#include "name_list.h"

#include "failure.h"

#include <algorithm>

namespace ovdb {

std::vector<std::string> name_list(std::string_view list, std::string_view option)
{
    std::vector<std::string> names;
    for (std::size_t begin = 0; begin <= list.size();) {
        const std::size_t end = std::min(list.find(',', begin), list.size());
        std::string_view name = list.substr(begin, end - begin);
        const auto first = name.find_first_not_of(" \t");
        if (first == std::string_view::npos)
            throw Failure(ExitCode::Usage,
                          std::string(option) + " '" + std::string(list) +
                              "': a name is missing; give names of fields with a comma between two of them");
        name = name.substr(first, name.find_last_not_of(" \t") - first + 1);
        names.emplace_back(name);
        begin = end + 1;
    }
    return names;
}

} // namespace ovdb
