#include "storage/undo_note.h"

#include "base/concat.h"

#include <charconv>

namespace orvane {

namespace {

constexpr std::string_view first_word = "undo1";
constexpr std::size_t max_note_bytes = 1 << 20;

// FNV-1a.
std::uint64_t checksum(std::string_view head, std::string_view bytes)
{
    std::uint64_t sum = 0xcbf29ce484222325u;
    for (const std::string_view part : {head, bytes})
        for (const char c : part)
            sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
    return sum;
}

std::string head_of(const UndoNote &note)
{
    return concat(first_word, ' ', note.file.device, ' ', note.file.inode, ' ', note.file.birth_time, ' ',
                  note.offset, ' ', note.bytes.size());
}

template <typename T>
bool read_number(std::string_view &text, T &number)
{
    if (!text.starts_with(' '))
        return false;
    const auto [stop, error] = std::from_chars(text.data() + 1, text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
    return error == std::errc();
}

} // namespace

std::string undo_note_path(const std::string &real_path)
{
    const auto slash = real_path.rfind('/');
    const std::size_t name = slash == std::string::npos ? 0 : slash + 1;
    return concat(real_path.substr(0, name), '.', real_path.substr(name), ".undo");
}

std::string written(const UndoNote &note)
{
    const std::string head = head_of(note);
    return concat(head, ' ', checksum(head, note.bytes), '\n', note.bytes);
}

std::optional<UndoNote> read_undo_note(std::string_view text)
{
    const auto line_feed = text.find('\n');
    if (line_feed == std::string_view::npos || !text.starts_with(first_word))
        return std::nullopt;
    std::string_view head = text.substr(first_word.size(), line_feed - first_word.size());
    UndoNote note;
    std::size_t length = 0;
    std::uint64_t sum = 0;
    if (!read_number(head, note.file.device) || !read_number(head, note.file.inode) ||
        !read_number(head, note.file.birth_time) || !read_number(head, note.offset) ||
        !read_number(head, length) || !read_number(head, sum) || !head.empty())
        return std::nullopt;
    note.bytes = text.substr(line_feed + 1);
    if (note.bytes.size() != length || checksum(head_of(note), note.bytes) != sum || note.offset < 0)
        return std::nullopt;
    return note;
}

Result<std::optional<UndoNote>> find_undo_note(FileSystem &files, const std::string &path)
{
    const auto file = files.open(path);
    if (!file.ok() && file.status().code() == Code::NotFound)
        return std::optional<UndoNote>();
    if (!file.ok())
        return file.status();
    std::string text(4096, '\0');
    for (std::size_t length = 0;;) {
        const auto got =
            (*file)->read_at(static_cast<std::int64_t>(length), std::span<char>(text).subspan(length));
        if (!got.ok())
            return got.status();
        length += *got;
        if (length < text.size()) {
            text.resize(length);
            return read_undo_note(text);
        }
        if (length >= max_note_bytes)
            return std::optional<UndoNote>();
        text.resize(2 * length);
    }
}

} // namespace orvane
