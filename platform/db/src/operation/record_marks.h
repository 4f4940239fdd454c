// Where a record has blanks, and characters because of which a text is quoted: a bit for each of its bytes,
// so that fields are trimmed and looked at without going through them.
#pragma once

#include "operation/text_form.h"

#include <bit>
#include <cstdint>
#include <vector>

namespace orvane {

class RecordMarks
{
public:
    // Fields of at most this width are answered for.
    static constexpr std::size_t most_width = 64;

    explicit RecordMarks(const TextForm &form);

    void look(const char *bytes, std::size_t count);

    // A field's text without the blanks at its ends.
    struct Text {
        std::size_t first = 0; // in the field
        std::size_t size = 0;
        bool quoted = false; // there is something in it because of which it is
    };
    Text text(std::size_t offset, std::size_t width) const
    {
        const std::uint64_t in_field = ~std::uint64_t{0} >> (most_width - width);
        const std::uint64_t text = ~bits(blank_, offset) & in_field;
        if (text == 0)
            return {};
        const auto first = static_cast<std::size_t>(std::countr_zero(text));
        const auto last = most_width - 1 - static_cast<std::size_t>(std::countl_zero(text));
        const std::uint64_t trimmed = (~std::uint64_t{0} >> (most_width - 1 - last)) >> first << first;
        return {first, last + 1 - first, (bits(quoting_, offset) & trimmed) != 0};
    }

private:
    using Bits =
        std::vector<std::uint64_t>; // the first byte's is the lowest; with a word more than there are

    // 64 of them, from one on.
    static std::uint64_t bits(const Bits &all, std::size_t first)
    {
        const std::uint64_t *const word = &all[first / 64];
        const unsigned shift = first % 64;
        return shift == 0 ? word[0] : word[0] >> shift | word[1] << (64 - shift);
    }
    void look_at_word(const char *bytes, std::size_t word);

    const TextForm &form_;
    Bits blank_;
    Bits quoting_;
};

} // namespace orvane
