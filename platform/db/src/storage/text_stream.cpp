#include "storage/text_stream.h"

#include "storage/file_system.h"

#include <cerrno>

namespace orvane {

Status TextStream::put(std::string_view text)
{
    errno = 0;
    if (std::fwrite(text.data(), 1, text.size(), stream_) != text.size())
        return system_failure(errno != 0 ? errno : EIO, "output", "write");
    return Status();
}

Status TextStream::write_text()
{
    Status written = put(text_);
    text_.clear();
    return written;
}

Status TextStream::write(std::string_view text)
{
    if (Status written = write_text(); !written.ok())
        return written;
    return put(text);
}

Status TextStream::finish()
{
    if (Status written = write_text(); !written.ok())
        return written;
    errno = 0;
    if (std::fflush(stream_) != 0 || std::ferror(stream_))
        return system_failure(errno != 0 ? errno : EIO, "output", "write");
    return Status();
}

} // namespace orvane
