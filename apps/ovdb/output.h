// Where rows go.
#pragma once

#include <cstdio>
#include <memory>

namespace ovdb {

// A stream for many rows that go to a file. The C library's own takes up a write that was interrupted again,
// so that one to a reader who waits would never end; here the interrupt key ends it. Closing the stream
// leaves the file open. Never null.
std::FILE *interruptible_stream(int file);

// Such a stream to standard output.
class Output
{
public:
    Output();

    std::FILE *stream() const { return stream_.get(); }

private:
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> stream_;
};

} // namespace ovdb
