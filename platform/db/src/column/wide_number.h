// Reads numbers of the form of fixed_number.h from field after field, sixteen characters at a time, where the
// processor can.
#pragma once

#include "schema/attribute.h"

#include <array>
#include <cstdint>

namespace orvane {

class WideNumber
{
public:
    explicit WideNumber(const Attribute &attribute);

    bool usable() const { return usable_; }
    // So many bytes before a field are read with it, whatever they are.
    std::int64_t bytes_before() const { return before_; }

    // Reads at most `count` fields, the first at `at` and the others `stride` bytes apart, and answers how
    // many: it stops at the first of another form. It has to be usable.
    std::int64_t read(const char *at, std::int64_t stride, std::int64_t count, std::int64_t *out) const;
    std::int64_t read(const char *at, std::int64_t stride, std::int64_t count, double *out) const;

private:
    struct Form;
    Form form() const;
    static bool read_digits(const Form &form, const char *end, std::uint64_t &number, bool &negative);

    static constexpr std::int64_t lanes = 16;

    bool usable_ = false;
    std::int64_t width_ = 0;
    std::int64_t decimals_ = 0;
    std::int64_t before_ = 0;
    double power_ = 1;                         // by which digits are more than the number
    std::array<std::int8_t, lanes> order_{};   // where the characters without the point come from
    std::array<std::uint8_t, lanes> blanks_{}; // in the place of those that the field doesn't have
};

} // namespace orvane
