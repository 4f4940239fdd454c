#include "storage/file_locks.h"

#include "base/concat.h"
#include "storage/lock_holder.h"

#include <orvane/util.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace orvane {

namespace {

// The system can wait for a lock too, but not ask a hook meanwhile.
constexpr auto shortest_pause = std::chrono::microseconds(20);
constexpr auto longest_pause = std::chrono::microseconds(4000);
constexpr auto patience = std::chrono::seconds(1);

} // namespace

Status wait_for_lock(RandomAccessFile &file, LockRange range, const std::string &shown, Work &work)
{
    const auto start = std::chrono::steady_clock::now();
    std::string waiting; // told from when it has taken long
    const char *const before = waited_for();
    const auto restore = [&](Status result) {
        waited_for() = before;
        return result;
    };
    for (auto pause = shortest_pause;; pause = std::min(2 * pause, longest_pause)) {
        const auto locked = file.try_lock(LockKind::Exclusive, range);
        if (!locked.ok())
            return restore(Status(locked.status().code(),
                                  concat(shown, ": ", locked.status().message(),
                                         "; where one program alone writes, 'locks: none' in the descriptor "
                                         "goes without")));
        if (*locked)
            return restore(Status());
        if (Status asked = work.poll(); !asked.ok())
            return restore(asked.with_line(concat(shown, ": was locked by ", lock_holder(file))));
        if (waiting.empty() && std::chrono::steady_clock::now() - start > patience) {
            waiting = concat(shown, ": is locked by ", lock_holder(file), "; waiting until it is free");
            elog_notice("%s", waiting.c_str());
            waited_for() = waiting.c_str();
        }
        std::this_thread::sleep_for(pause);
    }
}

Status wait_for_content_lock(RandomAccessFile &file, const std::string &shown, Work &work)
{
    if (Status turn = wait_for_lock(file, turn_lock, shown, work); !turn.ok())
        return turn;
    Status locked = wait_for_lock(file, content_lock, shown, work);
    let_go(file, turn_lock);
    return locked;
}

void let_go(RandomAccessFile &file, LockRange range)
{
    if (!file.unlock(range).ok())
        static_cast<void>(file.unlock(range).ok()); // at the latest it ends with the open file
}

Result<bool> try_reader_lock(RandomAccessFile &file, std::int64_t slot)
{
    const auto turn = file.try_lock(LockKind::Shared, turn_lock);
    if (!turn.ok() || !*turn)
        return turn;
    auto locked = file.try_lock(LockKind::Shared, reader_lock(slot));
    let_go(file, turn_lock);
    return locked;
}

} // namespace orvane
