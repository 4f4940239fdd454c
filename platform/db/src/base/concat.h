// Puts a message together from texts and integers, without streams and format strings.
#pragma once

#include <concepts>
#include <string>
#include <string_view>

namespace orvane {

namespace detail {
inline void append_piece(std::string &out, std::string_view piece)
{
    out.append(piece);
}
inline void append_piece(std::string &out, char piece)
{
    out.push_back(piece);
}
template <std::integral T>
requires(!std::same_as<T, char> && !std::same_as<T, bool>) inline void append_piece(std::string &out, T piece)
{
    out.append(std::to_string(piece));
}
} // namespace detail

template <typename... Pieces>
std::string concat(const Pieces &...pieces)
{
    std::string out;
    (detail::append_piece(out, pieces), ...);
    return out;
}

} // namespace orvane
