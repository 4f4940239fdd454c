#include "input_lines.h"

#include "failure.h"
#include "long_work.h"
#include "row_input.h"

#include <cerrno>
#include <cstring>

namespace ovdb {

int InputLines::read()
{
    if (!ahead_.empty()) {
        const char c = ahead_.back();
        ahead_.pop_back();
        return static_cast<unsigned char>(c);
    }
    errno = 0;
    const int c = std::getc(file_);
    if (c != EOF)
        return c;
    const std::string reason = std::strerror(errno);
    stop_if_interrupted(); // the key ends whoever writes the rows, too: this may not be all of them
    if (std::ferror(file_))
        throw Failure(ExitCode::Failed, "cannot read the rows: " + reason);
    return EOF;
}

void InputLines::skip_mark()
{
    begun_ = true;
    std::string taken;
    for (const char expected : {'\xEF', '\xBB', '\xBF'}) {
        const int c = read();
        if (c != EOF)
            taken.insert(taken.begin(), static_cast<char>(c));
        if (c != static_cast<unsigned char>(expected)) {
            ahead_ = taken;
            return;
        }
    }
}

int InputLines::get()
{
    if (!begun_)
        skip_mark();
    const int c = read();
    number_ += c == '\n' ? 1 : 0;
    return c;
}

int InputLines::peek()
{
    if (!begun_)
        skip_mark();
    const int c = read();
    if (c != EOF)
        ahead_.push_back(static_cast<char>(c));
    return c;
}

bool InputLines::next_line(std::string &line)
{
    line.clear();
    const std::int64_t begin = number_;
    int c = get();
    if (c == EOF)
        return false;
    for (; c != EOF && c != '\n'; c = get()) {
        line += static_cast<char>(c);
        if (line.size() > longest_row)
            throw BadLine(begin, "the line is longer than a row can be");
    }
    if (line.ends_with('\r'))
        line.pop_back();
    return true;
}

} // namespace ovdb
