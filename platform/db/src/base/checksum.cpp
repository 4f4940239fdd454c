#include "base/checksum.h"

#include <array>
#include <cstring>

namespace orvane {

namespace {

constexpr std::size_t step = 8; // bytes taken at once

using ByteTable = std::array<std::uint32_t, 256>;

// tables[n] has what a byte does to the sum when n more bytes follow it.
constexpr std::array<ByteTable, step> make_tables()
{
    std::array<ByteTable, step> tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t sum = byte;
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum & 1) != 0 ? (sum >> 1) ^ 0xedb88320u : sum >> 1;
        tables[0][byte] = sum;
    }
    for (std::size_t n = 1; n < step; ++n)
        for (std::size_t byte = 0; byte < 256; ++byte)
            tables[n][byte] = (tables[n - 1][byte] >> 8) ^ tables[0][tables[n - 1][byte] & 0xff];
    return tables;
}

constexpr std::array<ByteTable, step> tables = make_tables();

} // namespace

void Checksum::add(std::string_view text)
{
    const auto *at = reinterpret_cast<const unsigned char *>(text.data());
    std::size_t left = text.size();
    std::uint32_t sum = state_;
    for (; left >= step; left -= step, at += step) {
        const std::uint32_t low = sum ^ (std::uint32_t{at[0]} | std::uint32_t{at[1]} << 8 |
                                         std::uint32_t{at[2]} << 16 | std::uint32_t{at[3]} << 24);
        sum = tables[7][low & 0xff] ^ tables[6][low >> 8 & 0xff] ^ tables[5][low >> 16 & 0xff] ^
              tables[4][low >> 24] ^ tables[3][at[4]] ^ tables[2][at[5]] ^ tables[1][at[6]] ^
              tables[0][at[7]];
    }
    for (; left > 0; --left)
        sum = (sum >> 8) ^ tables[0][(sum ^ *at++) & 0xff];
    state_ = sum;
}

} // namespace orvane
