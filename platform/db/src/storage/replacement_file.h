// A file that comes to stand under its name whole or not at all.
#pragma once

#include "storage/file_system.h"
#include "storage/located_path.h"

#include <memory>
#include <string>
#include <string_view>

namespace orvane {

class ReplacementFile
{
public:
    // Makes an empty file beside the path, with a name that begins with a dot. It goes with the object unless
    // it was committed.
    static Result<std::unique_ptr<ReplacementFile>> make(FileSystem &files, const LocatedPath &path);
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile &) = delete;
    ReplacementFile &operator=(const ReplacementFile &) = delete;

    const LocatedPath &path() const { return path_; }

    // Appends.
    Status write(std::string_view text);
    // Puts what was written on the disk and under the path; the users of a file that it replaces keep their
    // rights.
    Status commit();
    // Removes what was committed: of several files that belong together another one failed.
    void take_back();

private:
    ReplacementFile(FileSystem &files, LocatedPath path, std::string temporary,
                    std::unique_ptr<WritableFile> file)
        : files_(files), path_(std::move(path)), temporary_(std::move(temporary)), file_(std::move(file))
    {
    }
    // The failure with the path that the user knows in it.
    Status named(const Status &failure) const;

    FileSystem &files_;
    LocatedPath path_;
    std::string temporary_; // empty once committed
    std::unique_ptr<WritableFile> file_;
    std::int64_t size_ = 0;
};

} // namespace orvane
