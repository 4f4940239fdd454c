// The distinct texts of a column, and how they are found.
#pragma once

#include "expression/column_batch.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace orvane {

// Texts without blanks at their ends, each once, by code from 0. Grows at its end only.
class TextEntries : public expr::TextDictionary
{
public:
    static constexpr std::uint32_t none = ~std::uint32_t{0};

    TextEntries();
    TextEntries(const TextEntries &) = delete;
    TextEntries &operator=(const TextEntries &) = delete;

    std::uint64_t identity() const override { return identity_; }
    std::size_t size() const override { return entries_.size(); }
    std::string_view text(std::uint32_t code) const override { return entries_[code]; }

    // The code of a text, which is added where it isn't there yet.
    std::uint32_t code_of(std::string_view trimmed);
    // The code of a text, or `none`.
    std::uint32_t find(std::string_view trimmed) const;

    // The place of each code's text among all of them in byte order. Made when it is first asked for: by one
    // thread at a time, and not while texts are added.
    const std::vector<std::uint32_t> &ranks() const;

    std::size_t bytes() const;

private:
    struct Slot {
        std::uint32_t hash;
        std::uint32_t code;
    };

    std::size_t slot_of(std::string_view trimmed, std::uint32_t hash) const;
    std::string_view keep(std::string_view text);
    void grow();

    const std::uint64_t identity_;
    std::vector<std::string_view> entries_;
    std::vector<std::unique_ptr<char[]>> blocks_; // of the entries' bytes, which never move
    char *next_ = nullptr;
    std::size_t left_ = 0;
    std::size_t block_bytes_ = 0;
    std::vector<Slot> slots_; // open addressing; their number is a power of two, and at most half are used
    mutable std::vector<std::uint32_t> ranks_;
};

} // namespace orvane
