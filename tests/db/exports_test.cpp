// What the shared library and its header let out.
#include "temporary_database.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <set>
#include <sstream>
#include <string>

namespace {

std::string output_of(const std::string &command)
{
    FILE *pipe = popen(command.c_str(), "r");
    if (!pipe)
        return {};
    std::string output;
    std::array<char, 4096> buffer;
    while (const std::size_t got = fread(buffer.data(), 1, buffer.size(), pipe))
        output.append(buffer.data(), got);
    return pclose(pipe) == 0 ? output : std::string();
}

// The names that the headers declare as exported.
std::set<std::string> declared_names()
{
    std::set<std::string> names;
    std::istringstream headers(TemporaryDatabase::readFile(ORVANE_DB_HEADERS "/db.h") +
                               TemporaryDatabase::readFile(ORVANE_DB_HEADERS "/db_check.h") +
                               TemporaryDatabase::readFile(ORVANE_DB_HEADERS "/db_create.h"));
    for (std::string line; std::getline(headers, line);) {
        if (line.rfind("ORVANE_DB_EXPORT", 0) != 0)
            continue;
        const auto bracket = line.find('(');
        const auto start = line.find_last_of(" *", bracket) + 1;
        names.insert(line.substr(start, bracket - start));
    }
    return names;
}

} // namespace

TEST(SharedLibrary, exports_what_its_header_declares_and_nothing_else)
{
    std::set<std::string> exported;
    std::istringstream lines(output_of("nm --dynamic --defined-only --format=posix '" ORVANE_DB_LIBRARY "'"));
    for (std::string line; std::getline(lines, line);) {
        // Templates of the standard library are weak and may be shared between libraries.
        const std::string name = line.substr(0, line.find(' '));
        if (line.size() > name.size() + 1 && line[name.size() + 1] == 'T')
            exported.insert(name);
    }
    ASSERT_FALSE(declared_names().empty());
    EXPECT_EQ(exported, declared_names());
}

TEST(PublicHeader, includes_nothing_but_c_and_the_utility_library)
{
    std::istringstream header(TemporaryDatabase::readFile(ORVANE_DB_HEADERS "/db.h"));
    const std::set<std::string> allowed{"<stddef.h>", "<stdint.h>", "<stdio.h>", "<orvane/db_export.h>",
                                        "<orvane/util.h>"};
    int includes = 0;
    for (std::string line; std::getline(header, line);)
        if (line.rfind("#include ", 0) == 0) {
            EXPECT_TRUE(allowed.count(line.substr(9))) << line;
            ++includes;
        }
    EXPECT_EQ(includes, 5);
}
