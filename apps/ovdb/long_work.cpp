#include "long_work.h"

#include "failure.h"

#include <orvane/db.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace ovdb {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto silence = std::chrono::seconds(1);

volatile std::sig_atomic_t interrupted = 0;

struct Shown {
    std::string what;
    Clock::time_point begin;
    bool wanted = false;
    int percent = -1; // what the terminal shows; -1: nothing
};
Shown shown;

// A call that is about to wait when the interrupt comes would not learn of it, so it is told again and again.
void remind(int)
{
    alarm(1);
}
void note_interrupt(int)
{
    interrupted = 1;
    alarm(1);
}

void wipe()
{
    if (shown.percent >= 0)
        std::fputs("\r\033[K", stderr);
    shown.percent = -1;
}

int follow(double fraction, void *)
{
    const int percent = static_cast<int>(fraction * 100);
    if (shown.wanted && percent != shown.percent && Clock::now() - shown.begin > silence) {
        std::fprintf(stderr, "\r\033[Kovdb: %s: %d %%", shown.what.c_str(), percent);
        std::fflush(stderr);
        shown.percent = percent;
    }
    return interrupted;
}

} // namespace

void watch_long_work()
{
    struct sigaction action {
    };
    // Without SA_RESTART calls that wait come back instead of being begun anew.
    action.sa_handler = remind;
    sigaction(SIGALRM, &action, nullptr);
    action.sa_handler = note_interrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    dbset_progress_hook(follow, nullptr);
}

void end_on_termination()
{
    struct sigaction action {
    };
    action.sa_handler = note_interrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
}

bool is_interrupted()
{
    return interrupted != 0;
}

void stop_if_interrupted()
{
    if (interrupted)
        throw Failure(ExitCode::Interrupted, "interrupted");
}

LongWork::LongWork(std::string_view what, bool writes_output)
{
    stop_if_interrupted();
    shown = Shown{std::string(what), Clock::now(), isatty(2) == 1 && !(writes_output && isatty(1) == 1)};
}

LongWork::~LongWork()
{
    wipe();
    shown.wanted = false;
}

} // namespace ovdb
