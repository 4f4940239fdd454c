#include "expression/text_kernels.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "expression/kernel_map.h"

namespace orvane::expr {

namespace {

using Text = std::string_view;

// Where the character that begins at `offset` ends. Bytes after the first belong to it when they continue it.
std::size_t character_end(Text text, std::size_t offset)
{
    const auto first = static_cast<unsigned char>(text[offset]);
    const std::size_t wanted = first < 0xc0 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : first < 0xf8 ? 4 : 1;
    std::size_t end = offset + 1;
    while (end < text.size() && end < offset + wanted &&
           (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80)
        ++end;
    return end;
}

std::int64_t characters(Text text)
{
    std::int64_t count = 0;
    for (std::size_t offset = 0; offset < text.size(); offset = character_end(text, offset))
        ++count;
    return count;
}

std::size_t offset_of_character(Text text, std::int64_t index)
{
    std::size_t offset = 0;
    for (; index > 0 && offset < text.size(); --index)
        offset = character_end(text, offset);
    return offset;
}

// The characters at the positions start, start + 1, … start + length - 1 that exist, counted from 1; from the
// end, -1 being the last, where start is negative.
Text part(Text text, std::int64_t start, std::int64_t length)
{
    const std::int64_t count = characters(text);
    if (start < 0 && __builtin_add_overflow(start, count + 1, &start))
        return {};
    std::int64_t end = 0; // one past
    if (__builtin_add_overflow(start, std::max<std::int64_t>(length, 0), &end))
        end = count + 1;
    start = std::clamp<std::int64_t>(start, 1, count + 1);
    end = std::clamp<std::int64_t>(end, start, count + 1);
    const std::size_t from = offset_of_character(text, start - 1);
    return text.substr(from, offset_of_character(text.substr(from), end - start));
}

template <typename Change>
void changed_letters(KernelContext &context, std::span<const Vector> arguments, Selection selection,
                     Vector &out, Change change)
{
    map_values<Text, Text>(arguments, selection, out, [&](Text &value, Text text) {
        char *room = text.empty() ? nullptr : context.arena.room(text.size());
        if (!room)
            return text.empty();
        std::transform(text.begin(), text.end(), room, change);
        value = {room, text.size()};
        return true;
    });
}

} // namespace

void text_length(KernelContext &, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    map_values<std::int64_t, Text>(arguments, selection, out, [](std::int64_t &value, Text text) {
        value = characters(without_trailing_blanks(text));
        return true;
    });
}

void text_upper(KernelContext &context, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    changed_letters(context, arguments, selection, out,
                    [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
}

void text_lower(KernelContext &context, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    changed_letters(context, arguments, selection, out,
                    [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
}

void text_trim(KernelContext &, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    map_values<Text, Text>(arguments, selection, out, [](Text &value, Text text) {
        value = without_trailing_blanks(text);
        value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
        return true;
    });
}

void text_substr(KernelContext &, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    using Integer = std::int64_t;
    if (arguments.size() == 2)
        map_values<Text, Text, Integer>(arguments, selection, out, [](Text &value, Text text, Integer start) {
            value = part(text, start, std::numeric_limits<Integer>::max());
            return true;
        });
    else
        map_values<Text, Text, Integer, Integer>(arguments, selection, out,
                                                 [](Text &value, Text text, Integer start, Integer length) {
                                                     value = part(text, start, length);
                                                     return true;
                                                 });
}

void text_strcat(KernelContext &context, std::span<const Vector> arguments, Selection selection, Vector &out)
{
    std::vector<Reader<Text>> pieces;
    for (const Vector &argument : arguments)
        pieces.emplace_back(argument);
    for_each(selection, [&](std::size_t position) {
        std::size_t length = 0;
        bool has = true;
        for (const auto &piece : pieces) {
            has = has && piece.presence(position) == Present;
            length += has ? piece[position].size() : 0;
        }
        char *room =
            has && length > 0 && length <= TextArena::max_text ? context.arena.room(length) : nullptr;
        has = has && (room || length == 0);
        out.presences()[position] = has ? Present : Missing;
        out.texts()[position] = room ? Text(room, length) : Text();
        for (const auto &piece : pieces) {
            if (!room)
                break;
            const Text text = piece[position];
            if (!text.empty())
                std::memcpy(room, text.data(), text.size());
            room += text.size();
        }
    });
}

} // namespace orvane::expr
