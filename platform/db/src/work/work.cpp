#include "work/work.h"

#include "base/concat.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <limits>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace orvane {

namespace {

constexpr unsigned max_threads = 16;

unsigned wanted_threads()
{
    if (const char *setting = std::getenv("ORVANE_THREADS"))
        if (const long number = std::strtol(setting, nullptr, 10); number > 0)
            return static_cast<unsigned>(std::min<long>(number, max_threads));
    return std::clamp(std::thread::hardware_concurrency(), 1u, max_threads);
}

} // namespace

unsigned thread_limit()
{
    static const unsigned limit = wanted_threads();
    return limit;
}

ProgressHook &process_progress_hook()
{
    static ProgressHook hook;
    return hook;
}

const char *&operation_told_of()
{
    static const char *name = nullptr;
    return name;
}

const char *&waited_for()
{
    static const char *sentence = nullptr;
    return sentence;
}

Work::Work(const char *call, ProgressHook hook)
    : call_(call), hook_(hook), last_asked_(std::chrono::steady_clock::now())
{
}

Status Work::poll()
{
    if (!hook_.call && !stopped())
        return Status();
    if (!stopped()) {
        const auto now = std::chrono::steady_clock::now();
        if (now - last_asked_ < hook_interval)
            return Status();
        const char *const before = std::exchange(operation_told_of(), call_);
        if (hook_.call(std::clamp(fraction_, 0.0, 1.0), hook_.data) != 0)
            stopped_.store(true, std::memory_order_relaxed);
        operation_told_of() = before;
        // From when it answered: a hook that takes long shall not be called all the time.
        last_asked_ = std::chrono::steady_clock::now();
    }
    return stopped() ? Status(Code::Cancelled, concat(call_, ": cancelled")) : Status();
}

// What the threads of one for_blocks share.
struct Work::Run {
    const Body &body;
    std::int64_t count;
    std::int64_t block;
    double from; // fractions of the operation
    double to;
    std::atomic<std::int64_t> next = 0;
    std::atomic<std::int64_t> done = 0;
    std::atomic<bool> ended = false;
    std::mutex mutex = {};
    std::int64_t failed_block = std::numeric_limits<std::int64_t>::max();
    Status failure = {};
    std::exception_ptr thrown = {};

    void fail(std::int64_t begin, Status status, std::exception_ptr exception)
    {
        const std::lock_guard lock(mutex);
        ended = true;
        if (begin >= failed_block)
            return;
        failed_block = begin;
        failure = std::move(status);
        thrown = std::move(exception);
    }
};

void Work::run_blocks(Run &run, unsigned thread)
{
    while (!run.ended.load(std::memory_order_relaxed)) {
        const std::int64_t begin = run.next.fetch_add(run.block, std::memory_order_relaxed);
        if (begin >= run.count)
            return;
        try {
            const std::int64_t end = std::min(run.count, begin + run.block);
            if (Status done = run.body(begin, end, thread); !done.ok())
                run.fail(begin, std::move(done), nullptr);
            run.done.fetch_add(end - begin, std::memory_order_relaxed);
            if (thread == 0) {
                fraction_ = run.from + (run.to - run.from) * static_cast<double>(run.done.load()) /
                                           static_cast<double>(run.count);
                if (Status told = poll(); !told.ok())
                    run.fail(-1, std::move(told), nullptr);
            }
        } catch (...) {
            run.fail(begin, Status(), std::current_exception());
        }
    }
}

Status Work::for_blocks(std::int64_t count, std::int64_t block, double share, const Body &body)
{
    if (Status told = poll(); !told.ok())
        return told;
    if (count <= 0)
        return Status();
    Run run{.body = body,
            .count = count,
            .block = block,
            .from = fraction_,
            .to = fraction_ + (1 - fraction_) * share};
    const std::int64_t blocks = (count + block - 1) / block;
    const auto helpers = static_cast<unsigned>(std::min<std::int64_t>(blocks, thread_limit())) - 1;
    {
        std::vector<std::jthread> threads;
        threads.reserve(helpers);
        try {
            for (unsigned thread = 1; thread <= helpers; ++thread)
                threads.emplace_back([this, &run, thread] { run_blocks(run, thread); });
        } catch (const std::system_error &) {
            // No further threads are to be had: those that there are do all of it.
        }
        run_blocks(run, 0);
        // While others finish their last blocks this thread goes on asking.
        while (!run.ended.load() && run.done.load() < count) {
            std::this_thread::sleep_for(std::chrono::microseconds(20));
            if (Status told = poll(); !told.ok())
                run.fail(-1, std::move(told), nullptr);
        }
    }
    fraction_ = run.to;
    if (run.thrown)
        std::rethrow_exception(run.thrown);
    return run.failure;
}

} // namespace orvane
