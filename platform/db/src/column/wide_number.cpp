#include "column/wide_number.h"

#include "column/number_decoding.h"

#include <algorithm>

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define ORVANE_HAS_WIDE_NUMBERS
#endif

namespace orvane {

namespace {

bool processor_can()
{
#ifdef ORVANE_HAS_WIDE_NUMBERS
    static const bool can = __builtin_cpu_supports("avx2");
    return can;
#else
    return false;
#endif
}

} // namespace

WideNumber::WideNumber(const Attribute &attribute)
{
    const FieldFormat &format = attribute.parsed_format;
    const bool decimal = format.conversion == 'f';
    decimals_ = decimal ? std::max(format.precision, 0) : 0;
    width_ = attribute.width;
    const std::int64_t point = decimals_ > 0 ? 1 : 0;
    const std::int64_t whole = width_ - decimals_ - point;
    usable_ = processor_can() && is_number(attribute.type) && attribute.type != FieldType::Boolean &&
              (decimal || format.conversion == 'd') && whole >= 1 && decimals_ <= 8 &&
              width_ <= lanes + point;
    if (!usable_)
        return;
    power_ = detail::exact_powers[decimals_];
    before_ = std::max(lanes - width_, std::int64_t{0});
    for (std::int64_t lane = 0; lane < lanes; ++lane) {
        // Counted from the end of the field, and of what is loaded.
        const std::int64_t left = lanes - lane;
        const std::int64_t from_end = left > decimals_ ? left + point : left;
        const bool is_field = from_end <= std::min(width_, lanes);
        order_[static_cast<std::size_t>(lane)] =
            is_field ? static_cast<std::int8_t>(lanes - from_end) : std::int8_t{-1};
        blanks_[static_cast<std::size_t>(lane)] = is_field ? std::uint8_t{0} : std::uint8_t{' '};
    }
}

#ifdef ORVANE_HAS_WIDE_NUMBERS

// What is the same for all fields, in registers.
struct WideNumber::Form {
    __m128i order;
    __m128i blanks;
    std::int64_t width;
    bool longer;        // by a character than what is loaded
    std::int64_t point; // -1: there is none
    unsigned none_from; // the first bit that a character without a digit can't have
};

#define ORVANE_WIDE_NUMBER __attribute__((target("avx2")))

// False where the field, which ends at `end`, is of another form.
ORVANE_WIDE_NUMBER inline bool WideNumber::read_digits(const Form &form, const char *end,
                                                       std::uint64_t &number, bool &negative)
{
    if ((form.longer && end[-form.width] != ' ') || (form.point >= 0 && end[form.point - form.width] != '.'))
        return false;
    const __m128i loaded = _mm_loadu_si128(reinterpret_cast<const __m128i *>(end - lanes));
    const __m128i text = _mm_or_si128(_mm_shuffle_epi8(loaded, form.order), form.blanks);
    const __m128i values = _mm_sub_epi8(text, _mm_set1_epi8('0'));
    const __m128i is_digit = _mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(9)), values);
    // The lowest bit is the first character's.
    const unsigned others = ~static_cast<unsigned>(_mm_movemask_epi8(is_digit)) & 0xffffu;
    if ((others & (others + 1)) != 0 || others >= form.none_from)
        return false;
    const auto bits_of = [&text](char c) ORVANE_WIDE_NUMBER {
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(text, _mm_set1_epi8(c))));
    };
    const unsigned sign = others ^ bits_of(' '); // a minus behind the blanks, or nothing
    if (sign != 0 && (sign != (others + 1) >> 1 || sign != bits_of('-')))
        return false;
    negative = sign != 0;
    const __m128i digits = _mm_and_si128(values, is_digit);
    const __m128i twos = _mm_maddubs_epi16(digits, _mm_set1_epi16(10 | 1 << 8));
    const __m128i fours = _mm_madd_epi16(twos, _mm_set1_epi32(100 | 1 << 16));
    const __m128i eights = _mm_madd_epi16(_mm_packus_epi32(fours, fours), _mm_set1_epi32(10000 | 1 << 16));
    const auto both = static_cast<std::uint64_t>(_mm_cvtsi128_si64(eights));
    number = (both & 0xffffffffu) * 100000000u + (both >> 32);
    return true;
}

inline WideNumber::Form WideNumber::form() const
{
    return {_mm_loadu_si128(reinterpret_cast<const __m128i *>(order_.data())),
            _mm_loadu_si128(reinterpret_cast<const __m128i *>(blanks_.data())),
            width_,
            width_ > lanes,
            decimals_ > 0 ? width_ - decimals_ - 1 : -1,
            1u << (lanes - decimals_ - 1)};
}

ORVANE_WIDE_NUMBER std::int64_t WideNumber::read(const char *at, std::int64_t stride, std::int64_t count,
                                                 std::int64_t *out) const
{
    if (decimals_ > 0)
        return 0;
    const Form of = form();
    std::uint64_t number = 0;
    bool negative = false;
    const char *end = at + width_;
    for (std::int64_t i = 0; i < count; ++i, end += stride) {
        if (!read_digits(of, end, number, negative))
            return i;
        out[i] = negative ? -static_cast<std::int64_t>(number) : static_cast<std::int64_t>(number);
    }
    return count;
}

ORVANE_WIDE_NUMBER std::int64_t WideNumber::read(const char *at, std::int64_t stride, std::int64_t count,
                                                 double *out) const
{
    constexpr std::uint64_t exact_limit = std::uint64_t{1} << 53;
    const Form of = form();
    const double power = power_;
    std::uint64_t number = 0;
    bool negative = false;
    const char *end = at + width_;
    for (std::int64_t i = 0; i < count; ++i, end += stride) {
        if (!read_digits(of, end, number, negative) || number > exact_limit)
            return i;
        const double magnitude = static_cast<double>(static_cast<std::int64_t>(number)) / power;
        out[i] = negative ? -magnitude : magnitude;
    }
    return count;
}

#else

std::int64_t WideNumber::read(const char *, std::int64_t, std::int64_t, std::int64_t *) const
{
    return 0;
}
std::int64_t WideNumber::read(const char *, std::int64_t, std::int64_t, double *) const
{
    return 0;
}

#endif

} // namespace orvane
