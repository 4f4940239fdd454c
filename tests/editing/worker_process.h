// The program editing_worker as a child with pipes to its input and from its output.
#pragma once

#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

class WorkerProcess
{
public:
    explicit WorkerProcess(const std::vector<std::string> &arguments)
    {
        int input[2];
        int output[2];
        if (::pipe2(input, O_CLOEXEC) != 0 || ::pipe2(output, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipes");
        std::vector<char *> words{const_cast<char *>(ORVANE_EDITING_WORKER)};
        for (const std::string &argument : arguments)
            words.push_back(const_cast<char *>(argument.c_str()));
        words.push_back(nullptr);
        process_ = ::fork();
        if (process_ == 0) {
            ::dup2(input[0], 0);
            ::dup2(output[1], 1);
            ::execv(words[0], words.data());
            ::_exit(127);
        }
        ::close(input[0]);
        ::close(output[1]);
        input_ = input[1];
        output_ = output[0];
    }
    ~WorkerProcess()
    {
        if (process_ > 0)
            kill();
        end_input();
        ::close(output_);
    }
    WorkerProcess(const WorkerProcess &) = delete;
    WorkerProcess &operator=(const WorkerProcess &) = delete;

    void end_input()
    {
        if (input_ >= 0)
            ::close(input_);
        input_ = -1;
    }
    void kill()
    {
        ::kill(process_, SIGKILL);
        wait();
    }
    // Its exit code; -1 when a signal ended it.
    int wait()
    {
        int status = 0;
        if (process_ <= 0 || ::waitpid(process_, &status, 0) != process_)
            return -1;
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    // Waits for one byte, so that it is known to run, and keeps it.
    void wait_for_output()
    {
        char byte;
        if (::read(output_, &byte, 1) == 1)
            text_ += byte;
    }
    // All that it says until it ends.
    std::string output()
    {
        char buffer[65536];
        for (ssize_t got; (got = ::read(output_, buffer, sizeof buffer)) > 0;)
            text_.append(buffer, static_cast<size_t>(got));
        return text_;
    }

private:
    pid_t process_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string text_;
};
