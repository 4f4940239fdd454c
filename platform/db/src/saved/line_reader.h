// The lines of a text of any length, read in large pieces, with their numbers and the text's checksum.
#pragma once

#include "base/checksum.h"
#include "base/status.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

class RandomAccessFile;

// Fills a buffer, or part of it, with what comes next; answers 0 at the end.
using ReadMore = std::function<Result<std::size_t>(std::span<char>)>;

ReadMore reading_file(std::unique_ptr<RandomAccessFile> file);
// The stream stays the caller's. Its failures name it as `shown`.
ReadMore reading_stream(std::FILE *stream, std::string shown);

class LineReader
{
public:
    // `shown` names the text in messages.
    LineReader(ReadMore more, std::string shown);

    // The next line, without its line feed; it lives until the next call. Where there is none, or one without
    // its end, the failure says that `expected` was.
    Status next(std::string_view &line, std::string_view expected)
    {
        const char *begin = buffer_.data() + begin_;
        const auto *feed = static_cast<const char *>(
            __builtin_memchr(begin, '\n', end_ - begin_)); // inlined: a call per row
        if (!feed)
            return next_after_filling(line, expected);
        line = std::string_view(begin, static_cast<std::size_t>(feed - begin));
        begin_ += line.size() + 1;
        ++line_number_;
        return Status();
    }
    // Whether nothing comes any more.
    Result<bool> at_end();

    const std::string &shown() const { return shown_; }
    // Of the line read last, from 1.
    std::int64_t line_number() const { return line_number_; }
    // Of all lines read so far.
    const Checksum &checksum();
    // A failure that begins with the place: "quakes.view:17: …".
    Status wrong(std::string_view what) const { return wrong_in(line_number_, what); }

private:
    Status wrong_in(std::int64_t line, std::string_view what) const;
    Status next_after_filling(std::string_view &line, std::string_view expected);
    Status fill();

    ReadMore more_;
    std::string shown_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0; // of what was not handed out yet
    std::size_t end_ = 0;
    std::size_t summed_ = 0; // up to here the checksum is reckoned
    bool ended_ = false;
    std::int64_t line_number_ = 0;
    Checksum checksum_;
};

} // namespace orvane
