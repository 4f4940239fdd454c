// Finds double keys, and foreign keys that lead to no record, in bounded memory: by hashes of the keys, of as
// many of them at a time as there is room for. A table with more is read several times.
#pragma once

#include "check/finding.h"
#include "edit/record_key.h"
#include "table/record_lines.h"
#include "work/work.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

struct CheckLimits {
    std::size_t piece_bytes = RecordLines::usual_piece;
    std::int64_t hashes = 8 << 20; // held at a time
};

// An open table file, and what its records are.
struct CheckedFile {
    const Relation *relation = nullptr;
    RandomAccessFile *file = nullptr; // read from several threads
    std::int64_t size = 0;            // bytes that are looked at
    std::int64_t records = 0;         // that it has
    bool whole = true;                // nothing but records: they have numbers
    CheckLimits limits = {};
    std::function<void(std::int64_t bytes)> advance = [](std::int64_t) {}; // tells how much was read
};

// Does something with all records, in blocks on several threads. `take` gets the run, the block within it,
// and the thread; `done`, on the calling thread, follows when all blocks of a run are through.
using TakeBlock =
    std::function<Status(const LineRun &run, std::int64_t begin, std::int64_t end, unsigned thread)>;
using RunDone = std::function<void()>;
Status for_record_blocks(const CheckedFile &checked, std::int64_t block, Work &work, const TakeBlock &take,
                         const RunDone &begin_run, const RunDone &done);

// Records that have the key of one before them. A record whose key is null altogether has none.
Status find_double_keys(const CheckedFile &checked, const Key &key, std::string_view what, Findings &findings,
                        Work &work);

// Values of the field that `target` does not have in its own field of that name. Nulls lead nowhere.
Status find_dangling_keys(const CheckedFile &checked, const std::string &field, const CheckedFile &target,
                          Findings &findings, Work &work);

} // namespace orvane
