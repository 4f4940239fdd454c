// A regular expression, searched for in time that grows with the text alone, whatever the pattern.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace re2 {
class RE2;
}

namespace orvane::expr {

// Immutable; may be searched by several threads.
class Pattern
{
public:
    // Null when the pattern is not one, or needs too much memory; then *reason says why.
    static std::shared_ptr<const Pattern> compile(std::string_view pattern, std::string &reason);

    ~Pattern();
    Pattern(const Pattern &) = delete;
    Pattern &operator=(const Pattern &) = delete;

    // Whether it matches anywhere in the text. Bytes that are not UTF-8 match no character.
    bool found_in(std::string_view text) const;

private:
    explicit Pattern(std::unique_ptr<re2::RE2> compiled);

    std::unique_ptr<re2::RE2> compiled_;
};

} // namespace orvane::expr
