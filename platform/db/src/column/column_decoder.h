// Decodes fields of all records of a table file, in one reading of the file and on all threads.
#pragma once

#include "column/column.h"
#include "column/fixed_number.h"
#include "column/wide_number.h"
#include "schema/relation.h"
#include "storage/file_system.h"
#include "work/work.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace orvane {

// The records of an open file.
struct RecordSpan {
    RandomAccessFile &file; // read from several threads
    std::int64_t count;     // records, each with a line feed as its last byte
    std::int64_t record_size;
    const std::string &shown; // the file, in messages
};

// Reads the records [begin, end) into the buffer. Answers false when the file has become shorter; a record
// whose line feed isn't its last byte alone is a failure.
Result<bool> read_records(const RecordSpan &records, std::int64_t begin, std::int64_t end,
                          std::vector<char> &buffer);

// Reads the records [begin, end), some megabytes at most, in pieces that fit into the buffer, and gives them
// to `take`, whose failure ends it. Answers and fails as `read_records`.
using TakeRecords = std::function<Status(std::int64_t first, std::int64_t count, const char *records)>;
Result<bool> scan_records(const RecordSpan &records, std::int64_t begin, std::int64_t end,
                          std::vector<char> &buffer, const TakeRecords &take);

// The columns of the fields, in their order. A file that has become shorter is a change met by the work.
Result<std::vector<std::shared_ptr<Column>>>
decode_columns(const RecordSpan &records, std::span<const RelationField> fields, Work &work);

// Decodes records [first, first + count) that lie in memory one after the other into a column's values from
// `first` on; texts are added to the entries. Answers the number of fields that hold no value.
class FieldDecoder
{
public:
    FieldDecoder(const RelationField &field, std::int64_t record_size, TextEntries *texts)
        : field_(field), fixed_(*field.attribute), wide_(*field.attribute), record_size_(record_size),
          texts_(texts)
    {
    }

    void decode(const char *records, std::int64_t first, std::int64_t count, Column &column);

    std::int64_t unreadable() const { return unreadable_; }
    bool met_null() const { return met_null_; }

private:
    void decode_integers(const char *at, std::int64_t count, std::int64_t *out);
    void decode_reals(const char *at, std::int64_t count, double *out);
    void decode_texts(const char *at, std::int64_t count, std::uint32_t *out);
    void decode_short_texts(const char *at, std::int64_t count, std::uint32_t *out);

    // Short texts met lately, by a hash of them.
    struct RecentText {
        std::uint64_t packed = 0;
        std::uint32_t code = TextEntries::none;
    };
    static constexpr std::size_t recent_count = 4096;

    // Reads the number of the n-th record of those in memory, from `at` on.
    template <typename T>
    bool read_plain(const char *at, std::int64_t n, T &value) const;
    // Reads numbers from that of the n-th record on for as long as they are of the usual form, and answers
    // how many.
    template <typename T>
    std::int64_t read_usual(const char *at, std::int64_t n, std::int64_t count, T *out) const;

    RelationField field_;
    FixedNumber fixed_;
    WideNumber wide_;
    std::int64_t record_size_;
    TextEntries *texts_; // null for numbers
    std::vector<RecentText> recent_;
    std::int64_t unreadable_ = 0;
    bool met_null_ = false;
};

} // namespace orvane
