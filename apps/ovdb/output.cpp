#include "output.h"

#include "long_work.h"

#include <cerrno>
#include <cstdint>
#include <new>
#include <unistd.h>

namespace ovdb {

namespace {

// Writes all of it. Less than all, with errno telling why, is a failure to the stream.
ssize_t write_all(void *file, const char *bytes, std::size_t size)
{
    const auto descriptor = static_cast<int>(reinterpret_cast<std::intptr_t>(file));
    std::size_t done = 0;
    while (done < size) {
        if (is_interrupted()) {
            errno = EINTR;
            return 0;
        }
        const ssize_t written = write(descriptor, bytes + done, size - done);
        if (written >= 0)
            done += static_cast<std::size_t>(written);
        else if (errno != EINTR)
            return 0;
    }
    return static_cast<ssize_t>(size);
}

} // namespace

std::FILE *interruptible_stream(int file)
{
    cookie_io_functions_t functions{};
    functions.write = write_all;
    std::FILE *stream =
        fopencookie(reinterpret_cast<void *>(static_cast<std::intptr_t>(file)), "w", functions);
    if (!stream)
        throw std::bad_alloc();
    std::setvbuf(stream, nullptr, _IONBF, 0); // whoever writes rows does so in large pieces
    return stream;
}

Output::Output() : stream_(interruptible_stream(STDOUT_FILENO), &std::fclose) {}

} // namespace ovdb
