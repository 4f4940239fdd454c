#include "column/text_entries.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <numeric>

namespace orvane {

namespace {

constexpr std::size_t block_size = std::size_t{1} << 16;

std::uint64_t new_identity()
{
    static std::atomic<std::uint64_t> last = 0;
    return ++last;
}

std::uint64_t mixed(std::uint64_t a, std::uint64_t b)
{
    const std::uint64_t product = (a ^ 0x9e3779b97f4a7c15u) * ((b ^ 0xc2b2ae3d27d4eb4fu) | 1);
    return product ^ (product >> 32);
}

std::uint32_t hash_of(std::string_view text)
{
    std::uint64_t hash = text.size();
    const char *at = text.data();
    std::size_t left = text.size();
    for (; left >= 8; at += 8, left -= 8) {
        std::uint64_t word;
        std::memcpy(&word, at, 8);
        hash = mixed(hash, word);
    }
    if (left > 0) {
        std::uint64_t word = 0;
        std::memcpy(&word, at, left);
        hash = mixed(hash, word);
    }
    hash = mixed(hash, text.size());
    return static_cast<std::uint32_t>(hash >> 32);
}

} // namespace

TextEntries::TextEntries() : identity_(new_identity()), slots_(64, Slot{0, none}) {}

std::size_t TextEntries::slot_of(std::string_view trimmed, std::uint32_t hash) const
{
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
        const Slot &slot = slots_[at];
        if (slot.code == none || (slot.hash == hash && entries_[slot.code] == trimmed))
            return at;
    }
}

std::uint32_t TextEntries::find(std::string_view trimmed) const
{
    return slots_[slot_of(trimmed, hash_of(trimmed))].code;
}

std::uint32_t TextEntries::code_of(std::string_view trimmed)
{
    const std::uint32_t hash = hash_of(trimmed);
    std::size_t at = slot_of(trimmed, hash);
    if (slots_[at].code != none)
        return slots_[at].code;
    if (entries_.size() * 2 >= slots_.size()) {
        grow();
        at = slot_of(trimmed, hash);
    }
    const auto code = static_cast<std::uint32_t>(entries_.size());
    entries_.push_back(keep(trimmed));
    slots_[at] = Slot{hash, code};
    ranks_.clear();
    return code;
}

std::string_view TextEntries::keep(std::string_view text)
{
    if (text.size() > left_) {
        const std::size_t size = std::max(block_size, text.size());
        blocks_.push_back(std::make_unique_for_overwrite<char[]>(size));
        block_bytes_ += size;
        next_ = blocks_.back().get();
        left_ = size;
    }
    if (!text.empty())
        std::memcpy(next_, text.data(), text.size());
    const std::string_view kept(next_, text.size());
    next_ += text.size();
    left_ -= text.size();
    return kept;
}

void TextEntries::grow()
{
    std::vector<Slot> larger(slots_.size() * 2, Slot{0, none});
    const std::size_t mask = larger.size() - 1;
    for (const Slot &slot : slots_) {
        if (slot.code == none)
            continue;
        std::size_t at = slot.hash & mask;
        while (larger[at].code != none)
            at = (at + 1) & mask;
        larger[at] = slot;
    }
    slots_.swap(larger);
}

const std::vector<std::uint32_t> &TextEntries::ranks() const
{
    if (ranks_.size() == entries_.size())
        return ranks_;
    std::vector<std::uint32_t> in_order(entries_.size());
    std::iota(in_order.begin(), in_order.end(), 0u);
    std::sort(in_order.begin(), in_order.end(),
              [this](std::uint32_t a, std::uint32_t b) { return entries_[a] < entries_[b]; });
    std::vector<std::uint32_t> ranks(entries_.size());
    for (std::size_t i = 0; i < in_order.size(); ++i)
        ranks[in_order[i]] = static_cast<std::uint32_t>(i);
    ranks_.swap(ranks);
    return ranks_;
}

std::size_t TextEntries::bytes() const
{
    return block_bytes_ + entries_.capacity() * sizeof(std::string_view) + slots_.capacity() * sizeof(Slot) +
           ranks_.capacity() * sizeof(std::uint32_t);
}

} // namespace orvane
