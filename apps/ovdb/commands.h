// The commands, one row each. Parsing and help are made from these rows; a new command is a new row.
#pragma once

#include "request.h"

#include <span>
#include <string_view>
#include <vector>

namespace ovdb {

struct Command {
    std::string_view name;
    std::string_view operands; // as in the help
    unsigned bit;              // in the rows of options
    std::size_t least;         // operands
    std::size_t most;
    std::string_view summary; // one line
    std::string_view detail;  // lines for the command's own help
    void (*run)(const Request &request);
};

std::span<const Command> commands();
const Command *find_command(std::string_view name);
std::vector<std::string_view> command_names();

// ---- What they do --------------------------------------------------------------------------------

void run_info(const Request &request);
void run_tables(const Request &request);
void run_fields(const Request &request);
void run_select(const Request &request);
void run_map(const Request &request);
void run_expr(const Request &request);
void run_create(const Request &request);
void run_add(const Request &request);
void run_set(const Request &request);
void run_mark(const Request &request);
void run_crunch(const Request &request);
void run_nextid(const Request &request);
void run_check(const Request &request);

} // namespace ovdb
