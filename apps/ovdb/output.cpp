#include "output.h"

#include "long_work.h"

#include <cerrno>
#include <new>
#include <unistd.h>

namespace ovdb {

namespace {

// Writes all of it. Less than all, with errno telling why, is a failure to the stream.
ssize_t write_all(void *, const char *bytes, std::size_t size)
{
    std::size_t done = 0;
    while (done < size) {
        if (is_interrupted()) {
            errno = EINTR;
            return 0;
        }
        const ssize_t written = write(STDOUT_FILENO, bytes + done, size - done);
        if (written >= 0)
            done += static_cast<std::size_t>(written);
        else if (errno != EINTR)
            return 0;
    }
    return static_cast<ssize_t>(size);
}

} // namespace

Output::Output() : stream_(nullptr, &std::fclose)
{
    cookie_io_functions_t functions{};
    functions.write = write_all;
    stream_.reset(fopencookie(nullptr, "w", functions));
    if (!stream_)
        throw std::bad_alloc();
    std::setvbuf(stream_.get(), nullptr, _IONBF, 0); // whoever writes rows does so in large pieces
}

} // namespace ovdb
