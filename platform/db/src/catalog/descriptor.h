// A database's descriptor: the file that says which schema it has and where its tables are.
#pragma once

#include "base/status.h"

#include <string>
#include <vector>

namespace orvane {

enum class Locks { Local, None };
// What an acknowledged change survives: the end of the program, or that of the machine too.
enum class Durability { Process, Disk };

struct Descriptor {
    std::string schema;
    std::vector<std::string> dbpath{"."}; // folders, relative to the descriptor's; never empty
    Locks locks = Locks::Local;
    Durability durability = Durability::Process;
    std::string idserver;
    std::string description;
    std::string detail;
};

// The descriptor in a text, or a failure with a line for every finding. `file` names the text in messages.
Result<Descriptor> read_descriptor(const std::string &text, const std::string &file);

// The text of a descriptor.
std::string descriptor_text(const Descriptor &descriptor);

// Whether the first bytes of a file are those of a descriptor rather than of a table: its first line that is
// neither blank nor a comment opens a mapping with one of a descriptor's keys.
bool looks_like_descriptor(std::string_view head);

} // namespace orvane
