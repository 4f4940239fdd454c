// Reads a table's file line by line, whatever is in it: records in runs of many, other lines one by one.
// Where a line is of another width, the records behind it are found again at the next line feed.
#pragma once

#include "base/status.h"
#include "storage/file_system.h"

#include <functional>
#include <string>
#include <string_view>

namespace orvane {

// A line that is no record.
struct BadLine {
    std::int64_t offset = 0;
    std::int64_t length = 0; // its line feed included
    std::int64_t number = 0; // from 1
    bool ended = true;       // false: the file ends without a line feed
    std::string begin;       // its first bytes, without the line feed
};

// Records that lie one behind the other.
struct LineRun {
    const char *records = nullptr; // valid during the call
    std::int64_t offset = 0;
    std::int64_t count = 0;
    std::int64_t line = 0; // of the first, from 1
};

class RecordLines
{
public:
    static constexpr std::size_t usual_piece = 4 << 20;

    // Reads the first `size` bytes of the file; memory is for two pieces at most.
    RecordLines(RandomAccessFile &file, std::int64_t record_size, std::int64_t size,
                std::size_t piece_bytes = usual_piece);

    using TakeRecords = std::function<Status(const LineRun &run)>;
    using TakeLine = std::function<Status(const BadLine &line)>;
    // Goes through the file once, in order. A file that has become shorter is an Io failure.
    Status read(const TakeRecords &take_records, const TakeLine &take_line);

private:
    Status fill();
    Status take_whole_lines(const TakeRecords &take_records, const TakeLine &take_line);
    Status take_bad(std::size_t length, bool ended, const TakeLine &take_line);

    RandomAccessFile &file_;
    const std::size_t record_size_;
    const std::int64_t size_;
    const std::size_t piece_bytes_;
    std::string buffer_;
    std::size_t at_ = 0;            // what lies before in the buffer is done
    std::int64_t buffer_begin_ = 0; // where in the file the buffer begins
    std::int64_t line_ = 1;
    BadLine open_; // a line of which only the beginning was met, when its length is above 0
};

} // namespace orvane
