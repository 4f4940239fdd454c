#include "qt_part.h"

#include "failure.h"
#include "long_work.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

extern char **environ;

namespace ovdb {

namespace {

// Beside this program, in the build tree as where it is installed.
std::string program_path(const std::string &what)
{
    std::error_code error;
    const auto own = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::string path = (own.parent_path() / OVDB_QT_PART).lexically_normal().string();
    if (error || access(path.c_str(), X_OK) != 0)
        throw Failure(ExitCode::Failed,
                      what + ": " + path +
                          " is missing: maps and spreadsheets need it; install ovdb with Qt");
    return path;
}

// Notes come as they are to be shown; what else it says is why it failed.
std::string without_notes(const std::string &said)
{
    std::string rest;
    std::size_t from = 0;
    while (from < said.size()) {
        const std::size_t end = std::min(said.find('\n', from), said.size() - 1) + 1;
        const std::string line = said.substr(from, end - from);
        if (line.starts_with("ovdb: note: "))
            std::fputs(line.c_str(), stderr);
        else
            rest += line;
        from = end;
    }
    while (rest.ends_with('\n'))
        rest.pop_back();
    return rest;
}

// Two ends that no program started meanwhile inherits.
struct Ends {
    int ours = -1;
    int theirs = -1;
    Ends()
    {
        int both[2];
        // A socket, not a pipe: who writes to one whose reader is gone is told, and not killed.
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, both) != 0)
            throw Failure(ExitCode::Failed, std::string("cannot start a program: ") + std::strerror(errno));
        ours = both[0];
        theirs = both[1];
    }
    ~Ends() { close(theirs); }
    Ends(const Ends &) = delete;
    Ends &operator=(const Ends &) = delete;
};

} // namespace

QtPart::QtPart(const std::string &what, const std::vector<std::string> &arguments) : what_(what)
{
    const std::string path = program_path(what);
    std::vector<char *> argv{const_cast<char *>(path.c_str())};
    for (const std::string &argument : arguments)
        argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    const Ends input, output;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input.theirs, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output.theirs, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output.theirs, STDERR_FILENO);
    const int error = posix_spawn(&process_, path.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    input_ = input.ours;
    said_ = output.ours;
    if (error != 0) {
        process_ = -1;
        throw Failure(ExitCode::Failed, what + ": " + path + ": " + std::strerror(error));
    }
}

QtPart::~QtPart()
{
    kill_and_wait();
    end_input();
    close(said_);
}

void QtPart::end_input()
{
    if (input_ >= 0)
        close(std::exchange(input_, -1));
}

void QtPart::kill_and_wait()
{
    if (process_ < 0)
        return;
    kill(process_, SIGKILL);
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
}

bool QtPart::send(std::string_view bytes)
{
    while (!bytes.empty()) {
        if (is_interrupted()) {
            errno = EINTR;
            return false;
        }
        const ssize_t sent = ::send(input_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        else if (errno != EINTR)
            return false;
    }
    return true;
}

void QtPart::finish()
{
    end_input();
    std::string said;
    char buffer[4096];
    for (;;) {
        stop_if_interrupted();
        const ssize_t got = read(said_, buffer, sizeof buffer);
        if (got == 0 || (got < 0 && errno != EINTR))
            break;
        if (got > 0)
            said.append(buffer, static_cast<std::size_t>(got));
    }
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR)
        stop_if_interrupted();
    process_ = -1;
    stop_if_interrupted();
    const std::string reason = without_notes(said);
    if (!WIFEXITED(status))
        throw Failure(ExitCode::Failed, what_ + ": the program that does it was killed by signal " +
                                            std::to_string(WTERMSIG(status)));
    if (WEXITSTATUS(status) != 0)
        throw Failure(ExitCode::Failed,
                      what_ + ": " + (reason.empty() ? "it failed and does not say why" : reason));
}

} // namespace ovdb
