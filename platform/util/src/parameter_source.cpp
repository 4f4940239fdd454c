#include "parameter_source.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "parameter_error.h"
#include "utf8.h"

namespace orvane::util {
namespace {

class OpenFile
{
public:
    explicit OpenFile(const char *path) : descriptor_(open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY)) {}
    ~OpenFile()
    {
        if (descriptor_ >= 0)
            close(descriptor_);
    }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;
    int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

/* The reason of a failed call and, for the likely ones, what to do about it. */
std::string reason(int code)
{
    std::string text = std::generic_category().message(code);
    switch (code) {
    case ENOENT:
        return "there is no such file; check its name and folder";
    case EACCES:
        return text + "; the file and its folders must be readable by you";
    case EISDIR:
        return "expected a parameter file, found a folder; name a file inside it";
    default:
        return text;
    }
}

} // namespace

std::string parameter_source(const std::string &path)
{
    const OpenFile file(path.c_str());
    if (file.descriptor() < 0)
        throw ParameterError(path, reason(errno));
    struct stat status = {};
    if (fstat(file.descriptor(), &status) == 0 && S_ISDIR(status.st_mode))
        throw ParameterError(path, reason(EISDIR));
    std::string text;
    char block[65536];
    for (;;) {
        const ssize_t got = read(file.descriptor(), block, sizeof block);
        if (got == 0)
            return text;
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw ParameterError(path, reason(errno));
        text.append(block, static_cast<size_t>(got));
        if (text.size() > most_parameter_bytes)
            throw ParameterError(path, "is larger than " + std::to_string(most_parameter_bytes >> 20) +
                                           " MiB, which no parameter file is; is it the right file?");
    }
}

std::string_view checked_parameter_text(std::string_view text, const std::string &name)
{
    if (text.size() > most_parameter_bytes)
        throw ParameterError(name, "is larger than " + std::to_string(most_parameter_bytes >> 20) + " MiB");
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    PfPlace place;
    for (size_t at = 0; at < text.size(); ++place.column) {
        const size_t length = utf8_length(text.substr(at));
        const auto byte = static_cast<unsigned char>(text[at]);
        char shown[8];
        std::snprintf(shown, sizeof shown, "0x%02X", byte);
        if (length == 0)
            throw ParameterError(name, place, std::string("expected UTF-8 text, found the byte ") + shown);
        const bool control = (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') || byte == 0x7F;
        if (control)
            throw ParameterError(name, place,
                                 std::string("expected text, found the control character ") + shown);
        const bool ends_line = byte == '\n' || (byte == '\r' && !text.substr(at + 1).starts_with('\n'));
        if (ends_line)
            place = {place.line + 1, 0};
        at += length;
    }
    return text;
}

} // namespace orvane::util
