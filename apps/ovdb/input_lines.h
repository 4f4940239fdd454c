// A stream of text by characters and lines, which are counted.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace ovdb {

class InputLines
{
public:
    // The stream stays the caller's. A byte order mark before the text is skipped.
    explicit InputLines(std::FILE *file) : file_(file) {}

    // The next byte, EOF behind the last one. Fails where the stream can't be read, or the interrupt key was
    // pressed.
    int get();
    int peek();

    // The next line without its end, LF or CR LF; false behind the last. Throws BadLine where it is too long
    // to be one.
    bool next_line(std::string &line);

    // Of the byte that comes next, from 1 on.
    std::int64_t number() const { return number_; }

private:
    int read();
    void skip_mark();

    std::FILE *file_;
    std::int64_t number_ = 1;
    bool begun_ = false;
    std::string ahead_; // bytes that were read too early, the last one first
};

// More than any row has; what is longer is no text of rows, or has lost the end of a quote.
constexpr std::size_t longest_row = 1 << 20;

} // namespace ovdb
