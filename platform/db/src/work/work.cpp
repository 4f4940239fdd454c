#include "work/work.h"

#include "base/concat.h"

#include <algorithm>
#include <condition_variable>
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

// ---- Parts that are taken in order ---------------------------------------------------------------

// What the threads of one for_parts share.
struct Work::PartRun {
    struct Slot {
        bool is_made = false;
        Status failure = {};
        std::exception_ptr thrown = {};
    };

    const PartBody &make;
    const std::int64_t count;
    const std::int64_t block;
    const std::int64_t parts;
    std::mutex mutex = {};
    std::condition_variable changed = {};
    // With the lock:
    std::vector<Slot> slots = std::vector<Slot>(part_slots());
    std::int64_t next = 0;  // the part that is made next
    std::int64_t taken = 0; // parts that were taken
    bool ended = false;     // no further ones are made

    std::int64_t begin_of(std::int64_t part) const { return part * block; }
    std::int64_t end_of(std::int64_t part) const { return std::min(count, (part + 1) * block); }
    unsigned slot_of(std::int64_t part) const
    {
        return static_cast<unsigned>(part % static_cast<std::int64_t>(slots.size()));
    }
    bool has_free_slot() const { return next < taken + static_cast<std::int64_t>(slots.size()); }

    // Makes the next part. `lock` is held, and let go of meanwhile.
    void make_next(std::unique_lock<std::mutex> &lock)
    {
        const std::int64_t part = next++;
        Slot made{.is_made = true};
        lock.unlock();
        try {
            made.failure = make(begin_of(part), end_of(part), slot_of(part));
        } catch (...) {
            made.thrown = std::current_exception();
        }
        lock.lock();
        ended = ended || !made.failure.ok() || made.thrown;
        slots[slot_of(part)] = std::move(made);
        changed.notify_all();
    }
    void help()
    {
        std::unique_lock lock(mutex);
        for (;;) {
            changed.wait(lock, [this] { return ended || next == parts || has_free_slot(); });
            if (ended || next == parts)
                return;
            make_next(lock);
        }
    }
    void end()
    {
        const std::lock_guard lock(mutex);
        ended = true;
        changed.notify_all();
    }

    // Waits for the part that is to be taken, or makes one; what can't be made is the failure. False: neither
    // was to be done yet.
    Result<bool> await_part()
    {
        std::unique_lock lock(mutex);
        Slot &slot = slots[slot_of(taken)];
        if (!slot.is_made && !ended && next < parts && has_free_slot()) {
            make_next(lock);
            return false;
        }
        if (!slot.is_made)
            changed.wait_for(lock, std::chrono::milliseconds(20), [&] { return slot.is_made; });
        if (slot.thrown)
            std::rethrow_exception(slot.thrown);
        if (!slot.failure.ok())
            return slot.failure;
        return slot.is_made;
    }
    void free_slot()
    {
        const std::lock_guard lock(mutex);
        slots[slot_of(taken++)] = Slot();
        changed.notify_all();
    }
};

Status Work::take_parts(PartRun &run, double to, const PartBody &take)
{
    const double from = fraction_;
    for (std::int64_t part = 0; part < run.parts;) {
        const auto made = run.await_part();
        if (!made.ok())
            return made.status();
        if (*made) {
            if (Status taken = take(run.begin_of(part), run.end_of(part), run.slot_of(part)); !taken.ok())
                return taken;
            run.free_slot();
            ++part;
            fraction_ = from + (to - from) * static_cast<double>(part) / static_cast<double>(run.parts);
        }
        if (Status told = poll(); !told.ok())
            return told;
    }
    return Status();
}

Status Work::for_parts(std::int64_t count, std::int64_t block, double share, const PartBody &make,
                       const PartBody &take)
{
    if (Status told = poll(); !told.ok())
        return told;
    if (count <= 0)
        return Status();
    PartRun run{.make = make, .count = count, .block = block, .parts = (count + block - 1) / block};
    const double to = fraction_ + (1 - fraction_) * share;
    const auto helpers = static_cast<unsigned>(std::min<std::int64_t>(run.parts, thread_limit())) - 1;
    std::vector<std::jthread> threads;
    // Before the threads are waited for, however this is left.
    struct End {
        PartRun &run;
        ~End() { run.end(); }
    } const end{run};
    threads.reserve(helpers);
    try {
        for (unsigned thread = 0; thread < helpers; ++thread)
            threads.emplace_back([&run] { run.help(); });
    } catch (const std::system_error &) {
        // No further threads are to be had: those that there are do all of it.
    }
    return take_parts(run, to, take);
}

} // namespace orvane
