// A caller's stream as something to put text into, in large pieces.
#pragma once

#include "base/status.h"

#include <cstdio>
#include <string>
#include <string_view>

namespace orvane {

class TextStream
{
public:
    // The stream stays the caller's.
    explicit TextStream(std::FILE *stream) : stream_(stream) {}
    TextStream(const TextStream &) = delete;
    TextStream &operator=(const TextStream &) = delete;

    // Where text is appended that is to be written.
    std::string &text() { return text_; }
    // Writes text that lies elsewhere behind what was appended so far.
    Status write(std::string_view text);
    // Writes what is left and makes the stream pass it on, so that a full disk shows here and not when the
    // caller closes it.
    Status finish();

private:
    Status write_text();
    Status put(std::string_view text);

    std::FILE *stream_;
    std::string text_;
};

} // namespace orvane
