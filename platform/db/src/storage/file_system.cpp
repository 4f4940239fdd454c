#include "storage/file_system.h"

#include "base/concat.h"
#include "storage/posix_file_system.h"

#include <cerrno>
#include <system_error>

namespace orvane {

namespace {

FileSystem *&slot()
{
    static PosixFileSystem system;
    static FileSystem *current = &system;
    return current;
}

} // namespace

FileSystem &current_file_system()
{
    return *slot();
}

ScopedFileSystem::ScopedFileSystem(FileSystem &replacement) : previous_(slot())
{
    slot() = &replacement;
}

ScopedFileSystem::~ScopedFileSystem()
{
    slot() = previous_;
}

Status RandomAccessFile::read_scattered(std::span<FilePiece> pieces)
{
    for (FilePiece &piece : pieces) {
        const auto got = read_at(piece.offset, piece.buffer);
        if (!got.ok())
            return got.status();
        piece.got = *got;
    }
    return Status();
}

Result<std::int64_t> RandomAccessFile::read_pieces(std::int64_t offset, std::int64_t size,
                                                   std::span<char> buffer, const TakePiece &take)
{
    return pieces_read_by([this](std::int64_t at, std::span<char> piece) { return read_at(at, piece); },
                          offset, size, buffer, take);
}

Status system_failure(int error, const std::string &shown, const char *what)
{
    const Code code = error == ENOENT || error == ENOTDIR                   ? Code::NotFound
                      : error == EACCES || error == EPERM || error == EROFS ? Code::Permission
                      : error == ENOMEM                                     ? Code::Memory
                                                                            : Code::Io;
    return Status(code, concat(shown, ": cannot ", what, ": ", std::generic_category().message(error)));
}

Result<std::string> read_whole_file(FileSystem &files, const std::string &path, const std::string &shown,
                                    std::int64_t limit)
{
    const auto state = files.state(path);
    if (!state.ok())
        return state.status();
    if (state->kind == FileKind::Missing)
        return Status(Code::NotFound, concat(shown, ": no such file"));
    if (state->kind == FileKind::Directory)
        return Status(Code::Format, concat(shown, ": is a directory where a file is expected"));
    if (state->kind == FileKind::Other)
        return Status(Code::Format, concat(shown, ": is not a regular file"));
    if (state->size > limit)
        return Status(Code::Format, concat(shown, ": has ", state->size, " bytes, more than the ", limit,
                                           " that such a file may have"));
    auto file = files.open(path);
    if (!file.ok())
        return file.status();
    std::string text(static_cast<std::size_t>(state->size), '\0');
    const auto got = (*file)->read_at(0, std::span<char>(text));
    if (!got.ok())
        return got.status();
    text.resize(*got);
    return text;
}

Status write_all(WritableFile &file, std::int64_t offset, std::span<const char> bytes)
{
    while (!bytes.empty()) {
        const auto written = file.write_at(offset, bytes);
        if (!written.ok())
            return written.status();
        offset += static_cast<std::int64_t>(*written);
        bytes = bytes.subspan(*written);
    }
    return Status();
}

} // namespace orvane
