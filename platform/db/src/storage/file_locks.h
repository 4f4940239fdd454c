// Which bytes of a table file are locked, and for what. All who write take the writers' lock; a reader takes
// none for what is only appended. Bytes that change in place are read and written under the content's locks,
// which are held for one call each.
#pragma once

#include "storage/file_system.h"
#include "work/work.h"

#include <string>

namespace orvane {

// How a database treats its table files.
struct FilePolicy {
    bool lock = true;
    bool force_to_disk = false;
};

// Beyond every byte that a file can have.
constexpr std::int64_t content_locks_begin = std::int64_t{1} << 62;
// As many threads of one open file can read at a time: locks of one open file don't exclude each other, but
// the end of one ends all others on the same byte.
constexpr std::int64_t reader_slots = 64;

constexpr LockRange writers_lock{0, content_locks_begin};
constexpr LockRange content_lock{content_locks_begin, reader_slots};
// Whoever waits to change bytes holds this one meanwhile, and readers let him go first: there may be so many
// of them that their locks never all end at once.
constexpr LockRange turn_lock{content_locks_begin + reader_slots, 1};
constexpr LockRange all_locks{0, content_locks_begin + reader_slots + 1};
constexpr LockRange reader_lock(std::int64_t slot)
{
    return LockRange{content_locks_begin + slot, 1};
}

// Waits for an exclusive lock, asking the progress hook meanwhile. Whoever waits longer than a second is told
// why by a notice.
Status wait_for_lock(RandomAccessFile &file, LockRange range, const std::string &shown, Work &work);

// Waits until no reader reads and none will, for one change in place.
Status wait_for_content_lock(RandomAccessFile &file, const std::string &shown, Work &work);

// Ends a lock. What a disk fails to do is tried once more, as others would wait for as long as the file is
// open.
void let_go(RandomAccessFile &file, LockRange range);

// Tries a reader's lock.
Result<bool> try_reader_lock(RandomAccessFile &file, std::int64_t slot);

} // namespace orvane
