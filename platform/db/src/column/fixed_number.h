// Reads numbers that stand in their fields as the format prints them: blanks, perhaps a minus, digits, and as
// many decimals as the format has. Eight bytes are read at a time; what is of another form is left to
// number_decoding.h.
#pragma once

#include "column/number_decoding.h"
#include "schema/attribute.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace orvane {

namespace detail {

// Eight times the same byte.
constexpr std::uint64_t bytes_of(std::uint64_t byte)
{
    return byte * 0x0101010101010101u;
}

} // namespace detail

class FixedNumber
{
public:
    explicit FixedNumber(const Attribute &attribute)
    {
        const FieldFormat &format = attribute.parsed_format;
        const bool decimal = format.conversion == 'f';
        decimals_ = decimal ? std::max(format.precision, 0) : 0;
        whole_ = attribute.width - (decimals_ > 0 ? decimals_ + 1 : 0);
        usable_ = std::endian::native == std::endian::little && is_number(attribute.type) &&
                  (decimal || format.conversion == 'd') && whole_ >= 1 && whole_ <= 16 && decimals_ <= 8;
        if (!usable_)
            return;
        first_bytes_ = mask_of_last(whole_ > 8 ? whole_ - 8 : whole_);
        decimal_bytes_ = mask_of_last(decimals_);
        most_whole_ = exact_limit / static_cast<std::uint64_t>(detail::exact_powers[decimals_]);
        before_ = std::max({whole_ > 8 ? 16 - whole_ : 8 - whole_, 8 - attribute.width, std::int64_t{0}});
    }

    bool usable() const { return usable_; }
    // So many bytes before the field are read with it, whatever they are.
    std::int64_t bytes_before() const { return before_; }

    // False where the field is of another form. It has to be usable.
    bool read(const char *at, std::int64_t &value) const
    {
        bool negative = false;
        std::uint64_t digits = 0;
        if (decimals_ != 0 || !read_whole(at, digits, negative))
            return false;
        value = negative ? -static_cast<std::int64_t>(digits) : static_cast<std::int64_t>(digits);
        return true;
    }
    bool read(const char *at, double &value) const
    {
        bool negative = false;
        std::uint64_t digits = 0;
        if (!read_whole(at, digits, negative))
            return false;
        if (decimals_ > 0) {
            const char *const end = at + whole_ + 1 + decimals_;
            const std::uint64_t text = (loaded(end - 8) & decimal_bytes_) | (zeros & ~decimal_bytes_);
            if (at[whole_] != '.' || !all_digits(text) || digits > most_whole_)
                return false;
            digits = digits * static_cast<std::uint64_t>(detail::exact_powers[decimals_]) + number_of(text);
        }
        if (digits > exact_limit)
            return false;
        const double magnitude = static_cast<double>(digits) / detail::exact_powers[decimals_];
        value = negative ? -magnitude : magnitude;
        return true;
    }

private:
    static constexpr std::uint64_t exact_limit = std::uint64_t{1} << 53;

    static constexpr std::uint64_t blanks = detail::bytes_of(' ');
    static constexpr std::uint64_t zeros = detail::bytes_of('0');

    // The last bytes in memory are the highest.
    static constexpr std::uint64_t mask_of_last(std::int64_t bytes)
    {
        return bytes <= 0 ? 0 : bytes >= 8 ? ~std::uint64_t{0} : ~std::uint64_t{0} << (64 - 8 * bytes);
    }
    static std::uint64_t loaded(const char *at)
    {
        std::uint64_t word;
        std::memcpy(&word, at, sizeof word);
        return word;
    }
    static bool all_digits(std::uint64_t text)
    {
        return ((text & detail::bytes_of(0xf0)) |
                (((text + detail::bytes_of(6)) & detail::bytes_of(0xf0)) >> 4)) == detail::bytes_of(0x33);
    }
    // Of eight digits.
    static std::uint64_t number_of(std::uint64_t text)
    {
        text &= detail::bytes_of(0x0f);
        text = text * 10 + (text >> 8);
        constexpr std::uint64_t pairs = 0x000000ff000000ffu;
        return ((text & pairs) * (100 + (std::uint64_t{1000000} << 32)) +
                ((text >> 16) & pairs) * (1 + (std::uint64_t{10000} << 32))) >>
               32;
    }

    // Eight bytes that begin with blanks, the last of which may be a minus, and end with digits. Blanks
    // become zeros. Blanks and the minus are those without the bit by which digits differ from them.
    static bool take_blanks(std::uint64_t &text, std::uint64_t &blank, bool &negative)
    {
        blank = ((~text >> 4) & detail::bytes_of(1)) * 0xff;
        const std::uint64_t other = (text ^ blanks) & blank;
        if ((blank & (blank + 1)) != 0)
            return false;
        if (other != 0) {
            constexpr std::uint64_t minus = '-' ^ ' ';
            if (other != minus << (56 - std::countl_zero(blank)))
                return false;
            negative = true;
        }
        text = (text & ~blank) | (zeros & blank);
        return all_digits(text);
    }

    // What stands before the point, or all.
    bool read_whole(const char *at, std::uint64_t &digits, bool &negative) const
    {
        const char *const end = at + whole_;
        std::uint64_t last = loaded(end - 8);
        std::uint64_t blank;
        if (whole_ <= 8) {
            last = (last & first_bytes_) | (blanks & ~first_bytes_);
            if (!take_blanks(last, blank, negative) || blank >> 63 != 0)
                return false;
            digits = number_of(last);
            return true;
        }
        std::uint64_t first = (loaded(end - 16) & first_bytes_) | (blanks & ~first_bytes_);
        if (!take_blanks(last, blank, negative) || blank >> 63 != 0)
            return false;
        digits = number_of(last);
        if (blank != 0)
            return first == blanks;
        if (!take_blanks(first, blank, negative))
            return false;
        digits += 100000000 * number_of(first);
        return true;
    }

    bool usable_ = false;
    std::int64_t whole_ = 0; // bytes before the point
    std::int64_t decimals_ = 0;
    std::int64_t before_ = 0;
    std::uint64_t first_bytes_ = 0; // those of the first word that are the field's
    std::uint64_t decimal_bytes_ = 0;
    std::uint64_t most_whole_ = 0; // more would not be exact with the decimals
};

} // namespace orvane
