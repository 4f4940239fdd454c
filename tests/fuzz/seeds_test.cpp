// The seeds of the fuzzers, among them all inputs that ever broke a promise, are tried in every run of the
// tests.
#include "fuzzers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace orvane::fuzz {

// How GTest names a parameter.
void PrintTo(const Fuzzer &fuzzer, std::ostream *out)
{
    *out << fuzzer.name;
}

namespace {

class Seeds : public testing::TestWithParam<Fuzzer>
{
};

TEST_P(Seeds, KeepEveryPromise)
{
    const std::filesystem::path folder =
        std::filesystem::path(ORVANE_SOURCE_DIR) / "tests/fuzz/seeds" / GetParam().name;
    std::vector<std::filesystem::path> seeds;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        seeds.push_back(entry.path());
    ASSERT_GT(seeds.size(), 3u) << folder;
    std::sort(seeds.begin(), seeds.end());
    for (const auto &seed : seeds) {
        SCOPED_TRACE(seed.string());
        std::ifstream file(seed, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        ASSERT_FALSE(file.bad());
        GetParam().run(bytes); // ends the process where a promise is broken
    }
}

INSTANTIATE_TEST_SUITE_P(Of, Seeds, testing::ValuesIn(all_fuzzers().begin(), all_fuzzers().end()),
                         [](const auto &made) { return std::string(made.param.name); });

} // namespace
} // namespace orvane::fuzz
