// A file that comes to stand under its name whole or not at all.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace ovdb {

// It is written in a folder beside the path, which goes with the object. What is no regular file, such as a
// device or a pipe, is written to as it is. While the object lives the signals that ask a program to end are
// taken as the interrupt key is.
class NewFile
{
public:
    // Fails where there is a file already that shall not be replaced, and where none can be made.
    NewFile(const std::string &path, bool replace);
    ~NewFile();
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

    // Opens it to be written, for many rows (see Output).
    std::FILE *open();
    // Where it is written, for those who open it by themselves.
    const std::string &written_path() const { return written_; }

    // Closes it and puts it under the path. Fails with the reason where that can't be done.
    void put_in_place();

private:
    [[noreturn]] void fail(int error) const;
    void close();
    void put_beside();

    std::string path_;   // behind symbolic links
    std::string folder_; // empty: the path itself is written to
    std::string written_;
    bool replace_;
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> stream_;
    int descriptor_ = -1;
};

} // namespace ovdb
