#include "fuzzers.h"

namespace orvane::fuzz {

std::span<const Fuzzer> all_fuzzers()
{
    static constexpr Fuzzer fuzzers[] = {
        {"table_file", &fuzz_table_file},   {"descriptor", &fuzz_descriptor}, {"schema", &fuzz_schema},
        {"saved_view", &fuzz_saved_view},   {"expression", &fuzz_expression}, {"time_text", &fuzz_time_text},
        {"field_value", &fuzz_field_value},
    };
    return fuzzers;
}

} // namespace orvane::fuzz
