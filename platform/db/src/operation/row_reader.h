// The records of rows, read a batch of rows at a time and straight from the files: for operations that want
// the text of every row, in the order of the rows, whatever the order of the records.
#pragma once

#include "operation/operand.h"

#include <memory>
#include <string>
#include <vector>

namespace orvane {

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
    // Reads the rows [begin, end).
    Status read(std::int64_t begin, std::int64_t end);
    // Of the n-th row read last the record of a wanted member, with the byte behind it that ends it.
    const char *record(std::size_t member, std::size_t row) const
    {
        return members_[member].records.data() + row * members_[member].record_size;
    }

private:
    struct Member {
        bool wanted = false;
        std::size_t record_size = 0;            // the line feed included
        std::string shown;                      // the file, in messages
        std::unique_ptr<RandomAccessFile> file; // null: records are no file's
        std::vector<char> records;
    };

    Status read_member(std::size_t index, std::int64_t begin, std::int64_t end);
    Status read_chosen(std::size_t index, const RowNumber *rows, std::size_t count);
    Status read_entries(Member &member, std::size_t from, std::size_t end, std::vector<char> &run) const;
    Status read_run(Member &member, std::int64_t first, std::int64_t end, std::vector<char> &into) const;
    void put_record(Member &member, std::string_view record, std::size_t row) const;

    const Operand &operand_;
    Work &work_;
    std::int64_t most_ = 1;
    std::vector<Member> members_;
    std::vector<std::uint64_t> order_;    // record number and row of what a batch reads, packed for sorting
    std::vector<std::vector<char>> runs_; // of each thread, neighbouring records
};

} // namespace orvane
