// The part of ovdb that needs Qt: a program of its own, so that ovdb itself starts fast and runs where there
// is no Qt.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace ovdb {

// The program at work. It ends with the object.
class QtPart
{
public:
    // Starts it. `what` begins messages. Fails where it is not installed.
    QtPart(const std::string &what, const std::vector<std::string> &arguments);
    ~QtPart();
    QtPart(const QtPart &) = delete;
    QtPart &operator=(const QtPart &) = delete;

    // Sends bytes to its standard input. False where it doesn't take them, with errno telling why: finish()
    // then tells what it says.
    bool send(std::string_view bytes);

    // Waits for its end. Notes what it says; fails with that where it failed, and as interrupted where the
    // interrupt key was pressed.
    void finish();

private:
    void end_input();
    void kill_and_wait();

    std::string what_;
    pid_t process_ = -1;
    int input_ = -1;
    int said_ = -1; // what it writes
};

} // namespace ovdb
