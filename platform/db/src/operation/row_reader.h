// The records of rows, read a batch of rows at a time and straight from the files: for operations that want
// the text of every row, in the order of the rows, whatever the order of the records.
#pragma once

#include "operation/operand.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace orvane {

// Records of rows that were read.
class RowRecords
{
public:
    // Of the n-th row read the record of a wanted member, with the byte behind it that ends it.
    const char *record(std::size_t member, std::size_t row) const
    {
        return members_[member].bytes.data() + row * members_[member].record_size;
    }
    // Of the first rows all records of a wanted member.
    std::span<const char> first_records(std::size_t member, std::size_t rows) const
    {
        return {members_[member].bytes.data(), rows * members_[member].record_size};
    }

private:
    friend class RowReader;
    struct Member {
        std::size_t record_size = 0;
        std::vector<char> bytes;
    };
    std::vector<Member> members_;
};

class RowReader
{
public:
    // The operand has been looked at, and outlives the reader as the work does. `wanted` has for each of its
    // members whether its records are asked for.
    RowReader(const Operand &operand, std::vector<bool> wanted, Work &work);

    // Opens the files. One that changed since the operand looked at it is a failure, and a change that the
    // work met.
    Status open();

    // At most so many rows are read at a time.
    std::int64_t most() const { return most_; }
    // What the wanted records of a row take.
    std::size_t row_bytes() const { return row_bytes_; }
    // Whether rows are read by any threads at a time. Else by the one that the work belongs to, and read()
    // uses several itself.
    bool is_for_any_thread() const;
    // Reads the rows [begin, end).
    Status read(std::int64_t begin, std::int64_t end, RowRecords &into);

private:
    struct Member {
        bool wanted = false;
        std::size_t record_size = 0;            // the line feed included
        std::string shown;                      // the file, in messages
        std::unique_ptr<RandomAccessFile> file; // null: records are no file's
    };
    using Records = RowRecords::Member;

    Status read_member(std::size_t index, std::int64_t begin, std::int64_t end, Records &into);
    Status read_chosen(std::size_t index, const RowNumber *rows, std::size_t count, Records &into);
    Status read_entries(const Member &member, std::size_t from, std::size_t end, std::vector<char> &run,
                        Records &into) const;
    Status read_run(const Member &member, std::int64_t first, std::int64_t end,
                    std::vector<char> &into) const;

    const Operand &operand_;
    Work &work_;
    std::int64_t most_ = 1;
    std::size_t row_bytes_ = 0;
    std::vector<Member> members_;
    std::vector<std::uint64_t> order_;    // record number and row of what a batch reads, packed for sorting
    std::vector<std::vector<char>> runs_; // of each thread, neighbouring records
};

} // namespace orvane
