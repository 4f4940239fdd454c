#include "operation/record_marks.h"

#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace orvane {

RecordMarks::RecordMarks(const TextForm &form) : form_(form) {}

void RecordMarks::look(const char *bytes, std::size_t count)
{
    const std::size_t words = (count + 63) / 64;
    if (blank_.size() <= words) {
        blank_.resize(words + 1);
        quoting_.resize(words + 1);
    }
    std::size_t word = 0;
    for (; (word + 1) * 64 <= count; ++word)
        look_at_word(bytes + word * 64, word);
    if (word * 64 < count) {
        char rest[64] = {};
        std::memcpy(rest, bytes + word * 64, count - word * 64);
        look_at_word(rest, word);
    }
}

void RecordMarks::look_at_word(const char *bytes, std::size_t word)
{
    std::uint64_t blank = 0;
    std::uint64_t quoting = 0;
#ifdef __SSE2__
    if (form_.has_plain_separator()) {
        const __m128i space = _mm_set1_epi8(' ');
        const __m128i tab = _mm_set1_epi8('\t');
        const __m128i separator = _mm_set1_epi8(form_.separator().front());
        const __m128i quote = _mm_set1_epi8('"');
        const __m128i line_feed = _mm_set1_epi8('\n');
        const __m128i carriage_return = _mm_set1_epi8('\r');
        for (int part = 0; part < 4; ++part) {
            const __m128i some = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes) + part);
            const auto is = [some](__m128i what) { return _mm_cmpeq_epi8(some, what); };
            const auto mask = [](__m128i found) {
                return std::uint64_t{static_cast<unsigned>(_mm_movemask_epi8(found))};
            };
            blank |= mask(_mm_or_si128(is(space), is(tab))) << (16 * part);
            quoting |= mask(_mm_or_si128(_mm_or_si128(is(separator), is(quote)),
                                         _mm_or_si128(is(line_feed), is(carriage_return))))
                       << (16 * part);
        }
        blank_[word] = blank;
        quoting_[word] = quoting;
        return;
    }
#endif
    for (unsigned at = 0; at < 64; ++at) {
        blank |= std::uint64_t{bytes[at] == ' ' || bytes[at] == '\t'} << at;
        quoting |= std::uint64_t{form_.is_quoting(bytes[at])} << at;
    }
    blank_[word] = blank;
    quoting_[word] = quoting;
}

} // namespace orvane
