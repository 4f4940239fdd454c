// What a table file had where it is being changed in place, written down beside it meanwhile. A change that
// lies on several pages can be half done when the program is killed, or the machine; the note tells what was
// there.
#pragma once

#include "storage/file_system.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

struct UndoNote {
    FileState file; // which file it is about: device, number and birth
    std::int64_t offset = 0;
    std::string bytes; // that the file had there

    bool is_about(const FileState &other) const
    {
        return file.device == other.device && file.inode == other.inode &&
               file.birth_time == other.birth_time;
    }
};

// "dir/.quakes.origin.undo" for the file "dir/quakes.origin".
std::string undo_note_path(const std::string &real_path);

// One line that says where, with a checksum, and behind it the bytes.
std::string written(const UndoNote &note);
// Nothing for a text that is no whole note: one that its writer didn't finish, so that nothing was changed.
std::optional<UndoNote> read_undo_note(std::string_view text);
// The note at the path, if there is a whole one.
Result<std::optional<UndoNote>> find_undo_note(FileSystem &files, const std::string &path);

} // namespace orvane
