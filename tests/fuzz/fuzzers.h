// The fuzzers. Each takes any bytes and checks promises of the library on them; a broken one ends the
// process.
#pragma once

#include <span>
#include <string_view>

namespace orvane::fuzz {

void fuzz_table_file(std::string_view input);
void fuzz_descriptor(std::string_view input);
void fuzz_schema(std::string_view input);
void fuzz_saved_view(std::string_view input);
void fuzz_expression(std::string_view input);
void fuzz_time_text(std::string_view input);
void fuzz_field_value(std::string_view input);

struct Fuzzer {
    const char *name; // also of its folder of seeds
    void (*run)(std::string_view input);
};

std::span<const Fuzzer> all_fuzzers();

} // namespace orvane::fuzz
