#include "storage/replacement_file.h"

#include "base/concat.h"

#include <unistd.h>

namespace orvane {

namespace {

constexpr int max_names = 100; // that are tried: others may be left from programs that were killed

} // namespace

Result<std::unique_ptr<ReplacementFile>> ReplacementFile::make(FileSystem &files, const LocatedPath &path)
{
    for (int number = 0;; ++number) {
        const std::string temporary =
            path.folder().entry(concat('.', path.name(), '.', ::getpid(), '-', number)).absolute;
        auto file = files.open_to_write(temporary, Creation::New);
        if (file.ok())
            return std::unique_ptr<ReplacementFile>(
                new ReplacementFile(files, path, temporary, std::move(*file)));
        const auto there = files.state(temporary);
        if (number == max_names || !there.ok() || there->kind == FileKind::Missing)
            return Status(file.status().code(),
                          concat(path.shown, ": cannot be written: ", file.status().message()));
    }
}

ReplacementFile::~ReplacementFile()
{
    if (!temporary_.empty())
        static_cast<void>(files_.remove(temporary_).ok());
}

Status ReplacementFile::named(const Status &failure) const
{
    return failure.ok()
               ? failure
               : Status(failure.code(), concat(path_.shown, ": cannot be written: ", failure.message()));
}

Status ReplacementFile::write(std::string_view text)
{
    if (Status written = write_all(*file_, size_, std::span<const char>(text.data(), text.size()));
        !written.ok())
        return named(written);
    size_ += static_cast<std::int64_t>(text.size());
    return Status();
}

Status ReplacementFile::commit()
{
    const auto replaced = files_.state(path_.absolute);
    if (replaced.ok() && replaced->kind == FileKind::File)
        if (Status taken = file_->take_permissions(path_.absolute); !taken.ok())
            return named(taken);
    if (Status synced = file_->sync(); !synced.ok())
        return named(synced);
    if (Status renamed = files_.rename(temporary_, path_.absolute); !renamed.ok())
        return named(renamed);
    temporary_.clear();
    return named(files_.sync_folder(path_.folder().absolute));
}

void ReplacementFile::take_back()
{
    if (temporary_.empty())
        static_cast<void>(files_.remove(path_.absolute).ok());
}

} // namespace orvane
