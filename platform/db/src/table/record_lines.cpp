#include "table/record_lines.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace orvane {

namespace {

constexpr std::size_t kept_of_line = 96; // bytes, for messages

} // namespace

RecordLines::RecordLines(RandomAccessFile &file, std::int64_t record_size, std::int64_t size,
                         std::size_t piece_bytes)
    : file_(file), record_size_(static_cast<std::size_t>(record_size)), size_(size),
      piece_bytes_(std::max(piece_bytes, record_size_))
{
}

// Moves what is not done yet to the front and reads on behind it.
Status RecordLines::fill()
{
    buffer_.erase(0, at_);
    buffer_begin_ += static_cast<std::int64_t>(at_);
    at_ = 0;
    const std::size_t kept = buffer_.size();
    const std::int64_t end = buffer_begin_ + static_cast<std::int64_t>(kept);
    const auto wanted = static_cast<std::size_t>(
        std::min<std::int64_t>(size_ - end, static_cast<std::int64_t>(piece_bytes_)));
    buffer_.resize(kept + wanted);
    const auto got = file_.read_at(end, std::span<char>(buffer_).subspan(kept));
    if (!got.ok())
        return got.status();
    if (*got < wanted)
        return Status(Code::Io, "the file was cut short while it was read");
    return Status();
}

Status RecordLines::take_bad(std::size_t length, bool ended, const TakeLine &take_line)
{
    if (open_.length == 0) {
        open_.offset = buffer_begin_ + static_cast<std::int64_t>(at_);
        open_.begin.clear();
    }
    if (open_.begin.size() < kept_of_line)
        open_.begin.append(buffer_, at_,
                           std::min(kept_of_line - open_.begin.size(), length - (ended ? 1 : 0)));
    open_.length += static_cast<std::int64_t>(length);
    at_ += length;
    const bool at_end = buffer_begin_ + static_cast<std::int64_t>(at_) == size_;
    if (!ended && !at_end)
        return Status();
    open_.number = line_++;
    open_.ended = ended;
    const BadLine line = std::exchange(open_, BadLine());
    return take_line(line);
}

Status RecordLines::take_whole_lines(const TakeRecords &take_records, const TakeLine &take_line)
{
    const bool last = buffer_begin_ + static_cast<std::int64_t>(buffer_.size()) == size_;
    while (at_ < buffer_.size()) {
        const char *const begin = buffer_.data() + at_;
        const std::size_t left = buffer_.size() - at_;
        std::size_t good = 0; // bytes
        while (open_.length == 0 && left - good >= record_size_ && begin[good + record_size_ - 1] == '\n' &&
               !std::memchr(begin + good, '\n', record_size_ - 1))
            good += record_size_;
        if (good > 0) {
            LineRun run{begin, buffer_begin_ + static_cast<std::int64_t>(at_),
                        static_cast<std::int64_t>(good / record_size_), line_};
            at_ += good;
            line_ += run.count;
            if (Status taken = take_records(run); !taken.ok())
                return taken;
            continue;
        }
        if (open_.length == 0 && left < record_size_ && !last)
            return Status(); // it may be a record once the rest is read
        const auto *const end = static_cast<const char *>(std::memchr(begin, '\n', left));
        const std::size_t length = end ? static_cast<std::size_t>(end - begin) + 1 : left;
        if (Status taken = take_bad(length, end != nullptr, take_line); !taken.ok())
            return taken;
    }
    return Status();
}

Status RecordLines::read(const TakeRecords &take_records, const TakeLine &take_line)
{
    while (buffer_begin_ + static_cast<std::int64_t>(at_) < size_) {
        if (Status filled = fill(); !filled.ok())
            return filled;
        if (Status taken = take_whole_lines(take_records, take_line); !taken.ok())
            return taken;
    }
    return Status();
}

} // namespace orvane
