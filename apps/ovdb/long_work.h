// What makes long work bearable: the interrupt key ends it, and a terminal shows how far it is.
#pragma once

#include <string_view>

namespace ovdb {

// Catches the interrupt key and follows the database library's operations from now on. A second interrupt
// kills.
void watch_long_work();

// Takes the signals by which a terminal that closes, or a shutdown, ends programs as the interrupt key, too:
// for work that would leave something half done.
void end_on_termination();

// Whether the interrupt key was pressed; fails where it was.
bool is_interrupted();
void stop_if_interrupted();

// Names what the library is asked to do, for as long as the object lives. Progress is shown once it takes
// longer than a second, on standard error if that is a terminal. `writes_output`: rows are written meanwhile,
// and the progress would stand between them if they go to the terminal too.
class LongWork
{
public:
    explicit LongWork(std::string_view what, bool writes_output = false);
    ~LongWork();
    LongWork(const LongWork &) = delete;
    LongWork &operator=(const LongWork &) = delete;
};

} // namespace ovdb
