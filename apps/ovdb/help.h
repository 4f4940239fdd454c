// The help texts, put together from the tables of commands and options.
#pragma once

#include "commands.h"

#include <string>

namespace ovdb {

std::string program_help();
std::string command_help(const Command &command);
std::string version_text();

} // namespace ovdb
