// One operation while it runs: how far it is, whether it was told to stop, and the threads it uses.
#pragma once

#include "base/status.h"
#include "work/progress_hook.h"
#include "work/snapshots.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>

namespace orvane {

struct RecordChange;

// Told of every change of records when it is in the file and nobody else can make one; shall not make any
// itself.
using ChangeListener = std::function<void(const RecordChange &)>;

// The number of threads that an operation uses: the processors, or $ORVANE_THREADS.
unsigned thread_limit();

class Work
{
public:
    // The hook is asked no more often than this.
    static constexpr auto hook_interval = std::chrono::milliseconds(100);

    // `call` names the operation in messages ("dbsort") and has to outlive the object.
    explicit Work(const char *call, ProgressHook hook = process_progress_hook());
    Work(const Work &) = delete;
    Work &operator=(const Work &) = delete;

    const char *call() const { return call_; }

    // Does something with the items [begin, end); `thread` is below thread_limit().
    using Body = std::function<Status(std::int64_t begin, std::int64_t end, unsigned thread)>;

    // Runs the body over blocks of [0, count), on several threads where there are several blocks, and returns
    // when all are done. Blocks begin at multiples of `block` and are taken in order, so that what they leave
    // per block, not per thread, doesn't depend on timing. The first failure, of the block that comes first
    // among those run, ends it; what a body throws is thrown here. Between blocks the progress hook is asked.
    //
    // `share` is the part of what is left of the whole operation that this is, for the hook.
    Status for_blocks(std::int64_t count, std::int64_t block, double share, const Body &body);

    // Makes the parts of [0, count) on several threads, where there are several, and takes them one after the
    // other on the calling one: what is written in order is prepared beside it. A part is made into a slot,
    // below part_slots(), that is its own until it was taken. Parts begin at multiples of `block`. The first
    // part that can't be made or taken ends it, when those before it have been taken; what is thrown is
    // thrown here. Between parts the progress hook is asked.
    using PartBody = std::function<Status(std::int64_t begin, std::int64_t end, unsigned slot)>;
    Status for_parts(std::int64_t count, std::int64_t block, double share, const PartBody &make,
                     const PartBody &take);
    // How many parts there are at a time.
    static unsigned part_slots() { return thread_limit() + 2; }

    // Asks the hook when it is time to. Of the calling thread only; a failure says "cancelled".
    Status poll();
    // Whether to stop. Of any thread: long bodies ask this and return, whatever they return.
    bool stopped() const { return stopped_.load(std::memory_order_relaxed); }

    // Has the work stop as if the hook had said so.
    void stop() { stopped_.store(true, std::memory_order_relaxed); }

    // A table changed while it was read: what was made of it is worth nothing, and the operation is begun
    // anew, a few times. Of any thread.
    void meet_change() { changed_ = true; }
    bool take_change()
    {
        const bool changed = changed_.exchange(false);
        if (changed)
            snapshots_.forget();
        return changed;
    }

    // The tables as the operation sees them. Of the calling thread only.
    Snapshots &snapshots() { return snapshots_; }

    // Who is told of changes of records; null: nobody, and nothing is put together for him. Has to outlive
    // the object.
    void set_listener(const ChangeListener *listener) { listener_ = listener; }
    const ChangeListener *listener() const { return listener_; }

    // The fraction that is done, for work that isn't made of blocks.
    void advance_to(double fraction) { fraction_ = fraction; }

private:
    struct Run;
    struct PartRun;
    void run_blocks(Run &run, unsigned thread);
    Status take_parts(PartRun &run, double to, const PartBody &take);

    const char *call_;
    ProgressHook hook_;
    std::chrono::steady_clock::time_point last_asked_;
    double fraction_ = 0;
    Snapshots snapshots_;
    const ChangeListener *listener_ = nullptr;
    std::atomic<bool> changed_ = false;
    std::atomic<bool> stopped_ = false;
};

} // namespace orvane
