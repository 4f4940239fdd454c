// The CRC-32 of a text as zip archives and gzip have it (polynomial 0xedb88320, bits reversed), so that other
// programs can reckon it.
#pragma once

#include <cstdint>
#include <string_view>

namespace orvane {

class Checksum
{
public:
    void add(std::string_view text);
    std::uint32_t value() const { return ~state_; }

private:
    std::uint32_t state_ = ~std::uint32_t{0};
};

} // namespace orvane
