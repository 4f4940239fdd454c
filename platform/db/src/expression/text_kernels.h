// Functions of text.
#pragma once

#include <string_view>

#include "expression/bound_expression.h"

namespace orvane::expr {

inline std::string_view without_trailing_blanks(std::string_view text)
{
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

// Characters are those of UTF-8; a byte that fits no character counts as one.
void text_length(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void text_upper(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void text_lower(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void text_trim(KernelContext &, std::span<const Vector>, Selection, Vector &out);
void text_substr(KernelContext &, std::span<const Vector>, Selection, Vector &out); // two or three arguments
void text_strcat(KernelContext &, std::span<const Vector>, Selection, Vector &out); // any number, all text

} // namespace orvane::expr
