#include "saved/line_reader.h"

#include "base/concat.h"
#include "storage/file_system.h"

#include <algorithm>
#include <cerrno>

namespace orvane {

namespace {

constexpr std::size_t piece_bytes = 1 << 20;
constexpr std::size_t longest_line = 16 << 20;

} // namespace

ReadMore reading_file(std::unique_ptr<RandomAccessFile> file)
{
    return [file = std::shared_ptr<RandomAccessFile>(std::move(file)),
            offset = std::int64_t{0}](std::span<char> buffer) mutable -> Result<std::size_t> {
        auto got = file->read_at(offset, buffer);
        if (got.ok())
            offset += static_cast<std::int64_t>(*got);
        return got;
    };
}

ReadMore reading_stream(std::FILE *stream, std::string shown)
{
    return [stream, shown = std::move(shown)](std::span<char> buffer) -> Result<std::size_t> {
        errno = 0;
        const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), stream);
        if (got == 0 && std::ferror(stream))
            return system_failure(errno != 0 ? errno : EIO, shown, "read");
        return got;
    };
}

LineReader::LineReader(ReadMore more, std::string shown)
    : more_(std::move(more)), shown_(std::move(shown)), buffer_(piece_bytes)
{
}

Status LineReader::wrong_in(std::int64_t line, std::string_view what) const
{
    return Status(Code::Format, concat(shown_, ":", line, ": ", what));
}

// Moves what is left to the beginning of the buffer and reads more behind it.
Status LineReader::fill()
{
    checksum_.add({buffer_.data() + summed_, begin_ - summed_});
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
    end_ -= begin_;
    begin_ = summed_ = 0;
    if (end_ == buffer_.size()) {
        if (buffer_.size() >= longest_line)
            return wrong_in(line_number_ + 1, concat("the line has more than ", longest_line, " bytes"));
        buffer_.resize(2 * buffer_.size());
    }
    const auto got = more_(std::span<char>(buffer_).subspan(end_));
    if (!got.ok())
        return got.status();
    end_ += *got;
    ended_ = *got == 0;
    return Status();
}

Status LineReader::next_after_filling(std::string_view &line, std::string_view expected)
{
    for (;;) {
        if (ended_)
            return wrong_in(line_number_ + 1, concat(begin_ == end_ ? "the text ends" : "the line has no end",
                                                     " where ", expected, " was expected"));
        const std::size_t looked_at = end_ - begin_;
        if (Status filled = fill(); !filled.ok())
            return filled;
        if (std::find(buffer_.begin() + static_cast<std::ptrdiff_t>(looked_at),
                      buffer_.begin() + static_cast<std::ptrdiff_t>(end_),
                      '\n') != buffer_.begin() + static_cast<std::ptrdiff_t>(end_))
            return next(line, expected);
    }
}

Result<bool> LineReader::at_end()
{
    while (begin_ == end_ && !ended_)
        if (Status filled = fill(); !filled.ok())
            return filled;
    return begin_ == end_;
}

const Checksum &LineReader::checksum()
{
    checksum_.add({buffer_.data() + summed_, begin_ - summed_});
    summed_ = begin_;
    return checksum_;
}

} // namespace orvane
