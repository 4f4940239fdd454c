// What the program was asked to do.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ovdb {

struct Command;
struct Format;
struct Option;

// One step from a table to what is written.
struct Operation {
    const Option *option = nullptr;
    std::vector<std::string> arguments;
    bool reverse = false; // of a sort
    bool unique = false;
};

// A picture of a map: of `width` by `height` units of `ratio` pixels each.
struct MapSettings {
    int width = 1200;
    int height = 800;
    double ratio = 1;
    double latitude = 40; // of the centre, degrees
    double longitude = -100;
    double range = 120; // degrees of arc
    bool legend = true;
    bool dark = false;
};

struct Request {
    const Command *command = nullptr; // null: none was named
    bool help = false;
    bool version = false;
    std::vector<std::string> operands;
    std::vector<Operation> operations; // in the order given
    std::vector<std::string> fields;   // empty: all
    const Format *format = nullptr;    // null: the command's own
    std::optional<bool> header;        // none: as the format has it
    std::optional<std::int64_t> limit; // rows
    bool count = false;
    bool all = false;
    bool repair = false;
    bool dry_run = false;
    bool checked = false; // keys, when records are added
    std::string output;   // empty: standard output
    bool force = false;   // to replace a file
    MapSettings map;
    std::string schema;      // of a new database
    std::string description; // of it, too
};

} // namespace ovdb
