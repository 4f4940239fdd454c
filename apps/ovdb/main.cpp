// ovdb: reads and changes flat-file databases from the command line.
#include "command_line.h"
#include "failure.h"
#include "help.h"
#include "library.h"
#include "long_work.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <new>
#include <unistd.h>

namespace {

using namespace ovdb;

// A file that is opened later shall not become standard output because that was closed: what is written there
// would go into it.
void occupy_standard_streams()
{
    for (int stream = 0; stream <= 2; ++stream)
        if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", stream == 0 ? O_WRONLY : O_RDONLY) < 0)
            _exit(static_cast<int>(ExitCode::Failed));
}

void run(const Request &request)
{
    if (request.version)
        std::fputs(version_text().c_str(), stdout);
    else if (request.help && request.command && request.command->run == run_expr)
        run_expr(request); // its help is that of the functions
    else if (request.help)
        std::fputs((request.command ? command_help(*request.command) : program_help()).c_str(), stdout);
    else
        request.command->run(request);
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
        const std::string reason = errno != 0 ? std::string(": ") + std::strerror(errno) : std::string();
        stop_if_interrupted();
        throw Failure(ExitCode::Failed, "cannot write standard output" + reason);
    }
}

int report(ExitCode code, const char *message)
{
    std::fprintf(stderr, "ovdb: %s\n", message);
    return static_cast<int>(code);
}

} // namespace

int main(int argc, char **argv)
{
    occupy_standard_streams();
    // A reader that goes away ends the program as quietly as it ends any other, also where whoever started it
    // ignores the signal.
    std::signal(SIGPIPE, SIG_DFL);
    watch_long_work();
    pass_on_notices();
    try {
        run(parse_command_line({argv + 1, argv + argc}));
        return static_cast<int>(ExitCode::Done);
    } catch (const Failure &failure) {
        return report(failure.code(), failure.what());
    } catch (const std::bad_alloc &) {
        return report(ExitCode::Failed, "out of memory");
    } catch (const std::exception &error) {
        return report(ExitCode::Failed, error.what());
    }
}
