#include "expression/pattern.h"

#include <re2/re2.h>

namespace orvane::expr {

namespace {

// No pattern that people write comes near it; what it bounds is the time that compiling takes.
constexpr std::size_t max_pattern_bytes = std::size_t{1} << 16;
constexpr std::int64_t max_program_bytes = std::int64_t{8} << 20;

} // namespace

Pattern::Pattern(std::unique_ptr<re2::RE2> compiled) : compiled_(std::move(compiled)) {}

Pattern::~Pattern() = default;

std::shared_ptr<const Pattern> Pattern::compile(std::string_view pattern, std::string &reason)
{
    if (pattern.size() > max_pattern_bytes) {
        reason = "the pattern has more than " + std::to_string(max_pattern_bytes) + " bytes";
        return nullptr;
    }
    re2::RE2::Options options;
    options.set_log_errors(false);
    options.set_max_mem(max_program_bytes);
    options.set_never_capture(true);
    auto compiled = std::make_unique<re2::RE2>(re2::StringPiece(pattern.data(), pattern.size()), options);
    if (!compiled->ok()) {
        reason = compiled->error();
        return nullptr;
    }
    return std::shared_ptr<const Pattern>(new Pattern(std::move(compiled)));
}

bool Pattern::found_in(std::string_view text) const
{
    return re2::RE2::PartialMatch(re2::StringPiece(text.data(), text.size()), *compiled_);
}

} // namespace orvane::expr
