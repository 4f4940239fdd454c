// How a command ends that can't go on: with an exit code and a message. Thrown by whoever notices, printed by
// main.
#pragma once

#include <stdexcept>
#include <string>

namespace ovdb {

// What the program answers to the shell. Documented in the help and in the manual page.
enum class ExitCode : int {
    Done = 0,
    Failed = 1,        // a database, table, expression or the output could not be used
    Usage = 2,         // the arguments make no sense
    FoundErrors = 3,   // the check of a database did
    Interrupted = 130, // as shells say of a program that the interrupt key ended
};

class Failure : public std::runtime_error
{
public:
    // One or several lines, without "ovdb: " before and a line feed behind them.
    Failure(ExitCode code, const std::string &message) : std::runtime_error(message), code_(code) {}

    ExitCode code() const { return code_; }

private:
    ExitCode code_;
};

} // namespace ovdb
