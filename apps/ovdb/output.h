// Where rows go.
#pragma once

#include <cstdio>
#include <memory>

namespace ovdb {

// Standard output as a stream for many rows. The C library's own takes up a write that was interrupted again,
// so that one to a reader who waits would never end; here the interrupt key ends it.
class Output
{
public:
    Output();

    std::FILE *stream() const { return stream_.get(); }

private:
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> stream_;
};

} // namespace ovdb
