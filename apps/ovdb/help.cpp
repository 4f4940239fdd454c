#include "help.h"

#include "options.h"

#include <algorithm>

namespace ovdb {

namespace {

constexpr std::size_t left_width = 26;

const char exit_codes[] = "Exit status: 0 when all went well; 1 when a database, table, expression or value\n"
                          "can't be used or the output can't be written; 2 when the arguments are wrong;\n"
                          "3 when a check found errors; 130 when it was interrupted. A reader that goes\n"
                          "away ends it quietly.\n";

std::string entry(std::string left, std::string_view right)
{
    left.insert(0, "  ");
    left.resize(std::max(left.size() + 2, left_width), ' ');
    return left.append(right).append("\n");
}

std::string option_entry(const Option &option)
{
    std::string left;
    if (!option.short_name.empty())
        left.append(option.short_name).append(", ");
    left.append(option.name);
    for (const std::string_view argument : option.arguments)
        left.append(" ").append(argument);
    return entry(left, option.help);
}

std::string option_entries(unsigned commands)
{
    std::string text;
    for (const Option &option : options())
        if (commands == for_all ? option.commands == for_all : (option.commands & commands) != 0)
            text += option_entry(option);
    return text;
}

} // namespace

std::string program_help()
{
    std::string text = "Usage: ovdb COMMAND [arguments]\n"
                       "Reads and changes flat-file scientific databases.\n"
                       "\n"
                       "Commands:\n";
    for (const Command &command : commands())
        text += entry(std::string(command.name) + " " + std::string(command.operands), command.summary);
    text += "\n"
            "Options:\n";
    text += option_entries(for_all);
    text += "\n"
            "'ovdb COMMAND --help' tells more. DB is the path of a descriptor, or, where there\n"
            "is none, what the names of the table files begin with; DB.TABLE is a table of it.\n"
            "$ORVANE_SCHEMA_PATH has folders where schemas are looked for first,\n"
            "$ORVANE_SCHEMA the schema of databases without a descriptor.\n"
            "\n";
    return text + exit_codes;
}

std::string command_help(const Command &command)
{
    std::string text =
        "Usage: ovdb " + std::string(command.name) + " [options] " + std::string(command.operands) + "\n";
    std::string summary(command.summary);
    summary[0] = static_cast<char>(summary[0] - 'a' + 'A');
    text.append(summary).append(".\n\n").append(command.detail);
    text.append("\nOptions:\n").append(option_entries(command.bit)).append("\n");
    return text + exit_codes;
}

std::string version_text()
{
    return "ovdb " OVDB_VERSION "\n";
}

} // namespace ovdb
